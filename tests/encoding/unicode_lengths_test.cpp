// Texts of every length around those of blocks, short texts and chunks, beside
// the plain form: whatever is behind a text, or is not there, changes nothing.

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include "encoding/unicode_onepass.h"
#include "tests/encoding/unicode_conversions.h"

namespace {

using Values = std::vector<std::uint32_t>;

struct Fill {
    const char* why;
    std::uint32_t (*value)(std::size_t index);
};

constexpr Fill kFills[] = {
    {"ASCII", [](std::size_t i) { return 'a' + static_cast<std::uint32_t>(i % 26); }},
    {"two bytes", [](std::size_t i) { return 0x391 + static_cast<std::uint32_t>(i % 57); }},
    {"one byte and two", [](std::size_t i) { return i % 5 == 3 ? 0xE9u : 'x'; }},
    {"three bytes",
     [](std::size_t i) { return 0x4E00 + static_cast<std::uint32_t>(i * 37 % 20000); }},
    {"three bytes and one", [](std::size_t i) { return i % 23 == 22 ? ' ' : 0x3042u; }},
    {"four bytes", [](std::size_t i) { return 0x1F600 + static_cast<std::uint32_t>(i % 60); }},
    {"all of them",
     [](std::size_t i) {
         constexpr std::uint32_t kAll[] = {'q', 0x7FF, 0x4E2D, 0x1F600, 0xFFFF, 0x80, 0x10000};
         return kAll[(i * i + i / 9) % std::size(kAll)] + (i % 11 == 0 ? 1 : 0);
     }},
};

Values filled(const Fill& fill, std::size_t count) {
    Values values;
    for (std::size_t i = 0; i < count; ++i) values.push_back(fill.value(i) & 0x1FFFFF);
    if (!values.empty() && values[0] >= 0x10000) values[0] = 'x';  // or it were no UTF-8
    return values;
}

std::string text8(const Values& values) {
    std::string text;
    for (const std::uint32_t value : values) put8(text, value);
    return text + '\0';
}

// As everyone else writes UTF-16, so that any value can be read.
Values unitsOf(const Values& values) {
    Values units;
    for (const std::uint32_t value : values) {
        if (value < 0x10000) {
            units.push_back(value);
        } else {
            units.push_back(0xD800 + value / 1024 % 1024);
            units.push_back(0xDC00 + value % 1024);
        }
    }
    return units;
}

int compareAll(const Values& values, int place) {
    int good = compareForms(kFrom8, text8(values), place);
    for (const bool big : {false, true}) {
        good += compareForms(kFrom16, text16(unitsOf(values), big), place);
        good += compareForms(kFrom32, text32(values, big), place);
    }
    return good;
}

}  // namespace

TEST_CASE("unicode: every form gives the plain form's bytes for texts of every short length") {
    // Short texts end at 256 bytes: 64 values of UTF-32, 128 units, 85 characters
    // of three bytes.
    for (const Fill& fill : kFills) {
        CAPTURE(fill.why);
        for (std::size_t count = 0; count < 280; ++count) {
            CAPTURE(count);
            // The empty text is an empty one in UTF-8 as well.
            CHECK(compareAll(filled(fill, count), static_cast<int>(count % PlacedText::kPlaces)) ==
                  (count ? 16 : 12));
        }
        for (int place = 0; place < PlacedText::kPlaces; ++place)
            for (const std::size_t count : {1, 15, 16, 31, 32, 33, 60, 61, 63, 64, 65, 128, 129})
                CHECK(compareAll(filled(fill, count), place) == 16);
    }
}

TEST_CASE("unicode: every form gives the plain form's bytes for lengths around those of chunks") {
    for (const Fill& fill : kFills) {
        CAPTURE(fill.why);
        for (const std::size_t chunk : {680, 1024, 1365, 2048, 2730, 4096, 8192}) {
            for (std::size_t more = 0; more < 180; more += 9) {
                CAPTURE(chunk);
                CAPTURE(more);
                CHECK(compareAll(filled(fill, chunk + more - 90),
                                 static_cast<int>(more % PlacedText::kPlaces)) == 16);
            }
        }
    }
}

// From 64 KiB on, a part of the text tells how much memory to ask for; from 2 MiB
// on, there is less in reserve.
TEST_CASE("unicode: every form gives the plain form's bytes for texts that outgrow their memory") {
    for (const std::size_t count : {30000, 1100000}) {
        CAPTURE(count);
        Values values(count, 'a');
        for (std::size_t i = count / 6; i < count; ++i)
            values[i] = 0x3042 + static_cast<std::uint32_t>(i % 64);
        for (std::size_t i = 9 * count / 10; i < count; ++i)
            values[i] = 0x1F600 + static_cast<std::uint32_t>(i % 64);
        CHECK(compareForms(kFrom8, text8(values), 0) == 4);
        CHECK(compareForms(kFrom16, text16(unitsOf(values), false), 0) == 3);
        CHECK(compareForms(kFrom32, text32(values, false), 0) == 3);
    }
}

