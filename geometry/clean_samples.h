// The source of samples: an outline's points at a uniform step.

#ifndef GEOMETRY_CLEAN_SAMPLES_H
#define GEOMETRY_CLEAN_SAMPLES_H

#include <cmath>
#include <cstdint>

#include "platform/orlune.h"
#include "platform/pemmit.h"

namespace Vaskel {

/// Orlune::mulsqrt(dx, dx, dy, dy) for differences of coordinates, as a rule
/// without the call.
///
/// Below 2^25 the sum v of squares is below 2^52, exact as a double, and so is
/// the truncated root: were the rounded root of v to reach the next integer k,
/// then v <= k^2 - 1, whose root lies 1 / 2k > 2^-27 below k, more than the
/// half unit in the last place (2^-28 at most) by which rounding moves it.
inline std::int64_t distanceRoot(std::int64_t dx, std::int64_t dy) {
    constexpr std::int64_t kSmall = std::int64_t{1} << 25;
    if (dx > -kSmall && dx < kSmall && dy > -kSmall && dy < kSmall)
        return static_cast<std::int64_t>(std::sqrt(static_cast<double>(dx * dx + dy * dy)));
    return Orlune::mulsqrt(dx, dx, dy, dy);
}

/// Walks one outline and delivers its samples: the first point, and then for
/// every point that lies at least a step from the last sample as many as whole
/// steps fit in, evenly spaced, the last of them the point itself.
///
/// Steps below 1 count as 1. Allocates what Pemmit::scan does.
class Samples {
 public:
    Samples(const Pemmit::Path* path, int step) : mWalk(path, 0, -1), mStep(step < 1 ? 1 : step) {}

    /// Stores the next sample and returns true; returns false when there is
    /// none, now and later.
    bool next(std::int32_t* x, std::int32_t* y) {
        if (mLeft == 0 && !nextSegment()) return false;
        --mLeft;
        *x = mX.next(mCount);
        *y = mY.next(mCount);
        return true;
    }

 private:
    // One coordinate of the samples start + k d / m, k = 1 to m, quotients
    // truncated towards zero as Orlune::muldiv does. It keeps the quotient of
    // |d| k by m and its remainder, which grow by those of |d| by m.
    struct Axis {
        std::int64_t at = 0;
        std::int64_t whole = 0;  // sign * quotient of |d| by m
        std::int64_t unit = 1;   // the sign of d
        std::int64_t rest = 0;   // the remainder of |d| by m
        std::int64_t sum = 0;    // the remainder of |d| k by m

        void begin(std::int64_t d, std::int64_t m);
        std::int32_t next(std::int64_t m) {
            at += whole;
            sum += rest;
            if (sum >= m) {
                sum -= m;
                at += unit;
            }
            return static_cast<std::int32_t>(at);  // between two points of the outline
        }
    };

    bool nextSegment();

    Pemmit::scan mWalk;
    Axis mX, mY;
    std::int64_t mStep;
    std::int64_t mCount = 0;  // samples of the current segment
    std::int64_t mLeft = 0;   // those still to come
    bool mBegun = false;
};

}  // namespace Vaskel

#endif
