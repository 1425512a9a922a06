// Elliptical arcs of path data as curves.

#ifndef SAMPLES_PROOF_CHECK_SVG_ARC_H
#define SAMPLES_PROOF_CHECK_SVG_ARC_H

#include <vector>

#include "samples/proof/path_step.h"

namespace Proof {

/// The arguments of the arc command, SVG 1.1, section 8.3.8.
struct SvgArc {
    double rx, ry;
    double degrees;  // how far the ellipse is turned
    bool large, sweep;
    double x, y;  // where it ends
};

/// The arc from a point, as curves made by arccub. One without a radius is a
/// line, one to its beginning nothing. The last point is the one that the arc
/// states, so that an outline of arcs ends where it began.
std::vector<PathStep> arcSteps(double fromX, double fromY, const SvgArc& arc);

}  // namespace Proof

#endif
