// Circular arcs by way of one cubic Bezier segment.
//
// The handles of the best one-segment approximation of an arc of angle a are
// (4/3) tan(a / 4) radii long. With k = 1 / (2 cos(a / 2)), which follows from
// the lengths of the offsets and of their sum, and t = cot(a / 2), signed,
// that length is t * (8/3) * (k - 1/2), without a trigonometric function.

#include <cmath>
#include <cstdint>
#include <limits>

#include "platform/pemmit.h"
#include "vaskel/geometry.h"

namespace Vaskel {
namespace {

// Truncated towards zero; saturating, 0 for not-a-number.
std::int64_t truncated(double value) {
    constexpr int lowest = std::numeric_limits<int>::min();
    constexpr int highest = std::numeric_limits<int>::max();
    if (value != value) return 0;
    if (value <= lowest) return lowest;
    if (value >= highest) return highest;
    return static_cast<int>(value);
}

std::int64_t magnitude(std::int64_t value) { return value < 0 ? -value : value; }

}  // namespace

void arccub(const arc& arc, Pemmit::bezier& bezier) {
    const double cx = arc.centreX, cy = arc.centreY;
    const double sx = arc.startX, sy = arc.startY;
    const double ex = arc.endX, ey = arc.endY;
    const double mx = sx + ex, my = sy + ey;
    const double k = std::sqrt((sx * sx + sy * sy) / (mx * mx + my * my));

    // Whole units, not the exact differences: documents hold coordinates in
    // whole units, where the two are the same, and stored arcs that are not
    // keep their handles. The larger divisor, du on a tie.
    const std::int64_t du = truncated(ex - sx);
    const std::int64_t dv = truncated(sy - ey);
    const double t =
        magnitude(du) < magnitude(dv) ? mx / static_cast<double>(dv) : my / static_cast<double>(du);
    const double h = t * 2.6666666666666665 * (k - 0.5);

    bezier.p[0] = {cx + sx, cy + sy};
    bezier.p[1] = {cx + sx + h * sy, cy + sy - h * sx};
    bezier.p[2] = {cx + ex - h * ey, cy + ey + h * ex};
    bezier.p[3] = {cx + ex, cy + ey};
}

void arcfla(const arc* arc, double tolerance,
            void (*callback)(void* context, const Pemmit::PointBase<double>* point),
            void* context) {
    const double dx = arc->startX - arc->endX;
    const double dy = arc->startY - arc->endY;
    if (16 * (tolerance * tolerance) > dx * dx + dy * dy) return;
    Pemmit::bezier bezier;
    arccub(*arc, bezier);
    bezier.cubfla(tolerance, callback, context);
}

}  // namespace Vaskel
