// What the AVX-512 form of the Unicode conversions is built of: values of 16
// characters at a time, a 32-bit lane each, and how they are written.
//
// Lanes that hold no character are zero, which no character of a text is: bytes
// and units that are zero are left out of what is written, so that neither the
// length of a character nor the end of a text needs a case of its own.
//
// Instructions come by attribute, function by function, as in unicode_avx2.h.

#ifndef ENCODING_UNICODE_AVX512_H
#define ENCODING_UNICODE_AVX512_H

#if defined(__x86_64__)

#include <bit>
#include <cstdint>

#include "encoding/unicode_blocks.h"
#include "util/avx512.h"

#define VASKEL_AVX512                                                                            \
    __attribute__((                                                                              \
        target("avx2,avx512f,avx512bw,avx512cd,avx512vl,avx512vbmi,avx512vbmi2,bmi,bmi2,popcnt," \
               "lzcnt")))

namespace Vaskel::Avx512 {

using Byte = unsigned char;

VASKEL_AVX512 inline __m512i all8(unsigned value) {
    return _mm512_set1_epi8(static_cast<char>(value));
}
VASKEL_AVX512 inline __m512i all16(unsigned value) {
    return _mm512_set1_epi16(static_cast<short>(value));
}
VASKEL_AVX512 inline __m512i all32(unsigned value) {
    return _mm512_set1_epi32(static_cast<int>(value));
}

/// A number everywhere that is made once a text. The compiler would make it anew in
/// every block, which takes the port that shuffles wait for, if it knew what it is.
VASKEL_AVX512 inline __m512i kept(__m512i all) {
    __asm__("" : "+v"(all));
    return all;
}
VASKEL_AVX512 inline __m512i kept8(unsigned value) { return kept(all8(value)); }
VASKEL_AVX512 inline __m512i kept16(unsigned value) { return kept(all16(value)); }
VASKEL_AVX512 inline __m512i kept32(unsigned value) { return kept(all32(value)); }

/// The bits of a where mask has them, else those of b.
VASKEL_AVX512 inline __m512i choose(__m512i mask, __m512i a, __m512i b) {
    return _mm512_ternarylogic_epi32(mask, a, b, 0xCA);
}
/// a & mask | bits.
VASKEL_AVX512 inline __m512i andOr(__m512i a, __m512i mask, __m512i bits) {
    return _mm512_ternarylogic_epi32(a, mask, bits, 0xEA);
}

/// The lowest bits, all 64 from a count of 64 on.
VASKEL_AVX512 inline std::uint64_t lowBits(std::size_t count) {
    return count < 64 ? _bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(count))
                      : ~std::uint64_t{0};
}
VASKEL_AVX512 inline __mmask32 low32(std::size_t count) {
    return static_cast<__mmask32>(lowBits(count));
}
VASKEL_AVX512 inline __mmask16 low16(std::size_t count) {
    return static_cast<__mmask16>(lowBits(count));
}
VASKEL_AVX512 inline std::size_t popcount(std::uint64_t bits) {
    return static_cast<std::size_t>(static_cast<unsigned>(std::popcount(bits)));
}

/// A mask in a general register. The compiler would rather fetch it from the mask
/// register once more wherever it is used, each time in the way of a vector's shift.
VASKEL_AVX512 inline std::uint64_t bitsOf(__mmask64 mask) {
    std::uint64_t bits = mask;
    __asm__("" : "+r"(bits));
    return bits;
}

VASKEL_AVX512 inline void store(Byte* at, __m512i v) { _mm512_storeu_si512(at, v); }
VASKEL_AVX512 inline void store(Byte* at, __m256i v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(at), v);
}

/// Asks for what is read soon: of texts larger than the caches, what is behind
/// the end of a page does not come by itself.
VASKEL_AVX512 inline void expect(const Byte* in) { _mm_prefetch(in + 2048, _MM_HINT_T0); }

/// Shuffles between units in the machine's byte order and in another one.
VASKEL_AVX512 inline __m512i unitOrder16(bool big) {
    const __m512i order = _mm512_set4_epi32(0x0F0E0D0C, 0x0B0A0908, 0x07060504, 0x03020100);
    return big ? _mm512_xor_si512(order, all8(1)) : order;
}
VASKEL_AVX512 inline __m512i unitOrder32(bool big) {
    const __m512i order = _mm512_set4_epi32(0x0F0E0D0C, 0x0B0A0908, 0x07060504, 0x03020100);
    return big ? _mm512_xor_si512(order, all8(3)) : order;
}

/// A number as units in another byte order have it.
constexpr unsigned as16(unsigned value, bool big) {
    return big ? (value & 0xFF) << 8 | value >> 8 : value;
}
constexpr unsigned as32(unsigned value, bool big) {
    return big ? as16(value & 0xFFFF, true) << 16 | as16(value >> 16, true) : value;
}

