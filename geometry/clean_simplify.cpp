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

// The same as all ones or zeros of each step, for products that may be cut off
// and a limit of 32 bits.
inline __m128i beyondNear(__m128i steps, __m128i across, __m128i limit) {
    const __m128i product = _mm_madd_epi16(steps, across);
    const __m128i narrow = _mm_packs_epi32(product, product);
    const __m128i apart = _mm_unpacklo_epi16(narrow, _mm_setzero_si128());
    return _mm_cmpgt_epi32(_mm_madd_epi16(apart, apart), limit);
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
        mBlock[static_cast<unsigned>(count) / 4 - 1] = mNewest;
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

inline bool PackedSteps::areWithinNear(int count, const Step& d, int square) const {
    const __m128i all = _mm_shuffle_epi32(_mm_cvtsi32_si128(static_cast<int>(pack(d))), 0);
    const __m128i swapped = _mm_shufflehi_epi16(_mm_shufflelo_epi16(all, 0xB1), 0xB1);
    const __m128i upper = _mm_set1_epi32(-65536);  // turns d.x round: (d.y, -d.x)
    const __m128i across = _mm_sub_epi16(_mm_xor_si128(swapped, upper), upper);
    const __m128i limit =
        _mm_shuffle_epi32(_mm_mul_epu32(_mm_madd_epi16(all, all), _mm_cvtsi32_si128(square)), 0);
    __m128i any = beyondNear(mNewest, across, limit);
    const unsigned blocks = static_cast<unsigned>(count - 1) / 4;
    for (unsigned i = 0; i < blocks; ++i)
        any = _mm_or_si128(any, beyondNear(mBlock[i], across, limit));
    return _mm_movemask_epi8(any) == 0;
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

inline bool PackedSteps::areWithinNear(int count, const Step& d, int square) const {
    return areWithin(count, d, square * (d.x * d.x + d.y * d.y));
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
void SimplifyFast::add(const PointRun& run) {
    if (mTolerance == 0) {
        addUnsimplified(run);
        return;
    }
    const WalkPoint* at = run.first;
    const std::ptrdiff_t step = run.step;
    const WalkPoint* const end = at + step * run.count;
    if (!mBegun && at != end) {
        mBegun = true;
        mLast = *at;
        emit(*at);
        at += step;
    }
    constexpr std::int64_t kSquares = kNearTolerance * kNearTolerance;
    const auto square = static_cast<int>(std::min(mSquare, kSquares));
    const unsigned mostPending = mSquare <= kSquares ? kMostPending - 1 : 0;
    std::int64_t lastX = mLast.x, lastY = mLast.y;
    WalkPoint point = mPoint;
    int pending = mCount;
    // Behind a long first step nothing is near enough.
    unsigned most = isShort(mFirst) ? mostPending : 0;
    for (; at != end; at += step) {
        Step d = {at->x - lastX, at->y - lastY};
        const std::uint64_t reach =
            static_cast<std::uint64_t>(d.x + kNear) | static_cast<std::uint64_t>(d.y + kNear);
        bool absorbed;
        if (reach < 2 * kNear && static_cast<unsigned>(pending - 1) < most) [[likely]] {
            absorbed = mSteps.areWithinNear(pending, d, square);
        } else {
            absorbed = absorbsFar(d, pending);
        }
        if (absorbed) {
            mSteps.push(pending, d);
            ++pending;
        } else {
            if (pending > 0) {
                emit(point);
                lastX = point.x;
                lastY = point.y;
                d = {at->x - lastX, at->y - lastY};
            }
            const bool firstIsShort = isShort(d);
            mFirst.x = d.x;
            mFirst.y = d.y;
            mSteps.restart(firstIsShort ? d : Step{0, 0});
            most = firstIsShort ? mostPending : 0;
            pending = 1;
        }
        point = *at;
    }
    mLast = {static_cast<int>(lastX), static_cast<int>(lastY)};
    mPoint = point;
    mCount = pending;
}

// Each point emits the one before it, but the first, which was emitted by
// itself, is not emitted again.
void SimplifyFast::addUnsimplified(const PointRun& run) {
    int i = 0;
    if (!mBegun && run.count > 0) {
        mBegun = true;
        emit(run[i++]);
    }
    for (; i < run.count; ++i) {
        if (mCount != 0) emit(mPoint);
        mCount = 1;
        mPoint = run[i];
    }
}

// What add decides for vectors that are not near, or behind a long first step.
[[gnu::noinline]] bool SimplifyFast::absorbsFar(Step d, int pending) const {
    if (!isShort(d) || pending < 1 || pending >= kMostPending) return false;
    if (!isShort(mFirst) || d.x == -32768) return absorbsOneByOne(d, pending);
    return mSteps.areWithin(pending, d, mSquare * (d.x * d.x + d.y * d.y));
}

bool SimplifyFast::absorbsOneByOne(const Step& d, int pending) const {
    const std::int64_t most = toleranceTimesLength(mTolerance, d);
    if (magnitude(cross(mFirst, d)) > most) return false;
    for (int i = 0; i < pending; ++i)
        if (magnitude(cross(mSteps.at(pending, i), d)) > most) return false;
    return true;
}

}  // namespace Vaskel
