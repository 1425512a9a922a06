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

/// A point in one word, 2^32 x + y, so that places compare in sweep order: by x,
/// then by y. The sum wraps for x = -2^31 and a negative y: different points are
/// different words all the same, but that one compares as if behind all others.
using PackedPlace = std::int64_t;

constexpr PackedPlace packed(std::int32_t x, std::int32_t y) {
    const auto high = std::uint64_t{static_cast<std::uint32_t>(x)} << 32;
    return static_cast<PackedPlace>(high + static_cast<std::uint64_t>(std::int64_t{y}));
}
constexpr std::int32_t yOf(PackedPlace p) { return static_cast<std::int32_t>(p); }
constexpr std::int32_t xOf(PackedPlace p) {
    const auto high =
        static_cast<std::uint64_t>(p) - static_cast<std::uint64_t>(std::int64_t{yOf(p)});
    return static_cast<std::int32_t>(static_cast<std::int64_t>(high) >> 32);
}

/// The sign of (b - a) x (c - a): above 0 when c lies to the left of the way
/// from a to b. Coordinates lie within +-2^27, so that products stay in 64 bits.
constexpr std::int64_t turnAt(PackedPlace a, PackedPlace b, PackedPlace c) {
    return std::int64_t{xOf(b) - xOf(a)} * (yOf(c) - yOf(a)) -
           std::int64_t{yOf(b) - yOf(a)} * (xOf(c) - xOf(a));
}

/// The points begin .. end - 1 of a walked outline.
struct WalkedContour {
    Index begin, end;
    bool closed;  // its first point follows its last one
};

/// The points that walks deliver. A last point equal to the first closes a
/// contour without standing there itself; a single point leaves nothing. Points
/// repeated in between stay.
struct WalkedOutline {
    std::vector<PackedPlace> points;
    std::vector<WalkedContour> contours;

    void add(const Pemmit::Object* path);
};

/// Those of a path, or of those children of a compound that are paths
/// themselves; empty for every other object. kFlagPath decides first.
WalkedOutline walkedOutlineOf(const Pemmit::Object* object);

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

    /// Adds the contours of a walk.
    void add(const WalkedOutline& walked);
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

/// The outline of what walkedOutlineOf(object) finds.
Outline outlineOf(const Pemmit::Object* object);

}  // namespace Vaskel::Intersect

#endif
