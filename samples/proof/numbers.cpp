#include "samples/proof/numbers.h"

namespace Proof {

std::string decimal(double value, int decimals) {
    char digits[64];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, decimals);
    std::string text(digits, end.ptr);
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.') text.pop_back();
    }
    return text == "-0" ? "0" : text;
}

std::string grouped(unsigned long long value) {
    std::string text = std::to_string(value);
    for (std::size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, 1, ',');
    return text;
}

}  // namespace Proof
