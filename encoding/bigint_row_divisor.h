// True division of rows of base-65536 digits, limb by limb and by halves.

#ifndef ENCODING_BIGINT_ROW_DIVISOR_H
#define ENCODING_BIGINT_ROW_DIVISOR_H

#include <cstddef>
#include <vector>

#include "encoding/bigint_digits.h"

namespace Vaskel {

/// Quotients of three limbs by two, the upper one of the divisor at least 2^63.
class TwoLimbDivisor {
 public:
    TwoLimbDivisor(Limb high, Limb low);

    /// floor((u2, u1, u0) / (high, low)), at most 2^64 - 1, which it is if the
    /// upper two limbs are not below the divisor.
    Limb quotient(Limb u2, Limb u1, Limb u0) const;

 private:
    Limb mHigh, mLow, mReciprocal;
};

/// A divisor D of n digits, the top one not 0, as a row of limbs.
class RowDivisor {
 public:
    RowDivisor(const Digit* divisor, std::size_t n);
    RowDivisor(const RowDivisor&) = delete;
    RowDivisor& operator=(const RowDivisor&) = delete;

    /// D in whole limbs, zeros on top.
    const Digit* row() const { return mRow.data(); }
    std::size_t limbs() const { return mLimbs; }
    /// D's 64 bits from its top bit down, zeros behind its end.
    Limb topBits() const { return mTopBits; }
    /// The zero bits above D's top bit in its limbs.
    unsigned topZeros() const { return mShift; }

    /// Divides window[0, limbs() + m), in limbs and less than D * 2^(64 m): the
    /// remainder stays, with zeros above it, and quotient gets m limbs. Cost: m
    /// limbs() for few limbs, m limbs()^0.585 for many.
    void divide(Digit* window, std::size_t m, Digit* quotient);

    /// The same for one limb.
    Limb divideLimb(Digit* window) const { return divideLimb(window, mRow.data(), mLimbs); }

    /// divide() without halves, to which it is held.
    void dividePlain(Digit* window, std::size_t m, Digit* quotient) const;

    /// From how many quotient limbs on a division is made by halves.
    static constexpr std::size_t kHalvesFrom = 32;

 private:
    Limb divideLimb(Digit* window, const Digit* divisor, std::size_t n) const;
    void divideHalves(Digit* window, const Digit* divisor, std::size_t n, std::size_t m,
                      Digit* quotient);
    void correct(Digit* window, const Digit* divisor, std::size_t n, std::size_t k, Digit* quotient,
                 std::size_t m);

    std::size_t mLimbs;
    std::vector<Digit> mRow;
    std::vector<Digit> mScratch;
    unsigned mShift;
    Limb mTopBits;
    TwoLimbDivisor mHead;
};

}  // namespace Vaskel

#endif
