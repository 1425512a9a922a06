// Unicode conversions for CPUs with AVX-512 and its byte shuffles: texts of at
// most sixteen characters, which need no loop, short ones, and the form itself.
//
// The shortest texts are read at once, with whatever is behind them in their page;
// what they become is in one vector, and its size is known before the result is
// made: so nothing is written that has to be read again, and no step waits for the
// length of the text. Same results as the block functions: the values and what
// becomes of them are made by the same steps. All other texts, bad ones among
// them, are left to these.

#include "encoding/unicode_avx2.h"
#include "encoding/unicode_avx512.h"
#include "encoding/unicode_onepass.h"

#if defined(__x86_64__)

namespace Vaskel {
namespace Avx512 {
namespace {

// Reads up to 64 bytes of which only some belong to a text.
#define VASKEL_READS_PAGE __attribute__((no_sanitize("address")))

// Whether 64 bytes from here on lie in one page.
bool inOnePage(const char* text) {
    return reinterpret_cast<std::uintptr_t>(text) % 4096 <= 4096 - 64;
}

constexpr std::size_t kNone = ~std::size_t{0};

// The values of a text, and how many there are if they are taken; how many bytes
// it has, if that is known.
struct Values {
    __m512i values;
    std::size_t count, size;
    VASKEL_AVX512 static Values none(std::size_t size = kNone) {
        return {_mm512_setzero_si512(), kNone, size};
    }
    bool taken() const { return count != kNone; }
};

VASKEL_AVX512 VASKEL_READS_PAGE inline Values valuesOf8(const char* text) {
    const __m512i block = _mm512_loadu_si512(text);
    const std::uint64_t zeros = _mm512_testn_epi8_mask(block, block);
    if (zeros == 0) return Values::none(text[64] == 0 ? 64 : kNone);
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
    const std::size_t count = popcount(leads), size = popcount(valid);
    if (((follow ^ cont) | five) != 0 || count > 16) return Values::none(size);
    const __m512i starts = _mm512_maskz_compress_epi8(leads, _mm512_load_si512(&kPlaces));
    return {valuesAt(block, starts, _mm512_load_si512(&kLanes), low16(count)), count, size};
}

VASKEL_AVX512 VASKEL_READS_PAGE inline Values valuesOf16(const char* text, bool big) {
    const __m512i units = _mm512_loadu_si512(text);
    const std::uint32_t zeros = _mm512_testn_epi16_mask(units, units);
    const auto count = static_cast<std::size_t>(_tzcnt_u32(zeros));
    const std::size_t size = zeros == 0 ? kNone : 2 * count;
    if (count > 16) return Values::none(size);
    const __m512i ordered = _mm512_shuffle_epi8(units, unitOrder16(big));
    const __m512i values = _mm512_maskz_mov_epi32(low16(count), lowHalf(ordered));
    if (areSurrogates(values) != 0) return Values::none(size);
    return {values, count, size};
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
    if (_mm512_cmpge_epu32_mask(values, all32(0x200000)) != 0) return Values::none(4 * count);
    return {values, count, 4 * count};
}

// The bytes in front of the zero unit, in aligned blocks that lie in one page each.
template <unsigned kUnit>
VASKEL_AVX512 VASKEL_READS_PAGE __attribute__((noinline)) std::size_t sizeToZero(const Byte* text) {
    const std::size_t offset = reinterpret_cast<std::uintptr_t>(text) % 64;
    if (offset % kUnit != 0) return kUnit == 2 ? size16Avx2(text) : size32Avx2(text);
    const auto zeros = [](const Byte* block) VASKEL_AVX512 VASKEL_READS_PAGE {
        const __m512i units = _mm512_load_si512(block);
        return kUnit == 2 ? std::uint32_t{_mm512_testn_epi16_mask(units, units)}
                          : std::uint32_t{_mm512_testn_epi32_mask(units, units)};
    };
    const Byte* block = text - offset;
    std::uint32_t found = zeros(block) >> offset / kUnit << offset / kUnit;
    for (; found == 0; found = zeros(block)) {
        block += 64;
        expect(block);
    }
    return static_cast<std::size_t>(block + kUnit * _tzcnt_u32(found) - text);
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

std::string convert(const UnicodeWay& way, BlockFunction blocks, ByteOrders orders,
                    const Byte* text, std::size_t size) {
    return size <= kShortUnicode ? convertShortUnicode(way, blocks, orders, text, size)
                                 : convertLongUnicode(way, blocks, 1, orders, text, size);
}

// For UTF-16: whether a value is a surrogate, or zero as an overlong form makes it.
VASKEL_AVX512 inline bool bad16(const Values& of) {
    const __mmask16 zeros = _mm512_testn_epi32_mask(of.values, of.values);
    return ((zeros & low16(of.count)) | areSurrogates(of.values)) != 0;
}

template <bool kWide>
VASKEL_AVX512 std::string anyUtf8(const char* text, bool big) {
    if (!startsAsUtf8(text)) return {};
    const auto* const bytes = reinterpret_cast<const Byte*>(text);
    const Values of = inOnePage(text) ? valuesOf8(text) : Values::none();
    if (of.taken() && kWide) return text32Of(of, big);
    if (of.taken() && !bad16(of)) return text16Of(of.values, big);
    return convert(kWide ? kUtf8ToUtf32 : kUtf8ToUtf16, kWide ? utf8ToUtf32 : utf8ToUtf16,
                   {false, big}, bytes, of.size != kNone ? of.size : size8Avx2(bytes));
}

template <bool kWide>
VASKEL_AVX512 std::string anyUtf16(const char* text, bool big) {
    const ByteOrder order = utf16Mark(text);
    if (order == ByteOrder::Unmarked) return {};
    text += 2;
    const auto* const bytes = reinterpret_cast<const Byte*>(text);
    const bool inBig = order == ByteOrder::Big;
    const Values of = inOnePage(text) ? valuesOf16(text, inBig) : Values::none();
    if (of.taken()) return kWide ? text32Of(of, big) : text8Of(of.values);
    return convert(kWide ? kUtf16ToUtf32 : kUtf16ToUtf8, kWide ? utf16ToUtf32 : utf16ToUtf8,
                   {inBig, big}, bytes, of.size != kNone ? of.size : sizeToZero<2>(bytes));
}

template <bool kTo16>
VASKEL_AVX512 std::string anyUtf32(const char* text, bool big) {
    const ByteOrder order = utf32Mark(text);
    if (order == ByteOrder::Unmarked) return {};
    text += 4;
    const auto* const bytes = reinterpret_cast<const Byte*>(text);
    const bool inBig = order == ByteOrder::Big;
    const Values of = inOnePage(text) ? valuesOf32(text, inBig) : Values::none();
    if (of.taken() && !kTo16) return text8Of(of.values);
    if (of.taken() && !bad16(of)) return text16Of(of.values, big);
    return convert(kTo16 ? kUtf32ToUtf16 : kUtf32ToUtf8, kTo16 ? utf32ToUtf16 : utf32ToUtf8,
                   {inBig, big}, bytes, of.size != kNone ? of.size : sizeToZero<4>(bytes));
}

std::string anyUtf16ToUtf8(const char* text) { return anyUtf16<false>(text, false); }
std::string anyUtf32ToUtf8(const char* text) { return anyUtf32<false>(text, false); }

}  // namespace
}  // namespace Avx512

const UnicodeForm kUnicodeAvx512 = {"AVX-512",
                                    Avx512::anyUtf8<true>,
                                    Avx512::anyUtf8<false>,
                                    Avx512::anyUtf16<true>,
                                    Avx512::anyUtf16ToUtf8,
                                    Avx512::anyUtf32<true>,
                                    Avx512::anyUtf32ToUtf8};

}  // namespace Vaskel

#endif
