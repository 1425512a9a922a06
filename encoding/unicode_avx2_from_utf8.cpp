// Unicode conversions in blocks for CPUs with AVX2: from UTF-8.
//
// Every byte of a block is treated as if a character began there, with the
// bytes behind it as followers; then the results at bytes where none began are
// dropped. No step depends on the one before but for the place of the output.
//
// Same results as the rules: a block is taken only if its bytes of the pattern
// 10xxxxxx are exactly those that its lead bytes make followers, so that the
// places of characters are certain, and if it holds none of the values that the
// rules treat apart. All other blocks are left to the rules.

#include "encoding/unicode_avx2.h"

#include "encoding/unicode_onepass.h"

#if defined(__x86_64__)

namespace Vaskel {
namespace {

// The bytes of 32 characters' places, and what they mean.
struct Utf8Block {
    __m256i b0, b1, b2;  // the byte at each place and the two behind it
    __m256i three;       // set where b0 >= 0xE0, or ASCII
    std::uint32_t high;  // places of bytes >= 0x80
    std::uint32_t cont;  // of bytes 80..BF
    std::uint32_t four;  // of bytes >= 0xF0
};

VASKEL_AVX2 inline Utf8Block loadUtf8(const Byte* in, __m256i b0, std::uint32_t high) {
    Utf8Block b;
    b.b0 = b0;
    b.b1 = load(in + 1);
    b.b2 = load(in + 2);
    b.high = high;
    b.cont = mask8(_mm256_cmpgt_epi8(all8(0xC0), b0));
    b.three = _mm256_cmpgt_epi8(b0, all8(0xDF));
    b.four = mask8(_mm256_cmpgt_epi8(b0, all8(0xEF))) & high;
    return b;
}

// The places, from the block's start on, that its lead bytes and those before
// (carry) make followers.
VASKEL_AVX2 inline std::uint64_t followers(const Utf8Block& b, std::uint64_t carry) {
    const std::uint64_t two = b.high & ~b.cont;
    const std::uint64_t three = mask8(b.three) & b.high;
    return carry | two << 1 | three << 2 | std::uint64_t{b.four} << 3;
}

// Whether the block holds C0, C1, or E0 with a follower below A0: overlong
// forms, of which some are zeros.
VASKEL_AVX2 inline __m256i overlong(const Utf8Block& b) {
    const __m256i two = _mm256_cmpeq_epi8(_mm256_and_si256(b.b0, all8(0xFE)), all8(0xC0));
    const __m256i three =
        _mm256_and_si256(_mm256_cmpeq_epi8(b.b0, all8(0xE0)), _mm256_cmpgt_epi8(all8(0xA0), b.b1));
    return _mm256_or_si256(two, three);
}

// The values at each place as two planes of bytes. Where two bytes make the
// character they are x and y, where three do the last two; a byte plane holds
// two bits of x and six of y, the other one four bits of x and those of the
// lead byte.
struct Planes {
    __m256i lo, hi;
};

VASKEL_AVX2 inline Planes valuesBelow10000(const Utf8Block& b) {
    const __m256i x = _mm256_blendv_epi8(b.b0, b.b1, b.three);
    const __m256i y = _mm256_blendv_epi8(b.b1, b.b2, b.three);
    Planes p;
    p.lo = _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi16(x, 6), all8(0xC0)),
                           _mm256_and_si256(y, all8(0x3F)));
    p.hi = _mm256_and_si256(_mm256_srli_epi16(x, 2), all8(0x0F));
    const __m256i lead = _mm256_and_si256(_mm256_slli_epi16(b.b0, 4), all8(0xF0));
    p.hi = _mm256_or_si256(p.hi, _mm256_and_si256(lead, b.three));
    p.lo = _mm256_blendv_epi8(b.b0, p.lo, b.b0);  // ASCII stays
    p.hi = _mm256_blendv_epi8(_mm256_setzero_si256(), p.hi, b.b0);
    return p;
}

// Where b0 >= 0xF0, as a vector.
VASKEL_AVX2 inline __m256i fourVector(const Utf8Block& b) {
    return _mm256_and_si256(_mm256_cmpgt_epi8(b.b0, all8(0xEF)),
                            _mm256_cmpgt_epi8(_mm256_setzero_si256(), b.b0));
}

