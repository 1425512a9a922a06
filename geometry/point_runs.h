// A walk's points in stretches of memory, however the host delivers them.

#ifndef GEOMETRY_POINT_RUNS_H
#define GEOMETRY_POINT_RUNS_H

#include <cstddef>

#include "platform/pemmit.h"

namespace Vaskel {

using WalkPoint = Pemmit::PointBase<int>;

/// count points, at least 1; the i-th is first[i * step], step being 1 or -1.
struct PointRun {
    const WalkPoint* first;
    int step;
    int count;

    const WalkPoint& operator[](int i) const { return first[std::ptrdiff_t{i} * step]; }
};

/// False while a test does without the host's optional calls.
extern bool gWithHostRuns;

/// Whether walks are read by Pemmit::scan::scarun: true where the host has it.
inline bool usesHostRuns() { return &Pemmit::scan::scarun != nullptr && gWithHostRuns; }

/// For tests: without, points are asked for and appended one by one whatever
/// the host has. With changes nothing where it has none.
void setHostRuns(bool with);

/// Appends count points to a path, as Pemmit::patlin does one by one.
void appendPoints(Pemmit::Path* path, const WalkPoint* points, int count);

/// Whether the host takes whole outlines: it has Pemmit::patnew.
inline bool hostTakesOutlines() { return &Pemmit::patnew != nullptr && gWithHostRuns; }

/// A closed path of count points, at least 1. Throws std::bad_alloc.
Pemmit::Path* makeOutline(const WalkPoint* points, int count);

/// A walk over a contour's points, or a path's.
class RunWalk {
 public:
    RunWalk(const Pemmit::Object* object, int direction, int start)
        : mWalk(object, direction, start) {}

    /// The next points; false when there are no more. The run before is no
    /// longer valid.
    bool next(PointRun& run) {
        if (usesHostRuns()) {
            run.count = Pemmit::scan::scarun(&mWalk, &run.first, &run.step);
            return run.count > 0;
        }
        return gather(run);
    }

 private:
    static constexpr int kBatch = 128;

    bool gather(PointRun& run);

    Pemmit::scan mWalk;
    WalkPoint mBatch[kBatch];  // where the host delivers points one by one
};

}  // namespace Vaskel

#endif
