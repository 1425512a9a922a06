// Outlines at random, of families that aim at trouble: crossings, touches,
// repeated points, overlaps and the ends of the exact range.

#ifndef TESTS_GEOMETRY_OUTLINES_H
#define TESTS_GEOMETRY_OUTLINES_H

#include <algorithm>
#include <array>
#include <ostream>
#include <random>
#include <utility>
#include <vector>

#include "geometry/intersect_outline.h"
#include "tests/support/paths.h"

constexpr int kExact = 1 << 25;

// An outline of several contours, closed by a repeated first point or open.
struct Contours {
    std::vector<Points> contours;

    Vaskel::Intersect::WalkedOutline walked() const {
        Vaskel::Intersect::WalkedOutline all;
        for (const Points& points : contours) all.add(openPath(points).get());
        return all;
    }
    Vaskel::Intersect::Outline outline() const {
        Vaskel::Intersect::Outline all;
        all.add(walked());
        return all;
    }
};

inline std::ostream& operator<<(std::ostream& out, const Contours& c) {
    for (const Points& points : c.contours) out << points << "| ";
    return out;
}

struct Random {
    std::mt19937 engine;
    int below(int n) { return static_cast<int>(engine() % static_cast<unsigned>(n)); }
    int within(int range) { return std::uniform_int_distribution<int>(-range, range)(engine); }
};

inline Contours closedAtRandom(Random& r, std::vector<Points> contours) {
    for (Points& points : contours)
        if (r.below(3) != 0) points.push_back(points.front());
    return {std::move(contours)};
}

// Random points on a grid: crossings, touches, repeated points and overlaps.
inline Contours onGrid(Random& r, int grid, int longest) {
    std::vector<Points> contours(static_cast<std::size_t>(1 + r.below(3)));
    for (Points& points : contours)
        for (int n = 1 + r.below(longest); n > 0; --n)
            points.push_back({r.below(grid), r.below(grid)});
    return closedAtRandom(r, std::move(contours));
}

// Walks along grid lines with short steps: many collinear pieces, folds and
// vertices at one place.
inline Contours alongLines(Random& r) {
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
inline Contours star(Random& r, int scale) {
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
inline Contours corners(Random& r) {
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

inline Contours huge(Random& r) {
    Points points;
    for (int n = 2 + r.below(10); n > 0; --n)
        points.push_back(r.below(3) ? Point{r.within(kExact), r.within(kExact)}
                                    : Point{kExact * (r.below(3) - 1), kExact * (r.below(3) - 1)});
    return closedAtRandom(r, {points});
}

// Nearly parallel long segments: determinants of a few units.
inline Contours slivers(Random& r) {
    Points points;
    for (int n = 2 + r.below(8); n > 0; --n) {
        const int x = r.within(kExact - 4);
        points.push_back({x + r.below(3), x / 2 + r.below(3)});
    }
    return closedAtRandom(r, {points});
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

#endif
