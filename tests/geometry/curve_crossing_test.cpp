// From curves of a document to their crossings: the walk flattens, intcalc,
// selint and intersect work on what it delivers.

#include <doctest/doctest.h>

#include <boost/multiprecision/cpp_int.hpp>
#include <cmath>
#include <vector>

#include "embedded/document.h"
#include "embedded/host.h"
#include "tests/support/paths.h"
#include "vaskel/geometry.h"

namespace {

using Integer = boost::multiprecision::cpp_int;

// An S of one cubic segment, and its mirror image in x = 400 * scale. Both have
// the same y(t), and y is their common height exactly where x(t) of one is x of
// the other, at
//   x(t) - 400 = (b - a) (400 + 200 ab),  y(t) - 400 = (b - a) 400 (1 - 7 ab)
// with a = 1 - t, b = t. The mirror image passes (800 - x, y), and the S is odd
// about (400, 400), so the two meet where y = 400: at t = 1/2 and at ab = 1/7,
// where b - a = sqrt(3 / 7) and x = 400 -+ sqrt(3 / 7) 3000 / 7.
PathPtr letterS(int scale, bool mirrored) {
    const auto x = [&](int value) { return (mirrored ? 800 - value : value) * scale; };
    PathPtr path(Pemmit::patbeg());
    Pemmit::patlin(path.get(), x(0), 0);
    REQUIRE(Embedded::addCurve(path.get(), x(200), 1200 * scale, x(600), -400 * scale, x(800),
                               800 * scale));
    Pemmit::flaset(path.get(), Pemmit::kFlagOpen, true);
    return path;
}

struct Crossing {
    int first, second;  // segment numbers
    Point at;
};

std::vector<Crossing> crossings(const Points& a, const Points& b) {
    std::vector<Crossing> found;
    for (std::size_t i = 0; i + 1 < a.size(); ++i)
        for (std::size_t j = 0; j + 1 < b.size(); ++j) {
            Point at{};
            if (Vaskel::intcalc(a[i].x, a[i].y, a[i + 1].x, a[i + 1].y, b[j].x, b[j].y, b[j + 1].x,
                                b[j + 1].y, &at.x, &at.y) != 0)
                found.push_back({static_cast<int>(i), static_cast<int>(j), at});
        }
    return found;
}

Integer side(Point p, Point q, Point r) {
    return Integer(q.x - p.x) * (r.y - p.y) - Integer(q.y - p.y) * (r.x - p.x);
}

// num / den to the nearest, halves away from zero.
Integer nearest(Integer num, Integer den) {
    if (den < 0) num = -num, den = -den;
    const Integer doubled = 2 * abs(num) + den;
    const Integer quotient = doubled / (2 * den);
    return num < 0 ? Integer(-quotient) : quotient;
}

// The same question answered in integers of any size.
bool exactCrossing(Point p, Point q, Point r, Point s, Integer& x, Integer& y) {
    const Integer atP = side(r, s, p), atQ = side(r, s, q);
    const Integer atR = side(p, q, r), atS = side(p, q, s);
    if (atP.sign() == atQ.sign() || atR.sign() == atS.sign()) return false;
    const Integer den = atP - atQ;  // p + (q - p) atP / den lies on the line r s
    x = nearest(p.x * den + (q.x - p.x) * atP, den);
    y = nearest(p.y * den + (q.y - p.y) * atP, den);
    return true;
}

}  // namespace

TEST_CASE("curves of the document cross where their formulas say, within the flatness") {
    const double reach = std::sqrt(3.0 / 7) * 3000 / 7;  // 280.566
    for (const int scale : {1, 10, 1000}) {
        CAPTURE(scale);
        const PathPtr s = letterS(scale, false), mirrored = letterS(scale, true);
        const std::vector<Crossing> found = crossings(walked(s.get()), walked(mirrored.get()));
        // A crossing in a common vertex is found with up to four pairs.
        REQUIRE(found.size() >= 3);
        const double want[] = {400 - reach, 400, 400 + reach};
        bool met[3] = {};
        for (const Crossing& crossing : found) {
            CAPTURE(crossing.at);
            int nearestOne = -1;
            // Both polylines lie within half a distance of their curves and are
            // rounded by up to half of one; they cross at 65 degrees,
            // and the point is rounded: 4 distances are enough.
            for (int i = 0; i < 3; ++i)
                if (std::hypot(crossing.at.x - want[i] * scale, crossing.at.y - 400.0 * scale) <= 4)
                    nearestOne = i;
            REQUIRE(nearestOne >= 0);
            met[nearestOne] = true;
        }
        CHECK((met[0] && met[1] && met[2]));
    }
}

