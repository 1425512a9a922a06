// The line between two output lines, whose pixels go to the sums of both with
// different weights: converted once, and added in double precision throughout.
//
// A sum of the rule is a float after each step, that is the double sum rounded
// to 24 bits. Here it stays a double and is rounded to 24 bits in place: adding
// and taking away 1.5 * 2^(e + 29), where 2^e <= |sum| < 2^(e + 1), leaves
// multiples of 2^(e - 23), which are the floats of that size, and rounds to the
// nearest one, halves to the even one, as the conversion does. Weights are
// between 0 and 1 and sums not below 0, so that no sum comes near the floats
// whose precision is less; a sum of 0 stays 0.

#if defined(__x86_64__)

#include <immintrin.h>

#include <cstring>

#include "raster/downsample_cells.h"

#define VASKEL_AVX2 __attribute__((target("avx2")))
#define VASKEL_AVX2_INLINE __attribute__((target("avx2"), always_inline)) inline

namespace Vaskel {
namespace {

VASKEL_AVX2_INLINE __m256d roundToFloat(__m256d value) {
    const __m256i exponent =
        _mm256_and_si256(_mm256_castpd_si256(value), _mm256_set1_epi64x(0x7FF0000000000000));
    const __m256d large = _mm256_castsi256_pd(
        _mm256_add_epi64(exponent, _mm256_set1_epi64x((29LL << 52) + (1LL << 51))));
    return _mm256_sub_pd(_mm256_add_pd(value, large), large);
}

VASKEL_AVX2_INLINE __m256d addProduct(__m256d sum, __m256d weight, __m256d pixel) {
    return roundToFloat(_mm256_add_pd(sum, _mm256_mul_pd(weight, pixel)));
}

VASKEL_AVX2_INLINE __m128i channels(const unsigned char* pixel) {
    std::uint32_t four;
    std::memcpy(&four, pixel, 4);
    return _mm_cvtepu8_epi32(_mm_cvtsi32_si128(static_cast<int>(four)));
}

// The sums of a cell in both lines.
struct Both {
    __m256d done, next;

    VASKEL_AVX2_INLINE void add(__m256d doneWeight, __m256d nextWeight, __m256d pixel) {
        done = addProduct(done, doneWeight, pixel);
        next = addProduct(next, nextWeight, pixel);
    }
    VASKEL_AVX2_INLINE void store(float* doneSums, float* nextSums) const {
        _mm_storeu_ps(doneSums, _mm256_cvtpd_ps(done));
        _mm_storeu_ps(nextSums, _mm256_cvtpd_ps(next));
    }
};

}  // namespace

VASKEL_AVX2 void splitLineAvx2(const DownsampleCells& cells, const SplitLine& line, float* doneSums,
                               float* nextSums) {
    const auto least = static_cast<std::ptrdiff_t>(cells.leastWhole);
    const __m256d one = _mm256_set1_pd(1);
    const __m256d toDone = _mm256_set1_pd(line.done), toNext = _mm256_set1_pd(line.next);
    const unsigned char* pixel = line.bytes;
    // The pixel that ended the cell before, and what is left of it.
    __m256d shared = _mm256_setzero_pd(), sharedRest = _mm256_setzero_pd();
    const auto begin = [&](float* sums) __attribute__((target("avx2"))) {
        Both both = {_mm256_cvtps_pd(_mm_loadu_ps(sums)), _mm256_setzero_pd()};
        both.add(_mm256_mul_pd(sharedRest, toDone), _mm256_mul_pd(sharedRest, toNext), shared);
        return both;
    };
    for (const CellEnd& end : cells.ends) {
        Both both = begin(doneSums);
        const unsigned char* const last = line.bytes + std::size_t{4} * end.pixel;
        for (std::ptrdiff_t i = 0; i < least; ++i)
            both.add(toDone, toNext, _mm256_cvtepi32_pd(channels(pixel + 4 * i)));
        if (last - pixel > 4 * least)
            both.add(toDone, toNext, _mm256_cvtepi32_pd(channels(pixel + 4 * least)));
        shared = _mm256_cvtepi32_pd(channels(last));
        sharedRest = _mm256_set1_pd(end.rest);
        const __m256d own = _mm256_sub_pd(one, sharedRest);
        both.add(_mm256_mul_pd(own, toDone), _mm256_mul_pd(own, toNext), shared);
        both.store(doneSums, nextSums);
        doneSums += 4;
        nextSums += 4;
        pixel = last + 4;
    }
    Both both = begin(doneSums);
    for (const unsigned char* const end = line.bytes + std::size_t{4} * cells.width; pixel != end;
         pixel += 4)
        both.add(toDone, toNext, _mm256_cvtepi32_pd(channels(pixel)));
    both.store(doneSums, nextSums);
}

}  // namespace Vaskel

#endif
