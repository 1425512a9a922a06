// Writing the commands of a glyph's outline, in a plain form and in one that
// takes all numbers of a command at once.

#ifndef FONTS_OUTLINE_PEN_H
#define FONTS_OUTLINE_PEN_H

#include <cstdint>
#include <cstring>

#ifdef __x86_64__
#include <emmintrin.h>
#endif

#include "fonts/charstring.h"

namespace Fonts {

/// A glyph's current point, and the box of its points: smallest x and y, largest
/// x and y, in a frame whose y axis points up.
struct OutlinePen {
    std::int32_t (&at)[2];
    std::int32_t (&box)[4];
};

/// Room that a command of so many points needs.
constexpr int longestCommand(int points) { return 2 * points * kLongestNumber + 1; }

/// The box of an outline's first point. Not (x, y, x, y): callers store these
/// boxes, so the seed stays as it is.
/// Test: "glyph box: a first point off the diagonal keeps its seed".
inline void seedBox(OutlinePen pen, int x, int y) {
    pen.box[0] = pen.box[1] = x;
    pen.box[2] = pen.box[3] = y;
}

/// Writes count points, x and y of each, as differences, and the command behind
/// them; returns the end. first: the outline is empty.
unsigned char* drawPlain(unsigned char* out, OutlinePen pen, bool first, unsigned char command,
                         const int* points, int count);

// The same for one point and for three, where the outline is not empty. Null,
// and the pen stays as it is, where a number has more than two bytes or the
// processor is not known to have vectors. May write a byte behind the end.
//
// Equal since coordinates are taken only as far as words hold their differences,
// and differences only as far as they take one byte or two.
#ifdef __x86_64__

constexpr short kLargestOfOne = 107;
constexpr short kLargestOfTwo = 1131;
constexpr unsigned kFirstOfTwo = 247;
constexpr std::uint16_t kOneByte = 139;                        // plus d
constexpr std::uint16_t kTwoBytes = (kFirstOfTwo << 8) - 108;  // plus size, and
constexpr std::uint16_t kNegative = 4 << 8;                    // where d is negative

struct EncodedNumbers {
    __m128i words;  // the first byte of a number is the lower one
    bool decline;
};

// Encodes eight differences of coordinates. With size = |d|, a number of two
// bytes is 247 (251 where d is negative) * 256 + size - 108, its upper byte
// first; the smaller ones are d + 139 in one byte. coordinates are limited to a
// word each, so that far ones are told from those that are near.
inline EncodedNumbers encodeNumbers(__m128i coordinates, __m128i differences) {
    const auto all = [](int value) { return _mm_set1_epi16(static_cast<short>(value)); };
    const __m128i sign = _mm_srai_epi16(differences, 15);
    const __m128i size = _mm_sub_epi16(_mm_xor_si128(differences, sign), sign);
    // Differences of coordinates fit into a word where the two upper bits of each
    // are equal, from -16384 to 16383: here the upper bit tells.
    const __m128i far = _mm_xor_si128(coordinates, _mm_add_epi16(coordinates, coordinates));
    const __m128i longer = _mm_or_si128(far, _mm_cmpgt_epi16(size, all(kLargestOfTwo)));

    const __m128i value =
        _mm_add_epi16(_mm_add_epi16(size, all(kTwoBytes)), _mm_and_si128(sign, all(kNegative)));
    const __m128i two = _mm_or_si128(_mm_slli_epi16(value, 8), _mm_srli_epi16(value, 8));
    const __m128i one = _mm_add_epi16(differences, all(kOneByte));
    const __m128i takeTwo = _mm_cmpgt_epi16(size, all(kLargestOfOne));
    const __m128i words = _mm_xor_si128(one, _mm_and_si128(_mm_xor_si128(one, two), takeTwo));
    return {words, (_mm_movemask_epi8(longer) & 0xAAAA) != 0};
}

// The number in the lowest word; its length is one more where adding to its first
// byte overflows.
inline unsigned char* writeNumber(unsigned char* out, std::uint64_t word) {
    const auto both = static_cast<std::uint16_t>(word);
    std::memcpy(out, &both, sizeof both);
    const auto first = static_cast<unsigned char>(both);
    unsigned char sum;
    const bool two =
        __builtin_add_overflow(first, static_cast<unsigned char>(256 - kFirstOfTwo), &sum);
    return out + 1 + two;
}

inline unsigned char* writeNumbers(unsigned char* out, __m128i words, int count) {
    auto four = static_cast<std::uint64_t>(_mm_cvtsi128_si64(words));
    for (int i = 0; i < count; ++i, four >>= 16) out = writeNumber(out, four);
    return out;
}

// Takes the smaller of the lower two of values and box, the larger of the upper.
inline void widen(OutlinePen pen, __m128i values) {
    auto* const box = reinterpret_cast<__m128i*>(pen.box);
    const __m128i old = _mm_loadu_si128(box);
    const __m128i take = _mm_xor_si128(_mm_cmpgt_epi32(values, old), _mm_set_epi32(0, 0, -1, -1));
    _mm_storeu_si128(box, _mm_xor_si128(old, _mm_and_si128(_mm_xor_si128(old, values), take)));
}

inline __m128i pair(int x, int y) {
    return _mm_unpacklo_epi32(_mm_cvtsi32_si128(x), _mm_cvtsi32_si128(y));
}

inline __m128i pairAt(const std::int32_t* at) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(at));
}

