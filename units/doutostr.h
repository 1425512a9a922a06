// Fixed-point text of a rounded number, in two forms.

#ifndef UNITS_DOUTOSTR_H
#define UNITS_DOUTOSTR_H

#include <algorithm>
#include <cstdint>

namespace Vaskel {

// The widths of one text, brought into the range where no place value
// overflows: unit = 10^decimals is a 32-bit integer, like the numbers printed,
// and the first place, unit * 10^(intDigits - 1), is at most 10^18. A first
// place above 10^9 holds no digit of a 32-bit number but is still counted for
// the blanks.
struct TextWidths {
    double unit;             // 10^decimals
    double wordLimit;        // placesInWord takes numbers below; 0 for none
    signed char intDigits;   // -1, or 1 .. 19 - decimals
    unsigned char decimals;  // 0 .. 9
    bool plusSign;
    bool upTo12;  // texts in a word have 5 to 12 bytes with their terminator

    static constexpr TextWidths of(int intDigits, int decimals, bool plusSign) {
        constexpr double powers[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
        const int counted = std::clamp(decimals, 0, 9);
        const int width = intDigits < 0 ? -1 : std::clamp(intDigits, 1, 19 - counted);
        const bool fits = width > 0 && counted <= 5 && 2 * width + counted + 1 <= 24;
        return {powers[counted],
                fits ? powers[std::min(width + counted, 6)] : 0,
                static_cast<signed char>(width),
                static_cast<unsigned char>(counted),
                plusSign,
                width >= 2 && 2 * width + counted + 2 <= 12};
    }
};

// The rule itself: writes rounded / 10^decimals and the terminator.
void placesPlain(int rounded, char* out, const TextWidths& widths);

// The same text for n below widths.wordLimit, negated if negative: up to six
// digits of which none is too many for the width, put together in one machine
// word with blanks before it.
[[gnu::noinline]] void placesInWord(bool negative, std::uint32_t n, char* out,
                                    const TextWidths& widths);

// doutostr behind its widths.
void formatNumber(double value, char* out, const TextWidths& widths);

}  // namespace Vaskel

#endif
