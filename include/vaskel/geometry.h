// Tests and repairs on vector paths.
//
// All coordinates are distances (1/ppi inch) unless an entry says otherwise.
// Paths are read through Pemmit's walks only: outlines are the straight edges
// between points that a walk delivers one after the other, curves arrive
// flattened, and no closing edge is added beyond what the walk delivers.

#ifndef VASKEL_GEOMETRY_H
#define VASKEL_GEOMETRY_H

#include <memory>

#include "platform/pemmit.h"
#include "vaskel/export.h"

namespace Vaskel {

// ---- Crossings and point in path -------------------------------------------

/// Where segment (x1,y1)-(x2,y2) meets segment (x3,y3)-(x4,y4).
///
/// Returns 1 and stores the point, each coordinate rounded with
/// Orlune::iround, when they cross or touch. Returns 0 otherwise and leaves
/// *x and *y alone. Collinear segments never meet, even if they overlap.
///
///   intcalc(0,0, 10,10,  0,10, 10,0, &x, &y)  is 1, point (5,5)
///   intcalc(0,0, 10,0,   5,-5, 5,0,  &x, &y)  is 1, point (5,0)
///   intcalc(0,0, 10,0,   5,0, 15,0,  &x, &y)  is 0
///
/// Whether they meet is decided exactly. The point comes from a quotient of
/// doubles and may be a unit or more off for long, nearly parallel segments;
/// where that quotient has no value within the int range the exact point,
/// rounded halves away from zero, takes its place.
///
/// Coordinates lie within half the 32-bit range; beyond it differences wrap
/// and the answer has no meaning, but nothing worse happens. Keeps no state:
/// safe on any thread.
VASKEL_API int intcalc(int x1, int y1, int x2, int y2, int x3, int y3, int x4, int y4, int* x,
                       int* y);

/// Whether (x, y) lies inside path by the even-odd rule over all its contours
/// together, or on one of its edges. Directions do not matter.
///
///   square (0,0) (10,0) (10,10) (0,10), closed:
///     (5,5), (10,5) and (0,0) are inside, (11,5) is not
///
/// The vertical ray from the point goes towards smaller y. Of a contour whose
/// box ends before the point's y the ends alone decide. Edges meet the ray
/// half-open: a vertex counts with the edges that come from its right. A point
/// exactly on a vertex all of whose edges come from the left is therefore
/// answered like a point just right of it. Answers of stored documents depend
/// on that.
///
/// A null path, and a path without points, holds nothing. Coordinates lie
/// within half the 32-bit range. Cost: the boxes of all contours, and one walk
/// over each contour whose box holds the point; no allocation for polylines.
/// Changes nothing: safe on any thread while nobody changes the path.
VASKEL_API bool insidePath(int x, int y, const Pemmit::Path* path);

/// insidePath for many points of one path: built once, then asked quickly. An
/// addition to insidePath; the answers are the same for every path and point.
///
/// The object keeps what it needs of the path, which may change or go
/// afterwards. Building takes n log n time and memory for n points, at most
/// about 8 bytes times n times the logarithm of the number of different x
/// coordinates; a path within which no two edges cross is then answered in
/// log^2 n steps, one whose edges cross in as many steps more as edges lie
/// across a crossing's neighbourhood.
///
/// std::bad_alloc passes through, and is thrown where the index would need 2^32
/// entries or more, which fewer than 2^26 edges never do. Asking changes
/// nothing: one object may be asked on several threads at a time.
class VASKEL_API preparedPath {
 public:
    /// Null gives an object that holds nothing.
    explicit preparedPath(const Pemmit::Path* path);
    preparedPath(const preparedPath& other);
    preparedPath& operator=(const preparedPath& other);
    ~preparedPath();

    /// insidePath(x, y, path) for the path as it was.
    bool inside(int x, int y) const;

