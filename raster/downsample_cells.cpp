#include "raster/downsample_cells.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <iterator>

#include "util/cpu.h"

namespace Vaskel {

int fractionBitsOf(double value) {
    for (int bits = 0; bits <= DownsampleCells::kMostFractionBits; ++bits) {
        const double steps = std::ldexp(value, bits);
        if (steps == std::floor(steps)) return bits;
    }
    return -1;
}

namespace {

CellPattern patternOf(const DownsampleCells& cells) {
    CellPattern pattern;
    if (cells.fractionBits < 0) return pattern;
    const std::size_t period = std::max(4, 1 << cells.fractionBits);
    if (cells.ends.size() < period || cells.ends[period - 1].rest != 0) return pattern;
    const double units = std::ldexp(1, cells.fractionBits);
    pattern.shares.resize(CellPattern::kMostSpan * period);
    double left = 0;  // of the pixel before, in units
    std::size_t next = 0;
    for (std::size_t k = 0; k < period; ++k) {
        const CellEnd& end = cells.ends[k];
        const std::size_t start = left > 0 ? next - 1 : next;
        const std::size_t span = end.pixel + std::size_t{1} - start;
        if (span > CellPattern::kMostSpan) return CellPattern{};
        pattern.span = std::max(pattern.span, span);
        pattern.starts.push_back(static_cast<std::uint32_t>(start));
        unsigned char* const shares = &pattern.shares[CellPattern::kMostSpan * k];
        std::fill_n(shares, span, static_cast<unsigned char>(units));
        if (left > 0) shares[0] = static_cast<unsigned char>(left);
        left = end.rest * units;
        shares[span - 1] = static_cast<unsigned char>(units - left);
        next = end.pixel + std::size_t{1};
    }
    pattern.period = period;
    pattern.pixels = next;
    return pattern;
}

}  // namespace

[[gnu::cold]] DownsampleCells::DownsampleCells(double factorX, std::uint32_t widthPx)
    : factor(factorX), width(widthPx), fractionBits(fractionBitsOf(factorX)), leastWhole(width) {
    // Columns stay below 2^33: with few bits behind the point nothing is rounded.
    double column = 0;
    for (std::uint32_t i = 0; i < width; ++i) {
        column += 1;
        if (column >= factor) {
            column -= factor;
            const std::uint32_t begin = ends.empty() ? 0 : ends.back().pixel + 1;
            leastWhole = std::min(leastWhole, std::size_t{i} - begin);
            ends.push_back({i, column});
        }
    }
    pattern = patternOf(*this);
}

namespace {

// ---- The rules --------------------------------------------------------------

void accumulatePlain(const DownsampleCells& cells, const DownsampleLine& line, float* sums) {
    const auto add = [](float& sum, double product) {
        sum = static_cast<float>(static_cast<double>(sum) + product);
    };
    const int channels = line.channels;
    const unsigned char* pixel = line.bytes;
    double column = 0;
    for (std::uint32_t i = 0; i < cells.width; ++i, pixel += channels) {
        column += 1;
        if (column >= cells.factor) {
            column -= cells.factor;
            for (int c = 0; c < channels; ++c) {
                add(sums[c], (1 - column) * line.weight * pixel[c]);
                add(sums[c + channels], column * line.weight * pixel[c]);
            }
            sums += channels;
        } else {
            for (int c = 0; c < channels; ++c) add(sums[c], line.weight * pixel[c]);
        }
    }
}

void meansPlain(const MeanRule& rule, const float* sums, std::size_t count, unsigned char* out) {
    for (std::size_t i = 0; i < count; ++i) {
        const double mean = sums[i] / rule.area + 0.5;
        out[i] = mean >= 255 ? 255 : mean > 0 ? static_cast<unsigned char>(mean) : 0;
    }
}

// ---- From the table ---------------------------------------------------------

// The sums of the cell at hand.
template <int kChannels>
struct Cell {
    float sums[kChannels];

