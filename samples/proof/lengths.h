// Lengths as a user types them, read by the library's parser.

#ifndef SAMPLES_PROOF_LENGTHS_H
#define SAMPLES_PROOF_LENGTHS_H

#include <string>

namespace Proof {

/// Makes unit the one that numbers without a unit word are in. The names are
/// the library's distinct ones: inch mm cm scanpix exp int mil pica pt didot
/// Q bai. Throws Failure (usage) for any other name.
void setLengthUnit(const std::string& unit);

/// Tells the platform and the library how fine the page is: one internal
/// distance is one outline unit, one "scanpix" a pixel of the scan.
void setScanResolution(double ppi, int unitsPerPixel);

/// Reads a length such as "0.2mm", "4 mil", "3scanpix" or "0.5" (in the
/// unit set) as outline units, rounded with Orlune::iround. Throws Failure
/// (usage) that names the option for a text that is no length, or negative,
/// or beyond a million units.
int readLength(const std::string& option, const std::string& text);

/// A length in the unit that was set, with the unit's own precision, without
/// the unit's name: "297.01".
std::string lengthText(double inches);

/// Reads a plain number above 0, such as a resolution.
double readNumber(const std::string& option, const std::string& text);

}  // namespace Proof

#endif
