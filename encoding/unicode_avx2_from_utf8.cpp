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

#include "encoding/unicode_avx2_threes.h"

#if defined(__x86_64__)

namespace Vaskel {
namespace {

// The values at the places of a block, as two planes of bytes.
struct Planes {
    __m256i lo, hi;
};

// The constants, a row of equal bytes each. Left to the compiler, one that is
// not in a register is made anew in every turn, by three instructions.
// clang-format off
enum ByteRow { k03, k07, k0F, k10, k1C, k3F, k40, k90, kA0, kC0,
               kD8, kDC, kDF, kE0, kEF, kF0, kF7, kF8, kFE };
// clang-format on
constexpr Byte kBytes[] = {0x03, 0x07, 0x0F, 0x10, 0x1C, 0x3F, 0x40, 0x90, 0xA0, 0xC0,
                           0xD8, 0xDC, 0xDF, 0xE0, 0xEF, 0xF0, 0xF7, 0xF8, 0xFE};

struct alignas(32) Rows {
    Byte bytes[std::size(kBytes)][32] = {};
};
constexpr Rows makeRows() {
    Rows rows;
    for (std::size_t i = 0; i < std::size(kBytes); ++i)
        for (Byte& byte : rows.bytes[i]) byte = kBytes[i];
    return rows;
}
constexpr Rows kRows = makeRows();

class Constants {
 public:
    Constants() : mRows(kRows.bytes) { __asm__("" : "+r"(mRows)); }
    VASKEL_AVX2 __m256i operator[](ByteRow row) const { return load(mRows[row]); }

 private:
    const Byte (*mRows)[32];  // the compiler does not know that it is kRows
};

// ---- Output -----------------------------------------------------------------

// Places 0..7 and 16..23 in a, the others in b, as 16-bit units.
VASKEL_AVX2 inline void interleave(const Planes& p, __m256i& a, __m256i& b) {
    a = _mm256_unpacklo_epi8(p.lo, p.hi);
    b = _mm256_unpackhi_epi8(p.lo, p.hi);
}

VASKEL_AVX2 inline Byte* storeKept32(__m128i units, std::uint32_t keep, __m256i order, Byte* out) {
    const __m256i wide =
        _mm256_cvtepu16_epi32(_mm_shuffle_epi8(units, shuffle(gUnicodeTables.keptUnits[keep])));
    store(out, ordered(wide, order));
    return out + 4 * popcount(keep);
}

VASKEL_AVX2 inline Byte* storeKept32(__m128i units, __m128i above, std::uint32_t keep,
                                     __m256i order, Byte* out) {
    const __m128i shuffled = shuffle(gUnicodeTables.keptUnits[keep]);
    const __m256i low = _mm256_cvtepu16_epi32(_mm_shuffle_epi8(units, shuffled));
    const __m256i high = _mm256_cvtepu16_epi32(_mm_shuffle_epi8(above, shuffled));
    store(out, ordered(_mm256_or_si256(low, _mm256_slli_epi32(high, 16)), order));
    return out + 4 * popcount(keep);
}

// The places of keep, as units or values.
template <bool kWide>
VASKEL_AVX2 inline Byte* storePlanes(const Planes& p, std::uint32_t keep, __m256i order,
                                     Byte* out) {
    __m256i a, b;
    interleave(p, a, b);
    if (!kWide) return storeKept16(ordered(a, order), ordered(b, order), keep, out);
    out = storeKept32(_mm256_castsi256_si128(a), keep & 0xFF, order, out);
    out = storeKept32(_mm256_castsi256_si128(b), keep >> 8 & 0xFF, order, out);
    out = storeKept32(_mm256_extracti128_si256(a, 1), keep >> 16 & 0xFF, order, out);
    return storeKept32(_mm256_extracti128_si256(b, 1), keep >> 24, order, out);
}

// The same for values with bits from 16 on, which are in top.
VASKEL_AVX2 inline Byte* storePlanes(const Planes& p, __m256i top, std::uint32_t keep,
                                     __m256i order, Byte* out) {
    __m256i a, b, ta, tb;
    interleave(p, a, b);
    interleave({top, _mm256_setzero_si256()}, ta, tb);
    const auto lower = [](__m256i v) VASKEL_AVX2 { return _mm256_castsi256_si128(v); };
    const auto upper = [](__m256i v) VASKEL_AVX2 { return _mm256_extracti128_si256(v, 1); };
    out = storeKept32(lower(a), lower(ta), keep & 0xFF, order, out);
    out = storeKept32(lower(b), lower(tb), keep >> 8 & 0xFF, order, out);
    out = storeKept32(upper(a), upper(ta), keep >> 16 & 0xFF, order, out);
    return storeKept32(upper(b), upper(tb), keep >> 24, order, out);
}

template <bool kWide>
VASKEL_AVX2 inline Byte* storeAscii(const Byte* in, __m256i b0, __m256i order, Byte* out) {
    if (!kWide) {
        const __m256i low = _mm256_cvtepu8_epi16(_mm256_castsi256_si128(b0));
        store(out, ordered(low, order));
        const __m256i high = _mm256_cvtepu8_epi16(_mm256_extracti128_si256(b0, 1));
        store(out + 32, ordered(high, order));
        return out + 64;
    }
    for (int i = 0; i < 4; ++i, out += 32) {
        const __m256i wide =
            _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(in + 8 * i)));
        store(out, ordered(wide, order));
    }
    return out;
}

