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

// Sixteen values from 800 on that need three bytes each.
VASKEL_AVX512 inline Byte* putThrees(__m512i values, Byte* out) {
    alignas(64) static constexpr Places kFirstThree(3, 4, 3);
    // From each value the bits from 12, 6 and 0 on, in this order.
    const __m512i offsets = kept(_mm512_set1_epi64(0x0020262C0000060C));
    const __m512i sixes = _mm512_multishift_epi64_epi8(offsets, values);
    const __m512i bytes = andOr(sixes, kept32(0x3F3F0F), kept32(0x8080E0));
    store(out, _mm512_permutexvar_epi8(_mm512_load_si512(&kFirstThree), bytes));
    return out + 48;
}

// Sixteen values of which those in lanes are characters.
template <bool kWide>
VASKEL_AVX512 inline Byte* put(__m512i values, __mmask16 lanes, __m512i order, Byte* out) {
    if (!kWide) return putUtf8(_mm512_maskz_mov_epi32(lanes, values), out);
    store(out, _mm512_shuffle_epi8(_mm512_maskz_compress_epi32(lanes, values), order));
    return out + 4 * popcount(lanes);
}

// ASCII in units of that many bytes, a byte each.
template <std::size_t kUnit>
VASKEL_AVX512 inline __m512i asciiPlaces(bool big) {
    alignas(64) static constexpr Places places(1, kUnit, 1);
    return placesOf(places, big ? kUnit - 1 : 0);
}

// The lower halves of 32-bit values of two vectors, as units in the machine's order.
VASKEL_AVX512 inline __m512i lowUnits(bool big) {
    alignas(64) static constexpr Places places(2, 4, 2);
    return placesOf(places, big ? 3 : 0);
}

