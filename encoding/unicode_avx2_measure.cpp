// Where a text ends, and how long it becomes, for CPUs with AVX2.

#include "encoding/unicode_avx2.h"
#include "encoding/unicode_rules.h"

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

// What a block adds to the length, a small number in each byte, for each of
// the lengths asked for. kMost is the greatest of them.

VASKEL_AVX2 inline __m256i plus(__m256i a, __m256i b) { return _mm256_add_epi8(a, b); }

struct Utf8Values {
    static constexpr unsigned kMost = 1;
    VASKEL_AVX2 static __m256i count(const Byte* in) {
        const __m256i followers = _mm256_cmpgt_epi8(all8(0xC0), load(in));
        return plus(all8(1), followers);
    }
};

struct Utf8Units {
    static constexpr unsigned kMost = 2;
    VASKEL_AVX2 static __m256i count(const Byte* in) {
        const __m256i bytes = load(in);
        const __m256i fours = _mm256_cmpeq_epi8(_mm256_max_epu8(bytes, all8(0xF0)), bytes);
        return _mm256_sub_epi8(Utf8Values::count(in), fours);
    }
};

template <bool kInBig>
struct Utf16Bytes {
    static constexpr unsigned kMost = 3;
    VASKEL_AVX2 static __m256i count(const Byte* in) {
        const __m256i units = load16<kInBig>(in);
        const __m256i one = are16(units, 0xFF80, 0);
        const __m256i two = _mm256_or_si256(are16(units, 0xF800, 0), are16(units, 0xF800, 0xD800));
        return _mm256_add_epi16(all16(3), _mm256_add_epi16(one, two));
    }
};

template <bool kInBig>
struct Utf16Values {
    static constexpr unsigned kMost = 1;
    VASKEL_AVX2 static __m256i count(const Byte* in) {
        return _mm256_add_epi16(all16(1), are16(load16<kInBig>(in), 0xFC00, 0xDC00));
    }
};

template <bool kInBig>
struct Utf32Bytes {
    static constexpr unsigned kMost = 4;
    VASKEL_AVX2 static __m256i count(const Byte* in) {
        const __m256i values = load32<kInBig>(in);
        const __m256i upToTwo =
            _mm256_add_epi32(are32(values, 0xFFFFFF80, 0), are32(values, 0xFFFFF800, 0));
        return _mm256_add_epi32(all32(4), _mm256_add_epi32(upToTwo, are32(values, 0xFFFF0000, 0)));
    }
};

template <bool kInBig>
struct Utf32Units {
    static constexpr unsigned kMost = 2;
    VASKEL_AVX2 static __m256i count(const Byte* in) {
        return _mm256_add_epi32(all32(2), are32(load32<kInBig>(in), 0xFFFF0000, 0));
    }
};

VASKEL_AVX2 inline std::size_t total(__m256i lanes) {
    const __m128i halves =
        _mm_add_epi64(_mm256_castsi256_si128(lanes), _mm256_extracti128_si256(lanes, 1));
    return static_cast<std::size_t>(_mm_cvtsi128_si64(halves) + _mm_extract_epi64(halves, 1));
}

// The sum over all whole blocks; what is left counts in full.
template <class What>
VASKEL_AVX2 std::size_t measure(const Byte* text, std::size_t size) {
    __m256i lanes = _mm256_setzero_si256();
    std::size_t i = 0;
    while (i + kBytes <= size) {
        __m256i counters = _mm256_setzero_si256();  // no byte of them overflows
        for (unsigned n = 0; n < 255 / What::kMost && i + kBytes <= size; ++n, i += kBytes)
            counters = plus(counters, What::count(text + i));
        lanes = _mm256_add_epi64(lanes, _mm256_sad_epu8(counters, _mm256_setzero_si256()));
    }
    return total(lanes) + (size - i) * What::kMost;
}

}  // namespace

VASKEL_AVX2 std::size_t size16Avx2(const Byte* text) {
    return reinterpret_cast<std::uintptr_t>(text) % 2 == 0 ? sizeToZeroAligned<2>(text)
                                                           : sizeToZero<2>(text);
}

VASKEL_AVX2 std::size_t size32Avx2(const Byte* text) {
    return reinterpret_cast<std::uintptr_t>(text) % 4 == 0 ? sizeToZeroAligned<4>(text)
                                                           : sizeToZero<4>(text);
}

VASKEL_AVX2 std::size_t utf8Units16Avx2(const Byte* text, std::size_t size) {
    return measure<Utf8Units>(text, size);
}

VASKEL_AVX2 std::size_t utf8Units32Avx2(const Byte* text, std::size_t size) {
    return measure<Utf8Values>(text, size);
}

template <bool kInBig>
VASKEL_AVX2 std::size_t utf16Bytes8Avx2(const Byte* text, std::size_t size) {
    return measure<Utf16Bytes<kInBig>>(text, size);
}

template <bool kInBig>
VASKEL_AVX2 std::size_t utf16Units32Avx2(const Byte* text, std::size_t size) {
    return measure<Utf16Values<kInBig>>(text, size);
}

template <bool kInBig>
VASKEL_AVX2 std::size_t utf32Bytes8Avx2(const Byte* text, std::size_t size) {
    return measure<Utf32Bytes<kInBig>>(text, size);
}

template <bool kInBig>
VASKEL_AVX2 std::size_t utf32Units16Avx2(const Byte* text, std::size_t size) {
    return measure<Utf32Units<kInBig>>(text, size);
}

template std::size_t utf16Bytes8Avx2<false>(const Byte*, std::size_t);
template std::size_t utf16Bytes8Avx2<true>(const Byte*, std::size_t);
template std::size_t utf16Units32Avx2<false>(const Byte*, std::size_t);
template std::size_t utf16Units32Avx2<true>(const Byte*, std::size_t);
template std::size_t utf32Bytes8Avx2<false>(const Byte*, std::size_t);
template std::size_t utf32Bytes8Avx2<true>(const Byte*, std::size_t);
template std::size_t utf32Units16Avx2<false>(const Byte*, std::size_t);
template std::size_t utf32Units16Avx2<true>(const Byte*, std::size_t);

}  // namespace Vaskel

#endif
