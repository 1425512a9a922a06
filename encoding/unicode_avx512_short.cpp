// Unicode conversions for CPUs with AVX-512 and its byte shuffles: short texts of
// UTF-8, and the form itself.

#include "encoding/unicode_avx512_short.h"

#if defined(__x86_64__)

namespace Vaskel {
namespace Avx512 {

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

VASKEL_AVX512 VASKEL_READS_PAGE const char* acrossPages(const char* text, unsigned unit,
                                                        char* room) {
    if (unit != 1 && (unit == 2 ? utf16Mark(text) : utf32Mark(text)) == ByteOrder::Unmarked) {
        std::memset(room, 0, 4);
        return room;
    }
    const std::size_t here = 4096 - reinterpret_cast<std::uintptr_t>(text) % 4096;
    for (std::size_t done = 0; done < here; done += 64) {
        const std::uint64_t mask = lowBits(here - done);
        const __m512i bytes = _mm512_maskz_loadu_epi8(mask, text + done);
        _mm512_storeu_si512(room + done, bytes);
        // Of a unit that lies in both pages the other half is there, or one before it
        // ends the text.
        std::uint64_t zeros = _mm512_mask_testn_epi8_mask(mask, bytes, bytes);
        for (unsigned i = 1; i < unit; i *= 2) zeros &= zeros >> i;
        const std::uint64_t units = ~std::uint64_t{0} / ((std::uint64_t{1} << unit) - 1);
        if ((zeros & units) != 0) return room;
    }
    return text;
}

namespace {

VASKEL_AVX512 VASKEL_READS_PAGE inline __m128i quarter(const char* text) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
}

// So many characters of ASCII.
template <bool kWide>
VASKEL_AVX512 VASKEL_READS_PAGE inline std::string makeAscii(const char* text, std::size_t count,
                                                             bool big) {
    constexpr std::size_t kUnit = kWide ? 4 : 2;
    std::string result = unwritten<kUnit>(kUnit * count, big);
    const __m512i order = kWide ? unitOrder32(big) : unitOrder16(big);
    putAll(kUnit * count, result.data() + kUnit, [&]() VASKEL_AVX512 VASKEL_READS_PAGE {
        const __m512i units =
            kWide ? _mm512_cvtepu8_epi32(quarter(text)) : _mm512_cvtepu8_epi16(half(text));
        text += 64 / kUnit;
        return _mm512_shuffle_epi8(units, order);
    });
    return result;
}

// The values of a text's characters, sixteen after the other.
class Values {
 public:
    VASKEL_AVX512 VASKEL_READS_PAGE Values(const char* text, std::uint64_t leads)
        : mBytes(_mm512_loadu_si512(text)),
          mStarts(_mm512_maskz_compress_epi8(leads, _mm512_load_si512(&kPlaces))),
          mLanes(_mm512_load_si512(&kLanes)) {}

    VASKEL_AVX512 __m512i next(__mmask16 there) {
        const __m512i values = valuesAt(mBytes, mStarts, mLanes, there);
        mLanes = _mm512_add_epi8(mLanes, all8(16));
        return values;
    }

 private:
    __m512i mBytes, mStarts, mLanes;
};

// As UTF-16; false if there is a zero, a surrogate or an overlong form, with which
// UTF-16 has other sizes or none.
VASKEL_AVX512 inline bool putCharacters16(Values values, std::uint64_t mask, bool four, bool big,
                                          char* out, const char* end) {
    const Narrow32 narrow(false, big);
    const __m512i order = unitOrder16(big);
    __m512i least = all32(~0u);  // zero behind one of those
    for (; mask != 0; mask >>= 16) {
        const auto some = static_cast<__mmask16>(mask);
        const __m512i sixteen = values.next(some);
        least = _mm512_mask_min_epu32(least, some, least, zeroIfApart(sixteen));
        if (four) {
            out = put16(sixteen, order, out);
        } else {
            _mm256_mask_storeu_epi16(out, some, narrow(sixteen));
            out += 32;
        }
    }
    return _mm512_testn_epi32_mask(least, least) == 0 && (!four || out == end);
}

[[gnu::noinline]] void makeByRules(std::string& result, const char* text, bool big) {
    result = LongTexts::utf8ToUtf16(text, big);
}

// Characters that begin at leads, some of which may have four bytes.
template <bool kWide>
VASKEL_AVX512 VASKEL_READS_PAGE inline std::string make(const char* text, std::uint64_t leads,
                                                        std::uint64_t fours, bool big) {
    constexpr std::size_t kUnit = kWide ? 4 : 2;
    const std::size_t count = popcount(leads);
    const std::size_t size = kUnit * (count + (kWide ? 0 : popcount(fours)));
    std::string result = unwritten<kUnit>(size, big);
    char* const out = result.data() + kUnit;
    Values values(text, leads);
    if (kWide) {
        const __m512i order = unitOrder32(big);
        putAll(size, out,
               [&]() VASKEL_AVX512 { return _mm512_shuffle_epi8(values.next(0xFFFF), order); });
    } else {
        const std::uint64_t mask = lowBits(count);
        if (!(fours == 0 ? putCharacters16(values, mask, false, big, out, out + size)
                         : putCharacters16(values, mask, true, big, out, out + size)))
            makeByRules(result, text, big);
    }
    return result;
}

template <bool kWide>
VASKEL_AVX512 VASKEL_READS_PAGE std::string shortUtf8(const char* text, bool big) {
    constexpr auto longText = kWide ? LongTexts::utf8ToUtf32 : LongTexts::utf8ToUtf16;
    ShortText<1> room;
    text = readable<1>(text, room);
    if (!startsAsUtf8(text)) return {};
    const __m512i bytes = _mm512_loadu_si512(text);
    const std::uint64_t zeros = _mm512_testn_epi8_mask(bytes, bytes);
    if (zeros == 0 && text[64] != 0) return longText(text, big);
    const std::uint64_t all = inFront(zeros);
    const std::uint64_t high = bitsOf(_mm512_movepi8_mask(bytes)) & all;
    if (high == 0) return makeAscii<kWide>(text, popcount(all), big);
    const auto from = [&](unsigned first) VASKEL_AVX512 {
        return bitsOf(_mm512_cmpge_epu8_mask(bytes, all8(first))) & all;
    };
    const std::uint64_t leads = from(0xC0), three = from(0xE0), four = from(0xF0);
    const std::uint64_t follow = leads << 1 | three << 2 | four << 3;
    const std::uint64_t behind = leads >> 63 | three >> 62 | four >> 61;
    if (((follow ^ high ^ leads) | behind) != 0 || (four != 0 && from(0xF8) != 0))
        return longText(text, big);
    return make<kWide>(text, all & ~follow, four, big);
}

}  // namespace
}  // namespace Avx512

const UnicodeForm kUnicodeAvx512 = {"AVX-512",
                                    Avx512::shortUtf8<true>,
                                    Avx512::shortUtf8<false>,
                                    Avx512::shortUtf16ToUtf32,
                                    Avx512::shortUtf16ToUtf8,
                                    Avx512::shortUtf32ToUtf16,
                                    Avx512::shortUtf32ToUtf8};

}  // namespace Vaskel

#endif
