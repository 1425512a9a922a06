// Unsigned integers of any size, in digits of base 65536.
//
// Errors are written to the developer's output (Orlune::debug) and give a
// value that the entry names; nothing is thrown but std::bad_alloc. Memory that
// ends, and a host whose debug output throws, leave every operand as it was.
// The debug output does not change the operands of the call that writes to it.
// Different objects may be used on different threads; one object that is not
// changed may be read by several.

#ifndef VASKEL_ENCODING_BIGINT_H
#define VASKEL_ENCODING_BIGINT_H

#include <concepts>
#include <cstdint>
#include <type_traits>

#include "vaskel/export.h"

namespace Vaskel {

struct BigintAccess;  // the engine's own

/// An array that grows when it is written to. Instantiated for unsigned short.
template <class T>
class VASKEL_API arraytemplate {
 public:
    /// An empty array that grows by growthStep elements, or multiples of it; a
    /// step of 0 counts as 1.
    explicit arraytemplate(std::uint64_t growthStep = 10);
    /// Copies have the same elements, capacity and growth step.
    arraytemplate(const arraytemplate& other);
    arraytemplate& operator=(const arraytemplate& other);
    virtual ~arraytemplate();

    /// The element at index. At or beyond the capacity it reports
    /// "arraytemplate::operator[] >> invalid index: %d, size: %d" with index and
    /// capacity, and gives 0.
    T operator[](std::uint64_t index) const;

    /// The element at index, to read or to write. At or beyond the capacity
    /// the array first grows by the smallest multiple of its growth step that
    /// makes room; new elements are 0. References to elements end then.
    ///
    ///   capacity 10, growth step 10: index 10 makes 20, index 25 makes 30
    T& operator[](std::uint64_t index);

 private:
    friend struct BigintAccess;

    T* mData;  // owned; null when empty
    std::uint64_t mCapacity;
    std::uint64_t mGrowthStep;
};

extern template class arraytemplate<unsigned short>;

/// Integer types whose values operators take, up to 64 bits. bool and character
/// types are none.
template <class T>
concept BigintOperand = std::integral<T> && sizeof(T) <= sizeof(std::uint64_t) &&
                        !std::same_as<T, bool> && !std::same_as<T, char> &&
                        !std::same_as<T, wchar_t> && !std::same_as<T, char8_t> &&
                        !std::same_as<T, char16_t> && !std::same_as<T, char32_t>;

/// What would turn into an integer on its way to an operator and must not, or
/// lose its upper digits there: some compilers' 128-bit integers, which need
/// not count as arithmetic types.
template <class T>
concept NoBigintOperand =
    !BigintOperand<T> && (std::is_arithmetic_v<T> || std::is_enum_v<T> ||
                          (sizeof(T) > sizeof(std::uint64_t) && !std::is_class_v<T> &&
                           std::is_convertible_v<T, unsigned int>));

/// An unsigned integer of any size.
///
/// The length is the number of digits in use. Zero has length 0, and the top
/// digit is not 0, except where an entry says that zeros stay on top.
/// Comparisons look at the length first, so that a value with zeros on top
/// counts as greater than every shorter one, and as different from the same
/// value without.
///
/// Integers as operands. Every operator takes integers of up to 64 bits on its
/// right: a + 5, a * 100000, a %= n. As a factor, values up to 65535 choose the
/// multiplication by unsigned short (so that a * 0 keeps its length), larger
/// ones that by bigint. A negative one is reported ("bigint >> negative
/// operand: %lld") and leaves the object as it is. What would have to turn into
/// an integer first (2.5, true, 'a', an enumerator), a wider integer, an integer
/// on the left (5 + a) and a comparison with an integer do not compile: write
/// bigint(5).
///
/// Operands may be the object itself: a -= a, a *= a and a.divmod(a, a, r) act
/// as if copied first.
class VASKEL_API bigint {
 public:
    /// Zero.
    bigint();
    /// 0 has no digit, values below 65536 have one, others two.
    bigint(unsigned int value);
    /// The same for every other integer type, with up to four digits. A
    /// negative value is reported and gives zero.
    template <BigintOperand T>
    bigint(T value) : bigint(magnitude(value), Whole()) {}
    template <NoBigintOperand T>
    bigint(T value) = delete;
    bigint(const bigint& other);
    bigint& operator=(const bigint& other);
    virtual ~bigint();

    /// The value, if it has at most two digits. Otherwise it reports
    /// "bigint::operator uns32 >> overflow" and gives 4294967295.
    operator unsigned int() const;

