// The wide form. Conversions between double and single precision round as the
// scalar ones do, so that lanes and scalars agree.

#if defined(__x86_64__)

#include <immintrin.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstring>

#include "raster/downsample_estimate.h"
#include "raster/downsample_packed.h"

#define VASKEL_AVX2 __attribute__((target("avx2")))
#define VASKEL_AVX2_INLINE __attribute__((target("avx2"), always_inline)) inline

namespace Vaskel {
namespace {

// ---- Pixels in order --------------------------------------------------------

VASKEL_AVX2_INLINE __m128i channels(const unsigned char* pixel) {
    std::uint32_t four;
    std::memcpy(&four, pixel, 4);
    return _mm_cvtepu8_epi32(_mm_cvtsi32_si128(static_cast<int>(four)));
}

VASKEL_AVX2_INLINE __m128 addProduct(__m128 sum, __m256d weight, __m256d pixel) {
    return _mm256_cvtpd_ps(_mm256_add_pd(_mm256_cvtps_pd(sum), _mm256_mul_pd(weight, pixel)));
}

// kWhole: the line's weight is 1.
//
// Cells have leastWhole pixels of their own or one more (a cell of factor f
// behind a rest r has ceil(f - r) - 1, and 0 <= r < 1). Which of the two is the
// same in all lines, so that the CPU learns to guess it.
template <bool kWhole>
VASKEL_AVX2 void addPixelsInOrder(const DownsampleCells& cells, const DownsampleLine& line,
                                  float* sums) {
    const auto least = static_cast<std::ptrdiff_t>(cells.leastWhole);
    const __m256d weight = _mm256_set1_pd(line.weight);
    const auto add = [&](__m128 sum, __m128i pixel) __attribute__((target("avx2"))) {
        if constexpr (kWhole)
            return _mm_add_ps(sum, _mm_cvtepi32_ps(pixel));
        else
            return addProduct(sum, weight, _mm256_cvtepi32_pd(pixel));
    };
    const unsigned char* pixel = line.bytes;
    __m256d shared = _mm256_setzero_pd();        // the pixel that ended the cell before,
    __m256d sharedWeight = _mm256_setzero_pd();  // and what is left of it
    for (const CellEnd& end : cells.ends) {
        __m128 sum = _mm_loadu_ps(sums);
        sum = addProduct(sum, sharedWeight, shared);
        const unsigned char* const last = line.bytes + std::size_t{4} * end.pixel;
        for (std::ptrdiff_t i = 0; i < least; ++i) sum = add(sum, channels(pixel + 4 * i));
        if (last - pixel > 4 * least) sum = add(sum, channels(pixel + 4 * least));
        shared = _mm256_cvtepi32_pd(channels(last));
        const __m256d rest = _mm256_set1_pd(end.rest);
        const __m256d own = _mm256_sub_pd(_mm256_set1_pd(1), rest);
        sharedWeight = kWhole ? rest : _mm256_mul_pd(rest, weight);
        sum = addProduct(sum, kWhole ? own : _mm256_mul_pd(own, weight), shared);
        _mm_storeu_ps(sums, sum);
        sums += 4;
        pixel = last + 4;
    }
    __m128 sum = addProduct(_mm_loadu_ps(sums), sharedWeight, shared);
    for (const unsigned char* const end = line.bytes + std::size_t{4} * cells.width; pixel != end;
         pixel += 4)
        sum = add(sum, channels(pixel));
    _mm_storeu_ps(sums, sum);
}

void accumulate(const DownsampleCells& cells, const DownsampleLine& line, float* sums) {
    if (line.exact)
        accumulateExactAvx2(cells, line, sums);
    else if (line.channels == 4)
        line.weight == 1 ? addPixelsInOrder<true>(cells, line, sums)
                         : addPixelsInOrder<false>(cells, line, sums);
    else
        kDownsampleTable.accumulate(cells, line, sums);
}

// ---- Means ------------------------------------------------------------------

// Times factor, and more added: in single precision, at most 2^-14 off where
// that lies within 0 .. 260. Factor and product err by 2^-24 of the value each,
// the sum by 2^-17.
VASKEL_AVX2_INLINE __m256 roughly(__m256 sums, __m256 factor, __m256 more) {
    const __m256 mean = _mm256_mul_ps(sums, factor);
    // Beyond the bytes the conversion must not overflow.
    const __m256 inRange =
        _mm256_max_ps(_mm256_min_ps(mean, _mm256_set1_ps(257)), _mm256_set1_ps(-1));
    return _mm256_add_ps(inRange, more);
}

VASKEL_AVX2_INLINE void storeBytes(__m256i a, __m256i b, __m256i c, __m256i d, unsigned char* out) {
    const __m256i bytes = _mm256_packus_epi16(_mm256_packs_epi32(a, b), _mm256_packs_epi32(c, d));
    const __m256i inOrder =
        _mm256_permutevar8x32_epi32(bytes, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), inOrder);
}

// Halves are told from what lies below them by 2^-11 at least: 2^-12 more lifts
// a half over the edge whatever the error, and nothing else.
VASKEL_AVX2 std::size_t coarseMeans(float reciprocalOfArea, const float* sums, std::size_t count,
                                    unsigned char* out) {
    const __m256 reciprocal = _mm256_set1_ps(reciprocalOfArea);
    const __m256 half = _mm256_set1_ps(0.5f + 1.0f / 4096);
    std::size_t k = 0;
    for (; k + 32 <= count; k += 32) {
        __m256i bytes[4];
        for (std::size_t i = 0; i < 4; ++i)
            bytes[i] =
                _mm256_cvttps_epi32(roughly(_mm256_loadu_ps(sums + k + 8 * i), reciprocal, half));
        storeBytes(bytes[0], bytes[1], bytes[2], bytes[3], out + k);
    }
    return k;
}

// Where means 2^-13 less and more give the same byte, so does the exact mean: both
// err by less. Of the others the rule decides.
VASKEL_AVX2 std::size_t anyMeans(const MeanRule& rule, const float* sums, std::size_t count,
                                 unsigned char* out) {
    const __m256 reciprocal = _mm256_set1_ps(static_cast<float>(1 / rule.area));
    const __m256 lowerHalf = _mm256_set1_ps(0.5f - 1.0f / 8192);
    const __m256 upperHalf = _mm256_set1_ps(0.5f + 1.0f / 8192);
    std::size_t k = 0;
    for (; k + 32 <= count; k += 32) {
        __m256i low[4], equal[4];
        for (std::size_t i = 0; i < 4; ++i) {
            const __m256 eight = _mm256_loadu_ps(sums + k + 8 * i);
            low[i] = _mm256_cvttps_epi32(roughly(eight, reciprocal, lowerHalf));
            const __m256i high = _mm256_cvttps_epi32(roughly(eight, reciprocal, upperHalf));
            equal[i] = _mm256_cmpeq_epi32(low[i], high);
        }
        storeBytes(low[0], low[1], low[2], low[3], out + k);
        const __m256i all = _mm256_and_si256(_mm256_and_si256(equal[0], equal[1]),
                                             _mm256_and_si256(equal[2], equal[3]));
        if (_mm256_movemask_epi8(all) == -1) continue;
        for (std::size_t i = 0; i < 4; ++i) {
            auto differ =
                static_cast<unsigned>(~_mm256_movemask_ps(_mm256_castsi256_ps(equal[i]))) & 255;
            for (; differ != 0; differ &= differ - 1) {
                const std::size_t one =
                    k + 8 * i + static_cast<std::size_t>(std::countr_zero(differ));
                kDownsampleTable.means(rule, sums + one, 1, out + one);
            }
        }
    }
    return k;
}

VASKEL_AVX2 void means(const MeanRule& rule, const float* sums, std::size_t count,
                       unsigned char* out) {
    const std::size_t done = rule.coarse
                                 ? coarseMeans(static_cast<float>(1 / rule.area), sums, count, out)
                                 : anyMeans(rule, sums, count, out);
    kDownsampleTable.means(rule, sums + done, count - done, out + done);
}

}  // namespace

const DownsampleForm kDownsampleAvx2 = {"avx2", accumulate, means, &kPackedAvx2, &kEstimateAvx2};

}  // namespace Vaskel

#endif
