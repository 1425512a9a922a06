// Enlarging by repetition.

#include <algorithm>
#include <cmath>
#include <new>

#include "raster/lines_ahead.h"
#include "raster/replicate.h"
#include "vaskel/raster.h"

namespace Vaskel {
namespace {

constexpr double kHeadroom = 1.2;

// Lines longer than this are refused as memory that cannot be had.
constexpr double kMostPixels = 1e15;

}  // namespace

struct UpsamplerInside {
    Replication replication;
    LinesAhead ahead;
    TakenLines taken;
};

[[gnu::cold]] upsampler::upsampler(double inResolution, double outResolution, int width)
    : mFactor(outResolution / inResolution), mColumn(0), mWidth(width) {
    // From 2^52 on adding 1 to the row count would not end.
    if (!std::isfinite(mFactor) || mFactor <= 0 || mFactor >= 4503599627370496.0) mFactor = 0;
    mFraction = mFactor - std::trunc(mFactor);
    mWholeFactor = mFactor < 2147483647.0 ? static_cast<std::int32_t>(mFactor) : 2147483647;
    mRow = mFactor;
    if (mWidth > 0 && mWidth * mFactor > kMostPixels) throw std::bad_alloc();
    mPixels = mWidth > 0 ? static_cast<std::int64_t>(mWidth * mFactor) : 0;
    const auto bytes = static_cast<std::size_t>(static_cast<double>(mPixels) * 4 * kHeadroom);
    mLine = std::make_shared<unsigned char[]>(bytes);
    mSecondLine = std::make_shared<unsigned char[]>(bytes);
    mInside = std::make_shared<UpsamplerInside>(
        UpsamplerInside{Replication(replicationSources(mFactor, mWidth, mPixels),
                                    static_cast<std::size_t>(std::max(mWidth, 0))),
                        {},
                        {}});
}

[[gnu::cold]] upsampler::upsampler(const upsampler& other) = default;
[[gnu::cold]] upsampler& upsampler::operator=(const upsampler& other) = default;
[[gnu::cold]] upsampler::~upsampler() = default;

void upsampler::stuff(const unsigned int* line) {
    mRow -= mFactor;
    if (!(mRow < mFactor)) return;  // below factor 1: the line before stays
    mColumn = 0;
    mInside->ahead.took(line);
    chosenReplicateForm().run(mInside->replication, line, mInside->ahead.step(), mLine.get());
}

short upsampler::ready() const { return mFactor > mRow ? 1 : 0; }

void upsampler::get(unsigned int* out, int maxBytes) {
    mRow += 1;
    const std::int64_t bytes = std::min<std::int64_t>(maxBytes, 4 * mPixels);
    if (bytes > 0) mInside->taken.copy(out, mLine.get(), static_cast<std::size_t>(bytes));
}

int upsampler::resize(int n) const {
    if (mWidth < 0) return 0;
    const double size = n * mFactor;
    if (size >= 2147483647.0) return 2147483647;
    if (size <= -2147483648.0) return -2147483647 - 1;
    return static_cast<int>(size);
}

}  // namespace Vaskel
