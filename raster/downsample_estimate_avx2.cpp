// Estimates in vectors: first down, the lines of a group of cells being added
// column by column, then across, the columns of each cell, so that cells' edges
// are met once an output line. Memory is idle meanwhile and fetches what comes
// next.

#if defined(__x86_64__)

#include <immintrin.h>

#include <algorithm>
#include <array>

#include "raster/downsample_estimate.h"

#define VASKEL_AVX2 __attribute__((target("avx2,fma")))
#define VASKEL_AVX2_INLINE __attribute__((target("avx2,fma"), always_inline)) inline

namespace Vaskel {
namespace {

// ---- Down -------------------------------------------------------------------

VASKEL_AVX2_INLINE __m256i load32(const unsigned char* from) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

// Of each half of 32 bytes the four from place on.
VASKEL_AVX2_INLINE __m256 fourOfEach(__m256i bytes, int place) {
    const auto at = [place](int i) { return static_cast<int>(0x80808000u) + place + i; };
    const __m256i places = _mm256_broadcastsi128_si256(_mm_setr_epi32(at(0), at(1), at(2), at(3)));
    return _mm256_cvtepi32_ps(_mm256_shuffle_epi8(bytes, places));
}

VASKEL_AVX2_INLINE void store(float* to, __m256 eight) {
    _mm_storeu_ps(to, _mm256_castps256_ps128(eight));
    _mm_storeu_ps(to + 16, _mm256_extractf128_ps(eight, 1));
}

// The sums of count bytes' columns from first on; up to kMore more are written.
constexpr std::size_t kMore = 31;
VASKEL_AVX2 void addDown(const ColumnLines& lines, std::size_t first, std::size_t count,
                         float* sums) {
    const __m256i zero = _mm256_setzero_si256(), ones = _mm256_set1_epi8(1);
    const __m256 weightA = _mm256_set1_ps(lines.parts[0].weight);
    const __m256 weightB = _mm256_set1_ps(lines.parts[1].weight);
    for (std::size_t i = first; i < first + count; i += 32, sums += 32) {
        if (i % 64 < 32) lines.fetch(i);
        __m256i low = zero, high = zero;
        std::size_t line = 0;
        for (; line + 2 <= lines.wholes; line += 2) {
            const __m256i a = load32(lines.whole[line] + i), b = load32(lines.whole[line + 1] + i);
            low = _mm256_add_epi16(low, _mm256_maddubs_epi16(_mm256_unpacklo_epi8(a, b), ones));
            high = _mm256_add_epi16(high, _mm256_maddubs_epi16(_mm256_unpackhi_epi8(a, b), ones));
        }
        if (line < lines.wholes) {
            const __m256i a = load32(lines.whole[line] + i);
            low = _mm256_add_epi16(low, _mm256_unpacklo_epi8(a, zero));
            high = _mm256_add_epi16(high, _mm256_unpackhi_epi8(a, zero));
        }
        const __m256i a = load32(lines.parts[0].bytes + i), b = load32(lines.parts[1].bytes + i);
        const __m256i wholes[4] = {
            _mm256_unpacklo_epi16(low, zero), _mm256_unpackhi_epi16(low, zero),
            _mm256_unpacklo_epi16(high, zero), _mm256_unpackhi_epi16(high, zero)};
        for (int j = 0; j < 4; ++j) {
            const __m256 whole = _mm256_cvtepi32_ps(wholes[j]);
            const __m256 withA = _mm256_fmadd_ps(fourOfEach(a, 4 * j), weightA, whole);
            store(sums + 4 * j, _mm256_fmadd_ps(fourOfEach(b, 4 * j), weightB, withA));
        }
    }
}

// ---- Across -----------------------------------------------------------------

// Two columns side by side.
template <int kChannels>
struct Pair;

template <>
struct Pair<4> {
    __m256 values;
    VASKEL_AVX2_INLINE static Pair at(const float* from) { return {_mm256_loadu_ps(from)}; }
    // Times the first two shares, or with the product of the last two added.
    VASKEL_AVX2_INLINE Pair first(const CellShares& shares) const {
        return {_mm256_mul_ps(values, of(shares, 0))};
    }
    VASKEL_AVX2_INLINE Pair withLast(Pair last, const CellShares& shares) const {
        return {_mm256_fmadd_ps(last.values, of(shares, 2), values)};
    }
    VASKEL_AVX2_INLINE Pair with(Pair other) const { return {_mm256_add_ps(values, other.values)}; }
    VASKEL_AVX2_INLINE void store(float* to) const {
        _mm_storeu_ps(to,
                      _mm_add_ps(_mm256_castps256_ps128(values), _mm256_extractf128_ps(values, 1)));
    }

