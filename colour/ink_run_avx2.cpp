// The wide form of ink runs.
//
// A channel is 255 times four factors 1 - (255 - ink) / 65025 * amount, here
// times 2^15, so that its integer part holds the byte and 15 bits behind the
// point. In units of 2^-24 of the whole scale the error is at most
//
//   2      for 255 * 2^15 times the first factor: its coefficient and its sum
//   3 * 1.5  for the other factors: the coefficient, and a sum below 1
//   3      for the three products
//
// 9.5 together, or 4.8 of the integer's units, and half a unit for the
// conversion. What lies 8 units or less from a half is left to the table form,
// whose own error, in double precision, is far below one unit.

#if defined(__x86_64__)

#include <immintrin.h>

#include <algorithm>

#include "colour/ink_run.h"

#define VASKEL_AVX2 __attribute__((target("avx2,fma")))
#define VASKEL_AVX2_INLINE __attribute__((target("avx2,fma"), always_inline)) inline

namespace Vaskel {
namespace {

constexpr int kBits = 15;
constexpr int kHalf = 1 << (kBits - 1);
constexpr int kGuard = 8;
constexpr float kScale = 255 << kBits;  // below 2^24

struct Inks {
    __m256 cyan, magenta, yellow, black;
};

constexpr float coefficient(int inkColour) {
    return static_cast<float>((255 - inkColour) / 65025.0);
}
constexpr float scaledCoefficient(int inkColour) {
    return static_cast<float>((255 - inkColour) / 65025.0 * kScale);
}

VASKEL_AVX2_INLINE __m256 factor(__m256 amount, int inkColour) {
    return _mm256_fnmadd_ps(amount, _mm256_set1_ps(coefficient(inkColour)), _mm256_set1_ps(1));
}

// The channel in 15 bits behind the point, half and guard added.
VASKEL_AVX2_INLINE __m256i channel(const Inks& inks, int cyan, int magenta, int yellow, int black) {
    const __m256 first = _mm256_fnmadd_ps(inks.cyan, _mm256_set1_ps(scaledCoefficient(cyan)),
                                          _mm256_set1_ps(kScale));
    const __m256 light =
        _mm256_mul_ps(_mm256_mul_ps(first, factor(inks.magenta, magenta)),
                      _mm256_mul_ps(factor(inks.yellow, yellow), factor(inks.black, black)));
    return _mm256_add_epi32(_mm256_cvtps_epi32(light), _mm256_set1_epi32(kHalf + kGuard));
}

VASKEL_AVX2_INLINE __m256 amounts(__m256i pixels, int shift) {
    return _mm256_cvtepi32_ps(
        _mm256_and_si256(_mm256_srli_epi32(pixels, shift), _mm256_set1_epi32(255)));
}

// The results of eight pixels; close has a bit set where one is open.
VASKEL_AVX2_INLINE __m256i eightPixels(__m256i pixels, int& close) {
    const Inks inks = {amounts(pixels, 0), amounts(pixels, 8), amounts(pixels, 16),
                       amounts(pixels, 24)};
    const __m256i red = channel(inks, 0, 194, 245, 31);
    const __m256i green = channel(inks, 143, 0, 227, 31);
    const __m256i blue = channel(inks, 219, 89, 0, 33);
    const __m256i rest = _mm256_set1_epi32((1 << kBits) - 1);
    const __m256i least = _mm256_min_epi32(
        _mm256_and_si256(red, rest),
        _mm256_min_epi32(_mm256_and_si256(green, rest), _mm256_and_si256(blue, rest)));
    close = _mm256_movemask_epi8(_mm256_cmpgt_epi32(_mm256_set1_epi32(2 * kGuard + 1), least));
    return _mm256_or_si256(
        _mm256_srli_epi32(blue, kBits),
        _mm256_or_si256(
            _mm256_and_si256(_mm256_srli_epi32(green, kBits - 8), _mm256_set1_epi32(0xFF00)),
            _mm256_and_si256(_mm256_slli_epi32(red, 16 - kBits), _mm256_set1_epi32(0xFF0000))));
}

VASKEL_AVX2_INLINE __m256i load8(const unsigned char* pixels) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pixels));
}

}  // namespace

VASKEL_AVX2 void inkRunAvx2(unsigned char* pixels, int count) {
    int left = std::max(count, 0);
    for (; left >= 8; left -= 8, pixels += 32) {
        int close;
        const __m256i result = eightPixels(load8(pixels), close);
        if (__builtin_expect(close != 0, 0))
            inkRunTable(pixels, 8);
        else
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(pixels), result);
    }
    inkRunTable(pixels, left);
}

VASKEL_AVX2 int inkRunAvx2Declines(const unsigned char* pixels, int count) {
    int declines = 0;
    for (int left = count; left >= 8; left -= 8, pixels += 32) {
        int close;
        eightPixels(load8(pixels), close);
        declines += close != 0;
    }
    return declines;
}

}  // namespace Vaskel

#endif
