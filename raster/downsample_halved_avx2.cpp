// Halved lines in vectors of eight cells. The cells behind are the plain form's.
//
// With means m = (a + b + 1) / 2 and n = (c + d + 1) / 2 of two lines, rounded
// down, and the bits p = (a + b) % 2 and q = (c + d) % 2, the mean of all four is
// (2 (m + n) - p - q + 2) / 4: with p = q = 0 that is (m + n + 1) / 2, rounded down,
// and else (m + n) / 2, which is one less where m + n is odd.

#if defined(__x86_64__)

#include <immintrin.h>

#include <cstring>

#include "raster/downsample_fetch.h"
#include "raster/downsample_halved.h"

// A CPU that knows no prefetchw skips it.
#define VASKEL_AVX2 __attribute__((target("avx2,prfchw")))
#define VASKEL_AVX2_LAMBDA __attribute__((target("avx2,prfchw"), always_inline))
#define VASKEL_AVX2_INLINE VASKEL_AVX2_LAMBDA inline

namespace Vaskel {
namespace {

VASKEL_AVX2_INLINE __m256i load32(const unsigned char* from) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

VASKEL_AVX2_INLINE void store32(unsigned char* to, __m256i bytes) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), bytes);
}

// Eight cells' means of two pixels, rounded up, and their differing bits.
struct Halves {
    __m256i means, differ;

    VASKEL_AVX2_INLINE explicit Halves(const unsigned char* pixels) {
        const __m256 a = _mm256_castsi256_ps(load32(pixels));
        const __m256 b = _mm256_castsi256_ps(load32(pixels + 32));
        const __m256i left = inOrder(_mm256_shuffle_ps(a, b, 0x88));
        const __m256i right = inOrder(_mm256_shuffle_ps(a, b, 0xDD));
        means = _mm256_avg_epu8(left, right);
        differ = _mm256_xor_si256(left, right);
    }

 private:
    VASKEL_AVX2_INLINE static __m256i inOrder(__m256 pixels) {
        return _mm256_permute4x64_epi64(_mm256_castps_si256(pixels), 0xD8);
    }
};

// Of the 32 bits at from, lowest first, each in the lowest bit of a byte.
VASKEL_AVX2_INLINE __m256i bitsAsBytes(const unsigned char* from) {
    std::int32_t bits;
    std::memcpy(&bits, from, 4);
    const __m256i places =
        _mm256_setr_epi64x(0, 0x0101010101010101, 0x0202020202020202, 0x0303030303030303);
    const __m256i bit = _mm256_set1_epi64x(static_cast<long long>(0x8040201008040201u));
    const __m256i bytes = _mm256_shuffle_epi8(_mm256_set1_epi32(bits), places);
    return _mm256_cmpeq_epi8(_mm256_and_si256(bytes, bit), bit);
}

constexpr std::size_t kCells = 8;  // in a vector

// Takes a line's vectors in four parts side by side.
template <class Take>
VASKEL_AVX2_INLINE std::size_t inParts(std::size_t cells, Take take) {
    constexpr std::size_t kParts = 4;
    const std::size_t vectors = cells / kCells, part = vectors / kParts;
    for (std::size_t i = 0; i < part; ++i)
        for (std::size_t j = 0; j < kParts; ++j) take(kCells * (i + j * part));
    for (std::size_t i = kParts * part; i < vectors; ++i) take(kCells * i);
    return kCells * vectors;
}

VASKEL_AVX2 void halve(std::size_t cells, const PackedLine& line, unsigned char* halved) {
    unsigned char* const odds = halved + HalvedLine::oddsAt(cells);
    const std::uintptr_t ahead = bytesAhead(line);
    const std::size_t done = inParts(cells, [&](std::size_t cell) VASKEL_AVX2_LAMBDA {
        const unsigned char* const from = line.bytes + 8 * cell;
        fetch(from, ahead, 1);
        const Halves halves(from);
        store32(halved + 4 * cell, halves.means);
        const int odd = _mm256_movemask_epi8(_mm256_slli_epi16(halves.differ, 7));
        std::memcpy(odds + cell / 2, &odd, 4);
    });
    halveFrom(done, cells, line, halved);
}

VASKEL_AVX2 void quarter(std::size_t cells, const PackedLine& line, const unsigned char* halved,
                         unsigned char* out) {
    const unsigned char* const odds = halved + HalvedLine::oddsAt(cells);
    const std::uintptr_t ahead = bytesAhead(line);
    const __m256i ones = _mm256_set1_epi8(1);
    const std::size_t done = inParts(cells, [&](std::size_t cell) VASKEL_AVX2_LAMBDA {
        const unsigned char* const from = line.bytes + 8 * cell;
        fetch(from, ahead, 1);
        if (line.taker != 0) __builtin_prefetch(reinterpret_cast<void*>(line.taker + 4 * cell), 1);
        const Halves halves(from);
        const __m256i means = load32(halved + 4 * cell);
        const __m256i odd = _mm256_or_si256(halves.differ, bitsAsBytes(odds + cell / 2));
        const __m256i less =
            _mm256_and_si256(_mm256_and_si256(_mm256_xor_si256(means, halves.means), odd), ones);
        store32(out + 4 * cell, _mm256_sub_epi8(_mm256_avg_epu8(means, halves.means), less));
    });
    quarterFrom(done, cells, line, halved, out);
}

}  // namespace

const HalvedForm kHalvedAvx2 = {halve, quarter};

}  // namespace Vaskel

#endif
