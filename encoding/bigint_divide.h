// The long division of big integers, one quotient digit at a time.
//
// The rule is a schoolbook division that finds each digit by correcting an
// estimate by one divisor at a time. Two habits of the numbers it is made of
// decide its results: a product with a factor of two digits takes these in
// reverse order, and a subtraction takes one zero off the top of the length,
// not more. Corrected one by one, a digit can take 2^64 steps and more; here
// each digit comes from what those steps end at.
//
// With base B, divisor D of n digits and top digit dtop, and s the place of the
// quotient digit: the p = length - s digits of the rest from place s on have
// the value V, and ptop, pnext on top.
//   p = n:             the digit is floor(V / D), and D times that is taken off.
//   p > n, ptop != 0:  K = floor(V / D) is taken off. The estimate was
//                      E = floor((ptop * B + pnext) / dtop); it was multiplied
//                      in reverse, as rev(E), and then counted on from E: the
//                      digit is E - rev(E) + K modulo B. rev(E) is E if E < B.
//   p > n, ptop = 0:   every product with fewer than p digits compares as less
//                      than V, and every one with p digits as greater, so that
//                      K = floor((B^(p-1) - 1) / D) whatever V is. Where
//                      K * D > V the rest wraps, modulo B^p, and is reported.
// Then one zero comes off the top. Where nothing is taken off (p = n, V < D),
// none does.
//
// Bounds. Outside a wrap V < D * B, so that V has n + 1 digits, above them
// zeros. With M = (B^(p-1) - 1) mod D, so that K * D = B^(p-1) - 1 - M, the rest
// becomes V + (1 + M) - B^(p-1): an addition of at most D. If the sum reaches
// B^(p-1) the difference is less than D and the division goes on as before.
// If not, it wraps to V + (1 + M) with the digit B - 1 on top: the rest is
// "wrapped". Then ptop is not 0 in the next place, where p is one more; V is
//   B * (W + B^(p-1)) + d - B * K * D   with W the V of the place before,
// d the new digit and the p of now, so that V mod D and K mod B follow from
// (W + B^(p-1)) mod D, of n digits: multiples of B in K fall out of the digit.
// The next place has p as it is now, and ptop = 0 again.
//
// So all it takes are the remainders B^j mod D for j = n, n + 1, ..., each made
// from the one before as the wraps ask for them, and a place costs no more
// than three products of D with a number of up to two digits, most places one.

#ifndef ENCODING_BIGINT_DIVIDE_H
#define ENCODING_BIGINT_DIVIDE_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

#include "encoding/bigint_digits.h"

namespace Vaskel {

/// Rows of digits as the division needs them, in the base of big integers.
struct Base65536 {
    static constexpr std::uint64_t kBase = 65536;
    static constexpr auto add = addDigits;
    static constexpr auto carry = carryInto;
    static constexpr auto subtract = subtractDigits;
    static constexpr auto borrow = borrowFrom;
    static constexpr auto subtractTimes = subtractMultiple;
};

/// A division under way. Base is Base65536; tests use others.
template <class Base>
class DigitDivision {
 public:
    /// divisor has n digits, the top one not 0, and outlives the object. rest
    /// holds the dividend's length digits and one zero above them; it becomes
    /// the remainder.
    DigitDivision(const Digit* divisor, std::size_t n, Digit* rest, std::size_t length)
        : mDivisor(divisor), mN(n), mRest(rest), mLength(length), mTop(divisor[n - 1]) {
        for (std::size_t i = 0; i < 3; ++i)
            mDivisorHead = mDivisorHead * B + (i < n ? divisor[n - 1 - i] : 0);
        mHeadReciprocal = ~std::uint64_t{0} / mDivisorHead;
    }

    DigitDivision(const DigitDivision&) = delete;
    DigitDivision& operator=(const DigitDivision&) = delete;

    /// The digits in use of the rest.
    std::size_t length() const { return mLength; }

    /// The quotient digit at place s; places come in falling order, from the
    /// dividend's length less n down to 0. Calls report() for each negative
    /// result.
    template <class Report>
    Digit digitAt(std::size_t s, Report report) {
        Digit* const v = mRest + s;
        const std::size_t p = mLength - s;
        if (p <= mN) {
            if (p < mN || compareDigits(v, mDivisor, mN) < 0) return 0;
            const std::uint64_t k = reduce(v);
            trim();
            return static_cast<Digit>(k);
        }
        if (v[p - 1] == 0) return belowPower(v, p, s == 0, report);
        std::uint64_t turned = 0;  // E - rev(E), mod B
        if (v[p - 1] >= mTop) turned = turn(v[p - 1] * B + v[p - 2]);
        const std::uint64_t k = mWrapped ? unwrap(v, p) : reduce(v);
        trim();
        return static_cast<Digit>((k + turned) % B);
    }