 private:
    // Each for four channels.
    VASKEL_AVX2_INLINE static __m256 of(const CellShares& shares, int i) {
        const __m256i places = _mm256_setr_epi32(i, i, i, i, i + 1, i + 1, i + 1, i + 1);
        return _mm256_permutevar_ps(_mm256_broadcast_ps(reinterpret_cast<const __m128*>(shares.of)),
                                    places);
    }
};

template <>
struct Pair<1> {
    float a, b;
    VASKEL_AVX2_INLINE static Pair at(const float* from) { return {from[0], from[1]}; }
    VASKEL_AVX2_INLINE Pair first(const CellShares& shares) const {
        return {a * shares.of[0], b * shares.of[1]};
    }
    VASKEL_AVX2_INLINE Pair withLast(Pair last, const CellShares& shares) const {
        return {a + last.a * shares.of[2], b + last.b * shares.of[3]};
    }
    VASKEL_AVX2_INLINE Pair with(Pair other) const { return {a + other.a, b + other.b}; }
    VASKEL_AVX2_INLINE void store(float* to) const { *to = a + b; }
};

// A cell is taken as pairs of columns, the first and the last with shares.
template <int kChannels>
VASKEL_AVX2 void estimate(const DownsampleCells& cells, const ColumnLines& lines, std::size_t first,
                          std::size_t count, float* sums) {
    using Two = Pair<kChannels>;
    // From the pixel that is shared with the cell before.
    const auto shared = [&](std::size_t k) -> std::size_t {
        return k > 0 ? cells.ends[k - 1].pixel : 0;
    };
    const std::size_t begin = shared(first), ends = cells.ends.size();
    const bool allEnd = first + count <= ends;
    const std::size_t end =
        allEnd ? cells.ends[first + count - 1].pixel + std::size_t{1} : cells.width;
    const std::size_t columns = kChannels * (end - begin);
    // Columns that count for nothing are read on both sides.
    constexpr std::size_t kAround = 2 * kChannels;
    alignas(32) float room[kAround + EstimateForm::kColumns + kMore + kAround];
    float* const down = room + kAround;
    std::fill_n(room, kAround, 0.0f);
    std::fill_n(down + columns, kAround, 0.0f);
    addDown(lines, kChannels * begin, columns, down);

    const std::size_t middles = cells.leastWhole / 2;
    const float* const origin = down - (cells.leastWhole % 2 == 0 ? kChannels : 0);
    const auto add = [&](std::size_t k, const float* from)
        __attribute__((target("avx2,fma"), always_inline)) {
        const CellShares& shares = lines.shares[k];
        Two sum = Two::at(from).first(shares);
        for (std::size_t i = 0; i < middles; ++i) sum = sum.with(Two::at(from += 2 * kChannels));
        sum.withLast(Two::at(from + 2 * kChannels), shares).store(sums);
        sums += kChannels;
    };
    std::size_t k = first;
    if (k == 0 && ends > 0) add(k++, origin - kChannels);  // shares nothing
    for (; k < std::min(first + count, ends); ++k) add(k, origin + kChannels * (shared(k) - begin));
    if (allEnd) return;
    // The last one, which nothing ends.
    const float* own = down + kChannels * (shared(k) - begin + (k > 0 ? 1 : 0));
    const float rest = k > 0 ? static_cast<float>(cells.ends[k - 1].rest) : 0;
    for (std::size_t c = 0; c < kChannels; ++c, ++own) {
        sums[c] = rest * own[-kChannels];
        for (const float* from = own; from < down + columns; from += kChannels) sums[c] += *from;
    }
}

}  // namespace

const EstimateForm kEstimateAvx2 = {
    [](const DownsampleCells& cells, const ColumnLines& lines, int channels, std::size_t first,
       std::size_t count, float* sums) {
        channels == 4 ? estimate<4>(cells, lines, first, count, sums)
                      : estimate<1>(cells, lines, first, count, sums);
    },
    certainMeansAvx2};

}  // namespace Vaskel

#endif
