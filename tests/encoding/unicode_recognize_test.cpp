// Which form a text has, and the functions that convert from any form.

#include <doctest/doctest.h>

#include <string>

#include "tests/encoding/hex_bytes.h"
#include "tests/encoding/unicode_support.h"
#include "util/cpu.h"
#include "vaskel/encoding.h"

using namespace Vaskel;

namespace {

struct MarkRow {
    const char* why;
    const char* bytes;  // all that is readable
    bool utf8, utf16, utf32;
};

constexpr MarkRow kMarks[] = {
    {"the empty text", "00 01", true, false, false},
    {"ASCII", "41", true, false, false},
    {"a byte that begins no character", "80", true, false, false},
    {"the greatest first byte of UTF-8", "EF", true, false, false},
    {"the least one that is none", "F0", false, false, false},
    {"a character of four bytes", "F0 9F 98 80 00", false, false, false},
    {"FD", "FD", false, false, false},
    {"big-endian UTF-16", "FE FF", false, true, false},
    {"little-endian UTF-16, then no zero", "FF FE 41", false, true, false},
    {"FE without FF", "FE 41", false, false, false},
    {"FE twice", "FE FE", false, false, false},
    {"FF without FE", "FF 41", false, false, false},
    {"FF twice", "FF FF", false, false, false},
    {"little-endian UTF-32", "FF FE 00 00", false, true, true},
    {"little-endian UTF-32 but for its last byte", "FF FE 00 41", false, true, false},
    {"big-endian UTF-32", "00 00 FE FF", true, false, true},
    {"big-endian UTF-32 but for its second byte", "00 41", true, false, false},
    {"big-endian UTF-32 but for its third byte", "00 00 41", true, false, false},
    {"big-endian UTF-32 but for its last byte", "00 00 FE FE", true, false, false},
};

struct TextRow {
    const char* text;
    bool escaped, hex;
};

constexpr TextRow kTexts[] = {
    {"\\376\\377", true, false},
    {"\\377\\376", true, false},
    {"\\376\\377\\000A", true, false},
    {"\\376\\37", false, false},
    {"\\376\\376", false, false},
    {"\\377\\377", false, false},
    {" \\376\\377", false, false},
    {"\\376\\378", false, false},
    {"376377", false, false},
    {"", false, false},
    {"\\", false, false},
    {"FEFF", false, true},
    {"FFFE", false, true},
    {"FEFF0041", false, true},
    {"FEF", false, false},
    {"FE", false, false},
    {"FEFE", false, false},
    {"FFFF", false, false},
    {"feff", false, false},
    {"feff0041", false, false},
    {"FEfF", false, false},
    {" FEFF", false, false},
    {"\xFE\xFF", false, false},
};

enum class To { Utf8, Utf16Little, Utf16Big, Utf32Little, Utf32Big };

struct AnyRow {
    const char* why;
    const char* text;
    To to;
    const char* want;
};

constexpr AnyRow kAny[] = {
    {"UTF-8 is copied", "63 61 66 C3 A9 00", To::Utf8, "63 61 66 C3 A9"},
    {"unchecked", "80 C3 FF 00", To::Utf8, "80 C3 FF"},
    {"up to its zero byte", "41 00 42 00", To::Utf8, "41"},
    {"empty UTF-8", "00", To::Utf8, ""},
    {"big-endian UTF-16", "FE FF 00 E9 00 00", To::Utf8, "C3 A9"},
    {"little-endian UTF-16", "FF FE E9 00 00 00", To::Utf8, "C3 A9"},
    {"bad UTF-16", "FE FF DC 00 00 00", To::Utf8, ""},
    {"four bytes come first", "F0 9F 98 80 00", To::Utf8, ""},
    {"no mark", "FE FE 00", To::Utf8, ""},

    {"UTF-8", "41 00", To::Utf16Big, "FE FF 00 41 00 00"},
    {"UTF-8", "41 00", To::Utf16Little, "FF FE 41 00 00 00"},
    {"empty UTF-8", "00", To::Utf16Big, "FE FF 00 00"},
    {"bad UTF-8", "80 00", To::Utf16Big, ""},
    {"UTF-16 keeps its order", "FE FF 4E 2D 00 00", To::Utf16Little, "FE FF 4E 2D"},
    {"UTF-16 keeps its order", "FF FE 2D 4E 00 00", To::Utf16Big, "FF FE 2D 4E"},
    {"but ends at its first zero byte", "FE FF 00 41 00 00", To::Utf16Big, "FE FF"},
    {"within a unit, too", "FF FE 2D 4E 41 00 2D 4E 00 00", To::Utf16Big, "FF FE 2D 4E 41"},
    {"where no unit is zero", "FE FF 4E 00 01 01 00 00", To::Utf16Big, "FE FF 4E"},
    {"and is not checked", "FE FF DC 01 D8 01 00", To::Utf16Big, "FE FF DC 01 D8 01"},
    {"not even for a whole unit", "FE FF DC 00", To::Utf16Big, "FE FF DC"},
    {"four bytes come first", "F0 9F 98 80 00", To::Utf16Big, ""},
    {"no mark", "FF FF 00", To::Utf16Big, ""},

    {"UTF-8", "41 00", To::Utf32Big, "00 00 FE FF 00 00 00 41 00 00 00 00"},
    {"UTF-8", "41 00", To::Utf32Little, "FF FE 00 00 41 00 00 00 00 00 00 00"},
    {"UTF-16", "FF FE 41 00 00 00", To::Utf32Big, "00 00 FE FF 00 00 00 41 00 00 00 00"},
    {"UTF-16", "FE FF 00 41 00 00", To::Utf32Little, "FF FE 00 00 41 00 00 00 00 00 00 00"},
    {"bad UTF-16", "FE FF D8 00 00 00", To::Utf32Big, ""},
    {"four bytes come first", "F4 8F BF BF 00", To::Utf32Big, ""},
    {"no mark", "F8 00", To::Utf32Big, ""},
};

// UTF-32 of A, by which other form's mark it begins with.
constexpr AnyRow kUtf32[] = {
    {"big-endian: its first byte is 0", "00 00 FE FF 00 00 00 41 00 00 00 00", To::Utf8, ""},
    {"big-endian", "00 00 FE FF 00 00 00 41 00 00 00 00", To::Utf16Big, "FE FF 00 00"},
    {"big-endian", "00 00 FE FF 00 00 00 41 00 00 00 00", To::Utf32Big, "00 00 FE FF 00 00 00 00"},
    {"little-endian: UTF-16's mark, a zero unit", "FF FE 00 00 41 00 00 00 00 00 00 00", To::Utf8,
     ""},
    {"little-endian", "FF FE 00 00 41 00 00 00 00 00 00 00", To::Utf16Big, "FF FE"},
    {"little-endian", "FF FE 00 00 41 00 00 00 00 00 00 00", To::Utf32Little,
     "FF FE 00 00 00 00 00 00"},
};

std::string converted(const char* text, To to) {
    switch (to) {
        case To::Utf8:
            return ConvertToUTF8String(text);
        case To::Utf16Little:
            return ConvertToUTF16String(text, false);
        case To::Utf16Big:
            return ConvertToUTF16String(text, true);
        case To::Utf32Little:
            return ConvertToUTF32String(text, false);
        default:
            return ConvertToUTF32String(text, true);
    }
}

template <std::size_t kCount>
void checkRows(const AnyRow (&rows)[kCount]) {
    for (const UnicodeForm* form : unicodeForms()) {
        const ForcedForm forced(form);
        CAPTURE(form->name);
        for (const AnyRow& row : rows) {
            CAPTURE(row.why);
            CAPTURE(row.text);
            const GuardedBytes text(fromHex(row.text));
            CHECK(toHex(converted(text.chars(), row.to)) == row.want);
        }
    }
}

// A form that only tells which of its functions was called.
constexpr UnicodeForm kTelling = {
    "telling",
    [](const char*, bool big) -> std::string { return big ? "8 to 32 BE" : "8 to 32 LE"; },
    [](const char*, bool big) -> std::string { return big ? "8 to 16 BE" : "8 to 16 LE"; },
    [](const char*, bool big) -> std::string { return big ? "16 to 32 BE" : "16 to 32 LE"; },
    [](const char*) -> std::string { return "16 to 8"; },
    [](const char*, bool big) -> std::string { return big ? "32 to 16 BE" : "32 to 16 LE"; },
    [](const char*) -> std::string { return "32 to 8"; },
};

}  // namespace