// Whether a block with bytes >= 0xF0 holds one >= 0xF8, or one that begins an
// overlong form.
VASKEL_AVX2 inline bool oddFours(const Utf8Block& b) {
    const __m256i negative = _mm256_cmpgt_epi8(_mm256_setzero_si256(), b.b0);
    const __m256i five = _mm256_and_si256(_mm256_cmpgt_epi8(b.b0, all8(0xF7)), negative);
    const __m256i low =
        _mm256_and_si256(_mm256_cmpeq_epi8(b.b0, all8(0xF0)), _mm256_cmpgt_epi8(all8(0x90), b.b1));
    return !isZero(_mm256_or_si256(five, low));
}

// Surrogate pairs by the kept formula: the high unit at the lead byte's place,
// the low one at the place behind it, whose third byte is the last of four.
//   high unit = 0xD800 | ((lead << 8 | c1 << 2 | c2 >> 4) - 0x40) & 0x3FF
// with c1 and c2 the first followers' six bits: the subtraction borrows from
// the lead's part where c1 < 0x10.
VASKEL_AVX2 inline void putPairs(const Utf8Block& b, __m256i four, __m256i fourBefore, Planes& p) {
    const __m256i c1 = _mm256_and_si256(b.b1, all8(0x3F));
    const __m256i top = _mm256_and_si256(_mm256_srli_epi16(b.b2, 4), all8(0x03));
    const __m256i part = _mm256_or_si256(_mm256_slli_epi16(c1, 2), top);
    const __m256i highLo = _mm256_sub_epi8(part, all8(0x40));
    const __m256i borrow = _mm256_cmpgt_epi8(all8(0x10), c1);
    const __m256i highHi =
        _mm256_or_si256(all8(0xD8), _mm256_and_si256(_mm256_add_epi8(b.b0, borrow), all8(0x03)));
    p.lo = _mm256_blendv_epi8(p.lo, highLo, four);
    p.hi = _mm256_blendv_epi8(p.hi, highHi, four);
    // The places of four, one further on.
    const __m256i crossing = _mm256_permute2x128_si256(fourBefore, four, 0x21);
    const __m256i low = _mm256_alignr_epi8(four, crossing, 15);
    p.lo = _mm256_blendv_epi8(p.lo, _mm256_and_si256(b.b2, all8(0x3F)), low);
    p.hi = _mm256_blendv_epi8(p.hi, all8(0xDC), low);
}

// Places 0..7 and 16..23 in a, the others in b, as 16-bit units.
template <bool kBig>
VASKEL_AVX2 inline void interleave(const Planes& p, __m256i& a, __m256i& b) {
    a = kBig ? _mm256_unpacklo_epi8(p.hi, p.lo) : _mm256_unpacklo_epi8(p.lo, p.hi);
    b = kBig ? _mm256_unpackhi_epi8(p.hi, p.lo) : _mm256_unpackhi_epi8(p.lo, p.hi);
}

template <bool kBig>
VASKEL_AVX2 inline void widenAscii16(__m256i b0, Byte* out) {
    const __m256i ordered = _mm256_permute4x64_epi64(b0, 0xD8);
    const __m256i zero = _mm256_setzero_si256();
    store(out, kBig ? _mm256_unpacklo_epi8(zero, ordered) : _mm256_unpacklo_epi8(ordered, zero));
    store(out + 32,
          kBig ? _mm256_unpackhi_epi8(zero, ordered) : _mm256_unpackhi_epi8(ordered, zero));
}

// A character that began in the block before and ends behind the last one
// taken is given back: in goes to its lead byte, place of which is the highest
// bit of leads.
inline int givenBack(std::uint32_t leads) { return 1 + std::countl_zero(leads); }

