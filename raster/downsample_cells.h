// Adding input lines to the sums of the output cells, and making bytes of them.
//
// An image has one set of cells: output cell k covers factor input pixels, so
// that most pixels lie in one cell and the one on an edge is shared between two.
// Where the edges lie follows from width and factor alone.

#ifndef RASTER_DOWNSAMPLE_CELLS_H
#define RASTER_DOWNSAMPLE_CELLS_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Vaskel {

/// The pixel that completes a cell, and the part of it that belongs to the next
/// cell, 0 or above and below 1.
struct CellEnd {
    std::uint32_t pixel;
    double rest;
};

/// How cells whose ends repeat lie over their pixels: after period cells, which
/// are a whole number of pixels, everything comes again.
struct CellPattern {
    std::size_t period = 0;  // a multiple of 4; 0 for cells without a pattern
    std::size_t pixels = 0;  // in a period
    std::size_t span = 0;    // of the widest cell, shared pixels included

    std::vector<std::uint32_t> starts;  // the first pixel of each cell in a period
    /// The shares of the pixels from there on, in units of 2^-fractionBits, 0
    /// behind the cell: kMostSpan for each cell.
    std::vector<unsigned char> shares;
    static constexpr std::size_t kMostSpan = 64;

    const unsigned char* sharesOf(std::size_t cell) const { return &shares[kMostSpan * cell]; }
};

/// The cells of one image; shared between copies.
struct DownsampleCells {
    double factor;
    std::uint32_t width;
    std::vector<CellEnd> ends;

    /// All rests are multiples of 2^-fractionBits; -1 if that would take more
    /// than kMostFractionBits.
    int fractionBits;
    static constexpr int kMostFractionBits = 6;

    CellPattern pattern;

    /// Each ended cell has leastWhole pixels of its own, or one more.
    std::size_t leastWhole;

    DownsampleCells(double factorX, std::uint32_t widthPx);
};

/// How many bits behind the point value needs, up to kMostFractionBits; else -1.
int fractionBitsOf(double value);

/// One line for the sums.
struct DownsampleLine {
    const unsigned char* bytes;  // channels of a pixel side by side
    int channels;                // 1 or 4
    double weight;               // the line's share in its output line
    /// Every sum that can come up, in whatever order, is a number that single
    /// precision holds exactly; the weight is a multiple of 2^-6.
    bool exact;
};

/// How a sum becomes a byte: trunc(sum / area + 0.5), within 0..255.
struct MeanRule {
    double area;
    /// Sums are multiples of a step so coarse that a mean is a half or lies at
    /// least 2^-11 below or above one, and weights were not negative.
    bool coarse;
};

/// A way to do the work. All give the same bits.
///
/// sums has channels floats for each cell and one cell more. Each sum is updated
/// a pixel at a time, as float(double(sum) + product) with the product formed in
/// double; images in documents depend on these bits.
struct PackedForm;
struct EstimateForm;
struct DownsampleForm {
    const char* name;
    void (*accumulate)(const DownsampleCells& cells, const DownsampleLine& line, float* sums);
    void (*means)(const MeanRule& rule, const float* sums, std::size_t count, unsigned char* out);
    /// What takes the sums that fit 16 bits; null if the others take them all.
    const PackedForm* packed;
    /// What estimates the means of inexact lines; null if none.
    const EstimateForm* estimate;
};

/// The rules themselves; faster forms are held to them.
extern const DownsampleForm kDownsamplePlain;

/// Cell by cell from the table: each sum gets the same products in the same
/// order, and stays in a register for its cell. For a weight of 1 a whole pixel
/// is added in single precision: rounding a sum of two floats to double first
/// and then to float gives the same as rounding it once, since double has more
/// than twice the digits of float, and two more. Exact lines are added in
/// integers, since order does not matter to them.
extern const DownsampleForm kDownsampleTable;

#if defined(__x86_64__)
/// The table form's steps with the channels of a pixel, or several cells, in one
/// vector: each lane does the table form's operations on its own sum. Means are
/// estimated in single precision and divided only where the estimate leaves two
/// bytes open.
extern const DownsampleForm kDownsampleAvx2;
#endif

/// The forms that this CPU can run, the best one last.
std::span<const DownsampleForm* const> downsampleForms();

/// Makes every downsampler use form; null for the best one again. For tests and
/// benchmarks.
void forceDownsampleForm(const DownsampleForm* form);
const DownsampleForm& chosenDownsampleForm();

#if defined(__x86_64__)
/// The wide form of exact lines: bytes times shares are added in integers.
void accumulateExactAvx2(const DownsampleCells& cells, const DownsampleLine& line, float* sums);
#endif

/// How many periods a form can take that reads reach bytes from a period's first.
std::size_t wholePeriods(const DownsampleCells& cells, std::size_t bytesPerPixel,
                         std::size_t reach);

/// The table form of exact lines, for the cells from first on.
void accumulateExact(const DownsampleCells& cells, const DownsampleLine& line, std::size_t first,
                     float* sums);

}  // namespace Vaskel

#endif
