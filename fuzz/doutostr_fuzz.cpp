// doutostr: bytes 0 and 1 are the widths, 2 the sign choice, 3 to 10 a double.
// The text is as long as the header allows, has the shape of a fixed-point
// number, is what the plain form writes, and reads back as the rounded value.

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include "platform/orlune.h"
#include "units/doutostr.h"
#include "vaskel/units.h"

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 11) return 0;
    const int intDigits = data[0] % 24 - 2;
    const int decimals = data[1] % 14 - 2;
    const bool plusSign = data[2] & 1;
    double value;
    std::memcpy(&value, data + 3, sizeof value);

    char text[40];
    Vaskel::doutostr(value, text, intDigits, decimals, plusSign);
    const std::string got = text;
    if (value == std::numeric_limits<double>::infinity()) {
        require(got.empty());
        return 0;
    }

    const Vaskel::TextWidths widths = Vaskel::TextWidths::of(intDigits, decimals, plusSign);
    double unit = 1;
    for (int i = 0; i < widths.decimals; ++i) unit *= 10;
    const int rounded = Orlune::iround(unit * value);
    char plain[40];
    Vaskel::placesPlain(rounded, plain, widths);
    require(got == plain);
    if (widths.intDigits > 0)
        require(got.size() + 1 <=
                static_cast<std::size_t>(2 * widths.intDigits + widths.decimals + 2));
    else
        require(got.size() + 1 <= 13);

    const std::size_t sign = got.find_first_not_of(' ');
    require(sign != std::string::npos);
    const std::size_t point = got.find('.');
    require(point != std::string::npos && got.find('.', point + 1) == std::string::npos);
    require(got.back() != '0' || got[got.size() - 2] != '.');
    if (got.find('*') != std::string::npos) return 0;

    double back = 0;
    require(Vaskel::strtodou(text, &back) == 0);
    require(Orlune::iround(back * unit) == rounded);
    return 0;
}
