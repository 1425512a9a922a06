// The embedded platform's string helpers over all bytes, beside unmapped pages.

#include <doctest/doctest.h>

#include <clocale>
#include <cstddef>
#include <string>

#include "platform/orlune/strings.h"
#include "tests/support/guarded_bytes.h"

namespace {

int sign(int value) { return (value > 0) - (value < 0); }

int small(int byte) { return byte >= 65 && byte <= 90 ? byte + 32 : byte; }  // A to Z

TEST_CASE("comparisons take bytes as unsigned values, and fold the 26 capitals only") {
    for (const char* locale : {"C", "C.UTF-8", ""}) {
        if (std::setlocale(LC_ALL, locale) == nullptr) continue;
        CAPTURE(locale);
        int wrong = 0;
        for (int a = 1; a < 256; ++a)
            for (int b = 1; b < 256; ++b) {
                const char left[] = {'x', static_cast<char>(a), 0};
                const char right[] = {'x', static_cast<char>(b), 0};
                wrong += sign(Orlune::strcom(left, right)) != sign(a - b);
                wrong += sign(Orlune::strcomign(left, right)) != sign(small(a) - small(b));
                wrong += sign(Orlune::strcompre(left, right)) != sign(a - b);
            }
        CHECK(wrong == 0);
    }
    std::setlocale(LC_ALL, "C");
}

TEST_CASE("comparisons read nothing behind a terminator or the first difference") {
    struct Row {
        std::string a, b;
        int com, ign, pre;  // pre: b as the prefix of a
    };
    const Row kRows[] = {
        {"", "", 0, 0, 0},
        {"a", "", 1, 1, 0},
        {"", "a", -1, -1, -1},
        {"abc", "abc", 0, 0, 0},
        {"abc", "ab", 1, 1, 0},
        {"ab", "abc", -1, -1, -1},
        {"abX", "abc", -1, 1, -1},
        {"ABC", "abc", -1, 0, -1},
        {"abC", "ABc", 1, 0, 1},
        {"[", "a", -1, -1, -1},                // lies between the capitals and the small letters
        {"_", "B", 1, -1, 1},                  // below a small b, above a capital one
        {"\xC3\x84", "\xC3\xA4", -1, -1, -1},  // two umlauts, not folded
        {"\xFF", "a", 1, 1, 1},
    };
    for (const Row& row : kRows) {
        CAPTURE(row.a);
        CAPTURE(row.b);
        const GuardedText a(row.a), b(row.b);
        CHECK(sign(Orlune::strcom(a, b)) == row.com);
        CHECK(sign(Orlune::strcom(b, a)) == -row.com);
        CHECK(sign(Orlune::strcomign(a, b)) == row.ign);
        CHECK(sign(Orlune::strcomign(b, a)) == -row.ign);
        CHECK(sign(Orlune::strcompre(a, b)) == row.pre);
    }
    // Text that ends without a terminator, but differs before its end.
    GuardedBytes unterminated(std::string_view("%!PX"));
    CHECK(sign(Orlune::strcompre(unterminated.chars(), "%!PS")) == 1);
}

TEST_CASE("strmov fills a buffer of exact size and returns its last byte") {
    for (const std::size_t length : {0u, 1u, 15u, 16u, 4095u, 4096u}) {
        CAPTURE(length);
        const std::string text(length, 'm');
        const GuardedText from(text);
        GuardedBytes to(length + 1);
        to[length] = 'x';
        CHECK(Orlune::strmov(to.chars(), from) == to.chars() + length);
        CHECK(to.chars() == text);
    }
}

}  // namespace
