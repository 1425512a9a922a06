// The quick proof that an outline does not even touch itself.

#ifndef GEOMETRY_INTERSECT_SIMPLE_H
#define GEOMETRY_INTERSECT_SIMPLE_H

#include "geometry/intersect_outline.h"

namespace Vaskel::Intersect {

/// True when no two segments share a point, but for neighbours the vertex
/// between them; then sweepPlain gives 0. False when that could not be shown:
/// something touches, is repeated or lies outside the exact range. Asks nobody.
/// Throws std::bad_alloc.
bool isSurelySimple(const WalkedOutline& outline);

}  // namespace Vaskel::Intersect

#endif
