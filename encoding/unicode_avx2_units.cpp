// Unicode conversions in blocks for CPUs with AVX2: between UTF-16 and UTF-32.
//
// Same results as the rules: every value comes from the rules' own formulas,
// and a block with a value that makes a text bad is bad wherever it stands.

#include "encoding/unicode_avx2.h"

#if defined(__x86_64__)

namespace Vaskel {
namespace {

// The values of eight units that are in front of their other half, or alone;
// those of low halves, dropped.
VASKEL_AVX2 inline Byte* storePairs(__m128i units, __m128i behind, __m256i order, Byte* out) {
    const __m256i unit = _mm256_cvtepu16_epi32(units), next = _mm256_cvtepu16_epi32(behind);
    const __m256i pair =
        _mm256_or_si256(_mm256_or_si256(_mm256_slli_epi32(_mm256_and_si256(unit, all32(0x3F)), 10),
                                        _mm256_and_si256(next, all32(0x3FF))),
                        all32(0x190000));  // ((high & 0x3C00) << 8) + 0x10000, for D800 to DBFF
    const __m256i high = are32(unit, 0xFC00, 0xD800), low = are32(unit, 0xFC00, 0xDC00);
    const std::uint32_t keep = ~mask32(low) & 0xFF;
    const __m256i lanes = _mm256_cvtepu8_epi32(
        _mm_cvtsi64_si128(static_cast<long long>(gUnicodeTables.keptLanes[keep])));
    const __m256i values = _mm256_blendv_epi8(unit, pair, high);
    store(out, ordered(_mm256_permutevar8x32_epi32(values, lanes), order));
    return out + 4 * popcount(keep);
}

// Eight values below 200000, from 10000 on as two units each.
VASKEL_AVX2 inline Byte* storeSplit(__m256i values, __m256i order, Byte* out) {
    const __m256i single = are32(values, 0xFFFF0000, 0);
    const __m256i plane =
        _mm256_sub_epi32(_mm256_slli_epi32(_mm256_srli_epi32(values, 16), 6), all32(0x40));
    const __m256i high =
        _mm256_or_si256(_mm256_and_si256(plane, all32(0x3C0)),
                        _mm256_srli_epi32(_mm256_and_si256(values, all32(0xFC00)), 10));
    const __m256i low = _mm256_slli_epi32(_mm256_and_si256(values, all32(0x3F)), 16);
    const __m256i pair = _mm256_or_si256(_mm256_or_si256(high, low), all32(0xDC00D800));
    __m256i units = ordered(_mm256_blendv_epi8(pair, values, single), order);
    const std::uint32_t two = ~mask32(single);
    const unsigned first = 0x55u | static_cast<unsigned>(kSpreadBits[two & 0xF] << 1);
    const unsigned second = 0x55u | static_cast<unsigned>(kSpreadBits[two >> 4 & 0xF] << 1);
    units = _mm256_shuffle_epi8(
        units, shuffles(gUnicodeTables.keptUnits[first], gUnicodeTables.keptUnits[second]));
    store(out, _mm256_castsi256_si128(units));
    out += 2 * popcount(first);
    store(out, _mm256_extracti128_si256(units, 1));
    return out + 2 * popcount(second);
}

}  // namespace

VASKEL_AVX2 BlockStop utf16ToUtf32Avx2(const Byte* in, const Byte* last, const Byte*, Byte* out,
                                       ByteOrders orders) {
    const __m256i inOrder = unitOrder16(orders.inBig), order = unitOrder32(orders.big);
    std::uint32_t carry = 0;
    for (; in <= last; in += 32) {
        const __m256i units = ordered(load(in), inOrder);
        if (isZero(are16(units, 0xF800, 0xD800))) {
            if (carry != 0) return {};
            store(out, ordered(_mm256_cvtepu16_epi32(_mm256_castsi256_si128(units)), order));
            store(out + 32,
                  ordered(_mm256_cvtepu16_epi32(_mm256_extracti128_si256(units, 1)), order));
            out += 64;
            continue;
        }
        if (!paired(units, carry)) return {};
        const __m256i behind = ordered(load(in + 2), inOrder);
        out = storePairs(_mm256_castsi256_si128(units), _mm256_castsi256_si128(behind), order, out);
        out = storePairs(_mm256_extracti128_si256(units, 1), _mm256_extracti128_si256(behind, 1),
                         order, out);
    }
    // The value of a pair that goes on is written already, but its low half
    // still has to be one.
    return carry == 0 ? BlockStop{in, out} : BlockStop{in - 2, out - 4};
}

VASKEL_AVX2 BlockStop utf32ToUtf16Avx2(const Byte* in, const Byte* last, const Byte*, Byte* out,
                                       ByteOrders orders) {
    const __m256i inOrder = unitOrder32(orders.inBig), order = unitOrder16(orders.big);
    for (; in <= last; in += 64) {
        const __m256i a = ordered(load(in), inOrder), b = ordered(load(in + 32), inOrder);
        const __m256i either = _mm256_or_si256(a, b);
        const __m256i surrogates =
            _mm256_or_si256(are32(a, 0xFFFFF800, 0xD800), are32(b, 0xFFFFF800, 0xD800));
        if (!isZero(surrogates) || !_mm256_testz_si256(either, all32(0xFFE00000))) return {};
        if (_mm256_testz_si256(either, all32(0xFFFF0000))) {
            const __m256i units = _mm256_permute4x64_epi64(_mm256_packus_epi32(a, b), 0xD8);
            store(out, ordered(units, order));
            out += 32;
        } else {
            out = storeSplit(b, order, storeSplit(a, order, out));
        }
    }
    return {in, out};
}

}  // namespace Vaskel

#endif
