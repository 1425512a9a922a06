// Packed sums in vectors: four cells of four channels, or eight of one. The cells behind
// the last whole period, and those from which a vector would reach behind the
// line, are the plain form's.
//
// A line is taken in four parts side by side: most of the time goes into waiting
// for memory, and a CPU fetches several pages ahead, each by itself. It is told
// what comes next besides, since it does not look beyond the page's end: the
// next line if it is known where that lies, and the place where the caller will
// want the means. Telling it never faults, wherever that may be.

#if defined(__x86_64__)

#include <immintrin.h>

#include <algorithm>

#include "raster/downsample_fetch.h"
#include "raster/downsample_halved.h"

// A CPU that knows no prefetchw skips it.
#define VASKEL_AVX2 __attribute__((target("avx2,prfchw")))
#define VASKEL_AVX2_LAMBDA __attribute__((target("avx2,prfchw"), always_inline))
#define VASKEL_AVX2_INLINE VASKEL_AVX2_LAMBDA inline

namespace Vaskel {
namespace {

VASKEL_AVX2_INLINE __m256i load32(const void* from) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}

VASKEL_AVX2_INLINE __m128i load16(const unsigned char* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

// A pixel's channels of four pixels side by side, in each half.
VASKEL_AVX2_INLINE __m256i byChannel(__m256i pixels) {
    return _mm256_shuffle_epi8(pixels, _mm256_broadcastsi128_si256(_mm_setr_epi8(
                                           0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15)));
}

// Of 16 sums the means, as PackedRule::mean.
struct Means {
    __m256i half, multiplier;
    __m128i shift;

    VASKEL_AVX2_INLINE explicit Means(const PackedRule& rule)
        : half(_mm256_set1_epi16(static_cast<short>(rule.half))),
          multiplier(_mm256_set1_epi16(static_cast<short>(rule.multiplier))),
          shift(_mm_cvtsi32_si128(rule.shift)) {}
    VASKEL_AVX2_INLINE __m128i of(__m256i sums) const {
        const __m256i means =
            _mm256_srl_epi16(_mm256_mulhi_epu16(_mm256_add_epi16(sums, half), multiplier), shift);
        return _mm_packus_epi16(_mm256_castsi256_si128(means), _mm256_extracti128_si256(means, 1));
    }
};

// The sums of four cells in one line, for the cells from k on in a period whose
// first pixel is at from. Each says how many bytes behind the first pixel of the
// period's last cell it reads, and how many cells a period has, if always as many.

// Cells of four pixels.
struct Fours {
    static constexpr std::size_t kPeriod = 4;
    static std::size_t reach(const CellPattern&) { return 16; }
    Fours(const PackedRule&, const CellPattern&) {}
    VASKEL_AVX2_INLINE __m256i sums(const unsigned char* from, std::size_t) const {
        const __m256i ones = _mm256_set1_epi8(1), wideOnes = _mm256_set1_epi16(1);
        const __m256i a =
            _mm256_madd_epi16(_mm256_maddubs_epi16(byChannel(load32(from)), ones), wideOnes);
        const __m256i b =
            _mm256_madd_epi16(_mm256_maddubs_epi16(byChannel(load32(from + 32)), ones), wideOnes);
        return _mm256_permute4x64_epi64(_mm256_packus_epi32(a, b), 0xD8);
    }
};

// Any cells: kBlocks times four pixels each; 0 for as many as the shares say.
template <std::size_t kBlocks, std::size_t kCells = 0>
struct Blocks {
    static constexpr std::size_t kPeriod = kCells;
    static std::size_t blocks(const CellPattern& pattern) {
        return kBlocks ? kBlocks : (pattern.span + 3) / 4;
    }
    static std::size_t reach(const CellPattern& pattern) { return 16 * blocks(pattern); }
    Blocks(const PackedRule& rule, const CellPattern& pattern)
        : allShares(rule.shares.data()), allStarts(pattern.starts.data()), count(blocks(pattern)) {}
    VASKEL_AVX2_INLINE static __m256i twoCells(const unsigned char* a, const unsigned char* b,
                                               std::size_t count, const unsigned char* shares) {
        __m256i cells = _mm256_setzero_si256();
        for (std::size_t i = 0; i < count; ++i) {
            const __m256i pixels = _mm256_inserti128_si256(
                _mm256_castsi128_si256(load16(a + 16 * i)), load16(b + 16 * i), 1);
            const __m256i products =
                _mm256_maddubs_epi16(byChannel(pixels), load32(shares + 32 * i));
            const __m256i wide = _mm256_madd_epi16(products, _mm256_set1_epi16(1));
            cells = i == 0 ? wide : _mm256_add_epi32(cells, wide);
        }
        return cells;
    }
    VASKEL_AVX2_INLINE __m256i sums(const unsigned char* from, std::size_t k) const {
        const std::uint32_t* const starts = allStarts + k;
        const unsigned char* const shares = allShares + 16 * count * k;
        const auto at = [&](std::size_t cell) { return from + std::size_t{4} * starts[cell]; };
        return _mm256_packus_epi32(twoCells(at(0), at(2), count, shares),
                                   twoCells(at(1), at(3), count, shares + 32 * count));
    }

 private:
    const unsigned char* const allShares;
    const std::uint32_t* const allStarts;
    const std::size_t count;
};

template <PackedStep kStep, class Shape>
VASKEL_AVX2 std::size_t wholeCells(const DownsampleCells& cells, const PackedRule& rule,
                                   const PackedLine& line, std::uint16_t* sums,
                                   unsigned char* out) {
    const CellPattern& pattern = cells.pattern;
    const std::size_t period = Shape::kPeriod ? Shape::kPeriod : pattern.period;
    const std::size_t periods =
        wholePeriods(cells, 4, std::size_t{4} * pattern.starts.back() + Shape::reach(pattern));
    const __m256i weight = _mm256_set1_epi16(static_cast<short>(line.weight));
    const __m256i rest = _mm256_set1_epi16(static_cast<short>(line.rest));
    const Means means(rule);
    const Shape shape(rule, pattern);
    const auto takeFour = [&](const unsigned char* from, std::size_t k,
                              std::size_t place) VASKEL_AVX2_LAMBDA {
        auto* const at = reinterpret_cast<__m256i*>(sums + place);
        const __m256i four = shape.sums(from, k);
        __m256i sum = _mm256_mullo_epi16(four, weight);
        if constexpr (kStep != PackedStep::kBegin)
            sum = _mm256_add_epi16(sum, _mm256_loadu_si256(at));
        if constexpr (kStep != PackedStep::kFinish) return _mm256_storeu_si256(at, sum);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + place), means.of(sum));
        if (line.rest != 0) _mm256_storeu_si256(at, _mm256_mullo_epi16(four, rest));
    };
    const std::size_t bytes = 4 * pattern.pixels;
    const std::uintptr_t ahead = bytesAhead(line);
    const auto takePeriod = [&](std::size_t i) VASKEL_AVX2_LAMBDA {
        const unsigned char* const from = line.bytes + i * bytes;
        fetch(from, ahead, Shape::kPeriod ? 1 : bytes);
        const std::size_t place = 4 * period * i;
        if constexpr (kStep == PackedStep::kFinish)
            if (line.taker != 0) __builtin_prefetch(reinterpret_cast<void*>(line.taker + place), 1);
        for (std::size_t k = 0; k < period; k += 4) takeFour(from, k, place + 4 * k);
    };
    constexpr std::size_t kParts = 4;
    const std::size_t part = periods / kParts;
    for (std::size_t i = 0; i < part; ++i)
        for (std::size_t j = 0; j < kParts; ++j) takePeriod(i + j * part);
    for (std::size_t i = kParts * part; i < periods; ++i) takePeriod(i);
    return periods * period;
}

