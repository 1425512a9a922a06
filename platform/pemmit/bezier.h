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

    /// Flattens the segment: calls callback with context, unchanged, for each
    /// point of a polyline that stays within tolerance, in the units of the
    /// points, of the curve, and the curve of it. P0 is the polyline's
    /// beginning and is not delivered; every later point is, in order along the
    /// curve, and the last one is exactly P3, bit for bit.
    ///
    /// A straight segment may be P3 alone. At least one point is delivered, and
    /// their number is bounded whatever the input: a tolerance of 0 or below,
    /// or not a number, stands for the finest subdivision that the host makes,
    /// and with a coordinate that is not finite only the last point counts.
    ///
    /// The point handed over is valid during the call. The callback may throw,
    /// which ends the flattening. Keeps no state: safe on any thread.
    void cubfla(double tolerance, void (*callback)(void* context, const PointBase<double>* point),
                void* context) const;

    PointBase<double> p[4];
};

}  // namespace Pemmit

#endif
