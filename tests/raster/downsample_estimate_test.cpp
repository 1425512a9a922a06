// Estimates keep within their bounds, and what they leave open the rule decides.

#include "raster/downsample_estimate.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "tests/support/guarded_bytes.h"
#include "vaskel/raster.h"

using namespace Vaskel;

namespace {

constexpr unsigned kSeed = 4171;
constexpr double kSlack = 1.0 / 65536;

KeptLines keptLines(const DownsampleCells& cells, double factorY) {
    KeptLines kept;
    kept.prepare(cells, factorY);
    return kept;
}

// The cells of an image of n pixels, and an output line's weights: parts at both
// ends, and whole lines between.
struct Cells {
    DownsampleCells cells;
    std::size_t n;
    std::vector<double> weights;
    double area = 0;

    Cells(std::uint32_t width, std::size_t pixels, double first, int wholes, double last)
        : cells(static_cast<double>(width) / static_cast<double>(pixels), width), n(pixels) {
        if (first != 0) weights.push_back(first);
        weights.insert(weights.end(), static_cast<std::size_t>(wholes), 1.0);
        weights.push_back(last);
        for (const double weight : weights) area += weight * cells.factor;
    }
};

Cells randomCells(std::mt19937& random) {
    const std::size_t n = 1 + random() % 90;
    const auto width = static_cast<std::uint32_t>(n * (1 + random() % 12) + random() % n);
    const auto part = [&] { return static_cast<double>(1 + random() % 4095) / 4096 + 1e-9; };
    return {width, n, random() % 5 ? part() : 0, static_cast<int>(random() % 7),
            random() % 5 ? part() : 1};
}

// Noise, or black and white only, or nearly black.
std::vector<unsigned char> randomLine(std::mt19937& random, std::size_t size) {
    std::vector<unsigned char> line(size);
    const auto kind = random() % 3;
    for (unsigned char& byte : line)
        byte = static_cast<unsigned char>(kind == 0   ? random()
                                          : kind == 1 ? random() % 2 * 255
                                                      : random() % 3);
    return line;
}

// Any number of whole vectors of cells, up to most.
std::size_t vectors(std::mt19937& random, std::size_t most, int channels) {
    const std::size_t one = 8 / static_cast<std::size_t>(channels);
    return one * (1 + random() % (most / one));
}

std::vector<const EstimateForm*> estimateForms() {
    std::vector<const EstimateForm*> all;
    for (const DownsampleForm* form : downsampleForms())
        if (form->estimate) all.push_back(form->estimate);
    return all;
}

// Random lines, whose sums by the rule and by estimates belong together. How far
// an estimate lies off, as a part of what it may, and how many means are open.
struct Farthest {
    double off = 0;
    std::size_t open = 0;
};
void checkEstimates(std::mt19937& random, const Cells& image, int channels, bool largeGroups,
                    Farthest& farthest) {
    const auto each = static_cast<std::size_t>(channels);
    const std::size_t size = each * image.n;
    KeptLines kept = keptLines(image.cells, image.area / image.cells.factor);
    std::vector<float> sums(each * (image.n + 2)), byRule(size);
    for (const double weight : image.weights) {
        const auto bytes = randomLine(random, each * image.cells.width);
        GuardedBytes line(bytes.size());
        std::copy(bytes.begin(), bytes.end(), line.data());
        REQUIRE(kept.keep(line.data(), channels, weight));
        kDownsamplePlain.accumulate(image.cells, {line.data(), channels, weight, false},
                                    sums.data());
    }
    for (std::size_t i = 0; i < size; ++i)
        byRule[i] = ruleSum(image.cells, kept, i / each, static_cast<int>(i % each));
    REQUIRE(std::equal(byRule.begin(), byRule.end(), sums.begin()));

    const MeanBounds bounds = meanBounds(kept, image.area);
    CHECK(bounds.relative < 1e-4);
    CHECK(bounds.slack < (image.n > INT16_MAX ? 1e-2 : 2e-5));
    for (const EstimateForm* form : estimateForms()) {
        std::vector<float> estimates(size + EstimateForm::kSums);
        std::vector<unsigned char> want(size);
        GuardedBytes got(size);
        std::vector<std::uint32_t> open;
        open.reserve(size + 1);
        const ColumnLines lines(kept, *form, LinesAhead());
        // As many at a time as there may be, or any number.
        const std::size_t most = EstimateForm::cellsAtOnce(kept.shares(), channels);
        REQUIRE(most > 0);
        for (std::size_t cell = 0; cell < image.n;) {
            const std::size_t some = largeGroups ? most : vectors(random, most, channels);
            const std::size_t count = std::min(some, image.n - cell), place = each * cell;
            form->sums(lines, channels, cell, count, &estimates[place]);
            form->means(bounds, &estimates[place], each * count, &got[place], place, open);
            cell += count;
        }
        for (std::size_t i = 0; i < size; ++i) {
            const double estimate = static_cast<double>(estimates[i]) / kept.shares().steps;
            const double off = std::fabs(estimate - byRule[i]);
            const double within = bounds.relative * estimate + bounds.slack * image.area;
            REQUIRE(off <= within);
            if (off > 0) farthest.off = std::max(farthest.off, off / within);
        }
        // Means: certain ones are the plain form's.
        kDownsamplePlain.means({image.area, false}, byRule.data(), size, want.data());
        for (const std::uint32_t place : open) got[place] = want[place];
        CHECK(std::equal(want.begin(), want.end(), got.data()));
        farthest.open += open.size();
    }
}

}  // namespace

