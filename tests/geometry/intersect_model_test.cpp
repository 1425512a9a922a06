#include <doctest/doctest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "embedded/document.h"
#include "tests/geometry/contours.h"
#include "tests/geometry/literal_intersect.h"
#include "tests/support/fake_host.h"
#include "tests/support/paths.h"
#include "vaskel/geometry.h"

namespace {

using LiteralIntersect::Tally;

struct Random {
    std::mt19937 engine;
    int below(int n) { return static_cast<int>(engine() % static_cast<unsigned>(n)); }
    int within(int range) { return std::uniform_int_distribution<int>(-range, range)(engine); }
};

// One contour is a path, several are the children of a compound.
PathPtr objectOf(const Contours& contours) {
    if (contours.size() == 1) return contours.front().path();
    PathPtr object(Embedded::makeCompound());
    for (const Contour& c : contours) REQUIRE(Embedded::addChild(object.get(), c.path().release()));
    return object;
}

// Some points twice in a row, which hides their neighbours from each other.
Contour contourOf(Random& r, Points points) {
    if (r.below(4) == 0) {
        const auto at = points.begin() + r.below(static_cast<int>(points.size()));
        points.insert(at, *at);
    }
    return {r.below(3) != 0, std::move(points)};
}

Contours onGrid(Random& r, int grid, int longest) {
    Contours contours;
    for (int n = 1 + r.below(3); n > 0; --n) {
        Points points;
        for (int i = 1 + r.below(longest); i > 0; --i)
            points.push_back({r.below(grid), r.below(grid)});
        contours.push_back(contourOf(r, points));
    }
    return contours;
}

// Two or three short walks that all come through one place, and go further
// away from it: what decides is who stands where around it.
Contours throughOnePlace(Random& r) {
    Contours contours;
    for (int n = 2 + r.below(2); n > 0; --n) {
        Points points = {{0, 0}};
        for (int end = 0; end < 2; ++end) {
            Point p{};
            while (p == Point{}) p = {r.within(4), r.within(4)};
            points.push_back(p);
            if (r.below(3)) points.push_back({3 * p.x + r.within(1), 3 * p.y + r.within(1)});
            std::reverse(points.begin(), points.end());
        }
        contours.push_back(contourOf(r, points));
        if (r.below(3)) contours.back().closed = false;
    }
    return contours;
}

// Segments along the axes: overlaps, and vertices on segments.
Contours alongLines(Random& r) {
    Contours contours;
    for (int n = 1 + r.below(3); n > 0; --n) {
        Points points;
        Point p{r.below(6), r.below(6)};
        for (int i = 1 + r.below(7); i > 0; --i) {
            points.push_back(p);
            (r.below(2) ? p.x : p.y) += r.below(7) - 3;
        }
        contours.push_back(contourOf(r, points));
    }
    return contours;
}

// Coordinates up to the whole 32-bit range: every double rounds.
Contours huge(Random& r) {
    const int range = r.below(2) ? 2147483647 : 1 << 27;
    Points points;
    for (int n = 2 + r.below(8); n > 0; --n)
        points.push_back(r.below(3) ? Point{r.within(range), r.within(range)}
                                    : Point{range * (r.below(3) - 1), range * (r.below(3) - 1)});
    return {contourOf(r, points)};
}

// Long enough that the engine sweeps in order: a zigzag, some of whose points
// lie elsewhere, and another one that meets it at vertices.
Contours longZigzags(Random& r) {
    Points points, meeting;
    const int n = 64 + r.below(400);
    for (int i = 0; i < n; ++i) points.push_back({2 * i, i % 2 ? 6 : 2 * r.below(2)});
    for (int moved = r.below(3); moved > 0; --moved) {
        Point& p = points[static_cast<std::size_t>(r.below(n))];
        p = {p.x + r.within(4), p.y + r.within(6)};
    }
    for (int i = r.below(n); i < n && meeting.size() < 100; i += 2)
        meeting.push_back({2 * i, i % 2 ? 6 + 2 * r.below(2) : r.below(6) ? -2 : 2});
    Contours contours = {{false, points}};
    if (!meeting.empty()) contours.push_back({false, meeting});
    for (Contour& c : contours)
        if (r.below(2)) std::reverse(c.points.begin(), c.points.end());
    if (r.below(2)) std::reverse(contours.begin(), contours.end());
    return contours;
}

struct Family {
    const char* name;
    Contours (*make)(Random&);
    int rounds;
};

// The sanitized build looks at a part of the objects.
#if defined(__SANITIZE_ADDRESS__)
constexpr int kShare = 8;
#else
constexpr int kShare = 1;
#endif

constexpr Family kFamilies[] = {
    {"tiny grid", [](Random& r) { return onGrid(r, 4, 5); }, 100000},
    {"small grid", [](Random& r) { return onGrid(r, 9, 8); }, 40000},
    {"through one place", throughOnePlace, 100000},
    {"along lines", alongLines, 60000},
    {"huge", huge, 20000},
    {"long zigzags", longZigzags, 1500},
};

void add(Tally& sum, const Tally& t) {
    for (int yes : {0, 1}) {
        sum.parallel[yes] += t.parallel[yes];
        for (int i = 0; i < 4; ++i) {
            sum.touch[i][yes] += t.touch[i][yes];
            sum.meet[i][yes] += t.meet[i][yes];
        }
    }
    sum.proper += t.proper;
    sum.elsewhere += t.elsewhere;
    sum.noNeighbour += t.noNeighbour;
}

TEST_CASE("intersect: the rule word by word gives the same answers and calls") {
    Tally all;
    for (const Family& family : kFamilies) {
        const std::string name = family.name;
        CAPTURE(name);
        Random r{std::mt19937(20240915)};
        const int rounds = family.rounds / kShare;
        int crossing = 0;
        FakeHost host;
        for (int round = 0; round < rounds; ++round) {
            const Contours contours = family.make(r);
            const PathPtr object = objectOf(contours);
            LiteralIntersect::Sweep literal;
            const int want = literal.intersect(object.get());
            const int before = host.polls();
            const int got = Vaskel::intersect(object.get());
            if (got != want || host.polls() - before != literal.polls) {
                CAPTURE(round);
                CAPTURE(contours);
                REQUIRE(got == want);
                REQUIRE(host.polls() - before == literal.polls);
            }
            crossing += want;
            add(all, literal.tally);
        }
        CHECK(crossing > rounds / 20);
        CHECK(crossing < rounds - rounds / 20);
    }
    // Every rule has decided both ways.
    constexpr long enough = 200 / kShare;
    for (int yes : {0, 1}) {
        CAPTURE(yes);
        CHECK(all.parallel[yes] > enough);
        for (int i = 0; i < 4; ++i) {
            CAPTURE(i);
            CHECK(all.touch[i][yes] > enough);
            CHECK(all.meet[i][yes] > enough);
        }
    }
    CHECK(all.proper > enough);
    CHECK(all.elsewhere > enough);
    CHECK(all.noNeighbour > enough);
}

TEST_CASE("intersect: the rule word by word agrees about objects of other kinds") {
    const Contours eight = {{true, {{0, 0}, {10, 10}, {10, 0}, {0, 10}}}};
    const Contours crossing = {{true, {{0, 0}, {9, 0}, {0, 9}}}, {true, {{1, 1}, {9, 1}, {1, 9}}}};
    const Contours apart = {{true, {{0, 0}, {9, 0}, {0, 9}}}, {true, {{1, 1}, {5, 1}, {1, 5}}}};
    struct Row {
        const char* why;
        Contours contours;
        std::uint32_t set, clear;
        int answer;
    };
    const Row rows[] = {
        {"a path", eight, 0, 0, 1},
        {"neither path nor compound", eight, 0, Pemmit::kFlagPath, 0},
        {"other bits are the host's", eight, 1u << 4, Pemmit::kFlagPath, 0},
        {"a compound", crossing, 0, 0, 1},
        {"a compound, one within the other", apart, 0, 0, 0},
        {"a compound said to be a path is walked itself", crossing, Pemmit::kFlagPath, 0, 0},
        {"a compound no more", crossing, 0, Pemmit::kFlagChildren, 0},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        const PathPtr object = objectOf(row.contours);
        const std::uint32_t own = object->flags;
        object->flags = (own | row.set) & ~row.clear;
        const int got = Vaskel::intersect(object.get());
        const int literal = LiteralIntersect::Sweep().intersect(object.get());
        object->flags = own;
        CHECK(got == row.answer);
        CHECK(literal == row.answer);
    }
    CHECK(Vaskel::intersect(nullptr) == 0);
    CHECK(LiteralIntersect::Sweep().intersect(nullptr) == 0);
}

}  // namespace
