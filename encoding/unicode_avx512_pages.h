// Reads of whole vectors for CPUs with AVX-512: where a text of units ends, and texts
// that can be read with whatever is behind them in their page, be it theirs or not.

#ifndef ENCODING_UNICODE_AVX512_PAGES_H
#define ENCODING_UNICODE_AVX512_PAGES_H

#include <cstring>

#include "encoding/unicode_avx2.h"
#include "encoding/unicode_avx512.h"
#include "encoding/unicode_rules.h"

#if defined(__x86_64__)

namespace Vaskel {
namespace Avx512 {

// Reads bytes behind a text or in front of it that are in the page of one of its own.
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

// How many bytes from the beginning of a text on are looked at before it is known to be
// no short one: 64 bytes of UTF-8, or a mark, 64 units and the zero unit.
template <unsigned kUnit>
constexpr std::size_t kLookedAt = kUnit == 1 ? 64 : 66 * kUnit;

// Room for these, in whole vectors.
template <unsigned kUnit>
using ShortText = char[kUnit == 1 ? 64 : 64 * (kUnit + 1)];

// A text of which less than that lies in its page: where it can be read as if all of
// that were there. A text that ends in this page is moved to room, since there may be
// no next one; one without its mark becomes an empty one.
const char* acrossPages(const char* text, unsigned unit, char* room);

template <unsigned kUnit>
VASKEL_AVX512 inline const char* readable(const char* text, ShortText<kUnit>& room) {
    const bool across = reinterpret_cast<std::uintptr_t>(text) % 4096 > 4096 - kLookedAt<kUnit>;
    return across ? acrossPages(text, kUnit, room) : text;
}

}  // namespace Avx512
}  // namespace Vaskel

#endif

#endif
