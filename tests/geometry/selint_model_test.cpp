#include <doctest/doctest.h>

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/paths.h"
#include "vaskel/geometry.h"

namespace {

constexpr int kKept = -77;

struct Found {
    int rc = -1, a = kKept, b = kKept, x = kKept, y = kKept;
    friend bool operator==(const Found&, const Found&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Found& f) {
        return out << "rc " << f.rc << " segments " << f.a << ' ' << f.b << " at " << f.x << ','
                   << f.y;
    }
};

// How often each part of the rule below was used.
struct Tally {
    long ranOut[2] = {};      // walks that began anew, by direction
    long reduced[2] = {};     // indices that went past an end, by the new direction
    long full = 0;            // spans that cannot grow
    long found[2][2] = {};    // by who leads, a or b, and its direction
    long foundAt[2][2] = {};  // by the trailing path's direction, and whether past its end
    int latestPass = 0;
};

// A path under search: its points in order, as a walk delivers them.
struct Side {
    Points points;
    int index;
    int n = static_cast<int>(points.size()) - 1;
    int span = 1, direction = 0;

    // Numbers of the points that a walk delivers: from index, or from the
    // natural beginning.
    std::vector<int> walk(bool natural) const {
        std::vector<int> numbers;
        if (direction == 0)
            for (int i = natural ? 0 : index; i <= n; ++i) numbers.push_back(i);
        else
            for (int i = natural ? n : index; i >= 0; --i) numbers.push_back(i);
        return numbers;
    }
    Point at(int number) const { return points[static_cast<std::size_t>(number)]; }
};

// The search word by word.
Found literally(const Points& a, int indexA, const Points& b, int indexB, Point ref, int tolerance,
                Tally& tally) {
    Side sides[2] = {{a, indexA}, {b, indexB}};
    for (const Side& side : sides)
        if (side.n < 1 || side.index < 0 || side.index >= side.n) return {};
    for (int pass = 0; pass < 21; ++pass) {
        Side& leading = sides[pass % 2];
        Side& trailing = sides[1 - pass % 2];
        const std::vector<int> first = leading.walk(false);
        const Point p1 = leading.at(first.at(0)), p2 = leading.at(first.at(1));
        std::vector<int> walk = trailing.walk(false);
        std::size_t next = 0;
        Point q1 = trailing.at(walk.at(next++));
        for (int j = 0; j < trailing.span; ++j) {
            if (next == walk.size()) {
                ++tally.ranOut[trailing.direction];
                walk = trailing.walk(true);
                q1 = trailing.at(walk.at(0));
                next = 1;
            }
            const Point q2 = trailing.at(walk.at(next++));
            Found f{0};
            if (Vaskel::intcalc(p1.x, p1.y, p2.x, p2.y, q1.x, q1.y, q2.x, q2.y, &f.x, &f.y)) {
                const double dx = f.x - ref.x, dy = f.y - ref.y;
                if (dx * dx + dy * dy < static_cast<double>(tolerance) * tolerance) {
                    int numbers[2];
                    numbers[pass % 2] = leading.index - (leading.direction == 1 ? 1 : 0);
                    int& number = numbers[1 - pass % 2];
                    number = trailing.direction == 0 ? trailing.index + j : trailing.index - 1 - j;
                    const bool past = number >= trailing.n || number < 0;
                    if (number >= trailing.n) number -= trailing.n;
                    if (number < 0) number += trailing.n;
                    ++tally.found[pass % 2][leading.direction];
                    ++tally.foundAt[trailing.direction][past];
                    tally.latestPass = std::max(tally.latestPass, pass);
                    f.a = numbers[0];
                    f.b = numbers[1];
                    return f;
                }
            }
            q1 = q2;
        }
        if (trailing.span >= trailing.n) {
            ++tally.full;
            continue;
        }
        ++trailing.span;
        trailing.direction = 1 - trailing.direction;
        if (trailing.direction == 1) {
            trailing.index += trailing.span;
            if (trailing.index > trailing.n) ++tally.reduced[1], trailing.index -= trailing.n;
        } else {
            trailing.index -= trailing.span;
            if (trailing.index < 0) ++tally.reduced[0], trailing.index += trailing.n;
        }
    }
    return {};
}

struct Random {
    std::mt19937 engine;
    int below(int n) { return static_cast<int>(engine() % static_cast<unsigned>(n)); }
};

// Steps of a few units; closed or open.
PathPtr wander(Random& r, int longest) {
    Points points;
    Point p{r.below(20), r.below(20)};
    for (int n = 2 + r.below(longest); n > 0; --n) {
        points.push_back(p);
        p = {p.x + r.below(11) - 5, p.y + r.below(11) - 5};
    }
    return r.below(2) ? closedPath(points) : openPath(points);
}

TEST_CASE("selint: the search word by word finds the same") {
    Random r{std::mt19937(20240922)};
    Tally tally;
    int none = 0;
    for (int round = 0; round < 60000; ++round) {
        const int longest = round % 3 ? 30 : 6;
        const PathPtr a = wander(r, longest);
        const PathPtr other = wander(r, longest);
        Pemmit::Path* const b = r.below(3) ? other.get() : a.get();
        const Points pointsA = walked(a.get()), pointsB = walked(b);
        const int n = static_cast<int>(pointsA.size()) - 1,
                  m = static_cast<int>(pointsB.size()) - 1;
        // Often at the very ends, now and then just outside.
        const auto start = [&](int segments) {
            return r.below(3)   ? r.below(segments)
                   : r.below(2) ? r.below(3) - 1
                                : segments - 1 + r.below(2);
        };
        const int indexA = start(n), indexB = start(m);
        const Point ref = pointsA[static_cast<std::size_t>(r.below(n + 1))];
        const int tolerance = r.below(4) ? 1 + r.below(6) : r.below(60);
        const Found want = literally(pointsA, indexA, pointsB, indexB, ref, tolerance, tally);
        Found got;
        got.rc = Vaskel::selint(a.get(), indexA, b, indexB, &got.a, &got.b, &got.x, &got.y, ref.x,
                                ref.y, tolerance);
        none += want.rc;
        if (got == want) continue;
        CAPTURE(pointsA);
        CAPTURE(pointsB);
        CAPTURE(indexA);
        CAPTURE(indexB);
        CAPTURE(ref);
        CAPTURE(tolerance);
        REQUIRE(got == want);
    }
    CHECK(none < -10000);
    for (int i : {0, 1}) {
        CAPTURE(i);
        CHECK(tally.ranOut[i] > 1000);
        CHECK(tally.reduced[i] > 1000);
        for (int j : {0, 1}) {
            CAPTURE(j);
            CHECK(tally.found[i][j] > 500);
            CHECK(tally.foundAt[i][j] > 500);
        }
    }
    CHECK(tally.full > 1000);
    CHECK(tally.latestPass == 20);
}

// Twelve segments around a square; a line crosses the last one, which ends at
// the first point. It is found from up to five segments to either side.
TEST_CASE("selint: goes on around a closed path") {
    const PathPtr ring = closedPath({{0, 0},
                                     {10, 0},
                                     {20, 0},
                                     {30, 0},
                                     {30, 10},
                                     {30, 20},
                                     {30, 30},
                                     {20, 30},
                                     {10, 30},
                                     {0, 30},
                                     {0, 20},
                                     {0, 10}});
    const PathPtr line = openPath({{-5, 5}, {5, 5}});
    const auto from = [&](int index, int tolerance) {
        Found f;
        f.rc = Vaskel::selint(ring.get(), index, line.get(), 0, &f.a, &f.b, &f.x, &f.y, 0, 5,
                              tolerance);
        return f;
    };
    // Segment 11 runs from (0, 10) to (0, 0) and is crossed at (0, 5).
    const Found crossing{0, 11, 0, 0, 5};
    CHECK(from(11, 1) == crossing);
    for (int index = 0; index < 5; ++index) {  // backwards over the first point
        CAPTURE(index);
        CHECK(from(index, 1) == crossing);
    }
    for (int index = 6; index < 11; ++index) {
        CAPTURE(index);
        CHECK(from(index, 1) == crossing);
    }
    CHECK(from(5, 1) == Found{});  // opposite: six segments away on both sides
}

}  // namespace
