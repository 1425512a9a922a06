// Every form of the Unicode conversions beside the plain one, on good text of
// many kinds and on text with every kind of fault, in front of a guard page.

#include <doctest/doctest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "encoding/unicode.h"
#include "encoding/unicode_blocks.h"
#include "encoding/unicode_onepass.h"
#include "tests/encoding/unicode_conversions.h"
#include "vaskel/encoding.h"

namespace {

// The kinds of characters in a text; a text mixes those whose bit is set.
enum Kind : unsigned { kAscii = 1, kLatin = 2, kGreek = 4, kCjk = 8, kEmoji = 16, kRare = 32 };

struct Random {
    std::mt19937 words;
    std::uint32_t below(std::uint32_t n) { return static_cast<std::uint32_t>(words() % n); }
};

std::uint32_t character(Random& random, unsigned kinds) {
    for (;;) {
        switch (random.below(6)) {
            case 0:
                if (kinds & kAscii) return 1 + random.below(0x7F);
                break;
            case 1:
                if (kinds & kLatin) return 0x80 + random.below(0x100);
                break;
            case 2:
                if (kinds & kGreek) return 0x370 + random.below(0x490);
                break;
            case 3:
                if (kinds & kCjk) return 0x800 + random.below(0xD000);
                break;
            case 4:
                if (kinds & kEmoji) return 0x10000 + random.below(0x1F0000);
                break;
            default:
                if (kinds & kRare) {
                    constexpr std::uint32_t kEdges[] = {
                        1,      0x7F,   0x80,     0x7FF,    0x800,    0xFFF,    0x1000,   0x3000,
                        0x4000, 0xD7FF, 0xE000,   0xFEFF,   0xFFFE,   0xFFFF,   0x10000,  0x1000F,
                        0xFFFF, 0xFFFF, 0x10FFFF, 0x110000, 0x190000, 0x19FFFF, 0x1FFFFF, 0x3FFFF};
                    return kEdges[random.below(std::size(kEdges))];
                }
        }
    }
}

std::string utf8Of(std::uint32_t value) {
    unsigned char bytes[4], *end = bytes;
    Vaskel::putUtf8(end, value);
    return {reinterpret_cast<const char*>(bytes), reinterpret_cast<const char*>(end)};
}
std::string utf16Of(std::uint32_t unit, bool big) {
    unsigned char bytes[2], *end = bytes;
    Vaskel::put16(end, unit, big);
    return {reinterpret_cast<const char*>(bytes), 2};
}
std::string utf32Of(std::uint32_t value, bool big) {
    unsigned char bytes[4], *end = bytes;
    Vaskel::put32(end, value, big);
    return {reinterpret_cast<const char*>(bytes), 4};
}

constexpr unsigned kMixes[] = {
    kAscii,          kAscii | kLatin, kAscii | kGreek, kGreek,         kCjk, kCjk | kAscii, kEmoji,
    kEmoji | kAscii, kEmoji | kCjk,   kRare,           kRare | kAscii, 0x3F, kLatin | kRare};

// Lengths around those of blocks and chunks.
std::size_t someLength(Random& random) {
    switch (random.below(10)) {
        case 0:
            return 4000 + random.below(300);
        case 1:
            return 1900 + random.below(300);
        case 2:
            return 300 + random.below(1200);
        default:
            return random.below(200);
    }
}

constexpr int kRounds = 4000;
constexpr unsigned kSeed = 7101;

}  // namespace