// Both at once: the next command reads them at once, which waits for two stores.
inline void storeAt(OutlinePen pen, __m128i pair) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(pen.at), pair);
}

inline unsigned char* drawPointFast(unsigned char* out, OutlinePen pen, unsigned char command,
                                    int x, int y) {
    const __m128i to = pair(x, y);
    const __m128i both = _mm_unpacklo_epi64(to, pairAt(pen.at));
    const __m128i words = _mm_packs_epi32(both, both);  // to, from, to, from
    const __m128i from = _mm_shuffle_epi32(words, _MM_SHUFFLE(1, 1, 1, 1));
    const EncodedNumbers numbers = encodeNumbers(words, _mm_sub_epi16(words, from));
    if (numbers.decline) [[unlikely]]
        return nullptr;
    out = writeNumbers(out, numbers.words, 2);
    *out++ = command;
    widen(pen, _mm_unpacklo_epi64(to, to));
    storeAt(pen, to);
    return out;
}

inline unsigned char* drawCurveFast(unsigned char* out, OutlinePen pen, int x1, int y1, int x2,
                                    int y2, int x3, int y3) {
    const __m128i end = pair(x3, y3);
    const __m128i controls = _mm_unpacklo_epi64(pair(x1, y1), pair(x2, y2));
    // The three points and where the outline ends, so that the points before
    // are the same words turned round by one.
    const __m128i words = _mm_packs_epi32(controls, _mm_unpacklo_epi64(end, pairAt(pen.at)));
    const __m128i before = _mm_shuffle_epi32(words, _MM_SHUFFLE(2, 1, 0, 3));
    const EncodedNumbers numbers = encodeNumbers(words, _mm_sub_epi16(words, before));
    if (numbers.decline) [[unlikely]]
        return nullptr;
    out = writeNumbers(out, numbers.words, 4);
    out = writeNumbers(out, _mm_unpackhi_epi64(numbers.words, numbers.words), 2);
    *out++ = kRrcurveto;

    // Smallest and largest of points 1, 2, 3 and 3 again.
    const __m128i points = _mm_shuffle_epi32(words, _MM_SHUFFLE(2, 2, 1, 0));
    const __m128i others = _mm_shuffle_epi32(points, _MM_SHUFFLE(1, 0, 3, 2));
    const __m128i pairs =
        _mm_unpacklo_epi64(_mm_min_epi16(points, others), _mm_max_epi16(points, others));
    const __m128i turned = _mm_shuffle_epi32(pairs, _MM_SHUFFLE(2, 3, 0, 1));
    const __m128i smallest = _mm_min_epi16(pairs, turned), largest = _mm_max_epi16(pairs, turned);
    const __m128i range = _mm_unpacklo_epi32(smallest, _mm_srli_si128(largest, 8));
    widen(pen, _mm_srai_epi32(_mm_unpacklo_epi16(range, range), 16));
    storeAt(pen, end);
    return out;
}

#endif

}  // namespace Fonts

#endif
