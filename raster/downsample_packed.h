// Sums of exact lines in 16 bits a channel, and means of them in integers.
//
// Where factors have few bits behind the point, sums are small integers of some
// unit. As such they take half the memory of floats, which for a line of 6000
// pixels decides whether they stay in the nearest cache, and the line that
// completes an output line need not store them at all.

#ifndef RASTER_DOWNSAMPLE_PACKED_H
#define RASTER_DOWNSAMPLE_PACKED_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "raster/downsample_cells.h"

namespace Vaskel {

/// Eight cells of one channel, four of which lie within 16 pixels: where these
/// begin, and for each of the cells' four pixels its place in there and its share.
struct ByteCells {
    std::uint32_t starts[2];
    unsigned char places[32];
    unsigned char shares[32];
};

/// Whether and how an image's sums are packed.
///
/// All cells have the same area, and with whole lines of weight unitsY the sum
/// of a cell is at most 255 areas. Areas are limited so that this, and half an
/// area more, stays below 2^16.
struct PackedRule {
    unsigned area = 0;    // of a cell, in units; 0 for images without packed sums
    unsigned unitsY = 1;  // the weight of a whole line
    double unit = 0;      // of a sum, in bytes

    // The mean of a sum is (sum + half) / area, rounded down, and that is
    // ((sum + half) * multiplier) >> (16 + shift).
    unsigned half = 0;
    unsigned multiplier = 0;
    int shift = 0;

    /// The shares of CellPattern as vectors take them: for each four cells of a
    /// period those of the first and the third, then of the second and the
    /// fourth; 32 bytes for four pixels of both, four times the shares of the
    /// first cell's and four times those of the other's.
    std::vector<unsigned char> shares;

    /// The cells of one channel, over bytesPeriod cells, which are bytesPixels
    /// pixels; empty for cells that lie too far apart.
    std::vector<ByteCells> bytes;
    std::size_t bytesPeriod = 0;
    std::size_t bytesPixels = 0;

    bool halves = false;  // cells are two pixels wide and two lines high

    PackedRule() = default;
    PackedRule(const DownsampleCells& cells, double factorY);

    unsigned mean(unsigned sum) const { return ((sum + half) * multiplier) >> (16 + shift); }
    /// The same for an area by itself.
    static PackedRule forArea(unsigned area);
};

struct PackedLine {
    const unsigned char* bytes;  // channels of a pixel side by side
    int channels;                // 4, or 1 where the rule has cells of bytes
    unsigned weight;             // in units; packs() bounds those of an area together
    unsigned rest;               // what finish leaves for the next output line, in units
    std::uintptr_t step;         // from this line to the next one, if known: LinesAhead
    std::uintptr_t taker;        // where the caller will want the means of finish, if known
};

/// A way to do the work, on channels sums for each cell. Integers: all give the
/// same.
struct HalvedForm;
struct PackedForm {
    using Sums = void (*)(const DownsampleCells& cells, const PackedRule& rule,
                          const PackedLine& line, std::uint16_t* sums);
    Sums begin;  // whatever sums held
    Sums add;
    /// The means with this line added; of a rest that is not 0 the sums begin anew.
    void (*finish)(const DownsampleCells& cells, const PackedRule& rule, const PackedLine& line,
                   std::uint16_t* sums, unsigned char* out);
    /// What takes lines of four channels where the rule halves.
    const HalvedForm* halved;
};

/// Cell by cell.
extern const PackedForm kPackedPlain;

/// The plain form's steps for the cells from first on.
enum class PackedStep { kBegin, kAdd, kFinish };
void packedCells(PackedStep step, std::size_t first, const DownsampleCells& cells,
                 const PackedRule& rule, const PackedLine& line, std::uint16_t* sums,
                 unsigned char* out);

#if defined(__x86_64__)
/// Four cells at a time.
extern const PackedForm kPackedAvx2;
#endif

}  // namespace Vaskel

#endif