TEST_CASE("unicode: every form gives the plain form's bytes for UTF-8") {
    Random random{std::mt19937(kSeed)};
    int good = 0, all = 0;
    for (int round = 0; round < kRounds; ++round) {
        const unsigned kinds = kMixes[static_cast<std::size_t>(round) % std::size(kMixes)];
        const std::size_t length = someLength(random);
        std::string text = "a";
        while (text.size() < length) text += utf8Of(character(random, kinds));
        if (length == 0) text.clear();
        // Half of the texts get a few faults; not a zero byte, which would end them.
        constexpr const char* kFaults[] = {"\x80",
                                           "\xC0\x80",
                                           "\xC1\x81",
                                           "\xE0\x80\x80",
                                           "\xE0\x81\x81",
                                           "\xF0\x80\x80\x80",
                                           "\xED\xA0\x80",
                                           "\xED\xBF\xBF",
                                           "\xC3"
                                           "A",
                                           "\xE3"
                                           "AB",
                                           "\xF1"
                                           "ABC",
                                           "\xC3\xC3\xC3",
                                           "\xF8",
                                           "\xFF",
                                           "\xC3",
                                           "\xE4\xB8",
                                           "\xF0\x9F\x98",
                                           "\xF0\x8D\xA0\x80",
                                           "\xE3\xF1\xF2",
                                           "\xF5\xF6\xF7\xF8"};
        if (random.below(2) == 0 && !text.empty()) {
            for (std::uint32_t faults = 1 + random.below(3); faults > 0; --faults) {
                const std::size_t at = 1 + random.below(static_cast<std::uint32_t>(text.size()));
                if (random.below(2) == 0)
                    text.insert(at, kFaults[random.below(std::size(kFaults))]);
                else if (at < text.size())
                    text[at] = static_cast<char>(1 + random.below(255));
            }
        }
        if (random.below(4) == 0)
            text.resize(random.below(static_cast<std::uint32_t>(text.size()) + 1));
        text += '\0';
        good += compareForms(kFrom8, text, static_cast<int>(random.below(4)));
        all += 4;
    }
    CHECK(good > all / 2);
    CHECK(good < all);
}

TEST_CASE("unicode: every form gives the plain form's bytes for UTF-16") {
    Random random{std::mt19937(kSeed)};
    int good = 0, all = 0;
    for (int round = 0; round < kRounds; ++round) {
        const unsigned kinds = kMixes[static_cast<std::size_t>(round) % std::size(kMixes)];
        const std::size_t length = someLength(random);
        const bool big = random.below(2) != 0;
        std::vector<std::uint32_t> units;
        while (units.size() < length) {
            const std::uint32_t value = character(random, kinds);
            if (value < 0x10000) {
                units.push_back(value);
            } else {
                units.push_back(0xD800 | (value >> 10 & 0x3FF));
                units.push_back(0xDC00 | (value & 0x3FF));
            }
        }
        if (random.below(4) == 0 && !units.empty())
            units[random.below(static_cast<std::uint32_t>(units.size()))] =
                0xD800 + random.below(0x800);
        if (random.below(6) == 0)
            units.resize(random.below(static_cast<std::uint32_t>(units.size()) + 1));
        std::string text = utf16Of(0xFEFF, big);
        for (const std::uint32_t unit : units) text += utf16Of(unit, big);
        text += utf16Of(0, big);
        good += compareForms(kFrom16, text, static_cast<int>(random.below(4)));
        all += 3;
    }
    CHECK(good > all / 2);
    CHECK(good < all);
}

TEST_CASE("unicode: every form gives the plain form's bytes for UTF-32") {
    Random random{std::mt19937(kSeed)};
    int good = 0, all = 0;
    for (int round = 0; round < kRounds; ++round) {
        const unsigned kinds = kMixes[static_cast<std::size_t>(round) % std::size(kMixes)];
        const std::size_t length = someLength(random);
        const bool big = random.below(2) != 0;
        std::string text = utf32Of(0xFEFF, big);
        const std::uint32_t fault =
            random.below(4) == 0 ? random.below(static_cast<std::uint32_t>(length) + 1) : ~0u;
        for (std::size_t i = 0; i < length; ++i) {
            constexpr std::uint32_t kFaults[] = {0xD800,   0xDBFF,     0xDC00,     0xDFFF,
                                                 0x200000, 0xFFFE0000, 0x80000041, 0xFFFFFFFF};
            text += utf32Of(
                i == fault ? kFaults[random.below(std::size(kFaults))] : character(random, kinds),
                big);
        }
        text += utf32Of(0, big);
        good += compareForms(kFrom32, text, static_cast<int>(random.below(4)));
        all += 3;
    }
    CHECK(good > all / 2);
    CHECK(good < all);
}

