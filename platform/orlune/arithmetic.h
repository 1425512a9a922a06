// Orlune: integer arithmetic without overflow. Every function here is pure,
// keeps no state and is called from any thread, often once a point: a host
// that wants fast engines keeps each call within a few nanoseconds.

#ifndef PLATFORM_ORLUNE_ARITHMETIC_H
#define PLATFORM_ORLUNE_ARITHMETIC_H

#include <cstdint>

#include "platform/export.h"

namespace Orlune {

/// The integer nearest to value; exact halves go away from zero.
///
/// Values beyond the 32-bit range give the nearer end of it (also the
/// infinities); not-a-number gives 0. The current rounding mode of the
/// processor does not matter.
///
///   iround(2.5) is 3, iround(-2.5) is -3, iround(0.49999999999999994) is 0,
///   iround(1e10) is 2147483647
///
/// The engines rely on: the halves' direction (stored coordinates and channel
/// values depend on it) and the saturation (no undefined conversion).
PLATFORM_API int iround(double value);

/// a * b / c, the product formed in 128 bits, the quotient truncated towards
/// zero. A divisor of 0 gives 0; a quotient beyond 64 bits gives the nearer
/// end of the 64-bit range.
///
///   muldiv(7, 3, 2) is 10, muldiv(-7, 3, 2) is -10, muldiv(1, 5, 0) is 0
PLATFORM_API std::int64_t muldiv(std::int64_t a, std::int64_t b, std::int64_t c);

/// Compares a * b with c * d exactly: -1, 0 or 1 as a * b is less than, equal
/// to or greater than c * d.
PLATFORM_API int mulcom(int a, int b, int c, int d);

/// The square root of a * b, rounded down; the product is formed in 128 bits.
/// A negative product gives 0; 2^63, the root of the smallest 64-bit integer
/// times itself, gives the largest 64-bit integer.
///
///   mulsqrt(3, 4) is 3, mulsqrt(-2, 2) is 0
PLATFORM_API std::int64_t mulsqrt(std::int64_t a, std::int64_t b);

/// The square root of a * b + c * d, rounded down, the sum exact; a negative
/// sum gives 0, and a root of 2^63 or more gives the largest 64-bit integer.
///
///   mulsqrt(3, 3, 4, 4) is 5
PLATFORM_API std::int64_t mulsqrt(std::int64_t a, std::int64_t b, std::int64_t c, std::int64_t d);

}  // namespace Orlune

#endif
