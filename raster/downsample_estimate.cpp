#include "raster/downsample_estimate.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <utility>

namespace Vaskel {
namespace {

// A cell's own pixels and the two that it shares.
std::size_t mostPixels(const DownsampleCells& cells) { return cells.leastWhole + 3; }

}  // namespace

KeptLines::KeptLines(const DownsampleCells& cells, double factorY) : mWidth(cells.width) {
    if (mostPixels(cells) > kMostPixels || !(factorY <= kMostLines - 2)) return;
    mMost = static_cast<std::size_t>(factorY) + 2;  // parts of lines at both ends
    mPlaces.resize(mMost);
    mLines.reserve(mMost);
}

bool KeptLines::keep(const unsigned char* line, int channels, double weight) {
    if (mLines.size() >= mMost || !(weight >= 0 && weight <= 1)) return false;
    if (!mLines.empty() && channels != mChannels) return false;
    const auto isPart = [](const Line& kept) { return kept.weight != 1; };
    if (weight != 1 && std::count_if(mLines.begin(), mLines.end(), isPart) == kMostParts)
        return false;
    const std::size_t bytes = mWidth * static_cast<std::size_t>(channels);
    if (channels != mChannels) {
        const std::size_t stride = bytes + kBehind;
        mBytes.reset(stride <= kMostBytes / mMost
                         ? new (std::nothrow) unsigned char[mMost * stride]()
                         : nullptr);
        if (!mBytes) {
            mMost = 0;
            return false;
        }
        mChannels = channels;
        for (std::size_t i = 0; i < mMost; ++i) mPlaces[i] = &mBytes[i * stride];
    }
    unsigned char* const to = mPlaces[mLines.size()];
    std::memcpy(to, line, bytes);
    mLines.push_back({to, weight});
    return true;
}

void KeptLines::keepLast(double weight) {
    std::swap(mPlaces.front(), mPlaces[mLines.size() - 1]);
    mLines.assign(1, {mPlaces.front(), weight});
}

// Sums only grow, up to 255 areas or, where lines came out of turn, 255 times
// what they weigh; a rounding to single precision moves one by 2^-24 of that at
// most. Both ways of adding differ from the true sum by their roundings.
//
// The rule rounds once a pixel. In whole lines a cell's own pixels are integers:
// adding them is exact as long as the sum stays between two powers of two, since
// it is below 2^24 and a multiple of its last place. Where it passes a power, it
// never comes back, so that all these roundings together are at most twice the
// last one. 256 in place of 255 is for what double precision rounds.
MeanBounds meanBounds(const DownsampleCells& cells, const KeptLines& kept, double area) {
    const auto pixels = static_cast<double>(mostPixels(cells));
    double weight = 0, roundings = pixels + kRoundings + 2;
    for (const KeptLines::Line& line : kept.lines()) {
        weight += line.weight;
        roundings += line.weight == 1 ? 2 : pixels;
    }
    const double most = 256 * weight * cells.factor / area;
    // Means are estimated to 2^-13 besides.
    return {area, std::ldexp(most * roundings, -24) + 1.0 / 8192};
}

void certainMeans(const MeanBounds& bounds, const float* sums, std::size_t first, std::size_t count,
                  unsigned char* out, std::vector<std::uint32_t>& open) {
    for (std::size_t i = first; i < first + count; ++i) {
        const double mean = sums[i] / bounds.area + 0.5;
        const auto byte = [](double value) { return std::clamp(std::floor(value), 0.0, 255.0); };
        out[i] = static_cast<unsigned char>(byte(mean - bounds.slack));
        if (out[i] != byte(mean + bounds.slack) && open.size() < open.capacity())
            open.push_back(static_cast<std::uint32_t>(i));
    }
}

float ruleSum(const DownsampleCells& cells, const KeptLines& kept, std::size_t cell, int channel) {
    const auto channels = static_cast<std::size_t>(kept.channels());
    float sum = 0;
    for (const KeptLines::Line& line : kept.lines()) {
        const auto add = [&](std::size_t pixel, double weight) {
            const unsigned char value =
                line.bytes[channels * pixel + static_cast<std::size_t>(channel)];
            sum = static_cast<float>(static_cast<double>(sum) + weight * value);
        };
        std::size_t i = 0;
        if (cell > 0) {
            const CellEnd& before = cells.ends[cell - 1];
            add(before.pixel, before.rest * line.weight);
            i = before.pixel + std::size_t{1};
        }
        const bool ends = cell < cells.ends.size();
        for (const std::size_t end = ends ? cells.ends[cell].pixel : cells.width; i < end; ++i)
            add(i, line.weight);
        if (ends) add(i, (1 - cells.ends[cell].rest) * line.weight);
    }
    return sum;
}

}  // namespace Vaskel
