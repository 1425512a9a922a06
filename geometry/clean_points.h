// The walked points of one outline, many at a time.

#ifndef GEOMETRY_CLEAN_POINTS_H
#define GEOMETRY_CLEAN_POINTS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "geometry/point_runs.h"

namespace Vaskel {

/// Reads a walk in batches. The first one stands ready from the start.
class WalkedPoints {
 public:
    explicit WalkedPoints(const Pemmit::Path* path) : mWalk(path, 0, -1) { refill(); }

    /// The current batch; with none there are no more points.
    const std::int32_t* x() const { return mX; }
    const std::int32_t* y() const { return mY; }
    std::size_t count() const { return mCount; }
    /// Whether other batches may follow.
    bool isFull() const { return mCount == kBatch; }

    /// Reads the next batch.
    void refill() {
        mCount = 0;
        while (mCount < kBatch) {
            if (mTaken == mRun.count) {
                mTaken = 0;
                if (!mWalk.next(mRun)) {
                    mRun.count = 0;
                    break;
                }
            }
            const auto left = static_cast<std::size_t>(mRun.count - mTaken);
            const auto count = static_cast<int>(std::min(left, kBatch - mCount));
            if (mRun.step > 0)
                take<1>(mRun.first + mTaken, count);
            else
                take<-1>(mRun.first - mTaken, count);
            mTaken += count;
            mCount += static_cast<std::size_t>(count);
        }
    }

 private:
    static constexpr std::size_t kBatch = 256;

    template <int step>
    void take(const WalkPoint* from, int count) {
        for (std::ptrdiff_t i = 0; i < count; ++i) {
            mX[mCount + static_cast<std::size_t>(i)] = from[i * step].x;
            mY[mCount + static_cast<std::size_t>(i)] = from[i * step].y;
        }
    }

    RunWalk mWalk;
    PointRun mRun{nullptr, 1, 0};
    int mTaken = 0;  // points of the run
    std::size_t mCount;
    std::int32_t mX[kBatch], mY[kBatch];
};

}  // namespace Vaskel

#endif
