// The long division of big integers by divisors of up to four digits.
//
// Same results as DigitDivision, place by place: bigint_divide.h gives the rule
// and its bounds. What is left above a place is less than D there, or, while it
// wraps, a known sum below a digit B - 1; both are kept as one number instead
// of a row of digits.

#include "encoding/bigint_divide_short.h"

#include <algorithm>
#include <type_traits>

namespace Vaskel {
namespace {

constexpr Limb B = 65536;

// Value holds D * B: a limb for D of up to three digits.
template <class Value>
class ShortDivision {
 public:
    ShortDivision(const Digit* divisor, unsigned n)
        : mN(n), mTop(divisor[n - 1]), mPowerOf(n - 1), mTopPlace(Value{1} << 16 * (n - 1)) {
        for (unsigned i = n; i-- > 0;) mDivisor = mDivisor << 16 | divisor[i];
        mReciprocal = static_cast<Limb>(((TwoLimbs{1} << (64 + kShift)) - 1) / mDivisor);
        mWrappedTurn = turn(B - 1, 0);
        // B^(n-1) is its own remainder unless it is D.
        mPower = mTopPlace == mDivisor ? 0 : mTopPlace;
    }

    std::size_t run(Digit* rest, std::size_t length, Digit* quotient, void (*report)()) {
        std::size_t used = length, s = length - mN + 1;
        Value left = 0;  // above place s
        for (std::size_t i = length; i > s;) left = left << 16 | rest[--i];
        while (s-- > 0) {
            const std::size_t p = used - s;
            if (p >= mN + 3 && s > 0 && !mWrapped) {
                const std::size_t pairs = (s + 1) / 2;
                s = s + 1 - 2 * pairs;  // the lowest place of them
                used -= pairs;
                wrapPairs(left, p, pairs, rest + s, quotient + s, report);
                continue;
            }
            Value v = left << 16 | rest[s];
            if (p <= mN) {
                quotient[s] = 0;
                if (v >= mDivisor) {
                    quotient[s] = static_cast<Digit>(reduce(v));
                    used -= v < mTopPlace;
                }
            } else if (mWrapped) {
                const Limb next = digitOf(mSum, p - 3);
                const Limb turned = next == 0 ? mWrappedTurn : turn(B - 1, next);
                v = unwrapped(left) << 16 | rest[s];
                quotient[s] = static_cast<Digit>(reduce(v) + turned);
                --used;
            } else if (p == mN + 1 && v >> 16 >= mTopPlace) {
                const Limb top = digitOf(v, mN);
                const Limb turned = top < mTop ? 0 : turn(top, digitOf(v, mN - 1));
                quotient[s] = static_cast<Digit>(reduce(v) + turned);
                --used;
            } else {
                quotient[s] = belowPower(v, p);
                if (mWrapped)
                    report();
                else
                    --used;
            }
            left = v;
        }
        std::fill_n(rest, length, Digit(0));
        const TwoLimbs remainder = mWrapped ? mSum : TwoLimbs{left};
        for (std::size_t i = 0; i < std::min<std::size_t>(used, 8); ++i)
            rest[i] = static_cast<Digit>(digitOf(remainder, i));
        if (mWrapped) rest[used - 1] = static_cast<Digit>(B - 1);
        return used;
    }

 private:
    // For D of up to so many digits D * B^2 is a limb.
    static constexpr std::size_t kLongestUnreduced = std::is_same_v<Value, Limb> ? 2 : 0;

    // The reciprocal belongs to V without its lowest digit if V has five.
    static constexpr unsigned kShift = std::is_same_v<Value, Limb> ? 0 : 16;

    static Limb digitOf(TwoLimbs value, std::size_t place) {
        return place < 8 ? static_cast<Limb>(value >> 16 * place) % B : 0;
    }

    // E - rev(E), mod B, for E of two digits.
    Limb turn(Limb top, Limb next) const {
        const Limb estimate = (top * B + next) / mTop;
        return estimate % B + B - estimate / B;
    }

