// What the wide forms of ink runs share: how a channel is calculated in single
// precision, and what is left to the table form.
//
// A channel is 255 times four factors 1 - (255 - ink) / 65025 * amount, to which
// 256 and a half are added: the float then has 15 bits behind the point, the
// byte in front of them, and its exponent before that. In units of 2^-24 of 255
// the error of the product is at most
//
//   1.5    for 255 times the first factor: its coefficient and its sum
//   3 * 1.5  for the other factors
//   2      for the two products before the last, which is not rounded by itself
//
// 8 together, or 4 in units of 2^-15, and half a unit for the last sum. Guard
// units, 8, are added besides, so that what comes out 16 or more units above an
// integer lies 3 above it at least, and 3 below the next one. Other pixels are
// left to the table form, whose own error, in double precision, is far below one
// unit.
//
// Amounts are converted where they stand in the pixel, so that they come out
// 2^8 or 2^16 times as large; coefficients are that much smaller, which changes
// no bit of a product.
//
// All 2^32 pixels have been compared with the plain form's.
// Test: "ink run: all pixels there are, every form", when asked for.

#ifndef COLOUR_INK_RUN_FLOAT_H
#define COLOUR_INK_RUN_FLOAT_H

#include <cstring>

#include "colour/ink_run.h"

namespace Vaskel::InkRunFloat {

constexpr int kBits = 15;
constexpr int kGuard = 8;
constexpr float kOffset = 256.5f + static_cast<float>(kGuard) / (1 << kBits);
static_assert(kOffset + 255 < 512);

/// Bits from 2 * kGuard up to the point: none is set in an open channel.
constexpr int kOpenBits = (1 << kBits) - 2 * kGuard;

/// How far ahead memory is asked for, in bytes: the CPU by itself does not look
/// beyond a page's end. Asking never faults, also behind the run.
constexpr int kAhead = 4096;

constexpr float coefficient(int inkColour, double scale) {
    return static_cast<float>((255 - inkColour) / 65025.0 * scale);
}

/// Calculates the pixels that open has bits for, which were at before.
inline void finishOpen(unsigned char* pixels, const unsigned char* before, unsigned open) {
    for (; open != 0; open &= open - 1) {
        const int i = 4 * __builtin_ctz(open);
        std::memcpy(pixels + i, before + i, 4);
        inkRunTable(pixels + i, 1);
    }
}

}  // namespace Vaskel::InkRunFloat

#endif
