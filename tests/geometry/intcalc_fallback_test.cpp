#include <doctest/doctest.h>

#include <boost/multiprecision/cpp_int.hpp>
#include <cmath>
#include <cstdint>
#include <random>

#include "vaskel/geometry.h"

namespace {

using Vaskel::intcalc;
using Integer = boost::multiprecision::cpp_int;

constexpr int kKept = 77;  // what the caller's variables held before

struct Segments {
    int x1, y1, x2, y2, x3, y3, x4, y4;

    friend std::ostream& operator<<(std::ostream& out, const Segments& s) {
        return out << s.x1 << ',' << s.y1 << ' ' << s.x2 << ',' << s.y2 << "  " << s.x3 << ','
                   << s.y3 << ' ' << s.x4 << ',' << s.y4;
    }
    Segments swapped() const { return {x3, y3, x4, y4, x1, y1, x2, y2}; }
    Segments turned() const { return {x2, y2, x1, y1, x4, y4, x3, y3}; }
    Segments mirrored() const { return {y1, x1, y2, x2, y3, x3, y4, x4}; }
};

int wrapped(std::int64_t v) { return static_cast<int>(static_cast<std::uint32_t>(v)); }
int minus(int a, int b) { return wrapped(std::int64_t{a} - b); }

// The formula in double precision.
struct Doubles {
    double d, x, y;

