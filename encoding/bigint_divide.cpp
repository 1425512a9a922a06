// The long division of big integers, four quotient digits at a time.
//
// Same results as one at a time: four digits together are the limb of a true
// division of the same rows, and are kept only if none of the four places is
// one where the rule differs from it, or if it differs in a known way.
//
// Regular places. The rest below place s + 1 is a remainder R < D stored with n
// digits, and for each of the four places the n + 1 digits that it stands in
// front of have a top that is not 0. Then K is the true digit, and one zero
// comes off the length each time. The two digits on top of V at a place are
// taken from the limb's own results: with q the quotient digits from there down
// to place s - 3 and R the remainder behind them,
//   V = floor((R + q * D) / B^(places below)),
// of which the upper 64 bits of R and D give the top but for a small error.
// Where that error could matter the digits are made one at a time.
//
// Wrapped places. With p >= n + 4 digits in use, places alternate: every one
// with a zero on top wraps, since V + 1 + M < B^(n+2), and the next one unwraps,
// with B - 1 and 0 on top. With r_j = B^j mod D and k_j = floor(B^j / D) mod B,
// x the remainder above and d1 to d4 the four digits below it:
//   d1, p:      k_(p-1)
//   d2, p + 1:  floor((x B^2 + d1 B + d2 + r_p B) / D), remainder x', of which
//               r_p B stands for the B^(p+1) of the wrap
//   d3, p + 1:  k_p
//   d4, p + 2:  floor((x' B^2 + d3 B + d4 + r_(p+2)) / D) + k_(p+2)
// all modulo B, the second and fourth with E - rev(E) for 0xFFFF0000. Both
// quotients come from one limb: x B^4 + d1 B^3 + ... + d4 + r_p B^3 + r_(p+2)
// divided by D has the first one from bit 32 on and the second one below,
// unless that one is B^2 or more: it is at most B^2, which reads as 0, and then
// the digits are made one at a time.

#include "encoding/bigint_divide.h"

#include <bit>
#include <utility>

