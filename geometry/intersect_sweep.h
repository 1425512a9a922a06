// The self-intersection test in n log n: the plain sweep's answer and its calls
// of Orlune::cancel, from tests of neighbouring segments only.

#ifndef GEOMETRY_INTERSECT_SWEEP_H
#define GEOMETRY_INTERSECT_SWEEP_H

#include "geometry/intersect_outline.h"

namespace Vaskel::Intersect {

/// Whether sweepOrdered gives the plain sweep's answer for this outline: all
/// coordinates lie within -2^25 .. 2^25.
bool withinExactRange(const Outline& outline);

/// sweepPlain for outlines within the exact range.
int sweepOrdered(const Outline& outline);

/// The same with a first step of firstStep vertices, above 0, for tests: each
/// step sweeps anew over 8 times as many, and the system is asked in between.
int sweepInSteps(const Outline& outline, Index firstStep);

}  // namespace Vaskel::Intersect

#endif
