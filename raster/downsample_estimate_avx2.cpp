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

// Whole lines add up in 16 bits, which hold 257 of them.
static_assert(KeptLines::kMostLines <= 257);

struct Lines {
    std::array<const unsigned char*, KeptLines::kMostLines> whole;
    std::size_t wholes = 0;
    struct Part {
        const unsigned char* bytes;
        float weight;
    } parts[KeptLines::kMostParts];
    std::size_t count;
    LinesAhead ahead;

    Lines(const KeptLines& kept, const LinesAhead& next) : count(kept.lines().size()), ahead(next) {
        Part* part = parts;
        for (Part& none : parts) none = {kept.lines().front().bytes, 0};
        for (const KeptLines::Line& line : kept.lines()) {
            if (line.weight == 1)
                whole[wholes++] = line.bytes;
            else
                *part++ = {line.bytes, static_cast<float>(line.weight)};
        }
    }

    // Has the caller's next lines fetched meanwhile, from the byte at place on.
    VASKEL_AVX2_INLINE void fetch(std::size_t place) const {
        constexpr std::size_t kCacheLine = 64;
        if (ahead.step() == 0 || place % kCacheLine >= 32) return;
        for (std::size_t i = 0; i < count; ++i)
            _mm_prefetch(reinterpret_cast<const char*>(ahead.next() + i * ahead.step() + place),
                         _MM_HINT_T1);
    }
};

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

// The sums of count bytes' columns from first on; up to 31 more are written.
VASKEL_AVX2 void addDown(const Lines& lines, std::size_t first, std::size_t count, float* sums) {
    const __m256i zero = _mm256_setzero_si256(), ones = _mm256_set1_epi8(1);
    const __m256 weightA = _mm256_set1_ps(lines.parts[0].weight);
    const __m256 weightB = _mm256_set1_ps(lines.parts[1].weight);
    for (std::size_t i = first; i < first + count; i += 32, sums += 32) {
        lines.fetch(i);
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

// The channels of a column.
template <int kChannels>
struct Column;

template <>
struct Column<4> {
    __m128 value;
    VASKEL_AVX2_INLINE static Column at(const float* from) { return {_mm_loadu_ps(from)}; }
    VASKEL_AVX2_INLINE Column part(float share) const {
        return {_mm_mul_ps(value, _mm_set1_ps(share))};
    }
    VASKEL_AVX2_INLINE void add(Column other) { value = _mm_add_ps(value, other.value); }
    VASKEL_AVX2_INLINE void store(float* to) const { _mm_storeu_ps(to, value); }
};

template <>
struct Column<1> {
    float value;
    VASKEL_AVX2_INLINE static Column at(const float* from) { return {*from}; }
    VASKEL_AVX2_INLINE Column part(float share) const { return {value * share}; }
    VASKEL_AVX2_INLINE void add(Column other) { value += other.value; }
    VASKEL_AVX2_INLINE void store(float* to) const { *to = value; }
};

constexpr std::size_t kGroupPixels = 256;
static_assert(kGroupPixels > KeptLines::kMostPixels);

template <int kChannels>
VASKEL_AVX2 void estimate(const DownsampleCells& cells, const Lines& lines, std::size_t count,
                          float* sums) {
    using At = Column<kChannels>;
    // Each cell takes its own pixels and the one that ends it.
    const std::size_t least = cells.leastWhole;
    const std::size_t group = (kGroupPixels - 1) / (least + 2);
    alignas(32) float down[kChannels * kGroupPixels + 31];
    std::size_t begin = 0;  // pixel
    At shared{};            // what the pixel before leaves
    for (std::size_t k = 0; k < count;) {
        const std::size_t last = std::min(k + group, count);
        const std::size_t end =
            last <= cells.ends.size() ? cells.ends[last - 1].pixel + std::size_t{1} : cells.width;
        addDown(lines, kChannels * begin, kChannels * (end - begin), down);
        float parts[2][kGroupPixels];  // of the pixel that ends a cell: its own, and the rest
        const std::size_t ended = std::min(last, cells.ends.size()) - k;
        for (std::size_t i = 0; i < ended; ++i) {
            const double rest = cells.ends[k + i].rest;
            parts[0][i] = static_cast<float>(1 - rest);
            parts[1][i] = static_cast<float>(rest);
        }
        const float* from = down;
        std::size_t pixel = begin;
        for (std::size_t i = 0; i < ended; ++i, ++k, sums += kChannels) {
            At sum = shared;
            const std::size_t own = cells.ends[k].pixel - pixel;
            for (std::size_t j = 0; j < least; ++j) sum.add(At::at(from + kChannels * j));
            if (own > least) sum.add(At::at(from + kChannels * least));
            const At edge = At::at(from + kChannels * own);
            sum.add(edge.part(parts[0][i]));
            sum.store(sums);
            shared = edge.part(parts[1][i]);
            from += kChannels * (own + 1);
            pixel += own + 1;
        }
        if (k < last) {  // the last one, which nothing ends
            At sum = shared;
            for (; pixel < end; ++pixel, from += kChannels) sum.add(At::at(from));
            sum.store(sums);
            ++k;
        }
        begin = end;
    }
}

VASKEL_AVX2 void sums(const DownsampleCells& cells, const KeptLines& kept, const LinesAhead& ahead,
                      std::size_t count, float* to) {
    const Lines lines(kept, ahead);
    kept.channels() == 4 ? estimate<4>(cells, lines, count, to)
                         : estimate<1>(cells, lines, count, to);
}

}  // namespace

const EstimateForm kEstimateAvx2 = {sums, certainMeansAvx2};

}  // namespace Vaskel

#endif
