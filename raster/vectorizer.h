// What the tracer consists of besides its public face.

#ifndef RASTER_VECTORIZER_H
#define RASTER_VECTORIZER_H

#include <climits>

#include "vaskel/raster.h"

namespace Vaskel {

/// Ends a line's list of positions.
constexpr int kEndOfLine = INT_MAX;

/// Which form of AddLine works. Tests set it; the library never does.
enum class AddLineForm { kFast, kPlain };
extern AddLineForm gAddLineForm;

/// The tracer's insides.
struct VectorizerInside {
    using Edge = Vectorizer::Edge;
    class Trace;

    // Buffers.
    static void share(Vectorizer& to, const Vectorizer& from);
    static void releaseBuffers(Vectorizer& tracer);

    // The edge list.
    static void chainFree(Edge* edges, int first, int capacity);
    static unsigned short grow(Vectorizer& tracer);
    static void releaseOpenEdges(Vectorizer& tracer);

    // AddLine: the rule itself, and the form that is held to it. Lists are
    // those that mode has left: none of them is replaced any more.
    static void addLinePlain(Vectorizer& tracer, const int* line, const int* prevLine, int y);
    static void addLineFast(Vectorizer& tracer, const int* line, const int* prevLine, int y);

    // The steps of AddLine that change the list. startRun returns the edge on
    // the right; endRun is given the edge before the two that end.
    static unsigned short startRun(Vectorizer& tracer, unsigned short cursor, int y, int lo,
                                   int hi);
    static bool endRun(Vectorizer& tracer, unsigned short cursor, int y, int lo, int hi);
};

}  // namespace Vaskel

#endif
