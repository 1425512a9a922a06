// Filtering the samples of an outline while they come in.

#ifndef GEOMETRY_CLEAN_FILTER_H
#define GEOMETRY_CLEAN_FILTER_H

#include "geometry/clean.h"
#include "geometry/clean_simplify.h"
#include "geometry/walked_points.h"

namespace Vaskel {

/// How many outputs are filtered at a time, and the room that buffers need for
/// that with state's order and kernel. Throws std::bad_alloc.
CleanBuffers makeBuffers(int order, const CleanKernel& kernel);

/// Filters a closed outline: around sample L, L + n, ... for N samples
/// floor(N / n) + 1 points, the samples going on periodically at both ends.
void filterClosed(WalkedPoints& points, CleanState& state, SimplifyFast& out);

/// Filters an open outline around samples 0, n, 2n, ... before the last one,
/// and then around the last one, which it returns. Beyond its ends the outline
/// goes on as its point reflection about the first and the last sample, so that
/// both come out unfiltered. There is a point.
Sample filterOpen(WalkedPoints& points, CleanState& state, SimplifyFast& out);

}  // namespace Vaskel

#endif
