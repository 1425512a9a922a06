// Unicode conversions for CPUs with AVX-512 and its byte shuffles: texts of at
// most sixteen characters, which need no loop, and the form itself.
//
// Such a text is read at once, with whatever is behind it in its page; what it
// becomes is in one vector, and its size is known before the result is made: so
// nothing is written that has to be read again, and no step waits for the length
// of the text. Same results as the block functions: the values and what becomes
// of them are made by the same steps. All other texts, bad ones among them, are
// left to these.

#include "encoding/unicode_avx2.h"
#include "encoding/unicode_avx512.h"
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
    .size16 = size16Avx2,
    .size32 = size32Avx2,
    .ahead = 1,
};

// Reads up to 64 bytes of which only some belong to a text.
#define VASKEL_READS_PAGE __attribute__((no_sanitize("address")))

// Whether 64 bytes from here on lie in one page.
bool inOnePage(const char* text) {
    return reinterpret_cast<std::uintptr_t>(text) % 4096 <= 4096 - 64;
}

// The values of a text, and how many there are; none if they are not taken.
struct Values {
    __m512i values;
    std::size_t count;
    static constexpr std::size_t kNone = ~std::size_t{0};
    VASKEL_AVX512 static Values none() { return {_mm512_setzero_si512(), kNone}; }
    bool taken() const { return count != kNone; }
};

VASKEL_AVX512 VASKEL_READS_PAGE inline Values valuesOf8(const char* text) {
    const __m512i block = _mm512_loadu_si512(text);
    const std::uint64_t zeros = _mm512_testn_epi8_mask(block, block);
    if (zeros == 0) return Values::none();
    const std::uint64_t valid = _blsmsk_u64(zeros) >> 1;
    const std::uint64_t cont = _mm512_cmplt_epi8_mask(block, all8(0xC0)) & valid;
    const std::uint64_t two = _mm512_cmpge_epu8_mask(block, all8(0xC0));
    const std::uint64_t three = _mm512_cmpge_epu8_mask(block, all8(0xE0));
    const std::uint64_t four = _mm512_cmpge_epu8_mask(block, all8(0xF0));
    const std::uint64_t five = _mm512_cmpge_epu8_mask(block, all8(0xF8)) & valid;
    // The text has 63 bytes at the most: of a character that is cut off, the
    // first byte that is missing is among the 64.
    const std::uint64_t follow = (two & valid) << 1 | (three & valid) << 2 | (four & valid) << 3;
    const std::uint64_t leads = valid & ~cont;
    const std::size_t count = popcount(leads);
    if (((follow ^ cont) | five) != 0 || count > 16) return Values::none();
    const __m512i starts = _mm512_maskz_compress_epi8(leads, _mm512_load_si512(&kPlaces));
    return {valuesAt(block, starts, _mm512_load_si512(&kLanes), low16(count)), count};
}

VASKEL_AVX512 VASKEL_READS_PAGE inline Values valuesOf16(const char* text, bool big) {
    const __m512i units = _mm512_loadu_si512(text);
    const std::uint32_t zeros = _mm512_testn_epi16_mask(units, units);
    const auto count = static_cast<std::size_t>(_tzcnt_u32(zeros));
    if (count > 16) return Values::none();
    const __m512i ordered = _mm512_shuffle_epi8(units, unitOrder16(big));
    const __m512i values = _mm512_maskz_mov_epi32(low16(count), lowHalf(ordered));
    if (areSurrogates(values) != 0) return Values::none();
    return {values, count};
}

VASKEL_AVX512 VASKEL_READS_PAGE inline Values valuesOf32(const char* text, bool big) {
    const __m512i units = _mm512_loadu_si512(text);
    const std::uint32_t zeros = _mm512_testn_epi32_mask(units, units);
    // A text that has not ended has a unit behind these.
    std::uint32_t next = 0;
    if (zeros == 0) std::memcpy(&next, text + 64, 4);
    if (next != 0) return Values::none();
    const auto count = static_cast<std::size_t>(_tzcnt_u32(zeros | 0x10000));
    const __m512i ordered = _mm512_shuffle_epi8(units, unitOrder32(big));
    const __m512i values = _mm512_maskz_mov_epi32(low16(count), ordered);
    if (_mm512_cmpge_epu32_mask(values, all32(0x200000)) != 0) return Values::none();
    return {values, count};
}

