#include "geometry/point_runs.h"

#include "util/owned_path.h"

namespace Vaskel {

bool gWithHostRuns = true;

void setHostRuns(bool with) { gWithHostRuns = with; }

void appendPoints(Pemmit::Path* path, const WalkPoint* points, int count) {
    if (gWithHostRuns && &Pemmit::patrun != nullptr) {
        if (count > 0) Pemmit::patrun(path, points, count);
        return;
    }
    for (int i = 0; i < count; ++i) Pemmit::patlin(path, points[i].x, points[i].y);
}

Pemmit::Path* makeOutline(const WalkPoint* points, int count) {
    if (hostTakesOutlines()) return Pemmit::patnew(points, count);
    OwnedPath path(Pemmit::patbeg());
    appendPoints(path.get(), points, count);
    Pemmit::patendclo(path.get());
    return path.release();
}

bool RunWalk::gather(PointRun& run) {
    run = {mBatch, 1, 0};
    while (run.count < kBatch && mWalk.scanex(&mBatch[run.count].x, &mBatch[run.count].y) >= 0)
        ++run.count;
    return run.count > 0;
}

}  // namespace Vaskel
