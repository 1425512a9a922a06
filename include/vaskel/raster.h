// Tracing bitmaps into outlines, and changing the resolution of image lines.

#ifndef VASKEL_RASTER_H
#define VASKEL_RASTER_H

#include "platform/pemmit.h"
#include "vaskel/export.h"

namespace Vaskel {

// ---- Tracing ----------------------------------------------------------------

/// Traces a bitmap into closed outlines.
///
/// The bitmap is never held: a subclass delivers it line by line as positions
/// at which the colour changes, and receives each outline as a path as soon as
/// it is closed. Outlines pass through clean (vaskel/geometry.h) with the
/// parameters that are set in the process, and those not larger than a minimum
/// size are dropped.
///
///   struct Tracer : Vaskel::Vectorizer {
///       Tracer() : Vectorizer(2) {}                      // drops specks up to 2 x 2
///       int getLine(int line, int* runs) override {      // one run, 10 to 30
///           runs[0] = 10, runs[1] = 30, runs[2] = 0x7FFFFFFF;
///           return 0;
///       }
///       void addPath(Pemmit::Path* path) override { outlines.emplace_back(path); }
///       std::vector<OwnedPath> outlines;
///   };
///   Tracer().vectorize(20, false)   delivers the rectangle 0,10 .. 20,30
///
/// In the outlines x is the line coordinate and y the position in the line.
/// Filled by the even-odd rule they give the bitmap back exactly when smoothing
/// and cleaning are off and the minimum size is negative or nothing is as
/// small.
///
/// Memory besides outlines: 200 KB for two lines, and 24 bytes for each of the
/// most positions that one line has, rounded up to a power of two, at most 1.5
/// MB. Time: linear in lines and positions.
///
/// Failures are thrown as int: -1 when memory for lines or edges cannot be had,
/// -2 when a line opens more than 65535 edges at a time. Whatever ends a trace
/// by an exception, also one of a subclass or std::bad_alloc of the host's
/// paths, releases the outlines that are still open; the object can trace
/// again.
///
/// An object is used by one thread at a time, different ones by different
/// threads only while nobody calls cleanpar and its like, since cleaning has
/// process-wide parameters.
class VASKEL_API Vectorizer {
 public:
    /// How many values getLine may write, the terminator included.
    static const int mLineSize = 25000;

    /// Outlines at most minSize wide and at most minSize high (maximum minus
    /// minimum of a coordinate) are dropped; nothing is smoothed. Throws the
    /// int -1.
    explicit Vectorizer(int minSize);

    /// First sets how outlines are cleaned, as vecsetpar does. With smooth,
    /// steps of one unit become slanted lines instead of stairs.
    Vectorizer(int minSize, int p1, int p2, int p3, int p4, bool smooth);

    /// A copy shares the buffers with its source until one of them traces, which
    /// gives that one buffers of its own; either may be destroyed first.
    Vectorizer(const Vectorizer& other);
    Vectorizer& operator=(const Vectorizer& other);

    /// Frees the buffers.
    virtual ~Vectorizer();

    /// Fills runs with the positions where line changes colour, ascending: the
    /// start and the end of the first run of set pixels, of the second, and so
    /// on, then 0x7FFFFFFF. Returns 0, or anything else to end the trace before
    /// this line: outlines are then closed at coordinate line.
    ///
    ///   pixels 10 to 29 set          runs 10, 30, 0x7FFFFFFF
    ///   no pixel set                 runs 0x7FFFFFFF
    ///
    /// At most mLineSize values are written; a list that fills the buffer needs
    /// no terminator. Lines with an odd number of positions, or out of order,
    /// give wrong outlines but do no other harm. May throw.
    virtual int getLine(int line, int* runs) = 0;

    /// The line coordinate that outlines get for line; line itself unless
    /// overridden. Asked after getLine. Outlines still open at the end are
    /// closed at the number of lines read, for which it is not asked.
    virtual int convertVertical(int line);

    /// Receives an outline: closed, cleaned, and owned by the subclass from the
    /// call on (release it with Pemmit::objrem), also when it throws.
    virtual void addPath(Pemmit::Path* path) = 0;

    /// Traces lines 0 to lines - 1. Returns 0.
    ///
    /// Before each line shows the progress and asks whether to cancel
    /// (Orlune::Progress); a cancelled trace, like one that getLine ends, still
    /// closes and delivers all outlines. flip exchanges the sides on which
    /// smoothing cuts corners; without smoothing it has no effect. A callback
    /// may trace with other objects, and with this one too.
    int vectorize(int lines, bool flip);

 private:
    friend struct VectorizerInside;

    // One place of the edge list: an outline under construction.
    struct Edge {
        unsigned short next;  // the next edge to the right, or the next free place; 0 for none
        Pemmit::Path* path;   // null for a free place and for place 0, the list's head
        int lastLine;         // line coordinate of the last point that smoothing looks at
        int lastPos;          // its position
    };

    void Initialize();
    void InitList();
    unsigned short InsertAfter(unsigned short after);
    void DeleteIndex(unsigned short prev);
    void AddLine(const int* line, const int* prevLine, int mode, int lineCoordinate);

    bool mSmooth;
    int mLineStep;  // always 1
    int* mLine;
    int* mPrevLine;
    Edge* mEdges;
    int mEdgeCapacity;
    unsigned short mFreeEdge;
    int mMinSize;
    bool mFlip;
    bool mTracing;  // vectorize is at work
};

/// Sets how the outlines of all tracers are cleaned, for the whole process:
/// cleanpar(p1, p2, Orlune::muldiv(1, p3, p4)), that is filter order p1,
/// tolerance p2 and, as resampling step, the whole part of p3 / p4.
///
///   vecsetpar(1, 2, 7, 2)   is cleanpar(1, 2, 3)
///   vecsetpar(0, 0, 1, 0)   is cleanpar(0, 0, 0), whose step counts as 1
VASKEL_API void vecsetpar(int p1, int p2, int p3, int p4);

}  // namespace Vaskel

#endif
