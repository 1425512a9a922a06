// Colour swatches: what the library's colour models and ICC chains make of the
// same colours, as the screen shows it.

#ifndef SAMPLES_PROOF_MAKE_SWATCHES_H
#define SAMPLES_PROOF_MAKE_SWATCHES_H

#include <functional>
#include <string>
#include <vector>

#include "samples/proof/make/canvas.h"

namespace Proof {

struct Swatch {
    Rgb colour;
    std::string numbers;  // "C100 M0 Y0 K0"
};

struct SwatchRow {
    std::string label;
    std::vector<Swatch> swatches;
};

/// The profiles of a proof; both stay the owner's.
struct Profiles {
    void* press = nullptr;   // CMYK
    void* screen = nullptr;  // RGB
    /// One more handle of the same profile, for whom owns what it is given.
    std::function<void*()> openPress, openScreen;
};

/// All rows of the proof, with a rendering intent of ICC.1 (0 to 3) in the
/// links. Throws Failure where the profiles do not fit.
std::vector<SwatchRow> swatchRows(const Profiles& profiles, int intent);

}  // namespace Proof

#endif
