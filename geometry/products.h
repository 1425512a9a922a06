// The comparison of products on which every side test rests.

#ifndef GEOMETRY_PRODUCTS_H
#define GEOMETRY_PRODUCTS_H

#include <cstdint>

#include "util/narrow.h"

namespace Vaskel {

/// Orlune::mulcom without the call: -1, 0 or 1 as a * b is less than, equal to
/// or greater than c * d. Products of 32-bit integers are exact in 64 bits, so
/// that there is only one right answer, and no host's can differ.
constexpr int compareProducts(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d) {
    const std::int64_t left = std::int64_t{a} * b;
    const std::int64_t right = std::int64_t{c} * d;
    return (left > right) - (left < right);
}

/// a - b in 32 bits. Differences of coordinates within half the 32-bit range
/// do not wrap.
constexpr std::int32_t difference(std::int32_t a, std::int32_t b) {
    return wrap32(std::int64_t{a} - b);
}

}  // namespace Vaskel

#endif
