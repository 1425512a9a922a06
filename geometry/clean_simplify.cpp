#include "geometry/clean_simplify.h"

#include <algorithm>

#include "platform/orlune.h"

namespace Vaskel {
namespace {

constexpr std::int64_t magnitude(std::int64_t value) { return value < 0 ? -value : value; }

#ifdef __SSE2__
// The sign bits of the 64-bit halves tell whether one of the squared products
// of four steps with across is above limit. Squares are at most 2^62.
inline __m128i beyond(__m128i steps, __m128i across, __m128i limit) {
    const __m128i product = _mm_madd_epi16(steps, across);
    const __m128i sign = _mm_srai_epi32(product, 31);
    const __m128i size = _mm_sub_epi32(_mm_xor_si128(product, sign), sign);
    const __m128i odd = _mm_srli_epi64(size, 32);
    return _mm_or_si128(_mm_sub_epi64(limit, _mm_mul_epu32(size, size)),
                        _mm_sub_epi64(limit, _mm_mul_epu32(odd, odd)));
}
#endif

}  // namespace

std::int64_t toleranceTimesLength(std::int64_t tolerance, const Step& d) {
    return Orlune::mulsqrt(tolerance * tolerance, d.x * d.x + d.y * d.y);
}

#ifdef __SSE2__

inline void PackedSteps::restart(const Step& s) {
    mNewest = _mm_cvtsi32_si128(static_cast<int>(pack(s)));
}

inline void PackedSteps::push(int count, const Step& s) {
    const __m128i one = _mm_cvtsi32_si128(static_cast<int>(pack(s)));
    if (count % 4 == 0) {
        mBlock[count / 4 - 1] = mNewest;
        mNewest = one;
    } else {
        mNewest = _mm_or_si128(_mm_slli_si128(mNewest, 4), one);
    }
}

inline bool PackedSteps::areWithin(int count, const Step& d, std::int64_t limit) const {
    const __m128i across = _mm_set1_epi32(static_cast<int>(pack({d.y, -d.x})));
    const __m128i most = _mm_set1_epi64x(limit);
    __m128i any = beyond(mNewest, across, most);
    for (int i = 0; i < (count - 1) / 4; ++i)
        any = _mm_or_si128(any, beyond(mBlock[i], across, most));
    return _mm_movemask_pd(_mm_castsi128_pd(any)) == 0;
}

Step PackedSteps::at(int count, int i) const {
    std::uint32_t lanes[4];
    const bool newest = i / 4 == (count - 1) / 4;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(lanes), newest ? mNewest : mBlock[i / 4]);
    const std::uint32_t packed = lanes[(newest ? (count - 1) % 4 : 3) - i % 4];
    return {static_cast<std::int16_t>(packed), static_cast<std::int16_t>(packed >> 16)};
}

#else

inline void PackedSteps::restart(const Step& s) { mPacked[0] = pack(s); }
inline void PackedSteps::push(int count, const Step& s) { mPacked[count] = pack(s); }

inline bool PackedSteps::areWithin(int count, const Step& d, std::int64_t limit) const {
    for (int i = 0; i < count; ++i) {
        const std::int64_t product = cross(at(count, i), d);
        if (product * product > limit) return false;
    }
    return true;
}

Step PackedSteps::at(int, int i) const {
    return {static_cast<std::int16_t>(mPacked[i]), static_cast<std::int16_t>(mPacked[i] >> 16)};
}

#endif

void SimplifyPlain::add(int x, int y) {
    const Step point = {x, y};
    if (!mBegun) {
        mBegun = true;
        emit(point);
        return;
    }
    const Step d = {x - mLast.x, y - mLast.y};
    bool absorbed = mTolerance != 0 && mCount > 0 && mCount < kMostPending && isShort(d);
    if (absorbed) {
        const std::int64_t most = toleranceTimesLength(mTolerance, d);
        for (int i = 0; i < mCount; ++i)
            if (magnitude(cross(mPending[i], d)) > most) absorbed = false;
    }
    if (!absorbed && mCount > 0) {
        const Step& last = mPending[mCount - 1];
        emit({mLast.x + last.x, mLast.y + last.y});
        mCount = 0;
    }
    mPending[mCount++] = {x - mLast.x, y - mLast.y};
}

void SimplifyPlain::emit(const Step& point) {
    Pemmit::patlin(mResult, static_cast<int>(point.x), static_cast<int>(point.y));
    mLast = point;
}

SimplifyFast::SimplifyFast(Pemmit::Path* result, int tolerance)
    : mResult(result), mTolerance(tolerance) {
    const std::int64_t cut = std::min(magnitude(mTolerance), PackedSteps::kWideTolerance);
    mSquare = cut * cut;
}

// What changes with each point is kept in registers.
void SimplifyFast::add(const std::int32_t* x, const std::int32_t* y, std::size_t count) {
    if (mTolerance == 0) {
        addUnsimplified(x, y, count);
        return;
    }
    if (count == 0) return;
    std::size_t i = 0;
    if (!mBegun) {
        mBegun = true;
        mLastX = x[0];
        mLastY = y[0];
        Pemmit::patlin(mResult, mLastX, mLastY);
        i = 1;
    }
    std::int64_t lastX = mLastX, lastY = mLastY;
    int pointX = mPointX, pointY = mPointY;
    int pending = mCount;
    bool firstIsShort = isShort(mFirst);
    PackedSteps steps = mSteps;
    for (; i < count; ++i) {
        Step d = {x[i] - lastX, y[i] - lastY};
        bool dIsShort = isShort(d);
        if (dIsShort && static_cast<unsigned>(pending - 1) < kMostPending - 1 &&
            (firstIsShort && d.x != -32768
                 ? steps.areWithin(pending, d, mSquare * (d.x * d.x + d.y * d.y))
                 : absorbsOneByOne(steps, d, pending))) {
            steps.push(pending, d);
            ++pending;
        } else {
            if (pending > 0) {
                lastX = pointX;
                lastY = pointY;
                Pemmit::patlin(mResult, pointX, pointY);
                d = {x[i] - lastX, y[i] - lastY};
                dIsShort = isShort(d);
            }
            mFirst = d;
            firstIsShort = dIsShort;
            steps.restart(dIsShort ? d : Step{0, 0});
            pending = 1;
        }
        pointX = x[i];
        pointY = y[i];
    }
    mLastX = static_cast<int>(lastX);
    mLastY = static_cast<int>(lastY);
    mPointX = pointX;
    mPointY = pointY;
    mCount = pending;
    mSteps = steps;
}

// Each point emits the one before it, but the first, which was emitted by
// itself, is not emitted again.
void SimplifyFast::addUnsimplified(const std::int32_t* x, const std::int32_t* y,
                                   std::size_t count) {
    std::size_t i = 0;
    if (!mBegun && count > 0) {
        mBegun = true;
        Pemmit::patlin(mResult, x[0], y[0]);
        i = 1;
    }
    if (i == count) return;
    if (mCount != 0) Pemmit::patlin(mResult, mPointX, mPointY);
    mCount = 1;
    for (; i + 1 < count; ++i) Pemmit::patlin(mResult, x[i], y[i]);
    mPointX = x[i];
    mPointY = y[i];
}

bool SimplifyFast::absorbsOneByOne(const PackedSteps& steps, const Step& d, int pending) const {
    const std::int64_t most = toleranceTimesLength(mTolerance, d);
    if (magnitude(cross(mFirst, d)) > most) return false;
    for (int i = 0; i < pending; ++i)
        if (magnitude(cross(steps.at(pending, i), d)) > most) return false;
    return true;
}

}  // namespace Vaskel
