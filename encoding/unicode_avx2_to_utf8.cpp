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

// What the loops need of constants, where the compiler can only keep them.
struct Constants {
    __m256i x3F = kept(all16(0x3F)), xF00 = kept(all16(0x0F00)), xE000 = kept(all16(0xE000)),
            x8080 = kept(all16(0x8080)), x80C0 = kept(all16(0x80C0)), xFF80 = kept(all16(0xFF80)),
            xF800 = kept(all16(0xF800)), xD800 = kept(all16(0xD800)), x40 = kept(all16(0x40)),
            upper = kept(all16(0xFF00));
    // Of four 32-bit lanes the last three bytes each.
    __m256i threes =
        kept(_mm256_setr_epi8(1, 2, 3, 5, 6, 7, 9, 10, 11, 13, 14, 15, -1, -1, -1, -1, 1, 2, 3, 5,
                              6, 7, 9, 10, 11, 13, 14, 15, -1, -1, -1, -1));
    VASKEL_AVX2 Constants() {}
};

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

// Units below 800 as one byte or two: 0lllllll, or 110mmmmm 10llllll.
VASKEL_AVX2 inline Byte* storeBelow800(__m256i units, const Constants& k, Byte* out) {
    const __m256i one =
        _mm256_cmpeq_epi16(_mm256_and_si256(units, k.xFF80), _mm256_setzero_si256());
    const __m256i lead = _mm256_srli_epi16(units, 6);
    const __m256i last = _mm256_slli_epi16(_mm256_and_si256(units, k.x3F), 8);
    const __m256i two = _mm256_or_si256(_mm256_or_si256(lead, last), k.x80C0);
    const __m256i bytes = _mm256_blendv_epi8(two, units, one);
    // A bit a unit, for the first eight and, from 16 on, the other ones.
    const std::uint32_t ones = mask8(_mm256_packs_epi16(one, _mm256_setzero_si256()));
    const std::uint32_t low = ones & 0xFF, high = ones >> 16;
    const __m256i keptBytes = _mm256_shuffle_epi8(
        bytes, shuffles(gUnicodeTables.oneOrTwo[low], gUnicodeTables.oneOrTwo[high]));
    store(out, _mm256_castsi256_si128(keptBytes));
    out += 16 - popcount(low);
    store(out, _mm256_extracti128_si256(keptBytes, 1));
    return out + 16 - popcount(high);
}

// Bytes for units as if all needed three: 1110tttt 10mmmmmm 10llllll, the first
// one in the upper byte of lead, the last two in tail; 110mmmmm below 800.
VASKEL_AVX2 inline __m256i leadOf(__m256i units, const Constants& k) {
    return _mm256_or_si256(_mm256_and_si256(_mm256_srli_epi16(units, 4), k.xF00), k.xE000);
}
VASKEL_AVX2 inline __m256i tailOf(__m256i units, const Constants& k) {
    const __m256i last = _mm256_slli_epi16(_mm256_and_si256(units, k.x3F), 8);
    const __m256i middle = _mm256_and_si256(_mm256_srli_epi16(units, 6), k.x3F);
    return _mm256_or_si256(_mm256_or_si256(last, middle), k.x8080);
}

// Units that all need three bytes.
VASKEL_AVX2 inline Byte* storeThrees(__m256i units, const Constants& k, Byte* out) {
    const __m256i lead = leadOf(units, k), tail = tailOf(units, k);
    const __m256i a = _mm256_shuffle_epi8(_mm256_unpacklo_epi16(lead, tail), k.threes);
    const __m256i b = _mm256_shuffle_epi8(_mm256_unpackhi_epi16(lead, tail), k.threes);
    store(out, _mm256_castsi256_si128(a));
    store(out + 12, _mm256_castsi256_si128(b));
    store(out + 24, _mm256_extracti128_si256(a, 1));
    store(out + 36, _mm256_extracti128_si256(b, 1));
    return out + 48;
}

// Units as one to three bytes, those marked as two as the two in tail.
VASKEL_AVX2 inline Byte* storeMixed(__m256i units, __m256i tail, __m256i two, const Constants& k,
                                    Byte* out) {
    const __m256i one =
        _mm256_cmpeq_epi16(_mm256_and_si256(units, k.xFF80), _mm256_setzero_si256());
    tail = _mm256_blendv_epi8(tail, _mm256_slli_epi16(units, 8), one);
    // Two bits a unit: more than one byte, three bytes. Codes 0, 1 and 3 keep a
    // byte more than they have bits set.
    const std::uint32_t codes = ~mask8(_mm256_blendv_epi8(one, two, k.upper));
    const std::uint32_t c0 = codes & 0xFF, c1 = codes >> 8 & 0xFF, c2 = codes >> 16 & 0xFF,
                        c3 = codes >> 24;
    const __m256i lead = leadOf(units, k);
    const __m256i a =
        _mm256_shuffle_epi8(_mm256_unpacklo_epi16(lead, tail),
                            shuffles(gUnicodeTables.keptBytes[c0], gUnicodeTables.keptBytes[c2]));
    const __m256i b =
        _mm256_shuffle_epi8(_mm256_unpackhi_epi16(lead, tail),
                            shuffles(gUnicodeTables.keptBytes[c1], gUnicodeTables.keptBytes[c3]));
    store(out, _mm256_castsi256_si128(a));
    out += 4 + popcount(c0);
    store(out, _mm256_castsi256_si128(b));
    out += 4 + popcount(c1);
    store(out, _mm256_extracti128_si256(a, 1));
    out += 4 + popcount(c2);
    store(out, _mm256_extracti128_si256(b, 1));
    return out + 4 + popcount(c3);
}

