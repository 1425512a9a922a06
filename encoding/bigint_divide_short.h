// The long division of big integers by divisors of up to four digits.

#ifndef ENCODING_BIGINT_DIVIDE_SHORT_H
#define ENCODING_BIGINT_DIVIDE_SHORT_H

#include <cstddef>

#include "encoding/bigint_digits.h"

namespace Vaskel {

constexpr std::size_t kShortDivisor = 4;

/// divideRows for n from 1 to kShortDivisor. The quotient's digits are made one
/// at a time, and what is left above a place stays in registers.
std::size_t divideRowsShort(const Digit* divisor, std::size_t n, Digit* rest, std::size_t length,
                            Digit* quotient, void (*report)());

}  // namespace Vaskel

#endif
