#ifndef GEOMETRY_INTERSECT_PLAIN_H
#define GEOMETRY_INTERSECT_PLAIN_H

#include <cstddef>

#include "geometry/intersect_outline.h"

namespace Vaskel::Intersect {

/// The vertices' numbers in sweep order; those at one place in walk order.
std::vector<Index> sweepOrder(const Outline& outline);

/// The sweep as it is defined: every entering segment against every active
/// one, in the order in which they became active. Quadratic in the number of
/// segments that are active at a time. Calls Orlune::cancel(0, 0) before every
/// 200th vertex. Returns 1 or 0.
int sweepPlain(const Outline& outline);

/// The calls of Orlune::cancel that sweepPlain makes when it comes to the end.
void askWholeSweep(std::size_t vertices);

}  // namespace Vaskel::Intersect

#endif
