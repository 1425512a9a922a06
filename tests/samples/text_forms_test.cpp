#include "samples/proof/convert/text_forms.h"

#include <doctest/doctest.h>

#include <vector>

#include "vaskel/encoding.h"

using namespace Proof;
using namespace std::string_literals;

namespace {

constexpr TextTarget kTargets[] = {
    {TextForm::Utf8, true},     {TextForm::Utf16, true},  {TextForm::Utf16, false},
    {TextForm::Utf32, true},    {TextForm::Utf32, false}, {TextForm::Escaped, true},
    {TextForm::Escaped, false}, {TextForm::Hex, true},    {TextForm::Hex, false},
};

std::string faultOf(const std::string& text, TextForm form, TextTarget target, bool lossy = false) {
    try {
        convertText(text, form, target, lossy);
    } catch (const TextFault& fault) {
        return fault.what();
    }
    return "";
}

}  // namespace

TEST_CASE("a text is found in the form that its beginning tells") {
    struct Row {
        const char* why;
        std::string text;
        std::optional<TextForm> form;
    };
    const Row rows[] = {
        {"nothing at all is UTF-8", "", TextForm::Utf8},
        {"plain text", "FEF", TextForm::Utf8},
        {"the first byte alone counts", "\x80", TextForm::Utf8},
        {"a character of four bytes may be a mark", "\xF0\x9F\x98\x80", std::nullopt},
        {"big-endian UTF-16", "\xFE\xFF\0A"s, TextForm::Utf16},
        {"little-endian UTF-16",
         "\xFF\xFE"
         "A\0"s,
         TextForm::Utf16},
        {"a mark alone is no UTF-32", "\xFF\xFE", TextForm::Utf16},
        {"three bytes are no UTF-32", "\xFF\xFE\0"s, TextForm::Utf16},
        {"UTF-16 does not hide little-endian UTF-32", "\xFF\xFE\0\0"s, TextForm::Utf32},
        {"UTF-8 does not hide big-endian UTF-32", "\0\0\xFE\xFF"s, TextForm::Utf32},
        {"half a mark", "\xFE\x41", std::nullopt},
        {"escaped, big-endian", "\\376\\377\\000A", TextForm::Escaped},
        {"escaped, little-endian", "\\377\\376", TextForm::Escaped},
        {"hex, big-endian", "FEFF", TextForm::Hex},
        {"hex in small letters is text", "feff0041", TextForm::Utf8},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        CHECK(detectTextForm(row.text) == row.form);
    }
}

TEST_CASE("a text has the bytes that each form gives it") {
    // A, e acute, a CJK character: U+0041 U+00E9 U+4E2D.
    const std::string text = "A\xC3\xA9\xE4\xB8\xAD";
    const std::string wanted[] = {
        text,
        "\xFE\xFF\x00\x41\x00\xE9\x4E\x2D"s,
        "\xFF\xFE\x41\x00\xE9\x00\x2D\x4E"s,
        "\x00\x00\xFE\xFF\x00\x00\x00\x41\x00\x00\x00\xE9\x00\x00\x4E\x2D"s,
        "\xFF\xFE\x00\x00\x41\x00\x00\x00\xE9\x00\x00\x00\x2D\x4E\x00\x00"s,
        "\\376\\377\\000A\\000\xE9\\116\\055",
        "\\377\\376\\101\\000\xE9\\000-\\116",
        "FEFF004100E94E2D",
        "FFFE4100E9002D4E",
    };
    for (std::size_t i = 0; i < std::size(wanted); ++i) {
        CAPTURE(i);
        const ConvertedText result = convertText(text, TextForm::Utf8, kTargets[i], false);
        CHECK(result.bytes == wanted[i]);
        CHECK(result.characters == 3);
    }
}

