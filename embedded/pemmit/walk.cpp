// Walking contours and children.
//
// A walk is a row of runs: stretches of points in memory, read forwards or
// backwards, and between them the step to the next piece. The point that a
// closed contour delivers again is a run of its own.

#include "platform/pemmit/walk.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <new>
#include <type_traits>

#include "embedded/pemmit/blocks.h"
#include "embedded/pemmit/contour.h"

namespace Embedded {
namespace {

struct Walk {
    const Point* at;         // the next point of the current run
    std::int64_t left;       // how many points of the run are to come
    std::ptrdiff_t step;     // 1 or -1
    End next;                // the piece after the run, or none
    const Point* closing;    // delivered after the last piece, or null
    const Contour* contour;  // knows how many points its pieces hold
};

Walk* walkIn(void** host) { return reinterpret_cast<Walk*>(host); }

// The run becomes that of a piece, without the first skipped points from the
// side of entry on.
void enter(Walk& walk, End piece, std::int64_t skipped) {
    const std::int64_t count = walk.contour->countOf(piece.piece());
    walk.at = piece.piece()->points() + (piece.side() == 0 ? skipped : count - 1 - skipped);
    walk.left = count - skipped;
    walk.step = piece.side() == 0 ? 1 : -1;
    walk.next = piece.next();
}

void enterPoint(Walk& walk, const Point* point) {
    walk.at = point;
    walk.left = 1;
}

// Apart, so that scanex itself needs no stack.
[[gnu::noinline]] bool nextRun(Walk& walk) {
    if (walk.next.piece()) {
        enter(walk, walk.next, 0);
        return true;
    }
    if (!walk.closing) return false;
    enterPoint(walk, walk.closing);
    walk.closing = nullptr;
    return true;
}

// Enters a chain at the point with the given number from an end. A step a
// piece: settled contours have one or a few.
void seek(Walk& walk, End at, std::int64_t number) {
    for (;;) {
        const std::int64_t count = walk.contour->countOf(at.piece());
        if (number < count) break;
        number -= count;
        at = at.next();
    }
    enter(walk, at, number);
}

void begin(Walk& walk, const Contour& contour, bool backward, std::int64_t start) {
    const std::int64_t stored = contour.pointCount();
    const std::int64_t delivered = stored + (contour.isOpen() ? 0 : 1);
    if (start == -1) start = backward ? delivered - 1 : 0;
    if (start < 0 || start >= delivered) return;
    walk.contour = &contour;
    const Point* const again = contour.isOpen() ? nullptr : &contour.firstPoint();
    if (start == stored) {
        enterPoint(walk, again);
        if (backward) walk.next = contour.chain.end[1];
    } else if (backward) {
        seek(walk, contour.chain.end[1], stored - 1 - start);
    } else {
        seek(walk, contour.chain.end[0], start);
        walk.closing = again;
    }
}

// Most walks run from the first point of a contour of one piece to its end.
// Objects are mostly walked in the order in which they were made: what comes soon
// may stand a little further on.
void beginAny(Walk& walk, const Pemmit::Object* object, int direction, int start) {
    const Contour* const contour = contourOf(object);
    if (contour && contour->pieces == 1 && direction == 0 && start == -1) [[likely]] {
        const End end = contour->chain.end[0];
        const std::int64_t count = contour->countOf(end.piece());
        if (end.side() == 0 && count > 0) [[likely]] {
            const Point* const points = end.piece()->points();
            if (contour->pooled) fetchBlock<false>(contour, 3);
            walk = {points, count, 1, End(), contour->isOpen() ? nullptr : points, contour};
            return;
        }
    }
    walk = Walk{};
    if (contour && contour->hasPoints()) begin(walk, *contour, direction != 0, start);
}

}  // namespace
}  // namespace Embedded

namespace Pemmit {

using namespace Embedded;

scan::scan() {
    static_assert(sizeof(Walk) <= sizeof mHost && alignof(Walk) <= alignof(void*));
    static_assert(std::is_trivially_destructible_v<Walk>);
    new (mHost) Walk{};
}
scan::scan(const Object* object, int direction, int start) {
    new (mHost) Walk;
    beginAny(*walkIn(mHost), object, direction, start);
}
scan::~scan() = default;

void scan::scabeg(const Object* object, int direction, int start) {
    beginAny(*walkIn(mHost), object, direction, start);
}

int scan::scanex(int* x, int* y) {
    Walk& walk = *walkIn(mHost);
    if (walk.left == 0 && !nextRun(walk)) return -1;
    *x = walk.at->x;
    *y = walk.at->y;
    walk.at += walk.step;
    --walk.left;
    return 0;
}

int scan::scarun(scan* walk, const PointBase<int>** points, int* step) {
    Walk& state = *walkIn(walk->mHost);
    if (state.left == 0 && !nextRun(state)) return -1;
    const int count = static_cast<int>(std::min<std::int64_t>(state.left, INT_MAX));
    *points = state.at;
    *step = static_cast<int>(state.step);
    state.at += state.step * count;
    state.left -= count;
    return count;
}

void scan::scaend() { *walkIn(mHost) = Walk{}; }

queryseq::queryseq() : mHost() {}
queryseq::~queryseq() = default;

Object* queryseq::quebeg(const Object* list, const Object* object) {
    if (object) return const_cast<Object*>(object);
    if (const Compound* const compound = compoundOf(nodeOf(list))) return compound->firstChild;
    return const_cast<Object*>(list);
}

}  // namespace Pemmit
