#include <doctest/doctest.h>

#include <algorithm>
#include <climits>
#include <string>

#include "geometry/intersect_plain.h"
#include "geometry/intersect_simple.h"
#include "tests/geometry/outlines.h"
#include "tests/support/fake_host.h"
#include "vaskel/geometry.h"

namespace {

using namespace Vaskel::Intersect;

// Sides by whole numbers; the range is that of the engine's own exact sweep.
int side(PackedPlace a, PackedPlace b, PackedPlace c) {
    const long long dx = xOf(b) - xOf(a), dy = yOf(b) - yOf(a);
    const long long turn = dx * (yOf(c) - yOf(a)) - dy * (xOf(c) - xOf(a));
    return (turn > 0) - (turn < 0);
}

bool isOn(PackedPlace a, PackedPlace b, PackedPlace p) {
    return side(a, b, p) == 0 && std::min(xOf(a), xOf(b)) <= xOf(p) &&
           xOf(p) <= std::max(xOf(a), xOf(b)) && std::min(yOf(a), yOf(b)) <= yOf(p) &&
           yOf(p) <= std::max(yOf(a), yOf(b));
}

struct Edge {
    PackedPlace a, b;
    Index from, to;  // numbers of the points
};

// Whether the two share a point that is not one vertex of both.
bool meet(const Edge& e, const Edge& f) {
    const bool neighbours = e.to == f.from || f.to == e.from;
    for (const PackedPlace p : {f.a, f.b})
        if (isOn(e.a, e.b, p) && !(neighbours && (p == e.a || p == e.b))) return true;
    for (const PackedPlace p : {e.a, e.b})
        if (isOn(f.a, f.b, p) && !(neighbours && (p == f.a || p == f.b))) return true;
    return side(e.a, e.b, f.a) * side(e.a, e.b, f.b) < 0 &&
           side(f.a, f.b, e.a) * side(f.a, f.b, e.b) < 0;
}

// What the proof has to find: no repeated point, and no two segments that meet
// but in the vertex between them.
bool touchesNowhere(const WalkedOutline& outline) {
    std::vector<Edge> edges;
    for (const WalkedContour& contour : outline.contours) {
        if (contour.end - contour.begin < (contour.closed ? 3 : 2)) return false;
        for (Index i = contour.begin; i < contour.end; ++i) {
            Index next = i + 1;
            if (next == contour.end) {
                if (!contour.closed) break;
                next = contour.begin;
            }
            edges.push_back({outline.points[static_cast<std::size_t>(i)],
                             outline.points[static_cast<std::size_t>(next)], i, next});
        }
    }
    for (std::size_t i = 0; i < edges.size(); ++i) {
        if (edges[i].a == edges[i].b) return false;
        for (std::size_t j = 0; j < i; ++j)
            if (meet(edges[i], edges[j])) return false;
    }
    return true;
}

TEST_CASE("intersect: the proof succeeds where nothing touches, and nowhere else") {
    int proven = 0, refused = 0;
    for (const Family& family : kFamilies) {
        Random r{std::mt19937(777)};
        for (int round = 0; round < family.rounds / kShare; ++round) {
            const Contours contours = family.make(r);
            const WalkedOutline outline = contours.walked();
            const bool want = touchesNowhere(outline);
            const bool got = isSurelySimple(outline);
            if (got != want || (got && sweepPlain(contours.outline()) != 0)) {
                CAPTURE(std::string(family.name));
                CAPTURE(round);
                CAPTURE(contours);
                REQUIRE(got == want);
                REQUIRE(sweepPlain(contours.outline()) == 0);
            }
            ++(got ? proven : refused);
        }
    }
    CHECK(proven > 100000 / kShare);
    CHECK(refused > 100000 / kShare);
}

// Level rows in any order, each an open contour by itself, with pieces left out:
// many chains at a time, none of which is near the one before it.
Contours rows(Random& r, int count) {
    std::vector<Points> contours;
    for (int i = 0; i < count; ++i) {
        const int begin = r.below(5000), length = 1 + r.below(20000);
        Points points = {{begin, 10 * i}};
        for (int n = r.below(4); n > 0; --n)
            points.push_back({points.back().x + 1 + r.below(length), 10 * i + r.below(9)});
        points.push_back({points.back().x + 1 + r.below(length), 10 * i + r.below(9)});
        if (r.below(2)) std::reverse(points.begin(), points.end());
        contours.push_back(points);
    }
    std::shuffle(contours.begin(), contours.end(), r.engine);
    return {contours};
}

TEST_CASE("intersect: thousands of chains at a time, with and without a touch") {
    Random r{std::mt19937(5)};
    for (int round = 0; round < 40 / kShare; ++round) {
        Contours contours = rows(r, 100 + r.below(3000));
        CAPTURE(round);
        CHECK(isSurelySimple(contours.walked()));
        // The end of one row moves onto the beginning of another one.
        Points& moved = contours.contours[contours.contours.size() / 2];
        moved.front() = contours.contours.back().back();
        CHECK_FALSE(isSurelySimple(contours.walked()));
    }
}

TEST_CASE("intersect: the proof ends with the exact range") {
    const auto proven = [](Point p) {
        return isSurelySimple(Contours{{{{0, 0}, p, {5, 5}}}}.walked());
    };
    CHECK(proven({kExact, -kExact}));
    CHECK_FALSE(proven({kExact + 1, 0}));
    CHECK_FALSE(proven({0, -kExact - 1}));
    CHECK_FALSE(proven({INT_MAX, INT_MIN}));
    CHECK_FALSE(proven({INT_MIN, INT_MAX}));
}

TEST_CASE("intersect: a proven outline asks the system as often as the plain sweep") {
    for (const int count : {64, 199, 200, 201, 400, 1234}) {
        CAPTURE(count);
        Points points;
        for (int i = 0; i < count; ++i) points.push_back({5 * i, i % 2 ? 1000 + i % 7 : i % 11});
        const PathPtr path = openPath(points);
        REQUIRE(isSurelySimple(walkedOutlineOf(path.get())));
        int plain = 0;
        {
            FakeHost host;
            CHECK(sweepPlain(outlineOf(path.get())) == 0);
            plain = host.polls();
        }
        FakeHost host;
        CHECK(Vaskel::intersect(path.get()) == 0);
        CHECK(host.polls() == plain);
    }
}

TEST_CASE("intersect: memory that ends during the proof passes through") {
    Random r{std::mt19937(6)};
    const WalkedOutline outline = rows(r, 200).walked();
    bool proven = false;
    int refused = 0;
    const int failures = failEachAllocation([&] {
        try {
            proven = isSurelySimple(outline);
        } catch (const std::bad_alloc&) {
            ++refused;
        }
    });
    CHECK(failures > 10);
    CHECK(refused == failures);
    CHECK(proven);
}

}  // namespace