VASKEL_AVX512 inline __m512i lowHalf(__m512i units) {
    return _mm512_cvtepu16_epi32(_mm512_castsi512_si256(units));
}
VASKEL_AVX512 inline __m512i highHalf(__m512i units) {
    return _mm512_cvtepu16_epi32(_mm512_extracti64x4_epi64(units, 1));
}

VASKEL_AVX512 inline __mmask16 areSurrogates(__m512i values) {
    return _mm512_cmpeq_epi32_mask(_mm512_and_si512(values, all32(0xFFFFF800)), all32(0xD800));
}

/// Zero where a value is a surrogate or, as an overlong form makes it, zero.
VASKEL_AVX512 inline __m512i zeroIfApart(__m512i values) {
    // values & F800, less the bits of a surrogate
    const __m512i top = _mm512_ternarylogic_epi32(values, kept32(0xFFFFF800), kept32(0xD800), 0x6A);
    return _mm512_min_epu32(values, top);
}

/// Values below 200000 as UTF-16 units, from 10000 on by the kept formula, with
/// the low unit in the upper half of a lane. None of the units is zero.
VASKEL_AVX512 inline __m512i utf16Of(__m512i values, __mmask32& keep) {
    const __mmask16 wide = _mm512_cmpge_epu32_mask(values, kept32(0x10000));
    // High unit: bits 10 to 20, less 0x40, of which ten bits count.
    const __m512i high = _mm512_sub_epi32(_mm512_srli_epi32(values, 10), kept32(0x40));
    const __m512i low = _mm512_slli_epi32(values, 16);
    const __m512i both = choose(kept32(0xFFFF), high, low);
    const __m512i pair = andOr(both, kept32(0x003F03FF), kept32(0xDC00D800));
    const __m512i units = _mm512_mask_mov_epi32(values, wide, pair);
    keep = _mm512_test_epi16_mask(units, units);
    return _mm512_maskz_compress_epi16(keep, units);
}

VASKEL_AVX512 inline Byte* putUnits16(__m512i values, __m512i order, Byte* out) {
    __mmask32 keep;
    store(out, _mm512_shuffle_epi8(utf16Of(values, keep), order));
    return out + 2 * popcount(keep);
}

/// How values become UTF-8, by their leading zero bits: what is set in their
/// four bytes, of which the last ones are kept.
struct Utf8Tags {
    std::uint32_t tags[32] = {};
    constexpr Utf8Tags() {
        for (int zeros = 11; zeros < 16; ++zeros) tags[zeros] = 0x808080F0;
        for (int zeros = 16; zeros < 21; ++zeros) tags[zeros] = 0x8080E000;
        for (int zeros = 21; zeros < 25; ++zeros) tags[zeros] = 0x80C00000;
    }
};
alignas(64) inline constexpr Utf8Tags kUtf8Tags;

/// Values below 200000 as UTF-8.
VASKEL_AVX512 inline __m512i utf8Of(__m512i values, __mmask64& keep) {
    // From each value the bits from 18, 12, 6 and 0 on, in this order.
    const __m512i offsets = kept(_mm512_set1_epi64(0x20262C3200060C12));
    const __m512i sixes = _mm512_multishift_epi64_epi8(offsets, values);
    const __m512i tags =
        _mm512_permutex2var_epi32(_mm512_load_si512(kUtf8Tags.tags), _mm512_lzcnt_epi32(values),
                                  _mm512_load_si512(kUtf8Tags.tags + 16));
    const __mmask16 ascii = _mm512_cmplt_epu32_mask(values, kept32(0x80));
    const __m512i bytes =
        _mm512_mask_slli_epi32(andOr(sixes, kept32(0x3F3F3F3F), tags), ascii, values, 24);
    keep = _mm512_test_epi8_mask(bytes, bytes);
    return _mm512_maskz_compress_epi8(keep, bytes);
}

VASKEL_AVX512 inline Byte* putUtf8(__m512i values, Byte* out) {
    __mmask64 keep;
    store(out, utf8Of(values, keep));
    return out + popcount(keep);
}

/// Units below 800 as UTF-8.
VASKEL_AVX512 inline __m512i utf8Below800(__m512i units, __mmask64& keep) {
    const __m512i lead = _mm512_srli_epi16(units, 6), last = _mm512_slli_epi16(units, 8);
    const __m512i two = andOr(choose(kept16(0xFF), lead, last), kept16(0x3F1F), kept16(0x80C0));
    const __mmask32 ascii = _mm512_cmplt_epu16_mask(units, kept16(0x80));
    const __m512i bytes = _mm512_mask_slli_epi16(two, ascii, units, 8);
    keep = _mm512_test_epi8_mask(bytes, bytes);
    return _mm512_maskz_compress_epi8(keep, bytes);
}

VASKEL_AVX512 inline Byte* putUtf8Below800(__m512i units, Byte* out) {
    __mmask64 keep;
    store(out, utf8Below800(units, keep));
    return out + popcount(keep);
}

