// Cleaning an outline that is not a path yet, for the tracer.

#ifndef UTIL_CLEAN_POINTS_H
#define UTIL_CLEAN_POINTS_H

#include "platform/pemmit.h"

namespace Vaskel {

/// What Vaskel::clean makes of a closed path of these points that it does not
/// refuse for its size. There are count points, at least 1, side by side, and
/// behind them the first one once more. Throws std::bad_alloc.
Pemmit::Path* cleanPoints(const Pemmit::PointBase<int>* points, int count);

}  // namespace Vaskel

#endif
