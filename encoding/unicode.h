// The forms of the Unicode conversions: the plain one, which goes through
// UTF-32 as the rules are written, and the faster ones that are held to it.

#ifndef ENCODING_UNICODE_H
#define ENCODING_UNICODE_H

#include <span>
#include <string>

namespace Vaskel {

/// One way to make all six conversions. The functions take what the exported
/// ones of like names take, except that text is never null.
struct UnicodeForm {
    const char* name;
    std::string (*utf8ToUtf32)(const char* text, bool bigEndian);
    std::string (*utf8ToUtf16)(const char* text, bool bigEndian);
    std::string (*utf16ToUtf32)(const char* text, bool bigEndian);
    std::string (*utf16ToUtf8)(const char* text);
    std::string (*utf32ToUtf16)(const char* text, bool bigEndian);
    std::string (*utf32ToUtf8)(const char* text);
};

extern const UnicodeForm kUnicodePlain;

/// All forms that this CPU can run, made ready, the plain one first, the one that
/// the exported functions use last. Safe on any thread.
std::span<const UnicodeForm* const> unicodeForms();

/// For tests: makes the exported functions use form, which stays the caller's;
/// null gives the choice back.
void forceUnicodeForm(const UnicodeForm* form);

}  // namespace Vaskel

#endif