 private:
    class VASKEL_HIDDEN Index;
    std::shared_ptr<const Index> mIndex;
};

/// Looks for a crossing of two paths near a place: of a segment of pathA near
/// segment indexA with a segment of pathB near segment indexB, whose crossing
/// point (of intcalc) lies nearer than tolerance to (refX, refY).
///
/// Returns 0 and stores the segments' numbers, the one of pathA in *outIndexA,
/// and the point; or returns -1 and stores nothing when none is found, when
/// either path has no segment, or when an index lies outside 0 .. n - 1 for n
/// segments (n is Pemmit::patsiz less 1; segment i runs from point i to point
/// i + 1).
///
/// The search spreads to both sides of the two segments in turns, about five
/// segments each way, and goes on at the other end of a path where it runs out
/// of points: it finds the nearest numbers first, not the nearest point. The
/// distance is compared strictly: a crossing exactly tolerance away is not
/// found. pathA and pathB may be the same path.
///
/// Neither path is changed. Cost: at most 21 passes of at most 12 segments.
VASKEL_API int selint(Pemmit::Path* pathA, int indexA, Pemmit::Path* pathB, int indexB,
                      int* outIndexA, int* outIndexB, int* outX, int* outY, int refX, int refY,
                      int tolerance);

// ---- Self-intersection ------------------------------------------------------

/// Whether the outline of object crosses itself: 1 as soon as a crossing is
/// found, else 0; 0 for a null object.
///
/// A path (Pemmit::kFlagPath) is tested itself, of a compound
/// (Pemmit::kFlagChildren) all children that are paths are tested together,
/// and any other object gives 0. Curves are taken as their walk delivers them.
///
///   square (0,0) (10,0) (10,10) (0,10), closed         is 0
///   bow tie (0,0) (10,10) (10,0) (0,10), closed        is 1
///   open (0,0) (10,0) (5,0), which folds back          is 1
///
/// Segments that cross, or overlap over some length, count. Where a segment
/// ends on another one the outline's next point decides: it counts when the
/// outline goes on to the other side (passes), not when it turns back or ends
/// there (touches).
///
/// That next point is not always the right one, and stored answers depend on
/// it. Where two vertices meet, the neighbour looked at for the segment that
/// the sweep enters is always the one at its first vertex: some touches count
/// and some passes do not, depending on the direction of the walks and on the
/// order of the children. And where the vertex is repeated, the next point is
/// the vertex itself: a pass through the inside of a segment does not count
/// there, and one through another vertex not always.
///
/// Within +-2^25, n vertices take about n log n steps; where nothing touches,
/// and most of the outline goes on to the right or the left for a while, few
/// of them are more than a comparison. Segments that meet at one place are all
/// compared with each other there, and beyond that range all that lie above
/// and below each other.
///
/// Calls Orlune::cancel(0, 0) before every 200th vertex, its result unused; of
/// outlines that a first look proves free of crossings, behind that look.
/// std::bad_alloc passes through. Keeps no state: safe on any thread while
/// nobody changes the object.
VASKEL_API int intersect(Pemmit::Object* object);

// ---- Cleaning ---------------------------------------------------------------

/// Sets how clean works, for the whole process: filter order n, tolerance and
/// resampling step, both in distances. Initially all three are 0.
///
/// n   1 and above: outlines are resampled at the step, smoothed by a low-pass
///     filter that reaches 8n - 2 samples to each side, and every n-th sample
///     is kept; 0 and below: points are taken as they are, the step is unused.
/// tolerance   how far from the straight line through its neighbours a point
///     may lie and still be dropped; 0 keeps all points.
/// step   a step below 1 counts as 1.
///
/// When n is the current order only tolerance and step are replaced. Otherwise
/// the filter is made anew, which takes about 32 n^2 multiplications: 10
/// microseconds for n = 20. From n = 16384 on the filter leaves every sample as
/// it is. Throws std::bad_alloc and leaves all three as they were.
///
///   cleanpar(0, 0, 1)    clean hands all points on
///   cleanpar(0, 2, 1)    drops points within 2 distances, filters nothing
///   cleanpar(1, 2, 3)    resamples at 3 distances, smooths, then drops
///
/// Not locked: neither cleanpar nor clean may run at the same time as another
/// call of either.
VASKEL_API void cleanpar(int n, int tolerance, int step);

/// Makes a smooth, sparse outline from a jagged one, as cleanpar has set.
///
/// Returns a new path, which the caller owns (release it with Pemmit::objrem),
/// open or closed as the input is; the input is not changed. Returns null when
/// path is null, and when its box is at most size wide but more than size high:
/// a narrow, tall outline is refused while a wide, flat one of the same sides
/// is cleaned. Width is the box's maximum x minus its minimum x.
///
/// A path with too few points comes back as an exact copy (Pemmit::patdup): an
/// open one whose walk has fewer than 3 points, a closed one fewer than 4, not
/// counting points equal to the one before. So do objects without a walk of
/// their own.
///
/// Otherwise, without filter:
///   tolerance 0    square (0,0) (8,0) (8,8) (0,8)           the same points
///   tolerance 1    (0,0) (4,1) (8,0) (8,8) (0,8), closed    loses (4,1)
/// A straight run of points collapses to its ends, but a point is kept after
/// at most 50 that come after the last kept one. With the filter a closed
/// outline may begin at another place than the input, and outlines shrink a
/// little at their corners. The samples of a closed one go round: where its
/// walk comes back to the first, that is not taken twice. An open one keeps
/// its first point and ends at its last sample, which lies less than a step
/// from its last point.
///
/// Where points are 32768 or more apart in x or y (32769 towards smaller
/// ones), none is dropped between them. Coordinates may use the whole 32-bit
/// range; filtered ones wrap beyond it. Needs memory for the result and a few
/// hundred bytes times n. Cost: linear in the input's points and in its length
/// divided by the step. Throws std::bad_alloc. Reads the process-wide
/// parameters: see cleanpar for threads.
VASKEL_API Pemmit::Path* clean(const Pemmit::Path* path, int size);

// ---- Arcs -------------------------------------------------------------------

/// A circular arc of less than a half circle: its centre, and its ends relative
/// to the centre. Both offsets have the radius as length; the arc runs from
/// start to end along the shorter way.
struct arc {
    double centreX;
    double centreY;
    double startX;  // relative to the centre, like all below
    double startY;
    double endX;
    double endY;
};

/// Writes the control points of the cubic segment that approximates arc.
///
/// The first point is exactly centre + start and the last one centre + end; the
/// handles are perpendicular to the radii and (4/3) tan(angle / 4) radii long,
/// the best known one-segment approximation, 0.03 % off for a quarter circle.
///
///   centre (0,0), start (100,0), end (0,100):
///     (100,0) (100,55.228...) (55.228...,100) (0,100)
///
/// The direction comes from end - start truncated to whole units (towards zero,
/// saturating), so offsets are meant in distances of many units; a chord of
/// less than one unit in both directions, like a half circle, gives
/// coordinates that are not finite. Keeps no state: safe on any thread.
VASKEL_API void arccub(const arc& arc, Pemmit::bezier& bezier);

/// Flattens arc within tolerance: calls callback, with context passed through,
/// for each point that Pemmit::bezier::cubfla delivers of the segment that
/// arccub makes.
///
/// A chord shorter than 4 tolerances (one of exactly 4 is not shorter)
/// delivers no point at all: the caller's own end point stands for the arc. The
/// point is valid during the call only; exceptions of callback pass through.
VASKEL_API void arcfla(const arc* arc, double tolerance,
                       void (*callback)(void* context, const Pemmit::PointBase<double>* point),
                       void* context);

}  // namespace Vaskel

#endif
