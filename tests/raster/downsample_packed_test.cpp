// Packed sums: the same means as the rules give, whoever takes the lines.

#include <doctest/doctest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "raster/downsample_packed.h"
#include "tests/support/guarded_bytes.h"
#include "vaskel/raster.h"

using namespace Vaskel;

namespace {

constexpr unsigned kSeed = 65408;

struct ForcedForm {
    explicit ForcedForm(const DownsampleForm* form) { forceDownsampleForm(form); }
    ~ForcedForm() { forceDownsampleForm(nullptr); }
    ForcedForm(const ForcedForm&) = delete;
    ForcedForm& operator=(const ForcedForm&) = delete;
};

}  // namespace

TEST_CASE("packed sums: means of all areas and sums") {
    int areas = 0;
    for (unsigned area = 0; area <= 300; ++area) {
        const PackedRule rule = PackedRule::forArea(area);
        const bool power = area != 0 && (area & (area - 1)) == 0;
        CHECK((rule.area != 0) == (area >= 2 && area <= (power ? 256u : 128u)));
        if (rule.area == 0) continue;
        ++areas;
        CHECK(rule.multiplier < 65536);
        std::vector<float> sums;
        for (unsigned sum = 0; sum <= 255 * area; ++sum) sums.push_back(static_cast<float>(sum));
        std::vector<unsigned char> want(sums.size());
        kDownsamplePlain.means({static_cast<double>(area), false}, sums.data(), sums.size(),
                               want.data());
        unsigned wrong = 0;
        for (unsigned sum = 0; sum <= 255 * area; ++sum) wrong += rule.mean(sum) != want[sum];
        CAPTURE(area);
        CHECK(wrong == 0);
        CHECK(255 * area + rule.half < 65536);
    }
    CHECK(areas == 128);
}

TEST_CASE("packed sums: which images have them") {
    struct Row {
        const char* why;
        double factor;
        std::uint32_t width;
        double factorY;
        unsigned area, unitsY;
    };
    constexpr Row rows[] = {
        {"whole", 2, 12, 2, 4, 1},
        {"whole, three by four", 3, 12, 4, 12, 1},
        {"halves", 2.5, 20, 2.5, 25, 2},
        {"quarters across", 1.25, 10, 2, 10, 1},
        {"sixteen by sixteen", 16, 160, 16, 256, 1},
        {"area too large", 17, 170, 16, 0, 1},
        {"not a power of two above 128", 12, 120, 12, 0, 1},
        {"single pixels", 1, 20, 1, 0, 1},
        {"thirds", 10.0 / 3, 40, 2, 0, 1},
        {"thirds down", 2, 40, 10.0 / 3, 0, 1},
        {"too few cells for a pattern", 2, 4, 2, 0, 1},
        {"cells that do not fill the line", 2, 13, 2, 0, 1},
        {"too many units", 1.0625, 34, 1.125, 0, 1},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        const PackedRule rule(DownsampleCells(row.factor, row.width), row.factorY);
        CHECK(rule.area == row.area);
        CHECK(rule.unitsY == row.unitsY);
    }
}

