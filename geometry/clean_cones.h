// Simplification of near points: which of them are absorbed, told by a table.
//
// A step d passes within the tolerance t of a step s when the line from P along d
// does, |s x d| <= t |d|. That depends on the direction of d alone, d and -d being
// one; those that do are an arc around the direction of s: all of them for
// |s| <= t, otherwise less than a quarter turn to each side. Near steps have 1232
// directions, which stand on a circle of 16 bits, one half turn, in their order and
// equally far from each other; a table holds the arc of each near step.

#ifndef GEOMETRY_CLEAN_CONES_H
#define GEOMETRY_CLEAN_CONES_H

#include <cstdint>
#include <cstring>

#if defined(__x86_64__)
#include <emmintrin.h>
#endif

#include "geometry/point_runs.h"

namespace Vaskel {

/// The directions within tolerance of one near step: those between place - 2 below
/// and place + 2 above.
struct Cone {
    std::int16_t place;  // of its own direction
    std::int16_t minusPlace;
    std::int16_t below, above;

    /// A free step, |s| <= t, has all directions within tolerance.
    bool isFree() const { return below == kAll; }
    static constexpr std::int16_t kAll = 32767;

    /// False in the last row and column of the table, which hold no cones.
    bool isNear() const { return below >= 0; }
};

/// The cones of all near steps for one tolerance.
class ConeTable {
 public:
    /// Steps of up to so much in x and y are near.
    static constexpr int kReach = 31;

    /// Where the cone of step (x, y) is: kZeroStep + kSide * y + x.
    static constexpr int kSideBits = 6;
    static constexpr std::uint32_t kSide = 1 << kSideBits;
    static constexpr std::uint32_t kSize = kSide * kSide;
    static constexpr std::uint32_t kZeroStep = kSide * kReach + kReach;

    /// The table for a tolerance, square being that of it, once so many points were
    /// asked for that making it does not matter. Otherwise null.
    const Cone* get(std::int64_t square, int points) {
        if (square == mSquare) [[likely]]
            return mCones;
        return waitFor(square, points);
    }

    /// Makes the table at once.
    void make(std::int64_t square);
    /// Forgets it.
    void forget() { mSquare = mAwaited = 0; }

 private:
    const Cone* waitFor(std::int64_t square, int points);

    std::int64_t mSquare = 0;   // 0 where there is no table
    std::int64_t mAwaited = 0;  // another tolerance that is asked for
    int mLeft = 0;              // how many points are to come until it gets its table
    Cone mCones[kSize] = {};
};

#if defined(__x86_64__)

/// What all near steps since P are within tolerance of, as the part of the circle
/// around the first one that is not free which lies in the arcs of all. A step
/// within it is absorbed.
///
/// A step outside is not, unless an arc goes on beyond the circle's far side, where
/// it is not seen. What is outside of the first arc, which does not, is absorbed in
/// no case.
///
/// Four lanes of 16 bits hold an arc: the directions in it and their opposites are
/// compared with where it begins and with the opposite of where it ends. An arc that
/// comes to the far side begins, or ends, at -32768, by saturation.
class NearRun {
 public:
    /// Whether a run may begin at P: around it no difference of 32 bits wraps.
    static bool mayBegin(const WalkPoint& p) {
        std::uint64_t both;
        std::memcpy(&both, &p, sizeof both);
        return ((both ^ both << 1) & 0x8000000080000000) == 0;
    }
    NearRun(const Cone* cones, const WalkPoint& p)
        : mCones(cones), mFrom(_mm_sub_epi32(load(&p), _mm_set1_epi32(ConeTable::kReach))) {}

    /// The cone of the step to a point, perhaps one that is not near; null where
    /// the table has none.
    const Cone* coneOf(const WalkPoint& to) const {
        const auto step =
            static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_sub_epi32(load(&to), mFrom)));
        constexpr std::uint64_t kLast = ConeTable::kSide - 1;
        if (step & ~(kLast << 32 | kLast)) return nullptr;
        return mCones + static_cast<std::uint32_t>(step | step >> (32 - ConeTable::kSideBits));
    }

    /// Begins with the first near step that is not free.
    void begin(const Cone* cone) {
        std::int32_t middle;
        std::memcpy(&middle, cone, sizeof middle);
        mMiddle = _mm_cvtsi32_si128(middle);
        mFar = arcOf(seen(cone));
        mFirst = _mm_max_epi16(mFar, _mm_setr_epi16(-32768, -32768, 0, 0, 0, 0, 0, 0));
        mPart = mFirst;
    }

    /// Whether a step lies in the part, which its own arc then narrows. One that is
    /// not near does not.
    bool absorb(const Cone* cone) {
        const __m128i step = seen(cone);
        if (isOut(mPart, step)) return false;
        const __m128i arc = arcOf(step);
        mPart = _mm_max_epi16(mPart, arc);
        mFar = _mm_min_epi16(mFar, arc);
        return true;
    }

    /// Whether one that does not is refused for sure.
    bool refuses(const Cone* cone) const {
        return cone->isNear() && (!isFar() || isOut(mFirst, seen(cone)));
    }
    bool isZero(const Cone* cone) const { return cone == mCones + ConeTable::kZeroStep; }

 private:
    static __m128i load(const void* from) {
        return _mm_loadl_epi64(static_cast<const __m128i*>(from));
    }
    __m128i seen(const Cone* cone) const { return _mm_sub_epi16(load(cone), mMiddle); }
    // Lanes 2 and 3 of a part are 0, those of a step that is not near are below.
    static bool isOut(__m128i part, __m128i step) {
        return _mm_movemask_epi8(_mm_cmpgt_epi16(part, step)) != 0;
    }
    static __m128i arcOf(__m128i step) {
        const __m128i half = _mm_shufflelo_epi16(step, 0xEE);
        return _mm_subs_epi16(_mm_subs_epi16(step, half), half);
    }
    // Lanes 2 and 3 of an arc are below 0, and above -32768.
    bool isFar() const {
        return _mm_movemask_epi8(_mm_cmpeq_epi16(mFar, _mm_set1_epi16(-32768))) != 0;
    }

    const Cone* mCones;
    __m128i mFrom;
    __m128i mMiddle;
    __m128i mPart = {}, mFirst = {};
    __m128i mFar = {};  // where the arc nearest to the far side begins and ends
};

#endif

}  // namespace Vaskel

#endif
