// Fixed-point text of a rounded number, in two forms.

#ifndef UNITS_DOUTOSTR_H
#define UNITS_DOUTOSTR_H

#include <algorithm>

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

    static constexpr TextWidths of(int intDigits, int decimals, bool plusSign) {
        const int counted = std::clamp(decimals, 0, 9);
        return {intDigits < 0 ? -1 : std::clamp(intDigits, 1, 19 - counted), counted, plusSign};
    }
};

// The rule itself: writes rounded / 10^decimals and the terminator.
void placesPlain(int rounded, char* out, const TextWidths& widths);

// The same text in a few machine words. Returns false, with nothing written,
// for what does not fit into them: see the source.
bool placesInWords(int rounded, char* out, const TextWidths& widths);

// doutostr behind its widths.
void formatNumber(double value, char* out, const TextWidths& widths);

}  // namespace Vaskel

#endif