    bool operator==(const bigint& other) const;
    bool operator!=(const bigint& other) const;
    bool operator<(const bigint& other) const;
    bool operator<=(const bigint& other) const;
    bool operator>(const bigint& other) const;
    bool operator>=(const bigint& other) const;

    bigint& operator+=(const bigint& other);

    /// Subtracts. A zero digit on top is taken off the length, one only:
    /// 2^32 - 4294967295 is 1 with two digits, and a -= a leaves zeros.
    ///
    /// If other has more digits it reports "bigint::operator -= >> negative
    /// result!" and the object stays as it is. If other is greater without
    /// that, it reports the same and the digits wrap, modulo 65536^length:
    /// 5 - 7 is 65534. Zero with length 0 minus length 0 is zero.
    bigint& operator-=(const bigint& other);

    /// Multiplies by the number that other's digits give in reverse order: its
    /// digit 0 has the greatest weight. That is the true product when other has
    /// one digit, or reads the same both ways.
    ///
    ///   100000 * (65536 + 1)   is 6553700000
    ///   100000 * (65536 + 2)   is 100000 * (1 + 2 * 65536)
    ///
    /// A product with length 0 is zero. Zeros on top of the product stay: for
    /// lengths n of at least 2, and m, the product has n + m - 1 digits, and one
    /// more if it needs it. If n is 1, digits 0 of other count from its first
    /// digit that is not 0 on, and the product of the one digit 0 keeps length 1.
    /// Stored values were made by this rule, so it stays.
    bigint& operator*=(const bigint& other);

    /// Multiplies by one digit. By 0 it makes all digits 0 and keeps the
    /// length.
    bigint& operator*=(unsigned short factor);

    /// Replaces the object by the quotient, or the remainder, of divmod.
    bigint& operator/=(const bigint& divisor);
    bigint& operator%=(const bigint& divisor);

    // Copies of the object, with the assigning operator applied.
    bigint operator+(const bigint& other) const;
    bigint operator-(const bigint& other) const;
    bigint operator*(const bigint& other) const;
    bigint operator*(unsigned short factor) const;
    bigint operator/(const bigint& divisor) const;
    bigint operator%(const bigint& divisor) const;

    /// Divides the object by divisor, digit by digit from the top.
    ///
    /// quotient and remainder are two objects; either may be the dividend or
    /// the divisor. By zero (also with zeros on top) it reports "bigint::divmod
    /// >> division by 0", and the quotient is zero, the remainder the dividend.
    ///
    ///   7 by 10        is 0, remainder 7
    ///   1000000 by 7   is 142857, remainder 1
    ///
    /// The quotient never has zeros on top. The remainder loses one zero on
    /// top at each place where something is taken off, so that zeros stay: a
    /// remainder of zero may have a length.
    ///
    /// When this is no true integer division. Operands whose top digits are not
    /// 0 always divide truly if the dividend has up to two digits, or both are
    /// of equal length. Else two things can happen; stored values were made by
    /// these rules, so they stay.
    ///
    /// First: what is left of the dividend loses only one zero on top at a time.
    /// Where two digits became 0 at once, or the dividend comes with zeros on
    /// top, the next quotient digit is made for the greatest number of as many
    /// digits, in place of what is left. If that
    /// takes away too much, it reports "bigint::operator -= >> negative result!"
    /// and the digits wrap; quotient and remainder are other ones then.
    ///
    ///   2^32 by 1      is 2^32 + 65535, remainder 4294901761, one report
    ///   10^19 by 10    is 10^18 + 6553, remainder 4294901766, one report
    ///   2^32 - 4294967295 by 1  is 65535, remainder 4294901762, one report
    ///
    /// Second: where what is left has a digit more than the divisor and the same
    /// digit on top, the quotient digit is greater by e - 1, modulo 65536, with
    /// e the digit below that one divided by the top digit. The remainder stays
    /// true.
    ///
    /// For random operands each of the two is about as likely, at each quotient
    /// digit, as 1 to the divisor's top digit.
    ///
    /// A divisor with zeros on top is taken without them, unless the dividend
    /// is less by comparison: then the quotient is zero, the remainder the
    /// dividend.
    ///
    /// Cost: the product of the lengths of quotient and divisor. No operands
    /// make it wait longer.
    void divmod(const bigint& divisor, bigint& quotient, bigint& remainder) const;