// ---- Values -----------------------------------------------------------------

// Where no byte is above DF: what a lead byte exceeds C0 by, and six bits.
VASKEL_AVX2 inline Planes valuesBelow800(__m256i b0, __m256i b1, const Constants& k) {
    const __m256i lead = _mm256_subs_epu8(b0, k[kC0]);  // 0 for ASCII
    const __m256i lo = _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi16(lead, 6), k[kC0]),
                                       _mm256_and_si256(b1, k[k3F]));
    return {_mm256_blendv_epi8(b0, lo, b0), _mm256_and_si256(_mm256_srli_epi16(lead, 2), k[k07])};
}

// The last two bytes of two or three are x and y; the lower plane has two bits
// of x and six of y, the upper one four bits of x and, of three, those of the
// lead byte. three is set from E0 on, and for ASCII, which stays as it is.
VASKEL_AVX2 inline Planes valuesBelow10000(__m256i b0, __m256i b1, __m256i b2, __m256i three,
                                           const Constants& k) {
    const __m256i x = _mm256_blendv_epi8(b0, b1, three);
    const __m256i y = _mm256_blendv_epi8(b1, b2, three);
    const __m256i lo = _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi16(x, 6), k[kC0]),
                                       _mm256_and_si256(y, k[k3F]));
    const __m256i lead = _mm256_and_si256(_mm256_slli_epi16(b0, 4), k[kF0]);
    const __m256i hi = _mm256_or_si256(_mm256_and_si256(_mm256_srli_epi16(x, 2), k[k0F]),
                                       _mm256_and_si256(lead, three));
    return {_mm256_blendv_epi8(b0, lo, b0), _mm256_blendv_epi8(_mm256_setzero_si256(), hi, b0)};
}

// Surrogates, and where C0, C1, or E0 with a follower below A0 begin an
// overlong form: some of these are zeros. Of all places only those of
// characters can have D8 to DF in the upper plane.
VASKEL_AVX2 inline __m256i apart(__m256i b0, __m256i b1, const Planes& p, const Constants& k) {
    const __m256i two = _mm256_cmpeq_epi8(_mm256_and_si256(b0, k[kFE]), k[kC0]);
    const __m256i three =
        _mm256_and_si256(_mm256_cmpeq_epi8(b0, k[kE0]), _mm256_cmpgt_epi8(k[kA0], b1));
    const __m256i surrogates = _mm256_cmpeq_epi8(_mm256_and_si256(p.hi, k[kF8]), k[kD8]);
    return _mm256_or_si256(surrogates, _mm256_or_si256(two, three));
}

