// The embedded platform's arithmetic against integers of any size. Tables by
// hand stand in the platform check, which runs on it as on any host.

#include <doctest/doctest.h>

#include <boost/multiprecision/cpp_int.hpp>
#include <cfenv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "platform/orlune/arithmetic.h"

namespace {

using boost::multiprecision::cpp_int;

constexpr std::int64_t kMin64 = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax64 = std::numeric_limits<std::int64_t>::max();

std::int64_t saturated(const cpp_int& value) {
    if (value < kMin64) return kMin64;
    if (value > kMax64) return kMax64;
    return value.convert_to<std::int64_t>();
}

std::int64_t floorRootOf(const cpp_int& value) {
    return value < 0 ? 0 : saturated(boost::multiprecision::sqrt(value));
}

// Numbers where products, roots and divisions of 64 bits turn.
std::vector<std::int64_t> edges64() {
    std::vector<std::int64_t> edges = {0, 1, 2, 3, 10, 3037000499, 3037000500, kMax64, kMax64 - 1};
    for (const int bit : {15, 16, 26, 31, 32, 52, 53, 62})
        for (const int offset : {-1, 0, 1}) edges.push_back((std::int64_t{1} << bit) + offset);
    const std::size_t count = edges.size();
    for (std::size_t i = 0; i < count; ++i) edges.push_back(-edges[i]);
    edges.push_back(kMin64);
    return edges;
}

// A number whose length in bits is random, too.
std::int64_t anyInteger(std::mt19937_64& random) {
    return static_cast<std::int64_t>(random()) >> (random() % 64);
}

// iround told without a rounded operation: the bits of value are m * 2^e.
int iroundByBits(double value) {
    if (value != value) return 0;
    if (std::fabs(value) >= 4294967296.0)
        return value > 0 ? std::numeric_limits<int>::max() : std::numeric_limits<int>::min();
    int exponent = 0;
    const double fraction = std::frexp(std::fabs(value), &exponent);  // 0.5 to 1, or 0
    if (exponent < 0) return 0;                                       // below a half
    const auto mantissa = static_cast<std::uint64_t>(std::ldexp(fraction, 53));
    // value is mantissa * 2^(exponent - 53), exponent at most 32.
    const std::uint64_t half = std::uint64_t{1} << (53 - exponent - 1);
    const auto magnitude = static_cast<std::int64_t>((mantissa + half) >> (53 - exponent));
    const std::int64_t rounded = value < 0 ? -magnitude : magnitude;
    if (rounded > std::numeric_limits<int>::max()) return std::numeric_limits<int>::max();
    if (rounded < std::numeric_limits<int>::min()) return std::numeric_limits<int>::min();
    return static_cast<int>(rounded);
}

TEST_CASE("iround agrees with rounding by bits, beside every kind of boundary") {
    std::mt19937_64 random(20260);
    const auto checkOne = [](double value) {
        const int got = Orlune::iround(value), want = iroundByBits(value);
        if (got == want) return;
        CAPTURE(value);
        CHECK(got == want);
    };
    const auto check = [&](double value) {
        for (const double near :
             {value, std::nextafter(value, -HUGE_VAL), std::nextafter(value, HUGE_VAL)}) {
            checkOne(near);
            checkOne(-near);
        }
    };
    for (int bit = 0; bit < 34; ++bit)
        for (const double offset : {-1.0, -0.5, 0.0, 0.5, 1.0, 1.5})
            check(std::ldexp(1.0, bit) + offset);
    for (int i = 0; i < 200000; ++i) {
        check(static_cast<double>(random() >> 32) + 0.5);
        std::uint64_t bits = random();
        double any;
        std::memcpy(&any, &bits, sizeof any);
        check(any);
        check(std::ldexp(static_cast<double>(random() >> 11), -static_cast<int>(random() % 60)));
    }
    CHECK(iroundByBits(2147483646.5) == 2147483647);  // the reference itself, by hand
    CHECK(iroundByBits(0.49999999999999994) == 0);
    CHECK(iroundByBits(-2.5) == -3);
}

TEST_CASE("iround and mulsqrt do not see the rounding mode") {
    std::mt19937_64 random(20261);
    std::vector<double> values;
    std::vector<std::int64_t> integers = edges64();
    for (int i = 0; i < 2000; ++i) {
        values.push_back(static_cast<double>(anyInteger(random)) / 1024.0);
        values.push_back(static_cast<double>(random() % 1000) + 0.5);
        integers.push_back(anyInteger(random));
    }
    std::vector<int> rounded;
    std::vector<std::int64_t> roots;
    const auto all = [&](std::vector<int>& ints, std::vector<std::int64_t>& longs) {
        for (const double value : values) ints.push_back(Orlune::iround(value));
        for (std::size_t i = 1; i < integers.size(); ++i) {
            longs.push_back(Orlune::mulsqrt(integers[i - 1], integers[i]));
            longs.push_back(
                Orlune::mulsqrt(integers[i], integers[i], integers[i - 1], integers[i - 1]));
        }
    };
    all(rounded, roots);
    for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        CAPTURE(mode);
        std::vector<int> otherRounded;
        std::vector<std::int64_t> otherRoots;
        std::fesetround(mode);
        all(otherRounded, otherRoots);
        std::fesetround(FE_TONEAREST);
        CHECK((otherRounded == rounded));
        CHECK((otherRoots == roots));
    }
}

