// The conversions beside the C library's iconv, which follows RFC 3629, RFC
// 2781 and the Unicode standard: on every short UTF-8 string, value, unit and
// pair either both agree, or the input is of a class where our rules differ
// on purpose, and the classes have exactly the sizes that the rules give them.

#include <doctest/doctest.h>
#include <iconv.h>

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>

#include "tests/encoding/hex_bytes.h"
#include "tests/encoding/unicode_support.h"
#include "vaskel/encoding.h"

using namespace Vaskel;

namespace {

// iconv from one encoding to another: the text without mark and terminator, or
// kRefused.
class Iconv {
 public:
    Iconv(const char* to, const char* from) : mState(iconv_open(to, from)) {
        if (mState == iconv_t(-1)) throw std::runtime_error("iconv has no such conversion");
    }
    ~Iconv() { iconv_close(mState); }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;

    const std::string& operator()(const std::string& text) {
        mResult.resize(4 * text.size());
        char *in = const_cast<char*>(text.data()), *out = mResult.data();
        std::size_t left = text.size(), room = mResult.size();
        iconv(mState, nullptr, nullptr, nullptr, nullptr);
        if (iconv(mState, &in, &left, &out, &room) == std::size_t(-1)) return mResult = kRefused;
        mResult.resize(static_cast<std::size_t>(out - mResult.data()));
        return mResult;
    }

    static inline const std::string kRefused = "refused";

 private:
    iconv_t mState;
    std::string mResult;
};

// Ours in the same manner: mark and terminator of unit bytes each taken off.
std::string bare(const std::string& text, std::size_t unit) {
    return text.empty() ? Iconv::kRefused : text.substr(unit, text.size() - 2 * unit);
}

// How many inputs of each class there were.
using Classes = std::map<std::string, int>;

// Counts an input in its class. A class of differences is named by the caller
// and counts only where the results do differ.
void count(Classes& classes, const std::string& ours, const std::string& theirs,
           const char* onPurpose) {
    if (ours == theirs) {
        ++classes[ours == Iconv::kRefused ? "both refuse" : "both agree"];
    } else {
        ++classes[onPurpose];
    }
}

void check(const Classes& classes, const Classes& want) {
    for (const auto& entry : classes) {
        CAPTURE(entry.first);
        REQUIRE(want.count(entry.first) == 1);
        CHECK(entry.second == want.at(entry.first));
    }
    CHECK(classes.size() == want.size());
}

bool isSurrogate(std::uint32_t value) { return value >= 0xD800 && value < 0xE000; }

// Beyond U+10FFFF, where no text has characters, some values do.
constexpr std::uint32_t kBeyond = 64;
std::uint32_t stepAt(std::uint32_t value) { return value < 0x110000 ? 1 : kBeyond; }

std::string in16(std::uint32_t high, std::uint32_t low) {
    std::string text = unit16(high, true);
    return low == 0 ? text : text + unit16(low, true);
}

}  // namespace

TEST_CASE("unicode: iconv reads all strings of two bytes alike, or the difference is wanted") {
    Iconv to16("UTF-16BE", "UTF-8"), to32("UTF-32BE", "UTF-8");
    Classes classes16, classes32;
    std::string text = "xx";
    for (unsigned b1 = 1; b1 < 256; ++b1) {
        for (unsigned b2 = 1; b2 < 256; ++b2) {
            text[0] = static_cast<char>(b1);
            text[1] = static_cast<char>(b2);
            const bool followed = b2 >= 0x80 && b2 < 0xC0;
            const char* const why =
                b1 >= 0xC2 && b1 < 0xE0 ? "any byte may follow"
                : b1 >= 0xC0 && b1 < 0xE0
                    ? followed ? "overlong" : "overlong, and any byte may follow"
                    : "?";
            count(classes16, bare(ConvertUTF8ToUTF16String(text.c_str(), true), 2), to16(text),
                  why);
            count(classes32, bare(ConvertUTF8ToUTF32String(text.c_str(), true), 4), to32(text),
                  why);
        }
    }
    constexpr int kBoth = 127 * 127 + 30 * 64, kOnlyOurs = 30 * (255 - 64) + 2 * 255;
    const Classes want = {{"both agree", kBoth},
                          {"any byte may follow", 30 * (255 - 64)},
                          {"overlong", 2 * 64},
                          {"overlong, and any byte may follow", 2 * (255 - 64)},
                          {"both refuse", 255 * 255 - kBoth - kOnlyOurs}};
    check(classes16, want);
    check(classes32, want);
}

