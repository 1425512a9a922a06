// Unicode conversions in blocks for CPUs with AVX2: to UTF-8.
//
// Each unit is made into the bytes that it would need at the most, and those
// that it does not need are dropped. Same results as the rules: a surrogate is
// taken only if it has its other half beside it, and a text where one has not
// is bad under the rules as well.

#include "encoding/unicode_avx2.h"

#if defined(__x86_64__)

namespace Vaskel {
namespace {

// Writes the last bytes of each lane, as many as its code says. Codes 0, 1 and
// 3 keep a byte more than they have bits set.
VASKEL_AVX2 inline Byte* storeKeptBytes(__m256i a, __m256i b, std::uint32_t codes, Byte* out) {
    const std::uint32_t c0 = codes & 0xFF, c1 = codes >> 8 & 0xFF, c2 = codes >> 16 & 0xFF,
                        c3 = codes >> 24;
    a = _mm256_shuffle_epi8(a, shuffles(kKeptBytes[c0], kKeptBytes[c2]));
    b = _mm256_shuffle_epi8(b, shuffles(kKeptBytes[c1], kKeptBytes[c3]));
    store(out, _mm256_castsi256_si128(a));
    out += 4 + std::popcount(c0);
    store(out, _mm256_castsi256_si128(b));
    out += 4 + std::popcount(c1);
    store(out, _mm256_extracti128_si256(a, 1));
    out += 4 + std::popcount(c2);
    store(out, _mm256_extracti128_si256(b, 1));
    return out + 4 + std::popcount(c3);
}

// Units of 16 bits as up to three bytes each:
//   1110tttt 10mmmmmm 10llllll  or  110mmmmm 10llllll  or  0lllllll
// tail has the last two of these where a unit needs more than one; only units
// below 800 and those marked as two need no third.
VASKEL_AVX2 inline Byte* storeUtf8(__m256i units, __m256i tail, __m256i two, Byte* out) {
    const __m256i one = are16(units, 0xFF80, 0);
    const __m256i lead = _mm256_or_si256(
        _mm256_and_si256(_mm256_srli_epi16(units, 4), all16(0x0F00)), all16(0xE000));
    tail = _mm256_blendv_epi8(tail, _mm256_slli_epi16(units, 8), one);
    // Two bits a unit: more than one byte, three bytes.
    const std::uint32_t codes = ~mask8(_mm256_blendv_epi8(one, two, all16(0xFF00)));
    return storeKeptBytes(_mm256_unpacklo_epi16(lead, tail), _mm256_unpackhi_epi16(lead, tail),
                          codes, out);
}

// The last two bytes of units that are characters.
VASKEL_AVX2 inline __m256i lastTwo(__m256i units, __m256i below800) {
    const __m256i low = _mm256_slli_epi16(_mm256_and_si256(units, all16(0x3F)), 8);
    const __m256i middle = _mm256_and_si256(_mm256_srli_epi16(units, 6), all16(0x3F));
    const __m256i lead = _mm256_and_si256(below800, all16(0x0040));
    return _mm256_or_si256(_mm256_or_si256(low, middle), _mm256_or_si256(lead, all16(0x8080)));
}

VASKEL_AVX2 inline Byte* storeCharacters(__m256i units, Byte* out) {
    const __m256i below800 = are16(units, 0xF800, 0);
    return storeUtf8(units, lastTwo(units, below800), below800, out);
}

// Sixteen ASCII units, or thirty-two.
VASKEL_AVX2 inline Byte* storeAscii(__m256i units, Byte* out) {
    const __m256i packed = _mm256_packus_epi16(units, units);
    store(out, _mm256_castsi256_si128(_mm256_permute4x64_epi64(packed, 0x08)));
    return out + 16;
}
VASKEL_AVX2 inline Byte* storeAscii(__m256i a, __m256i b, Byte* out) {
    store(out, _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8));
    return out + 32;
}

// With surrogates: a pair is 0x190000 | (high & 0x3F) << 10 | (low & 0x3FF), so
// that its bytes are F6 and 1001hhhh from the high unit's bits 2 to 5, and
// 10hhllll 10llllll, where hh are the high unit's bits 0 and 1.
VASKEL_AVX2 inline Byte* storePairs(__m256i units, __m256i before, __m256i surrogates, Byte* out) {
    const __m256i below800 = are16(units, 0xF800, 0);
    const __m256i high = are16(units, 0xFC00, 0xD800);
    const __m256i first =
        _mm256_or_si256(_mm256_slli_epi16(_mm256_and_si256(units, all16(0x3C)), 6), all16(0x90F6));
    __m256i second = _mm256_slli_epi16(_mm256_and_si256(units, all16(0x3F)), 8);
    second = _mm256_or_si256(second, _mm256_and_si256(_mm256_srli_epi16(units, 6), all16(0x0F)));
    second = _mm256_or_si256(second, _mm256_slli_epi16(_mm256_and_si256(before, all16(3)), 4));
    second = _mm256_or_si256(second, all16(0x8080));
    __m256i tail = _mm256_blendv_epi8(lastTwo(units, below800), second, surrogates);
    tail = _mm256_blendv_epi8(tail, first, high);
    return storeUtf8(units, tail, _mm256_or_si256(below800, surrogates), out);
}

// Values of 32 bits below 200000 as up to four bytes each.
VASKEL_AVX2 inline Byte* storeValues(__m256i values, Byte* out) {
    const __m256i one = are32(values, 0xFFFFFF80, 0);
    const __m256i upToTwo = are32(values, 0xFFFFF800, 0);
    const __m256i upToThree = are32(values, 0xFFFF0000, 0);
    // From the last byte down: 10llllll, 10mmmmmm, 10tttttt, 11110ppp.
    __m256i bytes = _mm256_slli_epi32(_mm256_and_si256(values, all32(0x3F)), 24);
    bytes = _mm256_or_si256(bytes, _mm256_slli_epi32(_mm256_and_si256(values, all32(0xFC0)), 10));
    bytes = _mm256_or_si256(bytes, _mm256_srli_epi32(_mm256_and_si256(values, all32(0x3F000)), 4));
    bytes = _mm256_or_si256(bytes, _mm256_srli_epi32(values, 18));
    bytes = _mm256_or_si256(bytes, all32(0x808080F0));
    // Lead bytes of two and three.
    const __m256i two = _mm256_andnot_si256(one, upToTwo);
    const __m256i three = _mm256_andnot_si256(upToTwo, upToThree);
    bytes = _mm256_or_si256(bytes, _mm256_and_si256(two, all32(0x00400000)));
    bytes = _mm256_or_si256(bytes, _mm256_and_si256(three, all32(0x00006000)));
    bytes = _mm256_blendv_epi8(bytes, _mm256_slli_epi32(values, 24), one);
    // Codes: bit 0 for two and three bytes, bit 1 for three and four.
    const std::uint32_t bit0 = mask32(_mm256_or_si256(two, three));
    const std::uint32_t bit1 = ~mask32(upToTwo);
    const auto codes = [&](int from) {
        return static_cast<unsigned>(kSpreadBits[bit0 >> from & 0xF] |
                                     kSpreadBits[bit1 >> from & 0xF] << 1);
    };
    const unsigned low = codes(0), high = codes(4);
    bytes = _mm256_shuffle_epi8(bytes, shuffles(kKeptBytes[low], kKeptBytes[high]));
    store(out, _mm256_castsi256_si128(bytes));
    out += kKeptByteCounts[low];
    store(out, _mm256_extracti128_si256(bytes, 1));
    return out + kKeptByteCounts[high];
}

}  // namespace

