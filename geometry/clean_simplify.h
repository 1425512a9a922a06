// Simplification: drops output points near the straight line through their
// neighbours, and writes the others to the result.

#ifndef GEOMETRY_CLEAN_SIMPLIFY_H
#define GEOMETRY_CLEAN_SIMPLIFY_H

#include <cstddef>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

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

/// Short steps, packed. Where a processor can, four at a time: whole blocks are
/// stored, never a part of one, since a wide load right behind a narrow store
/// would have to wait for it.
class PackedSteps {
 public:
    static constexpr std::int64_t kWideTolerance = 46341;

    /// A list of one step.
    void restart(const Step& s);
    /// Appends a step to count others.
    void push(int count, const Step& s);
    /// Whether the squared cross product of each of count steps with a short d
    /// is at most limit, which is not negative. d.x is not -32768.
    bool areWithin(int count, const Step& d, std::int64_t limit) const;
    /// The same for a near d and a limit of square |d|^2, at most 2^29.
    bool areWithinNear(int count, const Step& d, int square) const;
    Step at(int count, int i) const;

 private:
    static std::uint32_t pack(const Step& s) {
        return (static_cast<std::uint32_t>(s.x) & 0xFFFF) | static_cast<std::uint32_t>(s.y) << 16;
    }

#ifdef __SSE2__
    __m128i mNewest = {};                    // the last one to four steps, the last one lowest
    __m128i mBlock[(kMostPending - 1) / 4];  // those before
#else
    std::uint32_t mPacked[kMostPending];
#endif
};

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

/// The same with four steps to an instruction, and without a root.
///
/// For whole numbers |c| <= floor(root of X) is c^2 <= X, so that squared cross
/// products are compared with tolerance^2 |d|^2. Pending steps after the first
/// are short (only short ones are absorbed), and so fit in pairs of 16 bits:
/// their cross products, below 2^31 in magnitude, come out of one multiply-add
/// of such pairs, s.x d.y + s.y (-d.x). A tolerance of kWideTolerance or more,
/// the root of 2^31, is met by every short step, since |c| <= |s| |d|; cut off
/// there, X stays below 2^63. The first step, which may be long, is kept apart,
/// and so is the one short vector whose negative has 17 bits (d.x = -32768):
/// both go the plain way. Empty places hold zero steps, whose products are 0.
///
/// With a tolerance of up to kNearTolerance, 16, a near d has components of
/// -kNear .. kNear - 1, kNear being 1024: X is then at most 16^2 * 2 * 1024^2 =
/// 2^29. Cross products may be cut off at the ends of 16 bits, whose squares
/// are above that, and all squares fit in 32 bits. Nearly all points of traced
/// outlines are near.
class SimplifyFast {
 public:
    SimplifyFast(Pemmit::Path* result, int tolerance);

    /// Adds the points of a run, one after the other.
    void add(const PointRun& run);
    void add(int x, int y) {
        const WalkPoint point = {x, y};
        add({&point, 1, 1});
    }

    /// Writes the points that wait to be written together; due after the last
    /// one.
    void finish() {
        appendPoints(mResult, mOut, mOutCount);
        mOutCount = 0;
    }

 private:
    void addUnsimplified(const PointRun& run);
    bool absorbsFar(Step d, int pending) const;
    bool absorbsOneByOne(const Step& d, int pending) const;
    void emit(const WalkPoint& point) {
        if (mOutCount == kOut) finish();
        mOut[mOutCount++] = point;
    }

    static constexpr int kNear = 1024;
    static constexpr int kNearTolerance = 16;
    static constexpr int kOut = 64;

    Pemmit::Path* mResult;
    std::int64_t mTolerance;
    std::int64_t mSquare;   // of the tolerance, cut off
    WalkPoint mLast = {};   // P
    WalkPoint mPoint = {};  // the newest point: P plus the last pending step
    bool mBegun = false;
    int mCount = 0;  // pending steps
    int mOutCount = 0;
    Step mFirst = {};
    PackedSteps mSteps;  // the pending ones; zero for the first if that is long
    WalkPoint mOut[kOut];
};

}  // namespace Vaskel

#endif
