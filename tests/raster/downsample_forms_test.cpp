// Every form of the downsampler gives the plain form's bits.

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "raster/downsample_estimate.h"
#include "raster/downsample_halved.h"
#include "tests/support/guarded_bytes.h"
#include "vaskel/raster.h"

using namespace Vaskel;

namespace {

constexpr unsigned kSeed = 4170;

struct ForcedForm {
    explicit ForcedForm(const DownsampleForm* form) { forceDownsampleForm(form); }
    ~ForcedForm() { forceDownsampleForm(nullptr); }
    ForcedForm(const ForcedForm&) = delete;
    ForcedForm& operator=(const ForcedForm&) = delete;
};

// Passes on to another form and counts lines, so that a test sees what ran.
const DownsampleForm* gRecorded = nullptr;
int gLines = 0, gExactLines = 0, gPackedLines = 0, gEstimatedLines = 0;
int gHalvedLines = 0;
const HalvedForm kRecordingHalved = {
    [](std::size_t cells, const PackedLine& line, unsigned char* halved) {
        ++gPackedLines;
        ++gHalvedLines;
        gRecorded->packed->halved->halve(cells, line, halved);
    },
    [](std::size_t cells, const PackedLine& line, const unsigned char* halved, unsigned char* out) {
        ++gPackedLines;
        ++gHalvedLines;
        gRecorded->packed->halved->quarter(cells, line, halved, out);
    }};
const PackedForm kRecordingPacked = {
    [](const DownsampleCells& cells, const PackedRule& rule, const PackedLine& line,
       std::uint16_t* sums) {
        ++gPackedLines;
        gRecorded->packed->begin(cells, rule, line, sums);
    },
    [](const DownsampleCells& cells, const PackedRule& rule, const PackedLine& line,
       std::uint16_t* sums) {
        ++gPackedLines;
        gRecorded->packed->add(cells, rule, line, sums);
    },
    [](const DownsampleCells& cells, const PackedRule& rule, const PackedLine& line,
       std::uint16_t* sums, unsigned char* out) {
        ++gPackedLines;
        gRecorded->packed->finish(cells, rule, line, sums, out);
    },
    &kRecordingHalved};
DownsampleForm gRecording = {
    "recording",
    [](const DownsampleCells& cells, const DownsampleLine& line, float* sums) {
        ++gLines;
        if (line.exact) ++gExactLines;
        gRecorded->accumulate(cells, line, sums);
    },
    [](const MeanRule& rule, const float* sums, std::size_t count, unsigned char* out) {
        gRecorded->means(rule, sums, count, out);
    },
    nullptr, nullptr};

const EstimateForm kRecordingEstimate = {
    [](const ColumnLines& lines, int channels, std::size_t first, std::size_t count, float* sums) {
        if (first == 0) gEstimatedLines += static_cast<int>(lines.count);
        gRecorded->estimate->sums(lines, channels, first, count, sums);
    },
    [](const MeanBounds& bounds, const float* sums, std::size_t count, unsigned char* out,
       std::size_t place, std::vector<std::uint32_t>& open) {
        gRecorded->estimate->means(bounds, sums, count, out, place, open);
    }};

void record(const DownsampleForm* form) {
    gRecorded = form;
    gRecording.packed = form->packed ? &kRecordingPacked : nullptr;
    gRecording.estimate = form->estimate ? &kRecordingEstimate : nullptr;
    gLines = gExactLines = gPackedLines = gEstimatedLines = 0;
}

struct Image {
    double factor;
    unsigned width, height;
    bool filtering;
    int skippedGets;  // lines that nobody takes, from the third on
};

// All that an image gives, the sums of the last line included.
template <class Unit>
std::vector<unsigned char> run(const Image& image, const DownsampleForm* form, unsigned seed,
                               int* exactLines = nullptr, int* inOrderLines = nullptr,
                               int* packedLines = nullptr, int* estimatedLines = nullptr) {
    const ForcedForm forced(&gRecording);
    record(form);
    downsampler sampler(image.factor, 1, image.width, image.height);
    sampler.setFiltering(image.filtering);
    std::mt19937 random(seed);
    const std::size_t n = sampler.resize(image.width);
    GuardedBytes line(image.width * sizeof(Unit)), out(n * sizeof(Unit));
    std::vector<unsigned char> all;
    const auto take = [&] { all.insert(all.end(), out.data(), out.data() + out.size()); };
    int skips = image.skippedGets;
    for (unsigned y = 0; y < image.height; ++y) {
        for (std::size_t i = 0; i < line.size(); ++i) {
            const auto value = static_cast<unsigned char>(random());
            line[i] = value % 4 == 0 ? 255 : value % 4 == 1 ? 0 : value;
        }
        sampler.stuff(reinterpret_cast<const Unit*>(line.data()));
        if (y >= 3 && skips > 0) {
            --skips;
            continue;
        }
        while (sampler.ready()) sampler.get(reinterpret_cast<Unit*>(out.data())), take();
    }
    sampler.getlastline(reinterpret_cast<Unit*>(out.data()));
    take();
    if (image.filtering)
        CHECK(gLines + gPackedLines + gEstimatedLines >= static_cast<int>(image.height));
    if (exactLines) *exactLines += gExactLines;
    if (inOrderLines) *inOrderLines += gLines - gExactLines;
    if (packedLines) *packedLines += gPackedLines;
    if (estimatedLines) *estimatedLines += gEstimatedLines;
    return all;
}

std::vector<Image> images() {
    std::vector<Image> all;
    for (double factor : {1.0,  1.25, 1.5, 2.0,  2.5,   3.0,   3.5,   3.75,    4.0,          4.17,
                          5.0,  6.5,  8.0, 9.0,  15.5,  16.0,  17.0,  64.0,    1 + 1.0 / 64, 1.01,
                          1.99, 2.01, 3.3, 7.77, 31.25, 100.0, 2.125, 10.0 / 3})
        for (unsigned width : {1u, 2u, 5u, 10u, 33u, 64u, 100u, 203u, 512u})
            for (bool filtering : {true, false})
                all.push_back({factor, width, 23, filtering, filtering && width % 2 ? 5 : 0});
    // Both directions divide.
    for (double factor : {1.25, 1.5, 2.0, 2.5, 3.0, 4.0, 5.0, 6.0, 8.0, 10.0, 16.0})
        for (unsigned n : {4u, 5u, 7u, 16u, 33u, 100u})
            all.push_back({factor, static_cast<unsigned>(4 * n * factor),
                           static_cast<unsigned>(4 * factor), true, n % 2 ? 2 : 0});
    return all;
}

}  // namespace

