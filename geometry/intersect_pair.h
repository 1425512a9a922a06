// Whether two segments of an outline cross: the rule on which every form of
// the self-intersection test rests.

#ifndef GEOMETRY_INTERSECT_PAIR_H
#define GEOMETRY_INTERSECT_PAIR_H

#include "geometry/intersect_outline.h"

namespace Vaskel::Intersect {

/// Whether segment one crosses segment two, in double precision. Segment one
/// is the one that the sweep enters, segment two an active one: the rule is not
/// symmetric, since where both meet at their ends the neighbour of segment one
/// is always the one at its first vertex. A touch at the second vertex of
/// segment one is therefore judged by a neighbour that lies elsewhere, and the
/// answer for some outlines that only touch themselves at a vertex depends on
/// the direction of the walk. Tools and documents have these answers, so they
/// stay. Test: "intersect: a touch is judged by the neighbour at the first
/// vertex".
bool pairCrosses(const Outline& outline, Index one, Index two);

}  // namespace Vaskel::Intersect

#endif
