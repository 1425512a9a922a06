// All short byte strings, all values and all pairs of units through every
// conversion, beside the rules as a reader of the header would apply them.

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/encoding/hex_bytes.h"
#include "tests/encoding/unicode_support.h"
#include "vaskel/encoding.h"

using namespace Vaskel;

namespace {

constexpr std::uint32_t kEnd = 0x200000;

using Values = std::vector<std::uint32_t>;

unsigned byteAt(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

// ---- The rules, by intervals and division -----------------------------------

// Appends a text's values; false if it is bad. It has no zero byte.
bool readUtf8(std::string_view text, Values& values) {
    for (std::size_t at = 0; at < text.size();) {
        const unsigned lead = byteAt(text, at++);
        std::size_t followers;
        std::uint32_t value;
        if (lead <= 127) {
            followers = 0, value = lead;
        } else if (lead >= 192 && lead <= 223) {
            followers = 1, value = lead - 192;
        } else if (lead >= 224 && lead <= 239) {
            followers = 2, value = lead - 224;
        } else if (lead >= 240 && lead <= 247) {
            followers = 3, value = lead - 240;
        } else {
            return false;
        }
        if (followers > text.size() - at) return false;
        for (; followers > 0; --followers) value = value * 64 + byteAt(text, at++) % 64;
        values.push_back(value);
    }
    return true;
}

bool isSurrogate(std::uint32_t value) { return value >= 0xD800 && value <= 0xDFFF; }

// The units of a value: plane 1 has high units from D800 on, plane 2 from D840
// on and so forth, sixteen planes until they repeat.
void putUnits(std::uint32_t value, Values& units) {
    if (value < 0x10000) {
        units.push_back(value);
    } else {
        const std::uint32_t plane = value / 0x10000, inPlane = value % 0x10000;
        units.push_back(0xD800 + (plane - 1) % 16 * 64 + inPlane / 1024);
        units.push_back(0xDC00 + inPlane % 64);
    }
}

// The UTF-16 text of a UTF-32 text's values: they end at a zero.
bool unitsOf(const Values& values, Values& units) {
    for (const std::uint32_t value : values) {
        if (value == 0) break;
        if (isSurrogate(value) || value >= kEnd) return false;
        putUnits(value, units);
    }
    return true;
}

// ---- Comparison -------------------------------------------------------------

struct Wanted {
    std::string utf16[2], utf32[2];  // by bigEndian
};

Wanted wantedFrom8(std::string_view text) {
    static Values values, units;
    Wanted wanted;
    values.clear();
    units.clear();
    if (static_cast<unsigned char>(text[0]) >= 0xF0 || !readUtf8(text, values)) return wanted;
    const bool good16 = unitsOf(values, units);
    for (const bool big : {false, true}) {
        wanted.utf32[big] = text32(values, big);
        if (good16) wanted.utf16[big] = text16(units, big);
    }
    return wanted;
}

// Compares without doctest's cost first.
void same(const std::string& got, const std::string& want, std::string_view input) {
    if (got == want) return;
    CAPTURE(toHex(input));
    CHECK(toHex(got) == toHex(want));
}

void checkFrom8(const std::string& text, const Wanted& wanted) {
    for (const UnicodeForm* form : unicodeForms()) {
        for (const bool big : {false, true}) {
            same(form->utf8ToUtf16(text.c_str(), big), wanted.utf16[big], text);
            same(form->utf8ToUtf32(text.c_str(), big), wanted.utf32[big], text);
        }
    }
}

struct Counts {
    int good16 = 0, good32 = 0, all = 0;
    void add(const Wanted& wanted) {
        good16 += !wanted.utf16[0].empty();
        good32 += !wanted.utf32[0].empty();
        ++all;
    }
};

// Bytes on both sides of every bound that the rules have.
constexpr unsigned char kEdgeBytes[] = {0x01, 0x40, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F,
                                        0xA0, 0xBF, 0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1,
                                        0xED, 0xEF, 0xF0, 0xF4, 0xF5, 0xF7, 0xF8, 0xFF};

}  // namespace

TEST_CASE("unicode: all strings of one and two bytes, alone and across the end of a block") {
    Counts alone, behind;
    for (unsigned first = 1; first < 256; ++first) {
        for (unsigned second = 0; second < 256; ++second) {
            std::string text(1, static_cast<char>(first));
            if (second != 0) text += static_cast<char>(second);
            Wanted wanted = wantedFrom8(text);
            checkFrom8(text, wanted);
            alone.add(wanted);
            for (const auto& [before, after] : {std::pair{1, 0}, std::pair{31, 70}}) {
                const std::string longer = std::string(static_cast<std::size_t>(before), 'a') +
                                           text + std::string(static_cast<std::size_t>(after), 'b');
                wanted = wantedFrom8(longer);
                checkFrom8(longer, wanted);
                if (after == 0) behind.add(wanted);
            }
        }
    }
    // One byte: 127 of ASCII. Two: ASCII twice, or C0 to DF and any byte.
    CHECK(alone.all == 255 * 256);
    CHECK(alone.good32 == 127 + 127 * 127 + 32 * 255);
    CHECK(alone.good16 == alone.good32);
    CHECK(behind.good32 == alone.good32);
}

TEST_CASE("unicode: strings of three and four bytes at the bounds of the rules") {
    Counts counts;
    std::string text = "a";
    for (const unsigned char b1 : kEdgeBytes) {
        for (const unsigned char b2 : kEdgeBytes) {
            for (const unsigned char b3 : kEdgeBytes) {
                text.resize(1);
                for (const unsigned char byte : {b1, b2, b3}) text += static_cast<char>(byte);
                const Wanted wanted = wantedFrom8(text);
                checkFrom8(text, wanted);
                counts.add(wanted);
                if (b1 < 0xED) continue;
                for (const unsigned char b4 : kEdgeBytes) {
                    text.resize(4);
                    text += static_cast<char>(b4);
                    const Wanted four = wantedFrom8(text);
                    checkFrom8(text, four);
                    counts.add(four);
                }
            }
        }
    }
    CHECK(counts.all == 24 * 24 * 24 + 8 * 24 * 24 * 24);
    CHECK(counts.good16 < counts.good32);
    CHECK(counts.good32 < counts.all);
}

TEST_CASE("unicode: all good strings of three bytes with lead bytes in them, 255 in a text") {
    const auto apart = [](std::uint32_t v) { return v == 0 || isSurrogate(v); };
    Values values, each, units;
    std::string text8, text16From, triple(3, 'x');
    std::size_t good = 0;
    for (unsigned b1 = 1; b1 < 0xF0; ++b1) {
        if (b1 >= 0x80 && b1 < 0xC0) continue;  // all of them are bad
        for (unsigned b2 = 1; b2 < 256; ++b2) {
            if (b1 < 0x80 && (b2 < 0xC0 || b2 > 0xDF)) continue;  // bad, or ASCII three times
            text8 = text16From = "a";
            values.assign(1, 'a');
            units.assign(1, 'a');
            triple[0] = static_cast<char>(b1);
            triple[1] = static_cast<char>(b2);
            for (unsigned b3 = 1; b3 < 256; ++b3) {
                triple[2] = static_cast<char>(b3);
                each.clear();
                if (!readUtf8(triple, each)) continue;
                ++good;
                text8 += triple;
                values.insert(values.end(), each.begin(), each.end());
                if (std::any_of(each.begin(), each.end(), apart)) continue;
                text16From += triple;
                units.insert(units.end(), each.begin(), each.end());
            }
            const bool big = (b1 + b2) % 2 != 0;
            const std::string want32 = text32(values, big), want16 = text16(units, big);
            for (const UnicodeForm* form : unicodeForms()) {
                same(form->utf8ToUtf32(text8.c_str(), big), want32, text8);
                same(form->utf8ToUtf16(text16From.c_str(), big), want16, text16From);
            }
        }
    }
    // ASCII beside two bytes, in either order; three bytes.
    CHECK(good == 127 * 32 * 255 + 32 * 255 * 127 + 16 * 255 * 255);
}

TEST_CASE("unicode: every value is written by the kept formula") {
    constexpr std::uint32_t kStep = 1024;
    Values values, units, back;
    for (std::uint32_t from = 0; from < kEnd; from += kStep) {
        CAPTURE(from);
        std::string text8 = "a", back8 = "a";
        values.assign(1, 'a');
        units.clear();
        for (std::uint32_t value = std::max(from, 1u); value < from + kStep; ++value) {
            values.push_back(value);
            put8(text8, value);
        }
        const bool good16 = unitsOf(values, units);
        CHECK(good16 != isSurrogate(from));
        // Back from UTF-16: what was one unit is the same again, what was two
        // has the plane 25.
        back = values;
        back8.clear();
        for (std::uint32_t& value : back) {
            if (value >= 0x10000) value = 0x190000 + value % 0x10000 / 1024 * 1024 + value % 64;
            put8(back8, value);
        }
        std::string as16[2], as32[2], back32[2];
        for (const bool big : {false, true}) {
            as32[big] = text32(values, big);
            back32[big] = text32(back, big);
            if (good16) as16[big] = text16(units, big);
        }
        for (const UnicodeForm* form : unicodeForms()) {
            CAPTURE(form->name);
            for (const bool big : {false, true}) {
                same(form->utf8ToUtf32(text8.c_str(), big), as32[big], text8);
                same(form->utf8ToUtf16(text8.c_str(), big), as16[big], text8);
                same(form->utf32ToUtf8(as32[big].c_str()), text8, as32[big]);
                // The input's order takes turns.
                const bool in = big != (from / kStep % 2 == 0);
                same(form->utf32ToUtf16(as32[in].c_str(), big), as16[big], as32[in]);
                if (!good16) continue;
                same(form->utf16ToUtf8(as16[big].c_str()), back8, as16[big]);
                same(form->utf16ToUtf32(as16[in].c_str(), big), back32[big], as16[in]);
            }
        }
    }
}

// Of the functions that programs call; one order each, the other one is above.
// Beyond 10FFFF, every 61st.
TEST_CASE("unicode: every value up to 10FFFF alone, through every conversion and back") {
    std::size_t surrogates = 0;
    std::string in8, in32, want16, back8;
    const std::string end16(2, '\0'), end32(4, '\0');
    Values units;
    for (std::uint32_t value = 1; value < kEnd; value += value < 0x110000 ? 1 : 61) {
        in8.clear();
        put8(in8, value);
        in32.assign("\0\0\xFE\xFF", 4);
        put32(in32, value, true);
        in32 += end32;
        want16.clear();
        if (isSurrogate(value)) {
            ++surrogates;
        } else {
            want16 = "\xFE\xFF";
            units.clear();
            putUnits(value, units);
            for (const std::uint32_t unit : units) put16(want16, unit, true);
            want16 += end16;
            back8.clear();
            put8(back8,
                 value < 0x10000 ? value : 0x190000 + value % 0x10000 / 1024 * 1024 + value % 64);
            if (ConvertUTF16ToUTF8String(want16.c_str()) != back8) FAIL(value);
        }
        if (ConvertUTF32ToUTF8String(in32.c_str()) != in8) FAIL(value);
        if (ConvertUTF32ToUTF16String(in32.c_str(), true) != want16) FAIL(value);
        // UTF-8 does not begin with four bytes.
        const bool begins = value < 0x10000;
        if (ConvertUTF8ToUTF32String(in8.c_str(), true) != (begins ? in32 : "")) FAIL(value);
        if (ConvertUTF8ToUTF16String(in8.c_str(), true) != (begins ? want16 : "")) FAIL(value);
    }
    CHECK(surrogates == 2048);
}

TEST_CASE("unicode: values beyond the last one are bad, whatever their lower bits are") {
    for (const UnicodeForm* form : unicodeForms()) {
        CAPTURE(form->name);
        for (std::uint32_t upper = 1; upper < 2048; ++upper) {
            const std::uint32_t value = upper * kEnd + (upper % 3 == 0 ? 0x41 : upper % 3 - 1);
            CAPTURE(value);
            const bool big = upper % 2 != 0;
            for (const std::size_t before : {0, 20}) {
                Values values(before + 30, 'a');
                values[before] = value;
                const std::string text = text32(values, big);
                CHECK(form->utf32ToUtf8(text.c_str()).empty());
                CHECK(form->utf32ToUtf16(text.c_str(), true).empty());
            }
        }
    }
}

TEST_CASE("unicode: every surrogate pair is read by the kept formula") {
    for (std::uint32_t high = 0xD800; high < 0xDC00; ++high) {
        CAPTURE(high);
        Values units, values;
        std::string want8;
        for (std::uint32_t low = 0xDC00; low < 0xE000; ++low) {
            units.insert(units.end(), {high, low});
            values.push_back(0x190000 + high % 64 * 1024 + low % 1024);
            put8(want8, values.back());
        }
        const bool big = high % 2 != 0;
        const std::string in16 = text16(units, big);
        for (const UnicodeForm* form : unicodeForms()) {
            CAPTURE(form->name);
            same(form->utf16ToUtf8(in16.c_str()), want8, in16);
            same(form->utf16ToUtf32(in16.c_str(), true), text32(values, true), in16);
            same(form->utf16ToUtf32(in16.c_str(), false), text32(values, false), in16);
        }
    }
}

TEST_CASE("unicode: every unit alone, behind a high surrogate and in front of a low one") {
    std::size_t good = 0;
    for (std::uint32_t unit = 1; unit < 0x10000; ++unit) {
        const bool big = unit % 2 != 0;
        const bool high = unit >= 0xD800 && unit < 0xDC00, low = unit >= 0xDC00 && unit < 0xE000;
        const std::string alone = high || low ? "" : utf8Bytes(unit);
        const std::string behind = low ? utf8Bytes(0x190000 + 5 * 1024 + unit - 0xDC00) : "";
        const std::string before = high ? utf8Bytes(0x190000 + unit % 64 * 1024 + 7) : "";
        const std::string in[] = {text16({unit}, big), text16({0xD805, unit}, big),
                                  text16({unit, 0xDC07}, big)};
        good += !alone.empty() + !behind.empty() + !before.empty();
        for (const UnicodeForm* form : unicodeForms()) {
            same(form->utf16ToUtf8(in[0].c_str()), alone, in[0]);
            same(form->utf16ToUtf8(in[1].c_str()), behind, in[1]);
            same(form->utf16ToUtf8(in[2].c_str()), before, in[2]);
            const std::string got = form->utf16ToUtf32(in[0].c_str(), true);
            same(got, alone.empty() ? "" : text32({unit}, true), in[0]);
        }
    }
    CHECK(good == 65535 - 2048 + 1024 + 1024);
}
