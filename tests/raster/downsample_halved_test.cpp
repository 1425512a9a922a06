// Halved lines: what every form makes of them, for all sums of two bytes.

#include "raster/downsample_halved.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "tests/support/guarded_bytes.h"
#include "vaskel/raster.h"

using namespace Vaskel;

namespace {

constexpr unsigned kSeed = 2020;

std::vector<const HalvedForm*> halvedForms() {
    std::vector<const HalvedForm*> forms = {&kHalvedPlain};
#if defined(__x86_64__)
    if (downsampleForms().back()->packed) forms.push_back(&kHalvedAvx2);
#endif
    return forms;
}

PackedLine lineOf(const unsigned char* bytes, std::uintptr_t step, std::uintptr_t taker) {
    return {bytes, 4, 1, 0, step, taker};
}

}  // namespace

// 511 sums of one line meet 511 of the other. Those that two pairs of bytes make
// come from either end: 0 + 3 and 1 + 2.
TEST_CASE("halved lines: means of all sums") {
    constexpr unsigned kSums = 511, kCells = (kSums + 3) / 4;
    std::vector<unsigned char> above(8 * kCells), below(8 * kCells);
    const auto setPair = [](std::vector<unsigned char>& line, unsigned i, unsigned sum, bool even) {
        const unsigned a = even ? sum / 2 : sum > 255 ? 255 : 0;
        line[i + i / 4 * 4] = static_cast<unsigned char>(a);
        line[i + i / 4 * 4 + 4] = static_cast<unsigned char>(sum - a);
    };
    int checked = 0;
    for (const HalvedForm* form : halvedForms())
        for (unsigned shift = 0; shift < kSums; ++shift) {
            for (unsigned i = 0; i < kSums; ++i) {
                setPair(above, i, i, shift % 2 != 0);
                setPair(below, i, (i + shift) % kSums, i % 3 == 0);
            }
            std::vector<unsigned char> halved(HalvedLine::bytes(kCells), 0xA5), out(4 * kCells);
            form->halve(kCells, lineOf(above.data(), 0, 0), halved.data());
            form->quarter(kCells, lineOf(below.data(), 0, 0), halved.data(), out.data());
            bool good = true;
            for (unsigned i = 0; i < kSums; ++i)
                good = good && out[i] == (i + (i + shift) % kSums + 2) / 4;
            CAPTURE(shift);
            REQUIRE(good);
            ++checked;
        }
    CHECK(checked == static_cast<int>(kSums * halvedForms().size()));
}

TEST_CASE("halved lines: every form gives the same, of any width") {
    std::mt19937 random(kSeed);
    for (std::size_t cells = 1; cells < 100; ++cells) {
        CAPTURE(cells);
        const auto layout = cells % 2 ? GuardedBytes::AtEnd : GuardedBytes::AtStart;
        GuardedBytes above(8 * cells, layout), below(8 * cells, layout);
        for (GuardedBytes* line : {&above, &below})
            for (std::size_t i = 0; i < line->size(); ++i)
                (*line)[i] = static_cast<unsigned char>(random() % 4 ? random() : 255);
        std::vector<unsigned char> want(4 * cells), halvedWant(HalvedLine::bytes(cells));
        kHalvedPlain.halve(cells, lineOf(above.data(), 0, 0), halvedWant.data());
        kHalvedPlain.quarter(cells, lineOf(below.data(), 0, 0), halvedWant.data(), want.data());
        std::vector<std::uint16_t> sums(4 * cells);
        expandHalved(cells, halvedWant.data(), sums.data());
        bool good = true;
        for (std::size_t i = 0; i < sums.size(); ++i) {
            const std::size_t left = i + i / 4 * 4;
            good = good && sums[i] == above[left] + above[left + 4];
        }
        CHECK(good);
        for (const HalvedForm* form : halvedForms()) {
            GuardedBytes halved(HalvedLine::bytes(cells), layout), out(4 * cells, layout);
            // The next line and the taker's may be said to lie anywhere.
            form->halve(cells, lineOf(above.data(), random() * std::uintptr_t{4099}, 0),
                        halved.data());
            CHECK(std::equal(halvedWant.begin(), halvedWant.end(), halved.data()));
            form->quarter(cells, lineOf(below.data(), 0, random()), halved.data(), out.data());
            CHECK(std::equal(want.begin(), want.end(), out.data()));
        }
    }
}

TEST_CASE("halved lines: which images have them") {
    struct Row {
        const char* why;
        double factor;
        std::uint32_t width;
        double factorY;
        bool halves;
    };
    constexpr Row rows[] = {
        {"two by two", 2, 12, 2, true},
        {"two by four", 2, 12, 4, false},
        {"four by two", 4, 16, 2, false},
        {"two by two and a half", 2, 12, 2.5, false},
        {"cells that do not fill the line", 2, 13, 2, false},
        {"too few cells for a pattern", 2, 4, 2, false},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        CHECK(PackedRule(DownsampleCells(row.factor, row.width), row.factorY).halves == row.halves);
    }
}
