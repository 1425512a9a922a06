// One line against the line before it.
//
// The positions of both are taken in ascending order, two at a time. Two of the
// new line open two edges, two of the old one close two, and one of each moves
// an edge. Lists that are out of order or have an odd number of positions are
// taken as they come: each turn of the loop takes two positions, and none is
// taken behind a terminator.

#include <cstdint>

#include "platform/pemmit.h"
#include "raster/vectorizer.h"

namespace Vaskel {
namespace {

constexpr int kNoPositions[] = {kEndOfLine};

// |a - b| > step
bool isFarther(int a, int b, int step) {
    const std::int64_t distance = std::int64_t{a} - b;
    return distance > step || -distance > step;
}

bool isLater(int y, int lastLine, int step) { return std::int64_t{y} - lastLine > step; }

}  // namespace

void Vectorizer::AddLine(const int* line, const int* prevLine, int mode, int lineCoordinate) {
    if (mode == 0) prevLine = kNoPositions;
    if (mode == 2) line = kNoPositions;
    if (gAddLineForm == AddLineForm::kPlain)
        VectorizerInside::addLinePlain(*this, line, prevLine, lineCoordinate);
    else
        VectorizerInside::addLineFast(*this, line, prevLine, lineCoordinate);
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

// The same with steps of one unit as slanted lines; the parity decides on which
// side of a step the corner lies.
void moveSmoothly(Edge& e, int y, int xPrev, int xCur, bool parity, int step) {
    if (parity ? xCur < xPrev : xCur > xPrev) {
        if (isFarther(xPrev, e.lastPos, step)) {
            Pemmit::patlin(e.path, e.lastLine, xPrev);
            e.lastPos = xPrev;
        }
        if (isFarther(xCur, e.lastPos, step) && isLater(y, e.lastLine, step))
            Pemmit::patlin(e.path, y, xPrev);
        Pemmit::patlin(e.path, y, xCur);
        e.lastPos = xCur;
    } else {
        if (isFarther(xPrev, e.lastPos, step) && isLater(y, e.lastLine, step))
            Pemmit::patlin(e.path, e.lastLine, xPrev);
        Pemmit::patlin(e.path, y, xPrev);
        e.lastPos = xPrev;  // the next line sees the way to xCur
    }
    e.lastLine = y;
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
                moveSmoothly(e, y, xPrev, xCur, before, tracer.mLineStep);
            else
                moveExactly(e, y, xPrev, xCur);
        }
    }
}

// The heads of both lists stay in registers, and each kind of turn knows which
// head it has to read anew. Equal heads with a later old one behind are an edge
// that stays where it is: by the rule lo is the old one and hi the new one.
template <bool smooth>
static void addLine(Vectorizer& tracer, const int* line, const int* prevLine, int y, bool parity,
                    Edge* const& edges, int step) {
    unsigned short cursor = 0;
    int a = *line;
    int b = *prevLine;
    for (;;) {
        if (a == b) {
            if (a == kEndOfLine) return;
            const int nextOld = prevLine[1];
            if (nextOld > b) {
                cursor = edges[cursor].next;
                if (cursor == 0) return;
                parity = !parity;
                a = *++line;
                b = nextOld;
                ++prevLine;
                continue;
            }
        }
        if (a < b) {
            const int nextNew = line[1];
            if (nextNew < b) {
                cursor = VectorizerInside::startRun(tracer, cursor, y, a, nextNew);
                line += 2;
                a = *line;
                continue;
            }
            if (b == kEndOfLine) return;
        } else {
            const int nextOld = prevLine[1];
            if (nextOld <= a) {
                if (nextOld == kEndOfLine) return;
                if (!VectorizerInside::endRun(tracer, cursor, y, b, nextOld)) return;
                prevLine += 2;
                b = *prevLine;
                continue;
            }
        }
        cursor = edges[cursor].next;
        if (cursor == 0) return;
        if constexpr (smooth) {
            if (a != b) moveSmoothly(edges[cursor], y, b, a, parity, step);
        } else {
            if (a != b) moveExactly(edges[cursor], y, b, a);
        }
        parity = !parity;
        a = *++line;
        b = *++prevLine;
    }
}

void VectorizerInside::addLineFast(Vectorizer& tracer, const int* line, const int* prevLine,
                                   int y) {
    // The array may be replaced while edges are added: it is read at each use.
    const bool parity = !tracer.mFlip;
    if (tracer.mSmooth)
        addLine<true>(tracer, line, prevLine, y, parity, tracer.mEdges, tracer.mLineStep);
    else
        addLine<false>(tracer, line, prevLine, y, parity, tracer.mEdges, tracer.mLineStep);
}

}  // namespace Vaskel
