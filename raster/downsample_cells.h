// Adding one input line to the sums of the output cells.
//
// An image has one set of cells: output cell k covers factor input pixels, so
// that most pixels lie in one cell and the one on an edge is shared between two.
// Where the edges lie follows from width and factor alone.

#ifndef RASTER_DOWNSAMPLE_CELLS_H
#define RASTER_DOWNSAMPLE_CELLS_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vaskel {

/// The pixel that completes a cell, and the part of it that belongs to the next
/// cell, 0 or above and below 1.
struct CellEnd {
    std::uint32_t pixel;
    double rest;
};

/// The cells of one image; shared between copies.
struct DownsampleCells {
    std::vector<CellEnd> ends;
    bool whole = true;  // no pixel is shared: every rest is 0

    DownsampleCells(double factor, std::uint32_t width);
};

/// A line's share in its output line is weight; channels is 1 or 4, bytes side
/// by side. sums has channels floats for each cell and one cell more.
///
/// Each sum is updated a pixel at a time, as float(double(sum) + product) with
/// the product formed in double; images in documents depend on these bits.
void accumulatePlain(const unsigned char* line, std::uint32_t width, int channels, double factor,
                     double weight, float* sums);

/// The same, cell by cell from the table: each sum gets the same products in the
/// same order, and a sum stays in a register for its cell. For a weight of 1 a
/// whole pixel is added in single precision: rounding a sum of two floats to
/// double first and then to float gives the same as rounding it once, since
/// double has more than twice the digits of float, and two more.
void accumulateCells(const unsigned char* line, std::uint32_t width, int channels,
                     const DownsampleCells& cells, double weight, float* sums);

/// The same for cells of whole pixels and a weight of 1, as long as sums stay
/// below 2^24: all are integers that float holds exactly, so that their order
/// does not matter.
void accumulateWhole(const unsigned char* line, std::uint32_t width, int channels,
                     const DownsampleCells& cells, float* sums);

}  // namespace Vaskel

#endif