TEST_CASE("muldiv agrees with integers of any size") {
    const auto check = [](std::int64_t a, std::int64_t b, std::int64_t c) {
        const std::int64_t want = c == 0 ? 0 : saturated(cpp_int(a) * b / c);
        if (Orlune::muldiv(a, b, c) != want) {
            CAPTURE(a);
            CAPTURE(b);
            CAPTURE(c);
            CHECK(Orlune::muldiv(a, b, c) == want);
        }
    };
    const std::vector<std::int64_t> edges = edges64();
    for (const std::int64_t a : edges)
        for (const std::int64_t b : edges)
            for (const std::int64_t c : edges) check(a, b, c);
    std::mt19937_64 random(20262);
    for (int i = 0; i < 100000; ++i)
        check(anyInteger(random), anyInteger(random), anyInteger(random));
    CHECK(Orlune::muldiv(kMin64, kMin64, -1) == kMin64);
    CHECK(Orlune::muldiv(kMin64, kMin64, 1) == kMax64);
    CHECK(Orlune::muldiv(kMin64, -1, 1) == kMax64);
    CHECK(Orlune::muldiv(kMin64, kMin64, kMin64) == kMin64);
}

TEST_CASE("mulsqrt agrees with integers of any size") {
    const auto check = [](std::int64_t a, std::int64_t b, std::int64_t c, std::int64_t d) {
        const cpp_int first = cpp_int(a) * b, second = cpp_int(c) * d;
        const bool same = Orlune::mulsqrt(a, b) == floorRootOf(first) &&
                          Orlune::mulsqrt(a, b, c, d) == floorRootOf(first + second);
        if (!same) {
            CAPTURE(a);
            CAPTURE(b);
            CAPTURE(c);
            CAPTURE(d);
            CHECK(Orlune::mulsqrt(a, b) == floorRootOf(first));
            CHECK(Orlune::mulsqrt(a, b, c, d) == floorRootOf(first + second));
        }
    };
    const std::vector<std::int64_t> edges = edges64();
    std::mt19937_64 random(20263);
    for (const std::int64_t a : edges)
        for (const std::int64_t b : edges) {
            check(a, b, 0, 0);
            check(a, a, b, b);
            check(a, a, b, 1);
            for (int i = 0; i < 20; ++i)
                check(a, b, edges[random() % edges.size()], edges[random() % edges.size()]);
        }
    for (int i = 0; i < 50000; ++i)
        check(anyInteger(random), anyInteger(random), anyInteger(random), anyInteger(random));
    for (int i = 0; i < 50000; ++i) {  // squares, and one less than squares
        const std::int64_t root = anyInteger(random) & kMax64;
        check(root, root, -1, 1);
        check(root, root, root, 2);
    }
    CHECK(Orlune::mulsqrt(kMin64, kMin64) == kMax64);
    CHECK(Orlune::mulsqrt(kMin64, kMin64, kMin64, kMin64) == kMax64);
    CHECK(Orlune::mulsqrt(kMin64, kMax64, kMin64, kMax64) == 0);
    CHECK(Orlune::mulsqrt(kMin64, kMax64, kMin64, kMin64) == 3037000499);  // the root of 2^63
}

TEST_CASE("mulcom agrees with products of 64 bits at every turn of 32") {
    std::vector<int> edges = {0, 1, 2, 46340, 46341, 65535, 65536, INT_MAX, INT_MAX - 1, INT_MIN};
    for (std::size_t i = 1, count = edges.size() - 1; i < count; ++i) edges.push_back(-edges[i]);
    int equal = 0;
    const auto check = [&](int a, int b, int c, int d) {
        const cpp_int left = cpp_int(a) * b, right = cpp_int(c) * d;
        const int want = left < right ? -1 : left > right ? 1 : 0;
        equal += want == 0;
        if (Orlune::mulcom(a, b, c, d) != want) {
            CAPTURE(a);
            CAPTURE(b);
            CAPTURE(c);
            CAPTURE(d);
            CHECK(Orlune::mulcom(a, b, c, d) == want);
        }
    };
    for (const int a : edges)
        for (const int b : edges)
            for (const int c : edges)
                for (const int d : edges) check(a, b, c, d);
    CHECK(equal > 1000);
    std::mt19937 random(20264);
    for (int i = 0; i < 100000; ++i)
        check(static_cast<int>(random()), static_cast<int>(random()), static_cast<int>(random()),
              static_cast<int>(random()));
    CHECK(Orlune::mulcom(INT_MIN, INT_MIN, INT_MAX, INT_MAX) == 1);
    CHECK(Orlune::mulcom(INT_MIN, INT_MAX, INT_MAX, INT_MIN) == 0);
}

}  // namespace
