// What stands at the beginning and the end of a text: marks, sequences that
// are cut off, overlong zeros; and the two textual forms.

#include <doctest/doctest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "tests/encoding/hex_bytes.h"
#include "tests/encoding/unicode_support.h"
#include "vaskel/encoding.h"

using namespace Vaskel;

namespace {

// Beginnings of characters; the text's zero byte is the last readable one.
constexpr const char* kCutOff[] = {"C0", "C3",    "DF",       "E0",       "E4",    "EF",
                                   "F0", "F7",    "E4 B8",    "E4 41",    "F0 9F", "F0 9F 98",
                                   "F1", "F1 41", "F1 41 42", "C3 C3 C3", "E4 C3"};

struct ZeroRow {
    const char* why;
    const char* bytes;   // behind letters
    const char* units;   // UTF-16 behind the letters, or bad
    const char* values;  // UTF-32
};

constexpr const char* kBad = "bad";

// The UTF-32 text that UTF-16 is made of ends at its first zero unit, but it is
// made whole before.
constexpr ZeroRow kOverlongZeros[] = {
    {"it ends the UTF-16 text", "C0 80 62", "", "0 62"},
    {"at the end", "C0 80", "", "0"},
    {"of three bytes", "E0 80 80 62", "", "0 62"},
    {"of four bytes", "F0 80 80 80 62", "", "0 62"},
    {"by an ASCII follower", "C0 40 62", "", "0 62"},
    {"by a lead byte as follower", "C0 C0 62", "", "0 62"},
    {"a surrogate behind it does not count", "C0 80 ED A0 80 62", "", "0 D800 62"},
    {"one in front of it does", "ED A0 80 C0 80", kBad, "D800 0"},
    {"bad bytes behind it count", "C0 80 62 FF", kBad, kBad},
    {"so does a follower alone", "C0 80 80", kBad, kBad},
    {"so do sequences cut off", "C0 80 C3", kBad, kBad},
    {"of three bytes, too", "C0 80 62 E4 B8", kBad, kBad},
    {"only the first one ends it", "C0 80 C0 80 62", "", "0 0 62"},
};

struct MarkRow {
    const char* why;
    const char* bytes;  // all that is readable
    const char* utf8From16;
    const char* utf8From32;
};

constexpr MarkRow kMarks[] = {
    {"one byte", "41", kBad, kBad},
    {"a zero byte and another", "00 41", kBad, kBad},
    {"FE without FF", "FE 41", kBad, kBad},
    {"FF without FE", "FF 41", kBad, kBad},
    {"two zeros without a mark", "00 00 41", kBad, kBad},
    {"the wrong way round", "00 00 FF", kBad, kBad},
    {"a mark cut short by another byte", "00 00 FE 41", kBad, kBad},
    {"nothing behind the mark", "FE FF 00 00", "", kBad},
    {"nor behind the other one", "00 00 FE FF 00 00 00 00", kBad, ""},
    {"big-endian UTF-16", "FE FF 00 41 00 00", "41", kBad},
    {"little-endian UTF-16", "FF FE 41 00 00 00", "41", kBad},
    {"big-endian UTF-32", "00 00 FE FF 00 00 00 41 00 00 00 00", kBad, "41"},
    {"little-endian UTF-32", "FF FE 00 00 41 00 00 00 00 00 00 00", "", "41"},
    {"a second mark is a character", "FE FF FE FF 00 00", "EF BB BF", kBad},
    {"a second mark in UTF-32", "00 00 FE FF 00 00 FE FF 00 00 00 00", kBad, "EF BB BF"},
    {"the text in the other order", "FE FF 41 00 00 00", "E4 84 80", kBad},
};

struct TextRow {
    const char* why;
    const char* text;
    const char* want;  // UTF-8
};

constexpr TextRow kEscaped[] = {
    {"an ASCII letter behind a byte 0", "\\376\\377\\000A", "41"},
    {"a byte 0 may end the text", "\\376\\377\\000A\\000", "41"},
    {"two letters", "\\376\\377\\000A\\000B", "41 42"},
    {"no byte 0", "\\376\\377\\116\\055", "E4 B8 AD"},
    {"a byte 0 as the second one", "\\376\\377\\116\\000", "E4 B8 80"},
    {"whose next character is a byte, too", "\\376\\377\\116\\000N\\055", "E4 B8 80 E4 B8 AD"},
    {"little-endian", "\\377\\376\\101\\000", "41"},
    {"little-endian, two letters", "\\377\\376\\101\\000B\\000", "41 42"},
    {"a backslash stands for itself behind a byte 0", "\\376\\377\\000\\", "5C"},
    {"so that no escape follows", "\\376\\377\\000\\134", ""},
    {"unless it is complete without it", "\\376\\377\\000\\\\116\\055", "5C E4 B8 AD"},
    {"the backslash is not checked", "\\376\\377x000A", "41"},
    {"modulo 256", "\\376\\377\\400A", "41"},
    {"modulo 256, the greatest", "\\376\\377\\777\\777", "EF BF BF"},
    {"an odd byte at the end", "\\376\\377\\101", "E4 84 80"},
    {"an odd byte behind a letter", "\\376\\377\\000A\\101", "41 E4 84 80"},
    {"a pair", "\\376\\377\\330\\075\\336\\001", "F6 9F 98 81"},
    {"a high unit alone", "\\376\\377\\330\\075", ""},
    {"a low unit alone", "\\376\\377\\334\\001", ""},
    {"the mark alone", "\\376\\377", ""},
    {"nothing but a zero unit", "\\376\\377\\000", ""},
    {"cut off behind the backslash", "\\376\\377\\000A\\", ""},
    {"cut off behind one digit", "\\376\\377\\000A\\1", ""},
    {"cut off behind two digits", "\\376\\377\\000A\\10", ""},
    {"no escape at all", "\\376\\377A", ""},
    {"the other form's digits", "FEFF0041", ""},
};

constexpr TextRow kHex[] = {
    {"big-endian", "FEFF0041", "41"},
    {"little-endian", "FFFE4100", "41"},
    {"all digits", "FEFF0123456789ABCDEF",
     "C4 A3 E4 95 A7 E8 A6 AB EC B7 AF"},  // 0123 4567 89AB CDEF
    {"a pair", "FEFFD83DDE00", "F6 9F 98 80"},
    {"a low unit alone", "FEFFDC00", ""},
    {"a high unit alone", "FEFFD83D", ""},
    {"the mark alone", "FEFF", ""},
    {"a zero unit ends the text", "FEFF004100000042", "41"},
    {"at its beginning, too", "FEFF00000041", ""},
    {"even in front of a surrogate", "FEFF00410000DC00", "41"},
    {"an odd byte at the end", "FEFF41", "E4 84 80"},
    {"a digit is missing", "FEFF004", ""},
    {"a digit alone", "FEFF0", ""},
    {"small letters count their code less 48", "FEFF4e2d", "E7 95 94"},  // 75 54
    {"so does any other character", "FEFF004:", "4A"},                   // 4 * 16 + 10
    {"and G, behind the digits", "FEFF004G", "57"},                      // 4 * 16 + 23
    {"and a blank, modulo 256", "FEFF00 A", "0A"},                       // -16 * 16 + 10
    {"a small mark is none", "feff0041", ""},
    {"the other form", "\\376\\377\\000A", ""},
};

template <std::size_t kCount>
void checkTexts(const TextRow (&rows)[kCount], std::string (*convert)(const char*)) {
    for (const UnicodeForm* form : unicodeForms()) {
        const ForcedForm forced(form);
        CAPTURE(form->name);
        for (const TextRow& row : rows) {
            CAPTURE(row.why);
            CAPTURE(row.text);
            CHECK(toHex(convert(GuardedText(row.text))) == row.want);
        }
    }
}

}  // namespace