// bytes[0, size) between a mark and a zero unit of kUnit bytes.
template <std::size_t kUnit>
VASKEL_AVX512 std::string textOf(__m512i bytes, std::size_t size, bool big) {
    std::string result;
    const auto write = [&](char* out, std::size_t) VASKEL_AVX512 {
        if (kUnit == 2) {
            const std::uint16_t mark = big ? 0xFFFE : 0xFEFF, zero = 0;
            std::memcpy(out, &mark, kUnit);
            std::memcpy(out + kUnit + size, &zero, kUnit);
        }
        if (kUnit == 4) {
            const std::uint32_t mark = big ? 0xFFFE0000 : 0xFEFF, zero = 0;
            std::memcpy(out, &mark, kUnit);
            std::memcpy(out + kUnit + size, &zero, kUnit);
        }
        _mm512_mask_storeu_epi8(out + kUnit, lowBits(size), bytes);
        return size + 2 * kUnit;
    };
#ifdef __cpp_lib_string_resize_and_overwrite
    result.resize_and_overwrite(size + 2 * kUnit, write);
#else
    result.resize(size + 2 * kUnit);
    write(result.data(), result.size());
#endif
    return result;
}

VASKEL_AVX512 inline std::string text8Of(__m512i values) {
    __mmask64 keep;
    const __m512i bytes = utf8Of(values, keep);
    return textOf<0>(bytes, popcount(keep), false);
}

VASKEL_AVX512 inline std::string text16Of(__m512i values, bool big) {
    __mmask32 keep;
    const __m512i units = utf16Of(values, keep);
    return textOf<2>(_mm512_shuffle_epi8(units, unitOrder16(big)), 2 * popcount(keep), big);
}

VASKEL_AVX512 inline std::string text32Of(const Values& of, bool big) {
    return textOf<4>(_mm512_shuffle_epi8(of.values, unitOrder32(big)), 4 * of.count, big);
}

using AnyLength = OnePassForm<kBlocks>;

// For UTF-16: whether a value is a surrogate, or zero as an overlong form makes it.
VASKEL_AVX512 inline bool bad16(const Values& of) {
    const __mmask16 zeros = _mm512_testn_epi32_mask(of.values, of.values);
    return ((zeros & low16(of.count)) | areSurrogates(of.values)) != 0;
}

VASKEL_AVX512 std::string shortUtf8ToUtf32(const char* text, bool big) {
    if (startsAsUtf8(text) && inOnePage(text)) {
        const Values of = valuesOf8(text);
        if (of.taken()) return text32Of(of, big);
    }
    return AnyLength::utf8ToUtf32(text, big);
}

VASKEL_AVX512 std::string shortUtf8ToUtf16(const char* text, bool big) {
    if (startsAsUtf8(text) && inOnePage(text)) {
        const Values of = valuesOf8(text);
        if (of.taken() && !bad16(of)) return text16Of(of.values, big);
    }
    return AnyLength::utf8ToUtf16(text, big);
}

VASKEL_AVX512 std::string shortUtf16ToUtf32(const char* text, bool big) {
    const ByteOrder order = utf16Mark(text);
    if (order != ByteOrder::Unmarked && inOnePage(text + 2)) {
        const Values of = valuesOf16(text + 2, order == ByteOrder::Big);
        if (of.taken()) return text32Of(of, big);
    }
    return AnyLength::utf16ToUtf32(text, big);
}

VASKEL_AVX512 std::string shortUtf16ToUtf8(const char* text) {
    const ByteOrder order = utf16Mark(text);
    if (order != ByteOrder::Unmarked && inOnePage(text + 2)) {
        const Values of = valuesOf16(text + 2, order == ByteOrder::Big);
        if (of.taken()) return text8Of(of.values);
    }
    return AnyLength::utf16ToUtf8(text);
}

VASKEL_AVX512 std::string shortUtf32ToUtf16(const char* text, bool big) {
    const ByteOrder order = utf32Mark(text);
    if (order != ByteOrder::Unmarked && inOnePage(text + 4)) {
        const Values of = valuesOf32(text + 4, order == ByteOrder::Big);
        if (of.taken() && !bad16(of)) return text16Of(of.values, big);
    }
    return AnyLength::utf32ToUtf16(text, big);
}

VASKEL_AVX512 std::string shortUtf32ToUtf8(const char* text) {
    const ByteOrder order = utf32Mark(text);
    if (order != ByteOrder::Unmarked && inOnePage(text + 4)) {
        const Values of = valuesOf32(text + 4, order == ByteOrder::Big);
        if (of.taken()) return text8Of(of.values);
    }
    return AnyLength::utf32ToUtf8(text);
}

}  // namespace
}  // namespace Avx512

const UnicodeForm kUnicodeAvx512 = {"AVX-512",
                                    Avx512::shortUtf8ToUtf32,
                                    Avx512::shortUtf8ToUtf16,
                                    Avx512::shortUtf16ToUtf32,
                                    Avx512::shortUtf16ToUtf8,
                                    Avx512::shortUtf32ToUtf16,
                                    Avx512::shortUtf32ToUtf8};

}  // namespace Vaskel

#endif
