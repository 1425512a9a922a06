// The wide form of ink runs, eight pixels at a time.

#if defined(__x86_64__)

#include <immintrin.h>

#include <algorithm>

#include "colour/ink_run.h"
#include "colour/ink_run_float.h"

#define VASKEL_AVX2 __attribute__((target("avx2,fma")))
#define VASKEL_AVX2_INLINE __attribute__((target("avx2,fma"), always_inline)) inline

namespace Vaskel {
namespace {

using namespace InkRunFloat;

struct Inks {
    __m256 cyan, magenta, yellow, black;  // times 1, 2^8, 2^16 and 1
};

// 1 - (255 - ink) / 65025 * amount, for amounts that are scale times as large.
VASKEL_AVX2_INLINE __m256 factor(__m256 amount, int inkColour, int scale) {
    return _mm256_fnmadd_ps(amount, _mm256_set1_ps(coefficient(inkColour, 1.0 / scale)),
                            _mm256_set1_ps(1));
}

// A channel as the bits of a float from 256 on; blackFactor is the black ink's.
VASKEL_AVX2_INLINE __m256i channel(const Inks& inks, int cyan, int magenta, int yellow,
                                   __m256 blackFactor) {
    const __m256 first =
        _mm256_fnmadd_ps(inks.cyan, _mm256_set1_ps(coefficient(cyan, 255)), _mm256_set1_ps(255));
    const __m256 light = _mm256_fmadd_ps(
        _mm256_mul_ps(first, factor(inks.magenta, magenta, 1 << 8)),
        _mm256_mul_ps(factor(inks.yellow, yellow, 1 << 16), blackFactor), _mm256_set1_ps(kOffset));
    return _mm256_castps_si256(light);
}

VASKEL_AVX2_INLINE __m256 amounts(__m256i pixels, int mask) {
    return _mm256_cvtepi32_ps(_mm256_and_si256(pixels, _mm256_set1_epi32(mask)));
}

// The results of eight pixels; open has a bit set for each of them that is open.
VASKEL_AVX2_INLINE __m256i eightPixels(__m256i pixels, unsigned& open) {
    const Inks inks = {amounts(pixels, 0xFF), amounts(pixels, 0xFF00), amounts(pixels, 0xFF0000),
                       _mm256_cvtepi32_ps(_mm256_srli_epi32(pixels, 24))};
    const __m256 black = factor(inks.black, 31, 1);
    const __m256i red = channel(inks, 0, 194, 245, black);
    const __m256i green = channel(inks, 143, 0, 227, black);
    const __m256i blue = channel(inks, 219, 89, 0, factor(inks.black, 33, 1));
    const __m256i rest = _mm256_set1_epi32(kOpenBits);
    const __m256i least = _mm256_min_epi32(
        _mm256_and_si256(red, rest),
        _mm256_min_epi32(_mm256_and_si256(green, rest), _mm256_and_si256(blue, rest)));
    const __m256i isOpen = _mm256_cmpeq_epi32(least, _mm256_setzero_si256());
    open = static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(isOpen)));
    return _mm256_or_si256(
        _mm256_and_si256(_mm256_srli_epi32(blue, kBits), _mm256_set1_epi32(0xFF)),
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
        _mm_prefetch(pixels + kAhead, _MM_HINT_T0);
        unsigned open;
        const __m256i inks = load8(pixels);
        const __m256i result = eightPixels(inks, open);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(pixels), result);
        if (__builtin_expect(open == 0, 1)) continue;
        unsigned char before[32];
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(before), inks);
        finishOpen(pixels, before, open);
    }
    inkRunTable(pixels, left);
}

VASKEL_AVX2 int inkRunAvx2Declines(const unsigned char* pixels, int count) {
    int declines = 0;
    for (int left = count; left >= 8; left -= 8, pixels += 32) {
        unsigned open;
        eightPixels(load8(pixels), open);
        declines += __builtin_popcount(open);
    }
    return declines;
}

}  // namespace Vaskel

#endif