template <bool kBig>
VASKEL_AVX2 BlockStop utf8ToUtf16(const Byte* in, const Byte* last, Byte* out) {
    std::uint64_t carry = 0;
    std::uint32_t leads = 0, fours = 0;
    __m256i fourBefore = _mm256_setzero_si256();
    for (; in <= last; in += 32) {
        const __m256i b0 = load(in);
        const std::uint32_t high = mask8(b0);
        if (high == 0 && carry == 0) {
            widenAscii16<kBig>(b0, out);
            out += 64;
            continue;
        }
        const Utf8Block b = loadUtf8(in, b0, high);
        const std::uint64_t follow = followers(b, carry);
        if (static_cast<std::uint32_t>(follow) != b.cont) break;
        Planes p = valuesBelow10000(b);
        // Of all places only those of characters can have D8 to DF on top.
        const __m256i surrogate = _mm256_cmpeq_epi8(_mm256_and_si256(p.hi, all8(0xF8)), all8(0xD8));
        if (!isZero(_mm256_or_si256(surrogate, overlong(b)))) break;
        std::uint32_t keep = ~b.cont;
        if ((b.four | fours >> 31) != 0) {
            if (oddFours(b)) break;
            const __m256i four = fourVector(b);
            putPairs(b, four, fourBefore, p);
            keep |= b.four << 1 | fours >> 31;
            fourBefore = four;
        } else {
            fourBefore = _mm256_setzero_si256();
        }
        leads = ~b.cont;
        fours = b.four;
        carry = follow >> 32;
        __m256i a, c;
        interleave<kBig>(p, a, c);
        out = storeKept16(a, c, keep, out);
    }
    if (carry == 0) return {in, out};
    // One unit was written for it, or two if four bytes began before the last
    // place.
    const int back = givenBack(leads);
    const bool pair = back > 1 && (fours >> (32 - back) & 1) != 0;
    return {in - back, out - (pair ? 4 : 2)};
}

// Eight units become eight values; above holds their bits from 16 on.
template <bool kBig>
VASKEL_AVX2 inline Byte* storeKept32(__m128i units, std::uint32_t keep, Byte* out) {
    const __m128i kept = _mm_shuffle_epi8(units, shuffle(kKeptUnits[keep]));
    const __m256i wide = _mm256_cvtepu16_epi32(kept);
    store(out, kBig ? _mm256_slli_epi32(wide, 16) : wide);
    return out + 4 * std::popcount(keep);
}

template <bool kBig>
VASKEL_AVX2 inline Byte* storeKept32(__m128i units, __m128i above, std::uint32_t keep, Byte* out) {
    const __m128i order = shuffle(kKeptUnits[keep]);
    const __m128i low = _mm_shuffle_epi8(units, order), high = _mm_shuffle_epi8(above, order);
    store(out, kBig ? _mm_unpacklo_epi16(high, low) : _mm_unpacklo_epi16(low, high));
    store(out + 16, kBig ? _mm_unpackhi_epi16(high, low) : _mm_unpackhi_epi16(low, high));
    return out + 4 * std::popcount(keep);
}

template <bool kBig>
VASKEL_AVX2 inline void widenAscii32(const Byte* in, Byte* out) {
    for (int i = 0; i < 4; ++i) {
        const __m256i wide =
            _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(in + 8 * i)));
        store(out + 32 * i, kBig ? _mm256_slli_epi32(wide, 24) : wide);
    }
}

