// Products of rows of base-65536 digits, lowest first.

#ifndef ENCODING_BIGINT_MULTIPLY_H
#define ENCODING_BIGINT_MULTIPLY_H

#include <cstddef>

#include "encoding/bigint_digits.h"

namespace Vaskel {

/// out[0, na + nb) = a[0, na) * b[0, nb), in digits. out overlaps neither.
void multiplyRowsPlain(const Digit* a, std::size_t na, const Digit* b, std::size_t nb, Digit* out);

/// The same in limbs of four digits; na and nb are not 0. scratch has room for
/// multiplyScratch(na, nb) digits. Cost: na * nb^0.585 for na >= nb.
void multiplyLimbs(const Digit* a, std::size_t na, const Digit* b, std::size_t nb, Digit* out,
                   Digit* scratch);
std::size_t multiplyScratch(std::size_t na, std::size_t nb);

/// From how many limbs on a product is split.
constexpr std::size_t kSplitFrom = 24;

}  // namespace Vaskel

#endif
