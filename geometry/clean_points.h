// The walked points of one outline, run by run.

#ifndef GEOMETRY_CLEAN_POINTS_H
#define GEOMETRY_CLEAN_POINTS_H

#include "geometry/point_runs.h"

namespace Vaskel {

/// Reads a walk. The first run stands ready from the start.
class WalkedPoints {
 public:
    explicit WalkedPoints(const Pemmit::Path* path) : mWalk(path, 0, -1) { next(); }

    /// The current run; with a count of 0 there are no more points.
    const PointRun& run() const { return mRun; }
    void next() {
        if (!mWalk.next(mRun)) mRun = {nullptr, 1, 0};
    }

 private:
    RunWalk mWalk;
    PointRun mRun;
};

}  // namespace Vaskel

#endif