/// Where to take the bytes of a vector from, or of two: groups of some bytes are taken
/// from those from every step-th byte on. Places behind the last one begin anew.
struct Places {
    Byte bytes[64] = {};
    constexpr Places(unsigned group, unsigned step, unsigned taken) {
        for (unsigned i = 0; i < 64; ++i)
            bytes[i] = static_cast<Byte>(i / group * step + i % group % taken);
    }
};
alignas(64) inline constexpr Places kPlaces(1, 1, 1), kLanes(4, 1, 1);

/// Takes bytes from places that differ from a table's in some bits, as those of
/// a unit in another byte order do.
VASKEL_AVX512 inline __m512i placesOf(const Places& table, unsigned flipped) {
    return _mm512_xor_si512(_mm512_load_si512(&table), all8(flipped));
}

/// Units in the machine's byte order, or not, as 32-bit values: the lower
/// sixteen, or the upper ones.
class Widen16 {
 public:
    VASKEL_AVX512 Widen16(bool inBig, bool big)
        : mLow(placesOf(kUnits, inBig != big ? 1 : 0)), mBytes(big ? kUpper : kUpper >> 2) {}
    VASKEL_AVX512 __m512i low(__m512i units) const {
        return _mm512_maskz_permutexvar_epi8(mBytes, mLow, units);
    }
    VASKEL_AVX512 __m512i high(__m512i units) const {
        return _mm512_maskz_permutexvar_epi8(mBytes, _mm512_add_epi8(mLow, all8(32)), units);
    }

 private:
    static constexpr std::uint64_t kUpper = 0xCCCCCCCCCCCCCCCC;
    alignas(64) static constexpr Places kUnits{4, 2, 2};
    __m512i mLow;
    __mmask64 mBytes;
};

/// The lower 16 bits of 32-bit values, or all of them if others are zero.
class Narrow32 {
 public:
    VASKEL_AVX512 Narrow32(bool inBig, bool big)
        : mPlaces(placesOf(kValues, (inBig ? 3 : 0) ^ (big ? 1 : 0))) {}
    VASKEL_AVX512 __m256i operator()(__m512i values) const {
        return _mm512_castsi512_si256(_mm512_permutexvar_epi8(mPlaces, values));
    }

 private:
    alignas(64) static constexpr Places kValues{2, 4, 2};
    __m512i mPlaces;
};

/// By the upper four bits of a lead byte: the bits of a character's value in
/// four bytes that begin with it. The last byte counts for characters of four
/// bytes only; for others, what its lower six bits lack is by how much the value
/// has to be shifted down, and the bits that are left there are shifted out.
struct ByLead {
    std::uint32_t bits[16] = {};
    constexpr ByLead() {
        for (unsigned lead = 0; lead < 16; ++lead) {
            const unsigned followers = lead < 0xC ? 0 : lead < 0xE ? 1 : lead - 0xC;
            const unsigned first = followers == 0 ? 0x7F : 0x3F >> followers;
            bits[lead] = first << 24 | 0x3F3F00 | (0x3F ^ (18 - 6 * followers));
        }
    }
};
alignas(64) inline constexpr ByLead kByLead;

/// The values of the characters that begin at those starts, a byte each, whose
/// numbers are in lanes; zero where none is there.
VASKEL_AVX512 inline __m512i valuesAt(__m512i block, __m512i starts, __m512i lanes,
                                      __mmask16 there) {
    // Four bytes from each start, the first one uppermost.
    const __m512i places = _mm512_permutexvar_epi8(lanes, starts);
    const __m512i raw = _mm512_permutexvar_epi8(_mm512_add_epi8(places, all32(0x00010203)), block);
    const __m512i bits =
        _mm512_permutexvar_epi32(_mm512_srli_epi32(raw, 28), _mm512_load_si512(kByLead.bits));
    const __m512i parts = _mm512_and_si512(raw, bits);
    const __m512i pairs = _mm512_maddubs_epi16(parts, all32(0x40014001));  // 64 * a + b
    const __m512i all = _mm512_madd_epi16(pairs, all32(0x10000001));       // 4096 * ab + cd
    return _mm512_maskz_srlv_epi32(there, all, _mm512_andnot_si512(bits, all32(0x3F)));
}

// ---- unicode_avx512_from_utf8.cpp, unicode_avx512_units.cpp ------------------------

BlockStop utf8ToUtf16(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                      ByteOrders orders);
BlockStop utf8ToUtf32(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                      ByteOrders orders);
BlockStop utf16ToUtf8(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                      ByteOrders orders);
BlockStop utf16ToUtf32(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                       ByteOrders orders);
BlockStop utf32ToUtf8(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                      ByteOrders orders);
BlockStop utf32ToUtf16(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                       ByteOrders orders);

}  // namespace Vaskel::Avx512

#endif
#endif