// ---- One channel: eight cells in a vector -----------------------------------

template <PackedStep kStep>
VASKEL_AVX2 std::size_t wholeBytes(const DownsampleCells& cells, const PackedRule& rule,
                                   const PackedLine& line, std::uint16_t* sums,
                                   unsigned char* out) {
    const std::size_t reach = rule.bytes.back().starts[1] + std::size_t{16};
    if (cells.width < reach) return 0;
    const std::size_t pixels = rule.bytesPixels, period = rule.bytesPeriod;
    const std::size_t periods =
        std::min((cells.width - reach) / pixels + 1, cells.ends.size() / period);
    const __m128i weight = _mm_set1_epi16(static_cast<short>(line.weight));
    const __m128i rest = _mm_set1_epi16(static_cast<short>(line.rest));
    const Means means(rule);
    const std::uintptr_t ahead = bytesAhead(line);
    const ByteCells* const begin = rule.bytes.data();
    const ByteCells* const end = begin + rule.bytes.size();
    const unsigned char* from = line.bytes;
    std::size_t place = 0;
    for (std::size_t i = 0; i < periods; ++i, from += pixels)
        for (const ByteCells* eight = begin; eight != end; ++eight, place += 8) {
            fetch(from + eight->starts[0], ahead, 1);
            const __m256i bytes =
                _mm256_inserti128_si256(_mm256_castsi128_si256(load16(from + eight->starts[0])),
                                        load16(from + eight->starts[1]), 1);
            const __m256i products = _mm256_maddubs_epi16(
                _mm256_shuffle_epi8(bytes, load32(eight->places)), load32(eight->shares));
            const __m256i wide = _mm256_madd_epi16(products, _mm256_set1_epi16(1));
            const __m128i eightSums = _mm256_castsi256_si128(
                _mm256_permute4x64_epi64(_mm256_packus_epi32(wide, wide), 0x08));
            __m128i sum = _mm_mullo_epi16(eightSums, weight);
            auto* const at = reinterpret_cast<__m128i*>(sums + place);
            if constexpr (kStep != PackedStep::kBegin)
                sum = _mm_add_epi16(sum, _mm_loadu_si128(at));
            if constexpr (kStep == PackedStep::kFinish) {
                _mm_storel_epi64(reinterpret_cast<__m128i*>(out + place),
                                 means.of(_mm256_castsi128_si256(sum)));
                if (line.rest == 0) continue;
                sum = _mm_mullo_epi16(eightSums, rest);
            }
            _mm_storeu_si128(at, sum);
        }
    return periods * period;
}

