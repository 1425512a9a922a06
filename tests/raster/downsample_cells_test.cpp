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

// Weights and sums of every size that comes up, so that roundings fall on both
// sides of halves, on them, and across powers of two.
TEST_CASE("downsampler cells: split lines give both lines' sums, bit for bit") {
    std::mt19937 engine(29);
    const auto random = [&] { return static_cast<std::uint32_t>(engine()); };
    int forms = 0;
    for (const DownsampleForm* form : downsampleForms()) {
        if (!form->split) continue;
        ++forms;
        CAPTURE(std::string(form->name));
        for (int round = 0; round < 4000; ++round) {
            const std::uint32_t width = 1 + random() % 90;
            const double n = 1 + random() % width;
            const DownsampleCells cells(width / n, width);
            const double weights[] = {0,
                                      0.5,
                                      0.25 + 1.0 / 16777216,
                                      1e-16,
                                      1 - 1.0 / 9007199254740992,
                                      1.0 / 3,
                                      (random() % 4096) / 4096.0,
                                      random() / 4294967296.0,
                                      random() / 4294967296.0 / 65536};
            const double weight = weights[round % 9];
            const std::size_t count = 4 * (cells.ends.size() + 1);
            std::vector<float> done(count), next(count), wantNext(count);
            for (float& sum : done) {
                const double large = std::ldexp(random() / 4294967296.0, random() % 16);
                sum = round % 3 ? static_cast<float>(large) : static_cast<float>(random() % 5000);
                if (random() % 8 == 0) sum = 0;
            }
            for (float& sum : next) sum = -7;  // whatever it holds
            std::vector<float> wantDone = done;
            GuardedBytes pixels(4 * std::size_t{width});
            for (std::size_t i = 0; i < pixels.size(); ++i)
                pixels[i] = static_cast<unsigned char>(round % 5 ? random() : random() % 2 * 255);
            kDownsamplePlain.accumulate(cells, {pixels.data(), 4, weight, false}, wantDone.data());
            kDownsamplePlain.accumulate(cells, {pixels.data(), 4, 1 - weight, false},
                                        wantNext.data());
            form->split(cells, {pixels.data(), weight, 1 - weight}, done.data(), next.data());
            CAPTURE(round);
            REQUIRE(std::memcmp(done.data(), wantDone.data(), 4 * count) == 0);
            REQUIRE(std::memcmp(next.data(), wantNext.data(), 4 * count) == 0);
        }
    }
    CHECK(forms == (downsampleForms().size() > 2 ? 1 : 0));
}

}  // namespace
