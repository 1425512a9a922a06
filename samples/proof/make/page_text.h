// Numbers and strings as PDF and PostScript both write them.

#ifndef SAMPLES_PROOF_MAKE_PAGE_TEXT_H
#define SAMPLES_PROOF_MAKE_PAGE_TEXT_H

#include <cstdio>
#include <initializer_list>
#include <string>

#include "samples/proof/numbers.h"

namespace Proof {

/// Coordinates in points, each followed by a blank.
inline std::string numbers(std::initializer_list<double> values) {
    constexpr int kPlaces = 4;
    std::string text;
    for (const double v : values) text += decimal(v, kPlaces) + ' ';
    return text;
}

/// A hexadecimal string, <...>.
inline std::string hex(const std::string& codes) {
    std::string text = "<";
    char digits[3];
    for (const char c : codes) {
        std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(c));
        text += digits;
    }
    return text + ">";
}

}  // namespace Proof

#endif
