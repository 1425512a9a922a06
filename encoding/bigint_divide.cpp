// The long division of big integers in blocks of quotient digits.
//
// Same results as one digit at a time: a block is a true division of the same
// rows, and of its digits only those are kept that lie above the first place
// where the rule may differ from it in an unknown way.
//
// Regular places. The rest above a place is a remainder R < D stored with n
// digits, the top one not 0; d is the digit at the place. Then V = R * B + d has
// n + 1 digits, its K is the digit of the true quotient, and one zero comes off
// the length, so that the next place is regular unless R's top digit is 0.
// The two digits on top of V decide that, and E - rev(E). They follow from the
// true quotient's digits q at and below the place,
//   V = floor((q[s] q[s-1] ... q[0] * D + remainder) / B^s),
// of which four digits and the upper 64 bits of D give the top but for a small
// error. Where that could matter the place does not count as regular.
//
// Wrapped places. With p >= n + 4 digits in use, every place with a zero on top
// wraps, since V + 1 + M < B^(n+2), and the next one unwraps, with B - 1 and 0
// on top and p one more, and so on. With r_j = B^j mod D, k_j = floor(B^j / D)
// mod B, and x the remainder above, a pair of places with digits d and d' gives
//   k_(p-1)                  (that r_(p-1) is not 0 is checked)
//   k_(p+1) + T - t          T = floor((x B^2 + d B + d' + r_(p+1)) / D),
//                            t = rev(E) - E for 0xFFFF0000
// modulo B and leaves x' = (x B^2 + d B + d' + r_(p+1)) mod D: r_(p+1) and
// k_(p+1) stand for the B^(p+1) of the wrap. For P pairs in a row all T come
// from one division, of
//   x B^(2P) + 2P digits + r_(p+1) B^(2P-2) + r_(p+2) B^(2P-4) + ...
// by D: they are its quotient's digits to base B^2, unless one of them is B^2,
// the most that it can be, which shows as a digit of 0 and is left to single
// steps. With the digits of the fraction of r_(p+1) / D,
//   r_(p+1+i) = r_(p+1) B^i - D * (k_(p+2) ... k_(p+1+i)),
// the sum of all r is r_(p+1) * (B^(2P-2) + B^(2P-3) + ... + B^(P-1)), and what
// that has too much is a sum of rows of k, to take off the quotient. Both are
// running sums.

#include "encoding/bigint_divide.h"

#include <bit>

#include "encoding/bigint_divide_short.h"
#include "encoding/bigint_multiply.h"
#include "encoding/bigint_row_divisor.h"

namespace Vaskel {
namespace {

using Row = std::vector<Digit>;

// row[from, ...) += sum, digit by digit; sums of up to 2^31 digits fit.
class RunningSum {
 public:
    RunningSum(Digit* row, std::size_t from) : mAt(row + from) {}

    // The next digit of the row gets the sum's present value.
    void addTo() {
        mCarry += *mAt + mSum;
        *mAt++ = static_cast<Digit>(mCarry);
        mCarry >>= 16;
    }
    void enter(Digit digit) { mSum += digit; }
    void leave(Digit digit) { mSum -= digit; }
    void finish() {
        while (mCarry != 0) {
            mCarry += *mAt;
            *mAt++ = static_cast<Digit>(mCarry);
            mCarry >>= 16;
        }
    }

 private:
    Digit* mAt;
    std::uint64_t mSum = 0, mCarry = 0;
};

class BlockDivision : private DigitDivision<Base65536> {
 public:
    BlockDivision(const Digit* divisor, std::size_t n, Digit* rest, std::size_t length)
        : DigitDivision(divisor, n, rest, length),
          mTrue(divisor, n),
          mTopZeros(static_cast<unsigned>(std::countl_zero(divisor[n - 1]))) {}

