// The low-pass filter of path cleaning.

#ifndef GEOMETRY_CLEAN_KERNEL_H
#define GEOMETRY_CLEAN_KERNEL_H

#include <cstdint>
#include <vector>

#include "util/narrow.h"

namespace Vaskel {

/// Half the filter's length in samples for order n >= 1.
constexpr std::int64_t cleanHalfLength(int n) { return std::int64_t{8} * n - 2; }

/// The L = cleanHalfLength(n) weights of order n >= 1 in units of 1/16384,
/// outermost first; the centre's own weight is what is missing to 16384.
///
/// From order kFlatOrder on all weights round to 0; the list is then empty.
/// Takes 32 n^2 products, 10 microseconds for n = 20. Throws std::bad_alloc.
std::vector<std::int32_t> cleanWeights(int n);

constexpr int kFlatOrder = 16384;

/// One coordinate filtered: v[0 .. 2 reach] are its samples around the centre
/// v[reach], weights the reach weights of the outer ones, outermost first. The
/// sum is one of 32-bit integers that wrap; rounds to nearest.
inline std::int32_t filterSample(const std::int32_t* v, const std::int32_t* weights,
                                 std::int64_t reach) {
    const std::int32_t* const last = v + 2 * reach;
    const auto centre = static_cast<std::uint32_t>(v[reach]);
    std::uint32_t sum = 0;
    for (std::int64_t i = 0; i < reach; ++i) {
        const std::uint32_t pair =
            static_cast<std::uint32_t>(v[i]) + static_cast<std::uint32_t>(last[-i]);
        sum += (pair - 2 * centre) * static_cast<std::uint32_t>(weights[i]);
    }
    const std::int32_t shifted = wrap32(std::int64_t{sum} + 8192) >> 14;
    return wrap32(std::int64_t{shifted} + v[reach]);
}

}  // namespace Vaskel

#endif
