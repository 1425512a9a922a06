#ifndef GEOMETRY_SWEEP_SORT_H
#define GEOMETRY_SWEEP_SORT_H

#include <vector>

#include "geometry/intersect_outline.h"

namespace Vaskel::Intersect {

/// sweepOrder in linear time: the vertices' numbers by x, then y, those at one
/// place in walk order. Coordinates lie within -2^25 .. 2^25.
std::vector<Index> sortedForSweep(const std::vector<Vertex>& vertices);

}  // namespace Vaskel::Intersect

#endif