    std::size_t run(Digit* quotient, void (*report)(), DivideCounts& counts) {
        for (std::size_t left = mLength - mN + 1; left > 0;) {
            if (mPause == 0 && left >= kPerLimb) {
                const std::size_t before = left;
                if (mLength == left + mN && !mWrapped) {
                    left -= regularBlock(left, quotient, counts);
                } else if (!mWrapped && mRest[mLength - 1] == 0 && mLength + 1 >= left + mN + 4) {
                    left -= wrappedBlock(left, quotient, report, counts);
                }
                if (left != before) continue;
            }
            quotient[left - 1] = digitAt(left - 1, report);
            --left;
            ++counts.single;
            if (mPause > 0) --mPause;
        }
        return mLength;
    }

 private:
    // The fewer digits a block brought, the longer to the next one.
    void stop(std::size_t brought, DivideCounts& counts) {
        ++counts.stopped;
        mLastPause = brought >= 32 ? 2 : std::min<std::size_t>(2 * mLastPause, 512);
        mPause = mLastPause;
    }

    // A block of the upper left places; how many of them, from the top, are
    // regular. The rest is left behind those. Blocks grow as long as all are.
    std::size_t regularBlock(std::size_t left, Digit* quotient, DivideCounts& counts) {
        const std::size_t limbs = std::min(mBlock, left / kPerLimb), count = limbs * kPerLimb;
        const std::size_t done = regularPlaces(left - count, limbs, quotient);
        counts.regular += done;
        if (done == count) {
            mBlock = std::min(2 * mBlock, std::max<std::size_t>(mTrue.limbs(), 16));
        } else {
            mBlock = std::max(done / kPerLimb, kFirstBlock);
            stop(done, counts);
        }
        return done;
    }

    // A block of wrapped places, or none if one of them needs single steps.
    std::size_t wrappedBlock(std::size_t left, Digit* quotient, void (*report)(),
                             DivideCounts& counts) {
        const std::size_t most = std::max<std::size_t>(mTrue.limbs(), 16) >> mWrapFailures;
        const std::size_t limbs = std::min(most, left / kPerLimb);
        // An odd number of pairs twice over, so that all rows have whole limbs.
        const std::size_t pairs = limbs == 0 ? 2 : 4 * ((limbs - 1) / 2) + 2;
        if (wrappedPairs(left - 2 * pairs, pairs, quotient, report)) {
            counts.wrapped += 2 * pairs;
            return 2 * pairs;
        }
        if (mWrapFailures < 4) ++mWrapFailures;
        stop(0, counts);
        return 0;
    }

    static constexpr std::size_t kFirstBlock = 4;

    // The limbs of digits from place s on, as above.
    std::size_t regularPlaces(std::size_t s, std::size_t limbs, Digit* quotient) {
        Digit *const window = mRest + s, *const q = quotient + s;
        const std::size_t count = limbs * kPerLimb;
        mTrue.divide(window, limbs, q);
        mTurns.assign(count, 0);
        std::size_t place = count;
        while (place > 0 && isRegular(window, q, place - 1, mTurns[place - 1])) --place;
        if (place > 0) putBack(window, q, place);
        for (std::size_t i = place; i < count; ++i) q[i] = static_cast<Digit>(q[i] + mTurns[i]);
        mLength -= count - place;
        return count - place;
    }

    // Whether the place is regular if all above it are: window holds the
    // remainder behind the whole block, q its true quotient.
    bool isRegular(const Digit* window, const Digit* q, std::size_t place, Digit& turn) const {
        // V * B^(64-bit shift) between low and high.
        const std::size_t digits = std::min<std::size_t>(place + 1, kPerLimb);
        Limb head = 0;
        for (std::size_t i = 0; i < digits; ++i) head = head << 16 | q[place - i];
        TwoLimbs low = TwoLimbs(head) * mTrue.topBits(), high = low + mTrue.topBits() + head;
        if (high < low) return false;
        if (place < kPerLimb) {  // the remainder is next
            const Digit* const top = window + (mTrue.limbs() - 1) * kPerLimb;
            Limb rest = loadLimb(top) << mTrue.topZeros();
            if (mTrue.topZeros() != 0 && mTrue.limbs() > 1)
                rest |= loadLimb(top - kPerLimb) >> (64 - mTrue.topZeros());
            low += rest;
            high = low + head + 1;
            if (high < low) return false;
        }
        const unsigned shift = static_cast<unsigned>(32 + 16 * digits) + mTopZeros;
        const Limb heads = static_cast<Limb>(low >> shift);
        if (heads < B || heads != static_cast<Limb>(high >> shift)) return false;
        turn = turnOf(heads);
        return true;
    }

