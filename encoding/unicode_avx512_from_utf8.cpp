// Unicode conversions for CPUs with AVX-512 and its byte shuffles: from UTF-8.
//
// A block is 64 bytes, of which the characters that begin among the first 60
// are taken: so these lie in it whole, and no block waits for the one before.
// Nothing is read behind the text; what is in front of it in its page may be, but
// does not count.
//
// Same results as the rules: a block is taken only if its bytes of the pattern
// 10xxxxxx are exactly those that its lead bytes make followers, so that the
// places of characters are certain, and, for UTF-16, if it holds none of the
// values that end a text or make it bad. All other blocks are left to the rules.

#include "encoding/unicode_avx512.h"
#include "encoding/unicode_avx512_pages.h"

#if defined(__x86_64__)

#include <cstring>

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
    Narrow32 narrow;
    __mmask64 asciiBytes;
    bool big;

    VASKEL_AVX512 explicit Output(bool toBig)
        : order(kWide ? unitOrder32(toBig) : unitOrder16(toBig)),
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

    // n values whose lower, upper and, for UTF-32, uppermost bytes these are.
    VASKEL_AVX512 void putPlanes(__m512i lower, __m512i upper, __m512i top, std::size_t n,
                                 Byte* out) const {
        if (!kWide) {
            // Unpacking takes eight bytes of every sixteen.
            const __m512i eights = _mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7);
            lower = _mm512_permutexvar_epi64(eights, lower);
            upper = _mm512_permutexvar_epi64(eights, upper);
            store(out, unpackLow(lower, upper));
            store(out + 64, unpackHigh(lower, upper));
            return;
        }
        // Unpacking twice takes four.
        const __m512i fours =
            _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
        lower = _mm512_permutexvar_epi32(fours, lower);
        upper = _mm512_permutexvar_epi32(fours, upper);
        top = _mm512_permutexvar_epi32(fours, top);
        const __m512i zero = _mm512_setzero_si512();
        put32(unpackLow(lower, upper), unpackLow(top, zero), out);
        if (n > 32) put32(unpackHigh(lower, upper), unpackHigh(top, zero), out + 128);
    }

 private:
    VASKEL_AVX512 __m512i unpackLow(__m512i lower, __m512i upper) const {
        return big ? _mm512_unpacklo_epi8(upper, lower) : _mm512_unpacklo_epi8(lower, upper);
    }
    VASKEL_AVX512 __m512i unpackHigh(__m512i lower, __m512i upper) const {
        return big ? _mm512_unpackhi_epi8(upper, lower) : _mm512_unpackhi_epi8(lower, upper);
    }
    VASKEL_AVX512 void put32(__m512i lower, __m512i upper, Byte* out) const {
        const __m512i first = big ? upper : lower, second = big ? lower : upper;
        store(out, _mm512_unpacklo_epi16(first, second));
        store(out + 64, _mm512_unpackhi_epi16(first, second));
    }
};

// Where the characters of a block are, a bit a byte.
struct Characters {
    std::uint64_t follow;  // bytes behind a lead byte
    std::uint64_t three;   // lead bytes of characters of three bytes or four
    std::uint64_t four;    // lead bytes of those of four
    std::uint64_t ends;    // last bytes
};

