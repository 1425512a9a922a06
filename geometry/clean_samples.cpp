#include "geometry/clean_samples.h"

namespace Vaskel {

void Samples::Axis::begin(std::int64_t d, std::int64_t m) {
    unit = d < 0 ? -1 : 1;
    sum = 0;
    if (m == 1) {
        whole = d;
        rest = 0;
        return;
    }
    const std::int64_t size = d * unit;  // at most 2^32 - 1
    // 32-bit division is several times as fast on many processors.
    if (static_cast<std::uint64_t>(size | m) <= UINT32_MAX) {
        whole = unit * (static_cast<std::uint32_t>(size) / static_cast<std::uint32_t>(m));
        rest = static_cast<std::uint32_t>(size) % static_cast<std::uint32_t>(m);
    } else {
        whole = unit * (size / m);
        rest = size % m;
    }
}

bool Samples::nextSegment() {
    int x, y;
    if (!mBegun) {
        if (mWalk.scanex(&x, &y) < 0) return false;
        mBegun = true;
        mX.at = x;
        mY.at = y;
        mCount = mLeft = 1;  // its Axis goes on by 0
        return true;
    }
    while (mWalk.scanex(&x, &y) >= 0) {
        const std::int64_t dx = x - mX.at;
        const std::int64_t dy = y - mY.at;
        const std::int64_t m = distanceRoot(dx, dy) / mStep;
        if (m == 0) continue;  // the next point is seen from the last sample too
        mX.begin(dx, m);
        mY.begin(dy, m);
        mCount = mLeft = m;
        return true;
    }
    return false;
}

}  // namespace Vaskel
