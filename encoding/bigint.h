// What the engine of big integers knows beyond its public header: the digits
// themselves, and the forms of its operations that tests hold together.

#ifndef ENCODING_BIGINT_H
#define ENCODING_BIGINT_H

#include <cstddef>
#include <cstdint>

#include "vaskel/encoding/bigint.h"

namespace Vaskel {

/// The inner parts of arraytemplate and bigint.
struct BigintAccess {
    using Digit = unsigned short;
    using Array = arraytemplate<Digit>;

    template <class T>
    static T* data(const arraytemplate<T>& array) {
        return array.mData;
    }
    template <class T>
    static std::uint64_t capacity(const arraytemplate<T>& array) {
        return array.mCapacity;
    }
    static Digit* digits(const bigint& number) { return number.mDigits.mData; }
    static std::int32_t length(const bigint& number) { return number.mLength; }
    static void setLength(bigint& number, std::int32_t length) { number.mLength = length; }
    static void leftshift(bigint& number, int n) { number.leftshift(n); }
    static void rightshift(bigint& number, int n) { number.rightshift(n); }

    /// Makes room for count digits; those in use stay.
    static void reserve(bigint& number, std::size_t count) {
        if (count > number.mDigits.mCapacity) number.mDigits[count - 1];
    }

    /// product = a * b by the rule of digits in reverse order; it may be a or b.
    static void multiply(const bigint& a, const bigint& b, bigint& product);

    /// Exchanges the digits of two numbers; never fails.
    static void swap(bigint& a, bigint& b);
};

}  // namespace Vaskel

#endif
