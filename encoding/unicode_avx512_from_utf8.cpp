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

// What all blocks are written with.
template <bool kWide>
struct Output {
    __m512i order;
    Widen16 widen;
    Narrow32 narrow;
    __mmask64 asciiBytes;
    bool big;

    VASKEL_AVX512 explicit Output(bool toBig)
        : order(kWide ? unitOrder32(toBig) : unitOrder16(toBig)),
          widen(false, toBig),
          narrow(false, toBig),
          asciiBytes(kWide ? (toBig ? 0x8888888888888888 : 0x1111111111111111)
                           : (toBig ? 0xAAAAAAAAAAAAAAAA : 0x5555555555555555)),
          big(toBig) {}

    VASKEL_AVX512 void putAscii(__m512i block, std::size_t n, Byte* out) const {
        alignas(64) static constexpr Places kBytes(kWide ? 4 : 2, 1, 1);
        constexpr unsigned kEach = kWide ? 16 : 32;
        __m512i places = _mm512_load_si512(&kBytes);
        for (std::size_t done = 0; done < n; done += kEach, out += 64) {
            store(out, _mm512_maskz_permutexvar_epi8(asciiBytes, places, block));
            places = _mm512_add_epi8(places, all8(kEach));
        }
    }

    // Sixteen values below 10000.
    VASKEL_AVX512 void putValues(__m512i values, Byte* out) const {
        if (kWide)
            store(out, _mm512_shuffle_epi8(values, order));
        else
            store(out, narrow(values));
    }

    // n values below 10000 whose lower and upper bytes these are.
    VASKEL_AVX512 void putPlanes(__m512i lower, __m512i upper, std::size_t n, Byte* out) const {
        // Unpacking takes eight bytes of every sixteen.
        const __m512i eights = _mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7);
        const __m512i first = _mm512_permutexvar_epi64(eights, !kWide && big ? upper : lower);
        const __m512i second = _mm512_permutexvar_epi64(eights, !kWide && big ? lower : upper);
        const __m512i low = _mm512_unpacklo_epi8(first, second);
        const __m512i high = _mm512_unpackhi_epi8(first, second);
        if (!kWide) {
            store(out, low);
            store(out + 64, high);
            return;
        }
        store(out, widen.low(low));
        store(out + 64, widen.high(low));
        if (n <= 32) return;
        store(out + 128, widen.low(high));
        store(out + 192, widen.high(high));
    }
};

// For UTF-16: zero where a value is a surrogate or, as an overlong form makes
// it, zero.
VASKEL_AVX512 inline __m512i zeroIfApart(__m512i values) {
    const __m512i top = _mm512_and_si512(values, all32(0xFFFFF800));
    return _mm512_min_epu32(values, _mm512_xor_si512(top, all32(0xD800)));
}

// The n characters of one byte and two that begin at leads.
template <bool kWide>
VASKEL_AVX512 inline void putBelow800(__m512i block, __m512i behind, std::uint64_t leads,
                                      std::uint64_t two, std::size_t n, const Output<kWide>& output,
                                      Byte* out) {
    const __m512i top = _mm512_and_si512(_mm512_slli_epi16(block, 6), all8(0xC0));
    const __m512i bits = choose(all8(0x3F), behind, top);
    const __m512i lower = _mm512_mask_mov_epi8(block, two, bits);
    const __m512i upper = _mm512_and_si512(_mm512_srli_epi16(block, 2), all8(7));
    output.putPlanes(_mm512_maskz_compress_epi8(leads, lower),
                     _mm512_maskz_compress_epi8(leads, _mm512_maskz_mov_epi8(two, upper)), n, out);
}