// Sixteen cells of four pixels, which lie side by side in 64 bytes.
template <PackedStep kStep>
VASKEL_AVX2 std::size_t fourByteCells(const DownsampleCells& cells, const PackedRule& rule,
                                      const PackedLine& line, std::uint16_t* sums,
                                      unsigned char* out) {
    const __m256i weight = _mm256_set1_epi16(static_cast<short>(line.weight));
    const __m256i rest = _mm256_set1_epi16(static_cast<short>(line.rest));
    const __m256i ones = _mm256_set1_epi8(1), wideOnes = _mm256_set1_epi16(1);
    const Means means(rule);
    const std::uintptr_t ahead = bytesAhead(line);
    const std::size_t blocks = cells.ends.size() / 16;
    for (std::size_t i = 0; i < blocks; ++i) {
        const unsigned char* const from = line.bytes + 64 * i;
        fetch(from, ahead, 1);
        const __m256i a = _mm256_madd_epi16(_mm256_maddubs_epi16(load32(from), ones), wideOnes);
        const __m256i b =
            _mm256_madd_epi16(_mm256_maddubs_epi16(load32(from + 32), ones), wideOnes);
        const __m256i cellSums = _mm256_permute4x64_epi64(_mm256_packus_epi32(a, b), 0xD8);
        auto* const at = reinterpret_cast<__m256i*>(sums + 16 * i);
        __m256i sum = _mm256_mullo_epi16(cellSums, weight);
        if constexpr (kStep != PackedStep::kBegin)
            sum = _mm256_add_epi16(sum, _mm256_loadu_si256(at));
        if constexpr (kStep == PackedStep::kFinish) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 16 * i), means.of(sum));
            if (line.rest == 0) continue;
            sum = _mm256_mullo_epi16(cellSums, rest);
        }
        _mm256_storeu_si256(at, sum);
    }
    return 16 * blocks;
}

template <PackedStep kStep>
void take(const DownsampleCells& cells, const PackedRule& rule, const PackedLine& line,
          std::uint16_t* sums, unsigned char* out) {
    const std::size_t blocks = (cells.pattern.span + 3) / 4;
    const auto run = line.channels == 1 && cells.factor == 4    ? fourByteCells<kStep>
                     : line.channels == 1                       ? wholeBytes<kStep>
                     : cells.factor == 4                        ? wholeCells<kStep, Fours>
                     : blocks == 1 && cells.pattern.period == 4 ? wholeCells<kStep, Blocks<1, 4>>
                     : blocks == 1                              ? wholeCells<kStep, Blocks<1>>
                     : blocks == 2                              ? wholeCells<kStep, Blocks<2>>
                                                                : wholeCells<kStep, Blocks<0>>;
    packedCells(kStep, run(cells, rule, line, sums, out), cells, rule, line, sums, out);
}

}  // namespace

const PackedForm kPackedAvx2 = {
    [](const DownsampleCells& cells, const PackedRule& rule, const PackedLine& line,
       std::uint16_t* sums) { take<PackedStep::kBegin>(cells, rule, line, sums, nullptr); },
    [](const DownsampleCells& cells, const PackedRule& rule, const PackedLine& line,
       std::uint16_t* sums) { take<PackedStep::kAdd>(cells, rule, line, sums, nullptr); },
    take<PackedStep::kFinish>, &kHalvedAvx2};

}  // namespace Vaskel

#endif
