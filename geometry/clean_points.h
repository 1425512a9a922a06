// The walked points of one outline, many at a time.

#ifndef GEOMETRY_CLEAN_POINTS_H
#define GEOMETRY_CLEAN_POINTS_H

#include <cstddef>
#include <cstdint>

#include "platform/pemmit.h"

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
        while (mCount < kBatch && mWalk.scanex(&mX[mCount], &mY[mCount]) >= 0) ++mCount;
    }

 private:
    static constexpr std::size_t kBatch = 256;

    Pemmit::scan mWalk;
    std::size_t mCount;
    std::int32_t mX[kBatch], mY[kBatch];
};

}  // namespace Vaskel

#endif
