#include <doctest/doctest.h>

#include <climits>
#include <cstdint>
#include <vector>

#include "geometry/clean_kernel.h"
#include "geometry/clean_samples.h"
#include "platform/orlune.h"
#include "tests/support/paths.h"

namespace {

using Vaskel::cleanWeights;
using Vaskel::filterSample;
using Weights = std::vector<std::int32_t>;

// Worked out with 40 decimal digits by mpmath; no value before rounding lies
// within 0.002 of a half, so that no last bit of a sine matters.
const Weights kWeights[] = {
    {16, 0, -293, -512, 1027, 4608},
    {0, 2, 7, 11, -1, -51, -145, -246, -253, -32, 514, 1355, 2302, 3056},
    {0,    0,    1,    2,   5,  7,   6,   -1,   -19,  -52,  -97,
     -144, -177, -169, -93, 75, 342, 700, 1115, 1535, 1897, 2143},
    {0,    0,    0,    0,    1,   2,   4,  5,   5,   4,   -1,  -10,  -25,  -47,  -72,
     -100, -123, -135, -127, -90, -16, 99, 257, 453, 678, 916, 1151, 1361, 1528, 1635},
};

TEST_CASE("clean kernel: the weights of the first four orders") {
    int rows = 0;
    for (int n = 1; n <= 4; ++n, ++rows) {
        CAPTURE(n);
        CHECK(cleanWeights(n) == kWeights[n - 1]);
        CHECK(Vaskel::cleanHalfLength(n) == 8 * n - 2);
    }
    CHECK(rows == 4);
}

TEST_CASE("clean kernel: weights that round to nothing are left out, one stays") {
    CHECK(Vaskel::makeKernel(1).weights == kWeights[0]);
    CHECK(Vaskel::makeKernel(1).reach == 6);
    CHECK(Vaskel::makeKernel(2).weights == Weights(kWeights[1].begin() + 1, kWeights[1].end()));
    CHECK(Vaskel::makeKernel(4).reach == 26);
    CHECK(cleanWeights(Vaskel::kFlatOrder).empty());
    CHECK(Vaskel::makeKernel(Vaskel::kFlatOrder).weights == Weights{0});
    CHECK(Vaskel::makeKernel(INT_MAX).weights == Weights{0});
}

struct FilterRow {
    const char* why;
    Weights weights;
    Weights samples;
    int filtered;
};

const FilterRow kFilterRows[] = {
    {"equal samples stay", {4608}, {7, 7, 7}, 7},
    {"samples in a row stay", {-512, 1027, 4608}, {1, 4, 7, 10, 13, 16, 19}, 10},
    {"below a half rounds down", {8191}, {0, 0, 1}, 0},  // 8191 / 16384
    {"a half rounds up", {8192}, {0, 0, 1}, 1},          // 8192 / 16384
    {"minus a half rounds up too", {8192}, {0, 0, -1}, 0},
    {"below minus a half rounds down", {8193}, {0, 0, -1}, -1},
    {"the outermost weight comes first", {16384, 0}, {1, 0, 0, 0, 1}, 2},
    {"and the innermost last", {0, 16384}, {1, 0, 0, 0, 1}, 0},
    // (2^31 - 1 + 2^31 - 1) wraps to -2; -2 * 16384 / 16384
    {"pairs wrap in 32 bits", {16384}, {INT_MAX, 0, INT_MAX}, -2},
    // 2^17 * 2^14 wraps to -2^31, 2^18 * 2^14 to 0
    {"products wrap in 32 bits", {16384}, {0, 0, 1 << 17}, -(1 << 17)},
    {"and vanish", {16384}, {0, 0, 1 << 18}, 0},
    // -2 * 2^31 wraps to 0
    {"the centre counts twice and wraps", {16384}, {0, INT_MIN, 0}, INT_MIN},
};

TEST_CASE("clean kernel: one sample filtered") {
    int rows = 0;
    for (const FilterRow& row : kFilterRows) {
        CAPTURE(row.why);
        REQUIRE(row.samples.size() == 2 * row.weights.size() + 1);
        CHECK(filterSample(row.samples.data(), row.weights.data(), row.weights.size()) ==
              row.filtered);
        ++rows;
    }
    CHECK(rows == 12);
}

struct SampleRow {
    const char* why;
    int step;
    Points walk;
    Points samples;
};

const SampleRow kSampleRows[] = {
    {"whole steps and an even rest", 3, {{0, 0}, {10, 0}}, {{0, 0}, {3, 0}, {6, 0}, {10, 0}}},
    {"both coordinates are cut off", 3, {{0, 0}, {10, 5}}, {{0, 0}, {3, 1}, {6, 3}, {10, 5}}},
    {"towards zero, whatever the sign",
     3,
     {{0, 0}, {-10, -5}},
     {{0, 0}, {-3, -1}, {-6, -3}, {-10, -5}}},
    {"a step that fits exactly", 5, {{0, 0}, {3, 4}, {6, 8}}, {{0, 0}, {3, 4}, {6, 8}}},
    {"a root just below it", 5, {{0, 0}, {4, 2}, {8, 4}}, {{0, 0}, {8, 4}}},  // 4.47, then 8.94
    {"points within a step are passed over",
     10,
     {{0, 0}, {4, 0}, {8, 0}, {9, 0}, {12, 0}, {13, 0}, {30, 0}},
     {{0, 0}, {12, 0}, {30, 0}}},  // 30 - 12 = 18: one step
    {"the last point may be passed over", 10, {{0, 0}, {10, 0}, {19, 0}}, {{0, 0}, {10, 0}}},
    {"points that stand still", 1, {{5, 5}, {5, 5}, {6, 5}, {6, 5}}, {{5, 5}, {6, 5}}},
    {"slanted samples may repeat", 1, {{0, 0}, {3, 3}}, {{0, 0}, {0, 0}, {1, 1}, {2, 2}, {3, 3}}},
    {"one point", 1, {{7, 8}}, {{7, 8}}},
    {"a step of 0 counts as 1", 0, {{0, 0}, {2, 0}}, {{0, 0}, {1, 0}, {2, 0}}},
    {"so does one below", INT_MIN, {{0, 0}, {0, -2}}, {{0, 0}, {0, -1}, {0, -2}}},
    // The root of 2 (2^32 - 1)^2 is 6074000998, 2 steps of 2^31 - 1 and a rest.
    {"from one end of the range to the other",
     INT_MAX,
     {{INT_MIN, INT_MAX}, {INT_MAX, INT_MIN}},
     {{INT_MIN, INT_MAX}, {-1, 0}, {INT_MAX, INT_MIN}}},
};

TEST_CASE("clean samples: an outline at a uniform step") {
    int rows = 0;
    for (const SampleRow& row : kSampleRows)
        for (const std::size_t room : {std::size_t{1}, std::size_t{2}, std::size_t{100}}) {
            CAPTURE(row.why);
            CAPTURE(room);
            const PathPtr path = openPath(row.walk);
            Vaskel::RunWalk whole(path.get(), 0, -1);
            Vaskel::WalkedPoints walk(whole);
            Vaskel::Samples source(walk, row.step);
            Points samples;
            std::vector<std::int32_t> x(room), y(room);
            std::size_t taken;
            do {
                taken = source.take(x.data(), y.data(), room);
                for (std::size_t i = 0; i < taken; ++i) samples.push_back({x[i], y[i]});
            } while (taken == room);
            CHECK(source.take(x.data(), y.data(), room) == 0);
            CHECK(samples == row.samples);
            ++rows;
        }
    CHECK(rows == 3 * 13);
}

TEST_CASE("clean samples: roots without the call are the platform's") {
    const std::int64_t edges[] = {0,
                                  1,
                                  2,
                                  3,
                                  46340,
                                  46341,
                                  (1 << 25) - 2,
                                  (1 << 25) - 1,
                                  1 << 25,
                                  (1 << 25) + 1,
                                  0x7FFFFFFFLL,
                                  0x80000000LL,
                                  0xFFFFFFFFLL};
    int rows = 0;
    for (const std::int64_t a : edges)
        for (const std::int64_t b : edges)
            for (const std::int64_t sign : {-1, 1}) {
                CAPTURE(a);
                CAPTURE(b);
                CHECK(Vaskel::distanceRoot(a, sign * b) == Orlune::mulsqrt(a, a, b, b));
                CHECK(Vaskel::distanceRoot(sign * a, b) == Orlune::mulsqrt(a, a, b, b));
                ++rows;
            }
    // k^2 - 1 = (k - 1)(k + 1), sums of two squares just below a square.
    for (std::int64_t k = 1; k < (1 << 24); k = k * 3 / 2 + 1) {
        const std::int64_t b = static_cast<std::int64_t>(Orlune::mulsqrt(2 * k - 1, 1));
        CHECK(Vaskel::distanceRoot(k - 1, b) == Orlune::mulsqrt(k - 1, k - 1, b, b));
        ++rows;
    }
    CHECK(rows > 13 * 13 * 2 + 30);
}

}  // namespace
