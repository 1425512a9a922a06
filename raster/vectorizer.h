// What the tracer consists of besides its public face.

#ifndef RASTER_VECTORIZER_H
#define RASTER_VECTORIZER_H

#include <climits>
#include <cstdint>

#include "platform/pemmit.h"
#include "vaskel/raster.h"

namespace Vaskel {

/// Ends a line's list of positions.
constexpr int kEndOfLine = INT_MAX;

/// Where the points of open outlines are: with kFast in the tracer, which hands
/// each outline over when it is whole, with kPlain in paths of the host, which
/// joins them. The two give the same outlines. kFast takes place where the host
/// offers Pemmit::patnew. Tests set the form; the library never does.
enum class AddLineForm { kFast, kPlain };
extern AddLineForm gAddLineForm;

/// The tracer's insides.
struct VectorizerInside {
    using Edge = Vectorizer::Edge;
    class Trace;

    // For tests: whether the points of open outlines are the tracer's.
    static bool keepsPoints(const Vectorizer& tracer) {
        return tracer.mTracing == Vectorizer::Tracing::kOwnPoints;
    }

    // Buffers.
    static void share(Vectorizer& to, const Vectorizer& from);
    static void releaseBuffers(Vectorizer& tracer);

    // The edge list. insert puts a free place behind another one in the list and
    // returns it; remove takes the one behind prev out.
    static void chainFree(Edge* edges, int first, int capacity);
    static unsigned short grow(Vectorizer& tracer);
    static unsigned short insert(Vectorizer& tracer, unsigned short after) {
        const unsigned short i = tracer.mFreeEdge;
        if (i == 0) throw int{-2};
        unsigned short rest = tracer.mEdges[i].next;
        if (rest == 0) rest = grow(tracer);
        tracer.mFreeEdge = rest;
        tracer.mEdges[i].next = tracer.mEdges[after].next;
        tracer.mEdges[after].next = i;
        return i;
    }
    static void remove(Edge* edges, unsigned short& freeEdge, unsigned short prev) {
        const unsigned short i = edges[prev].next;
        edges[prev].next = edges[i].next;
        edges[i].next = freeEdge;
        freeEdge = i;
    }
    static void releaseOpenEdges(Vectorizer& tracer);

    // AddLine: the rule itself, and the form that is held to it. Lists are
    // those that mode has left: none of them is replaced any more.
    static void addLinePlain(Vectorizer& tracer, const int* line, const int* prevLine, int y);
    static void addLineFast(Vectorizer& tracer, const int* line, const int* prevLine, int y);
    template <bool smooth>
    static void addLineFast(Vectorizer& tracer, const int* line, const int* prevLine, int y);

    // The steps of AddLine that change the list. A start returns the edge on
    // the right; an end is given the edge before the two that end.
    static unsigned short startRun(Vectorizer& tracer, unsigned short cursor, int y, int lo,
                                   int hi);
    static bool endRun(Vectorizer& tracer, unsigned short cursor, int y, int lo, int hi);
    static unsigned short startTraced(Vectorizer& tracer, unsigned short cursor, int y, int lo,
                                      int hi);
    static bool endTraced(Vectorizer& tracer, unsigned short cursor, int y, int lo, int hi);
    static void deliver(Vectorizer& tracer, const Pemmit::PointBase<int>* points, int count);
};

/// Whether an outline of this box is dropped for its size.
inline bool isAtMost(const Pemmit::Box& box, int size) {
    return std::int64_t{box.maxX} - box.minX <= size && std::int64_t{box.maxY} - box.minY <= size;
}

// |a - b| > step
inline bool isFarther(int a, int b, int step) {
    const std::int64_t distance = std::int64_t{a} - b;
    return distance > step || -distance > step;
}

inline bool isLater(int y, int lastLine, int step) { return std::int64_t{y} - lastLine > step; }

/// An edge moves from xPrev to xCur at line coordinate y, where steps of one
/// unit become slanted lines: tells add which points come. The parity decides
/// on which side of a step the corner lies.
template <class Edge, class Add>
inline void moveSmoothly(Edge& e, int y, int xPrev, int xCur, bool parity, int step, Add add) {
    if (parity ? xCur < xPrev : xCur > xPrev) {
        if (isFarther(xPrev, e.lastPos, step)) {
            add(e.lastLine, xPrev);
            e.lastPos = xPrev;
        }
        if (isFarther(xCur, e.lastPos, step) && isLater(y, e.lastLine, step)) add(y, xPrev);
        add(y, xCur);
        e.lastPos = xCur;
    } else {
        if (isFarther(xPrev, e.lastPos, step) && isLater(y, e.lastLine, step))
            add(e.lastLine, xPrev);
        add(y, xPrev);
        e.lastPos = xPrev;  // the next line sees the way to xCur
    }
    e.lastLine = y;
}

}  // namespace Vaskel

#endif