template <bool kInBig>
VASKEL_AVX2 BlockStop utf16ToUtf8Avx2(const Byte* in, const Byte* last, Byte* out) {
    std::uint32_t carry = 0;
    while (in <= last) {
        const __m256i units = load16<kInBig>(in);
        if (_mm256_testz_si256(units, all16(0xFF80))) {
            if (carry != 0) return {in, out, true};
            if (in + 32 <= last) {
                const __m256i more = load16<kInBig>(in + 32);
                if (_mm256_testz_si256(more, all16(0xFF80))) {
                    out = storeAscii(units, more, out);
                    in += 64;
                    continue;
                }
            }
            out = storeAscii(units, out);
            in += 32;
            continue;
        }
        const __m256i surrogates = are16(units, 0xF800, 0xD800);
        if (isZero(surrogates)) {
            if (carry != 0) return {in, out, true};
            out = storeCharacters(units, out);
        } else {
            if (!paired(units, carry)) return {in, out, true};
            out = storePairs(units, load16<kInBig>(in - 2), surrogates, out);
        }
        in += 32;
    }
    // Two bytes were written for the high half of a pair that goes on.
    return carry == 0 ? BlockStop{in, out} : BlockStop{in - 2, out - 2};
}

template <bool kInBig>
VASKEL_AVX2 BlockStop utf32ToUtf8Avx2(const Byte* in, const Byte* last, Byte* out) {
    for (; in <= last; in += 64) {
        const __m256i a = load32<kInBig>(in), b = load32<kInBig>(in + 32);
        const __m256i either = _mm256_or_si256(a, b);
        if (_mm256_testz_si256(either, all32(0xFFFF0000))) {
            const __m256i units = _mm256_permute4x64_epi64(_mm256_packus_epi32(a, b), 0xD8);
            out = _mm256_testz_si256(either, all32(0xFF80)) ? storeAscii(units, out)
                                                            : storeCharacters(units, out);
        } else {
            if (!_mm256_testz_si256(either, all32(0xFFE00000))) return {in, out, true};
            out = storeValues(b, storeValues(a, out));
        }
    }
    return {in, out};
}

template BlockStop utf16ToUtf8Avx2<false>(const Byte*, const Byte*, Byte*);
template BlockStop utf16ToUtf8Avx2<true>(const Byte*, const Byte*, Byte*);
template BlockStop utf32ToUtf8Avx2<false>(const Byte*, const Byte*, Byte*);
template BlockStop utf32ToUtf8Avx2<true>(const Byte*, const Byte*, Byte*);

}  // namespace Vaskel

#endif