TEST_CASE("every form is converted to every other without a loss") {
    std::vector<std::string> texts = {"",
                                      "A",
                                      "plain text\r\nof two lines\n",
                                      "\xC3\xA9\xC3\xA8",
                                      "\xEF\xBF\xBF\xEF\xBB\xBF",
                                      "\xE4\xB8\xAD\xE6\x96\x87 text"};
    std::string all;
    for (unsigned c = 1; c < 0x800; c += 3) {
        if (c < 0x80)
            all += static_cast<char>(c);
        else
            all += {static_cast<char>(0xC0 | c >> 6), static_cast<char>(0x80 | (c & 0x3F))};
    }
    texts.push_back(all);
    int compared = 0;
    for (const std::string& text : texts) {
        CAPTURE(text);
        for (const TextTarget& from : kTargets) {
            const bool plain = from.form == TextForm::Escaped;
            // U+0100 in front of U+0103: \001\000 and a zero byte.
            if (plain && &text == &texts.back()) continue;
            const std::string source = convertText(text, TextForm::Utf8, from, false).bytes;
            if (!text.empty() || from.form != TextForm::Utf8)
                CHECK(detectTextForm(source) == from.form);
            for (const TextTarget& to : kTargets) {
                if (to.form == TextForm::Escaped && &text == &texts.back()) continue;
                CHECK(convertText(source, from.form, to, false).bytes ==
                      convertText(text, TextForm::Utf8, to, false).bytes);
                ++compared;
            }
        }
    }
    CHECK(compared == 6 * 81 + 49);
}

TEST_CASE("the escaped and hex forms are what the library reads") {
    for (const bool bigEndian : {true, false})
        for (unsigned c = 1; c < 0x10000; ++c) {
            if (c >= 0xD800 && c <= 0xDFFF) continue;
            const char32_t units[] = {c, U'x', c};
            std::string utf16 = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
            for (const char32_t unit : units) {
                const char high = static_cast<char>(unit >> 8), low = static_cast<char>(unit);
                utf16 += bigEndian ? high : low;
                utf16 += bigEndian ? low : high;
            }
            const std::string wanted =
                Vaskel::ConvertUTF16ToUTF8String((utf16 + std::string(2, '\0')).c_str());
            if (Vaskel::ConvertUTFHexToUTF8String(hexForm(utf16).c_str()) != wanted)
                FAIL_CHECK("hex " << c);
            bool possible = true;
            std::string escaped;
            try {
                escaped = escapedForm(utf16);
            } catch (const TextFault&) {
                possible = false;
            }
            // The high byte first, U+xx00 before U+0078 has two zero bytes in a row.
            if (bigEndian && possible != (c % 256 != 0)) FAIL_CHECK("escaped " << c);
            if (possible && Vaskel::ConvertUTFEscapedToUTF8String(escaped.c_str()) != wanted)
                FAIL_CHECK("escaped " << c);
        }
}

TEST_CASE("a zero unit at the end is left out, and a line end behind plain text") {
    const TextTarget utf8;
    struct Row {
        TextForm form;
        std::string text;
        const char* wanted;
    };
    const Row rows[] = {
        {TextForm::Utf8, "A\0"s, "A"},
        {TextForm::Utf8, "A\n", "A\n"},
        {TextForm::Utf16, "\xFE\xFF\0A\0\0"s, "A"},
        {TextForm::Utf16,
         "\xFF\xFE"
         "A\0\0\0"s,
         "A"},
        {TextForm::Utf32, "\0\0\xFE\xFF\0\0\0A\0\0\0\0"s, "A"},
        {TextForm::Escaped, "\\376\\377\\000A\n", "A"},
        {TextForm::Escaped, "\\376\\377\\000A\r\n", "A"},
        {TextForm::Escaped, "\\376\\377\\000A\\000", "A"},
        {TextForm::Escaped, "\\376\\377\\000A\\000\n", "A\n"},
        {TextForm::Escaped, "\\376\\377\\000A\\000\n\n", "A\n"},
        {TextForm::Hex, "FEFF0041\n", "A"},
        {TextForm::Hex, "FEFF0041\r\n", "A"},
        {TextForm::Hex, "FEFF00410000", "A"},
        {TextForm::Hex, "FEFF", ""},
    };
    for (const Row& row : rows) {
        CAPTURE(row.text);
        CHECK(convertText(row.text, row.form, utf8, false).bytes == row.wanted);
    }
}