TEST_CASE("downsampler: every form gives the plain form's bytes") {
    int exact = 0, inOrder = 0, packed = 0, estimated = 0;
    for (const Image& image : images()) {
        CAPTURE(image.factor);
        CAPTURE(image.width);
        CAPTURE(image.filtering);
        const unsigned seed = kSeed + image.width;
        const auto bytes = run<unsigned char>(image, &kDownsamplePlain, seed);
        const auto pixels = run<unsigned int>(image, &kDownsamplePlain, seed);
        for (const DownsampleForm* form : downsampleForms().subspan(1)) {
            CAPTURE(std::string(form->name));
            CHECK(run<unsigned char>(image, form, seed, &exact, &inOrder) == bytes);
            CHECK(run<unsigned int>(image, form, seed, &exact, &inOrder, &packed, &estimated) ==
                  pixels);
        }
    }
    CHECK(exact > 1000);
    CHECK(inOrder > 1000);
    if (downsampleForms().back()->packed) CHECK(packed > 500);
    if (downsampleForms().back()->packed) CHECK(gHalvedLines > 30);
    if (downsampleForms().back()->estimate) CHECK(estimated > 4000);
}

TEST_CASE("downsampler: random sizes and factors, every form") {
    std::mt19937 engine(kSeed);
    const auto below = [&](unsigned n) { return static_cast<unsigned>(engine() % n); };
    for (int round = 0; round < 400; ++round) {
        Image image{};
        image.width = 1 + below(300);
        image.height = 1 + below(40);
        image.filtering = below(4) != 0;
        image.skippedGets = below(4) == 0 ? static_cast<int>(below(6)) : 0;
        // Cells of whole pixels, of halves, quarters and so on, and any.
        const double n = 1 + below(image.width);
        const double steps = std::ldexp(1, static_cast<int>(below(8)));
        image.factor =
            below(2) ? image.width / n : 1 + std::floor(steps * below(1000) / 100) / steps;
        CAPTURE(round);
        CAPTURE(image.factor);
        CAPTURE(image.width);
        CAPTURE(image.height);
        const auto bytes = run<unsigned char>(image, &kDownsamplePlain, kSeed);
        const auto pixels = run<unsigned int>(image, &kDownsamplePlain, kSeed);
        for (const DownsampleForm* form : downsampleForms().subspan(1)) {
            CAPTURE(std::string(form->name));
            CHECK(run<unsigned char>(image, form, kSeed) == bytes);
            CHECK(run<unsigned int>(image, form, kSeed) == pixels);
        }
    }
}

