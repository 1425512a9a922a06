// Cleaning with the filter. Squares have one sample every 10 from (0, 0) on.

#include <doctest/doctest.h>

#include <climits>
#include <cstdint>
#include <initializer_list>

#include "geometry/clean.h"
#include "tests/geometry/cleaned.h"
#include "tests/support/paths.h"
#include "vaskel/geometry.h"

namespace {

using Vaskel::cleanpar;

TEST_CASE("clean: a straight open outline passes the filter unchanged, every n-th sample") {
    const PathPtr path = openPath({{0, 0}, {50, 0}});
    const PathPtr bent = openPath({{0, 0}, {20, 0}, {50, 0}});
    REQUIRE(cleaned(path.get()).size() == 2);  // too short: a copy
    struct Row {
        int n;
        Points points;
    };
    const Row rows[] = {
        {1, {{0, 0}, {10, 0}, {20, 0}, {30, 0}, {40, 0}, {50, 0}}},
        {2, {{0, 0}, {20, 0}, {40, 0}, {50, 0}}},
        {3, {{0, 0}, {30, 0}, {50, 0}}},
        {5, {{0, 0}, {50, 0}}},
        {6, {{0, 0}, {50, 0}}},
        {20, {{0, 0}, {50, 0}}},
    };
    for (const Row& row : rows) {
        CAPTURE(row.n);
        cleanpar(row.n, 0, 10);
        CHECK(cleaned(bent.get()) == row.points);
    }
}

// Samples (10 i, y) with a step of 10. Around a peak of 8 the filtered y are
// (8 w + 8192) >> 14 for the weights w = 6692 (the centre's), 4608, 1027, -512,
// -293, 0, 16: 3, 2, 1, 0, 0, 0, 0.
TEST_CASE("clean: a peak of an open outline is spread over its neighbours") {
    cleanpar(1, 0, 10);
    Points points, want;
    const int peak[] = {0, 0, 0, 0, 0, 1, 2, 3, 2, 1, 0, 0, 0, 0, 0};
    for (int i = 0; i < 15; ++i) {
        points.push_back({10 * i, i == 7 ? 8 : 0});
        want.push_back({10 * i, peak[i]});
    }
    CHECK(cleaned(openPath(points).get()) == want);
}

// The extension of y = 0, 6, 0 by point reflection about both ends has the
// period 0, 6, 0, -6. Around the 6 the pairs less twice 6 are -12, -24, -12, 0,
// -12, -24, times 4608, 1027, -512, -293, 0, 16: -74184, + 8192 >> 14 is -5.
TEST_CASE("clean: an open outline shorter than the filter is reflected at both ends in turn") {
    cleanpar(1, 0, 10);
    CHECK(cleaned(openPath({{0, 0}, {10, 6}, {20, 0}}).get()) == Points{{0, 0}, {10, 1}, {20, 0}});
}

// y = 0, 6 and then 0 as far as the filter reaches: before the first sample
// comes -6. Around sample 1 the pair of 2 is -6 + 0, all others 0 + 0: less 12
// that is -18 times 1027 and -12 times 4608 - 512 - 293 + 0 + 16 = 3819, in sum
// -64314, + 8192 >> 14 is -4.
// Around sample 2: 6 times 4608 + -6 times -512 is 30720, + 8192 >> 14 is 2.
TEST_CASE("clean: the first sample of an open outline is a centre of reflection") {
    cleanpar(1, 0, 10);
    Points points = {{0, 0}, {10, 6}};
    for (int x = 20; x <= 200; x += 10) points.push_back({x, 0});
    const Points result = cleaned(openPath(points).get());
    REQUIRE(result.size() == 21);
    CHECK(result[0] == Point{0, 0});
    CHECK(result[1] == Point{10, 2});
    CHECK(result[2] == Point{20, 2});
    Points backward(points.rbegin(), points.rend());
    const Points mirrored = cleaned(openPath(backward).get());
    REQUIRE(mirrored.size() == 21);
    CHECK(mirrored[20] == Point{0, 0});
    CHECK(mirrored[19] == Point{10, 2});
    CHECK(mirrored[18] == Point{20, 2});
}

TEST_CASE("clean: an open outline ends at its last sample, unfiltered") {
    cleanpar(1, 0, 10);
    // (24, 0) lies 4 from the last sample: no sample of its own.
    CHECK(cleaned(openPath({{0, 0}, {10, 0}, {20, 0}, {24, 0}}).get()) ==
          Points{{0, 0}, {10, 0}, {20, 0}});
    // All within a step of the first one: that is emitted, and ends the path.
    CHECK(cleaned(openPath({{5, 5}, {6, 5}, {7, 5}}).get()) == Points{{5, 5}, {5, 5}});
}

// 160 samples. The first window lies around sample 6, on the first edge, and
// there are 161 outputs, of which the last one is dropped. Around the corner
// (400, 0) the pairs of x are 10 to 60 less than 800: -40500, and those of y as
// much more than 0; + 8192 >> 14 gives -2 and 2.
TEST_CASE("clean: a closed outline begins half a filter on and goes round once") {
    cleanpar(1, 0, 10);
    Points points = cleaned(squareOf(400).get());
    REQUIRE(points.size() == 161);
    CHECK(points[0] == Point{60, 0});
    CHECK(points[1] == Point{70, 0});
    CHECK(points[40 - 6] == Point{398, 2});
    CHECK(points[41 - 6] == Point{400, 10});
    CHECK(points[100 - 6] == Point{200, 400});
    CHECK(points[159] == Point{50, 0});
    CHECK(points[160] == points[0]);

    // floor(160 / 3) + 1 = 54, from sample 22 on.
    cleanpar(3, 0, 10);
    points = cleaned(squareOf(400).get());
    REQUIRE(points.size() == 54);
    CHECK(points[0].y == 0);
}

TEST_CASE("clean: the closing sample counts once where it is sample 0") {
    cleanpar(1, 0, 10);
    CHECK(cleaned(squareOf(100).get()).size() == 41);  // 40 samples
    // From (0, 4) it is less than a step back to (0, 0), so that the period is
    // sample 0 and 10 + 10 + 10 + 9 others.
    const PathPtr gap = closedPath({{0, 0}, {100, 0}, {100, 100}, {0, 100}, {0, 4}});
    CHECK(cleaned(gap.get()).size() == 41);
    // From (0, 15) it is one step: sample 0 again, after 10 + 10 + 10 + 8.
    const PathPtr back = closedPath({{0, 0}, {100, 0}, {100, 100}, {0, 100}, {0, 15}});
    CHECK(cleaned(back.get()).size() == 40);
}

// Samples 0, 1, 2 in turns: the pairs of y around sample 0 are 10, 10, 0, 10,
// 10, 0, times the weights 53420, + 8192 >> 14 is 3, and so on for the others.
TEST_CASE("clean: a closed outline shorter than the filter goes on periodically") {
    cleanpar(1, 0, 10);
    const PathPtr triangle = closedPath({{0, 0}, {10, 0}, {0, 10}});
    CHECK(cleaned(triangle.get()) == Points{{3, 3}, {3, 3}, {3, 3}, {3, 3}});
    // One sample only: all are within a step of it.
    const PathPtr tiny = closedPath({{1, 1}, {2, 1}, {1, 2}});
    CHECK(cleaned(tiny.get()) == Points{{1, 1}, {1, 1}});
}

TEST_CASE("clean: filtered points are simplified too") {
    cleanpar(1, 1, 10);
    const Points points = cleaned(squareOf(400).get());
    CHECK(points[0] == Point{60, 0});
    CHECK(points.size() < 30);
    for (std::size_t i = 0; i + 1 < points.size(); ++i) CHECK(points[i] != points[i + 1]);
}

TEST_CASE("clean: a step below 1 counts as 1") {
    const PathPtr path = squareOf(9);
    cleanpar(1, 0, 1);
    const Points want = cleaned(path.get());
    CHECK(want.size() == 37);
    for (const int step : {0, -1, INT_MIN}) {
        CAPTURE(step);
        cleanpar(1, 0, step);
        CHECK(cleaned(path.get()) == want);
    }
}

TEST_CASE("clean: setting the same order again keeps the filter") {
    cleanpar(2, 0, 10);
    const std::int32_t* const weights = Vaskel::cleanState().kernel.weights.data();
    cleanpar(2, 5, 7);
    CHECK(Vaskel::cleanState().kernel.weights.data() == weights);
    CHECK(Vaskel::cleanState().tolerance == 5);
    CHECK(Vaskel::cleanState().step == 7);
    cleanpar(0, 1, 3);
    CHECK(Vaskel::cleanState().kernel.weights.empty());
}

}  // namespace
