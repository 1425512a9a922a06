// Fixed-point text: the digits of a rounded number around a decimal point.

#include "units/doutostr.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "platform/orlune.h"
#include "util/cpu.h"
#include "vaskel/units.h"

namespace Vaskel {
namespace {

// 2^31 for the lowest integer, which has no positive counterpart.
std::uint32_t magnitude(int value) {
    const auto bits = static_cast<std::uint32_t>(value);
    return value < 0 ? 0u - bits : bits;
}

// The place value of the first digit, at most 10^18 (negative widths: 10^10,
// before the last division).
std::uint64_t firstPlace(std::uint32_t n, std::uint64_t unit, int intDigits) {
    std::uint64_t place = unit;
    if (intDigits > 0) {
        for (int i = 1; i < intDigits; ++i) place *= 10;
        return place;
    }
    // Multiplied before it is tested, so that the units place is the lowest.
    do place *= 10;
    while (place <= n);
    return place / 10;
}

// The pairs of digits "00" to "99", the first one in the low byte.
struct DigitPairs {
    std::uint16_t of[100];
};

constexpr DigitPairs makeDigitPairs() {
    DigitPairs pairs{};
    for (int i = 0; i < 100; ++i) pairs.of[i] = static_cast<std::uint16_t>(i / 10 | (i % 10) << 8);
    return pairs;
}
constexpr DigitPairs kDigitPairs = makeDigitPairs();

// n below 10^6 as six digits in the upper bytes, the most significant lowest.
std::uint64_t sixDigits(std::uint32_t n) {
    const std::uint32_t high = n / 10000;
    const std::uint32_t upper = n / 100;  // by itself, not of a rest
    return std::uint64_t{kDigitPairs.of[high]} << 16 |
           std::uint64_t{kDigitPairs.of[upper - 100 * high]} << 32 |
           std::uint64_t{kDigitPairs.of[n - 100 * upper]} << 48;
}

constexpr bool kWords = std::endian::native == std::endian::little;
constexpr std::uint64_t kBlanks = 0x2020202020202020;

// Where the units digit stands in a word of eight digits, by the decimals.
struct Marks {
    std::uint64_t unitsHigh;  // its highest bit: stops the count of leading zeros
    std::uint64_t unitsLow;   // its lowest bit: stops the count of trailing zeros
    std::uint64_t upToUnits;  // it and the digits before it
    std::uint64_t point;      // makes a point of a "0" there
};

constexpr Marks marksOf(int decimals) {
    const std::uint64_t units = std::uint64_t{1} << (8 * (7 - decimals));
    return {units << 7, units, (units << 8) - 1, units * ('0' ^ '.')};
}
constexpr Marks kMarks[] = {marksOf(0), marksOf(1), marksOf(2), marksOf(3), marksOf(4), marksOf(5)};

// What surrounds the digits of a word: blanks, then the sign at byte
// first - 2, then digits. Each byte is its difference to a blank, so that
// shifting brings in blanks.
struct Frames {
    std::uint64_t of[4][8];  // by TextWidths::signs / 32 + not negative; by first, 2 to 7
};

constexpr Frames makeFrames() {
    Frames frames{};
    for (int sign = 0; sign < 4; ++sign) {
        for (int first = 2; first < 8; ++first) {
            for (int at = first - 2; at < 8; ++at) {
                const int byte = at == first - 2 ? "-+- "[sign] : '0';
                frames.of[sign][first] |= static_cast<std::uint64_t>(byte ^ ' ') << (8 * at);
            }
        }
    }
    return frames;
}
constexpr Frames kFrames = makeFrames();

template <class Word>
void store(char* out, Word word) {
    std::memcpy(out, &word, sizeof word);
}

constexpr NumberForm kForms[] = {
    {"plain", formatByHost},
    {"word", formatNumberInWord},
#if defined(__x86_64__)
    {"avx512", formatNumberAvx512},
#endif
};

// Not by the list of all, so that it stays out of the library.
FormatNumber* bestForm() {
#if defined(__x86_64__)
    if (cpuLevel() >= CpuLevel::Avx512Vbmi2) return formatNumberAvx512;
#endif
    return formatNumberInWord;
}

void formatFirstNumber(double value, char* out, const TextWidths& widths) {
    gFormatNumber.store(bestForm(), std::memory_order_relaxed);
    formatNumber(value, out, widths);
}

}  // namespace

constinit std::atomic<FormatNumber*> gFormatNumber{formatFirstNumber};

std::span<const NumberForm> numberForms() {
    std::size_t count = 1;
    while (kForms[count - 1].run != bestForm()) ++count;
    return std::span(kForms).first(count);
}

void forceNumberForm(const NumberForm* form) {
    gFormatNumber.store(form ? form->run : formatFirstNumber, std::memory_order_relaxed);
}

// Each suppressed zero becomes two blanks, not one. Hosts show and compare
// these texts as they come, so it stays.
// Test: "doutostr writes sign, digits, point and decimals".
void placesPlain(int rounded, char* out, const TextWidths& widths) {
    const auto unit = static_cast<std::uint64_t>(widths.unit);
    const bool plusSign = widths.signs == TextWidths::kPlusSigns;
    const char sign = rounded < 0 ? '-' : plusSign ? '+' : ' ';
    std::uint64_t n = magnitude(rounded);
    bool signWritten = false;
    for (std::uint64_t place = firstPlace(magnitude(rounded), unit, widths.intDigits); place != 0;
         place /= 10) {
        const std::uint64_t digit = n / place;
        if (!signWritten) {
            if (digit == 0 && place > unit) {
                *out++ = ' ';
                *out++ = ' ';
                continue;
            }
            *out++ = sign;
            signWritten = true;
        }
        if (n == 0 && place < unit) break;  // only zeros are left
        *out++ = digit > 9 ? '*' : static_cast<char>('0' + digit);
        if (place == unit) *out++ = '.';
        n -= digit * place;
    }
    *out = '\0';
}

// Why the bytes are those of the plain form: the eight bytes of digits are two
// zeros and the six digits of n. first counts the leading zeros that the plain
// form suppresses, since the bit set at the units digit stops the count there,
// and last counts the trailing zeros that it drops, stopped likewise. The digits
// up to the units move one byte towards the front, and the point takes the gap.
// The frame blanks what is suppressed and puts the sign before the rest. The
// shift drops the zeros at the end, so that the text ends with the word, and
// what precedes the word is blank.
//
// With whole = 8 - decimals - first digits before the point, and one of at most
// intDigits, since n is below the limit, the text has 2 * (intDigits - whole)
// blanks, sign, whole, point and decimals - last characters: that is size.
void placesInWord(bool negative, std::uint32_t n, char* out, const TextWidths& widths) {
    const Marks& marks = kMarks[widths.decimals];
    const std::uint64_t digits = sixDigits(n);
    const unsigned first = static_cast<unsigned>(__builtin_ctzll(digits | marks.unitsHigh)) / 8;
    const unsigned last = static_cast<unsigned>(__builtin_clzll(digits | marks.unitsLow)) / 8;
    const auto places = static_cast<unsigned>(widths.intDigits + widths.decimals);
    const unsigned size = 2 * places - 6 + first - last;

    std::uint64_t text = ((digits & marks.upToUnits) >> 8) + (digits & ~marks.upToUnits);
    text |= kFrames.of[widths.signs / 32 + !negative][first];
    text = (text ^ marks.point) << (8 * last);

    if (widths.upTo12) {
        // Three words of four bytes, the last one with the terminator, without a
        // branch that is guessed wrong at every other text. The first two may
        // hold what belongs to the last, which is written over it.
        const std::uint64_t front = ((text << 24) >> (8 * (11 - size))) ^ kBlanks;
        store(out, static_cast<std::uint32_t>(front));
        store(out + std::min(size - 3, 4u), static_cast<std::uint32_t>(front >> 32));
        store(out + size - 3, static_cast<std::uint32_t>(text >> 40 ^ kBlanks >> 40));
        return;
    }
    text ^= kBlanks;
    out[size] = '\0';
    if (size >= 8) {
        if (size > 16) store(out + 8, kBlanks);  // at most 24
        store(out, kBlanks);
        store(out + size - 8, text);
    } else {  // at least 3
        text >>= 64 - 8 * size;
        store(out, static_cast<std::uint32_t>(text));
        store(out + size - 3, static_cast<std::uint32_t>(text >> (8 * (size - 3))));
    }
}

void formatByHost(double value, char* out, const TextWidths& widths) {
    if (value == std::numeric_limits<double>::infinity()) {
        *out = '\0';
        return;
    }
    placesPlain(Orlune::iround(widths.unit * value), out, widths);
}

// The rounding is the host's: to the nearest integer, and halves away from zero.
// Let amount lie in [k, k + 1), and h be the double below 1/2, 1/2 - 2^-54. Below
// k + 1/2 the amount is at most k + 1/2 - u, where u is the distance of doubles there.
// amount + h is below k + 1 - u, which is a double, so that no rounding of the sum
// takes it to k + 1. From k + 1/2 on, amount + h is at least k + 1 - 2^-54, no farther
// from k + 1 than from the double below it, so that rounding to the nearest one, with
// ties to even ones, takes it to k + 1; a mode that rounds down may leave it at k, which
// the exact difference tells.
void formatNumberInWord(double value, char* out, const TextWidths& widths) {
    constexpr double belowHalf = 0.5 - 0x1p-54;
    const double scaled = widths.unit * value;
    const double amount = std::abs(scaled);
    if (kWords && amount + belowHalf < widths.wordLimit) {
        const auto n = static_cast<std::int32_t>(amount + belowHalf);
        if (amount - n < 0.5)
            return placesInWord(std::signbit(scaled) & (n != 0), static_cast<std::uint32_t>(n), out,
                                widths);
    }
    formatByHost(value, out, widths);
}

void doutostr(double value, char* out, int intDigits, int decimals, bool plusSign) {
    formatNumber(value, out, TextWidths::of(intDigits, decimals, plusSign));
}

}  // namespace Vaskel
