#include <doctest/doctest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/fake_host.h"
#include "tests/support/guarded_bytes.h"
#include "vaskel/raster.h"

namespace {

using Vaskel::downsampler;

std::vector<int> taken(downsampler& d, unsigned n, bool last = false) {
    GuardedBytes out(n);
    last ? d.getlastline(out.data()) : d.get(out.data());
    return {out.data(), out.data() + n};
}

void stuff(downsampler& d, const std::vector<int>& pixels) {
    GuardedBytes line(pixels.size());
    for (std::size_t i = 0; i < pixels.size(); ++i) line[i] = static_cast<unsigned char>(pixels[i]);
    d.stuff(line.data());
}

using Ints = std::vector<int>;

TEST_CASE("downsampler: sizes are rounded up with a guard, and the factor follows them") {
    struct Row {
        double in, out;
        unsigned width, height;
        unsigned n, m;
        double factor;
    };
    const double inf = std::numeric_limits<double>::infinity();
    const Row rows[] = {
        {3, 1, 9, 9, 3, 3, 3},
        {3, 1, 10, 10, 4, 4, 2.5},
        {300, 300, 7, 5, 7, 5, 1},
        {72, 300, 7, 5, 7, 5, 1},  // never below 1
        {4, 1, 1, 1, 1, 1, 1},
        {1e9, 1, 1, 7, 1, 7, 1},
        {2, 1, 1000001, 1, 500001, 1, 1000001.0 / 500001},
        {1, 0, 10, 10, 10, 10, 1},  // not finite: 1 to 1
        {0, 0, 10, 10, 10, 10, 1},
        {inf, inf, 10, 10, 10, 10, 1},
        {-8, 1, 10, 10, 10, 10, 1},
    };
    for (const Row& row : rows) {
        CAPTURE(row.width);
        CAPTURE(row.in);
        const downsampler d(row.in, row.out, row.width, row.height);
        CHECK(d.resize(row.width) == row.n);
        CHECK(d.resizeY(row.height) == row.m);
        CHECK(d.factor() == row.factor);
        CHECK(d.isFiltering());
    }
    const downsampler d(5, 2, 10, 10);
    CHECK(d.resize(0) == 0);
    CHECK(d.resize(4) == 2);  // 1.6 rounded up
    CHECK(d.resize(5) == 2);
    CHECK(d.resize(4294967295u) == 1717986918u);
}

// The vertical factor comes from the horizontal one as it has become: width 10
// by 3 gives 2.5, and 9 lines by 2.5 give 4 of 2.25, where 9 by 3 would give 3.
TEST_CASE("downsampler: both directions use the factor that the width has made") {
    const downsampler d(3, 1, 10, 9);
    CHECK(d.resizeY(9) == 4);
}

TEST_CASE("downsampler: factor 1 gives the image back") {
    downsampler d(1, 1, 4, 2);
    for (const Ints& line : {Ints{0, 1, 128, 255}, Ints{9, 8, 7, 6}}) {
        stuff(d, line);
        CHECK(d.ready() != 0);
        CHECK(taken(d, 4) == line);
        CHECK(d.ready() == 0);
    }
}

TEST_CASE("downsampler: means of shared pixels and lines") {
    // 5 x 5 by 2.5: cells of pixels 0, 1, half of 2 and half of 2, 3, 4.
    downsampler d(5, 2, 5, 5);
    stuff(d, {10, 20, 30, 40, 50});
    CHECK(d.ready() == 0);
    CHECK(d.notforawhile() != 0);
    stuff(d, {10, 20, 30, 40, 50});
    CHECK(d.notforawhile() == 0);
    stuff(d, {110, 120, 130, 140, 150});
    REQUIRE(d.ready() != 0);
    // First cell: two lines of 10 + 20 + 15 = 45 and half a line of 110 + 120 +
    // 65 = 295: (90 + 147.5) / 6.25 = 38. Second: 2 * 105 + 355 / 2 = 387.5 / 6.25 = 62.
    CHECK(taken(d, 2) == Ints{38, 62});
    CHECK(d.ready() == 0);
    stuff(d, {0, 0, 0, 0, 0});
    stuff(d, {200, 200, 200, 200, 200});
    REQUIRE(d.ready() != 0);
    // The other half of the third line, then 0, then 200: (147.5 + 500) / 6.25 =
    // 103.6 and (177.5 + 500) / 6.25 = 108.4.
    CHECK(taken(d, 2) == Ints{104, 108});
}

TEST_CASE("downsampler: input lines 3 and 5 of ten complete lines by 2.5") {
    downsampler d(3, 1, 10, 10);
    std::string completed;
    for (int i = 1; i <= 10; ++i) {
        stuff(d, Ints(10, 200));
        completed += d.ready() ? '1' : '0';
        if (d.ready()) CHECK(taken(d, 4) == Ints(4, 200));
    }
    CHECK(completed == "0010100101");
}

TEST_CASE("downsampler: a partial last line is divided by whole cells") {
    downsampler d(2, 1, 4, 3);
    // height 3 by 2 gives 2 lines of 1.5.
    stuff(d, {100, 100, 50, 51});
    CHECK(d.ready() == 0);
    // One of 1.5 lines: (100 + 100) / 3 = 66.67, (50 + 51) / 3 = 33.67.
    CHECK(taken(d, 2, true) == Ints{67, 34});
    CHECK(taken(d, 2, true) == Ints{67, 34});  // the sums stay
}

// Halves: the one-byte form of the last line rounds with iround, the four-byte
// form adds 1/2 and truncates; the same for positive sums.
TEST_CASE("downsampler: four channels are averaged apart") {
    downsampler d(2, 1, 2, 2);
    const unsigned char lines[2][8] = {{0, 10, 255, 7, 2, 20, 255, 8},
                                       {4, 30, 255, 9, 6, 40, 254, 9}};
    std::uint32_t line[2], out = 0;
    for (const auto& bytes : lines) {
        std::memcpy(line, bytes, 8);
        d.stuff(line);
    }
    REQUIRE(d.ready() != 0);
    d.get(&out);
    unsigned char got[4];
    std::memcpy(got, &out, 4);
    CHECK(got[0] == 3);    // 12 / 4
    CHECK(got[1] == 25);   // 100 / 4
    CHECK(got[2] == 255);  // 1019 / 4 = 254.75
    CHECK(got[3] == 8);    // 33 / 4 = 8.25
    std::memcpy(line, lines[0], 8);
    d.stuff(line);
    d.getlastline(&out);
    std::memcpy(got, &out, 4);
    CHECK(got[0] == 1);    // 2 / 4 = 0.5
    CHECK(got[1] == 8);    // 30 / 4 = 7.5
    CHECK(got[2] == 128);  // 510 / 4 = 127.5
    CHECK(got[3] == 4);    // 15 / 4 = 3.75
}

TEST_CASE("downsampler: picks") {
    downsampler d(3, 1, 10, 1);
    d.setFiltering(false);
    CHECK_FALSE(d.isFiltering());
    stuff(d, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    REQUIRE(d.ready() != 0);
    CHECK(taken(d, 4) == Ints{0, 3, 5, 8});  // by 2.5
    // Also as four-byte slots, zero-extended.
    stuff(d, {9, 8, 7, 6, 5, 4, 3, 2, 1, 0});
    std::uint32_t slots[4];
    d.get(slots);
    CHECK(slots[0] == 9);
    CHECK(slots[1] == 6);
    CHECK(slots[3] == 1);
    std::uint32_t pixels[10];
    for (std::uint32_t i = 0; i < 10; ++i) pixels[i] = 0x01020304u * i;
    d.stuff(pixels);
    d.get(slots);
    CHECK(slots[1] == 0x01020304u * 3);
    d.stuff(pixels);
    CHECK(taken(d, 4, true) == Ints{0, 12, 20, 32});  // the low bytes
}

TEST_CASE("downsampler: picks ignore lines that complete nothing") {
    downsampler d(2, 1, 4, 4);
    d.setFiltering(false);
    stuff(d, {1, 2, 3, 4});
    CHECK(d.ready() == 0);
    CHECK(taken(d, 2, true) == Ints{0, 0});  // nothing completed yet: zeros
    stuff(d, {5, 6, 7, 8});
    CHECK(taken(d, 2) == Ints{5, 7});
}

TEST_CASE("downsampler: adjust picks one line apart from the image") {
    const downsampler d(3, 1, 10, 1);
    GuardedBytes line(10), out(4);
    for (unsigned char i = 0; i < 10; ++i) line[i] = i;
    d.adjust(line.data(), out.data());
    CHECK(Ints(out.data(), out.data() + 4) == Ints{0, 3, 5, 8});
    d.adjust(line.data());
    CHECK(Ints(line.data(), line.data() + 10) == Ints{0, 3, 5, 8, 4, 5, 6, 7, 8, 9});
}

TEST_CASE("downsampler: every width and factor stays within lines of exact size") {
    for (unsigned width = 1; width <= 60; ++width)
        for (double factor = 1; factor < 62; factor += 0.37) {
            CAPTURE(width);
            CAPTURE(factor);
            downsampler means(factor, 1, width, 3);
            downsampler picks(means);
            picks.setFiltering(false);
            const unsigned n = means.resize(width);
            GuardedBytes line(width), words(4 * width), out(n), wide(4 * n);
            for (unsigned i = 0; i < width; ++i) line[i] = static_cast<unsigned char>(i + 1);
            for (downsampler* d : {&means, &picks}) {
                d->stuff(line.data());
                d->stuff(reinterpret_cast<unsigned*>(words.data()));
                if (d->ready()) d->get(out.data());
                d->getlastline(out.data());
                d->getlastline(reinterpret_cast<unsigned*>(wide.data()));
                d->adjust(line.data(), out.data());
            }
            CHECK(out[0] >= 1);
            for (unsigned j = 1; j < n; ++j) REQUIRE(out[j] > out[j - 1]);
        }
}

TEST_CASE("downsampler: nothing happens without a complete line, or without an image") {
    downsampler d(2, 1, 4, 4);
    GuardedBytes out(2);
    out[0] = 77;
    d.get(out.data());
    CHECK(out[0] == 77);
    for (const auto& [width, height] : {std::pair{0u, 5u}, {5u, 0u}, {0u, 0u}}) {
        downsampler empty(2, 1, width, height);
        const unsigned char one[8] = {};
        unsigned char kept[8] = {77};
        unsigned keptWide[8] = {77};
        empty.stuff(one);
        empty.setFiltering(false);
        empty.stuff(one);
        CHECK(empty.ready() == 0);
        empty.get(kept);
        empty.get(keptWide);
        empty.getlastline(kept);
        empty.getlastline(keptWide);
        empty.adjust(kept);
        CHECK(kept[0] == 77);
        CHECK(keptWide[0] == 77);
        const std::unique_ptr<downsampler> copy(empty.clone());
        CHECK(copy->ready() == 0);
    }
}

// A line that is not taken: the next one completes again, with weight 0, and the
// one after with weight -1. Means outside 0..255 are limited.
TEST_CASE("downsampler: lines that nobody takes") {
    downsampler d(2, 1, 2, 8);
    stuff(d, {100, 100});
    stuff(d, {100, 100});
    stuff(d, {200, 200});  // weight 0: an empty line; rest 1
    CHECK(d.ready() != 0);
    stuff(d, {50, 50});    // weight -1: (200 - 50) * 2 / 4 = 75; rest 2
    stuff(d, {250, 250});  // weight -2: (100 - 500) * 2 / 4 < 0; rest 3
    CHECK(taken(d, 1) == Ints{0});
    CHECK(d.ready() != 0);  // five lines pushed, two taken off
    stuff(d, {250, 250});   // row 4: weight -1: (750 - 250) * 2 / 4 = 250
    CHECK(taken(d, 1) == Ints{250});
}

TEST_CASE("downsampler: copies start anew, assignment shares") {
    downsampler a(2, 1, 2, 2);
    stuff(a, {100, 100});
    downsampler copy(a);
    stuff(copy, {50, 50});
    CHECK(copy.ready() == 0);
    stuff(copy, {50, 50});
    CHECK(taken(copy, 1) == Ints{50});

    downsampler b(4, 1, 40, 40);
    {
        downsampler c(2, 1, 2, 2);
        stuff(c, {100, 100});
        b = c;  // b goes on with c's sums and row
    }
    stuff(b, {50, 50});
    REQUIRE(b.ready() != 0);
    CHECK(taken(b, 1) == Ints{75});

    downsampler e(2, 1, 2, 2), f(2, 1, 2, 2);
    e = f;
    stuff(f, {80, 80});
    stuff(e, {80, 80});  // into the same sums
    stuff(e, {80, 80});
    CHECK(taken(e, 1) == Ints{120});
    e = *&e;
    const std::unique_ptr<downsampler> g(e.clone());
    CHECK(g->factor() == 2);
}

TEST_CASE("downsampler: memory that ends") {
    const downsampler d(2, 1, 100, 100);
    {
        const FailingAllocation failing(1);
        CHECK(d.clone() == nullptr);
    }
    {
        const FailingAllocation failing(3);
        CHECK(d.clone() == nullptr);
    }
    const FailingAllocation failing(2);
    CHECK_THROWS_AS(downsampler(2, 1, 100, 100), std::bad_alloc);
}

}  // namespace