TEST_CASE("what cannot be converted is told with its place") {
    struct Row {
        TextForm form;
        std::string text;
        TextTarget target;
        const char* fault;
    };
    const TextTarget utf8, utf16{TextForm::Utf16, true}, utf32{TextForm::Utf32, true},
        escaped{TextForm::Escaped, true};
    const Row rows[] = {
        {TextForm::Utf8, "ab\x80", utf16, "byte 80 at offset 2 begins no character"},
        {TextForm::Utf8, "ab\xF8", utf8, "byte F8 at offset 2 begins no character"},
        {TextForm::Utf8, "ab\xE4\xB8", utf32, "the character at offset 2 is cut off"},
        {TextForm::Utf8, "a\0b"s, utf8,
         "the zero byte at offset 1 ends the text, but more follows"},
        {TextForm::Utf8, "a\xED\xA0\x80", utf16,
         "U+D800 at offset 1 is half a surrogate pair, which UTF-16 cannot hold alone"},
        {TextForm::Utf16, "A", utf8, "there is no mark of UTF-16 at the beginning"},
        {TextForm::Utf16, "", utf8, "there is no mark of UTF-16 at the beginning"},
        {TextForm::Utf16, "\xFE\xFF\0"s, utf8, "the last unit is cut off"},
        {TextForm::Utf16, "\xFE\xFF\0\0\0A"s, utf8,
         "the zero unit at offset 2 ends the text, but more follows"},
        {TextForm::Utf16, "\xFF\xFE\0\xDC"s, utf8, "unit DC00 at offset 2 is half a pair"},
        {TextForm::Utf16, "\xFE\xFF\0A\xD8\0\0A"s, utf16, "unit D800 at offset 4 is half a pair"},
        {TextForm::Utf32, "\xFF\xFE"s, utf8, "there is no mark of UTF-32 at the beginning"},
        {TextForm::Utf32, "\0\0\xFE\xFF\0\0A"s, utf8, "the last unit is cut off"},
        {TextForm::Utf32, "\0\0\xFE\xFF\0\x20\0\0"s, utf8,
         "value 200000 at offset 4 is no character"},
        {TextForm::Utf32, "\xFF\xFE\0\0\xFF\xDF\0\0"s, utf16,
         "U+DFFF at offset 4 is half a surrogate pair, which UTF-16 cannot hold alone"},
        {TextForm::Escaped, "\\376\\37", utf8, "it does not begin with \\376\\377 or \\377\\376"},
        {TextForm::Escaped, "\\376\\377\\000A\\10", utf8,
         "what stands at offset 13 is a part of an escape"},
        {TextForm::Escaped, "\\376\\377\\000A/101", utf8,
         "what stands at offset 13 is no escape of a backslash and three octal digits"},
        {TextForm::Escaped, "\\376\\377\\400A", utf8,
         "what stands at offset 8 is no escape of a backslash and three octal digits"},
        {TextForm::Escaped, "\\376\\377\\101", utf8, "the last unit is cut off"},
        {TextForm::Escaped, "\\376\\377\\334\\001", utf8, "unit DC01 at offset 2 is half a pair"},
        {TextForm::Hex, "FEFF004", utf8, "the last hex digit stands alone"},
        {TextForm::Hex, "FEFF00e9", utf8, "what stands at offset 6 is no hex digit in capitals"},
        {TextForm::Hex, "FE", utf8, "it does not begin with FEFF or FFFE"},
        {TextForm::Utf8,
         "\xE4\xB8\x80"
         "A",
         escaped, "the escaped form cannot hold two zero bytes in a row; the other byte order may"},
    };
    for (const Row& row : rows) {
        CAPTURE(row.text);
        CHECK(faultOf(row.text, row.form, row.target) == row.fault);
    }
}

