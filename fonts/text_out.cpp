#include "fonts/text_out.h"

#include <charconv>

namespace Fonts {

void appendText(std::vector<unsigned char>& out, std::string_view text) {
    out.insert(out.end(), text.begin(), text.end());
}

void appendNumber(std::vector<unsigned char>& out, long long value) {
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    out.insert(out.end(), digits, end);
}

}  // namespace Fonts
