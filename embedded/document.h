// The embedded document model as an embedding program sees it: what the calls
// of platform/pemmit cannot do, namely curves, contours of compound objects,
// and reading outlines as they were drawn.
//
// Objects belong to one thread at a time, as those of platform/pemmit do.
// Memory that ends passes std::bad_alloc on and leaves everything as it was.

#ifndef EMBEDDED_DOCUMENT_H
#define EMBEDDED_DOCUMENT_H

#include <cstddef>
#include <vector>

#include "platform/pemmit.h"

namespace Embedded {

/// Appends a cubic segment from the path's last point, with the control points
/// (x1, y1) and (x2, y2), to (x3, y3).
///
/// A walk delivers the segment as the points of a polyline that stays within
/// Embedded::setFlatness (embedded/host.h), as it is at this call, of the
/// curve, each rounded to the nearest distance; of neighbours that are rounded
/// to the same point one is delivered. The last one is (x3, y3).
///
/// False, and nothing is done, for a path without points and for an object
/// with children.
///
///   patlin(p, 0,0); addCurve(p, 0,55, 45,100, 100,100)  adds a quarter circle
PLATFORM_API bool addCurve(Pemmit::Path* path, int x1, int y1, int x2, int y2, int x3, int y3);

/// As Pemmit::patendclo, but a last point that equals the first is taken away
/// before, so that a walk does not deliver this point twice in a row at its
/// end. A curve that ends there goes on to close the contour. For outlines of
/// formats that repeat the first point, such as SVG, PDF and fonts.
///
///   patlin 0,0  10,0  0,10  0,0; closeContour  walks 0,0  10,0  0,10  0,0
PLATFORM_API void closeContour(Pemmit::Path* path);

/// A new object that can have children, kFlagChildren set and kFlagPath clear,
/// for instance a path of several contours. Released with Pemmit::objrem,
/// which releases its children too.
PLATFORM_API Pemmit::Path* makeCompound();

/// Makes child the last child of parent, which owns it from now on. True on
/// success. False, and nothing is done, when parent cannot have children,
/// child already has a parent, or child is parent or one of its ancestors.
PLATFORM_API bool addChild(Pemmit::Object* parent, Pemmit::Object* child);

/// The object whose child this is, or null.
PLATFORM_API Pemmit::Object* parentOf(const Pemmit::Object* object);

/// A part of an outline as it was drawn.
struct Segment {
    enum Kind { kMove, kLine, kCurve };
    Kind kind;
    int x1, y1, x2, y2;  // the control points of a curve; 0 for others
    int x, y;            // where the segment ends
};

/// The contour as it was drawn: a move to its first point, then each line and
/// curve in order. The straight line that closes a contour is not listed; a
/// curve that closes it is. Empty for an object without points of its own.
PLATFORM_API std::vector<Segment> segments(const Pemmit::Path* path);

/// The memory that an object with all below it takes, in bytes, without the
/// allocator's own.
PLATFORM_API std::size_t bytesOf(const Pemmit::Object* object);

}  // namespace Embedded

#endif