namespace Vaskel {
namespace {

// Quotients of three limbs by two, the upper one of the divisor at least 2^63,
// by a reciprocal instead of a division: N. Moeller and T. Granlund, Improved
// Division by Invariant Integers, IEEE Transactions on Computers 60 (2011).
class TwoLimbDivisor {
 public:
    TwoLimbDivisor(Limb high, Limb low) : mHigh(high), mLow(low) {
        // floor((2^128 - 1) / (high, low)) - 2^64, from that by high alone.
        Limb v = static_cast<Limb>(((TwoLimbs(~high) << 64) | ~Limb{0}) / high);
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

    /// floor((u2, u1, u0) / (high, low)), at most 2^64 - 1, which it is if the
    /// upper two limbs are not below the divisor.
    Limb quotient(Limb u2, Limb u1, Limb u0) const {
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

 private:
    Limb mHigh, mLow, mReciprocal;
};

// Digits for as long as a division lasts, zeros at first.
using Row = std::vector<Digit>;

class LimbDivision : private DigitDivision<Base65536> {
 public:
    LimbDivision(const Digit* divisor, std::size_t n, Digit* rest, std::size_t length)
        : DigitDivision(divisor, n, rest, length),
          mLimbs(limbsFor(n)),
          mRow(mLimbs * kPerLimb),
          mShift(countTopZeros(divisor, n)),
          mHead(limbOfTop(divisor, n), belowTop(divisor, n)) {
        std::copy_n(divisor, n, mRow.begin());
        mTop64 = limbOfTop(divisor, n);
    }

    std::size_t run(Digit* quotient, void (*report)(), DivideCounts& counts) {
        std::size_t tries = 0;  // places to go before four digits are tried again
        std::size_t pause = 0;
        for (std::size_t s = mLength - mN + 1; s-- > 0;) {
            if (tries == 0 && s % kPerLimb == kPerLimb - 1) {
                if (mLength == s + 1 + mN && !mWrapped) {
                    if (regularLimb(s - 3, quotient + s - 3)) {
                        counts.regular += kPerLimb;
                        s -= 3;
                        pause = 0;
                        continue;
                    }
                    pause = std::min<std::size_t>(2 * pause + kPerLimb, 256);
                    tries = pause;
                    counts.takenBack += kPerLimb;
                } else if (farBelowPower(s)) {
                    const std::size_t limbs = wrappedLimbs(s - 3, quotient, report);
                    counts.wrapped += limbs * kPerLimb;
                    tries = 2 * kPerLimb;
                    counts.takenBack += kPerLimb;
                    if (limbs > 0) {
                        s -= limbs * kPerLimb - 1;
                        continue;
                    }
                }
            }
            quotient[s] = digitAt(s, report);
            ++counts.single;
            if (tries > 0) --tries;
        }
        return mLength;
    }

 private:
    // The divisor's digits as bits from the top one down: how many zero bits a
    // whole number of limbs has above them, and the two limbs below these.
    static unsigned countTopZeros(const Digit* divisor, std::size_t n) {
        const auto digits = static_cast<unsigned>((kPerLimb - n % kPerLimb) % kPerLimb);
        return 16 * digits + static_cast<unsigned>(std::countl_zero(divisor[n - 1]));
    }
    static Limb limbOfTop(const Digit* divisor, std::size_t n) {
        return bitsBelowTop(divisor, n, 0);
    }
    static Limb belowTop(const Digit* divisor, std::size_t n) {
        return bitsBelowTop(divisor, n, 4);
    }
    static Limb bitsBelowTop(const Digit* divisor, std::size_t n, std::size_t skip) {
        TwoLimbs bits = 0;
        for (std::size_t i = skip; i < skip + 5; ++i)
            bits = bits << 16 | (i < n ? divisor[n - 1 - i] : 0);
        return static_cast<Limb>(bits >> (16 - std::countl_zero(divisor[n - 1])));
    }

    // window has a limb more than the divisor and is less than 2^64 times it:
    // its quotient by the divisor, which it is left without a multiple of.
    Limb reduceLimb(Digit* window) const {
        const auto limb = [&](std::size_t below) {
            return below <= mLimbs ? loadLimb(window + (mLimbs - below) * kPerLimb) : 0;
        };
        Limb u2 = limb(0), u1 = limb(1), u0 = limb(2);
        const Limb u3 = limb(3);
        if (mShift != 0) {
            u2 = u2 << mShift | u1 >> (64 - mShift);
            u1 = u1 << mShift | u0 >> (64 - mShift);
            u0 = u0 << mShift | u3 >> (64 - mShift);
        }
        Limb q = mHead.quotient(u2, u1, u0);
        const Limb taken = limbLoops().subtractMultiple(window, mRow.data(), mLimbs, q);
        Digit* const top = window + mLimbs * kPerLimb;
        Limb above = loadLimb(top) - taken;
        // Two limbs of the divisor make the quotient too great by one at most.
        if (above != 0) {
            --q;
            above += limbLoops().add(window, mRow.data(), mLimbs);
        }
        storeLimb(top, above);
        return q;
    }

    // Four regular places from place s + 3 on; false, and nothing done, if they
    // are not.
    bool regularLimb(std::size_t s, Digit* quotient) {
        Digit* const window = mRest + s;
        const Limb head = mRest[mLength - 1] * B + (mN > 1 ? mRest[mLength - 2] : window[3]);
        if (head < B) return false;
        const Limb q = reduceLimb(window);
        // The upper 64 bits of the remainder, shifted as the divisor's are.
        const Digit* const top = window + (mLimbs - 1) * kPerLimb;
        Limb rest = loadLimb(top) << mShift;
        if (mShift != 0 && mLimbs > 1) rest |= loadLimb(top - kPerLimb) >> (64 - mShift);
        const auto topZeros = static_cast<unsigned>(std::countl_zero(static_cast<Digit>(mTop)));
        Digit digits[kPerLimb];
        Limb heads = head;
        for (unsigned place = 3;; --place) {
            const Limb estimate = heads / mTop;
            Limb digit = q >> 16 * place;
            if (estimate >= B) digit += estimate % B - estimate / B;
            digits[place] = static_cast<Digit>(digit);
            if (place == 0) break;
            // The place below: the quotient's digits from there down.
            const unsigned shift = 48 + topZeros + 16 * (place - 1);
            const Limb below = q & ((Limb{1} << 16 * place) - 1);
            const TwoLimbs v = TwoLimbs(below) * mTop64 + rest;
            heads = static_cast<Limb>(v >> shift);
            const Limb most = static_cast<Limb>((v + below + 1) >> shift);
            if (heads < B || heads != most) {
                takeBack(window, q);
                return false;
            }
        }
        std::copy_n(digits, kPerLimb, quotient);
        mLength -= kPerLimb;
        return true;
    }

    // Undoes reduceLimb.
    void takeBack(Digit* window, Limb q) const {
        Digit* const top = window + mLimbs * kPerLimb;
        storeLimb(top, loadLimb(top) + limbLoops().addMultiple(window, mRow.data(), mLimbs, q));
    }

    bool farBelowPower(std::size_t s) const {
        return !mWrapped && mLength >= s + mN + 4 && mRest[mLength - 1] == 0;
    }

    // row has a limb more than the divisor, zeros on top: row * B^places mod D,
    // and the quotient; places is 1 or 2.
    Limb nextRow(const Row& row, std::size_t places, Row& next) const {
        std::fill_n(next.begin(), places, Digit(0));
        std::copy(row.begin(), row.end() - static_cast<std::ptrdiff_t>(places),
                  next.begin() + static_cast<std::ptrdiff_t>(places));
        return reduceLimb(next.data());
    }

    // Places that wrap, four by four from place s + 3 on; how many fours.
    std::size_t wrappedLimbs(std::size_t s, Digit* quotient, void (*report)()) {
        const std::size_t p = mLength - (s + 3);
        while (mPowerOf < p - 1) nextPower();
        const std::size_t size = (mLimbs + 1) * kPerLimb;
        Row before(size), now(size), next(size);  // in the end r_(p-2), r_p and r_(p+2)
        std::copy_n(mPower.begin(), mN, before.begin());
        Limb kBefore = mPowerQuotient, k = nextRow(before, 1, now);  // k_(p-1), k_p
        const Limb estimate = 0xFFFF0000 / mTop;
        const Limb turned = estimate % B - estimate / B;
        std::size_t done = 0;
        for (;; s -= kPerLimb) {
            if (trimmedCount(now.data(), mN) == 0) break;  // k would be one less
            const Limb ks = nextRow(now, 2, next);         // k_(p+1) and k_(p+2)
            Limb q;
            if (!wrappedQuotient(mRest + s, now, next, q)) break;
            quotient[s + 3] = static_cast<Digit>(kBefore);
            quotient[s + 2] = static_cast<Digit>((q >> 32) + turned);
            quotient[s + 1] = static_cast<Digit>(k);
            quotient[s] = static_cast<Digit>(q + ks + turned);
            report();
            report();
            mLength -= 2;
            ++done;
            kBefore = ks >> 16;
            k = ks & 0xFFFF;
            std::swap(before, now);
            std::swap(now, next);
            if (s < kPerLimb) break;
        }
        if (done > 0) {
            // One at a time goes on from the power before.
            std::copy_n(before.begin(), mN, mPower.begin());
            mPowerOf = p + 2 * done - 2;
        }
        return done;
    }

    // Both quotients of a limb that wraps. False, and nothing done, if they
    // cannot be told apart.
    bool wrappedQuotient(Digit* window, const Row& now, const Row& next, Limb& q) const {
        addRow(window + 3, now);
        addRow(window, next);
        // The sum may reach 2^64 times the divisor, but not by much.
        Digit* const upper = window + kPerLimb;
        const bool more = loadLimb(upper + mLimbs * kPerLimb) != 0 ||
                          compareDigits(upper, mRow.data(), mLimbs * kPerLimb) >= 0;
        if (more) subtractRow(upper, mRow);
        q = reduceLimb(window);
        if (static_cast<std::uint32_t>(q) != 0) return true;
        takeBack(window, q);
        if (more) addRow(upper, mRow);
        subtractRow(window, next);
        subtractRow(window + 3, now);
        return false;
    }

    // The divisor's limbs of row, and the carry into the limb above.
    void addRow(Digit* at, const Row& row) const {
        const unsigned carry = limbLoops().add(at, row.data(), mLimbs);
        carryInto(at + mLimbs * kPerLimb, 2 * kPerLimb, carry);
    }
    void subtractRow(Digit* at, const Row& row) const {
        const unsigned borrow = limbLoops().subtract(at, row.data(), mLimbs);
        borrowFrom(at + mLimbs * kPerLimb, 2 * kPerLimb, borrow);
    }

    std::size_t mLimbs;
    Row mRow;         // the divisor in whole limbs
    unsigned mShift;  // zero bits on top of it
    TwoLimbDivisor mHead;
    Limb mTop64;  // its upper 64 bits
};

}  // namespace

std::size_t divideRows(const Digit* divisor, std::size_t n, Digit* rest, std::size_t length,
                       Digit* quotient, void (*report)(), DivideCounts* counts) {
    DivideCounts own;
    LimbDivision division(divisor, n, rest, length);
    return division.run(quotient, report, counts ? *counts : own);
}

std::size_t divideRowsPlain(const Digit* divisor, std::size_t n, Digit* rest, std::size_t length,
                            Digit* quotient, void (*report)()) {
    DigitDivision<Base65536> division(divisor, n, rest, length);
    for (std::size_t s = length - n + 1; s-- > 0;) quotient[s] = division.digitAt(s, report);
    return division.length();
}

}  // namespace Vaskel
