// What cleaning refuses, copies and simplifies, and what it does without memory.

#include <doctest/doctest.h>

#include <climits>
#include <initializer_list>
#include <new>

#include "embedded/document.h"
#include "embedded/host.h"
#include "geometry/clean.h"
#include "tests/geometry/cleaned.h"
#include "tests/support/fake_host.h"
#include "tests/support/paths.h"
#include "vaskel/geometry.h"

namespace {

using Vaskel::clean;
using Vaskel::cleanpar;

// Before main, and so before any test has set them.
const bool kInitiallyZero = Vaskel::cleanState().order == 0 &&
                            Vaskel::cleanState().tolerance == 0 && Vaskel::cleanState().step == 0;

// Points (x, 0) for x = 0 to last.
Points straight(int last) {
    Points points;
    for (int x = 0; x <= last; ++x) points.push_back({x, 0});
    return points;
}

TEST_CASE("clean: the parameters are 0 until they are set") { CHECK(kInitiallyZero); }

struct SizeRow {
    const char* why;
    Point corner;
    int size;
    bool refused;
};

const SizeRow kSizeRows[] = {
    // boxes from (0, 0) to corner
    {"narrow and tall", {3, 100}, 5, true},
    {"wide and flat", {100, 3}, 5, false},
    {"narrow and low", {5, 5}, 5, false},
    {"exactly as narrow, just taller", {5, 6}, 5, true},
    {"just wider, as tall", {6, 6}, 5, false},
    {"size 0 refuses an upright line", {0, 1}, 0, true},
    {"no box is narrower than -1", {0, 1}, -1, false},
    {"the whole range is wider than any size", {INT_MAX, 7}, INT_MAX - 1, false},
};

TEST_CASE("clean: narrow, tall outlines are refused") {
    cleanpar(0, 0, 0);
    int rows = 0;
    for (const SizeRow& row : kSizeRows) {
        CAPTURE(row.why);
        const int x = row.corner.x;
        const int y = row.corner.y;
        const PathPtr path = closedPath({{0, 0}, {x, 0}, {x, y}, {0, y}});
        const PathPtr result(clean(path.get(), row.size));
        CHECK(!result == row.refused);
        ++rows;
    }
    CHECK(rows == 8);
    // 2^32 - 1 wide and high.
    const PathPtr all = closedPath({{INT_MIN, INT_MIN}, {INT_MAX, INT_MAX}, {0, 0}});
    CHECK(PathPtr(clean(all.get(), INT_MAX)));
    const PathPtr tall = closedPath({{0, INT_MIN}, {5, INT_MAX}, {0, 0}});
    CHECK(!PathPtr(clean(tall.get(), 5)));
    CHECK(!clean(nullptr, 5));
}

struct ShortRow {
    const char* why;
    bool closed;
    Points points;
    bool copied;
};

const ShortRow kShortRows[] = {
    {"no point", true, {}, true},
    {"one point, open", false, {{1, 2}}, true},
    {"one point, closed", true, {{1, 2}}, true},
    {"two points and repetitions, open", false, {{0, 0}, {0, 0}, {9, 0}, {9, 0}}, true},
    {"three changes, open", false, {{0, 0}, {0, 0}, {9, 0}, {0, 0}, {0, 0}}, false},
    {"there and back again, closed", true, {{0, 0}, {9, 0}, {9, 0}}, true},  // 3 changes
    {"a triangle, closed", true, {{0, 0}, {9, 0}, {9, 0}, {0, 9}}, false},   // 4 changes
    {"two points, twice, closed", true, {{0, 0}, {9, 0}, {0, 0}, {9, 0}}, false},
};

TEST_CASE("clean: paths with too few points come back as they are") {
    cleanpar(0, 100, 0);  // a tolerance that takes all points between
    int rows = 0;
    for (const ShortRow& row : kShortRows) {
        CAPTURE(row.why);
        const PathPtr path = row.closed ? closedPath(row.points) : openPath(row.points);
        const Points all = walked(path.get());
        const bool copied = cleaned(path.get()) == all;
        CHECK(copied == row.copied);
        CHECK(walked(path.get()) == all);
        ++rows;
    }
    CHECK(rows == 8);
}

TEST_CASE("clean: a copy keeps curves and flags, a cleaned path has lines and its own flags") {
    cleanpar(0, 0, 0);
    constexpr std::uint32_t kHosts = 1u << 7;
    Embedded::setFlatness(1000);  // the curve arrives as its end
    const PathPtr path(Pemmit::patbeg());
    Pemmit::patlin(path.get(), 0, 0);
    REQUIRE(Embedded::addCurve(path.get(), 10, 0, 20, 0, 30, 0));
    Pemmit::flaset(path.get(), Pemmit::kFlagOpen | kHosts, true);
    const PathPtr copy(clean(path.get(), kAnySize));
    CHECK(Embedded::segments(copy.get()).at(1).kind == Embedded::Segment::kCurve);
    CHECK(copy->flags == path->flags);

    Pemmit::patlin(path.get(), 30, 40);
    const PathPtr lines(clean(path.get(), kAnySize));
    CHECK(Embedded::segments(lines.get()).at(1).kind == Embedded::Segment::kLine);
    CHECK(lines->flags == (Pemmit::kFlagPath | Pemmit::kFlagOpen));
    CHECK(walked(lines.get()) == Points{{0, 0}, {30, 0}, {30, 40}});
    Embedded::setFlatness(0.5);
}

TEST_CASE("clean: an object without a walk of its own is copied") {
    cleanpar(1, 1, 1);
    const PathPtr compound(Embedded::makeCompound());
    REQUIRE(Embedded::addChild(compound.get(), closedPath({{0, 0}, {9, 0}, {0, 9}}).release()));
    const PathPtr copy(clean(compound.get(), kAnySize));
    Pemmit::queryseq children;
    CHECK(walked(children.quebeg(copy.get(), nullptr)) == Points{{0, 0}, {9, 0}, {0, 9}, {0, 0}});
}

TEST_CASE("clean: without filter and tolerance the points are those of the walk") {
    cleanpar(0, 0, 0);
    const Points points = {{0, 0}, {5, 0}, {5, 0}, {10, 0}, {10, 10}, {0, 0}, {0, 10}, {0, 10}};
    const PathPtr closed = closedPath(points);
    CHECK(cleaned(closed.get()) == walked(closed.get()));
    const PathPtr open = openPath(points);
    CHECK(cleaned(open.get()) == points);
    cleanpar(-7, 0, 0);
    CHECK(cleaned(open.get()) == points);
}

struct KeepRow {
    const char* why;
    int tolerance;
    Points points;  // open
    Points kept;
};

const KeepRow kKeepRows[] = {
    {"a straight run", 1, {{0, 0}, {3, 0}, {5, 0}, {9, 0}}, {{0, 0}, {9, 0}}},
    {"points as far as the tolerance go", 2, {{0, 0}, {5, 2}, {10, 0}}, {{0, 0}, {10, 0}}},
    {"farther ones stay", 2, {{0, 0}, {5, 3}, {10, 0}}, {{0, 0}, {5, 3}, {10, 0}}},
    {"on the other side too", 2, {{0, 0}, {5, -3}, {10, 0}}, {{0, 0}, {5, -3}, {10, 0}}},
    {"a negative tolerance is one all the same", -2, {{0, 0}, {5, 2}, {10, 0}}, {{0, 0}, {10, 0}}},
    {"and as large", -2, {{0, 0}, {5, 3}, {10, 0}}, {{0, 0}, {5, 3}, {10, 0}}},
    // D = (10, 1), |D| = 10.05, the bound is 10. (0, 1) x D = -10, (1, -1) x D = 11.
    {"the bound is a whole number", 1, {{0, 0}, {0, 1}, {10, 1}}, {{0, 0}, {10, 1}}},
    {"and is not rounded up", 1, {{0, 0}, {1, -1}, {10, 1}}, {{0, 0}, {1, -1}, {10, 1}}},
    // D = (30, 3), the bound is 60: (5, 3) x D = -75, (10, 3) x D = -60.
    {"all points since the last kept one are looked at",
     2,
     {{0, 0}, {5, 3}, {10, 3}, {30, 3}},
     {{0, 0}, {10, 3}, {30, 3}}},
    {"the distance is that from the line, not from the segment",
     1,
     {{0, 0}, {10, 0}, {-10, 0}, {10, 1}},
     {{0, 0}, {10, 1}}},  // D = (10, 1): (10, 0) x D = 10, (-10, 0) x D = -10, bound 10
    {"a way back to the last kept point", 1, {{0, 0}, {10, 0}, {0, 0}, {10, 0}}, {{0, 0}, {10, 0}}},
    // From (5, 3) on, all lie in one line; from (0, 0) they do not.
    {"after a kept point the others are seen from there",
     2,
     {{0, 0}, {5, 3}, {10, 0}, {20, -6}, {30, -12}},
     {{0, 0}, {5, 3}, {30, -12}}},
    {"a step of 15 bits", 1, {{0, 0}, {9, 0}, {32767, 0}}, {{0, 0}, {32767, 0}}},
    {"and of one more", 1, {{0, 0}, {9, 0}, {32768, 0}}, {{0, 0}, {9, 0}, {32768, 0}}},
    {"down", 1, {{0, 0}, {0, -9}, {0, -32768}}, {{0, 0}, {0, -32768}}},
    {"and one further", 1, {{0, 0}, {0, -9}, {0, -32769}}, {{0, 0}, {0, -9}, {0, -32769}}},
    {"to the left", 1, {{0, 0}, {-9, 0}, {-32768, 0}}, {{0, 0}, {-32768, 0}}},
    {"and one further", 1, {{0, 0}, {-9, 0}, {-32769, 0}}, {{0, 0}, {-9, 0}, {-32769, 0}}},
    {"to the left of many points in one line",
     1,
     {{0, 0}, {-4, 1}, {-8, 2}, {-12, 3}, {-16, 4}, {-32768, 8192}},
     {{0, 0}, {-32768, 8192}}},
    {"a long step may be absorbed by short ones, not the other way round",
     1,
     {{0, 0}, {40000, 0}, {9, 0}, {50000, 0}},
     {{0, 0}, {9, 0}, {50000, 0}}},
};

TEST_CASE("clean: points within the tolerance of the line between their neighbours go") {
    int rows = 0;
    for (const KeepRow& row : kKeepRows) {
        CAPTURE(row.why);
        cleanpar(0, row.tolerance, 0);
        CHECK(cleaned(openPath(row.points).get()) == row.kept);
        CHECK(walked(PathPtr(Vaskel::cleanPlain(openPath(row.points).get(), kAnySize)).get()) ==
              row.kept);
        ++rows;
    }
    CHECK(rows == 20);
}

struct RunRow {
    int last;
    Points kept;
};

const RunRow kRunRows[] = {
    {49, {{0, 0}, {49, 0}}},
    {50, {{0, 0}, {50, 0}}},
    {51, {{0, 0}, {50, 0}, {51, 0}}},
    {100, {{0, 0}, {50, 0}, {100, 0}}},
    {101, {{0, 0}, {50, 0}, {100, 0}, {101, 0}}},
    {120, {{0, 0}, {50, 0}, {100, 0}, {120, 0}}},
};

TEST_CASE("clean: a straight run collapses, but never more than 50 steps at a time") {
    cleanpar(0, 1, 0);
    int rows = 0;
    for (const RunRow& row : kRunRows) {
        CAPTURE(row.last);
        CHECK(cleaned(openPath(straight(row.last)).get()) == row.kept);
        ++rows;
    }
    CHECK(rows == 6);
}

TEST_CASE("clean: a closed outline keeps its first point and closes from the last kept one") {
    cleanpar(0, 1, 0);
    const PathPtr square = closedPath({{4, 0}, {8, 0}, {8, 8}, {0, 8}, {0, 0}, {2, 0}});
    CHECK(cleaned(square.get()) == Points{{4, 0}, {8, 0}, {8, 8}, {0, 8}, {0, 0}, {4, 0}});
}

// ---- failures ---------------------------------------------------------------

TEST_CASE("clean: a filter that memory does not suffice for changes nothing") {
    cleanpar(2, 3, 4);
    const PathPtr path = squareOf(100);
    const Points want = cleaned(path.get());
    int failures = 0;
    const int taken = failEachAllocation([&] {
        try {
            cleanpar(5, 6, 7);
        } catch (const std::bad_alloc&) {
            ++failures;
            CHECK(Vaskel::cleanState().order == 2);
            CHECK(Vaskel::cleanState().tolerance == 3);
            CHECK(Vaskel::cleanState().step == 4);
        }
    });
    CHECK(taken > 3);
    CHECK(failures == taken);
    CHECK(Vaskel::cleanState().order == 5);
    cleanpar(2, 3, 4);
    CHECK(cleaned(path.get()) == want);
}

TEST_CASE("clean: a closed result of up to 512 points is handed over in one piece") {
    cleanpar(0, 1, 1);
    const auto allocations = [](int count) {
        Points corners;
        for (int i = 0; i < count; ++i) corners.push_back({10 * i, i % 2 * 10});
        const PathPtr path = closedPath(corners);
        const long before = allocationCount();
        const PathPtr result(clean(path.get(), kAnySize));
        const long taken = allocationCount() - before;
        CHECK(Pemmit::patsiz(result.get()) == count + 1);
        return taken;
    };
    const long least = allocations(100);
    for (const int count : {255, 256, 257, 300, 400, 500, 511, 512})
        CHECK(allocations(count) == least);
    CHECK(allocations(513) > least);
    cleanpar(0, 0, 0);
}

TEST_CASE("clean: memory that ends leaves the input and the next call as they are") {
    for (const int n : {0, 1}) {
        CAPTURE(n);
        for (const bool open : {false, true}) {
            CAPTURE(open);
            cleanpar(0, 0, 0);
            cleanpar(n, 1, 10);
            Points points = walked(squareOf(400).get());
            points.pop_back();
            const PathPtr path = open ? openPath(points) : closedPath(points);
            int failures = 0;
            const int taken = failEachAllocation([&] {
                try {
                    PathPtr(clean(path.get(), kAnySize));
                } catch (const std::bad_alloc&) {
                    ++failures;
                }
            });
            CHECK(taken > 0);  // how often is the host's affair
            CHECK(failures == taken);
            Points again = walked(path.get());
            again.resize(points.size());
            CHECK(again == points);
        }
    }
    cleanpar(0, 0, 0);
}

}  // namespace
