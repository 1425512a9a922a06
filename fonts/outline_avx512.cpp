// Encoding outlines with AVX-512: one piece of code for all commands, as the steps
// of real outlines cannot be foreseen.

#if defined(__x86_64__)

#include <cstring>

#include "fonts/outline_forms.h"
#include "util/avx512.h"

#define VASKEL_AVX512                                       \
    __attribute__((                                         \
        target("avx2,avx512f,avx512bw,avx512vl,avx512vbmi," \
               "avx512vbmi2,bmi,bmi2,popcnt")))

namespace Fonts {
namespace {

// What tells commands apart. A number is encoded in two bytes.
struct Row {
    std::uint16_t begins;  // the first byte of each number
    std::uint16_t ends;    // the second byte of each number
    unsigned char command;
    unsigned char count;    // of numbers
    unsigned char numbers;  // a bit for each
};

constexpr Row rowOf(StepKind kind) {
    const unsigned used = (1u << 4 * kind.points) - 1;
    return {static_cast<std::uint16_t>(used & 0x5555), static_cast<std::uint16_t>(used & 0xAAAA),
            kind.command, static_cast<unsigned char>(2 * kind.points),
            static_cast<unsigned char>((1u << 2 * kind.points) - 1)};
}

constexpr Row kRows[] = {rowOf(kStepKinds[0]), rowOf(kStepKinds[1]), rowOf(kStepKinds[2]),
                         rowOf(kStepKinds[3])};

VASKEL_AVX512 inline __m128i load(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

VASKEL_AVX512 inline __m128i all(int value) { return _mm_set1_epi16(static_cast<short>(value)); }

// With size = |d|, a number of two bytes is 247 (251 where d is negative) * 256 + size
// - 108, its upper byte first; the smaller ones are d + 139 in one byte. One
// instruction then leaves out what is not needed of the words. Equal since
// differences that do not fit into a word are limited to one, and the plain form takes
// commands with a number of more than two bytes.
struct Avx512Encoder {
    const Outline* outline;
    const std::int16_t* points;
    const unsigned char* steps;
    unsigned char* out;
    __m128i smallest, largest;  // x and y by turns
    unsigned folded = 0;        // not the points of the first command, which seed the box

    VASKEL_AVX512 explicit Avx512Encoder(const Outline& drawn, unsigned char* to)
        : outline(&drawn), points(drawn.points), steps(drawn.behindSteps), out(to) {
        const std::int16_t* seed = points - 2;
        if (drawn.stepCount != 0) seed += 2 * kStepKinds[steps[-1]].points;
        smallest = all(seed[0]);
        largest = all(seed[1]);
    }

    VASKEL_AVX512 void step() {
        const unsigned char step = *--steps;
        const Row& row = kRows[step];
        const __m128i to = load(points);
        const auto fold = static_cast<unsigned char>(row.numbers & folded);
        folded = 0xFF;
        smallest = _mm_mask_min_epi16(smallest, fold, smallest, to);
        largest = _mm_mask_max_epi16(largest, fold, largest, to);
        const __m128i d = _mm_subs_epi16(to, load(points - 2));
        const __m128i size = _mm_abs_epi16(d);
        // Bit 15 of 1131 - size where a number is longer, also for a size of 2^15.
        const auto longer =
            static_cast<unsigned>(_mm_movemask_epi8(_mm_sub_epi16(all(1131), size)));
        if ((longer & row.ends) != 0) [[unlikely]] {
            out = encodeStep(out, *outline, static_cast<std::size_t>(points - outline->points) / 2,
                             step);
        } else {
            const __m128i negative = _mm_and_si128(_mm_srai_epi16(d, 15), all(4 << 8));
            const __m128i two = _mm_add_epi16(_mm_add_epi16(size, all((247 << 8) - 108)), negative);
            const __m128i swapped = _mm_shldi_epi16(two, two, 8);
            const __m128i one = _mm_add_epi16(d, all(139));
            const __m128i takeTwo = _mm_cmpgt_epi16(size, all(107));
            // From a size of 108 on, bit 15 is set, which stands for the second byte.
            const auto second =
                static_cast<unsigned>(_mm_movemask_epi8(_mm_add_epi16(size, all(0x8000 - 108))));
            const unsigned kept = (second & row.ends) | row.begins;
            // takeTwo ? swapped : one
            const __m128i words = _mm_ternarylogic_epi32(takeTwo, swapped, one, 0xCA);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out),
                             _mm_maskz_compress_epi8(static_cast<std::uint16_t>(kept), words));
            out += _mm_popcnt_u32(kept);
            *out++ = row.command;
        }
        points += row.count;
    }
};

}  // namespace

VASKEL_AVX512 Encoded encodeBesideAvx512(unsigned char* out, const Outline& outline,
                                         PrivateEnd& end, Plain charstring) {
    Avx512Encoder encoder(outline, out);
    encryptBeside(end, charstring, encoder, outline.stepCount);
    __m128i smallest = encoder.smallest, largest = encoder.largest;
    smallest = _mm_min_epi16(smallest, _mm_unpackhi_epi64(smallest, smallest));
    largest = _mm_max_epi16(largest, _mm_unpackhi_epi64(largest, largest));
    smallest = _mm_cvtepi16_epi32(_mm_min_epi16(smallest, _mm_srli_epi64(smallest, 32)));
    largest = _mm_cvtepi16_epi32(_mm_max_epi16(largest, _mm_srli_epi64(largest, 32)));
    Box box;
    static_assert(sizeof box == sizeof(__m128i));
    const __m128i both = _mm_unpacklo_epi64(smallest, largest);
    std::memcpy(&box, &both, sizeof box);
    return {encoder.out, box};
}

}  // namespace Fonts

#endif
