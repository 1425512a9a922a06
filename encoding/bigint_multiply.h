// Products of rows of base-65536 digits, lowest first.

#ifndef ENCODING_BIGINT_MULTIPLY_H
#define ENCODING_BIGINT_MULTIPLY_H

#include <cstddef>

#include "encoding/bigint_digits.h"

namespace Vaskel {

/// out[0, na + nb) = a[0, na) * b[0, nb). out overlaps neither; na and nb are
/// not 0.
void multiplyRowsPlain(const Digit* a, std::size_t na, const Digit* b, std::size_t nb, Digit* out);

}  // namespace Vaskel

#endif
