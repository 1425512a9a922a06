// The edges between many points against the vertical ray from one point: what
// insidePath spends its time on.

#ifndef GEOMETRY_EDGE_RUN_H
#define GEOMETRY_EDGE_RUN_H

#include <span>

#include "geometry/edge_test.h"
#include "geometry/point_runs.h"

namespace Vaskel {

/// A way to test the edges from each point of a run to the next one.
struct EdgeRunForm {
    const char* name;
    /// Flips inside once for each edge that crosses the ray from (x, y); true,
    /// and inside has no meaning, when an edge holds the point.
    bool (*run)(int x, int y, const PointRun& points, bool& inside);
};

/// Edge by edge, by testEdge; faster forms are held to it.
extern const EdgeRunForm kEdgeRunPlain;

#if defined(__x86_64__)
/// 16 edges at a time, see edge_run_blocks.h, and 32.
extern const EdgeRunForm kEdgeRunSse2;
extern const EdgeRunForm kEdgeRunAvx2;
#endif

/// The forms that this CPU can run, the best one last.
std::span<const EdgeRunForm* const> edgeRunForms();

/// Makes every insidePath use form; null for the best one again. For tests.
void forceEdgeRunForm(const EdgeRunForm* form);
const EdgeRunForm& chosenEdgeRunForm();

}  // namespace Vaskel

#endif
