// Pemmit: points and the cubic Bezier segment.

#ifndef PLATFORM_PEMMIT_BEZIER_H
#define PLATFORM_PEMMIT_BEZIER_H

#include "platform/export.h"

namespace Pemmit {

/// A point; two numbers side by side.
template <class T>
struct PointBase {
    T x;
    T y;
};

/// A cubic Bezier segment: eight doubles side by side, P0 to P3, each x then
/// y. Engines construct one and write its points.
class PLATFORM_API bezier {
 public:
    /// All points at (0, 0).
    bezier();

    /// Flattens the segment: calls callback with context, unchanged, and each
    /// point of a polyline that stays within tolerance of the curve. P0 is not
    /// delivered, every later point is, and the last one is exactly P3.
    ///
    /// Ends for every input, with a bounded number of points: a tolerance of 0
    /// or below, or not a number, means the finest subdivision, and coordinates
    /// that are not finite are delivered as they come out. The point is valid
    /// during the call only. The callback may throw.
    void cubfla(double tolerance, void (*callback)(void* context, const PointBase<double>* point),
                void* context) const;

    PointBase<double> p[4];
};

}  // namespace Pemmit

#endif
