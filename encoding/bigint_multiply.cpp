#include "encoding/bigint_multiply.h"

#include <algorithm>
#include <cstdint>

namespace Vaskel {
namespace {

// Limbs that the products of one size take turns in, and the sums of their
// halves: 2 * lower limbs a level, where the levels' lower halves add up to at
// most the size and one for each of 64 levels.
constexpr std::size_t kScratchExtra = 4 * 64;

void byRows(const Digit* a, std::size_t na, const Digit* b, std::size_t nb, Digit* out) {
    const LimbLoops& loops = limbLoops();
    std::fill_n(out, na * kPerLimb, Digit(0));
    for (std::size_t j = 0; j < nb; ++j, out += kPerLimb) {
        const Limb carry = loops.addMultiple(out, a, na, loadLimb(b + j * kPerLimb));
        storeLimb(out + na * kPerLimb, carry);
    }
}

// a[0, count) += carry, in limbs.
Limb carryLimb(Digit* a, std::size_t count, Limb carry) {
    for (std::size_t i = 0; carry != 0 && i < count; ++i) {
        const Limb sum = loadLimb(a + i * kPerLimb) + carry;
        carry = sum < carry;
        storeLimb(a + i * kPerLimb, sum);
    }
    return carry;
}

// out[0, lower) = |low[0, lower) - high[0, upper)|, lower being upper or one
// more; whether the difference is negative.
bool absoluteDifference(const Digit* low, std::size_t lower, const Digit* high, std::size_t upper,
                        Digit* out) {
    const std::size_t shared = upper * kPerLimb, all = lower * kPerLimb;
    const bool negative =
        trimmedCount(low + shared, all - shared) == 0 && compareDigits(low, high, shared) < 0;
    if (negative) {
        std::copy_n(high, shared, out);
        std::fill(out + shared, out + all, Digit(0));
        limbLoops().subtract(out, low, upper);
    } else {
        std::copy_n(low, all, out);
        const unsigned borrow = limbLoops().subtract(out, high, upper);
        borrowFrom(out + shared, all - shared, borrow);
    }
    return negative;
}

// Both rows of n limbs. Karatsuba: with halves a0, a1 and b0, b1 the middle of
// the product is a0 b0 + a1 b1 - (a0 - a1)(b0 - b1), one product instead of two.
void splitting(const Digit* a, const Digit* b, std::size_t n, Digit* out, Digit* scratch) {
    if (n < kSplitFrom) return byRows(a, n, b, n, out);
    const LimbLoops& loops = limbLoops();
    const std::size_t lower = (n + 1) / 2, upper = n - lower;
    const std::size_t half = lower * kPerLimb;
    const bool negativeA = absoluteDifference(a, lower, a + half, upper, out);
    const bool negativeB = absoluteDifference(b, lower, b + half, upper, out + half);
    Digit *const middle = scratch, *const rest = scratch + 2 * half;
    splitting(out, out + half, lower, middle, rest);
    splitting(a, b, lower, out, rest);
    splitting(a + half, b + half, upper, out + 2 * half, rest);

    std::copy_n(out, 2 * half, rest);
    Limb carry = loops.add(rest, out + 2 * half, 2 * upper);
    carry = carryLimb(rest + 2 * upper * kPerLimb, 2 * (lower - upper), carry);
    if (negativeA == negativeB) {
        carry -= loops.subtract(rest, middle, 2 * lower);
    } else {
        carry += loops.add(rest, middle, 2 * lower);
    }
    carry += loops.add(out + half, rest, 2 * lower);
    carryLimb(out + 3 * half, 2 * n - 3 * lower, carry);
}

}  // namespace

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

std::size_t multiplyScratch(std::size_t na, std::size_t nb) {
    const std::size_t shorter = std::min(na, nb);
    if (shorter < kSplitFrom) return 0;
    // The product of a piece of the longer row, 2 * shorter limbs; again as many
    // for each last piece, which are shorter and shorter as Euclid's remainders
    // and add up to less than twice the first; and what splitting needs.
    return (8 * shorter + kScratchExtra) * kPerLimb;
}

// The longer row in pieces as long as the shorter one; a shorter last piece
// takes the place of the shorter row.
void multiplyLimbs(const Digit* a, std::size_t na, const Digit* b, std::size_t nb, Digit* out,
                   Digit* scratch) {
    if (na < nb) {
        std::swap(a, b);
        std::swap(na, nb);
    }
    if (nb < kSplitFrom) return byRows(a, na, b, nb, out);
    if (na == nb) return splitting(a, b, na, out, scratch);
    Digit* const product = scratch;
    Digit* const rest = scratch + 2 * nb * kPerLimb;
    std::fill_n(out, (na + nb) * kPerLimb, Digit(0));
    for (std::size_t at = 0; at < na; at += nb) {
        const std::size_t piece = std::min(nb, na - at);
        multiplyLimbs(b, nb, a + at * kPerLimb, piece, product, rest);
        Digit* const place = out + at * kPerLimb;
        const unsigned carry = limbLoops().add(place, product, nb + piece);
        carryLimb(place + (nb + piece) * kPerLimb, na - at - piece, carry);
    }
}

}  // namespace Vaskel
