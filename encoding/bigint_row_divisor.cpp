#include "encoding/bigint_row_divisor.h"

#include <algorithm>
#include <bit>

#include "encoding/bigint_multiply.h"

namespace Vaskel {
namespace {

// The 64 bits that lie skip digits below the top bit of divisor[0, n).
Limb bitsBelowTop(const Digit* divisor, std::size_t n, std::size_t skip) {
    TwoLimbs bits = 0;
    for (std::size_t i = skip; i < skip + 5; ++i)
        bits = bits << 16 | (i < n ? divisor[n - 1 - i] : 0);
    return static_cast<Limb>(bits >> (16 - std::countl_zero(divisor[n - 1])));
}

}  // namespace

// By a reciprocal instead of a division: N. Moeller and T. Granlund, Improved
// Division by Invariant Integers, IEEE Transactions on Computers 60 (2011),
// algorithms 6 and 4.
TwoLimbDivisor::TwoLimbDivisor(Limb high, Limb low) : mHigh(high), mLow(low) {
    // floor((2^192 - 1) / (high, low)) - 2^64, from that by high alone.
    Limb v = static_cast<Limb>((TwoLimbs(~high) << 64 | ~Limb{0}) / high);
    Limb p = high * v + low;
    if (p < low) {
        --v;
        if (p >= high) {
            --v;
            p -= high;
        }
        p -= high;
    }
    const TwoLimbs t = TwoLimbs(v) * low;
    p += static_cast<Limb>(t >> 64);
    if (p < static_cast<Limb>(t >> 64)) {
        --v;
        if (p > high || (p == high && static_cast<Limb>(t) >= low)) --v;
    }
    mReciprocal = v;
}

Limb TwoLimbDivisor::quotient(Limb u2, Limb u1, Limb u0) const {
    if (u2 > mHigh || (u2 == mHigh && u1 >= mLow)) return ~Limb{0};
    const TwoLimbs divisor = TwoLimbs(mHigh) << 64 | mLow;
    const TwoLimbs estimate = TwoLimbs(mReciprocal) * u2 + (TwoLimbs(u2) << 64 | u1);
    Limb q = static_cast<Limb>(estimate >> 64);
    TwoLimbs r = TwoLimbs(u1 - q * mHigh) << 64 | u0;
    r -= TwoLimbs(mLow) * q + divisor;
    ++q;
    if (static_cast<Limb>(r >> 64) >= static_cast<Limb>(estimate)) {
        --q;
        r += divisor;
    }
    if (r >= divisor) ++q;
    return q;
}

RowDivisor::RowDivisor(const Digit* divisor, std::size_t n)
    : mLimbs(limbsFor(n)),
      mRow(mLimbs * kPerLimb),
      mShift(static_cast<unsigned>(16 * (mLimbs * kPerLimb - n)) +
             static_cast<unsigned>(std::countl_zero(divisor[n - 1]))),
      mTopBits(bitsBelowTop(divisor, n, 0)),
      mHead(mTopBits, bitsBelowTop(divisor, n, kPerLimb)) {
    std::copy_n(divisor, n, mRow.begin());
}

// divisor is D or its upper n limbs. The upper two limbs of both, shifted to
// D's top bit, make the quotient, or one more: Knuth, The Art of Computer
// Programming 2, 4.3.1.
Limb RowDivisor::divideLimb(Digit* window, const Digit* divisor, std::size_t n) const {
    const auto limb = [&](std::size_t below) {
        return below <= n ? loadLimb(window + (n - below) * kPerLimb) : 0;
    };
    Limb u2 = limb(0), u1 = limb(1), u0 = limb(2);
    if (mShift != 0) {
        u2 = u2 << mShift | u1 >> (64 - mShift);
        u1 = u1 << mShift | u0 >> (64 - mShift);
        u0 = u0 << mShift | limb(3) >> (64 - mShift);
    }
    Limb q = mHead.quotient(u2, u1, u0);
    Digit* const top = window + n * kPerLimb;
    Limb above = loadLimb(top) - limbLoops().subtractMultiple(window, divisor, n, q);
    if (above != 0) {
        --q;
        above += limbLoops().add(window, divisor, n);
    }
    storeLimb(top, above);
    return q;
}

void RowDivisor::dividePlain(Digit* window, std::size_t m, Digit* quotient) const {
    while (m-- > 0) storeLimb(quotient + m * kPerLimb, divideLimb(window + m * kPerLimb));
}

void RowDivisor::divide(Digit* window, std::size_t m, Digit* quotient) {
    if (m < kHalvesFrom || mLimbs <= kHalvesFrom) return dividePlain(window, m, quotient);
    // Halves need a divisor longer than the quotient, but not much longer.
    const std::size_t piece = std::min(m, mLimbs - 1);
    mScratch.resize(mLimbs * kPerLimb + multiplyScratch(piece, mLimbs));
    while (m > 0) {
        const std::size_t count = std::min(m, piece), below = mLimbs - count - 1;
        m -= count;
        Digit *const at = window + m * kPerLimb, *const q = quotient + m * kPerLimb;
        divideHalves(at + below * kPerLimb, row() + below * kPerLimb, count + 1, count, q);
        if (below > 0) correct(at, row(), mLimbs, below, q, count);
    }
}

// Takes the product of quotient[0, m) with the lower k limbs of the divisor,
// which the quotient was made without, off a window of n + k limbs and one; the
// quotient is too great by two at the most, as the product is below 2^(64 (k +
// m)) and the divisor, of more than m + k limbs, is not.
void RowDivisor::correct(Digit* window, const Digit* divisor, std::size_t n, std::size_t k,
                         Digit* quotient, std::size_t m) {
    const LimbLoops& loops = limbLoops();
    Digit* const product = mScratch.data();
    multiplyLimbs(quotient, m, divisor, k, product, product + (m + k) * kPerLimb);
    const unsigned borrow = loops.subtract(window, product, m + k);
    borrowFrom(window + (m + k) * kPerLimb, (n + 1 - m - k) * kPerLimb, borrow);
    Digit* const top = window + n * kPerLimb;
    while (loadLimb(top) != 0) {
        borrowFrom(quotient, m * kPerLimb, 1);
        const unsigned carry = loops.add(window, divisor, n);
        storeLimb(top, loadLimb(top) + carry);
    }
}

// The upper half of the quotient from the upper limbs of both, then the lower
// one: Burnikel and Ziegler, Fast Recursive Division (1998). n > m.
void RowDivisor::divideHalves(Digit* window, const Digit* divisor, std::size_t n, std::size_t m,
                              Digit* quotient) {
    Digit* const upperWindow = window + m * kPerLimb;
    if (compareDigits(upperWindow, divisor, n * kPerLimb) >= 0) {
        // Without its lower limbs the divisor can go 2^(64 m) times: it stays at
        // one less.
        std::fill_n(quotient, m * kPerLimb, Digit(0xFFFF));
        limbLoops().subtract(upperWindow, divisor, n);
        const unsigned carry = limbLoops().add(window, divisor, n);
        carryInto(window + n * kPerLimb, m * kPerLimb, carry);
        return;
    }
    if (m < kHalvesFrom) {
        for (std::size_t j = m; j-- > 0;)
            storeLimb(quotient + j * kPerLimb, divideLimb(window + j * kPerLimb, divisor, n));
        return;
    }
    const std::size_t k = m / 2, lower = k * kPerLimb;
    divideHalves(window + 2 * lower, divisor + lower, n - k, m - k, quotient + lower);
    correct(window + lower, divisor, n, k, quotient + lower, m - k);
    divideHalves(window + lower, divisor + lower, n - k, k, quotient);
    correct(window, divisor, n, k, quotient, k);
}

}  // namespace Vaskel
