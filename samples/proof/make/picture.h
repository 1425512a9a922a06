// Pictures: read from files, reduced and enlarged by the library's samplers,
// encoded as streams by its encoder.

#ifndef SAMPLES_PROOF_MAKE_PICTURE_H
#define SAMPLES_PROOF_MAKE_PICTURE_H

#include <cstdint>
#include <string>
#include <vector>

namespace Proof {

/// Four bytes a pixel: cyan, magenta, yellow, black (255 is full ink), or red,
/// green, blue and an unused 0, or the same grey four times.
struct Picture {
    enum Space { Cmyk, Rgb, Grey };

    std::string name;    // for the user
    std::string format;  // "JPEG, inverted inks"
    Space space = Rgb;
    int width = 0, height = 0;
    std::vector<std::uint32_t> pixels;

    int channels() const { return space == Cmyk ? 4 : space == Rgb ? 3 : 1; }
    const std::uint32_t* row(int y) const {
        return pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    }
};

/// Reads a JPEG, PNG or TIFF picture of 8 bits a channel; greys become RGB, and
/// inks that the file stores inverted are turned round. Throws Failure.
Picture readPicture(const std::string& path);

/// The picture reduced to outWidth pixels a line, by means or by picking.
Picture reduced(const Picture& picture, int outWidth, bool filtering);

/// A part of the picture.
Picture cropped(const Picture& picture, int x, int y, int width, int height);

/// The picture enlarged by a factor, pixels repeated.
Picture enlarged(const Picture& picture, double factor);

/// The samples without unused bytes, line by line.
std::vector<unsigned char> samplesOf(const Picture& picture);

/// The samples as an ASCII85 stream with its end marker.
std::string ascii85(const std::vector<unsigned char>& samples);

}  // namespace Proof

#endif
