#include "encoding/bigint_multiply.h"

#include <algorithm>
#include <cstdint>

namespace Vaskel {

void multiplyRowsPlain(const Digit* a, std::size_t na, const Digit* b, std::size_t nb, Digit* out) {
    std::fill_n(out, na + nb, Digit(0));
    for (std::size_t j = 0; j < nb; ++j) {
        std::uint32_t carry = 0;
        for (std::size_t i = 0; i < na; ++i) {
            const std::uint32_t sum = std::uint32_t{a[i]} * b[j] + out[i + j] + carry;
            out[i + j] = static_cast<Digit>(sum);
            carry = sum >> 16;
        }
        out[na + j] = static_cast<Digit>(carry);
    }
}

}  // namespace Vaskel
