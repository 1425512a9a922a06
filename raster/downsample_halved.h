// The first of two lines that are averaged by two, held in a little more than a
// byte a cell and channel.
//
// Packed sums of two bytes would take 16 bits, of which seven stay empty, and two
// such lines with their sums and means more than the nearest cache. The mean of
// two bytes, rounded up, and a bit that tells whether it was, say as much.

#ifndef RASTER_DOWNSAMPLE_HALVED_H
#define RASTER_DOWNSAMPLE_HALVED_H

#include <cstddef>
#include <cstdint>

#include "raster/downsample_packed.h"

namespace Vaskel {

/// Where a halved line of cells of four channels lies: of bytes a and b the means
/// (a + b + 1) / 2, then a bit each, (a + b) % 2, the first one lowest in its byte.
struct HalvedLine {
    static std::size_t bytes(std::size_t cells) { return 4 * cells + (cells + 1) / 2; }
    static std::size_t oddsAt(std::size_t cells) { return 4 * cells; }
};

/// A way to do the work, on lines of twice as many pixels as cells. Integers: all
/// give the same.
struct HalvedForm {
    void (*halve)(std::size_t cells, const PackedLine& line, unsigned char* halved);
    /// The means of the halved line and this one, (sum + 2) / 4.
    void (*quarter)(std::size_t cells, const PackedLine& line, const unsigned char* halved,
                    unsigned char* out);
};

/// Byte by byte.
extern const HalvedForm kHalvedPlain;

/// The plain form's steps for the cells from first on, a multiple of two.
void halveFrom(std::size_t first, std::size_t cells, const PackedLine& line, unsigned char* halved);
void quarterFrom(std::size_t first, std::size_t cells, const PackedLine& line,
                 const unsigned char* halved, unsigned char* out);

/// The packed sums of a halved line.
void expandHalved(std::size_t cells, const unsigned char* halved, std::uint16_t* sums);

#if defined(__x86_64__)
/// Eight cells at a time.
extern const HalvedForm kHalvedAvx2;
#endif

}  // namespace Vaskel

#endif
