// Estimates in vectors. The whole lines of a group of cells are added down, column
// by column, and the columns of each cell across, so that cells' edges are met
// once an output line. A line that belongs to two output lines is added across by
// itself, once, and goes into both with its weights.
//
// Memory is idle meanwhile and fetches what comes next, half of it while lines are
// added down and half across: a CPU waits for few cache lines at a time, those
// from its second cache among them.

#if defined(__x86_64__)

#include <immintrin.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include "raster/downsample_estimate.h"

#define VASKEL_AVX2 __attribute__((target("avx2,fma")))
#define VASKEL_AVX2_INLINE __attribute__((target("avx2,fma"), always_inline)) inline

namespace Vaskel {

namespace {

VASKEL_AVX2_INLINE __m128i load16(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

VASKEL_AVX2_INLINE __m256i load32(const void* from) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}

VASKEL_AVX2_INLINE __m256i sameInHalves(__m128i half) { return _mm256_broadcastsi128_si256(half); }

// ---- Down -------------------------------------------------------------------

// The sums of the whole lines' bytes from first on, count of them and up to kMore
// more.
constexpr std::size_t kMore = 63;
VASKEL_AVX2 void addDown(const ColumnLines& lines, std::ptrdiff_t first, std::size_t count,
                         std::uint16_t* sums) {
    const __m256i zero = _mm256_setzero_si256(), ones = _mm256_set1_epi8(1);
    const auto end = first + static_cast<std::ptrdiff_t>(count);
    for (std::ptrdiff_t i = first; i < end; i += 64, sums += 64) {
        lines.fetch(i, 0, lines.half());
        __m256i all[4] = {zero, zero, zero, zero};
        std::size_t line = 0;
        for (; line + 2 <= lines.wholes; line += 2)
            for (int j = 0; j < 2; ++j) {
                const __m256i a = load32(lines.whole[line] + i + 32 * j);
                const __m256i b = load32(lines.whole[line + 1] + i + 32 * j);
                all[2 * j] = _mm256_add_epi16(
                    all[2 * j], _mm256_maddubs_epi16(_mm256_unpacklo_epi8(a, b), ones));
                all[2 * j + 1] = _mm256_add_epi16(
                    all[2 * j + 1], _mm256_maddubs_epi16(_mm256_unpackhi_epi8(a, b), ones));
            }
        if (line < lines.wholes)
            for (int j = 0; j < 2; ++j) {
                const __m256i a = load32(lines.whole[line] + i + 32 * j);
                all[2 * j] = _mm256_add_epi16(all[2 * j], _mm256_unpacklo_epi8(a, zero));
                all[2 * j + 1] = _mm256_add_epi16(all[2 * j + 1], _mm256_unpackhi_epi8(a, zero));
            }
        for (int j = 0; j < 4; ++j) {
            auto* const to = reinterpret_cast<__m128i*>(sums + 32 * (j / 2) + 8 * (j % 2));
            _mm_storeu_si128(to, _mm256_castsi256_si128(all[j]));
            _mm_storeu_si128(to + 2, _mm256_extracti128_si256(all[j], 1));
        }
    }
}

// ---- Across -----------------------------------------------------------------

// Two pixels side by side for each of the cells in a vector: per channel, two
// numbers of 16 bits, times shares. Columns are bytes or their sums; those from
// pixel begin on are given.
template <int kChannels, class Column>
struct Pairs;

template <class Column>
struct Pairs<4, Column> {
    static constexpr std::size_t kCells = 2;
    const Column* a;
    const Column* b;