TEST_CASE("intcalc on flattened curves gives the exact crossings of their segments") {
    int pairs = 0, crossing = 0;
    for (const double flatness : {0.5, 4.0, 40.0}) {
        CAPTURE(flatness);
        Embedded::setFlatness(flatness);
        const Points a = walked(letterS(25, false).get()), b = walked(letterS(25, true).get());
        Embedded::setFlatness(0.5);
        REQUIRE(a.size() > 8);
        for (std::size_t i = 0; i + 1 < a.size(); ++i)
            for (std::size_t j = 0; j + 1 < b.size(); ++j) {
                CAPTURE(i);
                CAPTURE(j);
                Integer wantX, wantY;
                const bool want = exactCrossing(a[i], a[i + 1], b[j], b[j + 1], wantX, wantY);
                int x = 77, y = 77;
                REQUIRE((Vaskel::intcalc(a[i].x, a[i].y, a[i + 1].x, a[i + 1].y, b[j].x, b[j].y,
                                         b[j + 1].x, b[j + 1].y, &x, &y) != 0) == want);
                CHECK(x == (want ? wantX : Integer(77)));
                CHECK(y == (want ? wantY : Integer(77)));
                ++pairs;
                crossing += want;
            }
    }
    CHECK(pairs > 10000);
    CHECK(crossing >= 9);
}

TEST_CASE("selint finds the crossing of two curves from a segment near it") {
    const PathPtr s = letterS(10, false), mirrored = letterS(10, true);
    const auto found = crossings(walked(s.get()), walked(mirrored.get()));
    REQUIRE(found.size() >= 3);
    for (const Crossing& crossing : found)
        for (const int off : {-3, 0, 3}) {
            CAPTURE(crossing.at);
            CAPTURE(off);
            int a = -1, b = -1;
            Point at{};
            REQUIRE(Vaskel::selint(s.get(), crossing.first + off, mirrored.get(), crossing.second,
                                   &a, &b, &at.x, &at.y, crossing.at.x, crossing.at.y, 2) == 0);
            CHECK(std::abs(at.x - crossing.at.x) <= 1);
            CHECK(std::abs(at.y - crossing.at.y) <= 1);
            CHECK(std::abs(a - crossing.first) <= 1);
            CHECK(std::abs(b - crossing.second) <= 1);
        }
}

TEST_CASE("intersect: a curve that loops crosses itself, one that bends does not") {
    // Control points (0,0) (3,2) (-2,2) (1,0) in units of 1000: x(t) comes back
    // before the curve has come down, so that it passes x = 1/2 three times, in
    // the middle at its highest point and before and after at one common height.
    const auto curve = [](int x1, int x2) {
        PathPtr path(Pemmit::patbeg());
        Pemmit::patlin(path.get(), 0, 0);
        REQUIRE(Embedded::addCurve(path.get(), x1, 2000, x2, 2000, 1000, 0));
        Pemmit::flaset(path.get(), Pemmit::kFlagOpen, true);
        return path;
    };
    CHECK(Vaskel::intersect(curve(3000, -2000).get()) == 1);
    CHECK(Vaskel::intersect(curve(0, 1000).get()) == 0);
    // Two curves count together once they are children of one object.
    const PathPtr pair(Embedded::makeCompound());
    REQUIRE(Embedded::addChild(pair.get(), letterS(10, false).release()));
    CHECK(Vaskel::intersect(pair.get()) == 0);
    REQUIRE(Embedded::addChild(pair.get(), letterS(10, true).release()));
    CHECK(Vaskel::intersect(pair.get()) == 1);
}
