// parseRange against the same rules by way of splitting at the colon.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "vaskel/units.h"

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

const char* const kSpace = " \t\n\f\r";

std::string trimmed(const std::string& text) {
    const std::size_t from = text.find_first_not_of(kSpace);
    return from == std::string::npos ? std::string()
                                     : text.substr(from, text.find_last_not_of(kSpace) - from + 1);
}

// The sum of the digits' values; ends at the first other character.
double sum(const std::string& text, std::size_t* end) {
    double value = 0;
    double place = 10;
    bool fraction = false;
    std::size_t at = 0;
    for (; at < text.size() && (text[at] == '.' || (text[at] >= '0' && text[at] <= '9')); ++at) {
        if (text[at] == '.') {
            fraction = true;
        } else if (fraction) {
            value += (text[at] - '0') / place;
            place *= 10;
        } else {
            value = value * 10 + (text[at] - '0');
        }
    }
    *end = at;
    return value;
}

double clamped(double value) { return value > 100 ? 100 : value; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<char> field(data, data + size);
    field.push_back('\0');
    const std::string text = field.data();

    double lo = 77, hi = 77;
    const int rc = Vaskel::parseRange(field.data(), &lo, &hi);
    if (text.empty()) {
        require(rc == 1 && lo == 77 && hi == 77);
        return 0;
    }
    const std::size_t colon = text.find(':');
    const std::string lower = trimmed(text.substr(0, colon));
    const std::string upper = colon == std::string::npos ? "" : trimmed(text.substr(colon + 1));
    std::size_t lowerEnd = 0, upperEnd = 0;
    const double lowerValue = sum(lower, &lowerEnd);
    const double upperValue = sum(upper, &upperEnd);
    if (colon == std::string::npos || lowerEnd != lower.size() || upperEnd != upper.size())
        require(rc == 1 && lo == lowerValue && hi == 0);
    else
        require(rc == 0 && lo == clamped(lowerValue) && hi == clamped(upperValue));
    return 0;
}
