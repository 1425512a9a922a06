// Picks in vectors. No read goes beyond the line: a gathered pixel lies in it,
// as does a whole block. Writes go at most kPickRoom bytes too far.

#if defined(__x86_64__)

#include <immintrin.h>

#include <climits>
#include <cstring>

#include "raster/downsample_picks.h"

#define VASKEL_AVX2 __attribute__((target("avx2,prfchw")))
#define VASKEL_AVX2_LAMBDA __attribute__((target("avx2,prfchw"), always_inline))
#define VASKEL_AVX2_INLINE VASKEL_AVX2_LAMBDA inline

namespace Vaskel {
namespace {

VASKEL_AVX2_INLINE void eightPixels(const std::uint32_t* sources, const unsigned char* line,
                                    unsigned char* out) {
    const __m256i from = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(sources));
    const __m256i eight = _mm256_i32gather_epi32(reinterpret_cast<const int*>(line), from, 4);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), eight);
}

// Telling the CPU what comes next never faults, wherever that may be.
VASKEL_AVX2_INLINE void fetch(const unsigned char* from, std::uintptr_t ahead) {
    _mm_prefetch(reinterpret_cast<const char*>(reinterpret_cast<std::uintptr_t>(from) + ahead),
                 _MM_HINT_T1);
}

// The next line that is picked from lies where a CPU does not look by itself; where
// memory is slow, telling it takes off two fifths of the time.
VASKEL_AVX2 void pixels(const DownsamplePicks& picks, const unsigned char* line,
                        std::uintptr_t ahead, std::uintptr_t taker, unsigned char* out) {
    // Gathers take signed places.
    if (picks.width > INT_MAX) return kPickTable.pixels(picks, line, ahead, taker, out);
    const std::uint32_t* const sources = picks.sources.data();
    const std::size_t n = picks.count;
    std::size_t j = 0;
    for (; j + 8 <= n; j += 8) {
        fetch(line + std::size_t{4} * sources[j], ahead);
        fetch(line + std::size_t{4} * sources[j + 4], ahead);
        if (taker != 0) __builtin_prefetch(reinterpret_cast<void*>(taker + 4 * j), 1);
        eightPixels(sources + j, line, out + 4 * j);
    }
    for (; j < n; ++j) std::memcpy(out + 4 * j, line + std::size_t{4} * sources[j], 4);
}

// A block's picks are written with whatever comes behind them, which the next
// block's picks overwrite. Picks ascend, and places hold a block's in order.
VASKEL_AVX2 void bytes(const DownsamplePicks& picks, const unsigned char* line,
                       std::uintptr_t ahead, unsigned char* out) {
    constexpr std::size_t kBlock = DownsamplePicks::kBlock;
    static_assert(kBlock <= kPickRoom);
    const unsigned char* const places = picks.places.data();
    const std::size_t blocks = picks.taken.size();
    std::size_t done = 0;
    const auto take = [&](std::size_t block) VASKEL_AVX2_LAMBDA {
        const auto at = [&](const unsigned char* from) VASKEL_AVX2_LAMBDA {
            return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + kBlock * block));
        };
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + done),
                         _mm_shuffle_epi8(at(line), at(places)));
        done += picks.taken[block];
    };
    std::size_t block = 0;
    for (; block + 4 <= blocks; block += 4) {
        fetch(line + kBlock * block, ahead);
        for (std::size_t i = 0; i < 4; ++i) take(block + i);
    }
    for (; block < blocks; ++block) take(block);
    for (; done < picks.count; ++done) out[done] = line[picks.sources[done]];
}

VASKEL_AVX2 void widen(const unsigned char* bytes, std::size_t count, unsigned char* slots) {
    std::size_t j = 0;
    for (; j + 8 <= count; j += 8) {
        const __m128i eight = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes + j));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(slots + 4 * j), _mm256_cvtepu8_epi32(eight));
    }
    kPickTable.widen(bytes + j, count - j, slots + 4 * j);
}

VASKEL_AVX2 void narrow(const unsigned char* slots, std::size_t count, unsigned char* bytes) {
    const __m256i low = _mm256_set1_epi32(255);
    const __m256i inOrder = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    std::size_t j = 0;
    for (; j + 32 <= count; j += 32) {
        const auto eight = [&](std::size_t i) __attribute__((target("avx2"))) {
            return _mm256_and_si256(
                _mm256_loadu_si256(reinterpret_cast<const __m256i*>(slots + 4 * (j + i))), low);
        };
        const __m256i packed = _mm256_packus_epi16(_mm256_packus_epi32(eight(0), eight(8)),
                                                   _mm256_packus_epi32(eight(16), eight(24)));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes + j),
                            _mm256_permutevar8x32_epi32(packed, inOrder));
    }
    kPickTable.narrow(slots + 4 * j, count - j, bytes + j);
}

}  // namespace

const PickForm kPickAvx2 = {"avx2", pixels, bytes, widen, narrow};

}  // namespace Vaskel

#endif