TEST_CASE("unicode: marks and first bytes tell the form, byte by byte") {
    for (const MarkRow& row : kMarks) {
        CAPTURE(row.why);
        CAPTURE(row.bytes);
        const GuardedBytes text(fromHex(row.bytes));
        CHECK(IsUTF8String(text.chars()) == row.utf8);
        // The tests read no byte that the row does not have.
        CHECK(IsUTF16String(text.chars()) == row.utf16);
        CHECK(IsUTF32String(text.chars()) == row.utf32);
    }
}

TEST_CASE("unicode: a first byte below F0 is UTF-8") {
    for (unsigned byte = 0; byte < 256; ++byte) {
        CAPTURE(byte);
        const GuardedBytes text(std::string(1, static_cast<char>(byte)));
        CHECK(IsUTF8String(text.chars()) == (byte < 0xF0));
    }
}

TEST_CASE("unicode: the textual forms begin with the written mark") {
    for (const TextRow& row : kTexts) {
        CAPTURE(row.text);
        const GuardedText text(row.text);
        CHECK(IsUTFEscapedString(text) == row.escaped);
        CHECK(IsUTFHexString(text) == row.hex);
        if (!row.escaped) CHECK(ConvertUTFEscapedToUTF8String(text).empty());
        if (!row.hex) CHECK(ConvertUTFHexToUTF8String(text).empty());
    }
}