TEST_CASE("unicode: a sequence cut off at the end is bad, and nothing behind it is read") {
    for (const UnicodeForm* form : unicodeForms()) {
        const ForcedForm forced(form);
        CAPTURE(form->name);
        for (const char* const cut : kCutOff) {
            CAPTURE(cut);
            for (std::size_t before = 0; before < 140; ++before) {
                if (before == 0 && cut[0] == 'F') continue;  // bad by its first byte
                CAPTURE(before);
                const GuardedText text(std::string(before, 'a') + fromHex(cut));
                CHECK(ConvertUTF8ToUTF16String(text, true).empty());
                CHECK(ConvertUTF8ToUTF32String(text, false).empty());
                CHECK(ConvertToUTF16String(text, false).empty());
                CHECK(ConvertToUTF32String(text, true).empty());
            }
        }
    }
}

TEST_CASE("unicode: UTF-8 does not begin with a character of four bytes") {
    for (const UnicodeForm* form : unicodeForms()) {
        const ForcedForm forced(form);
        CAPTURE(form->name);
        for (unsigned first = 0xF0; first < 0x100; ++first) {
            CAPTURE(first);
            // Nothing behind the first byte is read.
            const GuardedBytes byte(std::string(1, static_cast<char>(first)));
            CHECK(ConvertUTF8ToUTF16String(byte.chars(), true).empty());
            CHECK(ConvertUTF8ToUTF32String(byte.chars(), true).empty());
            const std::string text =
                static_cast<char>(first) + std::string("\x9F\x98\x80 and so on");
            CHECK(ConvertUTF8ToUTF16String(text.c_str(), true).empty());
            CHECK(ConvertUTF8ToUTF32String(text.c_str(), false).empty());
            CHECK(ConvertUTF8ToUTF32String(("a" + text).c_str(), false).empty() == (first > 0xF7));
        }
    }
}

