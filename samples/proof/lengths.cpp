#include "samples/proof/lengths.h"

#include <cmath>

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

// A length in the current unit, unit words by their distinct names, also with
// blanks before them.
bool readInCurrentUnit(const std::string& text, double* value) {
    return Vaskel::strtodouuni(text.c_str(), value, true, true) == 0 && std::isfinite(*value);
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
    double inch = 0;
    if (!readInCurrentUnit(text, &length) || length < 0 || !readInCurrentUnit("1inch", &inch))
        refuse(option, text, "a length such as 0.2mm, 4mil or 3scanpix");
    const double units = Pemmit::getppi() * length / inch;
    if (units > kLargestLength) refuse(option, text, "a length of less than the page");
    return Orlune::iround(units);
}

double readNumber(const std::string& option, const std::string& text) {
    double value = 0;
    if (Vaskel::strtodou(text.c_str(), &value) != 0 || !std::isfinite(value) || value <= 0)
        refuse(option, text, "a number above 0");
    return value;
}

}  // namespace Proof
