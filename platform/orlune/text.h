// Orlune: conversions between UTF-8, 16-bit text and percent-encoded URLs.
//
// Rules for all four. The source ends at its terminator and is read no further.
// capacity counts elements of out, terminator included; out is always terminated
// and never written behind capacity; a capacity of 0 writes nothing and returns
// 0. A text that does not fit is cut before the first character that does not
// fit whole: never within the UTF-8 bytes, the surrogate pair or the %XX triples
// of one character. What makes a source refused does so behind the cut, too.
// The result is the count of elements written without the terminator; one beyond
// the int range reads as the largest int. Nothing is thrown. Source and out do
// not overlap. Null pointers are not allowed. Safe on any thread.

#ifndef PLATFORM_ORLUNE_TEXT_H
#define PLATFORM_ORLUNE_TEXT_H

#include <cstddef>

#include "platform/export.h"

namespace Orlune {

/// UTF-8 (RFC 3629) to UTF-16, one code unit an element. Malformed UTF-8
/// (overlong forms, surrogates and values above U+10FFFF included) gives 0 and
/// the empty text.
PLATFORM_API int UTF8ToUni16Char(const char* utf8, wchar_t* out, std::size_t capacity);

/// UTF-16 to UTF-8. An unpaired surrogate or an element above 0xFFFF gives 0
/// and the empty text. 3 * length + 1 bytes are always enough.
PLATFORM_API int Uni16CharToUTF8(const wchar_t* text, char* out, std::size_t capacity);

/// Percent-encodes UTF-8 text (RFC 3986, section 2.1): the unreserved
/// characters of section 2.3 stay, every other byte becomes % and two
/// upper-case hexadecimal digits. Malformed UTF-8 is encoded byte by byte.
/// 3 * length + 1 bytes are always enough.
///
///   'a b~' is 'a%20b~', the two bytes C3 A9 are '%C3%A9'
PLATFORM_API int UTF8ToURLEncoding(const char* utf8, char* out, std::size_t capacity);

/// Percent-encodes the UTF-8 form of 16-bit text by the same rule; what
/// Uni16CharToUTF8 refuses gives 0 and the empty text.
PLATFORM_API int Uni16CharToURLEncoding(const wchar_t* text, char* out, std::size_t capacity);

}  // namespace Orlune

#endif
