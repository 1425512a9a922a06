#include "raster/downsample_halved.h"

namespace Vaskel {
namespace {

// The bytes of a cell's two pixels, for byte i of the cells.
unsigned left(const PackedLine& line, std::size_t i) { return line.bytes[i + i / 4 * 4]; }
unsigned right(const PackedLine& line, std::size_t i) { return line.bytes[i + i / 4 * 4 + 4]; }

unsigned oddOf(std::size_t cells, const unsigned char* halved, std::size_t i) {
    return halved[HalvedLine::oddsAt(cells) + i / 8] >> i % 8 & 1u;
}

unsigned sumOf(std::size_t cells, const unsigned char* halved, std::size_t i) {
    return 2u * halved[i] - oddOf(cells, halved, i);
}

}  // namespace

void halveFrom(std::size_t first, std::size_t cells, const PackedLine& line,
               unsigned char* halved) {
    unsigned char* const odds = halved + HalvedLine::oddsAt(cells);
    for (std::size_t i = 4 * first; i < 4 * cells; ++i) {
        const unsigned sum = left(line, i) + right(line, i);
        halved[i] = static_cast<unsigned char>((sum + 1) / 2);
        const unsigned before = i % 8 == 0 ? 0u : odds[i / 8];
        odds[i / 8] = static_cast<unsigned char>(before | (sum & 1) << i % 8);
    }
}

void quarterFrom(std::size_t first, std::size_t cells, const PackedLine& line,
                 const unsigned char* halved, unsigned char* out) {
    for (std::size_t i = 4 * first; i < 4 * cells; ++i)
        out[i] = static_cast<unsigned char>(
            (sumOf(cells, halved, i) + left(line, i) + right(line, i) + 2) / 4);
}

void expandHalved(std::size_t cells, const unsigned char* halved, std::uint16_t* sums) {
    for (std::size_t i = 0; i < 4 * cells; ++i)
        sums[i] = static_cast<std::uint16_t>(sumOf(cells, halved, i));
}

const HalvedForm kHalvedPlain = {
    [](std::size_t cells, const PackedLine& line, unsigned char* halved) {
        halveFrom(0, cells, line, halved);
    },
    [](std::size_t cells, const PackedLine& line, const unsigned char* halved, unsigned char* out) {
        quarterFrom(0, cells, line, halved, out);
    }};

}  // namespace Vaskel