    // Integers on the right, as said above.
    template <BigintOperand T>
    bigint& operator+=(T value) {
        return refuses(value) ? *this : *this += bigint(value);
    }
    template <BigintOperand T>
    bigint& operator-=(T value) {
        return refuses(value) ? *this : *this -= bigint(value);
    }
    template <BigintOperand T>
    bigint& operator*=(T factor) {
        if (refuses(factor)) return *this;
        if (static_cast<std::uint64_t>(factor) > 65535) return *this *= bigint(factor);
        return *this *= static_cast<unsigned short>(factor);
    }
    template <BigintOperand T>
    bigint& operator/=(T divisor) {
        return refuses(divisor) ? *this : *this /= bigint(divisor);
    }
    template <BigintOperand T>
    bigint& operator%=(T divisor) {
        return refuses(divisor) ? *this : *this %= bigint(divisor);
    }
    template <BigintOperand T>
    bigint operator+(T value) const {
        return bigint(*this) += value;
    }
    template <BigintOperand T>
    bigint operator-(T value) const {
        return bigint(*this) -= value;
    }
    template <BigintOperand T>
    bigint operator*(T factor) const {
        return bigint(*this) *= factor;
    }
    template <BigintOperand T>
    bigint operator/(T divisor) const {
        return bigint(*this) /= divisor;
    }
    template <BigintOperand T>
    bigint operator%(T divisor) const {
        return bigint(*this) %= divisor;
    }

    // What does not compile.
    // clang-format off
    template <NoBigintOperand T> bigint& operator+=(T) = delete;
    template <NoBigintOperand T> bigint& operator-=(T) = delete;
    template <NoBigintOperand T> bigint& operator*=(T) = delete;
    template <NoBigintOperand T> bigint& operator/=(T) = delete;
    template <NoBigintOperand T> bigint& operator%=(T) = delete;
    template <NoBigintOperand T> bigint operator+(T) const = delete;
    template <NoBigintOperand T> bigint operator-(T) const = delete;
    template <NoBigintOperand T> bigint operator*(T) const = delete;
    template <NoBigintOperand T> bigint operator/(T) const = delete;
    template <NoBigintOperand T> bigint operator%(T) const = delete;
    // clang-format on

 private:
    friend struct BigintAccess;
    struct Whole {};  // marks the constructor from 64 bits

    bigint(std::uint64_t value, Whole);
    static void reportNegative(std::int64_t value);

    template <BigintOperand T>
    static bool refuses(T value) {
        if constexpr (std::is_signed_v<T>) {
            if (value < 0) {
                reportNegative(value);
                return true;
            }
        }
        return false;
    }
    template <BigintOperand T>
    static std::uint64_t magnitude(T value) {
        return refuses(value) ? 0 : static_cast<std::uint64_t>(value);
    }

    /// Moves the digits up by n places, zeros below; does nothing to zero
    /// (length 0, or the one digit 0) and for n below 1.
    void leftshift(int n);
    /// Moves the digits down by n places; nothing is left for n from the length
    /// on, nor of the one digit 0. Does nothing for n below 1.
    void rightshift(int n);

    arraytemplate<unsigned short> mDigits;
    std::int32_t mLength;
};

/// An integer on the left: as a factor or a divisor, bigint(5) and 5 would not
/// mean the same, so none of these compiles.
template <class T>
concept AnyNumber = std::is_arithmetic_v<T> || std::is_enum_v<T>;
// clang-format off
template <AnyNumber T> bigint operator+(T, const bigint&) = delete;
template <AnyNumber T> bigint operator-(T, const bigint&) = delete;
template <AnyNumber T> bigint operator*(T, const bigint&) = delete;
template <AnyNumber T> bigint operator/(T, const bigint&) = delete;
template <AnyNumber T> bigint operator%(T, const bigint&) = delete;
template <AnyNumber T> bool operator==(const bigint&, T) = delete;
template <AnyNumber T> bool operator!=(const bigint&, T) = delete;
template <AnyNumber T> bool operator<(const bigint&, T) = delete;
template <AnyNumber T> bool operator<=(const bigint&, T) = delete;
template <AnyNumber T> bool operator>(const bigint&, T) = delete;
template <AnyNumber T> bool operator>=(const bigint&, T) = delete;
template <AnyNumber T> bool operator==(T, const bigint&) = delete;
template <AnyNumber T> bool operator!=(T, const bigint&) = delete;
template <AnyNumber T> bool operator<(T, const bigint&) = delete;
template <AnyNumber T> bool operator<=(T, const bigint&) = delete;
template <AnyNumber T> bool operator>(T, const bigint&) = delete;
template <AnyNumber T> bool operator>=(T, const bigint&) = delete;
// clang-format on

}  // namespace Vaskel

#endif
