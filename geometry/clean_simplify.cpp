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

void SimplifyFast::begin(int x, int y) {
    Pemmit::patlin(mResult, x, y);
    mBegun = true;
    mLastX = x;
    mLastY = y;
}

bool SimplifyFast::absorbs(const Step& d) const {
    const std::int64_t most = bound(mTolerance, d);
#ifdef __SSE2__
    if (mFirstIsShort && d.x != -32768) [[likely]] {
        const int clamped = static_cast<int>(std::min<std::int64_t>(most, INT_MAX));
        const __m128i across = _mm_set1_epi32(static_cast<int>(pack({d.y, -d.x})));
        const __m128i upper = _mm_set1_epi32(clamped);
        const __m128i lower = _mm_set1_epi32(-clamped);
        __m128i any = beyond(mBlock[0], across, upper, lower);
        for (int i = 4; i < mCount; i += 4)
            any = _mm_or_si128(any, beyond(mBlock[i / 4], across, upper, lower));
        return _mm_movemask_epi8(any) == 0;
    }
#endif
    return absorbsOneByOne(d, most);
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
