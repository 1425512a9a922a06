// The rules of big integers word by word, in any base up to 65536: what the
// engine's closed forms are held to. Steps are counted, because the loops that
// correct a quotient digit may take longer than anyone waits.

#ifndef TESTS_ENCODING_LITERAL_BIGINT_H
#define TESTS_ENCODING_LITERAL_BIGINT_H

#include <cstdint>
#include <string>
#include <vector>

/// What a literal operation throws when it has taken more than its steps.
struct TooManySteps {};

template <std::uint32_t Base>
class LiteralBigint {
 public:
    LiteralBigint() = default;
    /// With these digits, lowest first, zeros on top included.
    explicit LiteralBigint(std::vector<unsigned short> digits)
        : mDigits(std::move(digits)), mLength(static_cast<int>(mDigits.size())) {}
    static LiteralBigint of(std::uint64_t value) {
        LiteralBigint number;
        for (; value != 0; value /= Base)
            number.at(number.mLength++) = static_cast<unsigned short>(value % Base);
        return number;
    }

    std::vector<unsigned short> digits() const {
        std::vector<unsigned short> row = mDigits;
        row.resize(static_cast<std::size_t>(mLength));
        return row;
    }
    int length() const { return mLength; }

    static inline std::vector<std::string> lines;  // the debug lines since they were cleared
    static inline std::int64_t stepsLeft = 0;

    static int compare(const LiteralBigint& a, const LiteralBigint& b) {
        if (a.mLength != b.mLength) return a.mLength < b.mLength ? -1 : 1;
        for (int i = a.mLength - 1; i >= 0; --i)
            if (a.get(i) != b.get(i)) return a.get(i) < b.get(i) ? -1 : 1;
        return 0;
    }

    void add(const LiteralBigint& other) {
        std::uint32_t carry = 0;
        int i = 0;
        for (; i < mLength || i < other.mLength; ++i) {
            std::uint32_t sum = carry;
            if (i < mLength) sum += get(i);
            if (i < other.mLength) sum += other.get(i);
            at(i) = static_cast<unsigned short>(sum % Base);
            carry = sum / Base;
        }
        mLength = i;
        if (carry != 0) at(mLength++) = static_cast<unsigned short>(carry);
    }

    void subtract(const LiteralBigint& other) {
        if (mLength < other.mLength) {
            lines.push_back("bigint::operator -= >> negative result!");
            return;
        }
        if (mLength == 0) return;
        std::int32_t borrow = 0;
        for (int i = 0; i < mLength; ++i) {
            std::int32_t difference = static_cast<std::int32_t>(get(i)) - borrow;
            if (i < other.mLength) difference -= static_cast<std::int32_t>(other.get(i));
            borrow = difference < 0;
            if (borrow) difference += static_cast<std::int32_t>(Base);
            at(i) = static_cast<unsigned short>(difference);
        }
        if (get(mLength - 1) == 0) --mLength;
        if (borrow) lines.push_back("bigint::operator -= >> negative result!");
    }

    void multiplyDigit(std::uint32_t m) {
        std::uint32_t carry = 0;
        for (int i = 0; i < mLength; ++i) {
            const std::uint32_t product = get(i) * m + carry;
            at(i) = static_cast<unsigned short>(product % Base);
            carry = product / Base;
        }
        if (carry != 0) at(mLength++) = static_cast<unsigned short>(carry);
    }

    void multiply(const LiteralBigint& b) {
        if (b.mLength == 0) {
            mLength = 0;
            return;
        }
        const LiteralBigint start = *this;
        multiplyDigit(b.get(0));
        for (int i = 1; i < b.mLength; ++i) {
            leftshift(1);
            LiteralBigint part = start;
            part.multiplyDigit(b.get(i));
            add(part);
        }
    }

    bool zeroForShifts() const { return mLength == 0 || (mLength == 1 && get(0) == 0); }

    void leftshift(int n) {
        if (zeroForShifts() || n < 1) return;
        for (int i = mLength - 1; i >= 0; --i) at(i + n) = static_cast<unsigned short>(get(i));
        for (int i = 0; i < n; ++i) at(i) = 0;
        mLength += n;
    }

    void rightshift(int n) {
        if (n < 1) return;
        if (n >= mLength || zeroForShifts()) {
            mLength = 0;
            return;
        }
        mLength -= n;
        for (int i = 0; i < mLength; ++i) at(i) = static_cast<unsigned short>(get(i + n));
    }

    /// A divisor with a zero digit on top ends in a division by zero here as
    /// soon as an estimate is needed; DivisorNeedsTrimming is thrown then.
    struct DivisorNeedsTrimming {};

    void divmod(const LiteralBigint& divisor, LiteralBigint& quotient,
                LiteralBigint& remainder) const {
        quotient = LiteralBigint();
        remainder = *this;
        bool zero = true;
        for (int i = 0; i < divisor.mLength; ++i) zero = zero && divisor.get(i) == 0;
        if (zero) {
            lines.push_back("bigint::divmod >> division by 0");
            return;
        }
        for (int shift = mLength - divisor.mLength; shift >= 0; --shift) {
            quotient.leftshift(1);
            LiteralBigint partial = remainder;
            partial.rightshift(shift);
            if (shift >= remainder.mLength) partial = LiteralBigint();
            if (compare(partial, divisor) >= 0) {
                const std::int64_t dtop = divisor.get(divisor.mLength - 1);
                if (dtop == 0) throw DivisorNeedsTrimming();
                const int p = partial.mLength;
                std::int64_t estimate = partial.get(p - 1);
                if (p > divisor.mLength) estimate = estimate * Base + partial.get(p - 2);
                estimate /= dtop;
                LiteralBigint t = divisor;
                t.multiply(of(static_cast<std::uint64_t>(estimate)));
                while (compare(t, partial) < 0) {
                    t.add(divisor);
                    ++estimate;
                    step();
                }
                while (compare(t, partial) > 0) {
                    t.subtract(divisor);
                    --estimate;
                    step();
                }
                t.leftshift(shift);
                remainder.subtract(t);
                // An estimate below 0 counts modulo the base.
                constexpr std::int64_t base = Base;
                quotient.at(0) = static_cast<unsigned short>((estimate % base + base) % base);
            } else if (quotient.mLength == 0) {
                quotient.at(0) = 0;
            }
            ++quotient.mLength;
        }
        while (quotient.mLength > 0 && quotient.get(quotient.mLength - 1) == 0) --quotient.mLength;
    }

 private:
    static void step() {
        if (--stepsLeft < 0) throw TooManySteps();
    }

    // The array's elements behind those written are 0.
    std::uint32_t get(int i) const {
        const auto index = static_cast<std::size_t>(i);
        return index < mDigits.size() ? mDigits[index] : 0;
    }
    unsigned short& at(int i) {
        const auto index = static_cast<std::size_t>(i);
        if (index >= mDigits.size()) mDigits.resize(index + 1);
        return mDigits[index];
    }

    std::vector<unsigned short> mDigits;
    int mLength = 0;
};

#endif
