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

std::vector<CellShares> sharesOf(const DownsampleCells& cells) {
    std::vector<CellShares> all;
    all.reserve(cells.ends.size());
    float before = 0;  // what the cell before has left of its last pixel
    std::size_t next = 0;
    for (const CellEnd& end : cells.ends) {
        CellShares shares = {};
        shares.of[cells.leastWhole % 2 ? 0 : 1] = before;
        if (cells.leastWhole % 2) shares.of[1] = 1;
        const auto own = static_cast<float>(1 - end.rest);
        const bool oneMore = end.pixel - next > cells.leastWhole;
        shares.of[2] = oneMore ? 1 : own;
        shares.of[3] = oneMore ? own : 0;
        all.push_back(shares);
        before = static_cast<float>(end.rest);
        next = end.pixel + std::size_t{1};
    }
    return all;
}

}  // namespace

KeptLines::KeptLines(const DownsampleCells& cells, double factorY) : mWidth(cells.width) {
    if (mostPixels(cells) > kMostPixels || !(factorY <= kMostLines - 2)) return;
    mMost = static_cast<std::size_t>(factorY) + 2;  // parts of lines at both ends
    mPlaces.resize(mMost);
    mLines.reserve(mMost);
    mShares = sharesOf(cells);
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

ColumnLines::ColumnLines(const KeptLines& kept, const LinesAhead& next)
    : count(kept.lines().size()), shares(kept.shares()), ahead(next) {
    Part* part = parts;
    for (Part& none : parts) none = {kept.lines().front().bytes, 0};
    for (const KeptLines::Line& line : kept.lines()) {
        if (line.weight == 1)
            whole[wholes++] = line.bytes;
        else
            *part++ = {line.bytes, static_cast<float>(line.weight)};
    }
}

// Nothing is below 0, so sums only grow, and a rounding to single precision moves
// one by 2^-24 of what it comes to in the end at most. Both ways of adding differ
// from the true sum by their roundings.
//
// The rule rounds once a pixel. In whole lines a cell's own pixels are integers:
// adding them is exact as long as the sum stays between two powers of two, since
// it is below 2^24 and a multiple of its last place. Where it passes a power, it
// never comes back, so that all these roundings together are at most twice the
// last one.
//
// Two roundings more are those of a mean told in single precision, of area's
// reciprocal and of the product; a hundredth more is for all products of these
// small differences. The mean and a half, below 260, are rounded by 2^-16 at most.
MeanBounds meanBounds(const DownsampleCells& cells, const KeptLines& kept, double area) {
    const auto pixels = static_cast<double>(mostPixels(cells));
    double roundings = pixels + kRoundings + 2 + 2;
    for (const KeptLines::Line& line : kept.lines()) roundings += line.weight == 1 ? 2 : pixels;
    return {area, std::ldexp(1.01 * roundings, -24)};
}

void certainMeans(const MeanBounds& bounds, const float* sums, std::size_t first, std::size_t count,
                  unsigned char* out, std::size_t place, std::vector<std::uint32_t>& open) {
    for (std::size_t i = first; i < first + count; ++i) {
        const double mean = sums[i] / bounds.area;
        const double slack = mean * bounds.relative + MeanBounds::kSlack;
        const auto byte = [](double value) { return std::clamp(std::floor(value), 0.0, 255.0); };
        out[i] = static_cast<unsigned char>(byte(mean + 0.5 - slack));
        if (out[i] != byte(mean + 0.5 + slack) && open.size() < open.capacity())
            open.push_back(static_cast<std::uint32_t>(place + i));
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
