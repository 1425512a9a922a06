#include "geometry/point_runs.h"

namespace Vaskel {
namespace {

bool hostHasRuns() { return &Pemmit::scan::scarun != nullptr; }

bool gWithRuns = true;

}  // namespace

bool usesHostRuns() { return gWithRuns && hostHasRuns(); }

void setHostRuns(bool with) { gWithRuns = with; }

bool RunWalk::gather(PointRun& run) {
    run = {mBatch, 1, 0};
    while (run.count < kBatch && mWalk.scanex(&mBatch[run.count].x, &mBatch[run.count].y) >= 0)
        ++run.count;
    return run.count > 0;
}

}  // namespace Vaskel