TEST_CASE("a loss is refused with its place unless it is permitted") {
    struct Row {
        TextForm form;
        std::string text;
        TextTarget target;
        int offset;
        std::string wanted;  // what the library makes of it
    };
    const TextTarget utf8, utf16{TextForm::Utf16, true}, utf32{TextForm::Utf32, true},
        hex{TextForm::Hex, true};
    const Row rows[] = {
        // U+1F600: the low unit keeps six bits.
        {TextForm::Utf8, "a\xF0\x9F\x98\x80", utf16, 1, "\xFE\xFF\0a\xD8\x3D\xDC\0"s},
        {TextForm::Utf8, "\xF0\x9F\x98\x80", hex, 0, "FEFFD83DDC00"},
        {TextForm::Utf32, "\0\0\xFE\xFF\0\0\0a\0\1\xF6\0"s, utf16, 8, "\xFE\xFF\0a\xD8\x3D\xDC\0"s},
        // Every pair is a value from 190000 on.
        {TextForm::Utf16, "\xFE\xFF\0a\xD8\x3D\xDE\0"s, utf8, 4, "a\xF6\x9F\x98\x80"},
        {TextForm::Utf16, "\xFE\xFF\xD8\x3D\xDE\0"s, utf32, 2, "\0\0\xFE\xFF\0\x19\xF6\0"s},
        {TextForm::Hex, "FEFFD83DDE00", utf8, 2, "\xF6\x9F\x98\x80"},
        // Lenient readings of UTF-8.
        {TextForm::Utf8, "ab\xC3\x41", utf16, 3, "\xFE\xFF\0a\0b\0\xC1"s},
        {TextForm::Utf8, "\xC1\x81", utf32, 0, "\0\0\xFE\xFF\0\0\0A"s},
        {TextForm::Utf8, "\xC1\x81", utf8, 0, "\xC1\x81"},
        {TextForm::Utf8, "a\xC0\x80", utf16, 1, "\xFE\xFF\0a"s},
    };
    for (const Row& row : rows) {
        CAPTURE(row.text);
        const std::string fault = faultOf(row.text, row.form, row.target);
        CHECK(fault.find("at offset " + std::to_string(row.offset) + " ") != fault.npos);
        CHECK(fault.find("--lossy") != fault.npos);
        CHECK(convertText(row.text, row.form, row.target, true).bytes == row.wanted);
    }
}

TEST_CASE("what the library keeps is no loss, though other programs would not have it") {
    const TextTarget utf8, utf16{TextForm::Utf16, true}, utf16le{TextForm::Utf16, false},
        utf32{TextForm::Utf32, true}, hex{TextForm::Hex, true};
    // A text that begins with a character of four bytes, to and from UTF-32.
    const std::string smile = "\xF0\x9F\x98\x80!", units = "\0\0\xFE\xFF\0\1\xF6\0\0\0\0!"s;
    CHECK(convertText(smile, TextForm::Utf8, utf32, false).bytes == units);
    CHECK(convertText(units, TextForm::Utf32, utf8, false).bytes == smile);
    CHECK(convertText(smile, TextForm::Utf8, utf8, false).bytes == smile);
    // Pairs of UTF-16 stay as they are where their bytes are copied.
    const std::string pair = "\xFE\xFF\xD8\x3D\xDE\0"s;
    CHECK(convertText(pair, TextForm::Utf16, utf16, false).bytes == pair);
    CHECK(convertText(pair, TextForm::Utf16, hex, false).bytes == "FEFFD83DDE00");
    CHECK(faultOf(pair, TextForm::Utf16, utf16le) != "");
    // Surrogates between UTF-8 and UTF-32.
    CHECK(convertText("\xED\xA0\x80", TextForm::Utf8, utf32, false).bytes ==
          "\0\0\xFE\xFF\0\0\xD8\0"s);
}
