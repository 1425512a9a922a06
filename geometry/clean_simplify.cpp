#include "geometry/clean_simplify.h"

#include <algorithm>
#include <cstring>

#if defined(__x86_64__)
#include <emmintrin.h>
#endif

#include "platform/orlune.h"

namespace Vaskel {
namespace {

constexpr std::int64_t magnitude(std::int64_t value) { return value < 0 ? -value : value; }

Step stepTo(const WalkPoint* points, int i) {
    return {std::int64_t{points[i].x} - points[0].x, std::int64_t{points[i].y} - points[0].y};
}

std::int64_t squareOf(const Step& d) { return d.x * d.x + d.y * d.y; }

// Negative where a short d is out of tolerance from the short step s; most is
// tolerance^2 |d|^2.
std::int64_t slack(const Step& s, const Step& d, std::int64_t most) {
    const std::int64_t product = cross(s, d);
    return most - product * product;
}

#if defined(__x86_64__)

__m128i load(const WalkPoint* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

// (y, -x) in 16 bits each, four times. x is not -32768.
__m128i across(const Step& d) {
    const auto x = static_cast<std::uint32_t>(-d.x) << 16;
    return _mm_set1_epi32(static_cast<int>(x | (static_cast<std::uint32_t>(d.y) & 0xFFFF)));
}

// The cross products with d of the short steps from P, which is there twice, to
// four points.
__m128i products(const WalkPoint* points, __m128i p, __m128i across) {
    const __m128i steps =
        _mm_packs_epi32(_mm_sub_epi32(load(points), p), _mm_sub_epi32(load(points + 2), p));
    return _mm_madd_epi16(steps, across);
}

// Calls take with all cross products of count steps, four at a time and the last
// ones perhaps a second time. There are at least four.
template <class Take>
void eachProduct(const WalkPoint* points, int count, const Step& d, Take take) {
    const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(points));
    const __m128i p = _mm_unpacklo_epi64(first, first);
    const __m128i turned = across(d);
    for (int i = 1; i < count - 3; i += 4) take(products(points + i, p, turned));
    take(products(points + count - 3, p, turned));
}

// The sign bits of the 64-bit halves tell whether one of the squared products is
// above limit. Squares are at most 2^62.
bool areShortWithin(const WalkPoint* points, int count, const Step& d, std::int64_t most) {
    const __m128i limit = _mm_set1_epi64x(most);
    __m128i any = _mm_setzero_si128();
    eachProduct(points, count, d, [&](__m128i product) {
        const __m128i sign = _mm_srai_epi32(product, 31);
        const __m128i size = _mm_sub_epi32(_mm_xor_si128(product, sign), sign);
        const __m128i odd = _mm_srli_epi64(size, 32);
        any = _mm_or_si128(any, _mm_or_si128(_mm_sub_epi64(limit, _mm_mul_epu32(size, size)),
                                             _mm_sub_epi64(limit, _mm_mul_epu32(odd, odd))));
    });
    return _mm_movemask_pd(_mm_castsi128_pd(any)) == 0;
}

#endif

// The rule as it stands, for steps of any length.
bool areWithinByRoot(const WalkPoint* points, int count, const Step& d, std::int64_t tolerance) {
    const std::int64_t most = toleranceTimesLength(tolerance, d);
    for (int i = 1; i <= count; ++i)
        if (magnitude(cross(stepTo(points, i), d)) > most) return false;
    return true;
}

// Whether a short d is within tolerance of count steps, at least four if all of
// them are short.
bool areWithin(const WalkPoint* points, int count, const Step& d, bool allAreShort,
               std::int64_t tolerance, std::int64_t square) {
#if defined(__x86_64__)
    if (allAreShort && d.x != -32768) return areShortWithin(points, count, d, square * squareOf(d));
#else
    if (allAreShort) {
        const std::int64_t most = square * squareOf(d);
        std::int64_t least = 0;
        for (int i = 1; i <= count; ++i) least = std::min(least, slack(stepTo(points, i), d, most));
        return least >= 0;
    }
#endif
    return areWithinByRoot(points, count, d, tolerance);
}

// Whether the table is likely to have the step. Differences may wrap: then it has not.
bool isNearStep(const WalkPoint& from, const WalkPoint& to) {
    const auto along = [](int a, int b) {
        return static_cast<std::uint32_t>(b) - static_cast<std::uint32_t>(a) + ConeTable::kReach;
    };
    return (along(from.x, to.x) | along(from.y, to.y)) < ConeTable::kSide;
}

// Were points[0] the last emitted one, the number of the next one; where the
// points do not tell, that of the last one of them. There are at least three. Those
// up to number pending are known to be.
[[gnu::noinline]] int nextEmitted(const WalkPoint* points, int count, int pending,
                                  std::int64_t tolerance, std::int64_t square) {
    const Step s1 = stepTo(points, 1);
    const bool firstIsShort = isShort(s1);
    if (!firstIsShort) {
        pending = 1;
    } else if (pending < 4) {
        // Most ends come soon.
        const Step s2 = stepTo(points, 2);
        if (!isShort(s2) || slack(s1, s2, square * squareOf(s2)) < 0) return 1;
        if (count < 4) return 2;
        const Step s3 = stepTo(points, 3);
        if (!isShort(s3)) return 2;
        const std::int64_t most3 = square * squareOf(s3);
        if ((slack(s1, s3, most3) | slack(s2, s3, most3)) < 0) return 2;
        if (count < 5) return 3;
        const Step s4 = stepTo(points, 4);
        if (!isShort(s4)) return 3;
        const std::int64_t most4 = square * squareOf(s4);
        if ((slack(s1, s4, most4) | slack(s2, s4, most4) | slack(s3, s4, most4)) < 0) return 3;
        pending = 4;
    }
    for (; pending + 1 < count && pending < kMostPending; ++pending) {
        const Step d = stepTo(points, pending + 1);
        if (!isShort(d) || !areWithin(points, pending, d, firstIsShort, tolerance, square)) break;
    }
    return pending;
}

#if defined(__x86_64__)

// The same, told by the table while steps are near.
const WalkPoint* nextNear(const Cone* cones, const WalkPoint* points, const WalkPoint* end,
                          std::int64_t tolerance, std::int64_t square) {
    const WalkPoint* const stop = end - points > kMostPending ? points + kMostPending + 1 : end;
    const WalkPoint* point = points + 1;
    NearRun run(cones, *points);
    const Cone* cone = cones && NearRun::mayBegin(*points) ? run.coneOf(*point) : nullptr;
    while (cone && cone->isFree()) {
        if (++point == stop) return point - 1;
        cone = run.coneOf(*point);
    }
    if (cone && cone->isNear()) {
        run.begin(cone);
        for (;;) {
            if (++point == stop) return point - 1;
            cone = run.coneOf(*point);
            if (!cone) break;
            if (run.absorb(cone) || run.isZero(cone)) continue;
            if (run.refuses(cone)) return point - 1;
            break;
        }
    }
    return points + nextEmitted(points, static_cast<int>(end - points),
                                static_cast<int>(point - points) - 1, tolerance, square);
}

#else

const WalkPoint* nextNear(const Cone*, const WalkPoint* points, const WalkPoint* end,
                          std::int64_t tolerance, std::int64_t square) {
    return points + nextEmitted(points, static_cast<int>(end - points), 0, tolerance, square);
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

[[gnu::cold]] void SimplifyFast::addAny(const PointRun& run) {
    if (mTolerance == 0) {
        addUnsimplified(run);
        return;
    }
    for (int i = 0; i < run.count;) {
        if (mInCount == kIn) makeRoom();
        const int taken = std::min(run.count - i, kIn - mInCount);
        for (int j = 0; j < taken; ++j) mIn[mInCount + j] = run[i + j];
        added(taken);
        i += taken;
    }
}

// Emits what the points that wait decide, and returns the last emitted one. What
// decides is the point behind the one that is emitted.
const WalkPoint* SimplifyFast::simplify() {
    WalkPoint* out = mOut + mOutCount;
    const WalkPoint* last = mIn;
    const WalkPoint* const end = mIn + mInCount;
    const Cone* cones = mCones->get(mSquare, mInCount);
    // Where a few steps lead out of the table, it is not worth asking.
    const int middle = mInCount / 2;
    if (mInCount > 3 && !isNearStep(mIn[middle - 1], mIn[std::min(middle + 2, mInCount - 1)]))
        cones = nullptr;
    while (end - last > 2) {
        const WalkPoint* const next = nextNear(cones, last, end, mTolerance, mSquare);
        if (next + 1 == end) break;
        last = next;
        // Hosts see pieces of just this size, and one for all that is no larger.
        if (out == mOut + kOut) [[unlikely]] {
            mOutCount = kOut;
            flush();
            out = mOut;
        }
        *out++ = *last;
    }
    mOutCount = static_cast<int>(out - mOut);
    return last;
}

// Fewer than kMostPending + 2 points stay.
void SimplifyFast::makeRoom() {
    const WalkPoint* const last = simplify();
    const WalkPoint* const end = mIn + mInCount;
    mInCount = static_cast<int>(end - last);
    std::copy(last, end, mIn);
}

void SimplifyFast::flush() {
    if (!mResult) {
        mResult.reset(Pemmit::patbeg());
        Pemmit::flaset(mResult.get(), Pemmit::kFlagOpen, mOpen);
    }
    appendPoints(mResult.get(), mOut, mOutCount);
    mOutCount = 0;
}

Pemmit::Path* SimplifyFast::finish(const WalkPoint& last) {
    if (mTolerance != 0) simplify();
    if (!mOpen && !mResult) return makeOutline(mOut, mOutCount);
    flush();
    if (mOpen)
        Pemmit::patend(mResult.get(), last.x, last.y);
    else
        Pemmit::patendclo(mResult.get());
    return mResult.release();
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
        if (mInCount != 0) emit(mIn[0]);
        mInCount = 1;
        mIn[0] = run[i];
    }
}

}  // namespace Vaskel
