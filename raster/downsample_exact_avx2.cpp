// Exact lines in vectors: the products of bytes and their cells' shares, which
// repeat with the pattern, are added in integers, so that a cell takes one
// addition in single precision. The cells behind the last whole period, and
// those from which a vector would reach behind the line, are the table form's.
//
// Bytes times shares of at most 64, two of them, stay within 16 bits; the sum
// of a cell stays below 2^24, as the table form shows.

#if defined(__x86_64__)

#include <immintrin.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "raster/downsample_cells.h"

#define VASKEL_AVX2 __attribute__((target("avx2")))
#define VASKEL_AVX2_INLINE __attribute__((target("avx2"), always_inline)) inline

namespace Vaskel {
namespace {

VASKEL_AVX2_INLINE __m128i load16(const unsigned char* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

VASKEL_AVX2_INLINE __m128i fourShares(const unsigned char* shares) {
    std::int32_t four;
    std::memcpy(&four, shares, 4);
    return _mm_set1_epi32(four);
}

VASKEL_AVX2_INLINE void addTo(float* sums, __m256i cells, __m256 unit) {
    const __m256 products = _mm256_mul_ps(_mm256_cvtepi32_ps(cells), unit);
    _mm256_storeu_ps(sums, _mm256_add_ps(_mm256_loadu_ps(sums), products));
}

VASKEL_AVX2_INLINE void addTo(float* sums, __m128i cells, __m128 unit) {
    const __m128 products = _mm_mul_ps(_mm_cvtepi32_ps(cells), unit);
    _mm_storeu_ps(sums, _mm_add_ps(_mm_loadu_ps(sums), products));
}

// ---- Four channels: two cells in a vector -----------------------------------

// kBlocks groups of four pixels a cell; 0: as many as blocks says.
template <std::size_t kBlocks>
VASKEL_AVX2 std::size_t addPixelCells(const DownsampleCells& cells, const DownsampleLine& line,
                                      std::size_t manyBlocks, float* sums) {
    const CellPattern& pattern = cells.pattern;
    const std::size_t blocks = kBlocks ? kBlocks : manyBlocks;
    const std::size_t reach = 4 * (pattern.starts.back() + 4 * blocks);
    const std::size_t periods = wholePeriods(cells, 4, reach);
    const __m256 unit =
        _mm256_set1_ps(static_cast<float>(line.weight / std::ldexp(1, cells.fractionBits)));
    const __m256i byChannel = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15));
    const __m256i ones = _mm256_set1_epi16(1);
    const unsigned char* from = line.bytes;
    for (std::size_t period = 0; period < periods; ++period, from += 4 * pattern.pixels)
        for (std::size_t k = 0; k < pattern.period; k += 2, sums += 8) {
            const unsigned char* const a = from + std::size_t{4} * pattern.starts[k];
            const unsigned char* const b = from + std::size_t{4} * pattern.starts[k + 1];
            const unsigned char* const shares = pattern.sharesOf(k);
            __m256i cell = _mm256_setzero_si256();
            for (std::size_t i = 0; i < blocks; ++i) {
                const __m256i pixels = _mm256_inserti128_si256(
                    _mm256_castsi128_si256(load16(a + 16 * i)), load16(b + 16 * i), 1);
                // The shares of four pixels, for each channel.
                const __m256i share =
                    _mm256_inserti128_si256(_mm256_castsi128_si256(fourShares(shares + 4 * i)),
                                            fourShares(shares + CellPattern::kMostSpan + 4 * i), 1);
                const __m256i products =
                    _mm256_maddubs_epi16(_mm256_shuffle_epi8(pixels, byChannel), share);
                cell = _mm256_add_epi32(cell, _mm256_madd_epi16(products, ones));
            }
            addTo(sums, cell, unit);
        }
    return periods * pattern.period;
}

// ---- One channel: four cells in a vector ------------------------------------

// Cells of up to four pixels, four of which lie within 16: where the first one
// begins, its pixels' places and those of the others from there on, and their shares.
struct FourCells {
    std::uint32_t start;
    unsigned char places[16], shares[16];
};
[[gnu::cold, gnu::noinline]] FourCells* fourCells(const CellPattern& pattern, FourCells* to) {
    for (std::size_t first = 0; first < pattern.period; first += 4, ++to) {
        to->start = pattern.starts[first];
        for (std::size_t i = 0; i < 16; ++i) {
            const std::size_t cell = first + i / 4;
            const std::size_t place = pattern.starts[cell] - to->start + i % 4;
            to->shares[i] = pattern.sharesOf(cell)[i % 4];
            to->places[i] = static_cast<unsigned char>(std::min<std::size_t>(place, 15));
        }
    }
    return to;
}

// Each cell gets its pixels by a shuffle.
VASKEL_AVX2 std::size_t addNarrowCells(const DownsampleCells& cells, const DownsampleLine& line,
                                       float* sums) {
    const CellPattern& pattern = cells.pattern;
    FourCells begin[(1 << DownsampleCells::kMostFractionBits) / 4];
    const FourCells* const end = fourCells(pattern, begin);
    const std::size_t reach = pattern.starts[pattern.period - 4] + std::size_t{16};
    const std::size_t periods = wholePeriods(cells, 1, reach);
    const __m128 unit =
        _mm_set1_ps(static_cast<float>(line.weight / std::ldexp(1, cells.fractionBits)));
    const __m128i ones = _mm_set1_epi16(1);
    const unsigned char* from = line.bytes;
    for (std::size_t period = 0; period < periods; ++period, from += pattern.pixels)
        for (const FourCells* four = begin; four != end; ++four, sums += 4) {
            const __m128i pixels =
                _mm_shuffle_epi8(load16(from + four->start), load16(four->places));
            const __m128i products = _mm_maddubs_epi16(pixels, load16(four->shares));
            addTo(sums, _mm_madd_epi16(products, ones), unit);
        }
    return periods * pattern.period;
}

VASKEL_AVX2 std::size_t addWideCells(const DownsampleCells& cells, const DownsampleLine& line,
                                     float* sums) {
    const CellPattern& pattern = cells.pattern;
    const std::size_t blocks = (pattern.span + 15) / 16;
    const std::size_t periods = wholePeriods(cells, 1, pattern.starts.back() + 16 * blocks);
    const __m128 unit =
        _mm_set1_ps(static_cast<float>(line.weight / std::ldexp(1, cells.fractionBits)));
    const __m128i ones = _mm_set1_epi16(1);
    const unsigned char* from = line.bytes;
    for (std::size_t period = 0; period < periods; ++period, from += pattern.pixels)
        for (std::size_t k = 0; k < pattern.period; k += 4, sums += 4) {
            __m128i cell[4];
            for (std::size_t c = 0; c < 4; ++c) {
                const unsigned char* const pixels = from + pattern.starts[k + c];
                const unsigned char* const shares = pattern.sharesOf(k + c);
                cell[c] = _mm_setzero_si128();
                for (std::size_t i = 0; i < blocks; ++i)
                    cell[c] = _mm_add_epi32(
                        cell[c], _mm_madd_epi16(_mm_maddubs_epi16(load16(pixels + 16 * i),
                                                                  load16(shares + 16 * i)),
                                                ones));
            }
            addTo(
                sums,
                _mm_hadd_epi32(_mm_hadd_epi32(cell[0], cell[1]), _mm_hadd_epi32(cell[2], cell[3])),
                unit);
        }
    return periods * pattern.period;
}

bool isNarrow(const CellPattern& pattern) {
    if (pattern.span > 4) return false;
    for (std::size_t k = 0; k < pattern.period; k += 4)
        if (pattern.starts[k + 3] - pattern.starts[k] + pattern.span > 16) return false;
    return true;
}

}  // namespace

void accumulateExactAvx2(const DownsampleCells& cells, const DownsampleLine& line, float* sums) {
    const CellPattern& pattern = cells.pattern;
    std::size_t done = 0;
    if (pattern.period == 0) {
        // Too few cells, or too wide ones.
    } else if (line.channels == 4) {
        const std::size_t blocks = (pattern.span + 3) / 4;
        done = blocks == 1   ? addPixelCells<1>(cells, line, 1, sums)
               : blocks == 2 ? addPixelCells<2>(cells, line, 2, sums)
                             : addPixelCells<0>(cells, line, blocks, sums);
    } else {
        done =
            isNarrow(pattern) ? addNarrowCells(cells, line, sums) : addWideCells(cells, line, sums);
    }
    accumulateExact(cells, line, done, sums);
}

}  // namespace Vaskel

#endif
