// Fixed-point text: the digits of a rounded number around a decimal point.

#include "units/doutostr.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>

#include "platform/orlune.h"
#include "vaskel/units.h"

namespace Vaskel {
namespace {

constexpr std::int32_t kUnits10[10] = {1,      10,      100,      1000,      10000,
                                       100000, 1000000, 10000000, 100000000, 1000000000};

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
    const std::uint32_t low = n % 10000;
    return std::uint64_t{kDigitPairs.of[high]} << 16 |
           std::uint64_t{kDigitPairs.of[low / 100]} << 32 |
           std::uint64_t{kDigitPairs.of[low % 100]} << 48;
}

constexpr std::uint64_t kBlanks = 0x2020202020202020;
constexpr std::uint64_t kDigitToPoint = '0' ^ '.';

// What surrounds the digits of a word: blanks, then the sign at byte
// first - 2, then digits. Each byte is its difference to a blank, so that
// shifting brings in blanks.
struct Frames {
    std::uint64_t of[3][8];  // "-", " ", "+"; by first, 2 to 7
};

constexpr Frames makeFrames() {
    Frames frames{};
    for (int sign = 0; sign < 3; ++sign) {
        for (int first = 2; first < 8; ++first) {
            for (int at = first - 2; at < 8; ++at) {
                const int byte = at == first - 2 ? "- +"[sign] : '0';
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
inline bool inWord(int rounded, char* out, const TextWidths& widths) {
    const std::uint32_t n = magnitude(rounded);
    if (n >= widths.wordLimit || std::endian::native != std::endian::little) return false;
    const int unitsShift = 8 * (7 - widths.decimals);
    const std::uint64_t unitsBit = std::uint64_t{1} << unitsShift;
    const std::uint64_t digits = sixDigits(n);
    const int first = __builtin_ctzll(digits | unitsBit << 7) / 8;
    const int last = __builtin_clzll(digits | unitsBit) / 8;
    const int size = 2 * (widths.intDigits + widths.decimals) - 6 + first - last;

    const std::uint64_t upToUnits = (unitsBit << 8) - 1;
    std::uint64_t text = ((digits & upToUnits) >> 8) + (digits & ~upToUnits);
    text |= kFrames.of[rounded < 0 ? 0 : 1 + widths.plusSign][first];
    text = ((text ^ kDigitToPoint << unitsShift) << (8 * last)) ^ kBlanks;

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
    return true;
}

}  // namespace

// Each suppressed zero becomes two blanks, not one. Hosts show and compare
// these texts as they come, so it stays.
// Test: "doutostr writes sign, digits, point and decimals".
void placesPlain(int rounded, char* out, const TextWidths& widths) {
    const auto unit = static_cast<std::uint64_t>(kUnits10[widths.decimals]);
    const char sign = rounded < 0 ? '-' : widths.plusSign ? '+' : ' ';
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

void formatNumber(double value, char* out, const TextWidths& widths) {
    if (value == std::numeric_limits<double>::infinity()) {
        *out = '\0';
        return;
    }
    const int rounded = Orlune::iround(kUnits10[widths.decimals] * value);
    if (!inWord(rounded, out, widths)) placesPlain(rounded, out, widths);
}

bool placesInWord(int rounded, char* out, const TextWidths& widths) {
    return inWord(rounded, out, widths);
}

void doutostr(double value, char* out, int intDigits, int decimals, bool plusSign) {
    formatNumber(value, out, TextWidths::of(intDigits, decimals, plusSign));
}

}  // namespace Vaskel
