#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

#include "geometry/intersect_outline.h"
#include "geometry/intersect_plain.h"
#include "geometry/intersect_sweep.h"
#include "geometry/sweep_sort.h"
#include "tests/support/fake_host.h"
#include "tests/support/paths.h"

namespace {

using namespace Vaskel::Intersect;

constexpr int kExact = 1 << 25;

// An outline of several contours, closed by a repeated first point or open.
struct Contours {
    std::vector<Points> contours;

    Outline outline() const {
        Outline all;
        for (const Points& points : contours) {
            const PathPtr path = openPath(points);
            all.add(path.get());
        }
        return all;
    }
};

std::ostream& operator<<(std::ostream& out, const Contours& c) {
    for (const Points& points : c.contours) out << points << "| ";
    return out;
}

struct Random {
    std::mt19937 engine;
    int below(int n) { return static_cast<int>(engine() % static_cast<unsigned>(n)); }
    int within(int range) { return std::uniform_int_distribution<int>(-range, range)(engine); }
};

Contours closedAtRandom(Random& r, std::vector<Points> contours) {
    for (Points& points : contours)
        if (r.below(3) != 0) points.push_back(points.front());
    return {std::move(contours)};
}

// Random points on a grid: crossings, touches, repeated points and overlaps.
Contours onGrid(Random& r, int grid, int longest) {
    std::vector<Points> contours(static_cast<std::size_t>(1 + r.below(3)));
    for (Points& points : contours)
        for (int n = 1 + r.below(longest); n > 0; --n)
            points.push_back({r.below(grid), r.below(grid)});
    return closedAtRandom(r, std::move(contours));
}

// Walks along grid lines with short steps: many collinear pieces, folds and
// vertices at one place.
Contours alongLines(Random& r) {
    std::vector<Points> contours(static_cast<std::size_t>(1 + r.below(4)));
    for (Points& points : contours) {
        Point p{r.below(6), r.below(6)};
        for (int n = 1 + r.below(9); n > 0; --n) {
            points.push_back(p);
            (r.below(2) ? p.x : p.y) += r.below(7) - 3;
        }
    }
    return closedAtRandom(r, std::move(contours));
}

// Polygons that are simple for certain: points of a star in order of angle, on
// a grid coarse enough that they touch themselves now and then.
Contours star(Random& r, int scale) {
    const int n = 3 + r.below(12);
    Points points;
    for (int i = 0; i < n; ++i) {
        static constexpr std::array<Point, 16> directions = {{{16, 0},
                                                              {15, 6},
                                                              {11, 11},
                                                              {6, 15},
                                                              {0, 16},
                                                              {-6, 15},
                                                              {-11, 11},
                                                              {-15, 6},
                                                              {-16, 0},
                                                              {-15, -6},
                                                              {-11, -11},
                                                              {-6, -15},
                                                              {0, -16},
                                                              {6, -15},
                                                              {11, -11},
                                                              {15, -6}}};
        const Point d = directions[static_cast<std::size_t>(i * 16 / n)];
        const int length = 1 + r.below(4);
        points.push_back({d.x * length * scale / 4, d.y * length * scale / 4});
    }
    return closedAtRandom(r, {points});
}

// Outlines that share corners: the places where neighbours decide.
Contours corners(Random& r) {
    std::vector<Points> contours;
    for (int n = 2 + r.below(3); n > 0; --n) {
        const int x = 2 * r.below(3), y = 2 * r.below(3);
        Points square = {{x, y}, {x + 2, y}, {x + 2, y + 2}, {x, y + 2}};
        if (r.below(2)) square[static_cast<std::size_t>(r.below(4))] = {x + 1, y + 1};
        if (r.below(2)) std::reverse(square.begin(), square.end());
        std::rotate(square.begin(), square.begin() + r.below(4), square.end());
        contours.push_back(square);
    }
    return closedAtRandom(r, std::move(contours));
}

Contours huge(Random& r) {
    Points points;
    for (int n = 2 + r.below(10); n > 0; --n)
        points.push_back(r.below(3) ? Point{r.within(kExact), r.within(kExact)}
                                    : Point{kExact * (r.below(3) - 1), kExact * (r.below(3) - 1)});
    return closedAtRandom(r, {points});
}

// Nearly parallel long segments: determinants of a few units.
Contours slivers(Random& r) {
    Points points;
    for (int n = 2 + r.below(8); n > 0; --n) {
        const int x = r.within(kExact - 4);
        points.push_back({x + r.below(3), x / 2 + r.below(3)});
    }
    return closedAtRandom(r, {points});
}

struct Result {
    int answer, polls;
    friend bool operator==(const Result&, const Result&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Result& r) {
        return out << r.answer << " after " << r.polls << " polls";
    }
};

Result resultOf(int (*form)(const Outline&), const Outline& outline) {
    FakeHost host;
    const int answer = form(outline);
    return {answer, host.polls()};
}

struct Family {
    const char* name;
    Contours (*make)(Random&);
    int rounds;
    bool alwaysSimple;  // never crosses itself, by construction
};

// The sanitized build looks at a part of the objects.
#if defined(__SANITIZE_ADDRESS__)
constexpr int kShare = 8;
#else
constexpr int kShare = 1;
#endif

constexpr Family kFamilies[] = {
    {"tiny grid", [](Random& r) { return onGrid(r, 4, 6); }, 180000, false},
    {"small grid", [](Random& r) { return onGrid(r, 9, 8); }, 180000, false},
    {"wide grid", [](Random& r) { return onGrid(r, 1000, 10); }, 60000, false},
    {"along lines", alongLines, 300000, false},
    {"stars", [](Random& r) { return star(r, 4); }, 120000, true},
    {"large stars", [](Random& r) { return star(r, 1000000); }, 30000, true},
    {"corners", corners, 300000, false},
    {"huge", huge, 120000, false},
    {"slivers", slivers, 120000, false},
};

TEST_CASE("intersect: the ordered sweep answers like the plain one") {
    for (const Family& family : kFamilies) {
        Random r{std::mt19937(20240607)};
        int crossing = 0;
        for (int round = 0; round < family.rounds / kShare; ++round) {
            const Contours contours = family.make(r);
            const Outline outline = contours.outline();
            const int want = sweepPlain(outline);
            const int got = sweepOrdered(outline);
            if (got != want) {
                CAPTURE(std::string(family.name));
                CAPTURE(round);
                CAPTURE(contours);
                REQUIRE(got == want);
            }
            crossing += want;
        }
        CAPTURE(std::string(family.name));
        const int rounds = family.rounds / kShare;
        CHECK(crossing < rounds);
        CHECK((crossing > rounds / 100) == !family.alwaysSimple);
    }
}

// Long outlines in which the first crossing lies anywhere: a zigzag without
// crossings, some of whose points are moved.
TEST_CASE("intersect: the ordered sweep asks the system as often as the plain one") {
    Random r{std::mt19937(4711)};
    int crossing = 0;
    for (int round = 0; round < 300; ++round) {
        const int n = 200 + r.below(3000);
        Points points;
        for (int i = 0; i < n; ++i)
            points.push_back({5 * i, i % 2 ? 1000 + r.below(50) : r.below(50)});
        for (int moved = r.below(4); moved > 0; --moved) {
            Point& p = points[static_cast<std::size_t>(r.below(n))];
            p = {p.x + r.within(400), p.y + r.within(600)};
        }
        if (round % 2) std::shuffle(points.begin(), points.begin() + r.below(3), r.engine);
        const Outline outline = Contours{{points}}.outline();
        CAPTURE(round);
        CAPTURE(n);
        const Result want = resultOf(sweepPlain, outline);
        CHECK(resultOf(sweepOrdered, outline) == want);
        crossing += want.answer;
    }
    CHECK(crossing > 50);
    CHECK(crossing < 250);
}

TEST_CASE("intersect: vertices are sorted like the plain sweep sorts them") {
    Random r{std::mt19937(99)};
    for (const int n : {0, 1, 2, 999, 1000, 5000})
        for (const int range : {0, 3, 1000, kExact}) {
            CAPTURE(n);
            CAPTURE(range);
            Outline outline;
            for (int i = 0; i < n; ++i)
                outline.vertices.push_back({r.within(range), r.within(range), kNone, kNone});
            CHECK(sortedForSweep(outline.vertices) == sweepOrder(outline));
        }
}

TEST_CASE("intersect: the exact range ends at 2^25") {
    const auto within = [](Point p) {
        return withinExactRange(Contours{{{{0, 0}, p, {5, 5}}}}.outline());
    };
    CHECK(within({kExact, -kExact}));
    CHECK_FALSE(within({kExact + 1, 0}));
    CHECK_FALSE(within({0, -kExact - 1}));
}

}  // namespace
