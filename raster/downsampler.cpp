// The downsampler's lines: which input line completes an output line, and how
// that is taken.

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include "platform/orlune.h"
#include "raster/downsample_sums.h"
#include "util/narrow.h"
#include "vaskel/raster.h"

namespace Vaskel {
namespace {

// Keeps an exact quotient from being rounded up for its last bit.
constexpr double kGuard = 0.00001;

double roundedUp(double quotient) { return std::ceil(quotient - kGuard); }

// value / factor output pixels of an image's dimension, at least one.
double outputSize(std::uint32_t size, double factor) {
    return std::max(1.0, roundedUp(size / factor));
}

std::uint32_t asSize(double value) {
    return value >= 4294967295.0 ? 4294967295u : value > 0 ? static_cast<std::uint32_t>(value) : 0;
}

}  // namespace

struct DownsamplerInside {
    static bool isEmpty(const downsampler& d) { return d.mWidth == 0 || d.mHeight == 0; }

    // The output pixels of a line, n.
    static std::size_t outputWidth(const downsampler& d) {
        return isEmpty(d) ? 0 : static_cast<std::size_t>(outputSize(d.mWidth, d.mFactorX));
    }

    [[gnu::cold]] static void allocate(downsampler& d) {
        const std::size_t n = outputWidth(d);
        d.mLine = std::make_shared<unsigned char[]>(4 * n);
        d.mScratch = std::make_shared<unsigned char[]>(n + kPickRoom);
        // One cell more than pixels for the last pixel's rest, and one beyond.
        d.mSums = std::make_shared<DownsampleSums>(4 * (n + 2), *d.mCells, d.mFactorY);
    }

    static PackedLine packedLine(const DownsampleSums& sums, const unsigned char* line,
                                 int channels, double weight, double rest = 0) {
        const auto units = [&](double lines) {
            return static_cast<unsigned>(lines * sums.rule.unitsY);
        };
        return {line, channels, units(weight), units(rest), sums.ahead.step(), taker(sums)};
    }

    // Where the caller will take the next output line, if known.
    static std::uintptr_t taker(const DownsampleSums& sums) {
        return sums.outAhead.step() != 0 ? sums.outAhead.next() : 0;
    }

    // Keeps the line for later, where lines are inexact and sums are not begun.
    static bool keeps(downsampler& d, const unsigned char* line, int channels, double weight) {
        DownsampleSums& sums = *d.mSums;
        return chosenDownsampleForm().estimate && sums.held == sums.kNone &&
               sums.kept.keep(line, channels, weight);
    }

    // Adds the lines that are kept.
    static void settle(downsampler& d) {
        if (!d.mSums->kept.lines().empty()) addKept(d);
    }
    [[gnu::cold]] static void addKept(downsampler& d) {
        DownsampleSums& sums = *d.mSums;
        for (const KeptLines::Line& line : sums.kept.lines())
            add(d, line.bytes, sums.kept.channels(), line.weight);
        sums.kept.clear();
    }

    static void accumulate(downsampler& d, const unsigned char* line, int channels, double weight) {
        if (keeps(d, line, channels, weight)) return;
        settle(d);
        add(d, line, channels, weight);
    }

    static void add(downsampler& d, const unsigned char* line, int channels, double weight) {
        DownsampleSums& sums = *d.mSums;
        const DownsampleForm& form = chosenDownsampleForm();
        if (form.packed && sums.packs(channels, weight)) {
            const PackedLine packedOne = packedLine(sums, line, channels, weight);
            const bool first = sums.held == sums.kNone;
            sums.add(weight);
            sums.packedChannels = channels;
            if (first && sums.halves(channels, weight)) {
                form.packed->halved->halve(d.mCells->ends.size(), packedOne, sums.halved.data());
                sums.held = sums.kHalved;
                return;
            }
            sums.expand();
            const auto take = first ? form.packed->begin : form.packed->add;
            take(*d.mCells, sums.rule, packedOne, sums.packed.data());
            sums.held = sums.kPacked;
            return;
        }
        sums.unpack();
        sums.held = sums.kFloats;
        sums.used = std::max(sums.used, static_cast<std::size_t>(channels) * (outputWidth(d) + 1));
        const DownsampleLine toAdd{line, channels, weight, sums.add(weight)};
        form.accumulate(*d.mCells, toAdd, sums.values.data());
    }

    static void makeBytes(downsampler& d, int channels) {
        DownsampleSums& sums = *d.mSums;
        settle(d);
        sums.unpack();
        chosenDownsampleForm().means(
            {d.mFactorX * d.mFactorY, sums.exact() && sums.coarse}, sums.values.data(),
            outputWidth(d) * static_cast<std::size_t>(channels), d.mLine.get());
    }

