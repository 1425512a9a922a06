#include "samples/proof/lengths.h"

#include <cmath>
#include <cstring>

#include "embedded/host.h"
#include "platform/orlune.h"
#include "platform/pemmit.h"
#include "samples/proof/failure.h"
#include "vaskel/units.h"

namespace Proof {
namespace {

constexpr int kLargestLength = 1000000;

[[noreturn]] void refuse(const std::string& option, const std::string& text,
                         const std::string& wanted) {
    throw Failure(option + " takes " + wanted + ", not \"" + oneLine(text) + "\"", kExitUsage);
}

}  // namespace

void setLengthUnit(const std::string& unit) {
    if (!Vaskel::SetDistinctUnitString(unit))
        throw Failure("--unit takes inch, mm, cm, scanpix, mil, pica, pt, didot, Q or bai, not \"" +
                          oneLine(unit) + "\"",
                      kExitUsage);
}

void setScanResolution(double ppi, int unitsPerPixel) {
    Embedded::setResolution(Orlune::iround(ppi * unitsPerPixel));
    Vaskel::numbersinit();
    Vaskel::numsca(ppi);
}

int readLength(const std::string& option, const std::string& text) {
    double length = 0;
    // Unit words by their distinct names, also with blanks before them.
    if (Vaskel::strtodouuni(text.c_str(), &length, true, true) != 0 || !std::isfinite(length) ||
        length < 0)
        refuse(option, text, "a length such as 0.2mm, 4mil or 3scanpix");
    const double units = Vaskel::doutodis(length);
    if (units > kLargestLength) refuse(option, text, "a length of less than the page");
    return Orlune::iround(units);
}

std::string lengthText(double inches) {
    char text[40];
    const double value = Vaskel::distodou(inches * Pemmit::getppi());
    Vaskel::doutostr(value, text, -1, Vaskel::getUnitPrecision(), false);
    std::string digits = text + std::strspn(text, " ");
    if (!digits.empty() && digits.back() == '.') digits.pop_back();
    return digits;
}

double readNumber(const std::string& option, const std::string& text) {
    double value = 0;
    if (Vaskel::strtodou(text.c_str(), &value) != 0 || !std::isfinite(value) || value <= 0)
        refuse(option, text, "a number above 0");
    return value;
}

}  // namespace Proof
