// Pemmit: building, joining, copying and releasing paths.
//
// A path belongs to whoever called patbeg or patdup until objrem or until it
// is handed on. Memory that ends passes std::bad_alloc on and leaves every path
// as it was; patlinbb, patlinee, patendclo, objrem and flaset need none that
// could end. A path is used by one thread at a time, as long as it is changed;
// different paths, mates excepted, do not disturb each other.
//
// Paths cost memory in proportion to their points, and documents hold them by
// the million: a host that spends a page on each will not do.

#ifndef PLATFORM_PEMMIT_BUILD_H
#define PLATFORM_PEMMIT_BUILD_H

#include <cstdint>

#include "platform/pemmit/bezier.h"
#include "platform/pemmit/object.h"

namespace Pemmit {

/// A new path without points, flagged as closed: kFlagPath set, kFlagOpen and
/// kFlagChildren clear, the box of nothing, next null.
PLATFORM_API Path* patbeg();

/// Appends the point (x, y), any two integers, at the path's end. A few
/// nanoseconds on average: engines call it once a point.
PLATFORM_API void patlin(Path* path, int x, int y);

/// Appends count points, at least 1, that lie side by side, as patlin does one
/// by one. A host may leave this call out. The engines look for it when they
/// are loaded and use patlin otherwise, with the same results.
PLATFORM_API PLATFORM_OPTIONAL void patrun(Path* path, const PointBase<int>* points, int count);

/// A closed path of count points, at least 1, that lie side by side: what patbeg,
/// patlin one by one and patendclo make. A host may leave this call out, too; with
/// it a path can be made in one piece, just as large as it needs to be.
PLATFORM_API PLATFORM_OPTIONAL Path* patnew(const PointBase<int>* points, int count);

/// Ends an open path: appends (x, y) as its last point and sets kFlagOpen.
PLATFORM_API void patend(Path* path, int x, int y);

/// Closes a path: clears kFlagOpen and adds no point. Its walk delivers the
/// first point once more at the end, whether or not the last one equals it.
PLATFORM_API void patendclo(Path* path);

/// Joins the starts of two fresh paths: they become mates, one outline with
/// two free ends, and both go on growing at their ends. No point moves. Fresh
/// means: made by patbeg, without points, without a mate. Constant time.
///
/// Until its outline is closed by patlinee, a mate has a box, a size and a
/// walk of its own points only.
PLATFORM_API void patlinbb(Path* p, Path* q);

/// Joins the ends of two paths that have mates; p and q are not the same.
///
/// If p and q are mates, the outline closes: p becomes p followed by q
/// reversed, q ends without points, and neither has a mate any more.
///
/// Otherwise let P be the mate of p and Q the mate of q. The outline is now
/// P reversed, p, q reversed, Q, and its free ends belong to P and Q, which
/// become mates: P becomes q, p reversed, P (from its new start to its free
/// end), Q stays as it is, and both p and q end without points and without a
/// mate. Any of the four may be without points before.
///
///   P = 1 2, p = 3 4, Q = 5 6, q = 7 8;  patlinee(p, q):  P = 7 8 4 3 1 2,
///   Q = 5 6;  then patlinee(Q, P):  Q = 5 6 2 1 3 4 8 7, closed
///
/// Constant time whatever the lengths, save that a closing may take time in
/// proportion to its outline, whose points are then at rest.
PLATFORM_API void patlinee(Path* p, Path* q);

/// A copy of path, of its own: points, curves, flags, box and, of an object
/// with children, all below it. Without a mate, a parent or a next.
PLATFORM_API Path* patdup(const Path* path);

/// How many points a walk over path delivers: with curves the flattened
/// points count, and a closed contour's repeated first point counts too. 0
/// for a path without points and for an object with children. Constant time.
PLATFORM_API int patsiz(const Path* path);

/// Releases an object with all below it; null is allowed. Of two mates the
/// other one stays, without a mate. A child is taken out of its parent's list,
/// and the parent's box becomes true.
PLATFORM_API void objrem(Object* object);

/// Sets (on) or clears the bits of mask in the object's flags word; the other
/// bits stay. Opening or closing a path so changes its walk and its size. The
/// engines pass kFlagOpen.
PLATFORM_API void flaset(Object* object, std::uint32_t mask, bool on);

}  // namespace Pemmit

#endif
