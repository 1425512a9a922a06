// Between rows and outlines stands the library's Vectorizer. It closes what is
// open at the end at the bare line number, which is no outline coordinate
// where a pixel has several units. So it is given one empty row at the end,
// and one before it is told of a cancellation: then nothing is open any more.

#include "samples/proof/tracer.h"

#include <algorithm>
#include <climits>
#include <exception>
#include <new>

#include "embedded/host.h"
#include "samples/proof/failure.h"
#include "samples/proof/numbers.h"
#include "samples/proof/runs.h"
#include "vaskel/raster.h"

namespace Proof {
namespace {

class ScanVectorizer : public Vaskel::Vectorizer {
 public:
    ScanVectorizer(InkRows& rows, const Orientation& orientation, const TraceSettings& settings,
                   TraceResult& result)
        : Vectorizer(settings.minSize, settings.filter, settings.tolerance, settings.step, 1,
                     settings.smooth),
          mRows(rows),
          mOrientation(orientation),
          mScale(settings.unitsPerPixel),
          mResult(result) {}

    // Exceptions of ours wait here: the library's open paths would be lost if
    // they passed through it.
    std::exception_ptr problem() const { return mProblem; }

    void stop() { mStopWanted = true; }
    bool closed() const { return mClosed; }

 private:
    int getLine(int line, int* runs) override {
        if (mProblem) return 1;
        if (mStopWanted || line == mRows.height()) {
            mClosed = true;
            runs[0] = INT_MAX;
            return 0;
        }
        try {
            fillLine(line, runs);
            mResult.rows = line + 1;
            return 0;
        } catch (...) {
            mProblem = std::current_exception();
            return 1;
        }
    }

    int convertVertical(int line) override { return line * mScale; }

    void addPath(Pemmit::Path* path) override {
        try {
            if (!mProblem) addTraced(path, mOrientation, mResult.outlines);
        } catch (...) {
            mProblem = std::current_exception();
        }
        Pemmit::objrem(path);
    }

    void fillLine(int line, int* runs) {
        const int room = mLineSize - 1;  // the terminator takes one
        const int found = findRuns(mRows.next(), mRows.width(), mScale, runs, room);
        if (found > room)
            throw Failure("row " + std::to_string(line + 1) + " changes between ink and paper " +
                          grouped(static_cast<unsigned>(found)) + " times; the tracer takes " +
                          grouped(static_cast<unsigned>(room)) +
                          " (a halftone or noise: try another --threshold)");
        runs[found] = INT_MAX;
    }

    InkRows& mRows;
    const Orientation& mOrientation;
    int mScale;
    TraceResult& mResult;
    std::exception_ptr mProblem;
    bool mStopWanted = false;
    bool mClosed = false;
};

// Routes the platform's questions to watch while it lives.
class WatchedPlatform {
 public:
    WatchedPlatform(ScanVectorizer& tracer, const std::function<bool(double)>& watch) {
        Embedded::onProgress([this](float percent) { mPercent = percent; });
        Embedded::onPollCancel([this, &tracer, &watch] {
            if (watch && !watch(mPercent)) tracer.stop();
            return tracer.closed();
        });
    }
    ~WatchedPlatform() {
        Embedded::onProgress(nullptr);
        Embedded::onPollCancel(nullptr);
    }
    WatchedPlatform(const WatchedPlatform&) = delete;
    WatchedPlatform& operator=(const WatchedPlatform&) = delete;

 private:
    double mPercent = 0;
};

}  // namespace

TraceResult traceRows(InkRows& rows, const Orientation& orientation, const TraceSettings& settings,
                      const std::function<bool(double percent)>& watch) {
    TraceResult result;
    try {
        ScanVectorizer tracer(rows, orientation, settings, result);
        const WatchedPlatform platform(tracer, watch);
        tracer.vectorize(rows.height() + 1, false);
        if (tracer.problem()) std::rethrow_exception(tracer.problem());
    } catch (int) {  // the library's way to say that memory has run out
        throw std::bad_alloc();
    }
    result.cancelled = result.rows < rows.height();
    return result;
}

}  // namespace Proof