// The characters of the block at in. Every value is put together where its last byte
// is, from that one and those before it, the lower eight bits apart from the others:
// then the bytes that are no last ones are left out. Null if the rules have to look at
// one of the characters. The bytes before are read whatever they are, so that nothing
// waits for it; none in front of the text counts.
//
// In UTF-16 four bytes become two units. The low one stands where the last byte
// is, with that byte's bits. The high one stands where the third byte is: it has
// the bits 10 to 15 of the value and those above, less one, of which four count.
template <bool kWide>
VASKEL_AVX512 VASKEL_READS_PAGE inline Byte* putCharacters(const Byte* in, __m512i block,
                                                           __mmask64 high, Characters at,
                                                           const Output<kWide>& output, Byte* out) {
    const std::uint64_t third = at.four << 2, fourth = at.four << 3;
    const __m512i p = _mm512_loadu_si512(in - 1);
    const __m512i bits = choose(kept8(0x3F), block, _mm512_slli_epi16(p, 6));
    __m512i lower = _mm512_mask_mov_epi8(block, high, bits);
    __m512i upper = _mm512_srli_epi16(p, 2), top = _mm512_setzero_si512();
    std::uint64_t keep = bitsOf(at.ends);
    if (at.three == 0) {
        // Of overlong forms one is a zero.
        if (!kWide && _mm512_cmpeq_epi8_mask(block, kept8(0xC0)) != 0) return nullptr;
        upper = _mm512_maskz_mov_epi8(high, _mm512_and_si512(upper, kept8(7)));
    } else {
        const __m512i q = _mm512_loadu_si512(in - 2);
        const std::uint64_t last =
            bitsOf(kWide ? (at.three ^ at.four) << 2 | fourth : at.three << 2);
        const __m512i q4 = _mm512_slli_epi16(_mm512_maskz_mov_epi8(last, q), 4);
        upper = _mm512_maskz_mov_epi8(kWide ? at.follow : at.follow & ~fourth,
                                      choose(kept8(0xF), upper, q4));
        if (!kWide) {
            // Surrogates and, as an overlong form makes it, zero.
            const std::uint64_t checked = at.ends & ~fourth;
            const __m512i all = _mm512_or_si512(lower, upper);
            if (_kortestz_mask64_u8(
                    _mm512_mask_testn_epi8_mask(checked, all, all),
                    _mm512_mask_cmpeq_epi8_mask(checked, _mm512_and_si512(upper, kept8(0xF8)),
                                                kept8(0xD8))) == 0)
                return nullptr;
        }
        if (at.four != 0 && kWide) {
            const __m512i r = _mm512_loadu_si512(in - 3);
            const __m512i planes =
                choose(kept8(3), _mm512_srli_epi16(q, 4), _mm512_slli_epi16(r, 2));
            top = _mm512_maskz_compress_epi8(
                keep, _mm512_and_si512(planes, _mm512_maskz_mov_epi8(fourth, kept8(0x1F))));
        }
        if (at.four != 0 && !kWide) {
            // An overlong form is one unit or none.
            const __m512i plane = andOr(q, kept8(7), _mm512_and_si512(p, kept8(0x30)));
            if (_mm512_mask_testn_epi8_mask(third, plane, plane) != 0) return nullptr;
            const __m512i less = _mm512_sub_epi8(p, kept8(0x10));
            const __m512i lowerThird =
                choose(kept8(3), _mm512_srli_epi16(block, 4), _mm512_slli_epi16(less, 2));
            const __mmask64 borrows = _mm512_testn_epi8_mask(p, kept8(0x30));
            const __m512i above = _mm512_mask_sub_epi8(q, borrows, q, kept8(1));
            lower = _mm512_mask_mov_epi8(lower, third, lowerThird);
            lower = _mm512_mask_sub_epi8(lower, fourth, block, kept8(0x80));
            upper = _mm512_mask_mov_epi8(upper, third, andOr(above, kept8(3), kept8(0xD8)));
            upper = _mm512_mask_mov_epi8(upper, fourth, kept8(0xDC));
            keep |= third;
        }
    }
    const std::size_t n = popcount(keep);
    output.putPlanes(_mm512_maskz_compress_epi8(keep, lower),
                     _mm512_maskz_compress_epi8(keep, upper), top, n, out);
    return out + (kWide ? 4 : 2) * n;
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
        const __m512i pattern = _mm512_and_si512(raw, kept32(0x00F0C0C0));
        if (_mm512_cmpneq_epi32_mask(pattern, kept32(0x00E08080)) != 0) break;
        const __m512i bits = _mm512_and_si512(raw, kept32(0x000F3F3F));
        const __m512i pairs =
            _mm512_maddubs_epi16(bits, kept32(0x00014001));                   // 64 * second + third
        const __m512i values = _mm512_madd_epi16(pairs, kept32(0x10000001));  // + 4096 * first
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
VASKEL_AVX512 VASKEL_READS_PAGE BlockStop fromUtf8(const Byte* in, const Byte* last,
                                                   const Byte* end, Byte* out, ByteOrders orders) {
    const Output<kWide> output(orders.big);
    // With a block, three bytes in front of it are read. A shorter one, and a first one
    // in whose page there are none, is read from elsewhere for that.
    const Byte* const begin = in;
    bool apart = reinterpret_cast<std::uintptr_t>(in) % 4096 < 3;
    alignas(64) Byte room[64 + 64];
    std::memset(room, 0, 64);
    std::size_t size = kStarts;
    std::uint64_t window = lowBits(kStarts);
    std::uint64_t carry = 0;  // the first bytes here that follow a lead byte before
    while (in <= last) {
        const auto left = static_cast<std::size_t>(end - in);
        expect(in);
        __m512i block;
        if (left >= 64) [[likely]] {
            block = _mm512_loadu_si512(in);
        } else {
            block = _mm512_maskz_loadu_epi8(lowBits(left), in);
            size = left < kStarts ? left : kStarts;
            window = lowBits(size);
            apart = true;
        }
        const __mmask64 highBytes = _mm512_movepi8_mask(block);
        const std::uint64_t high = bitsOf(highBytes);
        if ((high | carry) == 0) {
            // What comes next is stored where cache lines begin.
            const std::size_t beyond = reinterpret_cast<std::uintptr_t>(out) % 64;
            const std::size_t count = left < 64 ? left : 64 - beyond / (kWide ? 4 : 2);
            output.putAscii(block, count, out);
            out += (kWide ? 4 : 2) * count;
            in += count;
            apart = false;
            continue;
        }
        const std::uint64_t cont = bitsOf(_mm512_cmplt_epi8_mask(block, kept8(0xC0)));
        const std::uint64_t two = (high ^ cont) & window;  // or more
        const std::uint64_t three = bitsOf(_mm512_cmpge_epu8_mask(block, kept8(0xE0))) & window;
        std::uint64_t follow = carry | two << 1 | three << 2, four = 0;
        if (three != 0) {
            four = bitsOf(_mm512_cmpge_epu8_mask(block, kept8(0xF0))) & window;
            follow |= four << 3;
            if (four != 0 && (bitsOf(_mm512_cmpge_epu8_mask(block, kept8(0xF8))) & window) != 0)
                break;
        }
        // Followers of a character that the window holds may lie behind it.
        const std::uint64_t here = window | follow;
        if (((follow ^ cont) & here) != 0) break;
        const std::size_t skipped = popcount(carry);
        if ((three >> skipped & 0x249249249249) == 0x249249249249 && left >= skipped + 48) {
            // Threes only, from the first character that begins here on.
            const BlockStop stop = putThrees(in + skipped, last, end, output, out);
            if (stop.in != in + skipped) {
                in = stop.in;
                out = stop.out;
                carry = 0;
                apart = false;
                continue;
            }
        }
        const Byte* at = in;
        if (apart) [[unlikely]] {
            if (in != begin) std::memcpy(room + 60, in - 4, 4);
            store(room + 64, block);
            at = room + 64;
            apart = false;
        }
        const Characters characters = {follow, three, four, here & ~carry & ~(follow >> 1)};
        Byte* const put = putCharacters(at, block, highBytes, characters, output, out);
        if (!put) break;
        out = put;
        carry = follow >> size;
        in += size;
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
