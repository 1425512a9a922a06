// Means of inexact lines from estimates of their sums.
//
// The rule rounds each sum once a pixel, in order, but all that comes of a sum
// is a byte. An estimate, added in whatever order is fastest, lies near enough
// to the rule's sum to tell the byte, except where a mean is about to round
// either way. These few sums, some in ten thousand, are added by the rule, from
// the lines of the output line, which are kept for that.

#ifndef RASTER_DOWNSAMPLE_ESTIMATE_H
#define RASTER_DOWNSAMPLE_ESTIMATE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "raster/downsample_cells.h"
#include "raster/lines_ahead.h"

namespace Vaskel {

/// The shares of pixels in cells as integers. The edges of n cells that fill a
/// line cut its pixels at multiples of 1 / n, so that shares times n are integers
/// but for what the rule's column count was rounded by. Of more cells than 15
/// bits hold shares are rounded.
///
/// A cell is taken as pairs of pixels: the first one and the last one have
/// shares, those between them are whole. The first pair is the pixel shared with
/// the cell before and the one behind it, or in front of it if least is even; the
/// last one ends with the pixel shared with the cell behind, or goes one too far.
struct CellShares {
    std::size_t count = 0;  // cells; 0 if there is no pixel or too many of them in a cell
    std::size_t least = 0;  // whole pixels of a cell; some have one more
    unsigned steps = 1;     // shares are multiples of 1 / steps
    double deviation = 0;   // of a share from the rule's one, at most

    /// Of each cell two shares of 16 bits, and two more; and where its first pair
    /// lies, kFront pixels beyond. Behind are kBehind more that add nothing.
    const std::uint32_t* first() const { return mAll.data(); }
    const std::uint32_t* last() const { return mAll.data() + stride(); }
    const std::uint32_t* starts() const { return mAll.data() + 2 * stride(); }
    static constexpr std::size_t kFront = 2, kBehind = 8;

    CellShares() = default;
    explicit CellShares(const DownsampleCells& cells);

    std::size_t pairsBetween() const { return least / 2; }
    std::size_t mostPixels() const { return least + 3; }
    static constexpr std::size_t kMostPixels = 64;

 private:
    std::size_t stride() const { return count + kBehind; }
    std::vector<std::uint32_t> mAll;
};

struct EstimateForm;

/// The lines of an output line, in order, and their shares in it.
class KeptLines {
 public:
    /// Keeps none at first. Then those of output lines that are factorY lines high,
    /// unless an image's lines take too much memory or its cells are too wide.
    void prepare(const DownsampleCells& cells, double factorY);

    /// Keeps a copy; false if it does not belong with the others, or there is
    /// no room or memory for it.
    bool keep(const unsigned char* line, int channels, double weight);
    /// All but the last line are dropped, which gets another weight.
    void keepLast(double weight);
    void clear() {
        mLines.clear();
        mSummed = nullptr;
    }

    struct Line {
        unsigned char* bytes;  // kAround more of them may be read on both sides
        double weight;         // within 0..1
    };
    const std::vector<Line>& lines() const { return mLines; }
    const CellShares& shares() const { return mShares; }
    int channels() const { return mChannels; }

    // A block of 64 less a byte from the pixel behind the line, at most.
    static constexpr std::size_t kAround = 96;
    static constexpr std::size_t kMostLines = 64;
    static constexpr std::size_t kMostBytes = 1 << 20;
    static constexpr std::size_t kMostParts = 2;  // lines of a weight below 1

 private:
    friend struct ColumnLines;

    std::size_t mWidth = 0;
    std::size_t mMost = 0;  // lines
    int mChannels = 0;
    std::unique_ptr<unsigned char[]> mBytes;
    // The cells' sums of one line alone, in units of 1 / steps, and the line.
    std::unique_ptr<float[]> mSums;
    const unsigned char* mSummed = nullptr;
    std::vector<unsigned char*> mPlaces;  // of mMost lines, those of mLines first
    std::vector<Line> mLines;
    CellShares mShares;
};

/// Kept lines as forms add them up: whole ones column by column in 16 bits, parts
/// of lines by themselves. One that belongs to two output lines is added up for
/// the first of them, and its sums are there for the other.
struct ColumnLines {
    static_assert(KeptLines::kMostLines <= 128);  // of 255 each, with a sign
    const unsigned char* whole[KeptLines::kMostLines];
    std::size_t wholes = 0;
    float* sums;  // of the first part, for which those of the last one are written
    float firstWeight = 0;
    const unsigned char* last;
    float lastWeight = 0;

    std::size_t count;
    const CellShares& shares;
    LinesAhead ahead;

    /// Sees to the sums of the first part, if they are not there yet.
    ColumnLines(KeptLines& kept, const EstimateForm& form, const LinesAhead& next);

    /// Has the cache line at place of the caller's next lines fetched meanwhile, of
    /// those from first on and before end. One less than these are enough, since
    /// the last one mostly is the next output line's first.
    void fetch(std::ptrdiff_t place, std::size_t first, std::size_t end) const {
        if (ahead.step() == 0) return;
        const std::uintptr_t at = ahead.next() + static_cast<std::uintptr_t>(place);
        for (std::size_t i = first; i < end; ++i)
            __builtin_prefetch(reinterpret_cast<const void*>(at + i * ahead.step()), 0, 2);
    }
    std::size_t half() const { return count / 2; }

 private:
    ColumnLines(KeptLines& kept, const KeptLines::Line& alone, const EstimateForm& form);
};

/// An estimated sum lies within relative of the rule's one, and slack times area
/// besides. Means of sums by area are told with both.
struct MeanBounds {
    double area;
    double relative;
    double slack;
};
MeanBounds meanBounds(const KeptLines& kept, double area);

/// A way to estimate, for a group of cells at a time: sums stay in the nearest
/// cache until they are means.
struct EstimateForm {
    /// Of count cells from first on, up to cellsAtOnce(), in units of 1 / steps; up
    /// to kSums more floats are written. Integers times weights are rounded to
    /// single precision at most kRoundings times.
    void (*sums)(const ColumnLines& lines, int channels, std::size_t first, std::size_t count,
                 float* sums);
    /// The bytes of the means of count sums that are certain; the places of the
    /// others, the first one being place, are added to open, as far as it has room.
    /// Whole vectors of kSums are read.
    void (*means)(const MeanBounds& bounds, const float* sums, std::size_t count,
                  unsigned char* out, std::size_t place, std::vector<std::uint32_t>& open);

    /// Sums of a group, which for many channels or pixels a cell has fewer cells,
    /// come in whole vectors.
    static constexpr std::size_t kSums = 32, kColumns = 2304;
    static_assert(kSums * (CellShares::kMostPixels + 2) <= kColumns);
    static std::size_t cellsAtOnce(const CellShares& shares, int channels) {
        const std::size_t each = static_cast<std::size_t>(channels), whole = kSums / each;
        return (kColumns / each - 1) / (shares.least + 2) / whole * whole;
    }
};
constexpr int kRoundings = 4;

/// The rule's sum of a cell's channel, from nothing.
float ruleSum(const DownsampleCells& cells, const KeptLines& kept, std::size_t cell, int channel);

#if defined(__x86_64__)
extern const EstimateForm kEstimateAvx2;
#endif

}  // namespace Vaskel

#endif
