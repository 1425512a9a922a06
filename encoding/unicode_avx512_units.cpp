// Unicode conversions for CPUs with AVX-512 and its byte shuffles: from UTF-16
// and UTF-32.
//
// Same results as the rules: every value comes from the rules' own formulas,
// and a text is found bad for what makes it bad under the rules, wherever in it
// that is. Nothing is read behind the text.

#include "encoding/unicode_avx512.h"

#if defined(__x86_64__)

#include <algorithm>

namespace Vaskel::Avx512 {
namespace {

// Sixteen values of which those in lanes are characters.
template <bool kWide>
VASKEL_AVX512 inline Byte* put(__m512i values, __mmask16 lanes, __m512i order, Byte* out) {
    if (!kWide) return putUtf8(_mm512_maskz_mov_epi32(lanes, values), out);
    store(out, _mm512_shuffle_epi8(_mm512_maskz_compress_epi32(lanes, values), order));
    return out + 4 * popcount(lanes);
}

// To UTF-32 or, not wide, to UTF-8.
template <bool kWide>
VASKEL_AVX512 BlockStop fromUtf16(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                                  ByteOrders orders) {
    const __m512i inOrder = unitOrder16(orders.inBig), order = unitOrder32(orders.big);
    while (in <= last) {
        const auto left = static_cast<std::size_t>(end - in) / 2;
        std::size_t count = std::min<std::size_t>(left, 32);
        const __m512i units =
            _mm512_shuffle_epi8(_mm512_maskz_loadu_epi16(low32(count), in), inOrder);
        const __mmask32 surrogates =
            _mm512_cmpeq_epi16_mask(_mm512_and_si512(units, all16(0xF800)), all16(0xD800));
        if (surrogates == 0) {
            if (kWide) {
                store(out, _mm512_shuffle_epi8(lowHalf(units), order));
                if (count > 16) store(out + 64, _mm512_shuffle_epi8(highHalf(units), order));
                out += 4 * count;
            } else if (_mm512_cmpge_epu16_mask(units, all16(0x80)) == 0) {
                store(out, _mm512_cvtepi16_epi8(units));
                out += count;
            } else if (_mm512_cmpge_epu16_mask(units, all16(0x800)) == 0) {
                out = putUtf8Below800(units, out);
            } else {
                out = putUtf8(lowHalf(units), out);
                if (count > 16) out = putUtf8(highHalf(units), out);
            }
            in += 2 * count;
            continue;
        }
        std::uint64_t high =
            _mm512_cmpeq_epi16_mask(_mm512_and_si512(units, all16(0xFC00)), all16(0xD800));
        // The other half of the last one may be in the next block.
        if (left > 32 && high >> 31 != 0) {
            high ^= std::uint64_t{1} << 31;
            count = 31;
        }
        const std::uint64_t low = (surrogates & low32(count)) ^ high;
        if (high << 1 != low) return {};
        // A pair is 0x190000 | (high & 0x3F) << 10 | (low & 0x3FF).
        const __m512i next =
            _mm512_shuffle_epi8(_mm512_maskz_loadu_epi16(low32(count) >> 1, in + 2), inOrder);
        const __m512i bits =
            _mm512_or_si512(_mm512_slli_epi16(units, 10), _mm512_and_si512(next, all16(0x3FF)));
        const __m512i values = _mm512_mask_mov_epi16(units, static_cast<__mmask32>(high), bits);
        const auto keep = static_cast<std::uint32_t>(low32(count) & ~low);
        const auto put16 = [&](__m512i half, unsigned from) VASKEL_AVX512 {
            const auto wide = static_cast<__mmask16>(high >> from);
            const auto lanes = static_cast<__mmask16>(keep >> from);
            half = _mm512_mask_or_epi32(half, wide, half, all32(0x190000));
            out = put<kWide>(half, lanes, order, out);
        };
        put16(lowHalf(values), 0);
        if (count > 16) put16(highHalf(values), 16);
        in += 2 * count;
    }
    return {in, out};
}

}  // namespace

BlockStop utf16ToUtf8(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                      ByteOrders orders) {
    return fromUtf16<false>(in, last, end, out, orders);
}

BlockStop utf16ToUtf32(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                       ByteOrders orders) {
    return fromUtf16<true>(in, last, end, out, orders);
}

VASKEL_AVX512 BlockStop utf32ToUtf8(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                                    ByteOrders orders) {
    const __m512i inOrder = unitOrder32(orders.inBig);
    while (in <= last) {
        const std::size_t count = std::min<std::size_t>(static_cast<std::size_t>(end - in) / 4, 16);
        const __m512i values =
            _mm512_shuffle_epi8(_mm512_maskz_loadu_epi32(low16(count), in), inOrder);
        if (_mm512_cmpge_epu32_mask(values, all32(0x80)) == 0) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm512_cvtepi32_epi8(values));
            out += count;
        } else {
            if (_mm512_cmpge_epu32_mask(values, all32(0x200000)) != 0) return {};
            out = putUtf8(values, out);
        }
        in += 4 * count;
    }
    return {in, out};
}

VASKEL_AVX512 BlockStop utf32ToUtf16(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                                     ByteOrders orders) {
    const __m512i inOrder = unitOrder32(orders.inBig), order = unitOrder16(orders.big);
    while (in <= last) {
        const std::size_t count = std::min<std::size_t>(static_cast<std::size_t>(end - in) / 4, 16);
        const __m512i values =
            _mm512_shuffle_epi8(_mm512_maskz_loadu_epi32(low16(count), in), inOrder);
        if (areSurrogates(values) != 0) return {};
        if (_mm512_cmpge_epu32_mask(values, all32(0x10000)) == 0) {
            const __m512i units = _mm512_castsi256_si512(_mm512_cvtepi32_epi16(values));
            store(out, _mm512_castsi512_si256(_mm512_shuffle_epi8(units, order)));
            out += 2 * count;
        } else {
            if (_mm512_cmpge_epu32_mask(values, all32(0x200000)) != 0) return {};
            out = putUnits16(values, order, out);
        }
        in += 4 * count;
    }
    return {in, out};
}

}  // namespace Vaskel::Avx512

#endif