TEST_CASE("unicode: any form is converted, and what has the form is copied to its zero byte") {
    checkRows(kAny);
}

TEST_CASE("unicode: UTF-32 is taken for an empty text of another form") { checkRows(kUtf32); }

TEST_CASE("unicode: a null pointer is bad input") {
    for (const UnicodeForm* form : unicodeForms()) {
        const ForcedForm forced(form);
        CAPTURE(form->name);
        CHECK_FALSE(IsUTF8String(nullptr));
        CHECK_FALSE(IsUTF16String(nullptr));
        CHECK_FALSE(IsUTF32String(nullptr));
        CHECK_FALSE(IsUTFEscapedString(nullptr));
        CHECK_FALSE(IsUTFHexString(nullptr));
        CHECK(ConvertUTF16ToUTF8String(nullptr) == "");
        CHECK(ConvertUTF32ToUTF8String(nullptr) == "");
        CHECK(ConvertUTFEscapedToUTF8String(nullptr) == "");
        CHECK(ConvertUTFHexToUTF8String(nullptr) == "");
        CHECK(ConvertToUTF8String(nullptr) == "");
        for (const bool big : {false, true}) {
            CHECK(ConvertToUTF16String(nullptr, big) == "");
            CHECK(ConvertToUTF32String(nullptr, big) == "");
            CHECK(ConvertUTF8ToUTF16String(nullptr, big) == "");
            CHECK(ConvertUTF8ToUTF32String(nullptr, big) == "");
            CHECK(ConvertUTF16ToUTF32String(nullptr, big) == "");
            CHECK(ConvertUTF32ToUTF16String(nullptr, big) == "");
        }
    }
}

TEST_CASE("unicode: the forced form is the one in use") {
    const std::string utf16 = fromHex("FE FF 00 41 00 00");
    {
        const ForcedForm forced(&kTelling);
        CHECK(ConvertUTF8ToUTF32String("A", true) == "8 to 32 BE");
        CHECK(ConvertUTF8ToUTF32String("A", false) == "8 to 32 LE");
        CHECK(ConvertUTF8ToUTF16String("A", true) == "8 to 16 BE");
        CHECK(ConvertUTF16ToUTF32String("A", false) == "16 to 32 LE");
        CHECK(ConvertUTF16ToUTF8String("A") == "16 to 8");
        CHECK(ConvertUTF32ToUTF16String("A", true) == "32 to 16 BE");
        CHECK(ConvertUTF32ToUTF8String("A") == "32 to 8");
        CHECK(ConvertToUTF16String("A", false) == "8 to 16 LE");
        CHECK(ConvertToUTF32String("A", true) == "8 to 32 BE");
        CHECK(ConvertToUTF8String(utf16.c_str()) == "16 to 8");
        CHECK(ConvertToUTF32String(utf16.c_str(), true) == "16 to 32 BE");
        CHECK(ConvertUTFEscapedToUTF8String("\\376\\377") == "16 to 8");
        CHECK(ConvertUTFHexToUTF8String("FEFF") == "16 to 8");
    }
    CHECK(ConvertUTF16ToUTF8String(utf16.c_str()) == "A");
}

TEST_CASE("unicode: a CPU with wide instructions uses them") {
    CHECK(unicodeForms().front() == &kUnicodePlain);
    const CpuLevel level = cpuLevel();
    const std::string best = level >= CpuLevel::Avx512Vbmi2 ? "AVX-512"
                             : level >= CpuLevel::Avx2      ? "AVX2"
                                                            : "one pass";
    CHECK(unicodeForms().back()->name == best);
}