    VASKEL_AVX2_INLINE Pairs(const Column* columns, const std::uint32_t* starts, std::size_t begin)
        : a(columns + 4 * (starts[0] - begin)), b(columns + 4 * (starts[1] - begin)) {}
    VASKEL_AVX2_INLINE __m256i at(std::size_t pair) const {
        const __m256i pixels = _mm256_inserti128_si256(_mm256_castsi128_si256(load16(a + 8 * pair)),
                                                       load16(b + 8 * pair), 1);
        const __m128i byChannel =
            sizeof(Column) == 1
                ? _mm_setr_epi8(0, -1, 4, -1, 1, -1, 5, -1, 2, -1, 6, -1, 3, -1, 7, -1)
                : _mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15);
        return _mm256_shuffle_epi8(pixels, sameInHalves(byChannel));
    }
    VASKEL_AVX2_INLINE static __m256i shares(const std::uint32_t* of) {
        std::int64_t two;
        std::memcpy(&two, of, 8);
        const __m256i places = _mm256_setr_epi8(0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3,  //
                                                4, 5, 6, 7, 4, 5, 6, 7, 4, 5, 6, 7, 4, 5, 6, 7);
        return _mm256_shuffle_epi8(_mm256_set1_epi64x(two), places);
    }
};

template <class Column>
struct Pairs<1, Column> {
    static constexpr std::size_t kCells = 8;
    const Column* columns;
    __m256i starts;