    // Makes the bytes of the lines that are kept; false if too many are open.
    static bool estimateBytes(downsampler& d) {
        DownsampleSums& sums = *d.mSums;
        const EstimateForm& form = *chosenDownsampleForm().estimate;
        const std::size_t n = outputWidth(d),
                          channels = static_cast<std::size_t>(sums.kept.channels());
        const double area = d.mFactorX * d.mFactorY;
        const MeanBounds bounds = meanBounds(sums.kept, area);
        const ColumnLines lines(sums.kept, form, sums.ahead);
        sums.open.clear();
        const std::size_t group = EstimateForm::cellsAtOnce(lines.shares, sums.kept.channels());
        float estimates[EstimateForm::kColumns];
        for (std::size_t cell = 0; cell < n; cell += group) {
            const std::size_t cells = std::min(group, n - cell), place = cell * channels;
            std::fill_n(&estimates[cells * channels], EstimateForm::kSums, 0.0f);
            form.sums(lines, sums.kept.channels(), cell, cells, estimates);
            form.means(bounds, estimates, cells * channels, &d.mLine[place], place, sums.open);
        }
        if (sums.open.size() == sums.open.capacity()) return false;
        for (const std::uint32_t place : sums.open) {
            const float sum =
                ruleSum(*d.mCells, sums.kept, place / channels, static_cast<int>(place % channels));
            kDownsampleTable.means({area, false}, &sum, 1, &d.mLine[place]);
        }
        return true;
    }

    // The line completes an output line, whose bytes are made, and begins the
    // next one with the rest.
    static void complete(downsampler& d, const unsigned char* line, int channels, double weight) {
        DownsampleSums& sums = *d.mSums;
        const DownsampleForm& form = chosenDownsampleForm();
        const double rest = 1 - weight;
        widenPicks(d);
        if (keeps(d, line, channels, weight)) {
            if (estimateBytes(d)) {
                rest != 0 ? sums.kept.keepLast(rest) : sums.kept.clear();
                return;
            }
            makeBytes(d, channels);
        } else if (form.packed && sums.held != sums.kNone && sums.packs(channels, weight)) {
            const PackedLine last = packedLine(sums, line, channels, weight, rest);
            if (sums.halves(channels, weight)) {
                form.packed->halved->quarter(d.mCells->ends.size(), last, sums.halved.data(),
                                             d.mLine.get());
            } else {
                sums.expand();
                form.packed->finish(*d.mCells, sums.rule, last, sums.packed.data(), d.mLine.get());
            }
            sums.weight = rest;
            if (rest == 0) sums.held = sums.kNone;
            return;
        } else {
            accumulate(d, line, channels, weight);
            makeBytes(d, channels);
        }
        sums.clear();
        if (rest != 0) accumulate(d, line, channels, rest);
    }

    // From this line, which completes an output line, to the next one that does.
    static std::uintptr_t nextPicked(const downsampler& d) {
        const double lines = 2 * d.mFactorY - d.mRow;
        if (!(lines > 0 && lines < d.mHeight)) return 0;
        auto count = static_cast<std::uintptr_t>(lines);
        if (static_cast<double>(count) < lines) ++count;
        return d.mSums->ahead.step() * count;
    }

    static void pickLine(downsampler& d, const unsigned int* line) {
        chosenPickForm().pixels(*d.mPicks, reinterpret_cast<const unsigned char*>(line),
                                nextPicked(d), taker(*d.mSums), d.mLine.get());
        d.mSums->picksWait = false;
        d.mColumn = d.mPicks->column;
    }
    // One-byte pixels come to stand in slots of four bytes, which are made when
    // someone asks for more than their low bytes.
    static void pickLine(downsampler& d, const unsigned char* line) {
        DownsampleSums& sums = *d.mSums;
        chosenPickForm().bytes(*d.mPicks, line, nextPicked(d), sums.picks.data());
        sums.picksWait = true;
        if (d.mPicks->count != outputWidth(d)) widenPicks(d);
        d.mColumn = d.mPicks->column;
    }

    static void widenPicks(const downsampler& d) {
        DownsampleSums& sums = *d.mSums;
        if (sums.picksWait)
            chosenPickForm().widen(sums.picks.data(), d.mPicks->count, d.mLine.get());
        sums.picksWait = false;
    }

    template <class Pixel>
    static void stuff(downsampler& d, const Pixel* line) {
        if (isEmpty(d)) return;
        constexpr int channels = sizeof(Pixel);
        const auto* bytes = reinterpret_cast<const unsigned char*>(line);
        d.mRow += 1;
        d.mSums->ahead.took(line);
        if (!d.mFiltering) {
            if (d.mRow >= d.mFactorY) pickLine(d, line);
            return;
        }
        if (d.mRow < d.mFactorY) {
            accumulate(d, bytes, channels, 1);
            return;
        }
        // get takes the completed lines off the row count.
        complete(d, bytes, channels, 1 - (d.mRow - d.mFactorY));
    }

