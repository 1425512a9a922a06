// Short Unicode texts for CPUs with AVX-512 and its byte shuffles: at most 64 bytes of
// UTF-8 or 64 units, which need no blocks.
//
// Such a text is looked at first, together with whatever is behind it in its page,
// which tells how large the result is; then what sixteen characters become is made
// in one vector and written where it belongs. So nothing is written that has to be
// read again, and the result's memory has the right size at once. What is behind the
// text is made into something as well, but that is not written.
//
// Same results as the rules: values and what becomes of them are made by the steps
// of the block functions. Bad texts of UTF-8, and those with zeros in overlong
// forms, are left to these, like all longer texts.

#ifndef ENCODING_UNICODE_AVX512_SHORT_H
#define ENCODING_UNICODE_AVX512_SHORT_H

#include "encoding/unicode_avx2.h"
#include "encoding/unicode_avx512.h"
#include "encoding/unicode_avx512_pages.h"
#include "encoding/unicode_onepass.h"

#if defined(__x86_64__)

namespace Vaskel::Avx512 {

inline constexpr UnicodeBlocks kBlocks = {
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

/// The lanes in front of the first one whose bit is set; all if there is none.
template <class Mask>
Mask inFront(Mask zeros) {
    return static_cast<Mask>(~zeros & (zeros - 1));
}

/// A string of so many bytes, all of which its maker writes.
std::string unwritten(std::size_t size);

/// The same with a mark of kUnit bytes in front of so many and a zero unit behind.
template <std::size_t kUnit>
inline std::string unwritten(std::size_t size, bool big) {
    std::string result = unwritten(size + 2 * kUnit);
    char* const begin = result.data();
    const std::uint32_t mark = !big ? 0xFEFF : kUnit == 2 ? 0xFFFE : 0xFFFE0000;
    std::memcpy(begin, &mark, kUnit);
    std::memset(begin + kUnit + size, 0, kUnit);
    return result;
}

/// The first bytes only.
VASKEL_AVX512 inline char* put(__m512i bytes, std::size_t size, char* out) {
    const std::uint64_t mask = _bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(size));
    _mm512_mask_storeu_epi8(out, mask, bytes);
    return out + size;
}

/// So many bytes, of which next() makes the next 64.
template <class Next>
VASKEL_AVX512 inline void putAll(std::size_t size, char* out, const Next& next) {
    for (; size > 64; size -= 64, out += 64) _mm512_storeu_si512(out, next());
    put(next(), size, out);
}

VASKEL_AVX512 inline char* put16(__m512i values, __m512i order, char* out) {
    __mmask32 keep;
    const __m512i units = utf16Of(values, keep);
    return put(_mm512_shuffle_epi8(units, order), 2 * popcount(keep), out);
}

VASKEL_AVX512 VASKEL_READS_PAGE inline __m256i half(const char* text) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text));
}

// ---- unicode_avx512_short_units.cpp ------------------------------------------------

std::string shortUtf16ToUtf32(const char* marked, bool big);
std::string shortUtf16ToUtf8(const char* marked);
std::string shortUtf32ToUtf16(const char* marked, bool big);
std::string shortUtf32ToUtf8(const char* marked);

}  // namespace Vaskel::Avx512

#endif
#endif
