#include <doctest/doctest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "vaskel/geometry.h"

namespace {

using Vaskel::arc;
using Vaskel::arccub;
using Vaskel::arcfla;

// (4/3) tan(angle / 4), from tables: a quarter circle's handle is
// (4/3)(sqrt(2) - 1).
constexpr double kQuarterHandle = 0.55228474983079340;
// 60 degrees: (4/3) tan(15 degrees) = (4/3)(2 - sqrt(3)).
constexpr double kSixthHandle = 0.35726558990816353;

struct Row {
    const char* why;
    arc a;
    double p1x, p1y, p2x, p2y;
};

const double kHalfRoot3 = std::sqrt(3.0) / 2;

const Row kRows[] = {
    {"quarter from right to top: |du| = |dv| divides by du",
     {0, 0, 1000, 0, 0, 1000},
     1000,
     1000 * kQuarterHandle,
     1000 * kQuarterHandle,
     1000},
    {"mirrored quarter: handles on the other side",
     {0, 0, 1000, 0, 0, -1000},
     1000,
     -1000 * kQuarterHandle,
     1000 * kQuarterHandle,
     -1000},
    {"a centre away from the origin only moves the points",
     {50, -20, 1000, 0, 0, 1000},
     1050,
     1000 * kQuarterHandle - 20,
     1000 * kQuarterHandle + 50,
     980},
    // 3-4-5 offsets, mirrored at the x axis: du = 0, dv = 800 divides.
    {"chord upright: divides by dv",
     {0, 0, 300, -400, 300, 400},
     // m = (600, 0), k = 500/600, t = 600 / -800 = -0.75,
     // h = -0.75 * (8/3) * (1/3) = -2/3: P1 = start + h (sy, -sx).
     300 + 400 * 2.0 / 3,
     -400 + 300 * 2.0 / 3,
     300 + 400 * 2.0 / 3,
     400 - 300 * 2.0 / 3},
};

TEST_CASE("arccub: handles stand upright on the radii, in the arc's direction") {
    for (const Row& row : kRows) {
        CAPTURE(row.why);
        const arc& a = row.a;
        Pemmit::bezier b;
        arccub(a, b);
        CHECK(b.p[0].x == a.centreX + a.startX);  // the ends are exact
        CHECK(b.p[0].y == a.centreY + a.startY);
        CHECK(b.p[3].x == a.centreX + a.endX);
        CHECK(b.p[3].y == a.centreY + a.endY);
        CHECK(b.p[1].x == doctest::Approx(row.p1x).epsilon(1e-12));
        CHECK(b.p[1].y == doctest::Approx(row.p1y).epsilon(1e-12));
        CHECK(b.p[2].x == doctest::Approx(row.p2x).epsilon(1e-12));
        CHECK(b.p[2].y == doctest::Approx(row.p2y).epsilon(1e-12));
    }
}

TEST_CASE("arccub: the divisor is truncated to whole units") {
    // du = 10.9 counts as 10, dv = 10 - 10.9 as 0; the sum of the offsets is
    // (10.9, 20.9), so k = sqrt(100 / (118.81 + 436.81)) = 0.4242395 and
    // h = 20.9 / 10 * (8/3) * (0.4242395 - 0.5) = -0.4222387.
    Pemmit::bezier b;
    arccub({0, 0, 0, 10, 10.9, 10.9}, b);
    const double h = -0.4222387;
    CHECK(b.p[1].x == doctest::Approx(10 * h).epsilon(1e-6));
    CHECK(b.p[1].y == 10);
    CHECK(b.p[2].x == doctest::Approx(10.9 - 10.9 * h).epsilon(1e-6));
    CHECK(b.p[2].y == doctest::Approx(10.9 + 10.9 * h).epsilon(1e-6));
}

TEST_CASE("arccub: the handle is (4/3) tan(angle / 4) radii") {
    // 60 degrees at radius 1e6: the truncated chord is within 1e-6 of the true one.
    const double r = 1e6;
    const arc a{0, 0, r, 0, r / 2, r * kHalfRoot3};
    Pemmit::bezier b;
    arccub(a, b);
    CHECK(b.p[1].x == r);
    CHECK(b.p[1].y == doctest::Approx(r * kSixthHandle).epsilon(1e-5));
}

TEST_CASE("arccub: offsets beyond every integer and half circles do no harm") {
    Pemmit::bezier b;
    arccub({0, 0, 1e300, 0, 0, -1e300}, b);
    arccub({0, 0, 100, 0, -100, 0}, b);  // a half circle: the sum of the offsets is 0
    CHECK(!std::isfinite(b.p[1].y));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    arccub({0, 0, nan, 0, 0, nan}, b);
    CHECK(std::isnan(b.p[0].x));
}

struct Collected {
    std::vector<Pemmit::PointBase<double>> points;
    static void add(void* context, const Pemmit::PointBase<double>* point) {
        static_cast<Collected*>(context)->points.push_back(*point);
    }
};

TEST_CASE("arcfla: a chord shorter than four tolerances delivers nothing") {
    // start (30, 40), end (50, 0): chord^2 = 20^2 + 40^2 = 2000.
    const arc a{7, 9, 30, 40, 50, 0};
    const double exact = std::sqrt(2000.0) / 4;
    Collected shorter, longer;
    arcfla(&a, exact * 1.0001, Collected::add, &shorter);
    CHECK(shorter.points.empty());
    arcfla(&a, exact * 0.9999, Collected::add, &longer);
    CHECK(!longer.points.empty());

    // A 3-4-5 chord of exactly 4 * 5 = 20: start and end (16, 12) and (16, -8)
    // are no circle, which the skip test does not ask.
    const arc upright{0, 0, 16, 12, 16, -8};
    Collected equal;
    arcfla(&upright, 5.0, Collected::add, &equal);
    REQUIRE(!equal.points.empty());
    CHECK(equal.points.back().x == 16);
    CHECK(equal.points.back().y == -8);
    Collected above;
    arcfla(&upright, 5.0000001, Collected::add, &above);
    CHECK(above.points.empty());
}

TEST_CASE("arcfla: points lie on the circle within tolerance and end at the end") {
    const arc a{100, 200, 5000, 0, 0, 5000};
    Collected c;
    arcfla(&a, 2.0, Collected::add, &c);
    REQUIRE(c.points.size() > 4);
    for (const auto& p : c.points)
        // 2 of flattening, 0.03 % of 5000 of the segment itself
        CHECK(std::abs(std::hypot(p.x - 100, p.y - 200) - 5000) < 2 + 1.5);
    CHECK(c.points.back().x == 100);
    CHECK(c.points.back().y == 5200);
}

struct Stop {};

TEST_CASE("arcfla: an exception of the callback passes through") {
    const arc a{0, 0, 5000, 0, 0, 5000};
    CHECK_THROWS_AS(
        arcfla(
            &a, 1.0, [](void*, const Pemmit::PointBase<double>*) { throw Stop{}; }, nullptr),
        Stop);
}

}  // namespace