TEST_CASE("unicode: iconv reads every character of UTF-8 alike, or the difference is wanted") {
    Iconv to16("UTF-16BE", "UTF-8"), to32("UTF-32BE", "UTF-8");
    Classes classes16, classes32;
    std::string text;
    for (std::uint32_t value = 1; value < 0x200000; value += stepAt(value)) {
        text = "a";  // a text does not begin with four bytes
        put8(text, value);
        const char* const why16 =
            value >= 0x110000 ? "beyond U+10FFFF" : "the low unit keeps six bits";
        const char* const why32 = value >= 0x110000 ? "beyond U+10FFFF" : "a surrogate is a value";
        count(classes16, bare(ConvertUTF8ToUTF16String(text.c_str(), true), 2), to16(text), why16);
        count(classes32, bare(ConvertUTF8ToUTF32String(text.c_str(), true), 4), to32(text), why32);
    }
    // Of 1024 low units, 64 have no bit beyond the six.
    check(classes16, {{"both agree", 0xFFFF - 2048 + 0x100000 / 16},
                      {"both refuse", 2048},
                      {"the low unit keeps six bits", 0x100000 / 16 * 15},
                      {"beyond U+10FFFF", 0xF0000 / kBeyond}});
    check(classes32, {{"both agree", 0x10FFFF - 2048},
                      {"a surrogate is a value", 2048},
                      {"beyond U+10FFFF", 0xF0000 / kBeyond}});
}

TEST_CASE("unicode: iconv refuses what begins with four bytes only if it is malformed") {
    Iconv to32("UTF-32BE", "UTF-8");
    Classes classes;
    std::string text;
    for (std::uint32_t value = 0x10000; value < 0x200000; value += 0x40) {
        text.clear();
        put8(text, value);
        count(classes, bare(ConvertUTF8ToUTF32String(text.c_str(), true), 4), to32(text),
              "no text begins with four bytes");
    }
    check(classes,
          {{"no text begins with four bytes", 0x100000 / 0x40}, {"both refuse", 0xF0000 / 0x40}});
}

TEST_CASE("unicode: iconv writes every value alike, or the difference is wanted") {
    Iconv to8("UTF-8", "UTF-32BE"), to16("UTF-16LE", "UTF-32BE");
    Classes classes8, classes16;
    std::string text, marked;
    for (std::uint32_t value = 1; value < 0x210000; value += stepAt(value)) {
        text.clear();
        put32(text, value, true);
        marked.assign("\0\0\xFE\xFF", 4);
        marked.append(text).append(4, '\0');
        const std::string ours = ConvertUTF32ToUTF8String(marked.c_str());
        const char* const why8 = isSurrogate(value) ? "a surrogate is a value" : "beyond U+10FFFF";
        const char* const why16 =
            value >= 0x110000 ? "beyond U+10FFFF" : "the low unit keeps six bits";
        count(classes8, ours.empty() ? Iconv::kRefused : ours, to8(text), why8);
        count(classes16, bare(ConvertUTF32ToUTF16String(marked.c_str(), false), 2), to16(text),
              why16);
    }
    check(classes8, {{"both agree", 0x10FFFF - 2048},
                     {"a surrogate is a value", 2048},
                     {"beyond U+10FFFF", 0xF0000 / kBeyond},
                     {"both refuse", 0x10000 / kBeyond}});
    check(classes16, {{"both agree", 0xFFFF - 2048 + 0x100000 / 16},
                      {"both refuse", 2048 + 0x10000 / kBeyond},
                      {"the low unit keeps six bits", 0x100000 / 16 * 15},
                      {"beyond U+10FFFF", 0xF0000 / kBeyond}});
}

TEST_CASE("unicode: iconv reads every unit and pair alike, or the difference is wanted") {
    Iconv to8("UTF-8", "UTF-16BE"), to32("UTF-32LE", "UTF-16BE");
    Classes classes8, classes32;
    const auto tryUnits = [&](std::uint32_t first, std::uint32_t second) {
        const std::string text = in16(first, second);
        const std::string marked = "\xFE\xFF" + text + std::string(2, '\0');
        const std::string ours = ConvertUTF16ToUTF8String(marked.c_str());
        count(classes8, ours.empty() ? Iconv::kRefused : ours, to8(text), "pairs lie in plane 25");
        count(classes32, bare(ConvertUTF16ToUTF32String(marked.c_str(), false), 4), to32(text),
              "pairs lie in plane 25");
    };
    for (std::uint32_t unit = 1; unit < 0x10000; ++unit) tryUnits(unit, 0);
    for (std::uint32_t high = 0xD800; high < 0xDC00; ++high) {
        for (std::uint32_t low = 0xDC00; low < 0xE000; ++low) tryUnits(high, low);
        tryUnits(high, 0x41);
        tryUnits(0x41, high);
    }
    const Classes want = {{"both agree", 0xFFFF - 2048},
                          {"both refuse", 2048 + 2 * 1024},
                          {"pairs lie in plane 25", 1024 * 1024}};
    check(classes8, want);
    check(classes32, want);
}
