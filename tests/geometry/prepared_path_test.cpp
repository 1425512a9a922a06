#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>

#include "embedded/document.h"
#include "tests/support/fake_host.h"
#include "tests/support/paths.h"
#include "vaskel/geometry.h"

namespace {

using Vaskel::insidePath;
using Vaskel::preparedPath;

struct Random {
    std::mt19937 engine;
    int below(int n) { return static_cast<int>(engine() % static_cast<unsigned>(n)); }
};

Points onGrid(Random& r, int grid) {
    Points points;
    for (int n = 1 + r.below(20); n > 0; --n) points.push_back({r.below(grid), r.below(grid)});
    return points;
}

// A staircase outline as tracing makes them: upright and level edges only.
Points stairs(Random& r, int grid) {
    Points points;
    int x = 0;
    for (int n = 2 + r.below(10); n > 0; --n) {
        const int y = r.below(grid);
        points.push_back({x, y});
        x += r.below(4);
        points.push_back({x, y});
    }
    points.push_back({x, -1});
    points.push_back({0, -1});
    return points;
}

Points starOf(int corners, int radius) {
    Points points;
    for (int i = 0; i < corners; ++i) {
        const double angle = 2 * 3.14159265358979 * i / corners;
        const int r = i % 2 ? radius : radius / 3;
        points.push_back(
            {static_cast<int>(r * std::cos(angle)), static_cast<int>(r * std::sin(angle))});
    }
    return points;
}

// One or several contours, closed or open.
PathPtr pathOf(Random& r, Points (*make)(Random&, int), int grid) {
    const auto contour = [&] {
        const Points points = make(r, grid);
        return r.below(4) ? closedPath(points) : openPath(points);
    };
    if (r.below(2)) return contour();
    PathPtr compound(Embedded::makeCompound());
    for (int n = r.below(4); n > 0; --n)
        REQUIRE(Embedded::addChild(compound.get(), contour().release()));
    return compound;
}

TEST_CASE("preparedPath: answers like insidePath, point by point") {
    struct Family {
        const char* name;
        Points (*make)(Random&, int);
        int grid;
    };
    constexpr Family families[] = {
        {"small grid", onGrid, 6}, {"grid", onGrid, 25}, {"stairs", stairs, 12}};
    int inside = 0, outside = 0;
    for (const Family& family : families) {
        Random r{std::mt19937(31)};
        for (int round = 0; round < 300; ++round) {
            const PathPtr path = pathOf(r, family.make, family.grid);
            const preparedPath prepared(path.get());
            for (int x = -2; x <= family.grid + 2; ++x)
                for (int y = -2; y <= family.grid + 2; ++y) {
                    const bool want = insidePath(x, y, path.get());
                    if (prepared.inside(x, y) != want) {
                        CAPTURE(std::string(family.name));
                        CAPTURE(round);
                        CAPTURE(x);
                        CAPTURE(y);
                        REQUIRE(prepared.inside(x, y) == want);
                    }
                    ++(want ? inside : outside);
                }
        }
    }
    CHECK(inside > 50000);
    CHECK(outside > 50000);
}

TEST_CASE("preparedPath: large outlines, points at random and on the outline") {
    Random r{std::mt19937(8)};
    const Points star = starOf(5000, 1000000);
    const PathPtr path = closedPath(star);
    const preparedPath prepared(path.get());
    int inside = 0;
    for (int i = 0; i < 3000; ++i) {
        Point p{r.below(2000000) - 1000000, r.below(2000000) - 1000000};
        if (i % 3 == 1) p = star[static_cast<std::size_t>(r.below(5000))];
        if (i % 3 == 2) {  // beside a vertex
            p = star[static_cast<std::size_t>(r.below(5000))];
            p.x += r.below(3) - 1;
            p.y += r.below(3) - 1;
        }
        CAPTURE(p);
        const bool want = insidePath(p.x, p.y, path.get());
        REQUIRE(prepared.inside(p.x, p.y) == want);
        inside += want;
    }
    CHECK(inside > 500);
}

TEST_CASE("preparedPath: coordinates at and beyond the ends of the range") {
    Random r{std::mt19937(9)};
    constexpr int values[] = {-2147483647 - 1, -2147483647, -1073741825, -1073741824, -1, 0, 1,
                              1073741823,      1073741824,  2147483647};
    const auto any = [&] { return values[r.below(10)]; };
    for (int round = 0; round < 500; ++round) {
        Points points;
        for (int n = 3 + r.below(4); n > 0; --n) points.push_back({any(), any()});
        const PathPtr path = closedPath(points);
        const preparedPath prepared(path.get());
        for (int i = 0; i < 20; ++i) {
            const Point p{any(), any()};
            CAPTURE(points);
            CAPTURE(p);
            REQUIRE(prepared.inside(p.x, p.y) == insidePath(p.x, p.y, path.get()));
        }
    }
}

TEST_CASE("preparedPath: empty paths hold nothing, copies share, the path may go") {
    CHECK_FALSE(preparedPath(nullptr).inside(0, 0));
    const PathPtr empty(Pemmit::patbeg());
    CHECK_FALSE(preparedPath(empty.get()).inside(0, 0));
    PathPtr square = closedPath({{0, 0}, {10, 0}, {10, 10}, {0, 10}});
    preparedPath prepared(square.get());
    square.reset();
    const preparedPath copy(prepared);
    prepared = preparedPath(nullptr);
    CHECK_FALSE(prepared.inside(5, 5));
    CHECK(copy.inside(5, 5));
    CHECK(copy.inside(10, 5));
    CHECK_FALSE(copy.inside(11, 5));
}

TEST_CASE("preparedPath: memory that ends passes through") {
    const PathPtr square = closedPath({{0, 0}, {10, 1}, {11, 10}, {1, 11}});
    int refused = 0;
    const int failures = failEachAllocation([&] {
        try {
            const bool inside = preparedPath(square.get()).inside(5, 5);
            CHECK(inside);
        } catch (const std::bad_alloc&) {
            ++refused;
        }
    });
    CHECK(failures > 3);
    CHECK(refused == failures);
}

}  // namespace
