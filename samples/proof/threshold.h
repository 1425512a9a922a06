// Which grey separates ink from paper.

#ifndef SAMPLES_PROOF_THRESHOLD_H
#define SAMPLES_PROOF_THRESHOLD_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace Proof {

/// How often each grey occurs.
using GreyHistogram = std::array<std::uint64_t, 256>;

void countGreys(const std::uint8_t* grey, int width, GreyHistogram& histogram);

/// The level, 0 to 256, that splits the greys below it from the others so
/// that the variance between the two classes is largest (N. Otsu, A Threshold
/// Selection Method from Gray-Level Histograms, 1979). Where several levels
/// in a row do that, as between two far peaks, it is their middle. A page of
/// one grey only gives 128.
int otsuLevel(const GreyHistogram& histogram);

/// Reads the level a user asks for: "otsu" gives no value (to be found from
/// the page), "0" to "255" the level, "0%" to "100%" a share of white. Throws
/// Failure for anything else.
std::optional<int> parseThreshold(const std::string& text);

}  // namespace Proof

#endif
