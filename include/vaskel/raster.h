// Tracing bitmaps into outlines, and changing the resolution of image lines.

#ifndef VASKEL_RASTER_H
#define VASKEL_RASTER_H

#include <cstdint>
#include <memory>

#include "platform/pemmit.h"
#include "vaskel/export.h"

namespace Vaskel {

struct DownsampleCells;  // private, as are
struct DownsamplePicks;
struct DownsampleSums;
struct UpsamplerInside;
struct TracedChunk;
class TracedPoints;

// ---- Tracing ----------------------------------------------------------------

/// Traces a bitmap into closed outlines.
///
/// The bitmap is never held: a subclass delivers it line by line as positions
/// at which the colour changes, and receives each outline as a path as soon as
/// it is closed. Outlines pass through clean (vaskel/geometry.h) with the
/// parameters that are set in the process; those at most a minimum size wide
/// are dropped, lower ones as specks and higher ones since clean refuses them.
///
///   struct Tracer : Vaskel::Vectorizer {
///       Tracer() : Vectorizer(2) {}                      // drops what is 2 lines thin
///       int getLine(int line, int* runs) override {      // one run, 10 to 30
///           runs[0] = 10, runs[1] = 30, runs[2] = 0x7FFFFFFF;
///           return 0;
///       }
///       void addPath(Pemmit::Path* path) override { outlines.push_back(path); }
///       std::vector<Pemmit::Path*> outlines;             // Pemmit::objrem releases them
///   };
///   Tracer().vectorize(20, false)   delivers the rectangle 0,10 .. 20,30
///
/// In the outlines x is the line coordinate and y the position in the line.
/// Filled by the even-odd rule they give the bitmap back exactly when smoothing
/// and cleaning are off and the minimum size is negative or nothing is as thin.
///
/// Memory besides outlines: 200 KB for two lines, and 32 bytes for each of the
/// most positions that one line has, rounded up to a power of two, at most 2
/// MB; besides, until a trace ends, 9 bytes for each point of all outlines
/// that are open at a time, up to 256 for each edge that became part of them,
/// and up to 24 for each point of the largest outline. Time: linear in lines
/// and positions.
///
/// Failures are thrown as int: -1 when memory for lines or edges cannot be had,
/// -2 when a line opens more than 65535 edges at a time. Whatever ends a trace
/// by an exception, also one of a subclass or std::bad_alloc where points or
/// the host's paths find no memory, releases the outlines that are still open;
/// the object can trace again.
///
/// Objects may be used by different threads, but only one of all may trace at
/// a time, since cleaning has process-wide parameters and buffers.
class VASKEL_API Vectorizer {
 public:
    /// How many values getLine may write, the terminator included.
    static const int mLineSize = 25000;

    /// Outlines at most minSize wide (maximum minus minimum of x, the line
    /// coordinate) are dropped, however high; nothing is smoothed. Throws the
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

    // What vectorize is doing, and whose the points of open outlines are.
    enum class Tracing : unsigned char { kNo, kHostPoints, kOwnPoints };

    // One place of the edge list: an outline under construction.
    struct Edge {
        unsigned short next;  // the next edge to the right, or the next free place; 0 for none
        unsigned short mate;  // of own points: the edge at the outline's other end
        int lastLine;         // line coordinate of the last point that smoothing looks at
        int lastPos;          // its position
        union {
            Pemmit::Path* path;  // null for a free place and for place 0, the list's head
            Pemmit::PointBase<int>* write;  // of own points: where the next one goes
            TracedPoints* points;           // and of the list's head: all of them
        };
        TracedChunk* first;  // of own points: the first ones
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
    Tracing mTracing;
};

/// Sets how the outlines of all tracers are cleaned, for the whole process:
/// cleanpar(p1, p2, Orlune::muldiv(1, p3, p4)), that is filter order p1,
/// tolerance p2 and, as resampling step, the whole part of p3 / p4.
///
///   vecsetpar(1, 2, 7, 2)   is cleanpar(1, 2, 3)
///   vecsetpar(0, 0, 1, 0)   is cleanpar(0, 0, 0), whose step counts as 1
VASKEL_API void vecsetpar(int p1, int p2, int p3, int p4);

// ---- Reducing ---------------------------------------------------------------

/// Reduces an image that arrives line by line, by a fractional factor: each
/// output pixel is the mean of the area that it covers, or, without filtering,
/// one of its input pixels.
///
///   downsampler s(1200, 300, width, height);      // to a quarter
///   for (each input line) {
///       s.stuff(line);
///       while (s.ready()) s.get(out);              // out: s.resize(width) pixels
///   }
///   if (lines were stuffed since the last get) s.getlastline(out);
///
/// Lines have one byte a pixel, or four bytes each of which is a channel of its
/// own; an image uses one of the two forms throughout. The factor is at least 1
/// and the same in both directions up to the rounding of each dimension to
/// whole output pixels.
///
/// Sums are kept in single precision, updated pixel by pixel; stored images
/// depend on the last bit of that. In cells of more than some thousand pixels
/// an even area may come out one level lower for it.
///
/// One object is one image; clone makes another of the same settings. With a
/// width or height of 0 every call does nothing and ready is 0. Memory: about
/// 60 bytes an output pixel of a line, and in tables 20 more and one an input
/// pixel; for factors that are not multiples of 1/64, also the input lines of an
/// output line, as long as they take at most 1 MiB. An object belongs to one
/// thread at a time. std::bad_alloc passes through, except where clone says
/// otherwise.
class VASKEL_API downsampler {
 public:
    /// An image of width x height pixels whose resolution goes from
    /// inResolution to outResolution (any unit). A quotient below 1 counts as
    /// 1, as does one that is not finite. The output is at least 1 x 1.
    ///
    ///   width 9, factor 3: 3 pixels of 3; width 10: 4 pixels of 2.5
    downsampler(double inResolution, double outResolution, unsigned int width, unsigned int height);

