#include "fonts/text_out.h"

#include <charconv>

namespace Fonts {

void appendBytes(std::vector<unsigned char>& out, const unsigned char* bytes, std::size_t count) {
    out.insert(out.end(), bytes, bytes + count);
}

void appendText(std::vector<unsigned char>& out, std::string_view text) {
    appendBytes(out, reinterpret_cast<const unsigned char*>(text.data()), text.size());
}

void appendNumber(std::vector<unsigned char>& out, long long value) {
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    appendText(out, {digits, end});
}

}  // namespace Fonts