    // E - rev(E) where V has these two digits on top.
    Digit turnOf(Limb heads) const {
        if (heads >> 16 < mTop) return 0;
        const Limb estimate = heads / mTop;
        return static_cast<Digit>(estimate % B - estimate / B);
    }

    // The rest as it was in front of the lowest count digits of q.
    void putBack(Digit* window, const Digit* q, std::size_t count) {
        const std::size_t limbs = limbsFor(count), n = mTrue.limbs();
        Row factor(limbs * kPerLimb), product((limbs + n) * kPerLimb),
            scratch(multiplyScratch(limbs, n));
        std::copy_n(q, count, factor.begin());
        multiplyLimbs(mTrue.row(), n, factor.data(), limbs, product.data(), scratch.data());
        // The sum is less than D * B^count.
        addDigits(window, product.data(), mN + count);
    }

    // row has size digits, a limb more than the divisor, zeros on top: row * B mod D;
    // the quotient.
    Digit nextRow(Digit* row, std::size_t size) const {
        std::copy_backward(row, row + size - 1, row + size);
        row[0] = 0;
        return static_cast<Digit>(mTrue.divideLimb(row));
    }

    // 2 * pairs places from s on; false, and nothing done, if one of them needs
    // single steps.
    bool wrappedPairs(std::size_t s, std::size_t pairs, Digit* quotient, void (*report)()) {
        const std::size_t count = 2 * pairs, p = mLength - (s + count - 1);
        while (mPowerOf < p - 1) nextPower();
        const std::size_t size = (mTrue.limbs() + 1) * kPerLimb;
        const std::size_t window = mTrue.limbs() * kPerLimb + count + kPerLimb;
        // All rows in one piece of memory, zeros at first.
        mRows.assign((pairs + 2 + kPerLimb) + 3 * size + pairs + window + count + kPerLimb, 0);
        // k_(p-1) to k_(p+pairs), in rising order of places: k[i] is k_(p+pairs-i).
        Digit *const k = mRows.data(), *const first = k + pairs + 2 + kPerLimb;
        k[pairs + 1] = static_cast<Digit>(mPowerQuotient);
        std::copy_n(mPower, mN, first);
        k[pairs] = nextRow(first, size);
        k[pairs - 1] = nextRow(first, size);  // and first is r_(p+1)
        // Its fraction's digits, k_(p+2) to k_(p+pairs-1), pairs - 2 of them.
        Digit *const lastRow = first + size, *const beyond = lastRow + size + pairs;
        std::copy_n(first, mN, lastRow + pairs - 2);
        mTrue.divide(lastRow, (pairs - 2) / kPerLimb, k + 1);
        if (trimmedCount(lastRow, mN) == 0) return false;
        std::copy_n(lastRow, mN, beyond);
        k[0] = nextRow(beyond, size);

        Digit* const kept = beyond + size;
        std::copy_n(mRest + s, window, kept);
        if (!pairQuotients(mRest + s, pairs, first, k, quotient + s, kept + window)) {
            std::copy_n(kept, window, mRest + s);
            return false;
        }
        const Digit turn = turnOf(0xFFFF0000);
        for (std::size_t i = 0; i < pairs; ++i) {  // from the lowest pair up
            quotient[s + 2 * i] = static_cast<Digit>(quotient[s + 2 * i] + k[i] + turn);
            quotient[s + 2 * i + 1] = k[i + 2];
            report();
        }
        mLength -= pairs;
        std::copy_n(lastRow, mN, mPower);
        mPowerOf = p - 1 + pairs;
        mPowerQuotient = k[1];
        return true;
    }

