// The source of samples: an outline's points at a uniform step.

#ifndef GEOMETRY_CLEAN_SAMPLES_H
#define GEOMETRY_CLEAN_SAMPLES_H

#include <cstddef>
#include <cstdint>

#include "geometry/walked_points.h"

namespace Vaskel {

/// Orlune::mulsqrt(dx, dx, dy, dy) for differences of coordinates, as a rule
/// without the call.
std::int64_t distanceRoot(std::int64_t dx, std::int64_t dy);

/// Turns the points of one walk into samples: the first point, and then for
/// every point that lies at least a step from the last sample as many as whole
/// steps fit in, evenly spaced, the last of them the point itself.
///
/// Steps below 1 count as 1. Takes all points from the current run on.
class Samples {
 public:
    Samples(WalkedPoints& points, int step) : mPoints(points), mStep(step < 1 ? 1 : step) {}

    /// Stores the next samples, at most room of them, and returns how many:
    /// fewer than room only when there are no more.
    std::size_t take(std::int32_t* x, std::int32_t* y, std::size_t room);

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
        void write(std::int32_t* out, std::size_t count, std::int64_t m);
    };

    bool nextSegment();
    std::size_t takeUpright(std::int32_t* x, std::int32_t* y, std::size_t room);

    WalkedPoints& mPoints;
    int mAt = 0;  // the next point of its run
    Axis mX, mY;
    std::int64_t mStep;
    std::int64_t mCount = 0;  // samples of the current segment
    std::int64_t mLeft = 0;   // those still to come
    bool mBegun = false;
};

}  // namespace Vaskel

#endif
