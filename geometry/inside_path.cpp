// Point in path: a vertical ray from the point towards decreasing y, and an
// inside flag that every crossed edge flips.

#include "geometry/edge_run.h"
#include "geometry/edge_test.h"
#include "geometry/point_runs.h"
#include "platform/pemmit.h"
#include "vaskel/geometry.h"

namespace Vaskel {
namespace {

// A contour wholly on the ray's side: the parity of its crossings with the
// vertical line through x follows from its two ends.
bool endsLieOnBothSides(int x, const Pemmit::Object* contour) {
    int firstX = 0, lastX = 0, unusedY = 0;
    Pemmit::scan forward(contour, 0, -1);
    if (forward.scanex(&firstX, &unusedY) < 0) return false;
    forward.scaend();
    Pemmit::scan backward(contour, 1, -1);
    if (backward.scanex(&lastX, &unusedY) < 0) return false;
    return (firstX > x) != (lastX > x);
}

// Flips inside at every crossing; true when the point lies on an edge.
bool walkContour(int x, int y, const Pemmit::Object* contour, const EdgeRunForm& edges,
                 bool& inside) {
    RunWalk walk(contour, 0, -1);
    PointRun run;
    if (!walk.next(run)) return false;
    for (;;) {
        if (edges.run(x, y, run, inside)) return true;
        const WalkPoint last = run[run.count - 1];
        if (!walk.next(run)) return false;
        const EdgeAnswer between = testEdge(x, y, last.x, last.y, run[0].x, run[0].y);
        if (between == EdgeAnswer::kHoldsPoint) return true;
        if (between == EdgeAnswer::kCrosses) inside = !inside;
    }
}

}  // namespace

bool insidePath(int x, int y, const Pemmit::Path* path) {
    if (!path) return false;
    const Pemmit::Box& box = path->box;
    if (x < box.minX || x > box.maxX || y < box.minY || y > box.maxY) return false;

    const EdgeRunForm& edges = chosenEdgeRunForm();
    bool inside = false;
    Pemmit::queryseq contours;
    const Pemmit::Object* contour = contours.quebeg(path, nullptr);
    const bool isList = (path->flags & Pemmit::kFlagChildren) != 0;
    // A contour without points delivers none and flips nothing, whatever its
    // box holds.
    for (; contour; contour = isList ? contour->next : nullptr) {
        const Pemmit::Box& own = contour->box;
        if (x < own.minX || x > own.maxX) continue;
        if (y > own.maxY) {
            if (endsLieOnBothSides(x, contour)) inside = !inside;
        } else if (y >= own.minY) {
            if (walkContour(x, y, contour, edges, inside)) return true;
        }
    }
    return inside;
}

}  // namespace Vaskel