    /// The same settings, from the first line on: what other has summed so far
    /// is not copied.
    downsampler(const downsampler& other);
    /// Copies everything and shares other's buffers from now on: what one of
    /// the two writes the other reads. Buffers live as long as an object that
    /// uses them.
    downsampler& operator=(const downsampler& other);
    virtual ~downsampler();

    /// A new object by the copy constructor, the caller's; null when memory
    /// ends.
    downsampler* clone() const;

    /// Takes the next input line of width pixels.
    void stuff(const unsigned char* line);
    void stuff(const unsigned int* line);

    /// Not 0 when an output line is complete. Rounding can leave the last line
    /// of an image incomplete; it then comes with getlastline.
    short ready() const;
    /// Not 0 when not even the next input line can complete an output line.
    short notforawhile() const;

    /// Takes the complete output line, resize(width) pixels; without one
    /// nothing is written. The next stuff that completes a line overwrites one
    /// that was not taken.
    void get(unsigned char* line);
    void get(unsigned int* line);

    /// Takes the last line, which is not complete: its sums are divided by a
    /// whole cell, so that it comes out the darker the fewer lines it has. The
    /// one-byte form rounds with Orlune::iround, the other one adds 1/2 and
    /// truncates.
    void getlastline(unsigned char* line);
    void getlastline(unsigned int* line);

    /// One line of one-byte pixels by picking, apart from the image: in place,
    /// or from line to out. resize(width) bytes are written.
    void adjust(unsigned char* line) const;
    void adjust(const unsigned char* line, unsigned char* out) const;

    /// How many output pixels, or lines, v input ones make: the quotient
    /// rounded up, unless it is above a whole number by 0.00001 or less.
    unsigned int resize(unsigned int v) const;
    unsigned int resizeY(unsigned int v) const;
    /// The horizontal factor, input pixels an output pixel.
    double factor() const;

    /// Means (true, as at first) or picks (false). Not to be changed within an
    /// image.
    void setFiltering(bool filtering);
    bool isFiltering() const;

 private:
    friend struct DownsamplerInside;

    double mFactorX;
    double mFractionX;
    double mFactorY;
    double mFractionY;
    mutable double mColumn;
    double mRow;
    std::shared_ptr<unsigned char[]> mLine;
    std::shared_ptr<unsigned char[]> mScratch;
    std::shared_ptr<DownsampleSums> mSums;
    std::uint32_t mWidth;
    std::uint32_t mStepX;
    std::uint32_t mHeight;
    std::uint32_t mStepY;
    bool mFiltering;
    std::shared_ptr<const DownsampleCells> mCells;
    std::shared_ptr<const DownsamplePicks> mPicks;
};

// ---- Enlarging --------------------------------------------------------------

/// Enlarges an image of four-byte pixels that arrives line by line, by a
/// fractional factor, repeating pixels and lines. Pixels are copied whole.
///
///   upsampler u(300, 450, width);                  // by 1.5
///   for (each input line) {
///       u.stuff(line);
///       while (u.ready()) u.get(out, maxBytes);
///   }
///
/// A fraction carries on to the next pixel and line: width 3 by 1.5 gives lines
/// of 4 pixels (a a b c), and lines come 2, 1, 2, 1 ... times. A factor below 1
/// drops lines. A factor of 0 or below, of 2^52 or more, or not a number, and a
/// negative width, make an empty image.
///
/// Copies share the line buffers, which live as long as an object that uses
/// them. Memory: about 15 bytes a pixel of an output line. An object and its
/// copies belong to one thread at a time, all together. std::bad_alloc passes
/// through.
class VASKEL_API upsampler {
 public:
    /// Lines of width pixels whose resolution goes from inResolution to
    /// outResolution.
    upsampler(double inResolution, double outResolution, int width);
    upsampler(const upsampler& other);
    upsampler& operator=(const upsampler& other);
    virtual ~upsampler();

    /// Takes the next input line of width pixels.
    void stuff(const unsigned int* line);
    /// 1 while an output line waits, else 0.
    short ready() const;
    /// Takes an output line: copies at most maxBytes of its resize(width) * 4
    /// bytes to out, cutting at the byte; a negative maxBytes copies nothing.
    /// The line is counted as taken either way. All zero before the first
    /// stuff. Lines that come to lie side by side go past the caches once they
    /// are 24 MiB together.
    void get(unsigned int* out, int maxBytes);
    /// The enlarged size of a length: n times the factor, truncated towards 0,
    /// at most the largest integer; 0 for an empty image.
    int resize(int n) const;

 private:
    double mFactor;
    double mFraction;
    double mColumn;
    double mRow;
    std::shared_ptr<unsigned char[]> mLine;
    std::shared_ptr<unsigned char[]> mSecondLine;
    std::int32_t mWidth;
    std::int32_t mWholeFactor;
    std::int64_t mPixels;  // of an output line
    std::shared_ptr<UpsamplerInside> mInside;
};

}  // namespace Vaskel

#endif
