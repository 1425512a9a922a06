// Pemmit: building, joining, copying and releasing paths.
//
// A path under construction belongs to whoever called patbeg until objrem or
// until it is handed on. Memory that ends passes std::bad_alloc on and leaves
// the path as it was. Paths are used by one thread at a time.

#ifndef PLATFORM_PEMMIT_BUILD_H
#define PLATFORM_PEMMIT_BUILD_H

#include <cstdint>

#include "platform/pemmit/object.h"

namespace Pemmit {

/// A new path without points, flagged as closed (kFlagPath set, kFlagOpen
/// clear). Released with objrem.
PLATFORM_API Path* patbeg();

/// Appends the point (x, y) at the path's end. A few nanoseconds on average.
PLATFORM_API void patlin(Path* path, int x, int y);

/// Ends an open path: appends (x, y) as its last point and sets kFlagOpen.
PLATFORM_API void patend(Path* path, int x, int y);

/// Closes a path: clears kFlagOpen and adds no point. Its walk delivers the
/// first point once more at the end.
PLATFORM_API void patendclo(Path* path);

/// Joins the starts of two paths: they become mates, one outline with two
/// free ends, and both go on growing at their ends. No point moves. Neither
/// has a mate before. Constant time.
///
/// Until its outline is closed by patlinee, a mate has a box, a size and a
/// walk of its own points only.
PLATFORM_API void patlinbb(Path* p, Path* q);

/// Joins the ends of two paths.
///
/// If p and q are mates, the outline closes: p becomes p followed by q
/// reversed, q ends without points, and neither has a mate any more.
///
/// Otherwise let P be the mate of p and Q the mate of q. The outline is now
/// P reversed, p, q reversed, Q, and its free ends belong to P and Q, which
/// become mates: P becomes q, p reversed, P (from its new start to its free
/// end), Q stays as it is, and both p and q end without points. The engines
/// join only paths that have mates.
///
/// Constant time whatever the lengths. p and q are different paths.
PLATFORM_API void patlinee(Path* p, Path* q);

/// A copy of path, of its own and without a mate: points, curves, flags, box
/// and contours.
PLATFORM_API Path* patdup(const Path* path);

/// How many points a walk over path delivers: with curves the flattened
/// points count, and a closed contour's repeated first point counts too. 0
/// for a path without points and for one with several contours.
PLATFORM_API int patsiz(const Path* path);

/// Releases an object with all its children; null is allowed. Of two mates
/// the other one stays, without a mate.
PLATFORM_API void objrem(Object* object);

/// Sets (on) or clears the bits of mask in the object's flags word.
PLATFORM_API void flaset(Object* object, std::uint32_t mask, bool on);

}  // namespace Pemmit

#endif
