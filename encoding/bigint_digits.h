// Arithmetic on rows of base-65536 digits, lowest first, four at a time in
// 64-bit limbs where the machine stores its low bytes first.

#ifndef ENCODING_BIGINT_DIGITS_H
#define ENCODING_BIGINT_DIGITS_H

#include <cstddef>
#include <cstdint>

namespace Vaskel {

using Digit = unsigned short;

/// a[0, count) += b[0, count); the carry out, 0 or 1.
unsigned addDigits(Digit* a, const Digit* b, std::size_t count);

/// a[0, count) += carry; the carry out.
unsigned carryInto(Digit* a, std::size_t count, unsigned carry);

/// a[0, count) -= b[0, count), modulo 65536^count; the borrow out, 0 or 1.
unsigned subtractDigits(Digit* a, const Digit* b, std::size_t count);

/// a[0, count) -= borrow; the borrow out.
unsigned borrowFrom(Digit* a, std::size_t count, unsigned borrow);

/// a[0, count) *= factor, a digit; the digit carried out.
unsigned multiplyDigits(Digit* a, std::size_t count, unsigned factor);

/// a[0, count) -= factor * b[0, count), modulo 65536^count, factor a digit;
/// the digit to subtract above.
unsigned subtractMultiple(Digit* a, const Digit* b, std::size_t count, unsigned factor);

/// Less than 0, 0 or more than 0 as a[0, count) is less than, equal to or
/// greater than b[0, count).
int compareDigits(const Digit* a, const Digit* b, std::size_t count);

/// count less the zeros on top.
std::size_t trimmedCount(const Digit* a, std::size_t count);

}  // namespace Vaskel

#endif
