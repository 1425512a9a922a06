// Pemmit: walking outlines and children.

#ifndef PLATFORM_PEMMIT_WALK_H
#define PLATFORM_PEMMIT_WALK_H

#include "platform/pemmit/bezier.h"
#include "platform/pemmit/object.h"

namespace Pemmit {

/// A walk over the points of one contour.
///
/// Points are integers in distances and come in order, curves flattened. A
/// closed contour delivers its first point again after its last one, also when
/// that one equals it or is the only one; an open contour does not. Equal
/// neighbours are delivered as they are stored. Points are numbered from 0 in
/// forward order, and both directions deliver the same points under the same
/// numbers: patsiz(path) is how many there are, the repeated first point
/// included.
///
///   closed, stored 1 2 3:  forward 1 2 3 1, backward 1 3 2 1
///   the same, start 2:     forward 3 1,     backward 3 2 1
///
/// The object must not change during a walk; many walks over one object may
/// run at the same time, also on several threads. An object with children, or
/// without points, or null, has an empty walk.
class PLATFORM_API scan {
 public:
    /// No walk: scanex returns a negative value.
    scan();
    /// As scan() followed by scabeg.
    scan(const Object* object, int direction, int start);
    /// As scaend.
    ~scan();
    scan(const scan&) = delete;
    scan& operator=(const scan&) = delete;

    /// Begins a walk (and ends one in progress). direction 0 walks towards
    /// higher numbers, 1 towards lower ones. start is the number of the first
    /// point delivered; -1 stands for the natural beginning, number 0 forward
    /// and patsiz - 1 backward. A start outside 0 .. patsiz - 1 gives an empty
    /// walk. Constant time on polylines, save that on a path with a mate a host
    /// may take a step a join to find the start. May allocate for curves only.
    void scabeg(const Object* object, int direction, int start);

    /// Delivers the next point: stores it and returns 0, or returns a negative
    /// value and leaves *x and *y alone when there are no more. Called once a
    /// point: a few nanoseconds. Does not throw, and may be called for some points
    /// more than the answer depends on.
    int scanex(int* x, int* y);

    /// Delivers many points at a time; a host may leave this call out. The engines
    /// look for it when they are loaded and use scanex otherwise, with the same
    /// results; on outlines of many points they are several times as fast with it.
    ///
    /// Takes as many of the next points of walk as lie side by side in memory,
    /// stores where the first of them is and which way the others follow (*step
    /// is 1, or -1 where they lie back to front), and returns how many there are,
    /// at least 1. They count as delivered: scanex goes on behind them. Returns a
    /// negative value and leaves *points and *step alone when there are no more.
    /// The points stay where they are until the object changes.
    PLATFORM_OPTIONAL static int scarun(scan* walk, const PointBase<int>** points, int* step);

    /// Ends the walk; scanex returns a negative value from now on. May be
    /// called any number of times.
    void scaend();

 private:
    void* mHost[16];  // the host's own; 128 bytes, pointer-aligned
};

/// A sequence over the children of an object, in order.
class PLATFORM_API queryseq {
 public:
    queryseq();
    ~queryseq();
    queryseq(const queryseq&) = delete;
    queryseq& operator=(const queryseq&) = delete;

    /// Begins a sequence and returns its first object, or null when it is
    /// empty. With object null it is the first child of list, and Object::next
    /// leads to the others; a list that cannot have children (kFlagChildren
    /// clear) is returned itself, as the only object of the sequence, and its
    /// next, which belongs to another list, is not followed. With an object, a
    /// child of list, the sequence begins there. list must not change until the
    /// sequence is destroyed.
    Object* quebeg(const Object* list, const Object* object);

 private:
    void* mHost[4];  // the host's own; 32 bytes, pointer-aligned
};

}  // namespace Pemmit

#endif