    VASKEL_AVX2_INLINE Pairs(const Column* from, const std::uint32_t* first, std::size_t begin)
        : columns(from),
          starts(_mm256_sub_epi32(load32(first), _mm256_set1_epi32(static_cast<int>(begin)))) {}
    VASKEL_AVX2_INLINE __m256i at(std::size_t pair) const {
        const __m256i pixels = _mm256_i32gather_epi32(
            reinterpret_cast<const int*>(columns + 2 * pair), starts, sizeof(Column));
        if (sizeof(Column) == 2) return pixels;
        const __m128i wide =
            _mm_setr_epi8(0, -1, 1, -1, 4, -1, 5, -1, 8, -1, 9, -1, 12, -1, 13, -1);
        return _mm256_shuffle_epi8(pixels, sameInHalves(wide));
    }
    VASKEL_AVX2_INLINE static __m256i shares(const std::uint32_t* of) { return load32(of); }
};

// The sums of the cells in a vector. They stay below 2^31: a line of kMostBytes
// in all its lines, of 255 each, comes to less than 2^28 shares, since steps times
// the cells' width is at most the line's.
template <class Two>
VASKEL_AVX2_INLINE __m256 cellsOf(Two pairs, std::size_t between, __m256i first, __m256i whole,
                                  __m256i last) {
    __m256i sum = _mm256_madd_epi16(pairs.at(0), first);
    for (std::size_t i = 1; i <= between; ++i)
        sum = _mm256_add_epi32(sum, _mm256_madd_epi16(pairs.at(i), whole));
    return _mm256_cvtepi32_ps(
        _mm256_add_epi32(sum, _mm256_madd_epi16(pairs.at(between + 1), last)));
}

// kBetween: CellShares::pairsBetween() and one more, or 0 for any.
template <int kChannels, std::size_t kBetween>
VASKEL_AVX2 void cellSums(const ColumnLines& lines, std::size_t first, std::size_t count,
                          float* sums) {
    const CellShares& shares = lines.shares;
    const std::size_t between = kBetween ? kBetween - 1 : shares.pairsBetween();
    const std::size_t begin = shares.starts()[first];
    const std::size_t pixels = shares.starts()[first + count - 1] - begin + 2 * (between + 2);
    const std::ptrdiff_t place = kChannels * (static_cast<std::ptrdiff_t>(begin) -
                                              static_cast<std::ptrdiff_t>(CellShares::kFront));
    alignas(32) std::uint16_t columns[EstimateForm::kColumns + 4 * kChannels + kMore];
    addDown(lines, place, kChannels * pixels, columns);

    const __m256 firstWeight = _mm256_set1_ps(lines.firstWeight);
    const __m256 lastWeight = _mm256_set1_ps(lines.lastWeight);
    const __m256i whole = _mm256_set1_epi16(static_cast<short>(shares.steps));
    const unsigned char* const last = lines.last + place;
    const std::uint32_t* const starts = shares.starts();
    const std::uint32_t* const firstShares = shares.first();
    const std::uint32_t* const lastShares = shares.last();
    float* const ofLast = lines.sums;
    using Sums = Pairs<kChannels, std::uint16_t>;
    using Bytes = Pairs<kChannels, unsigned char>;
    std::ptrdiff_t fetched = place;
    for (std::size_t k = first, end = first + count; k < end;) {
        for (const auto at = place + kChannels * static_cast<std::ptrdiff_t>(starts[k] - begin);
             fetched < at; fetched += 64)
            lines.fetch(fetched, lines.half(), lines.count - 1);
        for (const std::size_t some = std::min(end, k + 8); k < some;
             k += Sums::kCells, sums += 8) {
            const __m256i a = Sums::shares(firstShares + k), b = Sums::shares(lastShares + k);
            const __m256 down = cellsOf(Sums(columns, starts + k, begin), between, a, whole, b);
            const __m256 line = cellsOf(Bytes(last, starts + k, begin), between, a, whole, b);
            float* const at = ofLast + kChannels * k;
            const __m256 withFirst = _mm256_fmadd_ps(_mm256_loadu_ps(at), firstWeight, down);
            _mm256_storeu_ps(at, line);
            _mm256_storeu_ps(sums, _mm256_fmadd_ps(line, lastWeight, withFirst));
        }
    }
}

// ---- Means ------------------------------------------------------------------

VASKEL_AVX2_INLINE __m256i bytesOf(const __m256i* means) {
    return _mm256_packus_epi16(_mm256_packs_epi32(means[0], means[1]),
                               _mm256_packs_epi32(means[2], means[3]));
}

VASKEL_AVX2 void means(const MeanBounds& bounds, const float* sums, std::size_t count,
                       unsigned char* out, std::size_t place, std::vector<std::uint32_t>& open) {
    const auto lower = _mm256_set1_ps(static_cast<float>((1 - bounds.relative) / bounds.area));
    const auto upper = _mm256_set1_ps(static_cast<float>((1 + bounds.relative) / bounds.area));
    const auto lowerHalf = _mm256_set1_ps(static_cast<float>(0.5 - bounds.slack));
    const auto upperHalf = _mm256_set1_ps(static_cast<float>(0.5 + bounds.slack));
    const __m256i inOrder = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    for (std::size_t k = 0; k < count; k += 32) {
        __m256i low[4], high[4];
        for (std::size_t i = 0; i < 4; ++i) {
            const __m256 eight = _mm256_loadu_ps(sums + k + 8 * i);
            low[i] = _mm256_cvttps_epi32(_mm256_fmadd_ps(eight, lower, lowerHalf));
            high[i] = _mm256_cvttps_epi32(_mm256_fmadd_ps(eight, upper, upperHalf));
        }
        const __m256i bytes = bytesOf(low), equal = _mm256_cmpeq_epi8(bytes, bytesOf(high));
        const __m256i ordered = _mm256_permutevar8x32_epi32(bytes, inOrder);
        if (count - k >= 32)
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + k), ordered);
        else
            std::memcpy(out + k, &ordered, count - k);
        if (_mm256_movemask_epi8(equal) == -1) continue;
        auto differ = ~static_cast<std::uint32_t>(
            _mm256_movemask_epi8(_mm256_permutevar8x32_epi32(equal, inOrder)));
        for (; differ != 0 && open.size() < open.capacity(); differ &= differ - 1) {
            const std::size_t i = k + static_cast<std::size_t>(std::countr_zero(differ));
            if (i < count) open.push_back(static_cast<std::uint32_t>(place + i));
        }
    }
}

}  // namespace

const EstimateForm kEstimateAvx2 = {
    [](const ColumnLines& lines, int channels, std::size_t first, std::size_t count, float* sums) {
        const std::size_t between = lines.shares.pairsBetween();
        const auto run = channels == 1  ? cellSums<1, 0>
                         : between == 0 ? cellSums<4, 1>
                         : between == 1 ? cellSums<4, 2>
                                        : cellSums<4, 0>;
        run(lines, first, count, sums);
    },
    means};

}  // namespace Vaskel

#endif