// One output line after another, whose lines weigh as much as an output line
// has, by each form and by the rule in floats.
TEST_CASE("packed sums: every form gives the rule's sums and means") {
    std::mt19937 random(kSeed);
    const auto below = [&](unsigned n) { return static_cast<unsigned>(random() % n); };
    int packed = 0, packedBytes = 0, fourBytes = 0, rests = 0;
    for (int round = 0; round < 3000; ++round) {
        const double factors[] = {2, 4, 3, 2.5, 1.5, 5, 1.25, 8, 6.5, 16, 1.0 + below(160) / 16.0};
        const double factor = factors[below(11)];
        const double factorY = factors[below(10)];
        const auto width = static_cast<std::uint32_t>(factor * 16 * (1 + below(40)) / 16);
        const DownsampleCells cells(factor, width);
        const PackedRule rule(cells, factorY);
        if (rule.area == 0) continue;
        const int channels = rule.bytes.empty() || round % 5 < 3 ? 4 : 1;
        ++packed;
        packedBytes += channels == 1;
        fourBytes += channels == 1 && factor == 4 && cells.ends.size() > 16;
        CAPTURE(factor);
        CAPTURE(factorY);
        CAPTURE(width);
        const std::size_t bytesPerPixel = static_cast<std::size_t>(channels);
        const std::size_t count = bytesPerPixel * cells.ends.size();
        std::vector<float> sums(count + 8);
        std::vector<const PackedForm*> forms = {&kPackedPlain};
#if defined(__x86_64__)
        if (downsampleForms().back()->packed) forms.push_back(&kPackedAvx2);
#endif
        std::vector<std::vector<std::uint16_t>> packedSums(
            forms.size(), std::vector<std::uint16_t>(count, 0xABCD));
        auto left = static_cast<unsigned>(factorY * rule.unitsY);
        for (int line = 0; left > 0; ++line) {
            const unsigned weight = std::min(left, 1 + below(rule.unitsY));
            left -= weight;
            // The next line may be said to lie anywhere, also where nothing is.
            const std::uintptr_t step = line % 2 ? 0 : random() * std::uintptr_t{4099};
            GuardedBytes pixels(bytesPerPixel * width,
                                round % 2 ? GuardedBytes::AtEnd : GuardedBytes::AtStart);
            for (std::size_t i = 0; i < pixels.size(); ++i)
                pixels[i] = static_cast<unsigned char>(round % 4 ? random() : 255);
            kDownsamplePlain.accumulate(
                cells, {pixels.data(), channels, static_cast<double>(weight) / rule.unitsY, true},
                sums.data());
            for (std::size_t form = 0; form < forms.size(); ++form) {
                std::uint16_t* const to = packedSums[form].data();
                const PackedLine packedLine = {pixels.data(), channels, weight, 0, step, 0};
                if (left == 0 && line > 0) {
                    std::vector<unsigned char> want(count);
                    GuardedBytes got(count);
                    kDownsamplePlain.means({factor * factorY, false}, sums.data(), count,
                                           want.data());
                    // Nothing is left of the line, or some of it.
                    for (const unsigned rest : {0u, below(rule.unitsY)}) {
                        std::vector<std::uint16_t> next = packedSums[form];
                        PackedLine last = packedLine;
                        last.rest = rest;
                        last.taker = random();
                        forms[form]->finish(cells, rule, last, to, got.data());
                        REQUIRE(std::memcmp(got.data(), want.data(), count) == 0);
                        last.weight = rest;
                        if (rest != 0) kPackedPlain.begin(cells, rule, last, next.data());
                        REQUIRE(packedSums[form] == next);
                        rests += rest != 0;
                    }
                    continue;
                }
                (line == 0 ? forms[form]->begin : forms[form]->add)(cells, rule, packedLine, to);
                bool same = true;
                for (std::size_t i = 0; i < count; ++i)
                    same = same && static_cast<float>(to[i] * rule.unit) == sums[i];
                REQUIRE(same);
            }
        }
    }
    CHECK(packed > 1500);
    CHECK(packedBytes > 200);
    CHECK(fourBytes > 20);
    CHECK(rests > 500);
}

// Whatever comes between two lines of an image: bytes for pixels, a last line
// that is asked for early, a copy that takes over, another form.
TEST_CASE("packed sums: what interrupts an image finds the rule's sums") {
    std::mt19937 random(kSeed + 1);
    for (int round = 0; round < 400; ++round) {
        const double factors[] = {2, 4, 2.5, 3, 1.25};
        const double factor = factors[random() % 5];
        const unsigned width = 20 * (1 + static_cast<unsigned>(random() % 5));
        const unsigned height = 40;
        const auto seed = static_cast<std::uint32_t>(random());
        std::vector<unsigned char> outputs[2];
        for (int i = 0; i < 2; ++i) {
            std::mt19937 steps(seed);
            const DownsampleForm* const form = i ? nullptr : &kDownsamplePlain;
            ForcedForm forced(form);
            downsampler first(factor, 1, width, height), second(1, 1, 1, 1);
            second = first;
            downsampler* sampler = &first;
            const std::size_t n = first.resize(width);
            GuardedBytes line(4 * std::size_t{width}), out(4 * n);
            const auto keep = [&](std::size_t bytes) {
                outputs[i].insert(outputs[i].end(), out.data(), out.data() + bytes);
            };
            for (unsigned y = 0; y < height; ++y) {
                for (std::size_t k = 0; k < line.size(); ++k)
                    line[k] = static_cast<unsigned char>(steps());
                const auto* const pixels = reinterpret_cast<const unsigned*>(line.data());
                switch (steps() % 12) {
                    case 0:
                        sampler->stuff(line.data());
                        break;
                    case 1:
                        sampler->getlastline(out.data()), keep(n);
                        break;
                    case 2:
                        sampler->getlastline(reinterpret_cast<unsigned*>(out.data()));
                        keep(4 * n);
                        break;
                    case 3:
                        // Row counts are not shared; take the other one's state whole.
                        *(sampler == &first ? &second : &first) = *sampler;
                        sampler = sampler == &first ? &second : &first;
                        sampler->stuff(pixels);
                        break;
                    case 4:
                        sampler->stuff(pixels), sampler->stuff(pixels);
                        break;
                    case 5:
                        if (i) forceDownsampleForm(&kDownsampleTable);
                        sampler->stuff(pixels);
                        if (i) forceDownsampleForm(nullptr);
                        break;
                    default:
                        sampler->stuff(pixels);
                        break;
                }
                if (steps() % 8 == 0) continue;  // a line nobody takes
                while (sampler->ready()) {
                    sampler->get(reinterpret_cast<unsigned*>(out.data()));
                    keep(4 * n);
                }
            }
        }
        CAPTURE(round);
        CAPTURE(factor);
        REQUIRE(outputs[0] == outputs[1]);
    }
}
