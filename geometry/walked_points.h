// The walked points of one outline, run by run.

#ifndef GEOMETRY_WALKED_POINTS_H
#define GEOMETRY_WALKED_POINTS_H

#include "geometry/point_runs.h"

namespace Vaskel {

/// Reads a walk, or points that stand for one. The first run stands ready from
/// the start.
class WalkedPoints {
 public:
    explicit WalkedPoints(RunWalk& walk) : mWalk(&walk) { next(); }
    explicit WalkedPoints(const PointRun& all) : mWalk(nullptr), mRun(all) {}

    /// The current run; with a count of 0 there are no more points.
    const PointRun& run() const { return mRun; }
    void next() {
        if (!mWalk || !mWalk->next(mRun)) mRun = {nullptr, 1, 0};
    }

 private:
    RunWalk* mWalk;
    PointRun mRun;
};

}  // namespace Vaskel

#endif
