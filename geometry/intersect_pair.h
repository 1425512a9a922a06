// Whether two segments of an outline cross: the rule on which every form of
// the self-intersection test rests.

#ifndef GEOMETRY_INTERSECT_PAIR_H
#define GEOMETRY_INTERSECT_PAIR_H

#include "geometry/intersect_outline.h"

namespace Vaskel::Intersect {

/// Whether segment one crosses segment two, in double precision. Segment one
/// is the one that the sweep enters, segment two an active one: the rule is not
/// symmetric, since where both meet at their ends the neighbour of segment one
/// is always the one at its first vertex. A meeting at the second vertex of
/// segment one is therefore judged by a neighbour that lies elsewhere. Callers
/// notice at outlines that meet at a vertex of each: some that only touch are
/// reported, some that pass are not, and both depend on the direction of the
/// walks. They depend on the children's order too, since of two vertices at one
/// place the first one's segments leave the sweep before the second one's enter
/// it. Tests: "intersect: a touch is judged by the neighbour at the first
/// vertex", "intersect: which child comes first can hide a pass at a vertex".
///
/// A neighbour without length, at a repeated point, lies on neither side of a
/// segment's inside: an outline that passes there is not reported. Where ends
/// meet it counts as pointing towards larger y. Test: "intersect: one contour",
/// the row of the repeated point.
///
/// Tools and documents have all these answers, so they stay.
bool pairCrosses(const Outline& outline, Index one, Index two);

}  // namespace Vaskel::Intersect

#endif
