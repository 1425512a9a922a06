// The low-pass filter of path cleaning.

#ifndef GEOMETRY_CLEAN_KERNEL_H
#define GEOMETRY_CLEAN_KERNEL_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "geometry/point_runs.h"
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

/// The filter as it works: its innermost weights, the outer ones being 0 as far
/// as they are left out. Samples under these need not be kept.
struct CleanKernel {
    std::size_t reach = 0;              // weights to each side, at least 1
    std::vector<std::int32_t> weights;  // outermost first
    /// For the fast form: the weights of both sides and of the centre, then
    /// zeros up to a whole number of kTapBlock. Empty when they do not fit.
    std::vector<std::int16_t> taps;
};

constexpr std::size_t kTapBlock = 8;

/// The kernel of order n >= 1. Throws std::bad_alloc.
CleanKernel makeKernel(int n);

/// One coordinate filtered: v[0 .. 2 reach] are its samples around the centre
/// v[reach], weights the reach weights of the outer ones, outermost first. The
/// sum is one of 32-bit integers that wrap; rounds to nearest.
inline std::int32_t filterSample(const std::int32_t* v, const std::int32_t* weights,
                                 std::size_t reach) {
    const std::int32_t* const last = v + 2 * reach;
    const auto centre = static_cast<std::uint32_t>(v[reach]);
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < reach; ++i) {
        const std::uint32_t pair =
            static_cast<std::uint32_t>(v[i]) + static_cast<std::uint32_t>(*(last - i));
        sum += (pair - 2 * centre) * static_cast<std::uint32_t>(weights[i]);
    }
    const std::int32_t shifted = wrap32(std::int64_t{sum} + 8192) >> 14;
    return wrap32(std::int64_t{shifted} + v[reach]);
}

/// Samples of both coordinates with all that filtering count outputs needs:
/// output j has its centre at j * stride + reach.
struct FilterBlock {
    const std::int32_t* x;
    const std::int32_t* y;
    std::size_t stride;
    std::size_t count;
    /// How many samples that takes.
    std::size_t length(std::size_t reach) const { return (count - 1) * stride + 2 * reach + 1; }
};

/// Filters a block; the rule itself, one filterSample after the other.
void filterBlockPlain(const CleanKernel& kernel, const FilterBlock& block, WalkPoint* out);

/// The same with eight taps to an instruction, or false, and nothing is
/// written, when samples lie 2^15 or more from the first one, the kernel has no
/// taps or the processor no such instruction. narrow has room for 2 * (length +
/// kTapBlock) values; those behind are read, but count for nothing.
///
/// Same bits: sums wrap in 32 bits, where the order and the grouping of terms
/// do not matter. sum (v[i] + v[2 reach - i] - 2 c) w[i] is therefore the sum
/// of all samples times their own weights, and of c times -2 sum w[i], which is
/// how taps holds them; all taps together are 0, so that the first sample may
/// be subtracted from all before. Differences and taps fit in 16 bits, and a
/// pair of products in 32.
bool filterBlockFast(const CleanKernel& kernel, const FilterBlock& block, std::int16_t* narrow,
                     WalkPoint* out);

}  // namespace Vaskel

#endif