namespace {

// Long texts whose characters are of one kind first and of another then, each of
// them good, and then with a fault at its end.
void compareTextsThatGoOnOtherwise() {
    Random random{std::mt19937(kSeed)};
    for (const unsigned first : {kAscii, kCjk, kEmoji}) {
        for (const unsigned second : {kAscii, kGreek, kCjk, kEmoji}) {
            CAPTURE(first);
            CAPTURE(second);
            std::string text8 = "a", text16 = utf16Of(0xFEFF, true),
                        text32 = utf32Of(0xFEFF, false);
            for (std::uint32_t i = 0, count = 29000 + random.below(1000); i < count; ++i) {
                const std::uint32_t value = character(random, i < 9000 ? first : second);
                text8 += utf8Of(value);
                text32 += utf32Of(value, false);
                if (value >= 0x10000) text16 += utf16Of(0xD800 | (value >> 10 & 0x3FF), true);
                text16 += utf16Of(value < 0x10000 ? value : 0xDC00 | (value & 0x3FF), true);
            }
            CHECK(compareForms(kFrom8, text8 + '\0', 0) == 4);
            CHECK(compareForms(kFrom16, text16 + utf16Of(0, true), 1) == 3);
            CHECK(compareForms(kFrom32, text32 + utf32Of(0, false), 0) == 3);
            CHECK(compareForms(kFrom8, text8 + std::string("\xC0\x80x", 4), 0) == 4);
            CHECK(compareForms(kFrom8, text8 + std::string("\xC0\x80\xFF", 4), 0) == 0);
            CHECK(compareForms(kFrom16, text16 + utf16Of(0xDC00, true) + utf16Of(0, true), 1) == 0);
            CHECK(compareForms(kFrom32, text32 + utf32Of(0x200000, false) + utf32Of(0, false), 0) ==
                  0);
        }
    }
}

}  // namespace

// The first chunk of a long text tells how much memory to ask for.
TEST_CASE("unicode: every form gives the plain form's bytes for texts that go on otherwise") {
    const unsigned before = Vaskel::gUnicodeStreams.count;
    compareTextsThatGoOnOtherwise();
    CHECK(Vaskel::gUnicodeStreams.count == before);
}

TEST_CASE("unicode: every form gives the plain form's bytes for texts written past the caches") {
    const std::size_t kept = Vaskel::gUnicodeStreams.from.exchange(1);
    const unsigned before = Vaskel::gUnicodeStreams.count;
    compareTextsThatGoOnOtherwise();
    Vaskel::gUnicodeStreams.from = kept;
    // At least one result of each of 10 conversions, 3 * 4 texts and every faster form.
    CHECK(Vaskel::gUnicodeStreams.count - before >= 10 * 12 * (Vaskel::unicodeForms().size() - 1));
    CHECK(kept == 24 << 20);
}

// Runs of three bytes have a way of their own.
TEST_CASE(
    "unicode: every form gives the plain form's bytes for runs of characters of three bytes") {
    constexpr const char* kBetween[] = {"a",
                                        " ",
                                        "ab",
                                        "\xC3\xA9",
                                        "\xDF\xBF",
                                        "\xF0\x9F\x98\x80",
                                        "\x7F",
                                        "\xE0\x9F\xBF",
                                        "\xED\xA0\x80",
                                        "\xED\xBF\xBF",
                                        "\xE0\x80\x80",
                                        "\xE4\x41\x42",
                                        "\x80",
                                        "\xC0\x80",
                                        "\xF8",
                                        "\xE4\xB8"};
    constexpr std::size_t kGood = 7;  // of the first ones
    Random random{std::mt19937(kSeed)};
    int good = 0;
    for (int round = 0; round < 6000; ++round) {
        std::string text(random.below(3), 'a');
        const std::size_t kinds = random.below(4) == 0 ? std::size(kBetween) : kGood;
        for (std::uint32_t runs = 1 + random.below(6); runs > 0; --runs) {
            for (std::uint32_t left = random.below(70); left > 0; --left) {
                constexpr std::uint32_t kEdges[] = {0x800, 0xFFF, 0xD7FF, 0xE000, 0xFFFF};
                text += utf8Of(random.below(8) == 0 ? kEdges[random.below(std::size(kEdges))]
                                                    : 0x800 + random.below(0xD000));
            }
            text += kBetween[random.below(static_cast<std::uint32_t>(kinds))];
        }
        good += compareForms(kFrom8, text + '\0', static_cast<int>(random.below(4)));
    }
    CHECK(good > 4 * 3000);
    CHECK(good < 4 * 5900);
}
