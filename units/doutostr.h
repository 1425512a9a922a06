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
    int intDigits;  // -1, or 1 .. 19 - decimals
    int decimals;   // 0 .. 9
    bool plusSign;
    std::uint32_t wordLimit;  // placesInWord takes numbers below; 0 for none

    static constexpr TextWidths of(int intDigits, int decimals, bool plusSign) {
        constexpr std::uint32_t powers[] = {1, 10, 100, 1000, 10000, 100000, 1000000};
        const int counted = std::clamp(decimals, 0, 9);
        const int width = intDigits < 0 ? -1 : std::clamp(intDigits, 1, 19 - counted);
        const bool fits = width > 0 && counted <= 5 && 2 * width + counted + 1 <= 24;
        return {width, counted, plusSign, fits ? powers[std::min(width + counted, 6)] : 0};
    }
};

// The rule itself: writes rounded / 10^decimals and the terminator.
void placesPlain(int rounded, char* out, const TextWidths& widths);

// The same text, put together in one machine word with blanks before it: up to
// six digits of which none is too many for the width. Returns false, with
// nothing written, for other numbers and widths.
bool placesInWord(int rounded, char* out, const TextWidths& widths);

// doutostr behind its widths.
void formatNumber(double value, char* out, const TextWidths& widths);

}  // namespace Vaskel

#endif
