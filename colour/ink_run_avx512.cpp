// The widest form of ink runs: the steps of the AVX2 form, whose error bound
// holds here as well, on sixteen pixels.

#if defined(__x86_64__)

#include <algorithm>
#include <cstring>

#include "colour/ink_run.h"
#include "colour/ink_run_float.h"
#include "util/avx512.h"

#define VASKEL_AVX512 __attribute__((target("avx512f")))
#define VASKEL_AVX512_INLINE __attribute__((target("avx512f"), always_inline)) inline

namespace Vaskel {
namespace {

using namespace InkRunFloat;

struct Inks {
    __m512 cyan, magenta, yellow, black;  // times 1, 2^8, 2^16 and 1
};

VASKEL_AVX512_INLINE __m512 factor(__m512 amount, int inkColour, int scale) {
    return _mm512_fnmadd_ps(amount, _mm512_set1_ps(coefficient(inkColour, 1.0 / scale)),
                            _mm512_set1_ps(1));
}

VASKEL_AVX512_INLINE __m512i channel(const Inks& inks, int cyan, int magenta, int yellow,
                                     __m512 blackFactor) {
    const __m512 first =
        _mm512_fnmadd_ps(inks.cyan, _mm512_set1_ps(coefficient(cyan, 255)), _mm512_set1_ps(255));
    const __m512 light = _mm512_fmadd_ps(
        _mm512_mul_ps(first, factor(inks.magenta, magenta, 1 << 8)),
        _mm512_mul_ps(factor(inks.yellow, yellow, 1 << 16), blackFactor), _mm512_set1_ps(kOffset));
    return _mm512_castps_si512(light);
}

VASKEL_AVX512_INLINE __m512 amounts(__m512i pixels, int mask) {
    return _mm512_cvtepi32_ps(_mm512_and_epi32(pixels, _mm512_set1_epi32(mask)));
}

// The bits of a where mask has them, else those of b.
VASKEL_AVX512_INLINE __m512i choose(int mask, __m512i a, __m512i b) {
    return _mm512_ternarylogic_epi32(_mm512_set1_epi32(mask), a, b, 0xCA);
}

VASKEL_AVX512_INLINE __m512i sixteenPixels(__m512i pixels, unsigned& open) {
    const Inks inks = {amounts(pixels, 0xFF), amounts(pixels, 0xFF00), amounts(pixels, 0xFF0000),
                       _mm512_cvtepi32_ps(_mm512_srli_epi32(pixels, 24))};
    const __m512 black = factor(inks.black, 31, 1);
    const __m512i red = channel(inks, 0, 194, 245, black);
    const __m512i green = channel(inks, 143, 0, 227, black);
    const __m512i blue = channel(inks, 219, 89, 0, factor(inks.black, 33, 1));
    const __m512i rest = _mm512_set1_epi32(kOpenBits);
    open = static_cast<unsigned>(_mm512_testn_epi32_mask(red, rest) |
                                 _mm512_testn_epi32_mask(green, rest) |
                                 _mm512_testn_epi32_mask(blue, rest));
    const __m512i greenBlue =
        choose(0xFF00, _mm512_srli_epi32(green, kBits - 8), _mm512_srli_epi32(blue, kBits));
    return _mm512_and_epi32(choose(0xFF0000, _mm512_slli_epi32(red, 16 - kBits), greenBlue),
                            _mm512_set1_epi32(0xFFFFFF));
}

VASKEL_AVX512_INLINE __m512i load16(const unsigned char* pixels) {
    return _mm512_loadu_si512(pixels);
}

}  // namespace

VASKEL_AVX512 void inkRunAvx512(unsigned char* pixels, int count) {
    int left = std::max(count, 0);
    for (; left >= 16; left -= 16, pixels += 64) {
        _mm_prefetch(pixels + kAhead, _MM_HINT_T0);
        unsigned open;
        const __m512i inks = load16(pixels);
        const __m512i result = sixteenPixels(inks, open);
        _mm512_storeu_si512(pixels, result);
        if (__builtin_expect(open == 0, 1)) continue;
        unsigned char before[64];
        _mm512_storeu_si512(before, inks);
        finishOpen(pixels, before, open);
    }
    inkRunTable(pixels, left);
}

VASKEL_AVX512 int inkRunAvx512Declines(const unsigned char* pixels, int count) {
    int declines = 0;
    for (int left = count; left >= 16; left -= 16, pixels += 64) {
        unsigned open;
        sixteenPixels(load16(pixels), open);
        declines += __builtin_popcount(open);
    }
    return declines;
}

}  // namespace Vaskel

#endif
