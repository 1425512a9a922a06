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

// n below 10^8 as eight digits of a byte each, the most significant lowest.
std::uint64_t eightDigits(std::uint32_t n) {
    // 10486 / 2^20 and 103 / 2^10 divide by 100 and 10 exactly within the
    // lanes' ranges (up to 9999 and 99).
    std::uint64_t lanes = n / 10000 | std::uint64_t{n % 10000} << 32;
    std::uint64_t quotients = ((lanes * 10486) >> 20) & 0x0000007F0000007F;
    lanes = quotients + ((lanes - quotients * 100) << 16);
    quotients = ((lanes * 103) >> 10) & 0x000F000F000F000F;
    return quotients + ((lanes - quotients * 10) << 8);
}

constexpr std::uint64_t kBlanks = 0x2020202020202020;
constexpr std::uint64_t kDigitToPoint = '0' ^ '.';

// What surrounds eight digits of which the first ones are suppressed, each byte
// as its difference to a blank, so that shifting brings in blanks. lo and hi
// together: six blanks, sign, digits from byte 7 on; the sign takes the last
// suppressed digit's place or the byte before.
struct Frame {
    std::uint64_t lo;
    std::uint64_t hi;
};

struct Frames {
    Frame of[3][8];  // " ", "+", "-"; by the number of suppressed digits

    constexpr const Frame* operator[](int sign) const { return of[sign]; }
};

constexpr Frames makeFrames() {
    Frames frames{};
    for (int sign = 0; sign < 3; ++sign) {
        for (int suppressed = 0; suppressed < 8; ++suppressed) {
            Frame& frame = frames.of[sign][suppressed];
            for (int at = 6 + suppressed; at < 16; ++at) {
                const char byte = at > 6 + suppressed ? '0' : " +-"[sign];
                std::uint64_t& word = at < 8 ? frame.lo : frame.hi;
                word |= static_cast<std::uint64_t>(byte ^ ' ') << (8 * (at % 8));
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

// The text is put together at the end of 16 bytes, lo before hi, each with its
// first byte lowest, and stored so that it ends where it has to.
//
// Why the bytes are those of the plain form: all eight digits of n are there.
// first counts the leading zeros that it suppresses, since the bit set at the
// units digit stops the count there, and last counts the trailing zeros that it
// drops, stopped likewise. The frame blanks what is suppressed and puts the
// sign before the rest; the shift by last drops the zeros at the end; and the
// blanks before the sign are two for each place without a digit.
bool placesInWords(int rounded, char* out, const TextWidths& widths) {
    const std::uint32_t n = magnitude(rounded);
    const int unitsAt = 7 - widths.decimals;
    if (n >= 100000000 || unitsAt < 0 || std::endian::native != std::endian::little) return false;
    const std::uint64_t digits = eightDigits(n);
    const std::uint64_t unitsBit = std::uint64_t{1} << (8 * unitsAt);
    const int first = std::countr_zero(digits | unitsBit << 7) / 8;
    const int last = std::countl_zero(digits | unitsBit) / 8;

    const int whole = unitsAt + 1 - first;
    const int blanks = widths.intDigits < 0 ? 0 : 2 * (widths.intDigits - whole);
    const int size = blanks + 1 + whole + 1 + (widths.decimals - last);
    if (blanks < 0 || size > 24) return false;  // "*", or more blanks than are stored below

    // The point goes behind the units digit: digits up to there move one byte
    // towards the front, the first of them into lo.
    const std::uint64_t upToUnits = (unitsBit << 8) - 1;
    const Frame& frame = kFrames[rounded < 0 ? 2 : widths.plusSign][first];
    std::uint64_t hi = ((digits & upToUnits) >> 8) | (digits & ~upToUnits);
    hi = (hi | frame.hi) ^ kDigitToPoint << (8 * unitsAt);
    std::uint64_t lo = digits << 56 | frame.lo;
    if (last != 0) {
        hi = hi << (8 * last) | lo >> (64 - 8 * last);
        lo <<= 8 * last;
    }
    hi ^= kBlanks;
    lo ^= kBlanks;

    out[size] = '\0';
    if (size < 8) {
        const std::uint64_t text = hi >> (64 - 8 * size);  // size is at least 3
        store(out, static_cast<std::uint32_t>(text));
        store(out + size - 3, static_cast<std::uint32_t>(text >> (8 * (size - 3))));
        return true;
    }
    if (size >= 16) {
        store(out, kBlanks);
        store(out + size - 16, lo);
    } else {
        const int unused = 8 * (16 - size);  // 8 to 64 bits
        store(out, unused == 64 ? hi : hi << (64 - unused) | lo >> unused);
    }
    store(out + size - 8, hi);
    return true;
}

void formatNumber(double value, char* out, const TextWidths& widths) {
    if (value == std::numeric_limits<double>::infinity()) {
        *out = '\0';
        return;
    }
    const int rounded = Orlune::iround(kUnits10[widths.decimals] * value);
    if (!placesInWords(rounded, out, widths)) placesPlain(rounded, out, widths);
}

void doutostr(double value, char* out, int intDigits, int decimals, bool plusSign) {
    formatNumber(value, out, TextWidths::of(intDigits, decimals, plusSign));
}

}  // namespace Vaskel
