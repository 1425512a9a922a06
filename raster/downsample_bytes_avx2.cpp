// Inexact lines of one channel: four cells in a vector, each lane doing the
// table form's operations on its own sum. The first cell, the cells whose
// vectors would reach behind the line, and what no cell ends are taken one by
// one.

#if defined(__x86_64__)

#include <immintrin.h>

#include <climits>
#include <cstddef>

#include "raster/downsample_cells.h"

#define VASKEL_AVX2 __attribute__((target("avx2")))
#define VASKEL_AVX2_INLINE __attribute__((target("avx2"), always_inline)) inline

namespace Vaskel {
namespace {

// The cells from first on, up to but without last; the one behind all ends is
// the sum that the line leaves begun.
void addCells(const DownsampleCells& cells, const DownsampleLine& line, std::size_t first,
              std::size_t last, float* sums) {
    for (std::size_t k = first; k < last; ++k) {
        float sum = sums[k];
        const auto add = [&](double weight, std::size_t pixel) {
            sum = static_cast<float>(static_cast<double>(sum) + weight * line.bytes[pixel]);
        };
        std::size_t i = 0;
        if (k > 0) {
            const CellEnd& before = cells.ends[k - 1];
            i = before.pixel + std::size_t{1};
            add(before.rest * line.weight, before.pixel);
        }
        const bool ends = k < cells.ends.size();
        for (const std::size_t end = ends ? cells.ends[k].pixel : cells.width; i < end; ++i)
            add(line.weight, i);
        if (ends) add((1 - cells.ends[k].rest) * line.weight, i);
        sums[k] = sum;
    }
}

// Four ends side by side.
struct FourEnds {
    __m128i pixels;
    __m256d rests;

    VASKEL_AVX2_INLINE explicit FourEnds(const CellEnd* ends) {
        static_assert(sizeof(CellEnd) == 16 && offsetof(CellEnd, rest) == 8);
        const __m256d a = _mm256_loadu_pd(reinterpret_cast<const double*>(ends));
        const __m256d b = _mm256_loadu_pd(reinterpret_cast<const double*>(ends + 2));
        rests = _mm256_permute4x64_pd(_mm256_unpackhi_pd(a, b), 0xD8);
        pixels = _mm256_castsi256_si128(
            _mm256_permutevar8x32_epi32(_mm256_castpd_si256(_mm256_unpacklo_pd(a, b)),
                                        _mm256_setr_epi32(0, 4, 2, 6, 0, 0, 0, 0)));
    }
};

VASKEL_AVX2_INLINE __m128i fourBytesAt(const unsigned char* bytes, __m128i places) {
    return _mm_i32gather_epi32(reinterpret_cast<const int*>(bytes), places, 1);
}

VASKEL_AVX2_INLINE __m128i lowByte(__m128i lanes) {
    return _mm_and_si128(lanes, _mm_set1_epi32(255));
}

VASKEL_AVX2_INLINE __m128 addProduct(__m128 sum, __m256d weight, __m128i values) {
    const __m256d product = _mm256_mul_pd(weight, _mm256_cvtepi32_pd(values));
    return _mm256_cvtpd_ps(_mm256_add_pd(_mm256_cvtps_pd(sum), product));
}

// From cell k on, not the first one. Reads four bytes behind the last cell's
// end at most. Cells have leastWhole pixels of their own or one more, for which
// the others get 0: adding 0 changes no sum.
template <bool kWhole>
VASKEL_AVX2_INLINE void addFourCells(const DownsampleCells& cells, const DownsampleLine& line,
                                     std::size_t k, float* sums) {
    const __m256d weight = _mm256_set1_pd(line.weight);
    const auto weighted = [&](__m256d share) __attribute__((target("avx2"), always_inline)) {
        return kWhole ? share : _mm256_mul_pd(share, weight);
    };
    const FourEnds before(&cells.ends[k - 1]), own(&cells.ends[k]);
    __m128 sum = _mm_loadu_ps(sums + k);
    const unsigned char* from = line.bytes;
    __m128i window = fourBytesAt(from, before.pixels);
    sum = addProduct(sum, weighted(before.rests), lowByte(window));
    const auto add = [&](__m128i values) __attribute__((target("avx2"), always_inline)) {
        sum = kWhole ? _mm_add_ps(sum, _mm_cvtepi32_ps(values)) : addProduct(sum, weight, values);
    };
    std::size_t i = 0;
    const auto next = [&]() __attribute__((target("avx2"), always_inline)) {
        if (++i % 4 == 0)
            window = fourBytesAt(from += 4, before.pixels);
        else
            window = _mm_srli_epi32(window, 8);
        return lowByte(window);
    };
    const std::size_t least = cells.leastWhole;
    while (i < least) add(next());
    // Either the one more or the end itself; from one end to the next there is
    // one pixel more than a cell's own.
    const __m128i more = _mm_cmpgt_epi32(_mm_sub_epi32(own.pixels, before.pixels),
                                         _mm_set1_epi32(static_cast<int>(least) + 1));
    const __m128i first = next();
    add(_mm_and_si128(first, more));
    const __m128i end = _mm_blendv_epi8(first, next(), more);
    sum = addProduct(sum, weighted(_mm256_sub_pd(_mm256_set1_pd(1), own.rests)), end);
    _mm_storeu_ps(sums + k, sum);
}

template <bool kWhole>
VASKEL_AVX2 void addLine(const DownsampleCells& cells, const DownsampleLine& line, float* sums) {
    const std::size_t count = cells.ends.size();
    std::size_t k = 1;
    if (count > 0 && cells.width <= INT_MAX) {
        addCells(cells, line, 0, 1, sums);
        for (; k + 4 <= count && cells.ends[k + 3].pixel + std::size_t{5} <= cells.width; k += 4)
            addFourCells<kWhole>(cells, line, k, sums);
    } else {
        k = 0;
    }
    addCells(cells, line, k, count + 1, sums);
}

}  // namespace

void addBytesInOrderAvx2(const DownsampleCells& cells, const DownsampleLine& line, float* sums) {
    line.weight == 1 ? addLine<true>(cells, line, sums) : addLine<false>(cells, line, sums);
}

}  // namespace Vaskel

#endif
