#include <doctest/doctest.h>

#include <algorithm>
#include <random>

#include "tests/geometry/inside_rows.h"
#include "tests/support/paths.h"
#include "vaskel/geometry.h"

namespace {

using Vaskel::insidePath;

TEST_CASE("insidePath: a square holds its inside and its edges") {
    const PathPtr square = closedPath({{0, 0}, {10, 0}, {10, 10}, {0, 10}});
    constexpr InsideRow rows[] = {
        {"middle", {5, 5}, true},
        {"bottom edge", {5, 0}, true},
        {"top edge", {5, 10}, true},
        {"left edge", {0, 5}, true},
        {"right edge", {10, 5}, true},
        {"corner", {0, 0}, true},
        {"far corner", {10, 10}, true},
        {"left of the box", {-1, 5}, false},
        {"right of the box", {11, 5}, false},
        {"below the box", {5, -1}, false},
        {"above the box", {5, 11}, false},
    };
    checkRows(square.get(), rows);
}

TEST_CASE("insidePath: on the box but outside the outline is outside") {
    const PathPtr diamond = closedPath({{0, 10}, {10, 0}, {20, 10}, {10, 20}});
    constexpr InsideRow rows[] = {
        {"corner of the box", {0, 0}, false},
        {"other corner of the box", {20, 20}, false},
        {"slanted edge", {5, 5}, true},
        {"slanted edge the other way", {15, 5}, true},
        {"just inside the slanted edge", {6, 5}, true},
        {"just outside the slanted edge", {4, 5}, false},
        {"lowest vertex: its ray half counts it from the right edge", {10, 0}, true},
        {"leftmost vertex", {0, 10}, true},
        {"the middle: the ray passes through the lowest vertex", {10, 10}, true},
    };
    checkRows(diamond.get(), rows);
}

// Both edges of the rightmost vertex come from the left, where the half-open
// rule gives vertices away: the answer is that of the point just right of it.
TEST_CASE("insidePath: a vertex whose edges all come from the left counts as right of it") {
    const PathPtr diamond = closedPath({{0, 10}, {10, 0}, {20, 10}, {10, 20}});
    CHECK_FALSE(insidePath(20, 10, diamond.get()));
}

TEST_CASE("insidePath: a ray through a vertex counts a pass once and a turn not at all") {
    // A notch: the vertex (10, 4) turns back, (20, 0)..(0, 0) goes on below.
    const PathPtr notched = closedPath({{0, 0}, {20, 0}, {20, 20}, {10, 4}, {0, 20}});
    constexpr InsideRow rows[] = {
        {"below the notch", {10, 2}, true},
        {"on the notch's vertex: edges on both sides meet there", {10, 4}, true},
        {"in the notch, straight above its vertex", {10, 10}, false},
        {"left leg", {2, 10}, true},
        {"right leg", {18, 10}, true},
    };
    checkRows(notched.get(), rows);

    // A kink on the way across: the ray at x = 10 meets the vertex once.
    const PathPtr kinked = closedPath({{0, 0}, {10, 2}, {20, 0}, {20, 20}, {0, 20}});
    CHECK(insidePath(10, 10, kinked.get()));
    CHECK(insidePath(10, 2, kinked.get()));
    CHECK_FALSE(insidePath(10, 1, kinked.get()));
}

TEST_CASE("insidePath: an open contour counts only the edges that it has") {
    // A hook without its closing edge (0, 10)-(0, 0).
    const PathPtr hook = openPath({{0, 0}, {10, 0}, {10, 10}, {0, 10}});
    constexpr InsideRow rows[] = {
        {"middle: the ray crosses the bottom edge", {5, 5}, true},
        {"on the missing edge: only the bottom edge, which begins there, counts", {0, 5}, true},
        {"on the right edge", {10, 5}, true},
    };
    checkRows(hook.get(), rows);
}

TEST_CASE("insidePath: paths without edges hold nothing") {
    const PathPtr empty(Pemmit::patbeg());
    CHECK_FALSE(insidePath(0, 0, empty.get()));
    CHECK_FALSE(insidePath(0, 0, nullptr));
    const PathPtr dot = openPath({{5, 5}});
    CHECK_FALSE(insidePath(5, 5, dot.get()));
}

TEST_CASE("insidePath: the ends of the coordinate range") {
    constexpr int far = 1073741823;
    const PathPtr huge = closedPath({{-far, -far}, {far, -far}, {far, far}, {-far, far}});
    constexpr InsideRow rows[] = {
        {"middle", {0, 0}, true},
        {"corner", {-far, -far}, true},
        {"outside", {far + 1, 0}, false},
    };
    checkRows(huge.get(), rows);
    const PathPtr wedge = closedPath({{-far, -far}, {far, -far}, {far, far}});
    CHECK(insidePath(0, 0, wedge.get()));  // exactly on the long diagonal
    CHECK_FALSE(insidePath(0, 1, wedge.get()));
    CHECK(insidePath(0, -1, wedge.get()));
}

// Plain geometry, edge by edge in 64 bits: on an edge, or an odd number of
// edges to the right of the point.
bool plainly(Point p, const Points& outline) {
    bool inside = false;
    for (std::size_t i = 0; i + 1 < outline.size(); ++i) {
        const long long ax = outline[i].x, ay = outline[i].y;
        const long long bx = outline[i + 1].x, by = outline[i + 1].y;
        const long long cross = (bx - ax) * (p.y - ay) - (by - ay) * (p.x - ax);
        if (cross == 0 && std::min(ax, bx) <= p.x && p.x <= std::max(ax, bx) &&
            std::min(ay, by) <= p.y && p.y <= std::max(ay, by))
            return true;
        if ((ay > p.y) != (by > p.y) && (by > ay ? cross > 0 : cross < 0)) inside = !inside;
    }
    return inside;
}

// The one class of points where the rule differs on purpose: vertices all of
// whose edges come from the left.
bool allEdgesFromLeft(Point p, const Points& outline) {
    bool isVertex = false;
    for (std::size_t i = 0; i + 1 < outline.size(); ++i) {
        const Point a = outline[i], b = outline[i + 1];
        if (a == p || b == p) isVertex = true;
        if ((a == p && b.x >= p.x) || (b == p && a.x >= p.x)) return false;
    }
    return isVertex;
}

TEST_CASE("insidePath: agrees with plain geometry, in either direction, wherever it is moved") {
    std::mt19937 random(77);
    int asked = 0, differing = 0;
    for (int round = 0; round < 400; ++round) {
        const int size = 3 + static_cast<int>(random() % 8);
        const int grid = round % 2 ? 6 : 40;
        Points points;
        for (int i = 0; i < size; ++i)
            points.push_back({static_cast<int>(random() % static_cast<unsigned>(grid)),
                              static_cast<int>(random() % static_cast<unsigned>(grid))});
        Points outline = points;
        outline.push_back(points.front());
        const PathPtr path = closedPath(points);
        const PathPtr reversed = closedPath(Points(points.rbegin(), points.rend()));
        Points movedPoints = points;
        for (Point& p : movedPoints) p = {p.x - 100000, p.y + 777};
        const PathPtr moved = closedPath(movedPoints);
        for (int x = -1; x <= grid; ++x)
            for (int y = -1; y <= grid; ++y) {
                CAPTURE(round);
                CAPTURE(x);
                CAPTURE(y);
                ++asked;
                const bool got = insidePath(x, y, path.get());
                REQUIRE(insidePath(x, y, reversed.get()) == got);
                REQUIRE(insidePath(x - 100000, y + 777, moved.get()) == got);
                if (allEdgesFromLeft({x, y}, outline)) {
                    ++differing;
                    continue;
                }
                REQUIRE(got == plainly({x, y}, outline));
            }
    }
    CHECK(asked > 100000);
    CHECK(differing > 100);
}

}  // namespace
