// Simplification: drops output points near the straight line through their
// neighbours, and writes the others to the result.

#ifndef GEOMETRY_CLEAN_SIMPLIFY_H
#define GEOMETRY_CLEAN_SIMPLIFY_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "geometry/clean.h"
#include "geometry/point_runs.h"
#include "platform/pemmit.h"

namespace Vaskel {

/// A vector between two points; 33 bits a coordinate.
struct Step {
    std::int64_t x, y;
};

/// As many steps as may be pending.
constexpr int kMostPending = 50;

/// Whether both components fit in 16 signed bits: longer ones are never
/// absorbed.
constexpr bool isShort(const Step& d) {
    return (static_cast<std::uint64_t>(d.x + 32768) | static_cast<std::uint64_t>(d.y + 32768)) <=
           65535;
}

constexpr std::int64_t cross(const Step& s, const Step& d) { return s.x * d.y - s.y * d.x; }

/// Orlune::mulsqrt(tolerance^2, |d|^2) for a short d: the tolerance times the
/// length of d.
std::int64_t toleranceTimesLength(std::int64_t tolerance, const Step& d);

/// The rule itself; the faster form is held to it.
///
/// P is the last emitted point, and the pending steps lead from it to the
/// points that came since. A new point joins them while every pending step
/// lies within the tolerance of the line from P to it; otherwise, and when
/// kMostPending are waiting, the last pending point is emitted and becomes P,
/// and the new point's step is the only pending one.
class SimplifyPlain {
 public:
    /// Writes to result; a tolerance of 0 emits every point but the last.
    SimplifyPlain(Pemmit::Path* result, int tolerance) : mResult(result), mTolerance(tolerance) {}

    void add(int x, int y);

 private:
    void emit(const Step& point);

    Pemmit::Path* mResult;
    std::int64_t mTolerance;
    bool mBegun = false;
    Step mLast = {};  // P, as a vector from (0, 0)
    int mCount = 0;
    Step mPending[kMostPending];
};

/// The same without a root, on points that stand side by side: steps are taken
/// from them as they are needed.
///
/// For whole numbers |c| <= floor(root of X) is c^2 <= X, so that squared cross
/// products are compared with tolerance^2 |d|^2. Pending steps after the first
/// are short (only short ones are absorbed): their cross products are at most
/// 2^31 in magnitude, and those with a few steps are worked out one by one, with
/// many four at a time. A tolerance of kWideTolerance or more, the root of 2^31,
/// is met by every short step, since |c| <= |s| |d|; cut off there, X stays below
/// 2^63. Behind a first step that is long the rule is applied as it stands. Steps
/// that are near, as most of a traced bitmap are, are told by a table instead.
class SimplifyFast {
 public:
    static constexpr std::int64_t kWideTolerance = 46341;

    /// For a path that is to be open or not, with the tolerance of state.
    SimplifyFast(bool open, CleanState& state)
        : mOpen(open), mTolerance(state.tolerance), mCones(&state.cones) {
        static_assert(kIn > 2 * kMostPending && kOut >= kIn);
        const std::int64_t cut =
            std::min(mTolerance < 0 ? -mTolerance : mTolerance, kWideTolerance);
        mSquare = cut * cut;
    }

    /// Adds the points of a run, one after the other; there is one at least.
    void add(const PointRun& run) {
        if (mTolerance != 0 && run.step == 1 && run.count <= kIn - mInCount) {
            copyPoints(mIn + mInCount, run.first, run.count);
            added(run.count);
        } else {
            addAny(run);
        }
    }
    void add(int x, int y) {
        const WalkPoint point = {x, y};
        add({&point, 1, 1});
    }

    /// The same for points that are written into place, at most room() of them;
    /// null where add is to be called.
    WalkPoint* place() {
        if (mTolerance == 0) return nullptr;
        if (mInCount > kIn / 2) makeRoom();
        return mIn + mInCount;
    }
    int room() const { return kIn - mInCount; }
    void added(int count) {
        if (!mBegun) emit(mIn[0]);
        mBegun = true;
        mInCount += count;
    }

    /// The path of what was emitted: closed, or open with last as its end. Throws
    /// std::bad_alloc. Due once, after the last point.
    Pemmit::Path* finish(const WalkPoint& last);

 private:
    // Mostly a few: a call would take longer. The last four perhaps a second time.
    static void copyPoints(WalkPoint* to, const WalkPoint* from, int count) {
        constexpr int kFour = 4;
        const auto copyFour = [&](int i) {
            std::memcpy(static_cast<void*>(to + i), from + i, kFour * sizeof(WalkPoint));
        };
        if (count < kFour) {
            for (int i = 0; i < count; ++i) to[i] = from[i];
            return;
        }
        for (int i = 0; i < count - kFour; i += kFour) copyFour(i);
        copyFour(count - kFour);
    }

    void addAny(const PointRun& run);
    const WalkPoint* simplify();
    void makeRoom();
    void addUnsimplified(const PointRun& run);
    void emit(const WalkPoint& point) {
        if (mOutCount == kOut) flush();
        mOut[mOutCount++] = point;
    }
    void flush();

    static constexpr int kIn = 256;
    static constexpr int kOut = 512;

    OwnedPath mResult;  // null while all of it is in mOut
    bool mOpen;
    bool mBegun = false;
    int mInCount = 0;
    int mOutCount = 0;
    std::int64_t mTolerance;
    std::int64_t mSquare;  // of the tolerance, cut off
    ConeTable* mCones;     // tells near steps
    // The points that wait, the last emitted one first. Without a tolerance the
    // newest one.
    WalkPoint mIn[kIn];
    WalkPoint mOut[kOut];
};

}  // namespace Vaskel

#endif
