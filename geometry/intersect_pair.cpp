#include "geometry/intersect_pair.h"

#include <algorithm>

#include "util/libm.h"

namespace Vaskel::Intersect {
namespace {

struct Ends {
    double ax, ay, bx, by;

    Ends(const Outline& outline, Index segment) {
        const Segment& s = outline.segment(segment);
        const Vertex& a = outline.vertex(s.first);
        const Vertex& b = outline.vertex(s.second);
        ax = a.x;
        ay = a.y;
        bx = b.x;
        by = b.y;
    }

    // The line's equation: 0 on the line, of different signs on its sides.
    double line(double x, double y) const {
        return (ay - by) * x + (bx - ax) * y + (by * ax - bx * ay);
    }
};

// Whether two ranges, each given by its ends in any order, share more than a
// point.
bool overlap(double a1, double b1, double a2, double b2) {
    return std::max(a2, b2) > std::min(a1, b1) && std::max(a1, b1) > std::min(a2, b2);
}

bool parallelCrosses(const Ends& one, const Ends& two) {
    if (one.ax == one.bx && one.ax == two.ax && one.ax == two.bx)
        return overlap(one.ay, one.by, two.ay, two.by);
    if (!(one.line(two.ax, two.ay) == 0)) return false;
    return overlap(one.ax, one.bx, two.ax, two.bx);
}

// One of the two outlines ends a segment, toucher, at vertex in the interior of
// touched. They cross when the outline goes on to the other side.
bool passesThrough(const Outline& outline, const Ends& touched, Index toucher, Index vertex) {
    const Index neighbour = outline.otherSegment(vertex, toucher);
    if (neighbour == kNone) return false;
    const Vertex& f = outline.vertex(outline.farEnd(neighbour, vertex));
    const Vertex& q = outline.vertex(outline.farEnd(toucher, vertex));
    return touched.line(f.x, f.y) * touched.line(q.x, q.y) < 0;
}

double angleOf(const Vertex& from, const Vertex& to) {
    return libm::atan2(static_cast<double>(to.x) - from.x, static_cast<double>(to.y) - from.y);
}

double relativeTo(double base, double angle) {
    const double relative = angle - base;
    return relative < 0 ? relative + 6.2831853 : relative;
}

// Both segments end where they meet: at the first (false) or second (true)
// vertex of each.
bool passesAtVertex(const Outline& outline, Index one, bool secondOfOne, Index two,
                    bool secondOfTwo) {
    const Segment& s1 = outline.segment(one);
    const Segment& s2 = outline.segment(two);
    const Index meeting = secondOfTwo ? s2.second : s2.first;
    const Index neighbour2 = outline.otherSegment(meeting, two);
    // Always at the first vertex of segment one, also when they meet at the
    // second one: see the header.
    const Index neighbour1 = outline.otherSegment(s1.first, one);
    if (neighbour1 == kNone || neighbour1 == two) return false;
    if (neighbour2 == kNone || neighbour2 == one) return false;

    const Vertex& v = outline.vertex(meeting);
    const double base = angleOf(v, outline.vertex(secondOfOne ? s1.first : s1.second));
    const auto angle = [&](Index vertex) {
        return relativeTo(base, angleOf(v, outline.vertex(vertex)));
    };
    const double other1 = angle(outline.farEnd(neighbour1, s1.first));
    const double first2 = angle(secondOfTwo ? s2.first : s2.second);
    const double other2 = angle(outline.farEnd(neighbour2, meeting));
    return (first2 < other1) != (other2 < other1);
}

}  // namespace

bool pairCrosses(const Outline& outline, Index one, Index two) {
    const Ends e1(outline, one), e2(outline, two);
    const double det = (e2.by - e2.ay) * (e1.bx - e1.ax) + (e1.ay - e1.by) * (e2.bx - e2.ax);
    if (det == 0) return parallelCrosses(e1, e2);

    // Where the lines meet: s along segment two, t along segment one.
    const double s = -e1.line(e2.ax, e2.ay) / det;
    const double t = e2.line(e1.ax, e1.ay) / det;
    const bool sInside = 0 < s && s < 1, tInside = 0 < t && t < 1;
    const bool sAtEnd = s == 0 || s == 1, tAtEnd = t == 0 || t == 1;
    if (sInside && tInside) return true;
    if (sAtEnd && tInside) {
        const Segment& s2 = outline.segment(two);
        return passesThrough(outline, e1, two, s == 0 ? s2.first : s2.second);
    }
    if (tAtEnd && sInside) {
        const Segment& s1 = outline.segment(one);
        return passesThrough(outline, e2, one, t == 0 ? s1.first : s1.second);
    }
    if (sAtEnd && tAtEnd) return passesAtVertex(outline, one, t == 1, two, s == 1);
    return false;
}

}  // namespace Vaskel::Intersect
