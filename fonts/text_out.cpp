#include "fonts/text_out.h"

#include <charconv>

namespace Fonts {

void appendBytes(std::vector<unsigned char>& out, const unsigned char* bytes, std::size_t count) {
    out.insert(out.end(), bytes, bytes + count);
}

void appendText(std::vector<unsigned char>& out, std::string_view text) {
    appendBytes(out, reinterpret_cast<const unsigned char*>(text.data()), text.size());
}

unsigned char* copyNumber(std::size_t value, unsigned char* out) {
    char* const digits = reinterpret_cast<char*>(out);
    return out + (std::to_chars(digits, digits + 20, value).ptr - digits);
}

void appendNumber(std::vector<unsigned char>& out, long long value) {
    unsigned char digits[21];
    unsigned char* end = digits;
    if (value < 0) *end++ = '-';
    const auto bits = static_cast<unsigned long long>(value);
    end = copyNumber(value < 0 ? 0 - bits : bits, end);
    appendBytes(out, digits, static_cast<std::size_t>(end - digits));
}

}  // namespace Fonts
