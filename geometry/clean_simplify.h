// Simplification: drops output points near the straight line through their
// neighbours, and writes the others to the result.

#ifndef GEOMETRY_CLEAN_SIMPLIFY_H
#define GEOMETRY_CLEAN_SIMPLIFY_H

#include <cstddef>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

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

/// The same with four steps to an instruction.
///
/// Pending steps after the first are short (only short ones are absorbed), so
/// that they fit in pairs of 16 bits, and their cross products, below 2^31 in
/// magnitude, come out of one multiply-add of such pairs: s.x d.y + s.y (-d.x).
/// The first step, which may be long, is kept apart, and so is the one short
/// vector whose negative has 17 bits (d.x = -32768): both go the plain way. A
/// bound beyond 2^31 - 1 is met by every such product, and so is one of exactly
/// that. Empty places hold zero steps, whose products are 0.
class SimplifyFast {
 public:
    SimplifyFast(Pemmit::Path* result, int tolerance) : mResult(result), mTolerance(tolerance) {}

    /// Adds count points, one after the other.
    void add(const std::int32_t* x, const std::int32_t* y, std::size_t count);
    void add(int x, int y) { add(&x, &y, 1); }

 private:
    void addUnsimplified(const std::int32_t* x, const std::int32_t* y, std::size_t count);
    bool absorbs(const Step& d) const;
    bool absorbsOneByOne(const Step& d, std::int64_t bound) const;
    void restart(const Step& d);
    void push(const Step& d);

    static std::uint32_t pack(const Step& d) {
        return (static_cast<std::uint32_t>(d.x) & 0xFFFF) | static_cast<std::uint32_t>(d.y) << 16;
    }

    Pemmit::Path* mResult;
    std::int64_t mTolerance;
    int mLastX = 0, mLastY = 0;    // P
    int mPointX = 0, mPointY = 0;  // the newest point: P plus the last pending step
    bool mBegun = false;
    bool mFirstIsShort = false;
    int mCount = 0;  // pending steps
    Step mFirst = {};
#ifdef __SSE2__
    __m128i mBlock[(kMostPending + 3) / 4];  // newest step of a block lowest
#else
    std::uint32_t mPacked[kMostPending];
#endif
};

}  // namespace Vaskel

#endif
