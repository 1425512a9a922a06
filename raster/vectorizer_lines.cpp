// One line against the line before it.
//
// The positions of both are taken in ascending order, two at a time. Two of the
// new line open two edges, two of the old one close two, and one of each moves
// an edge. Lists that are out of order or have an odd number of positions are
// taken as they come: each turn of the loop takes two positions, and none is
// taken behind a terminator.
//
// Here the host holds the points of open outlines and joins them.

#include <cstdint>

#include "platform/pemmit.h"
#include "raster/vectorizer.h"

namespace Vaskel {
namespace {

// A place is read behind a terminator.
constexpr int kNoPositions[] = {kEndOfLine, kEndOfLine};

}  // namespace

void Vectorizer::AddLine(const int* line, const int* prevLine, int mode, int lineCoordinate) {
    if (mode == 0) prevLine = kNoPositions;
    if (mode == 2) line = kNoPositions;
    if (mTracing == Tracing::kOwnPoints)
        VectorizerInside::addLineFast(*this, line, prevLine, lineCoordinate);
    else
        VectorizerInside::addLinePlain(*this, line, prevLine, lineCoordinate);
}

unsigned short VectorizerInside::startRun(Vectorizer& tracer, unsigned short cursor, int y, int lo,
                                          int hi) {
    const unsigned short left = tracer.InsertAfter(cursor);
    const unsigned short right = tracer.InsertAfter(left);
    Edge& l = tracer.mEdges[left];
    Edge& r = tracer.mEdges[right];
    Pemmit::patlinbb(l.path, r.path);
    Pemmit::patlin(l.path, y, lo);
    l.lastLine = y;
    l.lastPos = lo;
    Pemmit::patlin(r.path, y, hi);
    r.lastLine = y;
    r.lastPos = hi;
    return right;
}

bool VectorizerInside::endRun(Vectorizer& tracer, unsigned short cursor, int y, int lo, int hi) {
    const int step = tracer.mLineStep;
    const unsigned short first = tracer.mEdges[cursor].next;
    const unsigned short second = first ? tracer.mEdges[first].next : first;
    if (second == 0) return false;
    const int ends[2] = {lo, hi};
    Edge* const edges[2] = {&tracer.mEdges[first], &tracer.mEdges[second]};
    for (int i = 0; i < 2; ++i) {
        const Edge& e = *edges[i];
        if (tracer.mSmooth && isFarther(ends[i], e.lastPos, step) && isLater(y, e.lastLine, step))
            Pemmit::patlin(e.path, e.lastLine, ends[i]);
        Pemmit::patlin(e.path, y, ends[i]);
    }
    Pemmit::patlinee(edges[0]->path, edges[1]->path);
    tracer.DeleteIndex(cursor);
    tracer.DeleteIndex(cursor);
    return true;
}

namespace {

using Edge = VectorizerInside::Edge;

// An edge moves from xPrev to xCur at line coordinate y, in stairs.
void moveExactly(Edge& e, int y, int xPrev, int xCur) {
    Pemmit::patlin(e.path, y, xPrev);
    Pemmit::patlin(e.path, y, xCur);
}

}  // namespace

void VectorizerInside::addLinePlain(Vectorizer& tracer, const int* line, const int* prevLine,
                                    int y) {
    unsigned short cursor = 0;
    bool parity = !tracer.mFlip;
    for (;;) {
        const int a = *line;
        const int b = *prevLine;
        if (a == kEndOfLine && b == kEndOfLine) return;
        const bool firstIsNew = a < b;
        const int lo = firstIsNew ? a : b;
        (firstIsNew ? line : prevLine)++;
        const bool secondIsOld = *prevLine <= *line;
        const int hi = secondIsOld ? *prevLine : *line;
        if (hi == kEndOfLine) return;
        (secondIsOld ? prevLine : line)++;

        if (firstIsNew && !secondIsOld) {
            cursor = startRun(tracer, cursor, y, lo, hi);
        } else if (!firstIsNew && secondIsOld) {
            if (!endRun(tracer, cursor, y, lo, hi)) return;
        } else {
            const int xCur = firstIsNew ? lo : hi;
            const int xPrev = firstIsNew ? hi : lo;
            const bool before = parity;
            parity = !parity;
            cursor = tracer.mEdges[cursor].next;
            if (cursor == 0) return;
            Edge& e = tracer.mEdges[cursor];
            if (xPrev == xCur) continue;
            if (tracer.mSmooth)
                moveSmoothly(e, y, xPrev, xCur, before, tracer.mLineStep,
                             [&](int x1, int y1) { Pemmit::patlin(e.path, x1, y1); });
            else
                moveExactly(e, y, xPrev, xCur);
        }
    }
}

}  // namespace Vaskel
