// Fixed-point text by vectors: eight digits at once, put in their places by one
// shuffle and written by one store that ends with the text.

#if defined(__x86_64__)

#include <cstdint>

#include "units/doutostr.h"
#include "util/avx512.h"

#define VASKEL_AVX512 \
    __attribute__((target("avx512f,avx512bw,avx512vl,avx512ifma,avx512vbmi,bmi,bmi2")))

namespace Vaskel {
namespace {

constexpr int kLanes = 8;  // lane i holds the digit of place 10^i
constexpr int kRowBytes = 32;
constexpr int kMostDecimals = 6;

struct Tables {
    std::uint64_t fractions[kLanes];  // 2^52 / 10^(i + 1), rounded down
    std::uint64_t tens[kLanes];
    std::uint64_t marks[kLanes];  // what digits are added to: byte 2 makes a point
    std::uint64_t signBits[2];
    double belowHalf[2];
    // Which bytes of the lanes a text shows: those of a window on a row.
    unsigned char places[(kMostDecimals + 1) * kRowBytes];  // by decimals
    // What is added to them, alike: blanks, the sign, zeros.
    char frames[4 * kRowBytes];  // by TextWidths::signs + kRowBytes * negative
};

constexpr Tables makeTables() {
    Tables tables{};
    std::uint64_t power = 10;
    for (int i = 0; i < kLanes; ++i, power *= 10) {
        tables.fractions[i] = (std::uint64_t{1} << 52) / power;
        tables.tens[i] = 10;
        tables.marks[i] = std::uint64_t{'.' - '0' + 256} << 16;
    }
    for (int i = 0; i < 2; ++i) {
        tables.signBits[i] = std::uint64_t{1} << 63;
        tables.belowHalf[i] = 0.5 - 0x1p-54;
    }
    constexpr unsigned char zero = 1, point = 2;
    for (int decimals = 0; decimals <= kMostDecimals; ++decimals) {
        unsigned char* const row = &tables.places[kRowBytes * decimals];
        for (int at = 0; at < kRowBytes; ++at) row[at] = zero;
        for (int lane = 0; lane < kLanes; ++lane)
            row[2 * kLanes - 1 - lane + (lane < decimals)] = static_cast<unsigned char>(8 * lane);
        row[2 * kLanes - decimals] = point;
    }
    for (int sign = 0; sign < 4; ++sign)
        for (int at = 0; at < kRowBytes; ++at)
            tables.frames[kRowBytes * sign + at] = at < 14 ? ' ' : at == 14 ? "+- -"[sign] : '0';
    return tables;
}
alignas(64) constexpr Tables kTables = makeTables();

// What the digits' argument needs, of each lane.
constexpr bool fractionsAreExact() {
    constexpr std::uint64_t whole = std::uint64_t{1} << 52, limit = 100000000;
    std::uint64_t power = 10;
    for (int i = 0; i < kLanes; ++i, power *= 10)
        if (whole % power * limit > whole) return false;
    return true;
}
static_assert(fractionsAreExact());

}  // namespace

// The amount is rounded as in formatNumberInWord, always to the nearest double, so that
// nothing is left to check.
//
// Digits: with p = 10^(i + 1), 2^52 = c * p + s and n = q * p + r, c * n + c is
// q * 2^52 + v, where v = (2^52 * (r + 1) - s * (n + 1)) / p. s is above 0, and
// s * (n + 1) is at most 2^52 for n below 10^8, so that v lies in [0, 2^52): v is the
// lower half of the product, and the upper half of 10 * v is the whole part of
// 10 * (r + 1) / p less some more than 0 and at most 10 / p, which is that of 10 * r / p.
//
// Text: highest is the place of the first digit that is no leading zero, or of the units.
// The window on the places begins so that this digit stands behind as many bytes as the
// frame, whose window moves twice as far, has blanks and a sign. In front of the digit
// are zeros of the lanes, to which blanks and sign are added. A row holds every window:
// with w integer digits and d decimals, 2 * w + d is at most 15, and highest at least d
// and at most w + d - 1, so that windows begin at byte 16 - 2 * w - d or later on
// the places and at byte 16 - 2 * w or later on the frames, and at byte 14 or earlier on
// both.
[[gnu::aligned(64)]] VASKEL_AVX512 void formatNumberAvx512(double value, char* out,
                                                           const TextWidths& widths) {
    const Tables* tables = &kTables;
    // Used where they lie: the compiler would make most of them anew.
    __asm__("" : "+r"(tables));
    const __m128d scaled = lowestOf(widths.unit * value);
    const __m128d half = _mm_or_pd(
        _mm_and_pd(scaled, _mm_load_pd(reinterpret_cast<const double*>(tables->signBits))),
        _mm_load_pd(tables->belowHalf));
    const int rounded = _mm_cvttsd_si32(
        _mm_add_round_sd(scaled, half, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC));
    // Also of the lowest integer, which stands for all that is no 32-bit integer.
    const auto negative = static_cast<std::uint32_t>(rounded >> 31);
    const std::uint32_t n = (static_cast<std::uint32_t>(rounded) ^ negative) - negative;
    if (n >= widths.wideLimit) [[unlikely]]
        return formatNumberInWord(value, out, widths);

    const __m512i number = _mm512_set1_epi64(n);
    const __m512i fractions = _mm512_load_si512(tables->fractions);
    const __m512i rests = _mm512_madd52lo_epu64(fractions, number, fractions);
    const __m512i marks = _mm512_load_si512(tables->marks);
    const __m512i digits = _mm512_madd52hi_epu64(marks, rests, _mm512_load_si512(tables->tens));
    const std::uint64_t decimals = widths.decimals;
    const std::uint64_t counted =
        std::uint64_t{_mm512_cmpneq_epi64_mask(digits, _mm512_load_si512(tables->marks))} |
        std::uint64_t{1} << decimals;
    const std::int64_t lowest = __builtin_ctzll(counted);
    const std::int64_t highest = 63 ^ __builtin_clzll(counted);

    const std::int64_t window = widths.skipped + highest;
    const __m128i places = _mm_loadu_si128(
        reinterpret_cast<const __m128i*>(tables->places + kRowBytes * decimals + window));
    const __m128i frame = _mm_loadu_si128(reinterpret_cast<const __m128i*>(
        tables->frames + (negative & kRowBytes) + widths.signs + window + highest));
    const __m128i text = _mm_add_epi8(
        _mm512_castsi512_si128(_mm512_permutexvar_epi8(_mm512_castsi128_si512(places), digits)),
        frame);
    const std::int64_t size = 17 - window - lowest;
    _mm_mask_storeu_epi8(out, static_cast<__mmask16>(_bzhi_u32(~0u, static_cast<unsigned>(size))),
                         text);
    out[size] = '\0';
}

}  // namespace Vaskel

#endif