// Whether a block with bytes >= 0xF0 (fours) holds one >= 0xF8, or F0 with a
// follower below 90: an overlong form.
VASKEL_AVX2 inline bool oddFours(__m256i b0, __m256i b1, __m256i fours, const Constants& k) {
    const __m256i five = _mm256_cmpgt_epi8(b0, k[kF7]);
    const __m256i low =
        _mm256_and_si256(_mm256_cmpeq_epi8(b0, k[kF0]), _mm256_cmpgt_epi8(k[k90], b1));
    return !isZero(_mm256_and_si256(fours, _mm256_or_si256(five, low)));
}

// Surrogate pairs by the kept formula: the high unit at the lead byte's place,
// the low one at the place behind it, whose third byte is the last of four.
//   high unit = 0xD800 | ((lead << 8 | c1 << 2 | c2 >> 4) - 0x40) & 0x3FF
// with c1 and c2 the first followers' six bits: the subtraction borrows from
// the lead's part where c1 < 0x10.
VASKEL_AVX2 inline void putPairs(__m256i b0, __m256i b1, __m256i b2, __m256i fours,
                                 __m256i foursBefore, const Constants& k, Planes& p) {
    const __m256i c1 = _mm256_and_si256(b1, k[k3F]);
    const __m256i c2Top = _mm256_and_si256(_mm256_srli_epi16(b2, 4), k[k03]);
    const __m256i highLo =
        _mm256_sub_epi8(_mm256_or_si256(_mm256_slli_epi16(c1, 2), c2Top), k[k40]);
    const __m256i borrow = _mm256_cmpgt_epi8(k[k10], c1);
    const __m256i highHi =
        _mm256_or_si256(k[kD8], _mm256_and_si256(_mm256_add_epi8(b0, borrow), k[k03]));
    p.lo = _mm256_blendv_epi8(p.lo, highLo, fours);
    p.hi = _mm256_blendv_epi8(p.hi, highHi, fours);
    // The places of fours, one further on.
    const __m256i crossing = _mm256_permute2x128_si256(foursBefore, fours, 0x21);
    const __m256i low = _mm256_alignr_epi8(fours, crossing, 15);
    p.lo = _mm256_blendv_epi8(p.lo, _mm256_and_si256(b2, k[k3F]), low);
    p.hi = _mm256_blendv_epi8(p.hi, k[kDC], low);
}

// Values of four bytes into the planes; their bits from 16 on.
VASKEL_AVX2 inline __m256i putFours(__m256i b0, __m256i b1, __m256i b2, __m256i b3, __m256i fours,
                                    const Constants& k, Planes& p) {
    const __m256i lo = _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi16(b2, 6), k[kC0]),
                                       _mm256_and_si256(b3, k[k3F]));
    const __m256i hi = _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi16(b1, 4), k[kF0]),
                                       _mm256_and_si256(_mm256_srli_epi16(b2, 2), k[k0F]));
    const __m256i top = _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi16(b0, 2), k[k1C]),
                                        _mm256_and_si256(_mm256_srli_epi16(b1, 4), k[k03]));
    p.lo = _mm256_blendv_epi8(p.lo, lo, fours);
    p.hi = _mm256_blendv_epi8(p.hi, hi, fours);
    return _mm256_and_si256(top, fours);
}

// ---- The loop ---------------------------------------------------------------

// How many bytes to go back to the character that leads' highest bit begins.
inline unsigned backToLead(std::uint32_t leads) {
    return 1 + static_cast<unsigned>(std::countl_zero(leads));
}

