// Fixed-point text by vectors: eight digits at once, put in their places by one
// shuffle and written by one store that ends with the text.

#if defined(__x86_64__)

#include <bit>
#include <cstdint>

#include "units/doutostr.h"
#include "util/avx512.h"

#define VASKEL_AVX512 \
    __attribute__((target("avx512f,avx512bw,avx512vl,avx512ifma,avx512vbmi,bmi,bmi2")))

namespace Vaskel {
namespace {

constexpr int kLanes = 8;  // lane i holds the digit of place 10^i
constexpr int kRowBytes = TextWidths::kWideRow;
constexpr int kMostDecimals = 6;
constexpr unsigned kSignsAhead = TextWidths::kSignsAhead;

struct Tables {
    std::uint64_t fractions[kLanes];  // 2^52 / 10^(i + 1), rounded down
    std::uint64_t tens[kLanes];
    std::uint64_t marks[kLanes];  // what digits are added to: byte 2 makes a point
    double thresholds[kLanes];    // 10^i - 1/2
    double halves[kLanes];        // 2^51 + 1/2
    // Which bytes of the lanes a text shows: those of a window on a row.
    unsigned char places[(kMostDecimals + 1) * kRowBytes];  // by decimals
    // What is added to them, alike: blanks, the sign, zeros.
    char frames[4 * kRowBytes];   // by TextWidths::signs + kRowBytes * not negative
    std::uint64_t amountBits[2];  // all but the sign
    std::uint64_t minusHalf;      // the bits of -1/2
    std::uint32_t ones;
};

constexpr Tables makeTables() {
    Tables tables{};
    std::uint64_t power = 10;
    for (int i = 0; i < kLanes; ++i, power *= 10) {
        tables.fractions[i] = (std::uint64_t{1} << 52) / power;
        tables.tens[i] = 10;
        tables.marks[i] = std::uint64_t{'.' - '0' + 256} << 16;
        tables.thresholds[i] = static_cast<double>(power / 10) - 0.5;
        tables.halves[i] = 0x1p51 + 0.5;
    }
    for (std::uint64_t& bits : tables.amountBits) bits = ~std::uint64_t{0} >> 1;
    tables.minusHalf = std::bit_cast<std::uint64_t>(-0.5);
    tables.ones = ~0u;
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
            tables.frames[kRowBytes * sign + at] = at < 14 ? ' ' : at == 14 ? "-+- "[sign] : '0';
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

// Lanes as bits, not widened once more.
VASKEL_AVX512 inline std::uint32_t laneBits(__mmask8 lanes) {
    std::uint32_t bits;
    __asm__("kmovw %1, %0" : "=r"(bits) : "k"(lanes));
    return bits;
}

}  // namespace

// Rounding: from 2^51 up to 2^52 doubles are multiples of 1/2. The amount and
// 2^51 + 1/2, rounded down, are that multiple whose lower 52 bits are the whole part of
// 2 * amount + 1, and half of these is that of amount + 1/2: the number, where halves go
// away from zero, whatever mode the caller rounds in. The exponent is even, 1074 with its
// bias, so that nothing of it comes into the 52 bits, which are all that is multiplied.
// The number reaches 10^i where the amount reaches 10^i - 1/2.
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
    const double scaled = widths.unit * value;
    if (!widths.inWide(scaled)) [[unlikely]]
        return formatNumberInWord(value, out, widths);
    const __m512d amount = _mm512_broadcastsd_pd(_mm_and_pd(
        lowestOf(scaled), _mm_load_pd(reinterpret_cast<const double*>(tables->amountBits))));
    const std::uint32_t reached =
        laneBits(_mm512_cmp_pd_mask(amount, _mm512_load_pd(tables->thresholds), _CMP_GE_OQ));
    const __m512d twice = _mm512_add_round_pd(amount, _mm512_load_pd(tables->halves),
                                              _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
    const __m512i number = _mm512_srli_epi64(_mm512_castpd_si512(twice), 1);
    const __m512i fractions = _mm512_load_si512(tables->fractions);
    const __m512i rests = _mm512_madd52lo_epu64(fractions, number, fractions);
    const __m512i marks = _mm512_load_si512(tables->marks);
    const __m512i digits = _mm512_madd52hi_epu64(marks, rests, _mm512_load_si512(tables->tens));
    const std::uint32_t counted =
        laneBits(_mm512_cmpneq_epi64_mask(digits, _mm512_load_si512(tables->marks)));
    std::uint64_t highest;
    __asm__("bsr %1, %0" : "=r"(highest) : "r"(std::uint64_t{reached | widths.unitsBit}));
    const std::uint64_t lowest = _tzcnt_u64(counted | widths.unitsBit);
    // Of what rounds to zero, too.
    const std::uint64_t positive =
        -std::uint64_t{std::bit_cast<std::uint64_t>(scaled) < tables->minusHalf} & kRowBytes;

    const __m128i places = _mm_loadu_si128(
        reinterpret_cast<const __m128i*>(tables->places + (widths.placesAt + highest)));
    const __m128i frame = _mm_loadu_si128(reinterpret_cast<const __m128i*>(
        tables->frames + (widths.signsAt + positive + 2 * highest - kSignsAhead)));
    const __m128i text = _mm_add_epi8(
        _mm512_castsi512_si128(_mm512_permutexvar_epi8(_mm512_castsi128_si512(places), digits)),
        frame);
    const std::uint64_t lacking = widths.shortBy + highest + lowest;
    _mm_mask_storeu_epi8(out, static_cast<__mmask16>(tables->ones >> lacking), text);
    out[32 - lacking] = '\0';
}

}  // namespace Vaskel

#endif
