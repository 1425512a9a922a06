// Writing the commands of an outline with AVX-512. Numbers are encoded as in the form
// of outline_pen.h and equal for its reasons; one instruction then leaves out what
// those of one byte do not need of their words.

#ifndef FONTS_OUTLINE_PEN_AVX512_H
#define FONTS_OUTLINE_PEN_AVX512_H

#if defined(__x86_64__)

#include "fonts/outline_pen.h"
#include "util/avx512.h"

#define VASKEL_AVX512                                       \
    __attribute__((                                         \
        target("avx2,avx512f,avx512bw,avx512vl,avx512vbmi," \
               "avx512vbmi2,bmi,bmi2,popcnt")))

namespace Fonts::Avx512 {

// Eight times the same word each. Defined elsewhere: the compiler would make these
// numbers anew for each command, on the port that shuffles wait for.
struct Numbers {
    alignas(16) std::uint16_t largestOfOne[8], largestOfTwo[8], one[8], two[8], negative[8];
    std::uint16_t begins[16], ends[16];  // the first and second bytes of eight words
};
extern const Numbers kNumbers;

VASKEL_AVX512 inline __m128i load(const std::uint16_t* words) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(words));
}

/// Bits of a where mask has them, else those of b.
VASKEL_AVX512 inline __m128i choose(__m128i mask, __m128i a, __m128i b) {
    return _mm_ternarylogic_epi64(mask, a, b, 0xCA);
}

// Writes the numbers in the lower words, coordinates less those of the point before,
// and the command behind them; null where a number has more than two bytes. Stores a
// whole vector, for which a curve's room is enough.
static_assert(sizeof(__m128i) <= longestCommand(3));
template <int numbers>
VASKEL_AVX512 inline unsigned char* writeCommand(unsigned char* out, __m128i coordinates,
                                                 __m128i before, unsigned char command) {
    const __m128i differences = _mm_sub_epi16(coordinates, before);
    const __m128i size = _mm_abs_epi16(differences);
    // c ^ 2c | size > largest: the upper bits tell of far coordinates and long numbers.
    const __m128i longer =
        _mm_ternarylogic_epi64(coordinates, _mm_add_epi16(coordinates, coordinates),
                               _mm_cmpgt_epi16(size, load(kNumbers.largestOfTwo)), 0x3C | 0xAA);
    if ((_mm_movemask_epi8(longer) & 0xAAAA) != 0) [[unlikely]]
        return nullptr;

    const __m128i value =
        _mm_add_epi16(_mm_add_epi16(size, load(kNumbers.two)),
                      _mm_and_si128(_mm_srai_epi16(differences, 15), load(kNumbers.negative)));
    const __m128i takeTwo = _mm_cmpgt_epi16(size, load(kNumbers.largestOfOne));
    const __m128i words = choose(takeTwo, _mm_shldi_epi16(value, value, 8),
                                 _mm_add_epi16(differences, load(kNumbers.one)));
    // The first byte of each number and of the command, the second one of long numbers.
    const __m128i begins = load(kNumbers.begins + 8 - (numbers + 1));
    const __m128i ends = load(kNumbers.ends + 8 - numbers);
    const __m128i kept = _mm_ternarylogic_epi64(takeTwo, ends, begins, 0xEA);
    const __mmask16 bytes = _mm_test_epi8_mask(kept, kept);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out),
                     _mm_maskz_compress_epi8(bytes, _mm_insert_epi16(words, command, numbers)));
    return out + _mm_popcnt_u32(bytes);
}

// Widens the box by a smallest and a largest point.
VASKEL_AVX512 inline void widen(OutlinePen pen, __m128i smallest, __m128i largest) {
    auto* const box = reinterpret_cast<__m128i*>(pen.box);
    const __m128i old = _mm_loadu_si128(box);
    const __m128i range = _mm_unpacklo_epi64(smallest, largest);
    _mm_storeu_si128(box,
                     _mm_blend_epi32(_mm_min_epi32(old, range), _mm_max_epi32(old, range), 0xC));
}

VASKEL_AVX512 inline __m128i pair(int x, int y) {
    return _mm_insert_epi32(_mm_cvtsi32_si128(x), y, 1);
}

VASKEL_AVX512 inline unsigned char* drawPoint(unsigned char* out, OutlinePen pen,
                                              unsigned char command, int x, int y) {
    const __m128i to = pair(x, y);
    const __m128i both = _mm_unpacklo_epi64(to, pairAt(pen.at));
    const __m128i words = _mm_packs_epi32(both, both);  // to, from, to, from
    const __m128i from = _mm_shuffle_epi32(words, _MM_SHUFFLE(1, 1, 1, 1));
    out = writeCommand<2>(out, words, from, command);
    if (out == nullptr) [[unlikely]]
        return nullptr;
    widen(pen, to, to);
    storeAt(pen, to);
    return out;
}

VASKEL_AVX512 inline unsigned char* drawCurve(unsigned char* out, OutlinePen pen, int x1, int y1,
                                              int x2, int y2, int x3, int y3) {
    const __m128i end = pair(x3, y3);
    const __m128i controls = _mm_unpacklo_epi64(pair(x1, y1), pair(x2, y2));
    // The three points and where the outline ends, so that the points before
    // are the same words turned round by one.
    const __m128i words = _mm_packs_epi32(controls, _mm_unpacklo_epi64(end, pairAt(pen.at)));
    const __m128i before = _mm_shuffle_epi32(words, _MM_SHUFFLE(2, 1, 0, 3));
    out = writeCommand<6>(out, words, before, kRrcurveto);
    if (out == nullptr) [[unlikely]]
        return nullptr;
    const __m128i ends = _mm_unpacklo_epi64(end, end);
    const __m128i smaller = _mm_min_epi32(controls, ends), larger = _mm_max_epi32(controls, ends);
    widen(pen, _mm_min_epi32(smaller, _mm_unpackhi_epi64(smaller, smaller)),
          _mm_max_epi32(larger, _mm_unpackhi_epi64(larger, larger)));
    storeAt(pen, end);
    return out;
}

}  // namespace Fonts::Avx512

#endif

#endif
