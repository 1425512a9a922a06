// One edge against the vertical ray from a point towards decreasing y: the rule
// of insidePath and of everything that has to agree with it.

#ifndef GEOMETRY_EDGE_TEST_H
#define GEOMETRY_EDGE_TEST_H

#include "geometry/products.h"

namespace Vaskel {

enum class EdgeAnswer { kMisses, kCrosses, kHoldsPoint };

inline bool between(int value, int a, int b) {
    return (a <= value && value <= b) || (b <= value && value <= a);
}

/// For an edge in whose half-open x span x lies, and of whose ends not both lie
/// below y nor both above: below 0 when it crosses the ray, 0 when it holds the
/// point.
inline int sideOfEdge(int x, int y, int px, int py, int cx, int cy) {
    const int s = compareProducts(difference(x, px), difference(cy, py), difference(y, py),
                                  difference(cx, px));
    return cx < px ? -s : s;
}

/// The edge from (px, py) to (cx, cy) against the ray from (x, y).
inline EdgeAnswer testEdge(int x, int y, int px, int py, int cx, int cy) {
    if (px == x && cx == x && between(y, py, cy)) return EdgeAnswer::kHoldsPoint;
    // Half-open, so that a ray through a vertex meets one of its two edges when
    // the outline goes on to the other side, and none or both when it turns.
    if ((px > x) == (cx > x)) return EdgeAnswer::kMisses;
    if (py < y && cy < y) return EdgeAnswer::kCrosses;
    if (py > y && cy > y) return EdgeAnswer::kMisses;
    const int s = sideOfEdge(x, y, px, py, cx, cy);
    if (s == 0) return EdgeAnswer::kHoldsPoint;
    return s < 0 ? EdgeAnswer::kCrosses : EdgeAnswer::kMisses;
}

}  // namespace Vaskel

#endif