 protected:
    static constexpr std::uint64_t B = Base::kBase;

    // From B^j to B^(j+1), at first to B^n: remainder by D, and quotient mod B.
    void nextPower() {
        if (mPower == nullptr) {
            const std::size_t size = mN + 1 + kPowerRoom;
            if (size > std::size(mFewPowers)) {
                mManyPowers.resize(size);
                mPowers = mManyPowers.data();
            }
            std::fill_n(mPowers, size, Digit(0));
            mPower = mPowers + kPowerRoom;
            // B^(n-1) is its own remainder unless it is D.
            mPower[mN - 1] = trimmedCount(mDivisor, mN - 1) == 0 && mTop == 1 ? 0 : 1;
            mPowerOf = mN - 1;
        } else if (mPower == mPowers) {
            std::copy_backward(mPower, mPower + mN, mPowers + kPowerRoom + mN);
            mPower = mPowers + kPowerRoom;
            mPower[mN] = 0;
        }
        // Times B: the row moves down, a zero comes in below.
        *--mPower = 0;
        mPowerQuotient = reduce(mPower);
        ++mPowerOf;
    }

    const Digit* mDivisor;
    std::size_t mN;
    Digit* mRest;
    std::size_t mLength;
    std::uint64_t mTop;
    std::uint64_t mDivisorHead = 0;  // the three digits on top
    std::uint64_t mHeadReciprocal;
    std::uint64_t mTurnedHeads = 0, mTurn = B;  // E = 0 for 0
    bool mWrapped = false;
    bool mStepAdded = false;  // 1 + M to the wrapped rest

    static constexpr std::size_t kPowerRoom = 32;
    Digit mFewPowers[96];              // room for the row of
    std::vector<Digit> mManyPowers;    // or this, if that is not enough
    Digit* mPowers = mFewPowers;       // the room in use
    Digit* mPower = nullptr;           // B^mPowerOf mod D, and a zero on top
    std::size_t mPowerOf = 0;          // 0 as long as none was needed
    std::uint64_t mPowerQuotient = 0;  // floor(B^mPowerOf / D) mod B

 private:
    // E - rev(E), mod B, for the two digits on top. Most of the rests that wrap have
    // the same two.
    std::uint64_t turn(std::uint64_t heads) {
        if (heads != mTurnedHeads) {
            const std::uint64_t estimate = heads / mTop;
            mTurn = estimate % B + B - estimate / B;
            mTurnedHeads = heads;
        }
        return mTurn;
    }

    void trim() {
        if (mRest[mLength - 1] == 0) --mLength;
    }

    // v[0, n] mod D in place; the quotient, a digit: v < D * B.
    //
    // The estimate is not below the quotient k. The three top digits of D,
    // at least B^2, are D to within 1 / B^2 of itself and 4 digits of v with
    // them, so that the estimate exceeds k by less than k / B^2 + 1: by one at
    // the most.
    std::uint64_t reduce(Digit* v) const {
        std::uint64_t head = 0;
        for (std::size_t i = 0; i < 4; ++i) head = head * B + (i <= mN ? v[mN - i] : 0);
        std::uint64_t k = std::min(byDivisorHead(head), B - 1);
        if (k == 0) return 0;
        const std::uint64_t taken = Base::subtractTimes(v, mDivisor, mN, k);
        if (taken > v[mN]) {
            --k;
            Base::add(v, mDivisor, mN);
        }
        v[mN] = 0;
        return k;
    }

    // v[0, n + 2) mod D in place, for v < D * (B + 1) * B; the quotient.
    //
    // The estimate is the quotient of the five digits on top by D's three, made in two
    // steps. As above it is not below the quotient k, and exceeds it by less than
    // k / B^2 + 1, here by two at the most.
    std::uint64_t reduceTwo(Digit* v) const {
        const auto at = [&](std::size_t below) -> std::uint64_t {
            return below <= mN + 1 ? v[mN + 1 - below] : 0;
        };
        const std::uint64_t head = ((at(0) * B + at(1)) * B + at(2)) * B + at(3);
        const std::uint64_t upper = byDivisorHead(head);
        std::uint64_t k = upper * B + byDivisorHead((head - upper * mDivisorHead) * B + at(4));
        if (k == 0) return 0;
        const std::uint64_t taken = Base::subtractTimes(v, mDivisor, mN, k);
        auto above = static_cast<std::int64_t>(v[mN + 1] * B + v[mN] - taken);
        for (; above < 0; above += Base::add(v, mDivisor, mN)) --k;
        v[mN] = v[mN + 1] = 0;
        return k;
    }

