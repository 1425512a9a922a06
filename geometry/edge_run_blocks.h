// The edges of a block of points, sorted out by one bit a point.
//
// testEdge looks at an edge when x lies in its half-open span, which is when
// one end is right of x and the other is not, or when both ends are at x. Of
// those with an end on each side, one with both ends below y crosses and one
// with both above does not. So bits tell all but the edges near the point, which
// are tested as testEdge does, in the direction of the walk. The order of the
// edges plays no part: the answer is a parity, or that some edge holds the
// point.

#ifndef GEOMETRY_EDGE_RUN_BLOCKS_H
#define GEOMETRY_EDGE_RUN_BLOCKS_H

#include <cstdint>

#include "geometry/edge_test.h"
#include "geometry/point_runs.h"

namespace Vaskel {

/// Bit i tells of point i of a block.
using PointBits = std::uint32_t;

/// The points of a run by ascending address, whichever way they are walked.
struct EdgeBlocks {
    int x, y;
    const WalkPoint* points;
    int count;
    bool backward;

    EdgeBlocks(int px, int py, const PointRun& run)
        : x(px),
          y(py),
          points(run.step > 0 ? run.first : run.first - (run.count - 1)),
          count(run.count),
          backward(run.step < 0) {}

    EdgeAnswer test(int i) const {  // of the edge between points i - 1 and i
        const WalkPoint &a = points[i - 1], &b = points[i];
        return backward ? testEdge(x, y, b.x, b.y, a.x, a.y) : testEdge(x, y, a.x, a.y, b.x, b.y);
    }

    /// Edges one by one, those between points begin - 1 .. end - 1.
    bool testEach(int begin, int end, bool& inside) const {
        for (int i = begin; i < end; ++i) {
            const EdgeAnswer answer = test(i);
            if (answer == EdgeAnswer::kHoldsPoint) return true;
            if (answer == EdgeAnswer::kCrosses) inside = !inside;
        }
        return false;
    }

    /// The edges whose bits are set in near, bit 0 being that which ends at
    /// point begin: none is told by the heights of its ends.
    bool testSides(int begin, PointBits near, bool& inside) const {
        for (; near != 0; near &= near - 1) {
            const int i = begin + __builtin_ctz(near);
            const WalkPoint& from = points[backward ? i : i - 1];
            const WalkPoint& to = points[backward ? i - 1 : i];
            const int side = sideOfEdge(x, y, from.x, from.y, to.x, to.y);
            if (side == 0) return true;
            inside ^= side < 0;  // as often as not: no branch to guess
        }
        return false;
    }

    /// Upright edges at x, which hold the point or do nothing.
    bool testUprights(int begin, PointBits upright) const {
        for (; upright != 0; upright &= upright - 1)
            if (test(begin + __builtin_ctz(upright)) == EdgeAnswer::kHoldsPoint) return true;
        return false;
    }

    /// The bit of each point's predecessor, that of point begin - 1 given.
    static PointBits before(PointBits bits, bool first) {
        return bits << 1 | static_cast<PointBits>(first);
    }

    /// Counts the edges of a block from point begin on that cross by the heights
    /// of their ends; returns those of the spanned ones that these do not tell.
    PointBits countFar(int begin, PointBits spanned, PointBits below, PointBits above,
                       bool& inside) const {
        const int lastY = points[begin - 1].y;
        const PointBits bothBelow = below & before(below, lastY < y);
        const PointBits bothAbove = above & before(above, lastY > y);
        inside ^= __builtin_parity(spanned & bothBelow) != 0;
        return spanned & ~(bothBelow | bothAbove);
    }
};

}  // namespace Vaskel

#endif
