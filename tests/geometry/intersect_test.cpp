#include <doctest/doctest.h>

#include <initializer_list>
#include <limits>
#include <memory>
#include <utility>

#include "embedded/document.h"
#include "tests/support/fake_host.h"
#include "tests/support/paths.h"
#include "vaskel/geometry.h"

namespace {

using Vaskel::intersect;

struct Row {
    const char* why;
    bool closed;
    Points points;
    int answer;
};

const Row kRows[] = {
    {"a square", true, {{0, 0}, {10, 0}, {10, 10}, {0, 10}}, 0},
    {"a square, the other way round", true, {{0, 10}, {10, 10}, {10, 0}, {0, 0}}, 0},
    {"a figure eight", true, {{0, 0}, {10, 10}, {10, 0}, {0, 10}}, 1},
    {"a triangle", true, {{0, 0}, {10, 0}, {3, 8}}, 0},
    {"an open cross", false, {{0, 0}, {10, 10}, {10, 0}, {0, 10}}, 1},
    {"an open hook that stays clear", false, {{0, 0}, {10, 0}, {10, 10}, {1, 1}}, 0},
    {"an open hook through its first segment", false, {{0, 0}, {10, 0}, {10, 10}, {5, -5}}, 1},
    {"an open path that ends on its first segment", false, {{0, 0}, {10, 0}, {10, 10}, {5, 0}}, 0},
    {"passes through a segment at a vertex",
     false,
     {{0, 0}, {10, 0}, {10, 10}, {5, 0}, {3, -5}},
     1},
    {"touches a segment with a vertex and turns back",
     false,
     {{0, 0}, {10, 0}, {10, 10}, {5, 0}, {3, 5}},
     0},
    {"folds back over itself", false, {{0, 0}, {10, 0}, {5, 0}}, 1},
    {"folds back over itself, upright", false, {{0, 0}, {0, 10}, {0, 5}}, 1},
    {"goes straight on", false, {{0, 0}, {10, 0}, {20, 0}}, 0},
    {"collinear, overlapping apart from each other",
     false,
     {{0, 0}, {10, 0}, {10, 5}, {15, 5}, {15, 0}, {5, 0}},
     1},
    {"collinear, end to end", false, {{0, 0}, {10, 0}, {10, 5}, {20, 5}, {20, 0}, {11, 0}}, 0},
    {"parallel, one above the other", false, {{0, 0}, {10, 0}, {10, 5}, {0, 5}}, 0},
    {"upright and overlapping", false, {{0, 0}, {0, 10}, {5, 10}, {5, 20}, {0, 20}, {0, 5}}, 1},
    {"a single point", false, {{5, 5}}, 0},
    {"a single segment", false, {{0, 0}, {5, 5}}, 0},
    {"repeated points", true, {{0, 0}, {0, 0}, {10, 0}, {10, 10}, {10, 10}, {0, 10}}, 0},
    {"all points the same", true, {{3, 3}, {3, 3}, {3, 3}}, 0},
    {"two squares that share a corner, turning there: a touch",
     true,
     // (10, 0) (10, 10) (20, 10) stays to the lower right of (10, 20) (10, 10) (0, 10)
     {{0, 0}, {10, 0}, {10, 10}, {20, 10}, {20, 20}, {10, 20}, {10, 10}, {0, 10}},
     0},
    {"two squares that share a corner, passing straight through it",
     true,
     // (10, 0) (10, 10) (10, 20) upwards, (20, 10) (10, 10) (0, 10) across
     {{0, 0}, {10, 0}, {10, 10}, {10, 20}, {20, 20}, {20, 10}, {10, 10}, {0, 10}},
     1},
    {"passes through a segment at a repeated point, which hides it",
     false,
     {{0, 0}, {10, 0}, {10, 10}, {5, 0}, {5, 0}, {3, -5}},
     0},
};

TEST_CASE("intersect: one contour") {
    int rows = 0;
    for (const Row& row : kRows) {
        CAPTURE(row.why);
        const PathPtr path = row.closed ? closedPath(row.points) : openPath(row.points);
        CHECK(intersect(path.get()) == row.answer);
        ++rows;
    }
    CHECK(rows == 24);
}

TEST_CASE("intersect: objects that are no path have no outline") {
    CHECK(intersect(nullptr) == 0);
    const PathPtr eight = closedPath({{0, 0}, {10, 10}, {10, 0}, {0, 10}});
    Pemmit::flaset(eight.get(), Pemmit::kFlagPath, false);
    CHECK(intersect(eight.get()) == 0);
    Pemmit::flaset(eight.get(), Pemmit::kFlagPath, true);
    CHECK(intersect(eight.get()) == 1);
}

// A compound of these contours, owned by the result.
PathPtr compound(std::initializer_list<Pemmit::Path*> contours) {
    PathPtr object(Embedded::makeCompound());
    for (Pemmit::Path* contour : contours) REQUIRE(Embedded::addChild(object.get(), contour));
    return object;
}

TEST_CASE("intersect: the contours of a compound are tested together") {
    const Points low = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
    const Points over = {{5, 5}, {15, 5}, {15, 15}, {5, 15}};
    const Points apart = {{20, 0}, {30, 0}, {30, 10}, {20, 10}};
    const Points within = {{2, 2}, {8, 2}, {8, 8}, {2, 8}};
    const auto both = [](const Points& a, const Points& b) {
        return intersect(compound({closedPath(a).release(), closedPath(b).release()}).get());
    };
    CHECK(both(low, apart) == 0);
    CHECK(both(low, within) == 0);
    CHECK(both(low, over) == 1);
    CHECK(both(over, low) == 1);
    CHECK(both(low, low) == 1);
    CHECK(intersect(compound({}).get()) == 0);
}

TEST_CASE("intersect: children that are no paths are passed over, not searched") {
    const Points eight = {{0, 0}, {10, 10}, {10, 0}, {0, 10}};
    const PathPtr inner = compound({compound({closedPath(eight).release()}).release()});
    CHECK(intersect(inner.get()) == 0);
    PathPtr hidden = closedPath(eight);
    Pemmit::flaset(hidden.get(), Pemmit::kFlagPath, false);
    CHECK(intersect(compound({hidden.release()}).get()) == 0);
    CHECK(intersect(compound({closedPath(eight).release()}).get()) == 1);
}

// The outline F A V G comes to V from below and leaves it downwards; the other
// one passes V from left to right: a touch. Walked from F, the segment that the
// sweep enters at A ends at V, and its neighbour at the first vertex, F, lies
// above the other outline: counted as a crossing. Walked from G, the segment
// begins at V, and its neighbour there, G, lies below: no crossing.
TEST_CASE("intersect: a touch is judged by the neighbour at the first vertex") {
    const Points f = {{0, 1000}, {100, 0}, {100, 100}, {150, 0}};
    const Points g(f.rbegin(), f.rend());
    const Points across = {{95, 100}, {100, 100}, {200, 100}};
    CHECK(intersect(compound({openPath(f).release(), openPath(across).release()}).get()) == 1);
    CHECK(intersect(compound({openPath(g).release(), openPath(across).release()}).get()) == 0);
}

// One outline turns back at (0, 0); the other one comes along between its arms
// and goes on to the right: a pass. The segment (-10, 0) (0, 0) is tested
// against the arms. Walked towards (0, 0) its neighbour is the one at (-10, 0),
// behind it, which shows no pass; walked away from it, the one at (0, 0) does.
// So does (0, 0) (10, 0), but it meets the arms in the sweep only when its
// child comes first: otherwise they have ended before it is entered.
TEST_CASE("intersect: which child comes first can hide a pass at a vertex") {
    const Points turning = {{-10, 10}, {0, 0}, {-10, -10}};
    const Points through = {{-20, 0}, {-10, 0}, {0, 0}, {10, 0}};
    const Points back(through.rbegin(), through.rend());
    const auto both = [](const Points& a, const Points& b) {
        return intersect(compound({openPath(a).release(), openPath(b).release()}).get());
    };
    CHECK(both(turning, through) == 0);
    CHECK(both(turning, back) == 1);
    CHECK(both(through, turning) == 1);
}

TEST_CASE("intersect: asks the system before every 200th vertex") {
    struct CountRow {
        int points, polls;
    };
    constexpr CountRow rows[] = {{0, 0}, {1, 0}, {2, 1}, {200, 1}, {201, 2}, {400, 2}, {401, 3}};
    for (const CountRow& row : rows) {
        CAPTURE(row.points);
        PathPtr path(Pemmit::patbeg());
        for (int i = 0; i < row.points; ++i) Pemmit::patlin(path.get(), 10 * i, i % 2);
        Pemmit::flaset(path.get(), Pemmit::kFlagOpen, true);
        FakeHost host;
        CHECK(intersect(path.get()) == 0);
        CHECK(host.polls() == row.polls);
    }
}

TEST_CASE("intersect: cancelling changes nothing, a host that throws passes through") {
    const PathPtr square = closedPath({{0, 0}, {10, 0}, {10, 10}, {0, 10}});
    {
        FakeHost host({.cancelAtPoll = 1});
        CHECK(intersect(square.get()) == 0);
    }
    FakeHost host({.throwAtCall = 1});
    CHECK_THROWS_AS(intersect(square.get()), HostFailure);
}

TEST_CASE("intersect: memory that ends passes through") {
    const PathPtr square = closedPath({{0, 0}, {10, 0}, {10, 10}, {0, 10}});
    int answer = -1, refused = 0;
    const int failures = failEachAllocation([&] {
        try {
            answer = intersect(square.get());
        } catch (const std::bad_alloc&) {
            ++refused;
        }
    });
    // The sort manages without its scratch memory; everything else passes on.
    CHECK(refused > 0);
    CHECK(failures - refused <= 1);
    CHECK(answer == 0);
}

}  // namespace

// Packing such a point overflowed.
TEST_CASE("intersect: points at the lowest x and below the axis") {
    constexpr int lowest = std::numeric_limits<int>::min();
    CHECK(intersect(openPath({{lowest, -5}, {0, 0}, {5, 5}}).get()) == 0);
    CHECK(intersect(openPath({{lowest, -5}, {0, 5}, {0, -5}, {lowest, 5}}).get()) == 1);
    CHECK(intersect(openPath({{0, 5}, {lowest, -5}, {lowest, 5}, {0, -5}}).get()) == 1);
    Points stairs;  // enough of them to be worth a proof
    for (int i = 0; i < 100; ++i) stairs.push_back({lowest + i / 2, -200 + (i + 1) / 2});
    CHECK(intersect(openPath(stairs).get()) == 0);
    stairs.push_back({lowest, lowest});
    stairs.push_back({lowest, 0});
    CHECK(intersect(openPath(stairs).get()) == 1);  // along the first step
}
