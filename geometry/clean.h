// Path cleaning behind the exported calls.
//
// The process-wide state of cleaning is the one CleanParameters object that
// cleanParameters() returns; all that a call of clean needs besides lives in
// that call.

#ifndef GEOMETRY_CLEAN_H
#define GEOMETRY_CLEAN_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/pemmit.h"

namespace Vaskel {

struct CleanParameters {
    int order = 0;      // n; 0 or less switches filtering off
    int tolerance = 0;  // 0 switches simplification off
    int step = 0;       // resampling distance; below 1 counts as 1
    /// The innermost reach weights of the filter, outermost first: the outer
    /// ones are 0 as far as they are left out. At least 1 when order is.
    std::int64_t reach = 0;
    std::unique_ptr<std::int32_t[]> weights;
};

const CleanParameters& cleanParameters();

/// Whether cleaning hands the points of a straight-edged closed outline on as
/// they are.
bool cleaningIsOff();

/// Owns a path under construction or one that is to go.
struct PathRemover {
    void operator()(Pemmit::Path* path) const { Pemmit::objrem(path); }
};
using OwnedPath = std::unique_ptr<Pemmit::Path, PathRemover>;

/// Step 1 of cleaning: whether a path of this box is refused. A narrow but
/// tall outline is, a wide and flat one is not.
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
