// Unicode conversions for CPUs with AVX-512 and its byte shuffles: short texts of
// UTF-16 and UTF-32.

#include "encoding/unicode_avx512_short.h"

#if defined(__x86_64__)

namespace Vaskel::Avx512 {
namespace {

VASKEL_AVX512 inline char* put8(__m512i values, char* out) {
    __mmask64 keep;
    const __m512i bytes = utf8Of(values, keep);
    return put(bytes, popcount(keep), out);
}

// ---- From UTF-16 ------------------------------------------------------------

// A bit a unit: those of the text, high surrogates and low ones.
struct Units {
    std::uint64_t all, high, low;
};

// Sixteen units as 32 bits each.
VASKEL_AVX512 VASKEL_READS_PAGE inline __m512i load(const char* units) {
    return _mm512_cvtepu16_epi32(half(units));
}

// With pairs in it, or with units from 800 on as UTF-8.
template <bool kWide>
VASKEL_AVX512 VASKEL_READS_PAGE inline void putUnits(const char* text, Units at, bool inBig,
                                                     __m512i order, char* out) {
    const __m512i inOrder = unitOrder16(inBig);
    do {
        __m512i values = _mm512_shuffle_epi8(load(text), inOrder);
        const auto keep = static_cast<__mmask16>(at.all & ~at.low);
        if (at.high != 0) {
            // A pair is 0x190000 | (high & 0x3F) << 10 | (low & 0x3FF).
            const __m512i next = _mm512_shuffle_epi8(load(text + 2), inOrder);
            const __m512i bits = choose(all32(0x3FF), next, _mm512_slli_epi32(values, 10));
            values = _mm512_mask_mov_epi32(values, static_cast<__mmask16>(at.high),
                                           andOr(bits, all32(0xFFFF), all32(0x190000)));
        }
        if (kWide)
            out = put(_mm512_shuffle_epi8(_mm512_maskz_compress_epi32(keep, values), order),
                      4 * popcount(keep), out);
        else
            out = put8(_mm512_maskz_mov_epi32(keep, values), out);
        at = {at.all >> 16, at.high >> 16, at.low >> 16};
        text += 32;
    } while (at.all != 0);
}

template <bool kWide>
VASKEL_AVX512 VASKEL_READS_PAGE inline std::string make(const char* text, Units at,
                                                        std::size_t size, bool below800, bool inBig,
                                                        bool big) {
    std::string result = unwritten<(kWide ? 4 : 0)>(size, big);
    char* out = result.data() + (kWide ? 4 : 0);
    const __m512i order = unitOrder32(big);
    if (kWide && at.high == 0) {
        const __m512i both = _mm512_xor_si512(order, all8(inBig ? 1 : 0));
        putAll(size, out, [&]() VASKEL_AVX512 VASKEL_READS_PAGE {
            const __m512i units = load(text);
            text += 32;
            return _mm512_shuffle_epi8(units, both);
        });
    } else if (!kWide && below800) {
        const __m512i inOrder = unitOrder16(inBig);
        for (std::uint64_t mask = at.all;; mask >>= 32, text += 64) {
            const __m512i units = _mm512_shuffle_epi8(_mm512_loadu_si512(text), inOrder);
            __mmask64 keep;
            const __m512i bytes =
                utf8Below800(_mm512_maskz_mov_epi16(static_cast<__mmask32>(mask), units), keep);
            out = put(bytes, popcount(keep), out);
            if (mask >> 32 == 0) break;
        }
    } else {
        putUnits<kWide>(text, at, inBig, order, out);
    }
    return result;
}

template <bool kWide>
[[gnu::always_inline]] VASKEL_AVX512 VASKEL_READS_PAGE inline std::string fromUtf16(
    const char* marked, bool big) {
    ShortText<2> room;
    marked = readable<2>(marked, room);
    const std::uint32_t mark = get16(reinterpret_cast<const Byte*>(marked), false);
    if (mark != 0xFEFF && mark != 0xFFFE) return {};
    const bool inBig = mark == 0xFFFE;
    const char* const text = marked + 2;
    const auto bits = [=](unsigned value) { return as16(value, inBig); };
    const __m512i units = _mm512_loadu_si512(text);
    __m512i more = _mm512_setzero_si512();
    std::uint64_t zeros = _mm512_testn_epi16_mask(units, units);
    if (zeros == 0) {
        more = _mm512_loadu_si512(text + 64);
        zeros = std::uint64_t{_mm512_testn_epi16_mask(more, more)} << 32;
        if (zeros == 0 && (text[128] | text[129]) != 0)
            return kWide ? LongTexts::utf16ToUtf32(marked, big) : LongTexts::utf16ToUtf8(marked);
    }
    Units at = {inFront(zeros), 0, 0};
    // Those for which both, compared or tested, say yes.
    const auto both = [&](auto&& is) VASKEL_AVX512 {
        return (is(units) | std::uint64_t{is(more)} << 32) & at.all;
    };
    const __m512i top = all16(bits(0xF800)), surrogate = all16(bits(0xD800));
    const std::uint64_t surrogates = both([&](__m512i some) VASKEL_AVX512 {
        return _mm512_cmpeq_epi16_mask(_mm512_and_si512(some, top), surrogate);
    });
    if (surrogates != 0) {
        const __m512i half = all16(bits(0x0400));
        at.low =
            both([&](__m512i some) VASKEL_AVX512 { return _mm512_test_epi16_mask(some, half); }) &
            surrogates;
        at.high = surrogates ^ at.low;
        if (at.high << 1 != at.low || at.high >> 63 != 0) return {};
    }
    if (kWide) return make<true>(text, at, 4 * popcount(at.all & ~at.low), false, inBig, big);
    const auto have = [&](unsigned value) VASKEL_AVX512 {
        const __m512i wanted = all16(bits(value));
        return both([&](__m512i some)
                        VASKEL_AVX512 { return _mm512_test_epi16_mask(some, wanted); });
    };
    // A pair counts six bytes, of which it has four.
    const std::uint64_t threes = have(0xF800);
    const std::size_t size =
        popcount(at.all) + popcount(have(0xFF80)) + popcount(threes) - 2 * popcount(at.low);
    return make<false>(text, at, size, threes == 0, inBig, big);
}

// ---- From UTF-32 ------------------------------------------------------------

// So many units, whose result has size bytes. They are units of UTF-16 or, not to it,
// ASCII where both are as many.
template <bool kTo16>
VASKEL_AVX512 VASKEL_READS_PAGE inline std::string make(const char* text, std::size_t count,
                                                        std::size_t size, bool inBig, bool big) {
    std::string result = unwritten<(kTo16 ? 2 : 0)>(size, big);
    char* out = result.data() + (kTo16 ? 2 : 0);
    const __m512i inOrder = unitOrder32(inBig), order = unitOrder16(big);
    if (kTo16 && size == 2 * count) {
        const Narrow32 narrow(inBig, big);
        for (; size > 32; size -= 32, text += 64, out += 32)
            store(reinterpret_cast<Byte*>(out), narrow(_mm512_loadu_si512(text)));
        put(_mm512_castsi256_si512(narrow(_mm512_loadu_si512(text))), size, out);
        return result;
    }
    for (std::uint64_t all = lowBits(count);; all >>= 16, text += 64) {
        const __m512i units = _mm512_shuffle_epi8(_mm512_loadu_si512(text), inOrder);
        const __m512i values = _mm512_maskz_mov_epi32(static_cast<__mmask16>(all), units);
        out = kTo16 ? put16(values, order, out) : put8(values, out);
        if (all >> 16 == 0) return result;
    }
}

template <bool kTo16>
[[gnu::always_inline]] VASKEL_AVX512 VASKEL_READS_PAGE inline std::string fromUtf32(
    const char* marked, bool big) {
    ShortText<4> room;
    marked = readable<4>(marked, room);
    const std::uint32_t mark = get32(reinterpret_cast<const Byte*>(marked), false);
    if (mark != 0xFEFF && mark != 0xFFFE0000) return {};
    const bool inBig = mark != 0xFEFF;
    const char* const text = marked + 4;
    const __m512i inOrder = unitOrder32(inBig);
    std::size_t count = 0, more = 0;  // bytes beside those of one unit each
    for (;; count += 16) {
        if (count == 64) {
            if (get32(reinterpret_cast<const Byte*>(text) + 256, false) == 0) break;
            return kTo16 ? LongTexts::utf32ToUtf16(marked, big) : LongTexts::utf32ToUtf8(marked);
        }
        const __m512i units = _mm512_loadu_si512(text + 4 * count);
        const __mmask16 zeros = _mm512_testn_epi32_mask(units, units);
        const __m512i values =
            _mm512_shuffle_epi8(_mm512_maskz_mov_epi32(inFront(zeros), units), inOrder);
        const auto have = [&](unsigned bits) VASKEL_AVX512 {
            return popcount(_mm512_test_epi32_mask(values, all32(bits)));
        };
        if (have(0xFFE00000) != 0 || (kTo16 && areSurrogates(values) != 0)) return {};
        more +=
            kTo16 ? 2 * have(0xFFFF0000) : have(0xFFFFFF80) + have(0xFFFFF800) + have(0xFFFF0000);
        if (zeros != 0) {
            count += _tzcnt_u32(zeros);
            break;
        }
    }
    return make<kTo16>(text, count, (kTo16 ? 2 : 1) * count + more, inBig, big);
}

}  // namespace

VASKEL_AVX512 VASKEL_READS_PAGE std::string shortUtf16ToUtf32(const char* marked, bool big) {
    return fromUtf16<true>(marked, big);
}
VASKEL_AVX512 VASKEL_READS_PAGE std::string shortUtf16ToUtf8(const char* marked) {
    return fromUtf16<false>(marked, false);
}
VASKEL_AVX512 VASKEL_READS_PAGE std::string shortUtf32ToUtf16(const char* marked, bool big) {
    return fromUtf32<true>(marked, big);
}
VASKEL_AVX512 VASKEL_READS_PAGE std::string shortUtf32ToUtf8(const char* marked) {
    return fromUtf32<false>(marked, false);
}

}  // namespace Vaskel::Avx512

#endif
