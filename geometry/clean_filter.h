// Filtering the samples of an outline while they come in.

#ifndef GEOMETRY_CLEAN_FILTER_H
#define GEOMETRY_CLEAN_FILTER_H

#include "geometry/clean.h"
#include "geometry/clean_samples.h"
#include "geometry/clean_simplify.h"

namespace Vaskel {

/// A point of whole distances.
struct Sample {
    std::int32_t x, y;
};

/// Filters a closed outline: around sample L, L + n, ... for N samples
/// floor(N / n) + 1 points, the samples going on periodically at both ends.
void filterClosed(const Pemmit::Path* path, const CleanParameters& parameters, SimplifyFast& out);

/// Filters an open outline around samples 0, n, 2n, ... before the last one,
/// and then around the last one, which it returns. Beyond its ends the outline
/// goes on as its point reflection about the first and the last sample, so that
/// both come out unfiltered. The outline has a point.
Sample filterOpen(const Pemmit::Path* path, const CleanParameters& parameters, SimplifyFast& out);

}  // namespace Vaskel

#endif