TEST_CASE("downsampler: every form rounds sums as the plain form does") {
    std::mt19937 random(kSeed);
    for (double area : {1.0, 2.25, 4.0, 5.0, 6.25, 9.0, 16.0, 17.3889, 25.0, 1e4, 1.0000001e7}) {
        CAPTURE(area);
        // Around each half, on both sides and exactly, and far out.
        std::vector<float> sums = {0.0f, -0.0f, -1e30f, 1e30f, -1.0f, 1e10f};
        for (int m = -2; m < 260; ++m) {
            auto at = static_cast<float>((m + 0.5) * area);
            for (int i = 0; i < 8; ++i) at = std::nextafterf(at, -1e30f);
            for (int i = 0; i < 17; ++i, at = std::nextafterf(at, 1e30f)) sums.push_back(at);
            sums.push_back(
                static_cast<float>(static_cast<double>(random()) / 4294967296.0 * 256 * area));
        }
        std::vector<unsigned char> want(sums.size()), got(sums.size());
        kDownsamplePlain.means({area, false}, sums.data(), sums.size(), want.data());
        for (const DownsampleForm* form : downsampleForms().subspan(1)) {
            CAPTURE(std::string(form->name));
            form->means({area, false}, sums.data(), sums.size(), got.data());
            CHECK(got == want);
        }
    }
}

TEST_CASE("downsampler: every form rounds all coarse sums as the plain form does") {
    // Areas and steps with 2 * steps * area <= 2048, tried whole.
    struct Row {
        double area, steps;
    };
    for (const Row& row :
         {Row{1, 1}, Row{4, 1}, Row{9, 1}, Row{16, 1}, Row{17 * 15, 1}, Row{1024, 1}, Row{6.25, 4},
          Row{5, 2}, Row{2.25, 4}, Row{1.25, 64}, Row{12.25, 4}, Row{4, 256}, Row{1, 1024}}) {
        CAPTURE(row.area);
        CAPTURE(row.steps);
        REQUIRE(2 * row.steps * row.area <= 2048);
        std::vector<float> sums;
        for (int i = 0; i <= 255 * row.steps * row.area; ++i)
            sums.push_back(static_cast<float>(i / row.steps));
        std::vector<unsigned char> want(sums.size()), got(sums.size());
        kDownsamplePlain.means({row.area, true}, sums.data(), sums.size(), want.data());
        for (const DownsampleForm* form : downsampleForms().subspan(1)) {
            CAPTURE(std::string(form->name));
            form->means({row.area, true}, sums.data(), sums.size(), got.data());
            CHECK(got == want);
        }
    }
}

