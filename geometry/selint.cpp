// A crossing of two paths near a place: a search that zigzags outwards from
// one segment of each path.

#include <utility>

#include "platform/pemmit.h"
#include "vaskel/geometry.h"

namespace Vaskel {
namespace {

constexpr int kPasses = 21;
constexpr int kForward = 0;
constexpr int kBackward = 1;

struct Place {
    int refX, refY;
    double toleranceSquared;

    bool holds(int x, int y) const {
        const double dx = static_cast<double>(x) - refX;
        const double dy = static_cast<double>(y) - refY;
        return dx * dx + dy * dy < toleranceSquared;
    }
};

// Where the search stands on one of the paths. index is the number of a point,
// 0 to segments; a walk from it in the direction begins with the segment to
// try first. Backward walks never stand at point 0, forward ones never at the
// last point, so that there always is such a segment.
struct Side {
    const Pemmit::Path* path;
    int index;
    int* outIndex;
    int segments;
    int span = 1;  // how many segments are tried against one of the other path; at most 11
    int direction = kForward;

    // Turns round and steps over the segments tried so far, so that the next
    // try begins at the far end of a range longer by one segment.
    void widen() {
        if (span >= segments) return;
        ++span;
        if (direction == kForward) {
            direction = kBackward;
            index = index > segments - span ? index - (segments - span) : index + span;
        } else {
            direction = kForward;
            index -= span;
            if (index < 0) index += segments;
        }
    }

    // The number of the segment after tried others in walking direction.
    int segmentNumber(int tried) const {
        if (direction == kForward)
            return index >= segments - tried ? index - (segments - tried) : index + tried;
        const int number = index - 1 - tried;
        return number < 0 ? number + segments : number;
    }
};

struct Segment {
    int x1 = 0, y1 = 0, x2 = 0, y2 = 0;
};

bool readFirst(Pemmit::scan& walk, Segment& segment) {
    return walk.scanex(&segment.x1, &segment.y1) >= 0 && walk.scanex(&segment.x2, &segment.y2) >= 0;
}

// Reads the segment after the one in segment; at the path's end goes on at the
// natural beginning of the walk.
bool readNext(Pemmit::scan& walk, const Side& side, Segment& segment) {
    const int x = segment.x2, y = segment.y2;
    if (walk.scanex(&segment.x2, &segment.y2) >= 0) {
        segment.x1 = x;
        segment.y1 = y;
        return true;
    }
    walk.scabeg(side.path, side.direction, -1);
    return readFirst(walk, segment);
}

// Tries the leading path's segment against the trailing path's span. Returns
// how many segments were tried before the one that crosses, or -1.
int tryPass(const Side& leading, const Side& trailing, const Place& place, int* outX, int* outY) {
    Segment p;
    Pemmit::scan leadingWalk(leading.path, leading.direction, leading.index);
    if (!readFirst(leadingWalk, p)) return -1;

    Segment q;
    Pemmit::scan walk(trailing.path, trailing.direction, trailing.index);
    if (walk.scanex(&q.x2, &q.y2) < 0) return -1;
    for (int tried = 0; tried < trailing.span; ++tried) {
        if (!readNext(walk, trailing, q)) return -1;
        int x = 0, y = 0;
        if (intcalc(p.x1, p.y1, p.x2, p.y2, q.x1, q.y1, q.x2, q.y2, &x, &y) != 0 &&
            place.holds(x, y)) {
            *outX = x;
            *outY = y;
            return tried;
        }
    }
    return -1;
}

}  // namespace

int selint(Pemmit::Path* pathA, int indexA, Pemmit::Path* pathB, int indexB, int* outIndexA,
           int* outIndexB, int* outX, int* outY, int refX, int refY, int tolerance) {
    if (!pathA || !pathB) return -1;
    Side a{pathA, indexA, outIndexA, Pemmit::patsiz(pathA) - 1};
    Side b{pathB, indexB, outIndexB, Pemmit::patsiz(pathB) - 1};
    for (const Side* side : {&a, &b})
        if (side->segments < 1 || side->index < 0 || side->index >= side->segments) return -1;

    const Place place{refX, refY, static_cast<double>(tolerance) * tolerance};
    Side* leading = &a;
    Side* trailing = &b;
    for (int pass = 0; pass < kPasses; ++pass) {
        const int tried = tryPass(*leading, *trailing, place, outX, outY);
        if (tried >= 0) {
            *leading->outIndex = leading->index - (leading->direction == kBackward ? 1 : 0);
            *trailing->outIndex = trailing->segmentNumber(tried);
            return 0;
        }
        trailing->widen();
        std::swap(leading, trailing);
    }
    return -1;
}

}  // namespace Vaskel
