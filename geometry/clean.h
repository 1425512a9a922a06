// Path cleaning behind the exported calls.
//
// The process-wide state of cleaning is one CleanState object: what cleanpar
// has set, and the buffers that calls of clean use one after the other.

#ifndef GEOMETRY_CLEAN_H
#define GEOMETRY_CLEAN_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "geometry/clean_cones.h"
#include "geometry/clean_kernel.h"
#include "geometry/point_runs.h"
#include "platform/pemmit.h"
#include "util/owned_path.h"

namespace Vaskel {

using Sample = WalkPoint;

/// The buffers of the filter. They never hold all samples of a long outline.
struct CleanBuffers {
    std::vector<std::int32_t> x, y;    // the samples around the current outputs
    std::vector<std::int16_t> narrow;  // the same as filterBlockFast wants them
    std::vector<WalkPoint> out;
    // The first samples of a closed outline, which come again at its end.
    std::vector<std::int32_t> firstX, firstY;
};

struct CleanState {
    int order = 0;      // n; 0 or less switches filtering off
    int tolerance = 0;  // 0 switches simplification off
    int step = 0;       // resampling distance; below 1 counts as 1
    CleanKernel kernel;
    CleanBuffers buffers;
    ConeTable cones;
};

CleanState& cleanState();

/// Whether a path of this box is refused: a narrow but tall outline is, a wide
/// and flat one is not.
bool refusesBox(const Pemmit::Box& box, int size);

/// Whether the walk has too few points to be cleaned: fewer than 3 that differ
/// from the one before, or 4 when closed. Reads a few points only.
bool isTooShort(const Pemmit::Path* path);

/// clean in its plainest form, to which the shipping one is held: keeps all
/// samples, asks the platform for every quotient and root, and tests pending
/// steps one by one.
Pemmit::Path* cleanPlain(const Pemmit::Path* path, int size);

}  // namespace Vaskel

#endif
