// Runs of UTF-8 characters of three bytes, for CPUs with AVX2: such text needs
// no search for the places where characters begin.
//
// Same results as the rules: bytes are taken only where all have the pattern of
// such a character, and none that the rules treat apart.

#ifndef ENCODING_UNICODE_AVX2_THREES_H
#define ENCODING_UNICODE_AVX2_THREES_H

#include "encoding/unicode_avx2.h"
#include "encoding/unicode_onepass.h"

#if defined(__x86_64__)

namespace Vaskel {

// Eight characters in 24 bytes as 32-bit lanes: third byte, second, first, 0.
VASKEL_AVX2 inline __m256i loadThrees(const Byte* in) {
    const __m256i bytes = _mm256_inserti128_si256(
        _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(in))),
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + 12)), 1);
    const __m256i order = _mm256_setr_epi8(2, 1, 0, -1, 5, 4, 3, -1, 8, 7, 6, -1, 11, 10, 9, -1, 2,
                                           1, 0, -1, 5, 4, 3, -1, 8, 7, 6, -1, 11, 10, 9, -1);
    return _mm256_shuffle_epi8(bytes, kept(order));
}

// In each lane, whether it is one.
VASKEL_AVX2 inline __m256i areThrees(__m256i threes) {
    const __m256i pattern = _mm256_and_si256(threes, all32(0x00F0C0C0));
    return _mm256_cmpeq_epi32(pattern, all32(0x00E08080));
}

VASKEL_AVX2 inline __m256i valuesOf(__m256i threes) {
    const __m256i bits = _mm256_and_si256(threes, all32(0x000F3F3F));
    const __m256i parts = _mm256_maddubs_epi16(bits, all32(0x00014001));  // 64 * second + third
    return _mm256_madd_epi16(parts, all32(0x10000001));                   // + 4096 * first
}

// Units that the rules treat apart: surrogates, and overlong ones.
VASKEL_AVX2 inline __m256i areApart(__m256i units) {
    const __m256i top = _mm256_and_si256(units, all16(0xF800));
    return _mm256_or_si256(_mm256_cmpeq_epi16(top, all16(0xD800)),
                           _mm256_cmpeq_epi16(top, _mm256_setzero_si256()));
}

// Sixteen characters of three bytes; false if they are not.
template <bool kWide>
VASKEL_AVX2 inline bool storeSixteen(const Byte* in, __m256i order, Byte* out) {
    const __m256i a = loadThrees(in), b = loadThrees(in + 24);
    if (mask8(_mm256_and_si256(areThrees(a), areThrees(b))) != 0xFFFFFFFF) return false;
    if (kWide) {
        store(out, ordered(valuesOf(a), order));
        store(out + 32, ordered(valuesOf(b), order));
        return true;
    }
    const __m256i units = _mm256_packus_epi32(valuesOf(a), valuesOf(b));
    if (!isZero(areApart(units))) return false;
    store(out, _mm256_permute4x64_epi64(ordered(units, order), 0xD8));
    return true;
}

// From in on, characters of three bytes and single ASCII ones among them as
// long as they begin at or before last. Stops in front of any other, of one
// that the rules treat apart, and where less than two of three bytes come
// together.
template <bool kWide>
VASKEL_AVX2 inline BlockStop threesRun(const Byte* in, const Byte* last, bool big, __m256i order,
                                       Byte* out) {
    while (in <= last) {
        if (last - in >= 24 && storeSixteen<kWide>(in, order, out)) {
            in += 48;
            out += kWide ? 64 : 32;
            continue;
        }
        const __m256i threes = loadThrees(in), values = valuesOf(threes);
        std::uint32_t good = mask8(areThrees(threes));  // four bits each
        // All eight are written; those behind the first that is none are written
        // over.
        if (kWide) {
            store(out, ordered(values, order));
        } else {
            const __m256i units = _mm256_packus_epi32(values, values);
            good &= ~mask8(_mm256_unpacklo_epi16(areApart(units), areApart(units)));
            store(out,
                  _mm256_castsi256_si128(_mm256_permute4x64_epi64(ordered(units, order), 0x08)));
        }
        const auto count = static_cast<unsigned>(std::countr_one(good)) / 4;
        if (count < 2) break;
        in += 3 * count;
        out += (kWide ? 4 : 2) * count;
        if (count == 8) continue;
        if (*in >= 0x80 || in > last) break;
        if (kWide)
            put32(out, *in++, big);
        else
            put16(out, *in++, big);
    }
    return {in, out};
}

}  // namespace Vaskel

#endif
#endif
