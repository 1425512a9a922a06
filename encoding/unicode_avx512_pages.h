// Reads of whole vectors for CPUs with AVX-512: where a text of units ends, and all
// that is behind a place in its page, be it of the text or not.

#ifndef ENCODING_UNICODE_AVX512_PAGES_H
#define ENCODING_UNICODE_AVX512_PAGES_H

#include "encoding/unicode_avx2.h"
#include "encoding/unicode_avx512.h"

#if defined(__x86_64__)

namespace Vaskel {
namespace Avx512 {

// Reads bytes behind a text that are in the page of one that belongs to it.
#define VASKEL_READS_PAGE __attribute__((no_sanitize("address")))

template <unsigned kUnit>
VASKEL_AVX512 inline __m512i least(__m512i a, __m512i b) {
    return kUnit == 2 ? _mm512_min_epu16(a, b) : _mm512_min_epu32(a, b);
}

template <unsigned kUnit>
VASKEL_AVX512 inline std::uint32_t zeros(__m512i units) {
    return kUnit == 2 ? std::uint32_t{_mm512_testn_epi16_mask(units, units)}
                      : std::uint32_t{_mm512_testn_epi32_mask(units, units)};
}

// The bytes in front of the zero unit, in aligned blocks that lie in one page each,
// four of them at a time where these do.
template <unsigned kUnit>
VASKEL_AVX512 VASKEL_READS_PAGE std::size_t sizeToZero(const Byte* text) {
    const std::size_t offset = reinterpret_cast<std::uintptr_t>(text) % 64;
    if (offset % kUnit != 0) return kUnit == 2 ? size16Avx2(text) : size32Avx2(text);
    const Byte* block = text - offset;
    std::uint32_t found = zeros<kUnit>(_mm512_load_si512(block)) >> offset / kUnit
                                                                        << offset / kUnit;
    while (found == 0) {
        block += 64;
        if (reinterpret_cast<std::uintptr_t>(block) % 256 == 0) {
            for (;; block += 256) {
                expect(block);
                expect(block + 128);
                const __m512i a = _mm512_load_si512(block), b = _mm512_load_si512(block + 64);
                const __m512i c = _mm512_load_si512(block + 128),
                              d = _mm512_load_si512(block + 192);
                if (zeros<kUnit>(least<kUnit>(least<kUnit>(a, b), least<kUnit>(c, d))) != 0) break;
            }
        }
        found = zeros<kUnit>(_mm512_load_si512(block));
    }
    return static_cast<std::size_t>(block + kUnit * _tzcnt_u32(found) - text);
}

// 64 bytes that lie in two pages. Where one of the units in the first page ends the
// text, the second one may not be there, and its bytes are zeros.
[[gnu::noinline]] VASKEL_AVX512 VASKEL_READS_PAGE inline __m512i loadAcross(const void* text,
                                                                            unsigned unit) {
    const std::size_t here = 4096 - reinterpret_cast<std::uintptr_t>(text) % 4096;
    const std::uint64_t mask = lowBits(here);
    const __m512i bytes = _mm512_maskz_loadu_epi8(mask, text);
    std::uint64_t zeros = _mm512_mask_testn_epi8_mask(mask, bytes, bytes);
    for (unsigned i = 1; i < unit; i *= 2) zeros &= zeros >> i;
    const std::uint64_t units = ~std::uint64_t{0} / ((std::uint64_t{1} << unit) - 1);
    return (zeros & units) != 0 ? bytes : _mm512_loadu_si512(text);
}

// 64 bytes from here on, where a text has a unit or its end.
VASKEL_AVX512 VASKEL_READS_PAGE inline __m512i loadPage(const void* text, unsigned unit) {
    if (reinterpret_cast<std::uintptr_t>(text) % 4096 > 4096 - 64) return loadAcross(text, unit);
    return _mm512_loadu_si512(text);
}

}  // namespace Avx512
}  // namespace Vaskel

#endif

#endif
