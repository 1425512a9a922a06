// Unicode conversions for CPUs with AVX-512 and its byte shuffles: texts of at most
// 64 bytes of UTF-8 or 64 units, which need no blocks, and the form itself.
//
// Such a text is looked at first, together with whatever is behind it in its page,
// which tells how large the result is; then what sixteen characters become is made
// in one vector and written where it belongs. So nothing is written that has to be
// read again, and the result's memory has the right size at once.
//
// Same results as the rules: values and what becomes of them are made by the steps
// of the block functions. Bad texts of UTF-8, and those with zeros in overlong
// forms, are left to these, like all longer texts.

#include "encoding/unicode_avx2.h"
#include "encoding/unicode_avx512.h"
#include "encoding/unicode_avx512_pages.h"
#include "encoding/unicode_onepass.h"

#if defined(__x86_64__)

namespace Vaskel {
namespace Avx512 {
namespace {

constexpr UnicodeBlocks kBlocks = {
    .utf8ToUtf16 = utf8ToUtf16,
    .utf8ToUtf32 = utf8ToUtf32,
    .utf16ToUtf8 = utf16ToUtf8,
    .utf16ToUtf32 = utf16ToUtf32,
    .utf32ToUtf8 = utf32ToUtf8,
    .utf32ToUtf16 = utf32ToUtf16,
    .size8 = size8Avx2,
    .size16 = sizeToZero<2>,
    .size32 = sizeToZero<4>,
    .ahead = 1,
};
using LongTexts = OnePassForm<kBlocks>;

// The lanes in front of the first one whose bit is set; all if there is none.
template <class Mask>
Mask inFront(Mask zeros) {
    return static_cast<Mask>(~zeros & (zeros - 1));
}

// ---- Results ----------------------------------------------------------------

// A string of so many bytes, all of which its maker writes.
[[gnu::noinline]] std::string unwritten(std::size_t size) {
    std::string result;
#ifdef __cpp_lib_string_resize_and_overwrite
    // What is passed on may be more than size, up to what the string has room for.
    result.resize_and_overwrite(size, [=](char* memory, std::size_t) {
        __asm__ volatile("" : : "r"(memory) : "memory");  // as if it were written here
        return size;
    });
#else
    result.resize(size);
#endif
    return result;
}

// The same with a mark of kUnit bytes in front of so many and a zero unit behind.
template <std::size_t kUnit>
inline std::string unwritten(std::size_t size, bool big) {
    std::string result = unwritten(size + 2 * kUnit);
    char* const begin = result.data();
    const std::uint32_t mark = !big ? 0xFEFF : kUnit == 2 ? 0xFFFE : 0xFFFE0000;
    std::memcpy(begin, &mark, kUnit);
    std::memset(begin + kUnit + size, 0, kUnit);
    return result;
}

// The first bytes only.
VASKEL_AVX512 inline char* put(__m512i bytes, std::size_t size, char* out) {
    const std::uint64_t mask = _bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(size));
    _mm512_mask_storeu_epi8(out, mask, bytes);
    return out + size;
}

VASKEL_AVX512 inline char* put8(__m512i values, char* out) {
    __mmask64 keep;
    const __m512i bytes = utf8Of(values, keep);
    return put(bytes, popcount(keep), out);
}

VASKEL_AVX512 inline char* put16(__m512i values, __m512i order, char* out) {
    __mmask32 keep;
    const __m512i units = utf16Of(values, keep);
    return put(_mm512_shuffle_epi8(units, order), 2 * popcount(keep), out);
}

// ---- From UTF-8 -------------------------------------------------------------

// A bit a byte: those of the text, those from 80 on, the first ones of characters
// and of those of four bytes.
struct Bytes {
    std::uint64_t all, high, leads, fours;
};

// ASCII, 16 or 32 bytes of which fill a vector of units.
template <bool kWide>
VASKEL_AVX512 inline void putAscii(const char* text, std::uint64_t mask, __m512i order, char* out) {
    do {
        if (kWide) {
            const auto some = static_cast<__mmask16>(mask);
            const __m512i units = _mm512_cvtepu8_epi32(_mm_maskz_loadu_epi8(some, text));
            _mm512_mask_storeu_epi32(out, some, _mm512_shuffle_epi8(units, order));
        } else {
            const auto some = static_cast<__mmask32>(mask);
            const __m512i units = _mm512_cvtepu8_epi16(_mm256_maskz_loadu_epi8(some, text));
            _mm512_mask_storeu_epi16(out, some, _mm512_shuffle_epi8(units, order));
        }
        text += kWide ? 16 : 32;
        out += 64;
        mask >>= kWide ? 16 : 32;
    } while (mask != 0);
}

// The text's characters as units from out on; false if one is a zero, a surrogate
// or an overlong form, with which UTF-16 has other sizes or none.
template <bool kWide>
VASKEL_AVX512 inline bool putCharacters(const char* text, Bytes at, __m512i order, bool big,
                                        char* out, const char* end) {
    const __m512i bytes = _mm512_maskz_loadu_epi8(at.all, text);
    const __m512i starts = _mm512_maskz_compress_epi8(at.leads, _mm512_load_si512(&kPlaces));
    const Narrow32 narrow(false, big);
    __m512i lanes = _mm512_load_si512(&kLanes);
    std::uint32_t apart = 0;
    std::uint64_t mask = lowBits(popcount(at.leads));
    do {
        const auto some = static_cast<__mmask16>(mask);
        const __m512i values = valuesAt(bytes, starts, lanes, some);
        if (!kWide)
            apart |= areSurrogates(values) | _mm512_mask_testn_epi32_mask(some, values, values);
        if (kWide) {
            _mm512_mask_storeu_epi32(out, some, _mm512_shuffle_epi8(values, order));
            out += 64;
        } else if (at.fours == 0) {
            _mm256_mask_storeu_epi16(out, some, narrow(values));
            out += 32;
        } else {
            out = put16(values, order, out);
        }
        lanes = _mm512_add_epi8(lanes, all8(16));
        mask >>= 16;
    } while (mask != 0);
    return kWide || (apart == 0 && (at.fours == 0 || out == end));
}

[[gnu::noinline]] void makeByRules(std::string& result, const char* text, bool big) {
    result = LongTexts::utf8ToUtf16(text, big);
}

template <bool kWide>
VASKEL_AVX512 inline std::string make(const char* text, Bytes at, bool big) {
    constexpr std::size_t kUnit = kWide ? 4 : 2;
    const std::size_t size = kUnit * (popcount(at.leads) + (kWide ? 0 : popcount(at.fours)));
    std::string result = unwritten<kUnit>(size, big);
    char* const out = result.data() + kUnit;
    const __m512i order = kWide ? unitOrder32(big) : unitOrder16(big);
    if (at.high == 0)
        putAscii<kWide>(text, at.all, order, out);
    else if (!putCharacters<kWide>(text, at, order, big, out, out + size))
        makeByRules(result, text, big);
    return result;
}

template <bool kWide>
VASKEL_AVX512 VASKEL_READS_PAGE std::string fromUtf8(const char* text, bool big) {
    constexpr auto longText = kWide ? LongTexts::utf8ToUtf32 : LongTexts::utf8ToUtf16;
    if (!startsAsUtf8(text)) return {};
    const __m512i page = loadPage(text, 1);
    const std::uint64_t zeros = _mm512_testn_epi8_mask(page, page);
    if (zeros == 0 && text[64] != 0) return longText(text, big);
    const std::uint64_t all = inFront(zeros);
    const __m512i bytes = _mm512_maskz_mov_epi8(all, page);
    const std::uint64_t high = _mm512_movepi8_mask(bytes);
    Bytes at = {all, high, all, 0};
    if (high != 0) {
        const std::uint64_t cont = _mm512_cmplt_epi8_mask(bytes, all8(0xC0));
        const std::uint64_t two = high & ~cont;
        const std::uint64_t three = _mm512_cmpge_epu8_mask(bytes, all8(0xE0));
        const std::uint64_t four = _mm512_cmpge_epu8_mask(bytes, all8(0xF0));
        const std::uint64_t five = _mm512_cmpge_epu8_mask(bytes, all8(0xF8));
        const std::uint64_t follow = two << 1 | three << 2 | four << 3;
        const std::uint64_t behind = two >> 63 | three >> 62 | four >> 61;
        if (((follow ^ cont) | behind | five) != 0) return longText(text, big);
        at = {all, high, all & ~cont, four};
    }
    return make<kWide>(text, at, big);
}

// ---- From UTF-16 ------------------------------------------------------------

// A bit a unit: those of the text, high surrogates and low ones.
struct Units {
    std::uint64_t all, high, low;
};

// Sixteen units as 32 bits each, those in mask.
VASKEL_AVX512 inline __m512i load(const Byte* units, std::uint64_t mask) {
    return _mm512_cvtepu16_epi32(_mm256_maskz_loadu_epi16(static_cast<__mmask16>(mask), units));
}

template <bool kWide>
VASKEL_AVX512 inline std::string make(const Byte* text, Units at, std::size_t size, bool inBig,
                                      bool big) {
    std::string result = unwritten < kWide ? 4 : 0 > (size, big);
    char* out = result.data() + (kWide ? 4 : 0);
    const __m512i inOrder = unitOrder16(inBig), order = unitOrder32(big);
    if (kWide && at.high == 0) {
        const __m512i both = _mm512_xor_si512(order, all8(inBig ? 1 : 0));
        do {
            _mm512_mask_storeu_epi32(out, static_cast<__mmask16>(at.all),
                                     _mm512_shuffle_epi8(load(text, at.all), both));
            text += 32;
            out += 64;
            at.all >>= 16;
        } while (at.all != 0);
        return result;
    }
    do {
        __m512i values = _mm512_shuffle_epi8(load(text, at.all), inOrder);
        const auto keep = static_cast<__mmask16>(at.all & ~at.low);
        if (at.high != 0) {
            // A pair is 0x190000 | (high & 0x3F) << 10 | (low & 0x3FF).
            const __m512i next = _mm512_shuffle_epi8(load(text + 2, at.all >> 1), inOrder);
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
    return result;
}

template <bool kWide>
VASKEL_AVX512 VASKEL_READS_PAGE std::string fromUtf16(const char* marked, bool big) {
    const auto longText = [=] {
        return kWide ? LongTexts::utf16ToUtf32(marked, big) : LongTexts::utf16ToUtf8(marked);
    };
    const ByteOrder mark = utf16Mark(marked);
    if (mark == ByteOrder::Unmarked) return {};
    const bool inBig = mark == ByteOrder::Big;
    const auto* const text = reinterpret_cast<const Byte*>(marked) + 2;
    const auto bits = [=](unsigned value) { return as16(value, inBig); };
    __m512i units = loadPage(text, 2), next = _mm512_setzero_si512();
    Units at = {inFront<std::uint32_t>(_mm512_testn_epi16_mask(units, units)), 0, 0};
    if (at.all == 0xFFFFFFFF) {
        next = loadPage(text + 64, 2);
        const std::uint32_t zeros = _mm512_testn_epi16_mask(next, next);
        if (zeros == 0 && (text[128] | text[129]) != 0) return longText();
        at.all |= std::uint64_t{inFront(zeros)} << 32;
    }
    std::size_t more = 0;  // bytes of UTF-8 beside one a unit
    unsigned done = 0;
    for (std::uint64_t mask = at.all; mask != 0; mask >>= 32, done = 32, units = next) {
        const auto here = static_cast<__mmask32>(mask);
        const __m512i top = _mm512_and_si512(units, all16(bits(0xF800)));
        const std::uint32_t surrogates =
            _mm512_mask_cmpeq_epi16_mask(here, top, all16(bits(0xD800)));
        if (surrogates != 0) {
            const __m512i kind = _mm512_and_si512(units, all16(bits(0xFC00)));
            const std::uint32_t high =
                _mm512_mask_cmpeq_epi16_mask(surrogates, kind, all16(bits(0xD800)));
            at.high |= std::uint64_t{high} << done;
            at.low |= std::uint64_t{surrogates ^ high} << done;
        }
        if (!kWide)
            more += popcount(_mm512_mask_test_epi16_mask(here, units, all16(bits(0xFF80)))) +
                    popcount(_mm512_mask_test_epi16_mask(here, units, all16(bits(0xF800))));
    }
    if (at.high << 1 != at.low || at.high >> 63 != 0) return {};
    // A pair counts six bytes, of which it has four.
    const std::size_t size =
        kWide ? 4 * popcount(at.all & ~at.low) : popcount(at.all) + more - 2 * popcount(at.low);
    return make<kWide>(text, at, size, inBig, big);
}

// ---- From UTF-32 ------------------------------------------------------------

template <bool kTo16>
VASKEL_AVX512 inline std::string make(const Byte* text, std::uint64_t all, std::size_t size,
                                      __m512i inOrder, bool big) {
    std::string result = unwritten < kTo16 ? 2 : 0 > (size, big);
    char* out = result.data() + (kTo16 ? 2 : 0);
    const __m512i order = unitOrder16(big);
    do {
        const __m512i units = _mm512_maskz_loadu_epi32(static_cast<__mmask16>(all), text);
        const __m512i values = _mm512_shuffle_epi8(units, inOrder);
        out = kTo16 ? put16(values, order, out) : put8(values, out);
        text += 64;
        all >>= 16;
    } while (all != 0);
    return result;
}

template <bool kTo16>
VASKEL_AVX512 VASKEL_READS_PAGE std::string fromUtf32(const char* marked, bool big) {
    const auto longText = [=] {
        return kTo16 ? LongTexts::utf32ToUtf16(marked, big) : LongTexts::utf32ToUtf8(marked);
    };
    const ByteOrder mark = utf32Mark(marked);
    if (mark == ByteOrder::Unmarked) return {};
    const auto* const text = reinterpret_cast<const Byte*>(marked) + 4;
    const __m512i inOrder = unitOrder32(mark == ByteOrder::Big);
    std::uint64_t all = 0;
    for (unsigned done = 0; done < 64; done += 16) {
        const __m512i units = loadPage(text + 4 * done, 4);
        const __mmask16 zeros = _mm512_testn_epi32_mask(units, units);
        all |= std::uint64_t{inFront(zeros)} << done;
        if (zeros != 0) break;
        if (done == 48 && get32(text + 256, false) != 0) return longText();
    }
    std::size_t more = 0;  // bytes beside those of one unit
    const Byte* at = text;
    for (std::uint64_t mask = all; mask != 0; mask >>= 16, at += 64) {
        const __m512i units = _mm512_maskz_loadu_epi32(static_cast<__mmask16>(mask), at);
        const __m512i values = _mm512_shuffle_epi8(units, inOrder);
        const auto have = [&](unsigned bits) VASKEL_AVX512 {
            return popcount(_mm512_test_epi32_mask(values, all32(bits)));
        };
        if (have(0xFFE00000) != 0 || (kTo16 && areSurrogates(values) != 0)) return {};
        more +=
            kTo16 ? 2 * have(0xFFFF0000) : have(0xFFFFFF80) + have(0xFFFFF800) + have(0xFFFF0000);
    }
    return make<kTo16>(text, all, (kTo16 ? 2 : 1) * popcount(all) + more, inOrder, big);
}

std::string utf16ToUtf8Text(const char* text) { return fromUtf16<false>(text, false); }
std::string utf32ToUtf8Text(const char* text) { return fromUtf32<false>(text, false); }

}  // namespace
}  // namespace Avx512

const UnicodeForm kUnicodeAvx512 = {"AVX-512",
                                    Avx512::fromUtf8<true>,
                                    Avx512::fromUtf8<false>,
                                    Avx512::fromUtf16<true>,
                                    Avx512::utf16ToUtf8Text,
                                    Avx512::fromUtf32<true>,
                                    Avx512::utf32ToUtf8Text};

}  // namespace Vaskel

#endif
