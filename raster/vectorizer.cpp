// The tracer's frame: buffers, their owners, and the loop over the lines.
//
// Between two traces the edge list is empty. A trace that begins makes sure
// that its buffers are nobody else's, and one that ends, in whatever way,
// releases what is still open.

#include "raster/vectorizer.h"

#include <algorithm>
#include <cstddef>

#include "geometry/point_runs.h"
#include "platform/orlune.h"
#include "raster/shared_block.h"
#include "raster/traced_points.h"
#include "util/narrow.h"
#include "vaskel/geometry.h"

namespace Vaskel {

const int Vectorizer::mLineSize;
AddLineForm gAddLineForm = AddLineForm::kFast;

namespace {

constexpr int kFirstCapacity = 256;

// A run-list buffer has two places more than a subclass may write. The first of
// them holds a terminator at all times: a list that fills the buffer ends there.
// The other one may be read together with that. All the others begin as
// terminators, for subclasses that forget theirs.
int* makeLine() {
    int* const line = SharedBlock::make<int>(Vectorizer::mLineSize + 2);
    if (line) std::fill_n(line, Vectorizer::mLineSize + 2, kEndOfLine);
    return line;
}

}  // namespace

/// A call of vectorize: gives the tracer buffers that nobody else uses, and
/// clears up at its end. For a call from inside a callback the outer call's
/// buffers and flag are put aside.
class VectorizerInside::Trace {
 public:
    Trace(Vectorizer& tracer, bool flip)
        : mTracer(tracer),
          mLine(tracer.mLine),
          mPrevLine(tracer.mPrevLine),
          mEdges(tracer.mEdges),
          mEdgeCapacity(tracer.mEdgeCapacity),
          mFreeEdge(tracer.mFreeEdge),
          mFlip(tracer.mFlip),
          mTracing(tracer.mTracing) {
        if (isNested() || !mEdges || SharedBlock::isShared(mEdges) ||
            SharedBlock::isShared(mLine) || SharedBlock::isShared(mPrevLine)) {
            try {
                tracer.Initialize();
            } catch (...) {
                putBack();
                throw;
            }
            if (!isNested()) releaseSaved();
        } else {
            // Another owner may have left the list in any state.
            chainFree(mEdges, 1, mEdgeCapacity);
            mEdges[0].next = 0;
            tracer.mFreeEdge = 1;
        }
        tracer.mTracing = Tracing::kHostPoints;
        tracer.mFlip = flip;
        if (gAddLineForm != AddLineForm::kFast || !hostTakesOutlines()) return;
        tracer.mTracing = Tracing::kOwnPoints;
        tracer.mEdges[0].points = &mPoints;
    }

    ~Trace() {
        releaseOpenEdges(mTracer);
        mTracer.mTracing = mTracing;
        mTracer.mEdges[0].path = nullptr;
        if (!isNested()) return;
        releaseBuffers(mTracer);
        putBack();
        mTracer.mFlip = mFlip;
    }

    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;

 private:
    using Tracing = Vectorizer::Tracing;

    bool isNested() const { return mTracing != Tracing::kNo; }
    void putBack() {
        mTracer.mLine = mLine;
        mTracer.mPrevLine = mPrevLine;
        mTracer.mEdges = mEdges;
        mTracer.mEdgeCapacity = mEdgeCapacity;
        mTracer.mFreeEdge = mFreeEdge;
    }
    void releaseSaved() {
        SharedBlock::release(mLine);
        SharedBlock::release(mPrevLine);
        SharedBlock::release(mEdges);
    }

    Vectorizer& mTracer;
    int* mLine;
    int* mPrevLine;
    Edge* mEdges;
    int mEdgeCapacity;
    unsigned short mFreeEdge;
    bool mFlip;
    Tracing mTracing;
    TracedPoints mPoints;
};

void VectorizerInside::share(Vectorizer& to, const Vectorizer& from) {
    SharedBlock::addOwner(from.mLine);
    SharedBlock::addOwner(from.mPrevLine);
    SharedBlock::addOwner(from.mEdges);
    to.mLine = from.mLine;
    to.mPrevLine = from.mPrevLine;
    to.mEdges = from.mEdges;
    to.mEdgeCapacity = from.mEdgeCapacity;
    to.mFreeEdge = from.mFreeEdge;
}

void VectorizerInside::releaseBuffers(Vectorizer& tracer) {
    SharedBlock::release(tracer.mLine);
    SharedBlock::release(tracer.mPrevLine);
    SharedBlock::release(tracer.mEdges);
    tracer.mLine = tracer.mPrevLine = nullptr;
    tracer.mEdges = nullptr;
}

Vectorizer::Vectorizer(int minSize)
    : mSmooth(false),
      mLineStep(1),
      mEdgeCapacity(kFirstCapacity),
      mMinSize(minSize),
      mFlip(false),
      mTracing(Tracing::kNo) {
    Initialize();
}

// The parameters are set before memory is asked for, and stay set without it.
Vectorizer::Vectorizer(int minSize, int p1, int p2, int p3, int p4, bool smooth)
    : mSmooth(smooth),
      mLineStep(1),
      mEdgeCapacity(kFirstCapacity),
      mMinSize(minSize),
      mFlip(false),
      mTracing(Tracing::kNo) {
    vecsetpar(p1, p2, p3, p4);
    Initialize();
}

Vectorizer::Vectorizer(const Vectorizer& other)
    : mSmooth(other.mSmooth),
      mLineStep(other.mLineStep),
      mMinSize(other.mMinSize),
      mFlip(other.mFlip),
      mTracing(Tracing::kNo) {
    VectorizerInside::share(*this, other);
}

Vectorizer& Vectorizer::operator=(const Vectorizer& other) {
    if (this == &other) return *this;
    if (mTracing == Tracing::kNo) {  // a trace keeps its buffers
        VectorizerInside::releaseBuffers(*this);
        VectorizerInside::share(*this, other);
    }
    mSmooth = other.mSmooth;
    mMinSize = other.mMinSize;
    mFlip = other.mFlip;
    return *this;
}

Vectorizer::~Vectorizer() { VectorizerInside::releaseBuffers(*this); }

int Vectorizer::convertVertical(int line) { return line; }

// Fills the three buffer fields, whatever they held; on failure they are null.
void Vectorizer::Initialize() {
    mLine = makeLine();
    mPrevLine = makeLine();
    mEdges = nullptr;
    if (!mLine || !mPrevLine) {
        VectorizerInside::releaseBuffers(*this);
        throw int{-1};
    }
    InitList();
}

int Vectorizer::vectorize(int lines, bool flip) {
    const VectorizerInside::Trace trace(*this, flip);
    Orlune::Progress progress;
    int line = 0;
    for (; line < lines; line += mLineStep) {
        progress.set(static_cast<float>(line * 100.0 / lines));
        if (progress.isCanceled()) break;
        int* const runs = mLine;
        if (getLine(line, runs) != 0) break;
        runs[mLineSize] = kEndOfLine;
        AddLine(runs, mPrevLine, line == 0 ? 0 : 1, convertVertical(line));
        mLine = mPrevLine;
        mPrevLine = runs;
    }
    // The number of lines itself, not what convertVertical would make of it:
    // callers place their bitmaps by this coordinate.
    // Test: "vectorizer: the final pass does not ask convertVertical".
    AddLine(mLine, mPrevLine, 2, line);
    return 0;
}

void vecsetpar(int p1, int p2, int p3, int p4) {
    // Only the smallest integer divided by -1 does not fit.
    cleanpar(p1, p2, clamp32(Orlune::muldiv(1, p3, p4)));
}

}  // namespace Vaskel
