#include "fonts/outline_forms.h"

#include <atomic>
#include <cstring>

#ifdef __x86_64__
#include <emmintrin.h>
#endif

#include "util/cpu.h"

namespace Fonts {
namespace {

struct NoEncoder {
    void step() {}
};

}  // namespace

Encoded encodeBesidePlain(unsigned char* out, const Outline& outline, PrivateEnd& end,
                          Plain charstring) {
    NoEncoder none;
    encryptBeside(end, charstring, none, 0);
    return {encodePlain(out, outline), boxOf(outline)};
}

#if defined(__x86_64__)

namespace {

constexpr short kLargestOfOne = 107;
constexpr short kLargestOfTwo = 1131;
constexpr unsigned kFirstOfTwo = 247;
constexpr std::uint16_t kOneByte = 139;                        // plus d
constexpr std::uint16_t kTwoBytes = (kFirstOfTwo << 8) - 108;  // plus size, and
constexpr std::uint16_t kNegative = 4 << 8;                    // where d is negative

inline __m128i load(const std::int16_t* points) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(points));
}

struct EncodedNumbers {
    __m128i words;  // the first byte of a number is the lower one
    bool decline;
};

// Encodes the differences of coordinates and those before, count numbers. With
// size = |d|, a number of two bytes is 247 (251 where d is negative) * 256 + size -
// 108, its upper byte first; the smaller ones are d + 139 in one byte. Differences
// that do not fit into a word are limited to one and take more than two bytes.
inline EncodedNumbers encodeNumbers(const std::int16_t* points, int count) {
    const auto all = [](int value) { return _mm_set1_epi16(static_cast<short>(value)); };
    const __m128i differences = _mm_subs_epi16(load(points), load(points - 2));
    const __m128i sign = _mm_srai_epi16(differences, 15);
    // -32768 stays what it is, and is longer below, since it is not -1131 or more.
    const __m128i size = _mm_sub_epi16(_mm_xor_si128(differences, sign), sign);
    const __m128i longer = _mm_or_si128(_mm_cmpgt_epi16(size, all(kLargestOfTwo)),
                                        _mm_cmpgt_epi16(all(-kLargestOfTwo), differences));

    const __m128i value =
        _mm_add_epi16(_mm_add_epi16(size, all(kTwoBytes)), _mm_and_si128(sign, all(kNegative)));
    const __m128i two = _mm_or_si128(_mm_slli_epi16(value, 8), _mm_srli_epi16(value, 8));
    const __m128i one = _mm_add_epi16(differences, all(kOneByte));
    const __m128i takeTwo = _mm_cmpgt_epi16(size, all(kLargestOfOne));
    const __m128i words = _mm_xor_si128(one, _mm_and_si128(_mm_xor_si128(one, two), takeTwo));
    return {words, (_mm_movemask_epi8(longer) & ((1 << 2 * count) - 1)) != 0};
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

// All numbers of a command at once. The plain form takes commands with a number of
// more than two bytes.
struct Sse2Encoder {
    const Outline* outline;
    const std::int16_t* points;
    const unsigned char* steps;
    unsigned char* out;

    void step() {
        const unsigned char step = *--steps;
        const StepKind kind = kStepKinds[step];
        const EncodedNumbers numbers = encodeNumbers(points, 2 * kind.points);
        if (numbers.decline) [[unlikely]] {
            out = encodeStep(out, *outline, static_cast<std::size_t>(points - outline->points) / 2,
                             step);
        } else {
            // Six numbers in any case: which step comes cannot be foreseen, and where
            // the command's numbers end is read rather than branched to.
            unsigned char* ends[4] = {out};
            ends[1] = writeNumbers(out, numbers.words, 2);
            ends[3] = writeNumbers(ends[1], _mm_srli_si128(numbers.words, 4), 4);
            out = ends[kind.points];
            *out++ = kind.command;
        }
        points += 2 * kind.points;
    }
};

}  // namespace

Encoded encodeBesideSse2(unsigned char* out, const Outline& outline, PrivateEnd& end,
                         Plain charstring) {
    Sse2Encoder encoder{&outline, outline.points, outline.behindSteps, out};
    encryptBeside(end, charstring, encoder, outline.stepCount);
    return {encoder.out, boxOf(outline)};
}

#endif

namespace {

constexpr OutlineForm kForms[] = {
    {"plain", encodeBesidePlain},
#if defined(__x86_64__)
    {"sse2", encodeBesideSse2},
    {"avx512", encodeBesideAvx512},
#endif
};

std::size_t usableForms() {
    if (std::size(kForms) == 1) return 1;
    return Vaskel::cpuLevel() >= Vaskel::CpuLevel::Avx512Vbmi2 ? 3 : 2;
}

constinit std::atomic<EncodeBeside> gForm{nullptr};

}  // namespace

std::span<const OutlineForm> outlineForms() { return std::span(kForms).first(usableForms()); }

EncodeBeside outlineForm() {
    if (gForm.load(std::memory_order_relaxed) == nullptr) forceOutlineForm(nullptr);
    return gForm.load(std::memory_order_relaxed);
}

void forceOutlineForm(const OutlineForm* form) {
    if (form == nullptr) form = &kForms[usableForms() - 1];
    gForm.store(form->encodeBeside, std::memory_order_relaxed);
}

}  // namespace Fonts
