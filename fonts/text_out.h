// Appending texts and decimal numbers to a byte vector.

#ifndef FONTS_TEXT_OUT_H
#define FONTS_TEXT_OUT_H

#include <charconv>
#include <string_view>
#include <vector>

namespace Fonts {

inline void appendText(std::vector<unsigned char>& out, std::string_view text) {
    out.insert(out.end(), text.begin(), text.end());
}

inline void appendNumber(std::vector<unsigned char>& out, long long value) {
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    out.insert(out.end(), digits, end);
}

}  // namespace Fonts

#endif