template <bool kBig>
VASKEL_AVX2 BlockStop utf8ToUtf32(const Byte* in, const Byte* last, Byte* out) {
    std::uint64_t carry = 0;
    std::uint32_t leads = 0;
    for (; in <= last; in += 32) {
        const __m256i b0 = load(in);
        const std::uint32_t high = mask8(b0);
        if (high == 0 && carry == 0) {
            widenAscii32<kBig>(in, out);
            out += 128;
            continue;
        }
        const Utf8Block b = loadUtf8(in, b0, high);
        const std::uint64_t follow = followers(b, carry);
        if (static_cast<std::uint32_t>(follow) != b.cont) break;
        // Neither overlong forms nor surrogates differ from other values here.
        Planes p = valuesBelow10000(b);
        __m256i a, c;
        if (b.four == 0) {
            leads = ~b.cont;
            carry = follow >> 32;
            interleave<kBig>(p, a, c);
            out = storeKept32<kBig>(_mm256_castsi256_si128(a), leads & 0xFF, out);
            out = storeKept32<kBig>(_mm256_castsi256_si128(c), leads >> 8 & 0xFF, out);
            out = storeKept32<kBig>(_mm256_extracti128_si256(a, 1), leads >> 16 & 0xFF, out);
            out = storeKept32<kBig>(_mm256_extracti128_si256(c, 1), leads >> 24, out);
            continue;
        }
        const __m256i four = fourVector(b);
        if (!isZero(_mm256_and_si256(_mm256_cmpgt_epi8(b0, all8(0xF7)), four))) break;
        // A plane more: bits 16 to 20 from the lead byte and the first follower.
        const __m256i b3 = load(in + 3);
        const __m256i lo = _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi16(b.b2, 6), all8(0xC0)),
                                           _mm256_and_si256(b3, all8(0x3F)));
        const __m256i hi =
            _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi16(b.b1, 4), all8(0xF0)),
                            _mm256_and_si256(_mm256_srli_epi16(b.b2, 2), all8(0x0F)));
        const __m256i above =
            _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi16(b0, 2), all8(0x1C)),
                            _mm256_and_si256(_mm256_srli_epi16(b.b1, 4), all8(0x03)));
        p.lo = _mm256_blendv_epi8(p.lo, lo, four);
        p.hi = _mm256_blendv_epi8(p.hi, hi, four);
        const Planes top = {_mm256_and_si256(above, four), _mm256_setzero_si256()};
        leads = ~b.cont;
        carry = follow >> 32;
        interleave<kBig>(p, a, c);
        __m256i ta, tc;
        interleave<kBig>(top, ta, tc);
        out = storeKept32<kBig>(_mm256_castsi256_si128(a), _mm256_castsi256_si128(ta), leads & 0xFF,
                                out);
        out = storeKept32<kBig>(_mm256_castsi256_si128(c), _mm256_castsi256_si128(tc),
                                leads >> 8 & 0xFF, out);
        out = storeKept32<kBig>(_mm256_extracti128_si256(a, 1), _mm256_extracti128_si256(ta, 1),
                                leads >> 16 & 0xFF, out);
        out = storeKept32<kBig>(_mm256_extracti128_si256(c, 1), _mm256_extracti128_si256(tc, 1),
                                leads >> 24, out);
    }
    if (carry == 0) return {in, out};
    return {in - givenBack(leads), out - 4};
}

}  // namespace

constexpr UnicodeBlocks kBlocksAvx2 = {
    .utf8ToUtf16 = {utf8ToUtf16<false>, utf8ToUtf16<true>},
    .utf8ToUtf32 = {utf8ToUtf32<false>, utf8ToUtf32<true>},
    .utf16ToUtf8 = {utf16ToUtf8Avx2<false>, utf16ToUtf8Avx2<true>},
    .utf16ToUtf32 = {{utf16ToUtf32Avx2<false, false>, utf16ToUtf32Avx2<false, true>},
                     {utf16ToUtf32Avx2<true, false>, utf16ToUtf32Avx2<true, true>}},
    .utf32ToUtf8 = {utf32ToUtf8Avx2<false>, utf32ToUtf8Avx2<true>},
    .utf32ToUtf16 = {{utf32ToUtf16Avx2<false, false>, utf32ToUtf16Avx2<false, true>},
                     {utf32ToUtf16Avx2<true, false>, utf32ToUtf16Avx2<true, true>}},
    .size16 = size16Avx2,
    .size32 = size32Avx2,
    .utf8Units16 = utf8Units16Avx2,
    .utf8Units32 = utf8Units32Avx2,
    .utf16Bytes8 = {utf16Bytes8Avx2<false>, utf16Bytes8Avx2<true>},
    .utf16Units32 = {utf16Units32Avx2<false>, utf16Units32Avx2<true>},
    .utf32Bytes8 = {utf32Bytes8Avx2<false>, utf32Bytes8Avx2<true>},
    .utf32Units16 = {utf32Units16Avx2<false>, utf32Units16Avx2<true>},
};

const UnicodeForm kUnicodeAvx2 = OnePassForm<kBlocksAvx2>::named("AVX2");

}  // namespace Vaskel

#endif
