// Where a text of UTF-16 or UTF-32 ends, for CPUs with AVX2.

#include <cstring>

#include "encoding/unicode_avx2.h"

#if defined(__x86_64__)

// Whole aligned blocks are read, as strlen does: the end of a text is not
// known before, an aligned block never reaches into another page than the byte
// of the text that it holds, and what is behind the end is masked off.
#define VASKEL_ALIGNED_READS __attribute__((no_sanitize("address")))

namespace Vaskel {
namespace {

constexpr std::size_t kBytes = 32;

VASKEL_AVX2 VASKEL_ALIGNED_READS inline __m256i loadAligned(const Byte* at) {
    return _mm256_load_si256(reinterpret_cast<const __m256i*>(at));
}

// The place of the first kUnit zero bytes at a multiple of kUnit from text.
//
// Texts may lie at any address, so that units may cross blocks: the zero bytes
// of a block are looked at together with those of the block before. Bit i of
// zeros stands for the byte at block - 32 + i, and a unit at i is whole in it if
// i + kUnit <= 64; those with i + kUnit <= 32 were looked at before.
template <unsigned kUnit>
VASKEL_AVX2 VASKEL_ALIGNED_READS std::size_t sizeToZero(const Byte* text) {
    const std::size_t offset = reinterpret_cast<std::uintptr_t>(text) % kBytes;
    const Byte* block = text - offset;
    // Every kUnit-th bit from the first unit's place on.
    constexpr std::uint64_t every = kUnit == 2 ? 0x5555555555555555 : 0x1111111111111111;
    const std::uint64_t starts = every << offset % kUnit;
    const std::uint64_t fresh = ~std::uint64_t{0} << (33 - kUnit);
    const __m256i zero = _mm256_setzero_si256();
    std::uint64_t zeros = std::uint64_t{mask8(_mm256_cmpeq_epi8(loadAligned(block), zero))} << 32;
    zeros &= ~std::uint64_t{0} << (32 + offset);  // nothing in front of the text counts
    for (;; block += kBytes) {
        std::uint64_t found = zeros & zeros >> 1;
        if (kUnit == 4) found &= zeros >> 2 & zeros >> 3;
        found &= starts & fresh;
        if (found != 0) {
            const auto at = static_cast<std::ptrdiff_t>(std::countr_zero(found)) - 32;
            return static_cast<std::size_t>(block + at - text);
        }
        const __m256i next = loadAligned(block + kBytes);
        zeros = zeros >> 32 | std::uint64_t{mask8(_mm256_cmpeq_epi8(next, zero))} << 32;
    }
}

template <unsigned kUnit>
VASKEL_AVX2 VASKEL_ALIGNED_READS inline __m256i zeroUnits(const Byte* block) {
    const __m256i v = loadAligned(block), zero = _mm256_setzero_si256();
    return kUnit == 2 ? _mm256_cmpeq_epi16(v, zero) : _mm256_cmpeq_epi32(v, zero);
}

// The same for units that do not cross blocks, four blocks at a time as long
// as these lie in one page.
template <unsigned kUnit>
VASKEL_AVX2 VASKEL_ALIGNED_READS std::size_t sizeToZeroAligned(const Byte* text) {
    const std::size_t offset = reinterpret_cast<std::uintptr_t>(text) % kBytes;
    const Byte* block = text - offset;
    std::uint32_t found = mask8(zeroUnits<kUnit>(block)) >> offset << offset;
    while (found == 0) {
        block += kBytes;
        if (reinterpret_cast<std::uintptr_t>(block) % (4 * kBytes) == 0) {
            for (;; block += 4 * kBytes) {
                // Of texts larger than the caches, what is behind the end of a page
                // does not come by itself.
                _mm_prefetch(block + 2048, _MM_HINT_T0);
                _mm_prefetch(block + 2048 + 64, _MM_HINT_T0);
                const __m256i first =
                    _mm256_or_si256(zeroUnits<kUnit>(block), zeroUnits<kUnit>(block + kBytes));
                const __m256i second = _mm256_or_si256(zeroUnits<kUnit>(block + 2 * kBytes),
                                                       zeroUnits<kUnit>(block + 3 * kBytes));
                if (!isZero(_mm256_or_si256(first, second))) break;
            }
        }
        found = mask8(zeroUnits<kUnit>(block));
    }
    return static_cast<std::size_t>(block + std::countr_zero(found) - text);
}

}  // namespace

VASKEL_AVX2 VASKEL_ALIGNED_READS std::size_t size8Avx2(const Byte* text) {
    // Most short texts end in the first blocks; long ones are for the C library.
    const std::size_t offset = reinterpret_cast<std::uintptr_t>(text) % kBytes;
    const __m256i zero = _mm256_setzero_si256();
    const Byte* const block = text - offset;
    const std::uint32_t found = mask8(_mm256_cmpeq_epi8(loadAligned(block), zero)) >> offset;
    if (found != 0) return static_cast<std::size_t>(std::countr_zero(found));
    const Byte* const next = block + kBytes;
    return static_cast<std::size_t>(next - text) + std::strlen(reinterpret_cast<const char*>(next));
}

VASKEL_AVX2 std::size_t size16Avx2(const Byte* text) {
    return reinterpret_cast<std::uintptr_t>(text) % 2 == 0 ? sizeToZeroAligned<2>(text)
                                                           : sizeToZero<2>(text);
}

VASKEL_AVX2 std::size_t size32Avx2(const Byte* text) {
    return reinterpret_cast<std::uintptr_t>(text) % 4 == 0 ? sizeToZeroAligned<4>(text)
                                                           : sizeToZero<4>(text);
}

}  // namespace Vaskel

#endif
