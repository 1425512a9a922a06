#include "geometry/clean_simplify.h"

#include <algorithm>
#include <climits>
#include <cmath>

#include "platform/orlune.h"

namespace Vaskel {
namespace {

// toleranceTimesLength without the call where that is exact: below 2^52 an
// integer is exact as a double, and truncating its rounded root is its whole
// root (see distanceRoot).
inline std::int64_t bound(std::int64_t tolerance, const Step& d) {
    constexpr std::int64_t kSmall = 1024;  // 2^20 * 2^31 < 2^52
    if (tolerance > -kSmall && tolerance < kSmall) {
        const std::int64_t product = tolerance * tolerance * (d.x * d.x + d.y * d.y);
        return static_cast<std::int64_t>(std::sqrt(static_cast<double>(product)));
    }
    return toleranceTimesLength(tolerance, d);
}

constexpr std::int64_t magnitude(std::int64_t value) { return value < 0 ? -value : value; }

#ifdef __SSE2__
// Whether any of the products of four steps with (across.low, across.high) is
// above bound or below -bound, as a mask.
inline __m128i beyond(__m128i steps, __m128i across, __m128i upper, __m128i lower) {
    const __m128i product = _mm_madd_epi16(steps, across);
    return _mm_or_si128(_mm_cmpgt_epi32(product, upper), _mm_cmpgt_epi32(lower, product));
}
#endif

}  // namespace

std::int64_t toleranceTimesLength(std::int64_t tolerance, const Step& d) {
    return Orlune::mulsqrt(tolerance * tolerance, d.x * d.x + d.y * d.y);
}

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

inline void SimplifyFast::restart(const Step& d) {
    mFirst = d;
    mFirstIsShort = isShort(d);
    mCount = 1;
    const std::uint32_t first = mFirstIsShort ? pack(d) : 0;
#ifdef __SSE2__
    mBlock[0] = _mm_cvtsi32_si128(static_cast<int>(first));
#else
    mPacked[0] = first;
#endif
}

inline void SimplifyFast::push(const Step& d) {
#ifdef __SSE2__
    // Whole blocks are stored, never a part of one: a wide load right behind a
    // narrow store would have to wait for it.
    const __m128i one = _mm_cvtsi32_si128(static_cast<int>(pack(d)));
    __m128i& block = mBlock[mCount / 4];
    block = mCount % 4 == 0 ? one : _mm_or_si128(_mm_slli_si128(block, 4), one);
#else
    mPacked[mCount] = pack(d);
#endif
    ++mCount;
}

inline bool SimplifyFast::absorbs(const Step& d) const {
    const std::int64_t most = bound(mTolerance, d);
#ifdef __SSE2__
    if (mFirstIsShort && d.x != -32768) [[likely]] {
        const int clamped = static_cast<int>(std::min<std::int64_t>(most, INT_MAX));
        const __m128i across = _mm_set1_epi32(static_cast<int>(pack({d.y, -d.x})));
        const __m128i upper = _mm_set1_epi32(clamped);
        const __m128i lower = _mm_set1_epi32(-clamped);
        __m128i any = beyond(mBlock[0], across, upper, lower);
        for (int i = 1; 4 * i < mCount; ++i)
            any = _mm_or_si128(any, beyond(mBlock[i], across, upper, lower));
        return _mm_movemask_epi8(any) == 0;
    }
#endif
    return absorbsOneByOne(d, most);
}

void SimplifyFast::add(const std::int32_t* x, const std::int32_t* y, std::size_t count) {
    if (mTolerance == 0) {
        addUnsimplified(x, y, count);
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const Step d = {std::int64_t{x[i]} - mLastX, std::int64_t{y[i]} - mLastY};
        if (mCount < kMostPending && mCount > 0 && isShort(d) && absorbs(d)) {
            push(d);
        } else if (mCount > 0) {
            mLastX = mPointX;
            mLastY = mPointY;
            Pemmit::patlin(mResult, mLastX, mLastY);
            restart({std::int64_t{x[i]} - mLastX, std::int64_t{y[i]} - mLastY});
        } else if (mBegun) {
            restart(d);
        } else {
            mBegun = true;
            mLastX = x[i];
            mLastY = y[i];
            Pemmit::patlin(mResult, mLastX, mLastY);
        }
        mPointX = x[i];
        mPointY = y[i];
    }
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

bool SimplifyFast::absorbsOneByOne(const Step& d, std::int64_t most) const {
    if (magnitude(cross(mFirst, d)) > most) return false;
    const int places = (mCount + 3) / 4 * 4;
    for (int i = 0; i < places; ++i) {
#ifdef __SSE2__
        std::uint32_t lanes[4];
        _mm_storeu_si128(reinterpret_cast<__m128i*>(lanes), mBlock[i / 4]);
        const std::uint32_t packed = lanes[i % 4];
#else
        if (i == mCount) break;
        const std::uint32_t packed = mPacked[i];
#endif
        const Step s = {static_cast<std::int16_t>(packed), static_cast<std::int16_t>(packed >> 16)};
        if (magnitude(cross(s, d)) > most) return false;
    }
    return true;
}

}  // namespace Vaskel