TEST_CASE(
    "unicode: an overlong zero ends the UTF-16 text, and what is behind it is still checked") {
    for (const UnicodeForm* form : unicodeForms()) {
        const ForcedForm forced(form);
        CAPTURE(form->name);
        for (const ZeroRow& row : kOverlongZeros) {
            CAPTURE(row.why);
            for (const std::size_t before : {1, 29, 31, 40, 2040, 2047, 5000}) {
                CAPTURE(before);
                const GuardedText text(std::string(before, 'a') + fromHex(row.bytes));
                for (const bool big : {false, true}) {
                    CAPTURE(big);
                    std::vector<std::uint32_t> want16(before, 'a'), want32(before, 'a');
                    for (const std::uint32_t value : numbers(row.values)) want32.push_back(value);
                    const std::string got16 = ConvertUTF8ToUTF16String(text, big);
                    const std::string got32 = ConvertUTF8ToUTF32String(text, big);
                    CHECK(toHex(got16) == toHex(row.units == kBad ? "" : text16(want16, big)));
                    CHECK(toHex(got32) == toHex(row.values == kBad ? "" : text32(want32, big)));
                }
            }
        }
    }
}

TEST_CASE("unicode: without its mark a text is bad, and bytes are read as long as they fit one") {
    for (const UnicodeForm* form : unicodeForms()) {
        const ForcedForm forced(form);
        CAPTURE(form->name);
        for (const MarkRow& row : kMarks) {
            CAPTURE(row.why);
            CAPTURE(row.bytes);
            const GuardedBytes text(fromHex(row.bytes));
            const bool good16 = row.utf8From16 != kBad, good32 = row.utf8From32 != kBad;
            CHECK(toHex(ConvertUTF16ToUTF8String(text.chars())) == (good16 ? row.utf8From16 : ""));
            CHECK(toHex(ConvertUTF32ToUTF8String(text.chars())) == (good32 ? row.utf8From32 : ""));
            for (const bool big : {false, true}) {
                CHECK(ConvertUTF16ToUTF32String(text.chars(), big).empty() == !good16);
                CHECK(ConvertUTF32ToUTF16String(text.chars(), big).empty() == !good32);
            }
        }
    }
}

TEST_CASE("unicode: escapes are UTF-16 bytes, read character by character") {
    checkTexts(kEscaped, ConvertUTFEscapedToUTF8String);
}

TEST_CASE("unicode: pairs of hex digits are UTF-16 bytes") {
    checkTexts(kHex, ConvertUTFHexToUTF8String);
}

TEST_CASE("unicode: every byte can be escaped and written in hex digits") {
    for (unsigned high = 0; high < 256; ++high) {
        CAPTURE(high);
        for (unsigned low = 1; low < 256; ++low) {
            CAPTURE(low);
            const std::uint32_t unit = 256 * high + low;
            const bool surrogate = high >= 0xD8 && high < 0xE0;
            const std::string want = surrogate ? "" : utf8Bytes(unit);
            char escaped[32], hex[16];
            // A byte 0 is followed by a byte that stands for itself.
            const std::string rest = high == 0 ? std::string(1, static_cast<char>(low)) : "";
            std::snprintf(escaped, sizeof escaped, "\\376\\377\\%03o", high);
            std::snprintf(hex, sizeof hex, "FEFF%02X%02X", high, low);
            std::string text = escaped + rest;
            if (high != 0) {
                std::snprintf(escaped, sizeof escaped, "\\%03o", low);
                text += escaped;
            }
            if (ConvertUTFEscapedToUTF8String(text.c_str()) != want) FAIL(text);
            if (ConvertUTFHexToUTF8String(hex) != want) FAIL(std::string(hex));
        }
    }
}
