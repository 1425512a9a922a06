// AddLine where the tracer keeps the points of open outlines itself.
//
// The rule is addLinePlain's. Its joins become these: edges that are mates
// close their outline, which goes out as the first one's points and then the
// second one's back to front. Otherwise the outline between the two edges'
// mates grows together, and its seam is that of the second edge and its mate:
// the first one's mate then begins with the second one's points.
// Test: "vectorizer: every form gives the plain form's outlines".

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

#include "platform/pemmit.h"
#include "raster/traced_points.h"
#include "raster/vectorizer.h"
#include "util/clean_points.h"

namespace Vaskel {
namespace {

using Edge = VectorizerInside::Edge;

// In one piece, not by a vector that is put together first.
void put(TracedPoint* at, int x, int y) {
    const std::uint64_t both =
        static_cast<std::uint32_t>(x) | std::uint64_t{static_cast<std::uint32_t>(y)} << 32;
    static_assert(sizeof(TracedPoint) == sizeof both && offsetof(TracedPoint, y) == 4);
    std::memcpy(static_cast<void*>(at), &both, sizeof both);
}

void add(TracedPoints& points, Edge& e, int x, int y) {
    if (!hasRoom(e.write, 1)) [[unlikely]]
        e.write = points.extend(e.write);
    *e.write++ = {x, y};
}

// Whether the box of some points spans more than size in x, which a few of them
// mostly tell.
bool isWider(const TracedPoint* points, std::size_t count, int size) {
    int low = points[0].x, high = points[0].x;
    for (std::size_t i = 1; i < count; ++i) {
        low = points[i].x < low ? points[i].x : low;
        high = points[i].x > high ? points[i].x : high;
        if (std::int64_t{high} - low > size) return true;
    }
    return size < 0;
}

}  // namespace

unsigned short VectorizerInside::startTraced(Vectorizer& tracer, unsigned short cursor, int y,
                                             int lo, int hi) {
    TracedPoints& points = *tracer.mEdges[0].points;
    TracedChunk* const l = points.take();
    TracedChunk* const r = points.take();
    l->link[0] = r;
    r->link[0] = l;
    l->points[0] = {y, lo};
    r->points[0] = {y, hi};
    const unsigned short left = insert(tracer, cursor);
    const unsigned short right = insert(tracer, left);
    const unsigned short next = tracer.mEdges[right].next;
    tracer.mEdges[left] = {right, right, y, lo, {.write = l->points + 1}, l};
    tracer.mEdges[right] = {next, left, y, hi, {.write = r->points + 1}, r};
    return right;
}

// An outline that cleaning would refuse, being at most the minimum size wide but
// higher, is dropped like one that is small in both directions.
void VectorizerInside::deliver(Vectorizer& tracer, const TracedPoint* points, int count) {
    const int size = tracer.mMinSize;
    if (!isWider(points, static_cast<std::size_t>(count), size)) return;
    Pemmit::Path* const path = cleanPoints(points, count);
    if (isAtMost(path->box, size))
        Pemmit::objrem(path);
    else
        tracer.addPath(path);
}

bool VectorizerInside::endTraced(Vectorizer& tracer, unsigned short cursor, int y, int lo, int hi) {
    const int step = tracer.mLineStep;
    TracedPoints& points = *tracer.mEdges[0].points;
    Edge* const edges = tracer.mEdges;
    const unsigned short first = edges[cursor].next;
    const unsigned short second = first ? edges[first].next : first;
    if (second == 0) return false;
    Edge& p = edges[first];
    Edge& q = edges[second];
    if (tracer.mSmooth) {
        if (isFarther(lo, p.lastPos, step) && isLater(y, p.lastLine, step))
            add(points, p, p.lastLine, lo);
        if (isFarther(hi, q.lastPos, step) && isLater(y, q.lastLine, step))
            add(points, q, q.lastLine, hi);
    }
    add(points, p, y, lo);
    add(points, q, y, hi);
    remove(edges, tracer.mFreeEdge, cursor);
    remove(edges, tracer.mFreeEdge, cursor);
    if (p.mate != second) {
        TracedPoints::join(p.write, q.write);
        edges[p.mate].first = q.first;
        edges[p.mate].mate = q.mate;
        edges[q.mate].mate = p.mate;
        return true;
    }
    const TracedOutline outline = points.close(p.first, p.write, q.first, q.write);
    if (outline.count >= INT_MAX) throw std::bad_alloc();
    deliver(tracer, outline.points, static_cast<int>(outline.count));
    return true;
}

// The heads of both lists stay in registers. Which of the two positions is taken
// first and whether both come from one list depends on them and on those behind
// them: two of the new line where a < b and the one behind a is before b, two of
// the old one where a >= b and the one behind b is not behind a. What is left
// is one of each, where a comes from the new line; whether the edge moves at all
// is no branch, since nobody could guess it: two points are written in any case,
// and stay where they are not written over.
//
// Behind a terminator stands a place that is read, but counts for nothing.
template <bool smooth>
void VectorizerInside::addLineFast(Vectorizer& tracer, const int* line, const int* prevLine,
                                   int y) {
    const int step = tracer.mLineStep;
    TracedPoints& points = *tracer.mEdges[0].points;
    bool parity = !tracer.mFlip;
    Edge* edges = tracer.mEdges;
    unsigned short cursor = 0;
    int a = *line;
    int b = *prevLine;
    for (;;) {
        const int nextNew = line[1];
        const int nextOld = prevLine[1];
        const bool newFirst = a < b;
        const bool starts = newFirst & (nextNew < b);
        const bool ends = !newFirst & (nextOld <= a);
        if (starts | ends) [[unlikely]] {
            if (starts) {
                cursor = startTraced(tracer, cursor, y, a, nextNew);
                edges = tracer.mEdges;
                line += 2;
                a = *line;
            } else {
                if (b == kEndOfLine || nextOld == kEndOfLine) return;
                if (!endTraced(tracer, cursor, y, b, nextOld)) return;
                edges = tracer.mEdges;
                prevLine += 2;
                b = *prevLine;
            }
            continue;
        }
        if ((a == kEndOfLine) | (b == kEndOfLine)) return;
        cursor = edges[cursor].next;
        if (cursor == 0) return;
        Edge& e = edges[cursor];
        if constexpr (smooth) {
            if (a != b)
                moveSmoothly(e, y, b, a, parity, step,
                             [&](int x1, int y1) { add(points, e, x1, y1); });
            parity = !parity;
        } else {
            TracedPoint* write = e.write;
            if (!hasRoom(write, 2)) [[unlikely]]
                write = points.extend(write);
            put(write, y, b);
            put(write + 1, y, a);
            e.write = write + (a != b ? 2 : 0);
        }
        a = nextNew;
        b = nextOld;
        ++line;
        ++prevLine;
    }
}

void VectorizerInside::addLineFast(Vectorizer& tracer, const int* line, const int* prevLine,
                                   int y) {
    if (tracer.mSmooth)
        addLineFast<true>(tracer, line, prevLine, y);
    else
        addLineFast<false>(tracer, line, prevLine, y);
}

}  // namespace Vaskel