// Units that are characters, not all of them ASCII.
VASKEL_AVX2 inline Byte* storeCharacters(__m256i units, const Constants& k, Byte* out) {
    const __m256i two =
        _mm256_cmpeq_epi16(_mm256_and_si256(units, k.xF800), _mm256_setzero_si256());
    const std::uint32_t twos = mask8(two);
    if (twos == 0xFFFFFFFF) return storeBelow800(units, k, out);
    if (twos == 0) return storeThrees(units, k, out);
    const __m256i tail = _mm256_or_si256(tailOf(units, k), _mm256_and_si256(two, k.x40));
    return storeMixed(units, tail, two, k, out);
}

// With surrogates: a pair is 0x190000 | (high & 0x3F) << 10 | (low & 0x3FF), so
// that its bytes are F6 and 1001hhhh from the high unit's bits 2 to 5, and
// 10hhllll 10llllll, where hh are the high unit's bits 0 and 1.
VASKEL_AVX2 inline Byte* storePairs(__m256i units, __m256i before, __m256i surrogates,
                                    const Constants& k, Byte* out) {
    const __m256i below800 = are16(units, 0xF800, 0);
    const __m256i high = are16(units, 0xFC00, 0xD800);
    const __m256i first =
        _mm256_or_si256(_mm256_slli_epi16(_mm256_and_si256(units, all16(0x3C)), 6), all16(0x90F6));
    const __m256i hh = _mm256_slli_epi16(_mm256_and_si256(before, all16(3)), 4);
    const __m256i tail = _mm256_or_si256(tailOf(units, k), _mm256_and_si256(below800, k.x40));
    // Bits 10 and 11 of a low unit, 11, come out where hh belongs.
    const __m256i second = _mm256_or_si256(_mm256_andnot_si256(all16(0x30), tail), hh);
    __m256i all = _mm256_blendv_epi8(tail, second, surrogates);
    all = _mm256_blendv_epi8(all, first, high);
    return storeMixed(units, all, _mm256_or_si256(below800, surrogates), k, out);
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
    bytes = _mm256_shuffle_epi8(
        bytes, shuffles(gUnicodeTables.keptBytes[low], gUnicodeTables.keptBytes[high]));
    store(out, _mm256_castsi256_si128(bytes));
    out += gUnicodeTables.keptByteCounts[low];
    store(out, _mm256_extracti128_si256(bytes, 1));
    return out + gUnicodeTables.keptByteCounts[high];
}

}  // namespace

VASKEL_AVX2 BlockStop utf16ToUtf8Avx2(const Byte* in, const Byte* last, const Byte*, Byte* out,
                                      ByteOrders orders) {
    const Constants k;
    const __m256i order = unitOrder16(orders.inBig);
    std::uint32_t carry = 0;  // the bits of a high unit at the end of the block before
    while (in <= last) {
        const __m256i units = ordered(load(in), order);
        if (_mm256_testz_si256(units, k.xFF80)) {
            if (carry != 0) return {};
            if (in + 32 <= last) {
                const __m256i more = ordered(load(in + 32), order);
                if (_mm256_testz_si256(more, k.xFF80)) {
                    out = storeAscii(units, more, out);
                    in += 64;
                    continue;
                }
            }
            out = storeAscii(units, out);
            in += 32;
            continue;
        }
        const __m256i surrogates = _mm256_cmpeq_epi16(_mm256_and_si256(units, k.xF800), k.xD800);
        if (isZero(surrogates)) {
            if (carry != 0) return {};
            out = storeCharacters(units, k, out);
        } else {
            if (!paired(units, carry)) return {};
            out = storePairs(units, ordered(load(in - 2), order), surrogates, k, out);
        }
        in += 32;
    }
    // Two bytes were written for the high half of a pair that goes on.
    return carry == 0 ? BlockStop{in, out} : BlockStop{in - 2, out - 2};
}

VASKEL_AVX2 BlockStop utf32ToUtf8Avx2(const Byte* in, const Byte* last, const Byte*, Byte* out,
                                      ByteOrders orders) {
    const Constants k;
    const __m256i order = unitOrder32(orders.inBig);
    for (; in <= last; in += 64) {
        const __m256i a = ordered(load(in), order), b = ordered(load(in + 32), order);
        const __m256i either = _mm256_or_si256(a, b);
        if (_mm256_testz_si256(either, all32(0xFFFF0000))) {
            const __m256i units = _mm256_permute4x64_epi64(_mm256_packus_epi32(a, b), 0xD8);
            out = _mm256_testz_si256(either, all32(0xFF80)) ? storeAscii(units, out)
                                                            : storeCharacters(units, k, out);
        } else {
            if (!_mm256_testz_si256(either, all32(0xFFE00000))) return {};
            out = storeValues(b, storeValues(a, out));
        }
    }
    return {in, out};
}

}  // namespace Vaskel

#endif
