#include <doctest/doctest.h>

#include <algorithm>
#include <random>
#include <string>

#include "geometry/intersect_outline.h"
#include "geometry/intersect_plain.h"
#include "geometry/intersect_sweep.h"
#include "geometry/sweep_sort.h"
#include "tests/geometry/outlines.h"
#include "tests/support/fake_host.h"

namespace {

using namespace Vaskel::Intersect;

struct Result {
    int answer, polls;
    friend bool operator==(const Result&, const Result&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Result& r) {
        return out << r.answer << " after " << r.polls << " polls";
    }
};

template <class Form>
Result resultOf(Form form, const Outline& outline) {
    FakeHost host;
    const int answer = form(outline);
    return {answer, host.polls()};
}

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
        for (const Index firstStep : {1, 24, 200, 333, 3000}) {
            CAPTURE(firstStep);
            const auto inSteps = [&](const Outline& o) { return sweepInSteps(o, firstStep); };
            CHECK(resultOf(inSteps, outline) == want);
        }
        crossing += want.answer;
    }
    CHECK(crossing > 50);
    CHECK(crossing < 250);
}

// A few segments, then thousands side by side, which take memory. A host that
// throws when it is asked for the first time ends the test before that when
// the first step is short: the sweep has not gone to the end before it asks.
TEST_CASE("intersect: the ordered sweep asks the system between its steps") {
    Contours contours{{{}}};
    for (int i = 0; i < 400; ++i) contours.contours[0].push_back({i, i % 2});
    for (int i = 0; i < 3000; ++i) contours.contours.push_back({{1000, i}, {2000, i}});
    const Outline outline = contours.outline();
    CHECK(resultOf(sweepOrdered, outline) == Result{0, (400 + 2 * 3000) / 200});
    const auto allocationsUntilAsked = [&](Index firstStep) {
        FakeHost host({.throwAtCall = 1});
        const long before = allocationCount();
        CHECK_THROWS_AS(sweepInSteps(outline, firstStep), HostFailure);
        return allocationCount() - before;
    };
    CHECK(allocationsUntilAsked(200) < allocationsUntilAsked(1 << 21));
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