    // The low bytes of the picked slots.
    static void copySlots(const downsampler& d, unsigned char* line) {
        if (d.mSums->picksWait)
            std::copy_n(d.mSums->picks.data(), outputWidth(d), line);
        else
            chosenPickForm().narrow(d.mLine.get(), outputWidth(d), line);
    }
};

[[gnu::cold]] downsampler::downsampler(double inResolution, double outResolution,
                                       unsigned int width, unsigned int height)
    : mColumn(0), mRow(0), mWidth(width), mHeight(height), mFiltering(true) {
    double factor = inResolution / outResolution;
    if (!std::isfinite(factor) || factor < 1) factor = 1;
    const bool empty = width == 0 || height == 0;
    mFactorX = empty ? factor : width / outputSize(width, factor);
    // From the factor as it has become, so that both directions agree.
    mFactorY = empty ? factor : height / outputSize(height, mFactorX);
    mStepX = asSize(mFactorX);
    mStepY = asSize(mFactorY);
    mFractionX = mFactorX - std::trunc(mFactorX);
    mFractionY = mFactorY - std::trunc(mFactorY);
    mCells = std::make_shared<const DownsampleCells>(mFactorX, empty ? 0 : width);
    mPicks = std::make_shared<const DownsamplePicks>(mFactorX, mStepX, empty ? 0 : width,
                                                     DownsamplerInside::outputWidth(*this));
    DownsamplerInside::allocate(*this);
}

[[gnu::cold]] downsampler::downsampler(const downsampler& other)
    : mFactorX(other.mFactorX),
      mFractionX(other.mFractionX),
      mFactorY(other.mFactorY),
      mFractionY(other.mFractionY),
      mColumn(0),
      mRow(0),
      mWidth(other.mWidth),
      mStepX(other.mStepX),
      mHeight(other.mHeight),
      mStepY(other.mStepY),
      mFiltering(other.mFiltering),
      mCells(other.mCells),
      mPicks(other.mPicks) {
    DownsamplerInside::allocate(*this);
}

[[gnu::cold]] downsampler& downsampler::operator=(const downsampler& other) = default;
[[gnu::cold]] downsampler::~downsampler() = default;

downsampler* downsampler::clone() const {
    try {
        return new downsampler(*this);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void downsampler::stuff(const unsigned char* line) { DownsamplerInside::stuff(*this, line); }
void downsampler::stuff(const unsigned int* line) { DownsamplerInside::stuff(*this, line); }

short downsampler::ready() const {
    return !DownsamplerInside::isEmpty(*this) && mRow >= mFactorY ? 1 : 0;
}

short downsampler::notforawhile() const { return mRow < mFactorY - 1 ? 1 : 0; }

void downsampler::get(unsigned char* line) {
    if (!ready()) return;
    mRow -= mFactorY;
    if (!mFiltering) return DownsamplerInside::copySlots(*this, line);
    DownsamplerInside::widenPicks(*this);
    mSums->outAhead.took(line);
    std::memcpy(line, mLine.get(), DownsamplerInside::outputWidth(*this));
}

void downsampler::get(unsigned int* line) {
    if (!ready()) return;
    mRow -= mFactorY;
    DownsamplerInside::widenPicks(*this);
    mSums->outAhead.took(line);
    std::memcpy(line, mLine.get(), 4 * DownsamplerInside::outputWidth(*this));
}

[[gnu::cold]] void downsampler::getlastline(unsigned char* line) {
    const std::size_t n = DownsamplerInside::outputWidth(*this);
    if (n == 0) return;
    if (!mFiltering) {
        DownsamplerInside::copySlots(*this, line);
        return;
    }
    DownsamplerInside::widenPicks(*this);
    DownsamplerInside::settle(*this);
    mSums->unpack();
    const double cell = mFactorX * mFactorY;
    for (std::size_t i = 0; i < n; ++i) mLine[i] = clamp8(Orlune::iround(mSums->values[i] / cell));
    std::memcpy(line, mLine.get(), n);
}

[[gnu::cold]] void downsampler::getlastline(unsigned int* line) {
    const std::size_t bytes = 4 * DownsamplerInside::outputWidth(*this);
    if (bytes == 0) return;
    DownsamplerInside::widenPicks(*this);
    if (mFiltering) DownsamplerInside::makeBytes(*this, 4);
    std::memcpy(line, mLine.get(), bytes);
}

void downsampler::adjust(unsigned char* line) const { adjust(line, line); }

void downsampler::adjust(const unsigned char* line, unsigned char* out) const {
    const std::size_t n = DownsamplerInside::outputWidth(*this);
    if (n == 0) return;
    chosenPickForm().bytes(*mPicks, line, 0, mScratch.get());
    std::memcpy(out, mScratch.get(), n);
}

unsigned int downsampler::resize(unsigned int v) const { return asSize(roundedUp(v / mFactorX)); }
unsigned int downsampler::resizeY(unsigned int v) const { return asSize(roundedUp(v / mFactorY)); }
double downsampler::factor() const { return mFactorX; }

void downsampler::setFiltering(bool filtering) { mFiltering = filtering; }
bool downsampler::isFiltering() const { return mFiltering; }

}  // namespace Vaskel
