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

// Every double of rows with fractions, worked out step by step in the written
// order. Each other order or shortened form that was tried changes at least one
// of them: 8/3 times the bracket first, times 8 and divided by 3, the bracket
// before the factor, a root of each length, k from the end offset, the centre
// added last, and fused multiply-add in k or in the points.
TEST_CASE("arccub: the order of operations holds to the last bit") {
    struct ExactRow {
        const char* why;
        arc a;
        double p[4][2];
    };
    constexpr ExactRow rows[] = {
        // du = -22, dv = 103, t = 165.821 / 103
        {"divides by dv",
         {-83.075, -2.825, 94.24, 33.449, 71.581, -69.829},
         {{11.164999999999992, 30.624},
          {23.952634755675014, -5.40418318559043},
          {15.201798001555538, -45.288408100512},
          {-11.494, -72.654}}},
        // du = -33, dv = 116, t = -152.749 / 116
        {"the other way round",
         {99.173, -16.068, -59.68, 80.239, -93.069, -36.58},
         {{39.493, 64.171},
          {3.0162392628832606, 37.04038918990607},
          {-10.525318757259317, -10.338703460378142},
          {6.103999999999999, -52.647999999999996}}},
        // du = 159, dv = 115, t = 27.979 / 159
        {"divides by du",
         {-14.933, 10.001, -69.728, 71.68, 89.946, -43.701},
         {{-84.661, 81.68100000000001},
          {-4.0386565849450875, 160.1078242416985},
          {124.16586034572147, 67.46709404032546},
          {75.013, -33.7}}},
    };
    for (const ExactRow& row : rows) {
        CAPTURE(row.why);
        Pemmit::bezier b;
        arccub(row.a, b);
        for (int i = 0; i < 4; ++i) {
            CAPTURE(i);
            CHECK(b.p[i].x == row.p[i][0]);
            CHECK(b.p[i].y == row.p[i][1]);
        }
    }
}

TEST_CASE("arccub: the divisor saturates at the ends of the integers") {
    const double h = 2.6666666666666665 * (std::sqrt(0.5) - 0.5);  // of t = 1
    Pemmit::bezier b;
    // du = dv = -3e9 counts as -2^31: t = 3e9 / -2^31 = -1.39698..., not -1.
    arccub({0, 0, 3e9, 0, 0, 3e9}, b);
    CHECK(b.p[1].x == 3e9);
    CHECK(b.p[1].y == doctest::Approx(1.3969838619232178 * h * 3e9).epsilon(1e-14));
    CHECK(b.p[2].x == doctest::Approx(1.3969838619232178 * h * 3e9).epsilon(1e-14));
    CHECK(b.p[2].y == 3e9);
    // du = dv = 3e9 counts as 2^31 - 1: t = 3e9 / (2^31 - 1), a little more.
    arccub({0, 0, 0, 3e9, 3e9, 0}, b);
    CHECK(b.p[1].x == doctest::Approx(1.3969838625737392 * h * 3e9).epsilon(1e-14));
    CHECK(b.p[1].y == 3e9);
}

TEST_CASE("arccub: offsets whose squares overflow and half circles are not finite") {
    Pemmit::bezier b;
    arccub({0, 0, 1e300, 0, 0, -1e300}, b);  // k = infinity / infinity
    CHECK(b.p[0].x == 1e300);
    CHECK(b.p[3].y == -1e300);
    CHECK(std::isnan(b.p[1].y));
    CHECK(std::isnan(b.p[2].x));
    arccub({0, 0, 100, 0, -100, 0}, b);  // a half circle: the sum of the offsets is 0
    CHECK(!std::isfinite(b.p[1].y));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    arccub({0, 0, nan, 0, 0, nan}, b);
    CHECK(std::isnan(b.p[0].x));
    CHECK(std::isnan(b.p[1].y));
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