TEST_CASE("downsampler: cells number n or are begun n times, and have as many pixels or one more") {
    for (unsigned width = 1; width <= 400; ++width)
        for (unsigned n = 1; n <= width; ++n) {
            const DownsampleCells cells(static_cast<double>(width) / n, width);
            bool good = cells.ends.size() <= n && cells.ends.size() + 1 >= n;
            std::size_t begin = 0;
            for (const CellEnd& end : cells.ends) {
                const std::size_t whole = end.pixel - begin;
                good = good && (whole == cells.leastWhole || whole == cells.leastWhole + 1);
                begin = end.pixel + std::size_t{1};
            }
            if (!good) {
                CAPTURE(width);
                CAPTURE(n);
                CHECK(good);
            }
        }
}

// Both know of each other's lines: the fraction that one leaves in the sums
// keeps the other from adding integers.
TEST_CASE("downsampler: assigned ones know what their sums hold") {
    for (const DownsampleForm* form : downsampleForms()) {
        CAPTURE(std::string(form->name));
        record(form);
        const ForcedForm forced(&gRecording);
        downsampler first(3, 1, 9, 10);  // 3 by 2.5, exact
        downsampler second(1, 1, 1, 1);
        second = first;
        unsigned char line[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9}, out[3];
        for (int i = 0; i < 12000; ++i) second.stuff(line);  // the last one leaves weight 11998.5
        second.get(out);
        gLines = gExactLines = 0;
        first.stuff(line);
        CHECK(gLines == 1);
        CHECK(gExactLines == 0);
    }
}

namespace {

// Calls in any order on two samplers that become copies of each other and share
// their sums; all that they give.
std::vector<unsigned char> anyCalls(const DownsampleForm* form, unsigned seed) {
    const ForcedForm forced(form);
    std::mt19937 random(seed);
    const auto below = [&](unsigned n) { return static_cast<unsigned>(random() % n); };
    const unsigned width = 1 + below(60), height = 1 + below(60);
    const double factor = 1 + below(1000) / 137.0;
    downsampler samplers[2] = {{factor, 1, width, height}, {factor, 1, width, height}};
    std::vector<unsigned> line(width), out(width);
    std::vector<unsigned char> all;
    const auto keep = [&] {
        const auto* const bytes = reinterpret_cast<const unsigned char*>(out.data());
        all.insert(all.end(), bytes, bytes + 4 * out.size());
    };
    for (int call = 0; call < 60; ++call) {
        downsampler& sampler = samplers[below(2)];
        for (unsigned& pixel : line) pixel = static_cast<unsigned>(random());
        const auto* const bytes = reinterpret_cast<const unsigned char*>(line.data());
        auto* const outBytes = reinterpret_cast<unsigned char*>(out.data());
        switch (below(16)) {
            case 0:
                sampler.getlastline(out.data()), keep();
                break;
            case 1:
                sampler.getlastline(outBytes), keep();
                break;
            case 2:
                samplers[0] = samplers[1];
                break;
            case 3:
                samplers[1] = downsampler(samplers[0]);
                break;
            case 4:
                sampler.setFiltering(below(4) != 0);
                break;
            case 5:
                sampler.stuff(bytes);
                break;
            case 6:
                sampler.get(outBytes), keep();
                break;
            case 7:
            case 8:
                sampler.get(out.data()), keep();
                break;
            default:
                sampler.stuff(line.data());
        }
    }
    return all;
}

}  // namespace

TEST_CASE("downsampler: every form gives the plain form's bytes, whatever is called when") {
    for (unsigned seed = kSeed; seed < kSeed + 3000; ++seed) {
        CAPTURE(seed);
        const std::vector<unsigned char> want = anyCalls(&kDownsamplePlain, seed);
        for (const DownsampleForm* form : downsampleForms().subspan(1)) {
            CAPTURE(std::string(form->name));
            REQUIRE(anyCalls(form, seed) == want);
        }
    }
}