TEST_CASE("downsample estimate: sums by the rule are the plain form's, estimates within bounds") {
    std::mt19937 random(kSeed);
    Farthest farthest;
    for (int round = 0; round < 3000; ++round) {
        CAPTURE(round);
        const Cells image = randomCells(random);
        checkEstimates(random, image, round % 2 ? 4 : 1, round % 3 != 0, farthest);
    }
    if (!estimateForms().empty()) CHECK(farthest.off > 0.1);
}

// Shares are rounded then, and bounds are wider.
TEST_CASE("downsample estimate: more cells than 15 bits hold") {
    std::mt19937 random(kSeed);
    Farthest farthest;
    for (const std::uint32_t width : {80001u, 100000u, 131072u}) {
        CAPTURE(width);
        const Cells image(width, 40000, 0.25, 1, 0.3);
        checkEstimates(random, image, 1, true, farthest);
    }
    if (estimateForms().empty()) return;
    CHECK(farthest.off > 0.1);
    CHECK(farthest.open > 0);
    CHECK(farthest.open < 3 * 40000 / 32);
}

TEST_CASE("downsample estimate: means at a half are left open, as far as there is room") {
    for (const EstimateForm* form : estimateForms()) {
        for (const std::size_t count : {1u, 31u, 32u, 33u, 100u, 4000u}) {
            CAPTURE(count);
            std::vector<float> sums(count + EstimateForm::kSums, 3 * 7.25f);
            std::vector<std::uint32_t> want;
            for (std::size_t i = 0; i < count; i += 1 + i % 7) {
                sums[i] = 7.25f * (static_cast<float>(i % 255) + 0.5f);
                want.push_back(static_cast<std::uint32_t>(i));
            }
            std::vector<unsigned char> out(count);
            std::vector<std::uint32_t> open;
            open.reserve(count + 1);
            form->means({7.25, 1e-6, kSlack}, sums.data(), count, out.data(), 0, open);
            CHECK(open == want);
            for (std::size_t i = 0; i < count; ++i)
                if (!std::binary_search(want.begin(), want.end(), i)) CHECK(out[i] == 3);
            std::vector<std::uint32_t> few;
            few.reserve(1);
            const std::size_t room = few.capacity();
            form->means({7.25, 1e-6, kSlack}, sums.data(), count, out.data(), 0, few);
            CHECK(few.size() == std::min(room, want.size()));
            CHECK(few.capacity() == room);
        }
    }
}

TEST_CASE("downsample estimate: lines are kept while they belong together") {
    const DownsampleCells cells(10.0 / 3, 10);
    const std::vector<unsigned char> line(40, 9), other(40, 5);
    KeptLines kept = keptLines(cells, 3.3);  // room for five: 1 + 3 and two parts
    CHECK(kept.keep(line.data(), 4, 0.5));
    CHECK_FALSE(kept.keep(line.data(), 1, 1));
    CHECK_FALSE(kept.keep(line.data(), 4, -0.25));
    CHECK_FALSE(kept.keep(line.data(), 4, 1.25));
    CHECK(kept.keep(line.data(), 4, 0));
    CHECK_FALSE(kept.keep(line.data(), 4, 0.5));
    CHECK(kept.keep(line.data(), 4, 1));
    CHECK(kept.keep(line.data(), 4, 1));
    CHECK(kept.keep(other.data(), 4, 1));
    CHECK_FALSE(kept.keep(line.data(), 4, 1));
    kept.keepLast(0.75);
    REQUIRE(kept.lines().size() == 1);
    CHECK(kept.lines()[0].weight == 0.75);
    CHECK(kept.keep(line.data(), 4, 1));
    CHECK(kept.lines()[0].bytes[0] == 5);
    CHECK(kept.lines()[1].bytes[0] == 9);
    kept.clear();
    CHECK(kept.keep(line.data(), 1, 1));

    CHECK_FALSE(keptLines(cells, 62.5).keep(line.data(), 4, 1));  // 65 lines
    CHECK(keptLines(cells, 62).keep(line.data(), 4, 1));
    const DownsampleCells wide(70.5, 141);  // cells of 73 pixels
    CHECK_FALSE(keptLines(wide, 3.3).keep(std::vector<unsigned char>(564).data(), 4, 1));
    const DownsampleCells many(131072 / 39321.0, 131072);  // two lines are 1 MiB
    const std::vector<unsigned char> large(524288);
    CHECK_FALSE(keptLines(many, 3.3).keep(large.data(), 4, 1));
    CHECK(keptLines(many, 3.3).keep(large.data(), 1, 1));
}

// Two lines of v and v + 1 make means of v + 1/2 everywhere, about which only
// the rule's roundings decide. Adding all sums by the rule then takes less time
// than one by one.
TEST_CASE("downsample estimate: lines full of halves come out by the rule") {
    static const DownsampleForm* inner;
    static int added;
    const auto image = [](const DownsampleForm* form) {
        inner = form;
        added = 0;
        DownsampleForm counting = *form;
        counting.accumulate = [](const DownsampleCells& cells, const DownsampleLine& line,
                                 float* sums) {
            ++added;
            inner->accumulate(cells, line, sums);
        };
        forceDownsampleForm(&counting);
        downsampler sampler(4, 1, 4001, 4);  // 1001 by 2 of 3.997 by 2
        std::vector<unsigned int> line, out(1001), all;
        for (unsigned v : {100u, 101u, 6u, 5u}) {
            line.assign(4001, v * 0x01010101u);
            sampler.stuff(line.data());
            for (; sampler.ready(); all.insert(all.end(), out.begin(), out.end()))
                sampler.get(out.data());
        }
        forceDownsampleForm(nullptr);
        return all;
    };
    const std::vector<unsigned int> want = image(&kDownsamplePlain);
    REQUIRE(want.size() == 2002);
    for (const DownsampleForm* form : downsampleForms()) {
        CHECK(image(form) == want);
        CHECK(added == 4);
    }
}
