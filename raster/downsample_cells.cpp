#include "raster/downsample_cells.h"

namespace Vaskel {

DownsampleCells::DownsampleCells(double factor, std::uint32_t width) {
    double column = 0;
    for (std::uint32_t i = 0; i < width; ++i) {
        column += 1;
        if (column >= factor) {
            column -= factor;
            ends.push_back({i, column});
            if (column != 0) whole = false;
        }
    }
}

void accumulatePlain(const unsigned char* line, std::uint32_t width, int channels, double factor,
                     double weight, float* sums) {
    const auto add = [](float& sum, double product) {
        sum = static_cast<float>(static_cast<double>(sum) + product);
    };
    double column = 0;
    for (std::uint32_t i = 0; i < width; ++i, line += channels) {
        column += 1;
        if (column >= factor) {
            column -= factor;
            for (int c = 0; c < channels; ++c) {
                add(sums[c], (1 - column) * weight * line[c]);
                add(sums[c + channels], column * weight * line[c]);
            }
            sums += channels;
        } else {
            for (int c = 0; c < channels; ++c) add(sums[c], weight * line[c]);
        }
    }
}

namespace {

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
void accumulate(const unsigned char* line, std::uint32_t width, const DownsampleCells& cells,
                double weight, float* sums) {
    Cell<kChannels> cell;
    cell.load(sums);
    std::size_t i = 0;
    const auto addPixels = [&](std::size_t end) {
        for (; i < end; ++i) {
            if constexpr (kWholeLine)
                cell.addWhole(line + i * kChannels);
            else
                cell.add(line + i * kChannels, weight);
        }
    };
    for (const CellEnd& end : cells.ends) {
        addPixels(end.pixel);
        cell.add(line + i * kChannels, (1 - end.rest) * weight);
        cell.store(sums);
        sums += kChannels;
        cell.load(sums);
        // A rest of 0 adds 0, which changes no sum.
        if (end.rest != 0) cell.add(line + i * kChannels, end.rest * weight);
        ++i;
    }
    addPixels(width);
    cell.store(sums);
}

template <int kChannels>
void accumulateIntegers(const unsigned char* line, std::uint32_t width,
                        const DownsampleCells& cells, float* sums) {
    std::size_t i = 0;
    const auto addCell = [&](std::size_t end) {
        std::uint32_t sum[kChannels] = {};
        for (; i < end; ++i)
            for (int c = 0; c < kChannels; ++c)
                sum[c] += line[i * kChannels + static_cast<std::size_t>(c)];
        for (int c = 0; c < kChannels; ++c) sums[c] += static_cast<float>(sum[c]);
        sums += kChannels;
    };
    for (const CellEnd& end : cells.ends) addCell(std::size_t{end.pixel} + 1);
    addCell(width);
}

}  // namespace

void accumulateCells(const unsigned char* line, std::uint32_t width, int channels,
                     const DownsampleCells& cells, double weight, float* sums) {
    if (channels == 4)
        weight == 1 ? accumulate<4, true>(line, width, cells, weight, sums)
                    : accumulate<4, false>(line, width, cells, weight, sums);
    else
        weight == 1 ? accumulate<1, true>(line, width, cells, weight, sums)
                    : accumulate<1, false>(line, width, cells, weight, sums);
}

void accumulateWhole(const unsigned char* line, std::uint32_t width, int channels,
                     const DownsampleCells& cells, float* sums) {
    if (channels == 4)
        accumulateIntegers<4>(line, width, cells, sums);
    else
        accumulateIntegers<1>(line, width, cells, sums);
}

}  // namespace Vaskel
