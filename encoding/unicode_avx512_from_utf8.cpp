// Unicode conversions for CPUs with AVX-512 and its byte shuffles: from UTF-8.
//
// A block is 64 bytes, of which the characters that begin among the first 60
// are taken: so these lie in it whole, and no block waits for the one before.
// Of the last 64 bytes all are taken. Nothing is read behind the text.
//
// Same results as the rules: a block is taken only if its bytes of the pattern
// 10xxxxxx are exactly those that its lead bytes make followers, so that the
// places of characters are certain, and, for UTF-16, if it holds none of the
// values that end a text or make it bad. All other blocks are left to the rules.

#include "encoding/unicode_avx512.h"

#if defined(__x86_64__)

#include <algorithm>

namespace Vaskel::Avx512 {
namespace {

constexpr unsigned kStarts = 60;

// Of sixteen times three bytes the third, the second, the first and the third.
struct Threes {
    Byte bytes[64] = {};
    constexpr Threes() {
        for (unsigned i = 0; i < 64; ++i)
            bytes[i] = static_cast<Byte>(i / 4 * 3 + (i % 4 == 3 ? 2 : 2 - i % 4));
    }
};
alignas(64) constexpr Threes kThrees;

// Units below 10000 as they are, or as 32-bit values; n of them count.
template <bool kWide>
VASKEL_AVX512 inline void putUnits(__m512i units, std::size_t n, __m512i order, Byte* out) {
    if (!kWide) {
        store(out, _mm512_shuffle_epi8(units, order));
        return;
    }
    store(out, _mm512_shuffle_epi8(lowHalf(units), order));
    if (n > 16) store(out + 64, _mm512_shuffle_epi8(highHalf(units), order));
}

template <bool kWide>
VASKEL_AVX512 inline void putAscii(__m512i block, std::size_t n, __m512i order, Byte* out) {
    const __m512i low = _mm512_cvtepu8_epi16(_mm512_castsi512_si256(block));
    putUnits<kWide>(low, n, order, out);
    if (n <= 32) return;
    const __m512i high = _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(block, 1));
    putUnits<kWide>(high, n - 32, order, out + (kWide ? 128 : 64));
}

// The n characters of one byte and two whose first and second bytes these are.
// For UTF-16, false if one is zero.
template <bool kWide>
VASKEL_AVX512 inline bool putBelow800(__m256i first, __m256i second, std::size_t n, __m512i order,
                                      Byte* out) {
    const __m512i a = _mm512_cvtepu8_epi16(first), b = _mm512_cvtepu8_epi16(second);
    const __mmask32 two = _mm512_cmpge_epu16_mask(a, all16(0x80));
    const __m512i bits =
        choose(all16(0x3F), b, _mm512_and_si512(_mm512_slli_epi16(a, 6), all16(0x7FF)));
    const __m512i units = _mm512_mask_mov_epi16(a, two, bits);
    if (!kWide && (_mm512_testn_epi16_mask(units, units) & low32(n)) != 0) return false;
    putUnits<kWide>(units, n, order, out);
    return true;
}

template <bool kWide>
VASKEL_AVX512 inline bool putBelow800(__m512i first, __m512i second, std::size_t n, __m512i order,
                                      Byte* out) {
    if (!putBelow800<kWide>(_mm512_castsi512_si256(first), _mm512_castsi512_si256(second), n, order,
                            out))
        return false;
    return n <= 32 || putBelow800<kWide>(_mm512_extracti64x4_epi64(first, 1),
                                         _mm512_extracti64x4_epi64(second, 1), n - 32, order,
                                         out + (kWide ? 128 : 64));
}

// The n characters that begin at starts. For UTF-16, null if the rules have to
// look at one of them.
template <bool kWide>
VASKEL_AVX512 inline Byte* putCharacters(__m512i block, __m512i starts, std::size_t n, bool fours,
                                         __m512i order, Byte* out) {
    __m512i lanes = _mm512_load_si512(&kLanes);
    std::size_t left = n;
    do {
        const __mmask16 there = low16(left);
        const __m512i values = valuesAt(block, starts, lanes, there);
        lanes = _mm512_add_epi8(lanes, all8(16));
        if (kWide) {
            store(out, _mm512_shuffle_epi8(values, order));
            out += 64;
            continue;
        }
        const __mmask16 zeros = _mm512_testn_epi32_mask(values, values);
        if (((zeros & there) | areSurrogates(values)) != 0) return nullptr;
        if (fours) {
            out = putUnits16(values, order, out);
            continue;
        }
        const __m512i units = _mm512_castsi256_si512(_mm512_cvtepi32_epi16(values));
        store(out, _mm512_castsi512_si256(_mm512_shuffle_epi8(units, order)));
        out += 32;
    } while ((left -= std::min<std::size_t>(left, 16)) != 0);
    // What was written for lanes without a character does not count.
    if (kWide) return out - 4 * (-n % 16);
    return fours ? out : out - 2 * (-n % 16);
}

// Sixteen characters of three bytes from in on; null if they are not, or for
// UTF-16 if the rules have to look at one of them.
template <bool kWide>
VASKEL_AVX512 inline Byte* putThrees(const Byte* in, __m512i order, Byte* out) {
    const __m512i bytes = _mm512_maskz_loadu_epi8(lowBits(48), in);
    // In each lane the third byte, the second, the first and again the third.
    const __m512i raw = _mm512_permutexvar_epi8(_mm512_load_si512(&kThrees), bytes);
    const __m512i pattern = _mm512_and_si512(raw, all32(0x00F0C0C0));
    if (_mm512_cmpneq_epi32_mask(pattern, all32(0x00E08080)) != 0) return nullptr;
    const __m512i bits = _mm512_and_si512(raw, all32(0x000F3F3F));
    const __m512i pairs = _mm512_maddubs_epi16(bits, all32(0x00014001));  // 64 * second + third
    const __m512i values = _mm512_madd_epi16(pairs, all32(0x10000001));   // + 4096 * first
    if (kWide) {
        store(out, _mm512_shuffle_epi8(values, order));
        return out + 64;
    }
    const __mmask16 zeros = _mm512_testn_epi32_mask(values, values);
    if ((zeros | areSurrogates(values)) != 0) return nullptr;
    const __m512i units = _mm512_castsi256_si512(_mm512_cvtepi32_epi16(values));
    store(out, _mm512_castsi512_si256(_mm512_shuffle_epi8(units, order)));
    return out + 32;
}

template <bool kWide>
VASKEL_AVX512 BlockStop fromUtf8(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                                 ByteOrders orders) {
    const __m512i order = kWide ? unitOrder32(orders.big) : unitOrder16(orders.big);
    std::uint64_t carry = 0;  // the first bytes here that follow a lead byte before
    while (in <= last) {
        const auto left = static_cast<std::size_t>(end - in);
        const std::size_t size = left < 64 ? left : 64;
        const __m512i block = _mm512_maskz_loadu_epi8(lowBits(size), in);
        const std::uint64_t high = _mm512_movepi8_mask(block);
        if ((high | carry) == 0) {
            putAscii<kWide>(block, size, order, out);
            out += (kWide ? 4 : 2) * size;
            in += size;
            continue;
        }
        const std::uint64_t cont = _mm512_cmplt_epi8_mask(block, all8(0xC0));
        const std::uint64_t inWindow = left > 64 ? lowBits(kStarts) : lowBits(size);
        const std::uint64_t two = high & ~cont & inWindow;
        const std::uint64_t three = _mm512_cmpge_epu8_mask(block, all8(0xE0)) & inWindow;
        const std::uint64_t leads = inWindow & ~cont;
        const std::size_t n = popcount(leads);
        std::uint64_t follow = carry | two << 1 | three << 2, lost = two >> 63 | three >> 62;
        std::uint64_t four = 0;
        if (three != 0) {
            four = _mm512_cmpge_epu8_mask(block, all8(0xF0)) & inWindow;
            follow |= four << 3;
            lost |= four >> 61;
            if ((_mm512_cmpge_epu8_mask(block, all8(0xF8)) & inWindow) != 0) break;
        }
        // Followers of a character that the window holds may lie behind it.
        if (((follow & ~cont) | (cont & inWindow & ~follow) | lost) != 0) break;
        const std::size_t skipped = popcount(carry);
        if ((three >> skipped & 0x249249249249) == 0x249249249249 && left >= skipped + 48) {
            // Threes only, from the first character that begins here on.
            const Byte* at = in + skipped;
            while (end - at >= 48 && at <= last) {
                Byte* const put = putThrees<kWide>(at, order, out);
                if (!put) break;
                out = put;
                at += 48;
            }
            if (at != in + skipped) {
                in = at;
                carry = 0;
                continue;
            }
        }
        if (three == 0) {
            const __m512i behind = _mm512_maskz_loadu_epi8(lowBits(size) >> 1, in + 1);
            if (!putBelow800<kWide>(_mm512_maskz_compress_epi8(leads, block),
                                    _mm512_maskz_compress_epi8(leads, behind), n, order, out))
                break;
            out += (kWide ? 4 : 2) * n;
        } else {
            const __m512i starts = _mm512_maskz_compress_epi8(leads, _mm512_load_si512(&kPlaces));
            Byte* const put = putCharacters<kWide>(block, starts, n, four != 0, order, out);
            if (!put) break;
            out = put;
        }
        carry = left > 64 ? follow >> kStarts : 0;
        in += left > 64 ? kStarts : size;
    }
    return {in + popcount(carry), out};
}

}  // namespace

BlockStop utf8ToUtf16(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                      ByteOrders orders) {
    return fromUtf8<false>(in, last, end, out, orders);
}

BlockStop utf8ToUtf32(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                      ByteOrders orders) {
    return fromUtf8<true>(in, last, end, out, orders);
}

}  // namespace Vaskel::Avx512

#endif