namespace {

constexpr std::uint32_t kBadUnits[] = {0xD800, 0xDBFF, 0xDC00, 0xDFFF};
constexpr std::uint32_t kBadValues[] = {0xD800, 0xDFFF, 0x200000, 0xFFFF0041};
constexpr const char* kBadBytes[] = {"\x80",         "\xC3",         "\xE4\xB8",
                                     "\xF0\x9F\x98", "\xF8",         "\xC0\x80",
                                     "\xE0\x80\x80", "\xED\xA0\x80", "\xF0\x80\x80\x80"};

// How many of the plain form's results were not empty, and how many there were.
struct Found {
    int good = 0, all = 0;
};

// Every fault in front of the values from at on.
void compareFaults(const Values& values, std::size_t at, int place, Found& found) {
    CAPTURE(values.size());
    CAPTURE(at);
    const std::string before = text8(Values(values.begin(), values.begin() + at));
    const std::string behind = text8(Values(values.begin() + at, values.end()));
    for (const char* bad : kBadBytes) {
        found.good +=
            compareForms(kFrom8, before.substr(0, before.size() - 1) + bad + behind, place);
        found.all += 4;
    }
    const Values units = unitsOf(values);
    for (const std::uint32_t bad : kBadUnits) {
        Values faulty = units;  // with pairs in front, between two of them or in one
        faulty.insert(faulty.begin() + at, bad);
        CHECK(compareForms(kFrom16, text16(faulty, at % 2 == 0), place) == 0);
    }
    for (const std::uint32_t bad : kBadValues) {
        Values faulty = values;
        faulty.insert(faulty.begin() + at, bad);
        // Surrogates are bad in UTF-16 only.
        CHECK(compareForms(kFrom32, text32(faulty, at % 2 == 0), place) == (bad < 0x10000 ? 1 : 0));
    }
}

}  // namespace

TEST_CASE("unicode: every form finds a fault wherever it is, and none behind the end") {
    Found found;
    for (const Fill& fill : kFills) {
        CAPTURE(fill.why);
        for (const std::size_t count :
             {1, 2, 14, 15, 16, 17, 30, 31, 32, 33, 62, 63, 64, 66, 130}) {
            const Values values = filled(fill, count);
            for (std::size_t at = 0; at <= count; at += count > 66 ? 3 : 1)
                compareFaults(values, at, static_cast<int>((count + at) % PlacedText::kPlaces),
                              found);
        }
    }
    CHECK(found.good > found.all / 4);
    CHECK(found.good < found.all);
}

// Chunks have 2048, 4096 or 8192 bytes, and results written past the caches come
// from a buffer that is filled anew for each.
TEST_CASE("unicode: every form finds a fault where chunks meet") {
    const std::size_t kept = Vaskel::gUnicodeStreams.from;
    Found found;
    for (const Fill& fill : {kFills[2], kFills[3], kFills[6]}) {
        CAPTURE(fill.why);
        const Values values = filled(fill, 3000);
        std::size_t bytes = 0;
        for (std::size_t at = 0; at < values.size(); ++at) {
            const auto near = [](std::size_t byte) { return (byte + 66) % 2048 < 132; };
            if (at > 0 && ((near(bytes) && at % 3 == 0) || (near(4 * at) && at % 4 == 0))) {
                Vaskel::gUnicodeStreams.from = at % 2 == 0 ? 1 : kept;
                compareFaults(values, at, static_cast<int>(at % PlacedText::kPlaces), found);
            }
            bytes += utf8Bytes(values[at]).size();
        }
    }
    Vaskel::gUnicodeStreams.from = kept;
    CHECK(found.good > found.all / 4);
    CHECK(found.good < found.all);
}

TEST_CASE("unicode: whatever is behind a text changes nothing") {
    for (const Fill& fill : kFills) {
        CAPTURE(fill.why);
        for (std::size_t count = 0; count < 80; ++count) {
            CAPTURE(count);
            const Values values = filled(fill, count);
            for (const int behind : {0x00, 0x01, 0x41, 0x80, 0xC3, 0xD8, 0xDC, 0xE4, 0xF0, 0xFF}) {
                CAPTURE(behind);
                const std::string more(200, static_cast<char>(behind));
                int good = compareForms(kFrom8, text8(values) + more, PlacedText::kPlaces - 1);
                for (const bool big : {false, true}) {
                    const std::string units = text16(unitsOf(values), big) + more;
                    good += compareForms(kFrom16, units, PlacedText::kPlaces - 1);
                    good +=
                        compareForms(kFrom32, text32(values, big) + more, PlacedText::kPlaces - 1);
                }
                CHECK(good == (count ? 16 : 12));
            }
        }
    }
}

// Short texts are looked at beyond their end, but not beyond their page unless they go
// on there.
TEST_CASE("unicode: every form gives the plain form's bytes for texts that lie in two pages") {
    constexpr std::size_t kPage = 4096;
    GuardedBytes pages(2 * kPage, GuardedBytes::AtStart);
    int good = 0, all = 0;
    const auto compare = [&](const auto& conversions, const std::string& text) {
        for (std::size_t here = 1; here < text.size() + 70; ++here) {
            CAPTURE(here);
            std::fill_n(pages.data(), pages.size(), 0x80);
            char* const placed = pages.chars() + kPage - here;
            text.copy(placed, text.size());
            good += compareForms(conversions, placed);
            all += static_cast<int>(std::size(conversions));
        }
    };
    for (const Fill& fill : kFills) {
        CAPTURE(fill.why);
        for (const std::size_t count : {0, 1, 20, 33, 63, 64, 65}) {
            CAPTURE(count);
            const Values values = filled(fill, count);
            compare(kFrom8, text8(values));
            compare(kFrom16, text16(unitsOf(values), count % 2 == 0));
            compare(kFrom32, text32(values, count % 2 != 0));
        }
    }
    CHECK(good > 9 * all / 10);
    CHECK(good < all);  // the empty text of UTF-8 becomes an empty one
}
