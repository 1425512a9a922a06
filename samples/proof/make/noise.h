// Noise swatches: what the library's generator draws from a seed, a grey pixel
// a draw.

#ifndef SAMPLES_PROOF_MAKE_NOISE_H
#define SAMPLES_PROOF_MAKE_NOISE_H

#include <string>
#include <vector>

#include "samples/proof/make/picture.h"

namespace Proof {

struct NoiseSwatch {
    std::string draw;  // "nextByte"
    Picture picture;
};

/// One swatch for each kind of draw, of a generator and of the process-wide
/// one, each from the seed on: the same seed gives the same pixels everywhere.
/// Draws that are no bytes are spread over 0..255. nextDouble, nextFloat and
/// randou are the same draw.
std::vector<NoiseSwatch> noiseSwatches(int seed);

}  // namespace Proof

#endif
