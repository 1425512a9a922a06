// What the AVX2 form of the Unicode conversions is built of: small steps on
// vectors, and the functions of its several sources.
//
// Instructions come by attribute, function by function: compiled with flags
// for a whole file, shared inline functions could end up wide in every caller.

#ifndef ENCODING_UNICODE_AVX2_H
#define ENCODING_UNICODE_AVX2_H

#if defined(__x86_64__)

#include <immintrin.h>

#include <bit>
#include <cstdint>

#include "encoding/unicode_blocks.h"
#include "encoding/unicode_tables.h"

#define VASKEL_AVX2 __attribute__((target("avx2,popcnt")))

namespace Vaskel {

using Byte = unsigned char;

VASKEL_AVX2 inline __m256i load(const Byte* at) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at));
}
VASKEL_AVX2 inline void store(Byte* at, __m256i v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(at), v);
}
VASKEL_AVX2 inline void store(Byte* at, __m128i v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(at), v);
}

VASKEL_AVX2 inline __m256i all8(unsigned value) {
    return _mm256_set1_epi8(static_cast<char>(value));
}
VASKEL_AVX2 inline __m256i all16(unsigned value) {
    return _mm256_set1_epi16(static_cast<short>(value));
}
VASKEL_AVX2 inline __m256i all32(unsigned value) {
    return _mm256_set1_epi32(static_cast<int>(value));
}

/// The number of bits set, as an offset.
VASKEL_AVX2 inline std::size_t popcount(std::uint32_t bits) {
    return static_cast<std::size_t>(static_cast<unsigned>(std::popcount(bits)));
}

/// v, of which the compiler knows nothing. It would rather make a constant anew
/// in every turn of a loop, by three instructions, than keep or load it.
VASKEL_AVX2 inline __m256i kept(__m256i v) {
    __asm__("" : "+x"(v));
    return v;
}

/// The top bit of each byte.
VASKEL_AVX2 inline std::uint32_t mask8(__m256i v) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(v));
}
/// The top bit of each 32-bit lane.
VASKEL_AVX2 inline std::uint32_t mask32(__m256i v) {
    return static_cast<std::uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(v)));
}
VASKEL_AVX2 inline bool isZero(__m256i v) { return _mm256_testz_si256(v, v) != 0; }

VASKEL_AVX2 inline __m128i shuffle(const Shuffle& order) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(order.data()));
}
VASKEL_AVX2 inline __m256i shuffles(const Shuffle& low, const Shuffle& high) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(shuffle(low)), shuffle(high), 1);
}

/// Writes the 16-bit units of a's low half, b's low, a's high and b's high
/// whose bit in keep is set, lowest first.
VASKEL_AVX2 inline Byte* storeKept16(__m256i a, __m256i b, std::uint32_t keep, Byte* out) {
    const std::uint32_t k0 = keep & 0xFF, k1 = keep >> 8 & 0xFF, k2 = keep >> 16 & 0xFF,
                        k3 = keep >> 24;
    a = _mm256_shuffle_epi8(a,
                            shuffles(gUnicodeTables.keptUnits[k0], gUnicodeTables.keptUnits[k2]));
    b = _mm256_shuffle_epi8(b,
                            shuffles(gUnicodeTables.keptUnits[k1], gUnicodeTables.keptUnits[k3]));
    store(out, _mm256_castsi256_si128(a));
    out += 2 * popcount(k0);
    store(out, _mm256_castsi256_si128(b));
    out += 2 * popcount(k1);
    store(out, _mm256_extracti128_si256(a, 1));
    out += 2 * popcount(k2);
    store(out, _mm256_extracti128_si256(b, 1));
    return out + 2 * popcount(k3);
}

/// Where units, masked, are bits.
VASKEL_AVX2 inline __m256i are16(__m256i units, unsigned mask, unsigned bits) {
    return _mm256_cmpeq_epi16(_mm256_and_si256(units, all16(mask)), all16(bits));
}
VASKEL_AVX2 inline __m256i are32(__m256i values, unsigned mask, unsigned bits) {
    return _mm256_cmpeq_epi32(_mm256_and_si256(values, all32(mask)), all32(bits));
}

/// Whether every high surrogate is followed by a low one, and no low one comes
/// without. carry has the two bits of a high one at the end of the block
/// before, and gets those of this block.
VASKEL_AVX2 inline bool paired(__m256i units, std::uint32_t& carry) {
    const std::uint32_t high = mask8(are16(units, 0xFC00, 0xD800));
    const std::uint32_t low = mask8(are16(units, 0xFC00, 0xDC00));
    if ((high << 2 | carry) != low) return false;
    carry = high >> 30;
    return true;
}

/// Shuffles between units in the machine's byte order and in another one; one
/// that changes nothing costs less than a second copy of a loop.
VASKEL_AVX2 inline __m256i unitOrder16(bool big) {
    const __m256i order = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
    return _mm256_xor_si256(order, all8(big ? 1 : 0));
}
VASKEL_AVX2 inline __m256i unitOrder32(bool big) {
    return _mm256_xor_si256(unitOrder16(false), all8(big ? 3 : 0));
}
VASKEL_AVX2 inline __m256i ordered(__m256i units, __m256i order) {
    return _mm256_shuffle_epi8(units, order);
}

// ---- unicode_avx2_to_utf8.cpp, unicode_avx2_units.cpp --------------------------

BlockStop utf16ToUtf8Avx2(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                          ByteOrders orders);
BlockStop utf16ToUtf32Avx2(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                           ByteOrders orders);
BlockStop utf32ToUtf8Avx2(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                          ByteOrders orders);
BlockStop utf32ToUtf16Avx2(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                           ByteOrders orders);

// ---- unicode_avx2_size.cpp -----------------------------------------------------

VASKEL_AVX2 std::size_t size8Avx2(const Byte* text);
VASKEL_AVX2 std::size_t size16Avx2(const Byte* text);
VASKEL_AVX2 std::size_t size32Avx2(const Byte* text);

}  // namespace Vaskel

#endif
#endif