    // floor(head / mDivisorHead). The reciprocal is too small by less than one,
    // its product by less than two.
    std::uint64_t byDivisorHead(std::uint64_t head) const {
        auto quotient = static_cast<std::uint64_t>(TwoLimbs(head) * mHeadReciprocal >> 64);
        std::uint64_t left = head - quotient * mDivisorHead;
        for (; left >= mDivisorHead; left -= mDivisorHead) ++quotient;
        return quotient;
    }

    // The place where the p-digit rest has a zero on top. With n + 4 digits and
    // more the sum is below B^(n+2), so that it wraps, whatever it is, and has a
    // zero below the B - 1. Unless this is the last place, the next one takes the
    // same sum back at once: then it is not added.
    template <class Report>
    Digit belowPower(Digit* v, std::size_t p, bool last, Report report) {
        while (mPowerOf < p - 1) nextPower();
        const bool divides = powerIsZero();
        mStepAdded = p < mN + 4 || last;
        if (mStepAdded) {
            const Digit* const step = divides ? mDivisor : mPower;  // 1 + M
            const unsigned carry = Base::add(v, step, mN);
            Base::carry(v + mN, p - mN, carry);
        }
        if (v[p - 1] != 0) {
            v[p - 1] = 0;
            trim();
        } else {
            v[p - 1] = static_cast<Digit>(B - 1);
            mWrapped = true;
            report();
        }
        return static_cast<Digit>((mPowerQuotient + B - divides) % B);
    }

    // Takes the wrap of the place before back, and this place's K * D off; K
    // mod B.
    std::uint64_t unwrap(Digit* v, std::size_t p) {
        v[p - 1] = 0;
        Digit* const before = v + 1;
        if (mStepAdded) {
            const Digit* const step = powerIsZero() ? mDivisor : mPower;
            const unsigned borrow = Base::subtract(before, step, mN);
            Base::borrow(before + mN, p - 1 - mN, borrow);
        }
        // So that the sum has n + 1 digits, as this one has.
        if (before[mN] == B - 1) reduce(before);
        nextPower();  // now B^(p-1) mod D
        before[mN] = static_cast<Digit>(before[mN] + Base::add(before, mPower, mN));
        mWrapped = false;
        return reduceTwo(v);
    }

    bool powerIsZero() const {
        return std::all_of(mPower, mPower + mN, [](Digit d) { return d == 0; });
    }
};

/// How the digits of a quotient were made.
struct DivideCounts {
    std::size_t single = 0;   // one at a time
    std::size_t regular = 0;  // in blocks, as a true division has them
    std::size_t wrapped = 0;  // in blocks, of a rest that wraps
    std::size_t stopped = 0;  // blocks that a place stopped which is neither
};

/// Divides rest[0, length) by divisor[0, n), whose top digit is not 0; length
/// is not less than n. The quotient gets length - n + 1 digits, and rest the
/// remainder, whose length is the result. rest has kDivideSpare zeros above
/// length. Calls report for each negative result.
std::size_t divideRows(const Digit* divisor, std::size_t n, Digit* rest, std::size_t length,
                       Digit* quotient, void (*report)());
constexpr std::size_t kDivideSpare = 3 * kPerLimb;

/// The same one digit at a time.
std::size_t divideRowsPlain(const Digit* divisor, std::size_t n, Digit* rest, std::size_t length,
                            Digit* quotient, void (*report)());

/// The same with digits made in blocks, by true divisions of rows, wherever they
/// are those of a true division and where a rest wraps again and again.
std::size_t divideRowsByBlocks(const Digit* divisor, std::size_t n, Digit* rest, std::size_t length,
                               Digit* quotient, void (*report)(), DivideCounts* counts = nullptr);

/// From how many digits of the quotient on divideRows makes blocks.
constexpr std::size_t kBlocksFrom = 32;

}  // namespace Vaskel

#endif
