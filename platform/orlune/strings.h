// Orlune: helpers on NUL-terminated byte strings. No function here looks at
// the locale. Null pointers are not allowed.

#ifndef PLATFORM_ORLUNE_STRINGS_H
#define PLATFORM_ORLUNE_STRINGS_H

#include "platform/export.h"

namespace Orlune {

/// Copies from, terminator included, to to and returns the address of the
/// terminator written. to has room for the length of from + 1 bytes; the two
/// do not overlap.
PLATFORM_API char* strmov(char* to, const char* from);

/// Compares two strings byte by byte as unsigned values, case-sensitively:
/// less than 0, 0 or more than 0 as a sorts before, equal to or after b.
PLATFORM_API int strcom(const char* a, const char* b);

/// strcom with the 26 ASCII capitals taken as their small letters; all other
/// bytes, those of UTF-8 sequences included, compare as they are.
PLATFORM_API int strcomign(const char* a, const char* b);

/// 0 when text begins with prefix, else the strcom order of the first
/// differing byte. An empty prefix begins every text. Reads of text no byte
/// behind its terminator and none behind the first difference.
PLATFORM_API int strcompre(const char* text, const char* prefix);

}  // namespace Orlune

#endif