    // v mod D in place, for v < D * B, or any limb where a limb holds V; the
    // quotient. The reciprocal is too small by less than one, V without its lowest
    // digit as well, so that the estimate is too small by two at the most.
    Limb reduce(Value& v) const {
        Limb k = static_cast<Limb>(TwoLimbs(static_cast<Limb>(v >> kShift)) * mReciprocal >> 64);
        v -= Value{k} * mDivisor;
        for (; v >= mDivisor; v -= mDivisor) ++k;
        return k;
    }

    void nextPower() {
        mPower <<= 16;
        mPowerQuotient = reduce(mPower);
        ++mPowerOf;
    }

    // The place where the p digits of v have a zero on top.
    Digit belowPower(Value& v, std::size_t p) {
        while (mPowerOf < p - 1) nextPower();
        const bool divides = mPower == 0;
        mSum = TwoLimbs{v} + (divides ? mDivisor : mPower);
        if (digitOf(mSum, p - 1) != 0) {
            v = static_cast<Value>(mSum - (TwoLimbs{1} << 16 * (p - 1)));
        } else {
            mWrapped = true;  // v stays as it was
        }
        return static_cast<Digit>(mPowerQuotient + B - divides);
    }

    // From n + 3 digits on every sum wraps: it is at most V + D < (B + 1) * D, less
    // than B^(n+2), so that there is a zero on top. The next place unwraps it and has
    // a digit more than the one before the wrap; so it goes on. That place has B - 1
    // on top and below it digit n + 1 of the sum, 0 or, of a D above
    // B^(n+1) / (B + 1), 1. The top digit of such a D is B - 1, so that the estimate is
    // B for 1 as for 0, and the turn is the same. With n + 2 digits it is digit n,
    // which may be any. Makes the digits of count such pairs of places, from the one
    // of p digits down; rest and quotient are those of the lowest place.
    void wrapPairs(Value& left, std::size_t p, std::size_t count, const Digit* rest,
                   Digit* quotient, void (*report)()) {
        while (mPowerOf < p - 1) nextPower();
        for (std::size_t at = 2 * count; at > 0; at -= 2) {
            quotient[at - 1] = static_cast<Digit>(mPowerQuotient + B - (mPower == 0));
            report();
            Value v = unwrapped(left << 16 | rest[at - 1]) << 16 | rest[at - 2];
            quotient[at - 2] = static_cast<Digit>(reduce(v) + mWrappedTurn);
            left = v;
        }
    }

    // What is left of v, the value of the place that wrapped, and of the power
    // above it: the same modulo D, and so short that the next place's value has
    // one reduction more. Multiples of D that stay in it are multiples of B in the
    // next quotient, which falls out of the digit: where two digits more fit, all
    // of D * B may stay.
    Value unwrapped(Value v) {
        mWrapped = false;
        if (mN > kLongestUnreduced) reduce(v);
        nextPower();
        v += mPower;
        const Value most = mN > kLongestUnreduced ? mDivisor : mDivisor << 16;
        return v >= most ? v - most : v;
    }

    std::size_t mN;
    Limb mTop;
    Value mDivisor = 0;
    Limb mReciprocal;
    Limb mWrappedTurn;  // where a wrap leaves B - 1 and 0 on top, as most do
    Value mPower;       // B^mPowerOf mod D
    std::size_t mPowerOf;
    Limb mPowerQuotient = 0;  // floor(B^mPowerOf / D) mod B
    Value mTopPlace;          // B^(n-1)
    TwoLimbs mSum = 0;        // of the place before, while it is wrapped
    bool mWrapped = false;
};

}  // namespace

std::size_t divideRowsShort(const Digit* divisor, std::size_t n, Digit* rest, std::size_t length,
                            Digit* quotient, void (*report)()) {
    const auto digits = static_cast<unsigned>(n);
    if (n < kShortDivisor)
        return ShortDivision<Limb>(divisor, digits).run(rest, length, quotient, report);
    return ShortDivision<TwoLimbs>(divisor, digits).run(rest, length, quotient, report);
}

}  // namespace Vaskel
