#include <doctest/doctest.h>

#include <boost/multiprecision/cpp_int.hpp>
#include <cstdint>
#include <random>
#include <utility>

#include "vaskel/geometry.h"

namespace {

using Vaskel::intcalc;
using Rational = boost::multiprecision::cpp_rational;
using Integer = boost::multiprecision::cpp_int;

constexpr int kKept = 77;  // what the caller's variables held before

struct Segments {
    int x1, y1, x2, y2, x3, y3, x4, y4;
};

struct Row {
    const char* why;
    Segments s;
    int rc, x, y;
};

constexpr Row kRows[] = {
    {"diagonals of a square", {0, 0, 10, 10, 0, 10, 10, 0}, 1, 5, 5},
    {"shared end", {0, 0, 10, 0, 10, 0, 20, 7}, 1, 10, 0},
    {"shared start", {3, 4, 10, 0, 3, 4, 5, 9}, 1, 3, 4},
    {"an end inside the other segment", {0, 0, 10, 0, 5, 0, 5, 8}, 1, 5, 0},
    {"the other way round", {5, 0, 5, 8, 0, 0, 10, 0}, 1, 5, 0},
    {"collinear and overlapping", {0, 0, 10, 0, 5, 0, 15, 0}, 0, kKept, kKept},
    {"collinear, end to end", {0, 0, 10, 0, 10, 0, 15, 0}, 0, kKept, kKept},
    {"the same segment twice", {1, 2, 3, 9, 1, 2, 3, 9}, 0, kKept, kKept},
    {"parallel", {0, 0, 10, 0, 0, 1, 10, 1}, 0, kKept, kKept},
    {"lines meet beyond the first segment", {0, 0, 4, 4, 0, 10, 10, 0}, 0, kKept, kKept},
    {"lines meet beyond the second segment", {0, 0, 10, 10, 0, 10, 4, 6}, 0, kKept, kKept},
    // y = x / 2 meets x = 1 at 1/2: halves go away from zero.
    {"half up", {0, 0, 2, 1, 1, -5, 1, 5}, 1, 1, 1},
    {"half down below zero", {0, 0, -2, -1, -1, -5, -1, 5}, 1, -1, -1},
    // 10 t across, 3 t up, at x = 4: t = 0.4, y = 1.2.
    {"rounded to the nearest", {0, 0, 10, 3, 4, -9, 4, 9}, 1, 4, 1},
    {"a point on a segment", {5, 5, 5, 5, 0, 0, 10, 10}, 0, kKept, kKept},
    {"a point on a point", {5, 5, 5, 5, 5, 5, 5, 5}, 0, kKept, kKept},
    {"the corners of the plane",
     {-1073741823, -1073741823, 1073741823, 1073741823, -1073741823, 1073741823, 1073741823,
      -1073741823},
     1,
     0,
     0},
};

TEST_CASE("intcalc: the crossing of two segments") {
    for (const Row& row : kRows) {
        CAPTURE(row.why);
        const Segments& s = row.s;
        int x = kKept, y = kKept;
        CHECK(intcalc(s.x1, s.y1, s.x2, s.y2, s.x3, s.y3, s.x4, s.y4, &x, &y) == row.rc);
        CHECK(x == row.x);
        CHECK(y == row.y);
    }
}

// Nearly parallel segments of length 2^30 whose double determinant is 0: with
// directions (a, b) and (a + 1, b + 1) for a = 2^30, b = a - 1 the exact
// determinant is (a + 1) b - a (b + 1) = b - a = -1 while both products,
// 2^60 - 1 and 2^60, round to 2^60.
TEST_CASE("intcalc: a determinant that doubles cannot hold is exact") {
    constexpr int a = 1 << 30, b = a - 1;
    int x = kKept, y = kKept;
    const int px = -a / 2, py = -a / 2;  // where both segments start, and so meet
    REQUIRE(intcalc(px, py, px + a, py + b, px, py, px + a + 1, py + b + 1, &x, &y) == 1);
    CHECK(x == px);
    CHECK(y == py);
}

Rational rational(int v) { return Rational(Integer(v)); }

Integer roundedHalvesAway(const Rational& v) {
    const Integer num = boost::multiprecision::numerator(v);
    const Integer den = boost::multiprecision::denominator(v);  // positive
    const Integer magnitude = (2 * abs(num) + den) / (2 * den);
    return num < 0 ? Integer(-magnitude) : magnitude;
}

bool isHalf(const Rational& v) { return boost::multiprecision::denominator(v) == 2; }

struct Expected {
    bool meets = false;
    bool half = false;  // a coordinate lies midway between two whole ones
    Integer x, y;
};

// The crossing by exact fractions: parameters of the common point along both
// segments within [0, 1], lines not parallel.
Expected exactly(const Segments& s) {
    const Rational ax = rational(s.x2) - rational(s.x1), ay = rational(s.y2) - rational(s.y1);
    const Rational bx = rational(s.x4) - rational(s.x3), by = rational(s.y4) - rational(s.y3);
    const Rational ex = rational(s.x3) - rational(s.x1), ey = rational(s.y3) - rational(s.y1);
    const Rational det = ax * by - ay * bx;
    Expected e;
    if (det == 0) return e;
    const Rational t = (ex * by - ey * bx) / det;
    const Rational u = (ex * ay - ey * ax) / det;
    e.meets = t >= 0 && t <= 1 && u >= 0 && u <= 1;
    const Rational x = rational(s.x1) + t * ax, y = rational(s.y1) + t * ay;
    e.half = isHalf(x) || isHalf(y);
    e.x = roundedHalvesAway(x);
    e.y = roundedHalvesAway(y);
    return e;
}

TEST_CASE("intcalc: decides like exact fractions, also at the ends of the range") {
    std::mt19937 random(20240501);
    constexpr int kRanges[] = {2, 5, 20, 1000, 1 << 20, (1 << 30) - 1};
    int met = 0, apart = 0;
    for (int range : kRanges)
        for (int i = 0; i < 4000; ++i) {
            std::uniform_int_distribution<int> pick(-range, range);
            Segments s{pick(random), pick(random), pick(random), pick(random),
                       pick(random), pick(random), pick(random), pick(random)};
            if (i % 4 == 1) std::tie(s.x3, s.y3) = std::pair(s.x1, s.y1);
            if (i % 4 == 2) {  // nearly parallel
                s.x4 = s.x3 + (s.x2 - s.x1) / 2;
                s.y4 = s.y3 + (s.y2 - s.y1) / 2 + static_cast<int>(random() % 3) - 1;
                if (s.x4 < -range || s.x4 > range || s.y4 < -range || s.y4 > range) continue;
            }
            CAPTURE(range);
            CAPTURE(i);
            const Expected want = exactly(s);
            int x = kKept, y = kKept;
            const int rc = intcalc(s.x1, s.y1, s.x2, s.y2, s.x3, s.y3, s.x4, s.y4, &x, &y);
            REQUIRE((rc == 1) == want.meets);
            (want.meets ? met : apart) += 1;
            if (!want.meets) {
                REQUIRE(x == kKept);
                REQUIRE(y == kKept);
            } else if (range <= 1000) {
                // All terms of the double formula are exact integers here, and
                // one rounding of the quotient cannot cross a half.
                REQUIRE(Integer(x) == want.x);
                REQUIRE(Integer(y) == want.y);
            }
            int x2 = kKept, y2 = kKept;  // which segment comes first decides nothing
            CHECK(intcalc(s.x3, s.y3, s.x4, s.y4, s.x1, s.y1, s.x2, s.y2, &x2, &y2) == rc);
        }
    CHECK(met > 5000);
    CHECK(apart > 5000);
}

struct Answer {
    int rc = 0, x = kKept, y = kKept;
    friend bool operator==(const Answer&, const Answer&) = default;
};

Answer answerTo(const Segments& s) {
    Answer a;
    a.rc = intcalc(s.x1, s.y1, s.x2, s.y2, s.x3, s.y3, s.x4, s.y4, &a.x, &a.y);
    return a;
}

// Coordinates within 1000, and 100000 when moved: the double formula's terms
// are exact, so that its point is the exact one, rounded.
TEST_CASE(
    "intcalc: segments swapped, turned round or moved by whole units meet at the same place") {
    std::mt19937 random(31337);
    std::uniform_int_distribution<int> pick(-1000, 1000);
    int met = 0, halves = 0, movedApart = 0;
    for (int i = 0; i < 20000; ++i) {
        Segments s{pick(random), pick(random), pick(random), pick(random),
                   pick(random), pick(random), pick(random), pick(random)};
        if (i % 3 == 0)  // halves are frequent on a small grid
            for (int* v : {&s.x1, &s.y1, &s.x2, &s.y2, &s.x3, &s.y3, &s.x4, &s.y4}) *v %= 5;
        CAPTURE(i);
        const Answer a = answerTo(s);
        CHECK(answerTo({s.x3, s.y3, s.x4, s.y4, s.x1, s.y1, s.x2, s.y2}) == a);
        CHECK(answerTo({s.x2, s.y2, s.x1, s.y1, s.x3, s.y3, s.x4, s.y4}) == a);
        CHECK(answerTo({s.x1, s.y1, s.x2, s.y2, s.x4, s.y4, s.x3, s.y3}) == a);

        const int dx = 100 * pick(random), dy = 100 * pick(random);
        Answer moved = answerTo({s.x1 + dx, s.y1 + dy, s.x2 + dx, s.y2 + dy, s.x3 + dx, s.y3 + dy,
                                 s.x4 + dx, s.y4 + dy});
        CHECK(moved.rc == a.rc);
        if (a.rc == 0) continue;
        ++met;
        moved.x -= dx;
        moved.y -= dy;
        // Halves go away from zero, wherever that lies.
        if (exactly(s).half) {
            ++halves;
            movedApart += moved != a;
        } else {
            CHECK(moved == a);
        }
    }
    CHECK(met > 4000);
    CHECK(halves > 100);
    CHECK(movedApart > 50);
}

}  // namespace