// The n characters that begin at starts. For UTF-16, null if the rules have to
// look at one of them.
template <bool kWide>
VASKEL_AVX512 inline Byte* putCharacters(__m512i block, __m512i starts, std::size_t n, bool fours,
                                         const Output<kWide>& output, Byte* out) {
    __m512i lanes = _mm512_load_si512(&kLanes), apart = all32(1);
    std::size_t left = n;
    do {
        const __mmask16 there = low16(left);
        const __m512i values = valuesAt(block, starts, lanes, there);
        lanes = _mm512_add_epi8(lanes, all8(16));
        if (!kWide) apart = _mm512_mask_min_epu32(apart, there, apart, zeroIfApart(values));
        if (!kWide && fours) {
            out = putUnits16(values, output.order, out);
        } else {
            output.putValues(values, out);
            out += kWide ? 64 : 32;
        }
    } while ((left -= std::min<std::size_t>(left, 16)) != 0);
    if (_mm512_testn_epi32_mask(apart, apart) != 0) return nullptr;
    // What was written for lanes without a character does not count.
    if (kWide) return out - 4 * (-n % 16);
    return fours ? out : out - 2 * (-n % 16);
}

// From in on, sixteen characters of three bytes after the other, as long as they
// begin at or before last. Stops in front of sixteen that are not, or of which
// the rules have to look at one.
template <bool kWide>
VASKEL_AVX512 inline BlockStop putThrees(const Byte* in, const Byte* last, const Byte* end,
                                         const Output<kWide>& output, Byte* out) {
    for (; in <= last && end - in >= 48; in += 48) {
        expect(in);
        const __m512i bytes = _mm512_maskz_loadu_epi8(lowBits(48), in);
        // In each lane the third byte, the second, the first and again the third.
        const __m512i raw = _mm512_permutexvar_epi8(_mm512_load_si512(&kThrees), bytes);
        const __m512i pattern = _mm512_and_si512(raw, all32(0x00F0C0C0));
        if (_mm512_cmpneq_epi32_mask(pattern, all32(0x00E08080)) != 0) break;
        const __m512i bits = _mm512_and_si512(raw, all32(0x000F3F3F));
        const __m512i pairs = _mm512_maddubs_epi16(bits, all32(0x00014001));  // 64 * second + third
        const __m512i values = _mm512_madd_epi16(pairs, all32(0x10000001));   // + 4096 * first
        if (!kWide) {
            const __m512i apart = zeroIfApart(values);
            if (_mm512_testn_epi32_mask(apart, apart) != 0) break;
        }
        output.putValues(values, out);
        out += kWide ? 64 : 32;
    }
    return {in, out};
}

template <bool kWide>
VASKEL_AVX512 BlockStop fromUtf8(const Byte* in, const Byte* last, const Byte* end, Byte* out,
                                 ByteOrders orders) {
    const Output<kWide> output(orders.big);
    std::uint64_t carry = 0;  // the first bytes here that follow a lead byte before
    while (in <= last) {
        const auto left = static_cast<std::size_t>(end - in);
        const std::size_t size = left < 64 ? left : 64;
        expect(in);
        const __m512i block = _mm512_maskz_loadu_epi8(lowBits(size), in);
        const std::uint64_t high = _mm512_movepi8_mask(block);
        if ((high | carry) == 0) {
            output.putAscii(block, size, out);
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
            if (four != 0 && (_mm512_cmpge_epu8_mask(block, all8(0xF8)) & inWindow) != 0) break;
        }
        // Followers of a character that the window holds may lie behind it.
        if (((follow & ~cont) | (cont & inWindow & ~follow) | lost) != 0) break;
        const std::size_t skipped = popcount(carry);
        if ((three >> skipped & 0x249249249249) == 0x249249249249 && left >= skipped + 48) {
            // Threes only, from the first character that begins here on.
            const BlockStop stop = putThrees(in + skipped, last, end, output, out);
            if (stop.in != in + skipped) {
                in = stop.in;
                out = stop.out;
                carry = 0;
                continue;
            }
        }
        // Of overlong forms of two bytes some are zeros.
        if (three == 0 && (kWide || _mm512_cmpeq_epi8_mask(_mm512_and_si512(block, all8(0xFE)),
                                                           all8(0xC0)) == 0)) {
            const __m512i behind = _mm512_maskz_loadu_epi8(lowBits(size) >> 1, in + 1);
            putBelow800(block, behind, leads, two, n, output, out);
            out += (kWide ? 4 : 2) * n;
        } else {
            const __m512i starts = _mm512_maskz_compress_epi8(leads, _mm512_load_si512(&kPlaces));
            Byte* const put = putCharacters(block, starts, n, four != 0, output, out);
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
