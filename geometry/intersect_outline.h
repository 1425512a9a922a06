// The outline of an object as the self-intersection test sees it: vertices and
// the segments between them.

#ifndef GEOMETRY_INTERSECT_OUTLINE_H
#define GEOMETRY_INTERSECT_OUTLINE_H

#include <cstdint>
#include <vector>

#include "platform/pemmit.h"

namespace Vaskel::Intersect {

using Index = std::int32_t;
constexpr Index kNone = -1;

struct Vertex {
    int x, y;
    Index arriving;  // the segment that ends here, or kNone
    Index leaving;   // the segment that begins here, or kNone
};

/// From vertex first to vertex second, in the order of the walk.
struct Segment {
    Index first, second;
};

/// Whether a comes before b in the sweep: by x, then by y. Coordinates only,
/// so that neither of two vertices at one place precedes the other.
inline bool precedes(const Vertex& a, const Vertex& b) {
    return a.x < b.x || (a.x == b.x && a.y < b.y);
}

struct Outline {
    std::vector<Vertex> vertices;  // in walk order, contour after contour
    std::vector<Segment> segments;

    /// Adds the points that a walk over path delivers. A last point equal to
    /// the first closes the contour without a vertex of its own; a single point
    /// leaves nothing. Points repeated in between stay vertices.
    void add(const Pemmit::Object* path);

    /// The segment at vertex that is not segment, or kNone.
    Index otherSegment(Index vertex, Index segment) const {
        const Vertex& v = vertices[static_cast<std::size_t>(vertex)];
        return v.arriving == segment ? v.leaving : v.arriving;
    }

    /// The end of segment that is not vertex.
    Index farEnd(Index segment, Index vertex) const {
        const Segment& s = segments[static_cast<std::size_t>(segment)];
        return s.first == vertex ? s.second : s.first;
    }

    const Vertex& vertex(Index i) const { return vertices[static_cast<std::size_t>(i)]; }
    const Segment& segment(Index i) const { return segments[static_cast<std::size_t>(i)]; }
};

/// The outline of a path, or of those children of a compound that are paths
/// themselves; empty for every other object. kFlagPath decides first.
Outline outlineOf(const Pemmit::Object* object);

}  // namespace Vaskel::Intersect

#endif
