#include <doctest/doctest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "embedded/document.h"
#include "tests/geometry/contours.h"
#include "tests/geometry/inside_rows.h"
#include "tests/support/paths.h"
#include "vaskel/geometry.h"

namespace {

using Vaskel::insidePath;

PathPtr pathOf(const Contours& contours) {
    PathPtr path(Embedded::makeCompound());
    for (const Contour& c : contours) REQUIRE(Embedded::addChild(path.get(), c.path().release()));
    return path;
}

Points reversed(const Points& points) { return Points(points.rbegin(), points.rend()); }

TEST_CASE("insidePath: a hole is outside, whatever the directions of the contours") {
    const Points outer = {{0, 0}, {30, 0}, {30, 30}, {0, 30}};
    const Points inner = {{10, 10}, {20, 10}, {20, 20}, {10, 20}};
    const Points core = {{14, 14}, {16, 14}, {16, 16}, {14, 16}};
    constexpr InsideRow rows[] = {
        {"inside both", {12, 15}, false},
        {"inside the outer one only, beside the inner one", {5, 15}, true},
        {"below the inner one", {15, 5}, true},
        {"above the inner one, which begins and ends at one place", {12, 25}, true},
        {"on the inner one's edge", {10, 15}, true},
        {"on the inner one's bottom", {12, 10}, true},
        {"outside both", {31, 15}, false},
    };
    for (const bool outerBack : {false, true})
        for (const bool innerBack : {false, true})
            for (const bool innerFirst : {false, true}) {
                CAPTURE(outerBack);
                CAPTURE(innerBack);
                CAPTURE(innerFirst);
                Contours contours = {{true, outerBack ? reversed(outer) : outer},
                                     {true, innerBack ? reversed(inner) : inner}};
                if (innerFirst) std::swap(contours[0], contours[1]);
                checkRows(pathOf(contours).get(), rows);
                contours.push_back({true, core});
                CHECK(insidePath(15, 15, pathOf(contours).get()));  // inside three
            }
}

// The frame makes the path's box hold all points asked for; it is itself an
// open line above them, so that only the other contour counts.
constexpr int kFrame = 100;
Contour frame() { return {false, {{-kFrame, kFrame}, {kFrame, kFrame}}}; }

TEST_CASE("insidePath: a contour below the point counts by its two ends") {
    struct EndRow {
        const char* why;
        Contour contour;
        Point p;
        bool inside;
    };
    const EndRow rows[] = {
        {"closed: begins and ends at one place", {true, {{0, 0}, {10, 0}, {5, 8}}}, {5, 20}, false},
        {"open, ends on both sides: crossed once", {false, {{0, 0}, {10, 0}}}, {5, 20}, true},
        {"the other way round", {false, {{10, 0}, {0, 0}}}, {5, 20}, true},
        {"open, both ends on the left", {false, {{0, 0}, {10, 3}, {2, 5}}}, {5, 20}, false},
        {"open, both ends on the right", {false, {{8, 0}, {0, 3}, {9, 5}}}, {5, 20}, false},
        {"open, there and back and there again",
         {false, {{0, 0}, {10, 1}, {0, 2}, {10, 3}}},
         {5, 20},
         true},
        {"the left end straight below: the other one lies right",
         {false, {{0, 0}, {10, 0}}},
         {0, 20},
         true},
        {"the right end straight below: neither lies right",
         {false, {{0, 0}, {10, 0}}},
         {10, 20},
         false},
        {"an upright line straight below", {false, {{5, 0}, {5, 9}}}, {5, 20}, false},
        {"the highest point lies just below", {false, {{0, 0}, {10, 19}}}, {5, 20}, true},
        {"the highest point lies level: walked, the edge passes below",
         {false, {{0, 0}, {10, 20}}},
         {5, 20},
         true},
        {"beside it on the left", {false, {{0, 0}, {10, 0}}}, {-1, 20}, false},
        {"beside it on the right", {false, {{0, 0}, {10, 0}}}, {11, 20}, false},
        {"one point only", {false, {{5, 0}}}, {5, 20}, false},
    };
    for (const EndRow& row : rows) {
        CAPTURE(row.why);
        const bool framed = insidePath(row.p.x, row.p.y, pathOf({frame(), row.contour}).get());
        CHECK(framed == row.inside);
        // Twice the same contour cancels out.
        CHECK_FALSE(
            insidePath(row.p.x, row.p.y, pathOf({row.contour, frame(), row.contour}).get()));
    }
}

TEST_CASE("insidePath: a contour above the point is not crossed") {
    const Contour closed{true, {{0, 30}, {10, 30}, {5, 40}}};
    const Contour open{false, {{0, 30}, {10, 30}}};
    const Contour base{false, {{-kFrame, -kFrame}, {kFrame, -kFrame}}};
    CHECK_FALSE(insidePath(5, 20, pathOf({frame(), closed}).get()));
    CHECK_FALSE(insidePath(5, 20, pathOf({frame(), open}).get()));
    CHECK(insidePath(5, 20, pathOf({frame(), base, open}).get()));
    CHECK(insidePath(5, 20, pathOf({frame(), base, closed}).get()));
    CHECK(insidePath(5, 30, pathOf({frame(), open}).get()));  // level with it: on its edge
}

TEST_CASE("insidePath: a point between contours, within the path's box only") {
    const PathPtr path = pathOf({{true, {{0, 0}, {10, 0}, {10, 10}, {0, 10}}},
                                 {true, {{20, 0}, {30, 0}, {30, 10}, {20, 10}}},
                                 {true, {{0, 20}, {10, 20}, {10, 30}, {0, 30}}}});
    constexpr InsideRow rows[] = {
        {"between the two lower ones", {15, 5}, false},
        {"just right of the left one", {11, 5}, false},
        {"just left of the right one", {19, 5}, false},
        {"between the left ones, one below and one above", {5, 15}, false},
        {"where none stands", {25, 25}, false},
        {"in the left one", {5, 5}, true},
        {"in the right one", {25, 5}, true},
        {"in the upper one, above the left one", {5, 25}, true},
    };
    checkRows(path.get(), rows);
}

// Which steps of the rule below decided about a contour or an edge.
struct Tally {
    long beside = 0, belowOdd = 0, belowEven = 0, above = 0, walked = 0;
    long upright = 0, crossed = 0, missed = 0, onEdge = 0;
};

// The rule word by word, over the points that the walks deliver. Products of
// these small coordinates fit.
bool literally(int x, int y, const Pemmit::Path* path, Tally& tally) {
    const Pemmit::Box all = path->box;
    if (x < all.minX || x > all.maxX || y < all.minY || y > all.maxY) return false;
    bool inside = false;
    Pemmit::queryseq sequence;
    for (const Pemmit::Object* c = sequence.quebeg(path, nullptr); c; c = c->next) {
        const Points points = walked(c);
        if (points.empty()) continue;
        if (x < c->box.minX || x > c->box.maxX) {
            ++tally.beside;
            continue;
        }
        if (y > c->box.maxY) {
            const bool flips = (points.front().x > x) != (walked(c, 1).front().x > x);
            ++(flips ? tally.belowOdd : tally.belowEven);
            if (flips) inside = !inside;
            continue;
        }
        if (y < c->box.minY) {
            ++tally.above;
            continue;
        }
        ++tally.walked;
        for (std::size_t i = 1; i < points.size(); ++i) {
            const int px = points[i - 1].x, py = points[i - 1].y;
            const int cx = points[i].x, cy = points[i].y;
            if (px == x && cx == x && std::min(py, cy) <= y && y <= std::max(py, cy))
                return ++tally.upright, true;
            if (!((px > x && cx <= x) || (px <= x && cx > x))) continue;
            if (py < y && cy < y) {
                inside = !inside;
                continue;
            }
            if (py > y && cy > y) continue;
            std::int64_t s = std::int64_t{x - px} * (cy - py) - std::int64_t{y - py} * (cx - px);
            if (cx < px) s = -s;
            if (s == 0) return ++tally.onEdge, true;
            ++(s < 0 ? tally.crossed : tally.missed);
            if (s < 0) inside = !inside;
        }
    }
    return inside;
}

TEST_CASE("insidePath: the rule word by word gives the same answers for several contours") {
    std::mt19937 random(20240921);
    const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    Tally tally;
    int asked = 0, inside = 0;
    for (int round = 0; round < 1500; ++round) {
        Contours contours;
        for (int n = 1 + below(4); n > 0; --n) {
            const Point corner{below(12), below(12)};
            const int size = 1 + below(8);
            Points points;
            for (int i = 1 + below(6); i > 0; --i)
                points.push_back({corner.x + below(size), corner.y + below(size)});
            contours.push_back({below(2) != 0, points});
        }
        const PathPtr path = pathOf(contours);
        for (int x = -1; x <= 20; ++x)
            for (int y = -1; y <= 20; ++y) {
                const bool want = literally(x, y, path.get(), tally);
                const bool got = insidePath(x, y, path.get());
                ++asked;
                inside += want;
                if (got == want) continue;
                CAPTURE(contours);
                CAPTURE(x);
                CAPTURE(y);
                REQUIRE(got == want);
            }
    }
    CHECK(asked == 1500 * 22 * 22);
    CHECK(inside > 20000);
    CHECK(tally.beside > 10000);
    CHECK(tally.belowOdd > 5000);
    CHECK(tally.belowEven > 10000);
    CHECK(tally.above > 10000);
    CHECK(tally.walked > 10000);
    CHECK(tally.upright > 1000);
    CHECK(tally.crossed > 1000);
    CHECK(tally.missed > 1000);
    CHECK(tally.onEdge > 1000);
}

}  // namespace