    // The quotients T of pairs of places as digits to base B^2; false if one of
    // them may be B^2. The remainder stays in window. row is r_(p+1); extra has zeros,
    // a limb more than the places.
    bool pairQuotients(Digit* window, std::size_t pairs, const Digit* row, const Digit* k, Digit* t,
                       Digit* extra) {
        const std::size_t count = 2 * pairs;
        RunningSum sum(window, pairs - 1);
        for (std::size_t i = 0; i < mN + pairs - 1; ++i) {
            if (i < mN) sum.enter(row[i]);
            if (i >= pairs) sum.leave(row[i - pairs]);
            sum.addTo();
        }
        sum.finish();
        // The sum may reach D * B^count, but not by much.
        const std::size_t limbs = mTrue.limbs() * kPerLimb;
        Digit* const upper = window + count;
        const bool more =
            loadLimb(upper + limbs) != 0 || compareDigits(upper, mTrue.row(), limbs) >= 0;
        if (more) {
            const unsigned borrow = subtractDigits(upper, mTrue.row(), limbs);
            borrowFrom(upper + limbs, kPerLimb, borrow);
        }
        mTrue.divide(window, count / kPerLimb, t);
        // What the rows had too much: place e of the sum has the digits
        // k_(p+1+j) for j from pairs - 1 - e to (2 pairs - 2 - e) / 2, not below 1.
        RunningSum rows(extra, 0);
        const auto digit = [&](std::size_t j) { return k[pairs - 1 - j]; };
        std::size_t low = pairs, high = pairs - 1;  // the digits in the sum: [low, high]
        for (std::size_t e = 0; e + 4 <= count; ++e) {
            const std::size_t from = e + 2 <= pairs ? pairs - 1 - e : 1;
            const std::size_t to = (2 * pairs - 2 - e) / 2;
            while (low > from) rows.enter(digit(--low));
            while (high > to) rows.leave(digit(high--));
            rows.addTo();
        }
        rows.finish();
        const unsigned borrow = subtractDigits(t, extra, count);
        // Exactly what the sum reached D * B^count by is a multiple of B^count.
        if (borrow > more) return false;
        for (std::size_t i = 0; i + 1 < pairs; ++i)
            if (t[2 * i] == 0 && t[2 * i + 1] == 0) return false;
        return true;
    }

    RowDivisor mTrue;
    unsigned mTopZeros;                      // of the divisor's top digit
    std::size_t mBlock = kFirstBlock;        // limbs of the next regular block
    std::size_t mPause = 0, mLastPause = 4;  // places until the next block
    unsigned mWrapFailures = 0;              // at most 4
    Row mTurns, mRows;
};

}  // namespace

std::size_t divideRows(const Digit* divisor, std::size_t n, Digit* rest, std::size_t length,
                       Digit* quotient, void (*report)()) {
    if (n <= kShortDivisor) return divideRowsShort(divisor, n, rest, length, quotient, report);
    // Blocks pay from about so many digits on.
    if (length - n < kBlocksFrom)
        return divideRowsPlain(divisor, n, rest, length, quotient, report);
    return divideRowsByBlocks(divisor, n, rest, length, quotient, report);
}

std::size_t divideRowsByBlocks(const Digit* divisor, std::size_t n, Digit* rest, std::size_t length,
                               Digit* quotient, void (*report)(), DivideCounts* counts) {
    DivideCounts own;
    BlockDivision division(divisor, n, rest, length);
    return division.run(quotient, report, counts ? *counts : own);
}

std::size_t divideRowsPlain(const Digit* divisor, std::size_t n, Digit* rest, std::size_t length,
                            Digit* quotient, void (*report)()) {
    DigitDivision<Base65536> division(divisor, n, rest, length);
    for (std::size_t s = length - n + 1; s-- > 0;) quotient[s] = division.digitAt(s, report);
    return division.length();
}

}  // namespace Vaskel