template <bool kWide>
VASKEL_AVX2 BlockStop fromUtf8(const Byte* in, const Byte* last, const Byte*, Byte* out,
                               ByteOrders orders) {
    const Constants k;
    const __m256i order = kWide ? unitOrder32(orders.big) : unitOrder16(orders.big);
    std::uint64_t carry = 0;             // the first bytes here that follow a lead byte before
    std::uint32_t leads = 0, fours = 0;  // of the block before
    __m256i foursBefore = _mm256_setzero_si256();
    while (in <= last) {
        const __m256i b0 = load(in);
        const std::uint32_t high = mask8(b0);
        if (high == 0 && carry == 0) {
            out = storeAscii<kWide>(in, b0, order, out);
            in += 32;
            continue;
        }
        const std::uint32_t cont = mask8(_mm256_cmpgt_epi8(k[kC0], b0));
        const std::uint32_t two = high & ~cont;
        const __m256i threeV = _mm256_cmpgt_epi8(b0, k[kDF]);
        const std::uint32_t three = mask8(threeV) & high;
        const __m256i b1 = load(in + 1);
        if ((three | fours >> 31) == 0) {
            const std::uint64_t follow = carry | std::uint64_t{two} << 1;
            std::uint32_t wrong = static_cast<std::uint32_t>(follow) ^ cont;
            if (!kWide) wrong |= mask8(_mm256_cmpeq_epi8(_mm256_and_si256(b0, k[kFE]), k[kC0]));
            if (wrong != 0) break;
            leads = ~cont;
            fours = 0;
            carry = follow >> 32;
            out = storePlanes<kWide>(valuesBelow800(b0, b1, k), leads, order, out);
            in += 32;
            continue;
        }
        const std::uint32_t four = mask8(_mm256_cmpgt_epi8(b0, k[kEF])) & high;
        const std::uint64_t follow =
            carry | std::uint64_t{two} << 1 | std::uint64_t{three} << 2 | std::uint64_t{four} << 3;
        if (static_cast<std::uint32_t>(follow) != cont) break;
        const std::size_t skipped = popcount(static_cast<std::uint32_t>(carry));
        if ((three >> skipped & 0xFFFFFF) == 0x249249 && (four | fours >> 31) == 0) {
            // Threes only, from the first character that begins here on.
            const BlockStop stop = threesRun<kWide>(in + skipped, last, orders.big, order, out);
            if (stop.in != in + skipped) {
                in = stop.in;
                out = stop.out;
                carry = 0;
                continue;
            }
        }
        const __m256i b2 = load(in + 2);
        Planes p = valuesBelow10000(b0, b1, b2, threeV, k);
        if (!kWide && !isZero(apart(b0, b1, p, k))) break;
        if ((four | fours >> 31) == 0) {
            out = storePlanes<kWide>(p, ~cont, order, out);
        } else {
            const __m256i foursV = _mm256_and_si256(_mm256_cmpgt_epi8(b0, k[kEF]),
                                                    _mm256_cmpgt_epi8(_mm256_setzero_si256(), b0));
            if (oddFours(b0, b1, foursV, k)) break;
            if (kWide) {
                const __m256i top = putFours(b0, b1, b2, load(in + 3), foursV, k, p);
                out = storePlanes(p, top, ~cont, order, out);
            } else {
                putPairs(b0, b1, b2, foursV, foursBefore, k, p);
                out = storePlanes<kWide>(p, ~cont | four << 1 | fours >> 31, order, out);
                foursBefore = foursV;
            }
        }
        leads = ~cont;
        fours = kWide ? 0 : four;
        carry = follow >> 32;
        in += 32;
    }
    if (carry == 0) return {in, out};
    // The character that goes on was written: one unit of it, two if it has
    // four bytes and began before the last place.
    const unsigned back = backToLead(leads);
    const bool pair = back > 1 && (fours >> (32 - back) & 1) != 0;
    return {in - back, out - (kWide || pair ? 4 : 2)};
}

}  // namespace

constexpr UnicodeBlocks kBlocksAvx2 = {
    .utf8ToUtf16 = fromUtf8<false>,
    .utf8ToUtf32 = fromUtf8<true>,
    .utf16ToUtf8 = utf16ToUtf8Avx2,
    .utf16ToUtf32 = utf16ToUtf32Avx2,
    .utf32ToUtf8 = utf32ToUtf8Avx2,
    .utf32ToUtf16 = utf32ToUtf16Avx2,
    .size8 = size8Avx2,
    .size16 = size16Avx2,
    .size32 = size32Avx2,
    .ahead = kBlock + kBlockAhead,
};

const UnicodeForm kUnicodeAvx2 = OnePassForm<kBlocksAvx2>::named("AVX2");

}  // namespace Vaskel

#endif
