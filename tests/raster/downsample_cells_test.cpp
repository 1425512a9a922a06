#include <doctest/doctest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "raster/downsample_cells.h"
#include "tests/support/guarded_bytes.h"

namespace {

using namespace Vaskel;

TEST_CASE("downsampler cells: pixels on an edge are shared") {
    const DownsampleCells cells(2.5, 10);
    REQUIRE(cells.ends.size() == 4);
    CHECK(cells.ends[0].pixel == 2);
    CHECK(cells.ends[0].rest == 0.5);
    CHECK(cells.ends[1].pixel == 4);
    CHECK(cells.ends[1].rest == 0);
    CHECK(cells.fractionBits == 1);
    CHECK(DownsampleCells(3, 10).fractionBits == 0);
    CHECK(DownsampleCells(3.1, 10).fractionBits == -1);
    CHECK(DownsampleCells(3, 10).ends.size() == 3);
}

// Every form gives the plain form's floats, bit for bit, line after line.
TEST_CASE("downsampler cells: every form gives the plain form's sums") {
    std::mt19937 engine(2);
    const auto random = [&] { return static_cast<std::uint32_t>(engine()); };
    int exactLines = 0;
    for (int round = 0; round < 3000; ++round) {
        const int channels = round % 2 ? 4 : 1;
        const std::uint32_t width = 1 + random() % 70;
        double factor = round % 3 == 0 ? 1 + random() % 36 / 4.0 : 1 + (random() % 1000) / 137.0;
        const double n = std::max(1.0, std::ceil(width / factor - 0.00001));
        factor = width / n;
        const DownsampleCells cells(factor, width);
        const std::size_t count = static_cast<std::size_t>(channels) * (cells.ends.size() + 1);
        // Six lines of at most 10 * 255, in steps of 1/64 across and 1/16 down.
        const bool exact = cells.fractionBits >= 0;
        std::vector<float> before(count);
        if (!exact)  // what another line's rest may have left
            for (float& sum : before) sum = static_cast<float>(random()) / 7e6f - 100.0f;
        std::vector<std::vector<float>> sums(downsampleForms().size(), before);
        for (int line = 0; line < 6; ++line) {
            GuardedBytes pixels(width * static_cast<std::size_t>(channels));
            for (std::size_t i = 0; i < pixels.size(); ++i)
                pixels[i] = static_cast<unsigned char>(random() % 5 ? random() : 255);
            const double weight = line % 3 ? 1
                                  : exact  ? (random() % 17) / 16.0
                                           : (random() % 1000) / 777.0 - 0.2;
            CAPTURE(round);
            CAPTURE(line);
            for (std::size_t form = 0; form < sums.size(); ++form) {
                CAPTURE(std::string(downsampleForms()[form]->name));
                downsampleForms()[form]->accumulate(cells, {pixels.data(), channels, weight, exact},
                                                    sums[form].data());
                REQUIRE(sums[form] == sums[0]);
            }
            exactLines += exact;
        }
    }
    CHECK(exactLines > 1000);
}

}  // namespace