    explicit Doubles(const Segments& s) {
        const double dx1 = minus(s.x1, s.x2), dy1 = minus(s.y1, s.y2);
        const double dx2 = minus(s.x3, s.x4), dy2 = minus(s.y3, s.y4);
        const double c2 = s.y3 * dx2 - s.x3 * dy2, c1 = s.y1 * dx1 - s.x1 * dy1;
        d = dx2 * dy1 - dx1 * dy2;
        x = (dx1 * c2 - dx2 * c1) / d;
        y = (dy1 * c2 - dy2 * c1) / d;
    }
    static bool fits(double v) { return -2147483648.5 < v && v < 2147483647.5; }
    bool fit() const { return fits(x) && fits(y); }
};

constexpr int kA = (1 << 30) + 1, kB = 1 << 30;
constexpr int kP = -(1 << 29);

// A segment in the direction (kA, kB) from (x, y) and one in the direction
// (kA + i, kB + i) from (x - 1, y - 1). The exact determinant is
// kA (kB + i) - kB (kA + i) = i (kA - kB) = i, and both products round to the
// same double. The lines meet at 1 / i of both segments: 1 / i of the
// difference of the directions is the (1, 1) between their starts.
constexpr Segments sliver(int i, int x, int y) {
    return {x, y, x + kA, y + kB, x - 1, y - 1, x - 1 + kA + i, y - 1 + kB + i};
}

struct Row {
    const char* why;
    Segments s;
    int x, y;
};

constexpr Row kZeroRows[] = {
    // half way: x = kP + (2^30 + 1) / 2 = 1/2, y = kP + 2^30 / 2 = 0
    {"a half goes up", sliver(2, kP, kP), 1, 0},
    {"a half below zero goes down", sliver(2, kP - 1, kP), -1, 0},
    {"a half far from zero", sliver(2, kP + 1000, kP - 7), 1001, -7},
    {"a half far below zero", sliver(2, kP - 1001, kP - 7), -1001, -7},
    // (2^30 + 1) / 3 = 357913941 2/3 and 2^30 / 3 = 357913941 1/3
    {"thirds: -178956970 1/3 and -178956970 2/3", sliver(3, kP, kP), -178956970, -178956971},
    {"thirds above zero: 29 2/3 and 29 1/3", sliver(3, -357913912, -357913912), 30, 29},
    // (2^30 + 1) / 4 and 2^30 / 4 = 268435456 are a quarter and none
    {"quarters: 1/4 and 0", sliver(4, -268435456, -268435456), 0, 0},
    {"quarters: -3/4 and -1", sliver(4, -268435457, -268435457), -1, -1},
    {"at the common start", {kP, kP, kP + kA, kP + kB, kP, kP, kP + kA + 1, kP + kB + 1}, kP, kP},
};

// In range too a determinant of a few roundings can carry the quotient out of
// the plane: with the directions (a, b) and (a + 1, b + 1) it is a - b = 823,
// doubles have 1024, and the numerators are off by more. The segments share
// their second ends.
constexpr Row kFarRow = {"the quotient leaves the plane",
                         {-1073731438, -1073728896, 1073738789, 1073740508, -1073731439,
                          -1073728897, 1073738789, 1073740508},
                         1073738789,
                         1073740508};

void checkCrossing(const Segments& s, int wantX, int wantY) {
    CAPTURE(s);
    int x = kKept, y = kKept;
    CHECK(intcalc(s.x1, s.y1, s.x2, s.y2, s.x3, s.y3, s.x4, s.y4, &x, &y) == 1);
    CHECK(x == wantX);
    CHECK(y == wantY);
}

TEST_CASE("intcalc: where doubles see parallels the exact point is rounded, halves away from 0") {
    for (const Row& row : kZeroRows) {
        CAPTURE(row.why);
        CHECK(Doubles(row.s).d == 0);
        checkCrossing(row.s, row.x, row.y);
        checkCrossing(row.s.swapped(), row.x, row.y);
        checkCrossing(row.s.turned(), row.x, row.y);
        checkCrossing(row.s.mirrored(), row.y, row.x);
    }
}

TEST_CASE("intcalc: where the quotient of doubles leaves the plane the exact point stands") {
    CAPTURE(kFarRow.why);
    const Doubles doubles(kFarRow.s);
    CHECK(doubles.d != 0);
    CHECK(std::abs(doubles.x) > 3e9);
    checkCrossing(kFarRow.s, kFarRow.x, kFarRow.y);
}

int compared(int a, int b, int c, int d) {
    const std::int64_t left = std::int64_t{a} * b, right = std::int64_t{c} * d;
    return (left > right) - (left < right);
}

struct Tally {
    long apart = 0, doubles = 0, exact = 0, parallel = 0, clampedLow = 0, clampedHigh = 0;
};

int roundedAndClamped(Integer num, Integer den, Tally& tally) {
    if (den < 0) num = -num, den = -den;
    const Integer magnitude = (2 * abs(num) + den) / (2 * den);
    const Integer value = num < 0 ? Integer(-magnitude) : magnitude;
    if (value > 2147483647) return ++tally.clampedHigh, 2147483647;
    if (value < -2147483647 - 1) return ++tally.clampedLow, -2147483647 - 1;
    return static_cast<int>(value);
}

// Coordinates beyond half the 32-bit range, whose differences wrap, mean
// nothing, but the rule goes through: sides of wrapped differences, the double
// formula of them, and where that has no value the exact quotient, held within
// the integers; lines that wrapping has made parallel do not meet.
TEST_CASE("intcalc: coordinates beyond the range follow the rule without harm") {
    std::mt19937 random(20240925);
    const auto any = [&] {
        constexpr int ends[] = {-2147483647 - 1, 2147483647, -1073741824, 1073741824, 0, -1};
        const int low = static_cast<int>(random() % 5) - 2;
        switch (random() % 3) {
            case 0:
                return wrapped(random());
            case 1:
                return wrapped(std::int64_t{ends[random() % 6]} + low);
            default:
                return low;
        }
    };
    Tally tally;
    for (int round = 0; round < 400000; ++round) {
        Segments s{any(), any(), any(), any(), any(), any(), any(), any()};
        if (round % 2) {  // nearly parallel, far apart
            s.x4 = wrapped(std::int64_t{s.x3} + minus(s.x2, s.x1) + random() % 3 - 1);
            s.y4 = wrapped(std::int64_t{s.y3} + minus(s.y2, s.y1) + random() % 3 - 1);
        }
        int wantRc = 1, wantX = kKept, wantY = kKept;
        const int s2 =
            compared(minus(s.x2, s.x3), minus(s.y2, s.y4), minus(s.x2, s.x4), minus(s.y2, s.y3));
        const int s1 =
            compared(minus(s.x1, s.x3), minus(s.y1, s.y4), minus(s.x1, s.x4), minus(s.y1, s.y3));
        const int s4 =
            compared(minus(s.x1, s.x4), minus(s.y2, s.y4), minus(s.x2, s.x4), minus(s.y1, s.y4));
        const int s3 =
            compared(minus(s.x1, s.x3), minus(s.y2, s.y3), minus(s.x2, s.x3), minus(s.y1, s.y3));
        const Doubles doubles(s);
        if (s1 == s2 || s3 == s4) {
            wantRc = 0;
            ++tally.apart;
        } else if (doubles.fit()) {
            wantX = static_cast<int>(std::llround(doubles.x));
            wantY = static_cast<int>(std::llround(doubles.y));
            ++tally.doubles;
        } else {
            const Integer dx1 = minus(s.x1, s.x2), dy1 = minus(s.y1, s.y2);
            const Integer dx2 = minus(s.x3, s.x4), dy2 = minus(s.y3, s.y4);
            const Integer c2 = s.y3 * dx2 - s.x3 * dy2, c1 = s.y1 * dx1 - s.x1 * dy1;
            const Integer d = dx2 * dy1 - dx1 * dy2;
            if (d == 0) {
                wantRc = 0;
                ++tally.parallel;
            } else {
                wantX = roundedAndClamped(dx1 * c2 - dx2 * c1, d, tally);
                wantY = roundedAndClamped(dy1 * c2 - dy2 * c1, d, tally);
                ++tally.exact;
            }
        }
        int x = kKept, y = kKept;
        const int rc = intcalc(s.x1, s.y1, s.x2, s.y2, s.x3, s.y3, s.x4, s.y4, &x, &y);
        if (rc == wantRc && x == wantX && y == wantY) continue;
        CAPTURE(s);
        REQUIRE(rc == wantRc);
        REQUIRE(x == wantX);
        REQUIRE(y == wantY);
    }
    CHECK(tally.apart > 10000);
    CHECK(tally.doubles > 10000);
    CHECK(tally.exact > 1000);
    CHECK(tally.clampedLow > 100);
    CHECK(tally.clampedHigh > 100);
    CHECK(tally.parallel > 10);
}

}  // namespace
