// How the samples of one stored row lie in memory, and their way to ink.
//
// Rows stay as the file has them (one bit a pixel stays one bit) until they
// are turned into ink, one row at a time.

#ifndef SAMPLES_PROOF_SAMPLE_LAYOUT_H
#define SAMPLES_PROOF_SAMPLE_LAYOUT_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace Proof {

/// Samples are unsigned, the most significant bit first, rows begin at a
/// byte. One or two channels are grey (and alpha), three or four are red,
/// green, blue (and alpha).
struct SampleLayout {
    int bits = 8;      // a sample: 1, 2, 4, 8 or 16; below 8 only with one channel
    int channels = 1;  // 1 to 4
    /// Samples of 16 bits in the processor's byte order instead of the most
    /// significant byte first.
    bool nativeOrder = false;
    bool whiteIsZero = false;  // grey only
    /// The grey of each sample value where one channel indexes a palette of
    /// colours; bits is 8 or less then.
    std::optional<std::array<std::uint8_t, 256>> palette = {};

    std::size_t rowBytes(int width) const {
        return (static_cast<std::size_t>(width) * static_cast<std::size_t>(bits * channels) + 7) /
               8;
    }
    bool bilevel() const { return bits == 1 && channels == 1; }
};

/// The lightness of a colour, 0 black to 255 white, by the weights of ITU-R
/// BT.601: 0.299, 0.587, 0.114, rounded to nearest.
std::uint8_t greyOf(unsigned red, unsigned green, unsigned blue);

/// The row's pixels as grey, 0 black to 255 white, transparent ones on white.
void toGrey(const SampleLayout& layout, const unsigned char* row, int width, std::uint8_t* grey);

/// The row of a bilevel layout as ink: one bit a pixel, 1 where the darker of
/// the two colours stands, bits behind the width 0. Two colours of the same
/// lightness are ink both or neither, by which side of the middle they lie.
void toInk(const SampleLayout& layout, const unsigned char* row, int width, unsigned char* ink);

/// Grey below level becomes ink; level 0 is no ink, 256 all of it.
void thresholdRow(const std::uint8_t* grey, int width, int level, unsigned char* ink);

/// Swaps ink and paper in a row of ink.
void invertInk(unsigned char* ink, int width);

/// How many bytes a row of ink takes.
constexpr std::size_t inkBytes(int width) { return (static_cast<std::size_t>(width) + 7) / 8; }

}  // namespace Proof

#endif
