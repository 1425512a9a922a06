// Unicode conversions in blocks for CPUs with AVX2: between UTF-16 and UTF-32.
//
// Same results as the rules: every value comes from the rules' own formulas,
// and a block with a value that makes a text bad is bad wherever it stands.

#include "encoding/unicode_avx2.h"

#if defined(__x86_64__)

namespace Vaskel {
namespace {

template <bool kBig>
VASKEL_AVX2 inline void storeUnits(__m256i units, Byte* out) {
    store(out, kBig ? swapped16(units) : units);
}

template <bool kBig>
VASKEL_AVX2 inline void storeValues(__m256i values, Byte* out) {
    store(out, kBig ? swapped32(values) : values);
}

// The values of eight units that are in front of their other half, or alone;
// those of low halves, dropped.
template <bool kBig>
VASKEL_AVX2 inline Byte* storePairs(__m128i units, __m128i behind, Byte* out) {
    const __m256i unit = _mm256_cvtepu16_epi32(units), next = _mm256_cvtepu16_epi32(behind);
    const __m256i pair =
        _mm256_or_si256(_mm256_or_si256(_mm256_slli_epi32(_mm256_and_si256(unit, all32(0x3F)), 10),
                                        _mm256_and_si256(next, all32(0x3FF))),
                        all32(0x190000));  // ((high & 0x3C00) << 8) + 0x10000, for D800 to DBFF
    const __m256i high = are32(unit, 0xFC00, 0xD800), low = are32(unit, 0xFC00, 0xDC00);
    const std::uint32_t keep = ~mask32(low) & 0xFF;
    const __m256i lanes =
        _mm256_cvtepu8_epi32(_mm_cvtsi64_si128(static_cast<long long>(kKeptLanes[keep])));
    const __m256i values = _mm256_blendv_epi8(unit, pair, high);
    storeValues<kBig>(_mm256_permutevar8x32_epi32(values, lanes), out);
    return out + 4 * popcount(keep);
}

// Eight values below 200000, from 10000 on as two units each.
template <bool kBig>
VASKEL_AVX2 inline Byte* storeSplit(__m256i values, Byte* out) {
    const __m256i single = are32(values, 0xFFFF0000, 0);
    const __m256i plane =
        _mm256_sub_epi32(_mm256_slli_epi32(_mm256_srli_epi32(values, 16), 6), all32(0x40));
    const __m256i high =
        _mm256_or_si256(_mm256_and_si256(plane, all32(0x3C0)),
                        _mm256_srli_epi32(_mm256_and_si256(values, all32(0xFC00)), 10));
    const __m256i low = _mm256_slli_epi32(_mm256_and_si256(values, all32(0x3F)), 16);
    const __m256i pair = _mm256_or_si256(_mm256_or_si256(high, low), all32(0xDC00D800));
    __m256i units = _mm256_blendv_epi8(pair, values, single);
    if (kBig) units = swapped16(units);
    const std::uint32_t two = ~mask32(single);
    const unsigned first = 0x55u | static_cast<unsigned>(kSpreadBits[two & 0xF] << 1);
    const unsigned second = 0x55u | static_cast<unsigned>(kSpreadBits[two >> 4 & 0xF] << 1);
    units = _mm256_shuffle_epi8(units, shuffles(kKeptUnits[first], kKeptUnits[second]));
    store(out, _mm256_castsi256_si128(units));
    out += 2 * popcount(first);
    store(out, _mm256_extracti128_si256(units, 1));
    return out + 2 * popcount(second);
}

}  // namespace

template <bool kInBig, bool kBig>
VASKEL_AVX2 BlockStop utf16ToUtf32Avx2(const Byte* in, const Byte* last, Byte* out) {
    std::uint32_t carry = 0;
    for (; in <= last; in += 32) {
        const __m256i units = load16<kInBig>(in);
        if (isZero(are16(units, 0xF800, 0xD800))) {
            if (carry != 0) return {in, out, true};
            storeValues<kBig>(_mm256_cvtepu16_epi32(_mm256_castsi256_si128(units)), out);
            storeValues<kBig>(_mm256_cvtepu16_epi32(_mm256_extracti128_si256(units, 1)), out + 32);
            out += 64;
            continue;
        }
        if (!paired(units, carry)) return {in, out, true};
        const __m256i behind = load16<kInBig>(in + 2);
        out = storePairs<kBig>(_mm256_castsi256_si128(units), _mm256_castsi256_si128(behind), out);
        out = storePairs<kBig>(_mm256_extracti128_si256(units, 1),
                               _mm256_extracti128_si256(behind, 1), out);
    }
    // The value of a pair that goes on is written already, but its low half
    // still has to be one.
    return carry == 0 ? BlockStop{in, out} : BlockStop{in - 2, out - 4};
}

template <bool kInBig, bool kBig>
VASKEL_AVX2 BlockStop utf32ToUtf16Avx2(const Byte* in, const Byte* last, Byte* out) {
    for (; in <= last; in += 64) {
        const __m256i a = load32<kInBig>(in), b = load32<kInBig>(in + 32);
        const __m256i either = _mm256_or_si256(a, b);
        const __m256i surrogates =
            _mm256_or_si256(are32(a, 0xFFFFF800, 0xD800), are32(b, 0xFFFFF800, 0xD800));
        if (!isZero(surrogates) || !_mm256_testz_si256(either, all32(0xFFE00000)))
            return {in, out, true};
        if (_mm256_testz_si256(either, all32(0xFFFF0000))) {
            storeUnits<kBig>(_mm256_permute4x64_epi64(_mm256_packus_epi32(a, b), 0xD8), out);
            out += 32;
        } else {
            out = storeSplit<kBig>(b, storeSplit<kBig>(a, out));
        }
    }
    return {in, out};
}

template BlockStop utf16ToUtf32Avx2<false, false>(const Byte*, const Byte*, Byte*);
template BlockStop utf16ToUtf32Avx2<false, true>(const Byte*, const Byte*, Byte*);
template BlockStop utf16ToUtf32Avx2<true, false>(const Byte*, const Byte*, Byte*);
template BlockStop utf16ToUtf32Avx2<true, true>(const Byte*, const Byte*, Byte*);
template BlockStop utf32ToUtf16Avx2<false, false>(const Byte*, const Byte*, Byte*);
template BlockStop utf32ToUtf16Avx2<false, true>(const Byte*, const Byte*, Byte*);
template BlockStop utf32ToUtf16Avx2<true, false>(const Byte*, const Byte*, Byte*);
template BlockStop utf32ToUtf16Avx2<true, true>(const Byte*, const Byte*, Byte*);

}  // namespace Vaskel

#endif