// To UTF-32 or, not wide, to UTF-8.
template <bool kWide>
VASKEL_AVX512 BlockStop fromUtf16(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                                  ByteOrders orders) {
    const __m512i inOrder = unitOrder16(orders.inBig), order = unitOrder32(orders.big);
    const Widen16 widen(orders.inBig, orders.big);
    const __m512i ascii = asciiPlaces<2>(orders.inBig);
    const __m512i notAscii = all16(as16(0xFF80, orders.inBig));
    const __m512i surrogateBits = all16(as16(0xF800, orders.inBig));
    const __m512i surrogate = all16(as16(0xD800, orders.inBig));
    // Values are stored where cache lines begin, if it is known where that is:
    // the first block may be a shorter one.
    std::size_t most = kWide ? 16 + -reinterpret_cast<std::uintptr_t>(out) % 64 / 4 : 32;
    for (; in <= last; most = 32) {
        const auto left = static_cast<std::size_t>(end - in) / 2;
        std::size_t count = std::min(left, most);
        expect(in);
        const __m512i raw = _mm512_maskz_loadu_epi16(low32(count), in);
        if (!kWide && _mm512_test_epi16_mask(raw, notAscii) == 0) {
            store(out, _mm512_castsi512_si256(_mm512_permutexvar_epi8(ascii, raw)));
            out += count;
            in += 2 * count;
            // A run of it, 64 units at a time, needs no masks.
            for (; in <= last && end - in >= 128; in += 128, out += 64) {
                expect(in);
                expect(in + 64);
                const __m512i a = _mm512_loadu_si512(in), b = _mm512_loadu_si512(in + 64);
                if (_mm512_test_epi16_mask(_mm512_or_si512(a, b), notAscii) != 0) break;
                store(out, _mm512_castsi512_si256(_mm512_permutexvar_epi8(ascii, a)));
                store(out + 32, _mm512_castsi512_si256(_mm512_permutexvar_epi8(ascii, b)));
            }
            continue;
        }
        const __mmask32 surrogates =
            _mm512_cmpeq_epi16_mask(_mm512_and_si512(raw, surrogateBits), surrogate);
        if (kWide && surrogates == 0) {
            store(out, widen.low(raw));
            if (count > 16) store(out + 64, widen.high(raw));
            out += 4 * count;
            in += 2 * count;
            continue;
        }
        const __m512i units = _mm512_shuffle_epi8(raw, inOrder);
        if (surrogates == 0) {
            if (_mm512_cmpge_epu16_mask(units, kept16(0x800)) == 0) {
                out = putUtf8Below800(units, out);
            } else {
                const std::uint32_t threes = _mm512_cmpge_epu16_mask(units, kept16(0x800));
                const __m512i low = lowHalf(units);
                out = (threes & 0xFFFF) == 0xFFFF ? putThrees(low, out) : putUtf8(low, out);
                if (count > 16) {
                    const __m512i upper = highHalf(units);
                    out = threes >> 16 == 0xFFFF ? putThrees(upper, out) : putUtf8(upper, out);
                }
            }
            in += 2 * count;
            continue;
        }
        std::uint64_t high =
            _mm512_cmpeq_epi16_mask(_mm512_and_si512(units, kept16(0xFC00)), kept16(0xD800));
        // The other half of the last one may be in the next block.
        if (left > count && high >> (count - 1) != 0) high ^= std::uint64_t{1} << --count;
        const std::uint64_t low = (surrogates & low32(count)) ^ high;
        if (high << 1 != low) return {};
        // A pair is 0x190000 | (high & 0x3F) << 10 | (low & 0x3FF).
        const __m512i next =
            _mm512_shuffle_epi8(_mm512_maskz_loadu_epi16(low32(count) >> 1, in + 2), inOrder);
        const __m512i bits =
            _mm512_or_si512(_mm512_slli_epi16(units, 10), _mm512_and_si512(next, kept16(0x3FF)));
        const __m512i values = _mm512_mask_mov_epi16(units, static_cast<__mmask32>(high), bits);
        const auto keep = static_cast<std::uint32_t>(low32(count) & ~low);
        const auto put16 = [&](__m512i half, unsigned from) VASKEL_AVX512 {
            const auto wide = static_cast<__mmask16>(high >> from);
            const auto lanes = static_cast<__mmask16>(keep >> from);
            half = _mm512_mask_or_epi32(half, wide, half, kept32(0x190000));
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
    const __m512i ascii = asciiPlaces<4>(orders.inBig), units = lowUnits(orders.inBig);
    const auto bits = [&](unsigned value)
                          VASKEL_AVX512 { return kept(all32(as32(value, orders.inBig))); };
    const __m512i notAscii = bits(0xFFFFFF80), from800 = bits(0xFFFFF800), bad = bits(0xFFE00000);
    while (in <= last) {
        const auto left = static_cast<std::size_t>(end - in) / 4;
        expect(in);
        expect(in + 64);
        const __m512i a = _mm512_maskz_loadu_epi32(low16(left), in);
        const __m512i b = left > 16 ? _mm512_maskz_loadu_epi32(low16(left - 16), in + 64)
                                    : _mm512_setzero_si512();
        const __m512i any = _mm512_or_si512(a, b);
        const std::size_t count = std::min<std::size_t>(left, 32);
        in += 4 * count;
        if (_mm512_test_epi32_mask(any, notAscii) == 0) {
            store(out, _mm512_castsi512_si256(_mm512_permutex2var_epi8(a, ascii, b)));
            out += count;
            continue;
        }
        if (_mm512_test_epi32_mask(any, from800) == 0) {
            out = putUtf8Below800(_mm512_permutex2var_epi8(a, units, b), out);
            continue;
        }
        if (_mm512_test_epi32_mask(any, bad) != 0) return {};
        out = putUtf8(_mm512_shuffle_epi8(a, inOrder), out);
        out = putUtf8(_mm512_shuffle_epi8(b, inOrder), out);
    }
    return {in, out};
}

VASKEL_AVX512 BlockStop utf32ToUtf16(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                                     ByteOrders orders) {
    const __m512i inOrder = unitOrder32(orders.inBig), order = unitOrder16(orders.big);
    const Narrow32 narrow(orders.inBig, orders.big);
    const __m512i above = all32(as32(0xFFFF0000, orders.inBig));
    const __m512i surrogateBits = all32(as32(0xFFFFF800, orders.inBig));
    const __m512i surrogate = all32(as32(0xD800, orders.inBig));
    while (in <= last) {
        const std::size_t count = std::min<std::size_t>(static_cast<std::size_t>(end - in) / 4, 16);
        expect(in);
        const __m512i raw = _mm512_maskz_loadu_epi32(low16(count), in);
        in += 4 * count;
        if (_mm512_cmpeq_epi32_mask(_mm512_and_si512(raw, surrogateBits), surrogate) != 0)
            return {};
        if (_mm512_test_epi32_mask(raw, above) == 0) {
            store(out, narrow(raw));
            out += 2 * count;
            continue;
        }
        const __m512i values = _mm512_shuffle_epi8(raw, inOrder);
        if (_mm512_cmpge_epu32_mask(values, all32(0x200000)) != 0) return {};
        out = putUnits16(values, order, out);
    }
    return {in, out};
}

}  // namespace Vaskel::Avx512

#endif