    void load(const float* from) {
        for (int c = 0; c < kChannels; ++c) sums[c] = from[c];
    }
    void store(float* to) const {
        for (int c = 0; c < kChannels; ++c) to[c] = sums[c];
    }
    void addWhole(const unsigned char* pixel) {
        for (int c = 0; c < kChannels; ++c) sums[c] += static_cast<float>(pixel[c]);
    }
    void add(const unsigned char* pixel, double weight) {
        for (int c = 0; c < kChannels; ++c)
            sums[c] = static_cast<float>(static_cast<double>(sums[c]) + weight * pixel[c]);
    }
};

template <int kChannels, bool kWholeLine>
void accumulateInOrder(const DownsampleCells& cells, const DownsampleLine& line, float* sums) {
    Cell<kChannels> cell;
    cell.load(sums);
    std::size_t i = 0;
    const auto addPixels = [&](std::size_t end) {
        for (; i < end; ++i) {
            if constexpr (kWholeLine)
                cell.addWhole(line.bytes + i * kChannels);
            else
                cell.add(line.bytes + i * kChannels, line.weight);
        }
    };
    for (const CellEnd& end : cells.ends) {
        addPixels(end.pixel);
        cell.add(line.bytes + i * kChannels, (1 - end.rest) * line.weight);
        cell.store(sums);
        sums += kChannels;
        cell.load(sums);
        // A rest of 0 adds 0, which changes no sum.
        if (end.rest != 0) cell.add(line.bytes + i * kChannels, end.rest * line.weight);
        ++i;
    }
    addPixels(cells.width);
    cell.store(sums);
}

// Bytes times their shares in units of 2^-fractionBits. While the weight is not
// 0, the sum of a line stays below 2^24, since its product with the weight, an
// integer of even smaller units, does; else it may wrap and counts for nothing.
template <int kChannels>
void accumulateIntegers(const DownsampleCells& cells, const DownsampleLine& line, std::size_t first,
                        float* sums) {
    const double units = std::ldexp(1, cells.fractionBits);
    const auto whole = static_cast<std::uint32_t>(units);
    const auto weight = static_cast<float>(line.weight / units);
    std::size_t i = 0;
    std::uint32_t left = 0;  // of the pixel before, in units
    if (first > 0) {
        i = cells.ends[first - 1].pixel + std::size_t{1};
        left = static_cast<std::uint32_t>(cells.ends[first - 1].rest * units);
    }
    for (std::size_t k = first; k <= cells.ends.size(); ++k) {
        std::uint32_t sum[kChannels] = {};
        const auto add = [&](std::size_t pixel, std::uint32_t share) {
            for (std::size_t c = 0; c < kChannels; ++c)
                sum[c] += share * line.bytes[kChannels * pixel + c];
        };
        const bool ends = k < cells.ends.size();
        const std::size_t end = ends ? cells.ends[k].pixel : cells.width;
        const std::uint32_t before = left;
        if (before != 0) add(i - 1, before);
        for (; i < end; ++i) add(i, whole);
        if (ends) {
            left = static_cast<std::uint32_t>(cells.ends[k].rest * units);
            add(i++, whole - left);
        }
        for (std::size_t c = 0; c < kChannels; ++c)
            sums[kChannels * k + c] += static_cast<float>(sum[c]) * weight;
    }
}

void accumulateTable(const DownsampleCells& cells, const DownsampleLine& line, float* sums) {
    if (line.exact)
        accumulateExact(cells, line, 0, sums);
    else if (line.channels == 4)
        line.weight == 1 ? accumulateInOrder<4, true>(cells, line, sums)
                         : accumulateInOrder<4, false>(cells, line, sums);
    else
        line.weight == 1 ? accumulateInOrder<1, true>(cells, line, sums)
                         : accumulateInOrder<1, false>(cells, line, sums);
}

// ---- Choice -----------------------------------------------------------------

#if defined(__x86_64__)
constexpr const DownsampleForm* kForms[] = {&kDownsamplePlain, &kDownsampleTable, &kDownsampleAvx2};
const DownsampleForm& bestForm() {
    return cpuLevel() >= CpuLevel::Avx2 ? kDownsampleAvx2 : kDownsampleTable;
}
#else
constexpr const DownsampleForm* kForms[] = {&kDownsamplePlain, &kDownsampleTable};
const DownsampleForm& bestForm() { return kDownsampleTable; }
#endif

std::atomic<const DownsampleForm*> gForced{nullptr};

}  // namespace

const DownsampleForm kDownsamplePlain = {"plain", accumulatePlain, meansPlain, nullptr, nullptr};
const DownsampleForm kDownsampleTable = {"table", accumulateTable, meansPlain, nullptr, nullptr};

std::size_t wholePeriods(const DownsampleCells& cells, std::size_t bytesPerPixel,
                         std::size_t reach) {
    const std::size_t width = bytesPerPixel * cells.width;
    if (width < reach) return 0;
    const CellPattern& pattern = cells.pattern;
    return std::min((width - reach) / (bytesPerPixel * pattern.pixels) + 1,
                    cells.ends.size() / pattern.period);
}

void accumulateExact(const DownsampleCells& cells, const DownsampleLine& line, std::size_t first,
                     float* sums) {
    if (line.channels == 4)
        accumulateIntegers<4>(cells, line, first, sums);
    else
        accumulateIntegers<1>(cells, line, first, sums);
}

std::span<const DownsampleForm* const> downsampleForms() {
    return {std::begin(kForms), std::find(std::begin(kForms), std::end(kForms), &bestForm()) + 1};
}

void forceDownsampleForm(const DownsampleForm* form) {
    gForced.store(form, std::memory_order_relaxed);
}

const DownsampleForm& chosenDownsampleForm() {
    if (const DownsampleForm* form = gForced.load(std::memory_order_relaxed)) return *form;
    // Not by the list of all, so that the plain form stays out of the library.
    static const DownsampleForm& best = bestForm();
    return best;
}

}  // namespace Vaskel
