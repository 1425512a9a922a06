#include "raster/downsample_estimate.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <new>
#include <utility>

namespace Vaskel {
namespace {

// Two numbers of 16 bits, the first one in the lower half.
std::uint32_t twoShares(unsigned a, unsigned b) { return a | b << 16; }

}  // namespace

[[gnu::cold]] CellShares::CellShares(const DownsampleCells& cells) {
    if (cells.width == 0) return;
    // A cell that rounding left open at the end is whole but for that.
    const CellEnd end = {cells.width - 1, 0};
    const std::size_t ended = cells.ends.size();
    const std::size_t all = ended + (ended == 0 || cells.ends.back().pixel != end.pixel ? 1 : 0);
    const auto endOf = [&](std::size_t cell) { return cell < ended ? cells.ends[cell] : end; };
    const auto begin = [&](std::size_t cell) {
        return cell > 0 ? cells.ends[cell - 1].pixel + std::size_t{1} : 0;
    };
    std::size_t most = 0;
    least = cells.width;
    for (std::size_t cell = 0; cell < all; ++cell) {
        const std::size_t whole = endOf(cell).pixel - begin(cell);
        least = std::min(least, whole);
        most = std::max(most, whole);
    }
    if (most > least + 1 || mostPixels() > kMostPixels) return;
    count = all;
    steps = static_cast<unsigned>(std::min<std::size_t>(count, INT16_MAX));
    mAll.resize(3 * stride());
    const bool odd = least % 2 != 0;
    unsigned before = 0;  // what the cell before has left of its last pixel
    for (std::size_t cell = 0; cell < stride(); ++cell) {
        std::uint32_t* const to = &mAll[cell];
        if (cell >= count) {
            to[2 * stride()] = to[2 * stride() - 1];
            continue;
        }
        const CellEnd at = endOf(cell);
        const auto rest = static_cast<unsigned>(std::lround(at.rest * steps));
        deviation = std::max(deviation, std::fabs(at.rest - static_cast<double>(rest) / steps));
        to[0] = odd ? twoShares(before, steps) : twoShares(0, before);
        to[stride()] = at.pixel - begin(cell) > least ? twoShares(steps, steps - rest)
                                                      : twoShares(steps - rest, 0);
        to[2 * stride()] = static_cast<std::uint32_t>(begin(cell) + kFront - (odd ? 1 : 2));
        before = rest;
    }
}

[[gnu::cold]] void KeptLines::prepare(const DownsampleCells& cells, double factorY) {
    mWidth = cells.width;
    mShares = CellShares(cells);
    if (mShares.count == 0 || !(factorY <= kMostLines - 2)) return;
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
        const std::size_t stride = bytes + kAround;
        const std::size_t sums =
            static_cast<std::size_t>(channels) * (mShares.count + CellShares::kBehind);
        mBytes.reset(stride <= kMostBytes / mMost
                         ? new (std::nothrow) unsigned char[kAround + mMost * stride]()
                         : nullptr);
        mSums.reset(mBytes ? new (std::nothrow) float[sums]() : nullptr);
        if (!mSums) {
            mMost = 0;
            return false;
        }
        mChannels = channels;
        for (std::size_t i = 0; i < mMost; ++i) mPlaces[i] = &mBytes[kAround + i * stride];
    }
    unsigned char* const to = mPlaces[mLines.size()];
    std::memcpy(to, line, bytes);
    mLines.push_back({to, weight});
    return true;
}

void KeptLines::keepLast(double weight) {
    std::swap(mPlaces.front(), mPlaces[mLines.size() - 1]);
    mLines.assign(1, {mPlaces.front(), weight});
    if (mSummed != mPlaces.front()) mSummed = nullptr;
}

ColumnLines::ColumnLines(KeptLines& kept, const EstimateForm& form, const LinesAhead& next)
    : sums(kept.mSums.get()),
      last(kept.lines().front().bytes),
      count(kept.lines().size()),
      shares(kept.shares()),
      ahead(next) {
    const KeptLines::Line* parts[KeptLines::kMostParts] = {};
    const KeptLines::Line** part = parts;
    for (const KeptLines::Line& line : kept.lines()) {
        if (line.weight == 1)
            whole[wholes++] = line.bytes;
        else
            *part++ = &line;
    }
    const unsigned char* const summed = std::exchange(kept.mSummed, nullptr);
    if (parts[0] == nullptr) return;
    // A single one whose sums are not there yet is the last.
    const bool isSummed = parts[0]->bytes == summed;
    if (parts[1] == nullptr && !isSummed) std::swap(parts[0], parts[1]);
    if (parts[0] != nullptr) {
        if (!isSummed) ColumnLines(kept, *parts[0], form);
        firstWeight = static_cast<float>(parts[0]->weight);
    }
    if (parts[1] == nullptr) return;
    last = kept.mSummed = parts[1]->bytes;
    lastWeight = static_cast<float>(parts[1]->weight);
}

ColumnLines::ColumnLines(KeptLines& kept, const KeptLines::Line& alone, const EstimateForm& form)
    : sums(kept.mSums.get()), last(alone.bytes), count(1), shares(kept.shares()) {
    const std::size_t group = EstimateForm::cellsAtOnce(shares, kept.channels());
    float ignored[EstimateForm::kColumns];
    for (std::size_t cell = 0; cell < shares.count; cell += group)
        form.sums(*this, kept.channels(), cell, std::min(group, shares.count - cell), ignored);
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
//
// The two shares of a cell that are not whole deviate besides, in a mean of
// bytes by the more the narrower a cell is.
MeanBounds meanBounds(const KeptLines& kept, double area) {
    const CellShares& shares = kept.shares();
    const auto pixels = static_cast<double>(shares.mostPixels());
    double roundings = kRoundings + 2 + 2, weight = 0;
    for (const KeptLines::Line& line : kept.lines()) {
        roundings += line.weight == 1 ? 2 : pixels;
        weight += line.weight;
    }
    return {area * shares.steps, std::ldexp(1.01 * roundings, -24),
            std::ldexp(1, -16) + 2 * 255 * weight * shares.deviation / area};
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
