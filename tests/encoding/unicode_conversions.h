// The conversions from each form of text, and all forms of the engine held to the
// plain one on a text.

#ifndef TESTS_ENCODING_UNICODE_CONVERSIONS_H
#define TESTS_ENCODING_UNICODE_CONVERSIONS_H

#include <doctest/doctest.h>

#include <cstddef>
#include <string>

#include "encoding/unicode.h"
#include "tests/encoding/hex_bytes.h"
#include "tests/encoding/unicode_support.h"

struct Conversion {
    const char* name;
    std::string (*run)(const Vaskel::UnicodeForm& form, const char* text);
};

inline constexpr Conversion kFrom8[] = {
    {"8 to 16 LE",
     [](const Vaskel::UnicodeForm& f, const char* t) { return f.utf8ToUtf16(t, false); }},
    {"8 to 16 BE",
     [](const Vaskel::UnicodeForm& f, const char* t) { return f.utf8ToUtf16(t, true); }},
    {"8 to 32 LE",
     [](const Vaskel::UnicodeForm& f, const char* t) { return f.utf8ToUtf32(t, false); }},
    {"8 to 32 BE",
     [](const Vaskel::UnicodeForm& f, const char* t) { return f.utf8ToUtf32(t, true); }},
};
inline constexpr Conversion kFrom16[] = {
    {"16 to 8", [](const Vaskel::UnicodeForm& f, const char* t) { return f.utf16ToUtf8(t); }},
    {"16 to 32 LE",
     [](const Vaskel::UnicodeForm& f, const char* t) { return f.utf16ToUtf32(t, false); }},
    {"16 to 32 BE",
     [](const Vaskel::UnicodeForm& f, const char* t) { return f.utf16ToUtf32(t, true); }},
};
inline constexpr Conversion kFrom32[] = {
    {"32 to 8", [](const Vaskel::UnicodeForm& f, const char* t) { return f.utf32ToUtf8(t); }},
    {"32 to 16 LE",
     [](const Vaskel::UnicodeForm& f, const char* t) { return f.utf32ToUtf16(t, false); }},
    {"32 to 16 BE",
     [](const Vaskel::UnicodeForm& f, const char* t) { return f.utf32ToUtf16(t, true); }},
};

/// Every form's results for a text beside the plain form's, of which this returns how
/// many were not empty.
template <std::size_t kCount>
int compareForms(const Conversion (&conversions)[kCount], const char* text) {
    int good = 0;
    for (const Conversion& conversion : conversions) {
        const std::string want = conversion.run(Vaskel::kUnicodePlain, text);
        good += !want.empty();
        for (const Vaskel::UnicodeForm* form : Vaskel::unicodeForms().subspan(1)) {
            const std::string got = conversion.run(*form, text);
            if (got == want) continue;
            CAPTURE(form->name);
            CAPTURE(conversion.name);
            CHECK(toHex(got) == toHex(want));
        }
    }
    return good;
}

/// The same at one of the places of PlacedText.
template <std::size_t kCount>
int compareForms(const Conversion (&conversions)[kCount], const std::string& text, int place) {
    const PlacedText placed(text, place);
    CAPTURE(place);
    CAPTURE(toHex(text));  // made only where it is printed
    return compareForms(conversions, static_cast<const char*>(placed));
}

#endif
