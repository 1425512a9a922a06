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

namespace Vaskel {

/// Of a cell that is ended the shares of two pixels at its beginning and of two
/// at its end. Between them are as many whole ones as the greatest even number
/// up to DownsampleCells::leastWhole. The first two are the pixel shared with the
/// cell before and the one behind it, or in front of it if leastWhole is even;
/// the last two end with the pixel shared with the cell behind, or go one too far.
struct CellShares {
    float of[4];
};

/// The lines of an output line, in order, and their shares in it.
class KeptLines {
 public:
    /// For output lines that are factorY lines high. Images whose lines take
    /// too much memory, or whose cells are too wide, keep none.
    KeptLines(const DownsampleCells& cells, double factorY);

    /// Keeps a copy; false if it does not belong with the others, or there is
    /// no room or memory for it.
    bool keep(const unsigned char* line, int channels, double weight);
    /// All but the last line are dropped, which gets another weight.
    void keepLast(double weight);
    void clear() { mLines.clear(); }

    struct Line {
        unsigned char* bytes;  // kBehind more of them may be read
        double weight;         // within 0..1
    };
    const std::vector<Line>& lines() const { return mLines; }
    /// Of all cells that are ended.
    const CellShares* shares() const { return mShares.data(); }
    int channels() const { return mChannels; }

    static constexpr std::size_t kBehind = 32;
    static constexpr std::size_t kMostLines = 64;
    static constexpr std::size_t kMostPixels = 64;  // of a cell's own
    static constexpr std::size_t kMostBytes = 1 << 20;
    static constexpr std::size_t kMostParts = 2;  // lines of a weight below 1

 private:
    std::size_t mWidth;
    std::size_t mMost = 0;  // lines
    int mChannels = 0;
    std::unique_ptr<unsigned char[]> mBytes;
    std::vector<unsigned char*> mPlaces;  // of mMost lines, those of mLines first
    std::vector<Line> mLines;
    std::vector<CellShares> mShares;
};

/// Kept lines as forms add them down: whole ones in 16 bits, parts in floats.
struct ColumnLines {
    static_assert(KeptLines::kMostLines <= 257);  // of 255 each
    const unsigned char* whole[KeptLines::kMostLines];
    std::size_t wholes = 0;
    struct Part {
        const unsigned char* bytes;
        float weight;
    } parts[KeptLines::kMostParts];

    std::size_t count;
    const CellShares* shares;  // KeptLines::shares()
    LinesAhead ahead;

    ColumnLines(const KeptLines& kept, const LinesAhead& next);

    /// Has the caller's next lines fetched meanwhile, the cache line at place: one
    /// less than these, whose last one mostly is the next output line's first.
    void fetch(std::size_t place) const {
        if (ahead.step() == 0) return;
        for (std::size_t i = 0; i + 1 < count; ++i)
            __builtin_prefetch(
                reinterpret_cast<const void*>(ahead.next() + i * ahead.step() + place), 0, 2);
    }
};

/// An estimated sum lies within relative of the rule's one; means of sums by area
/// are told with slack besides.
struct MeanBounds {
    double area;
    double relative;
    static constexpr double kSlack = 1.0 / 65536;
};
MeanBounds meanBounds(const DownsampleCells& cells, const KeptLines& kept, double area);

/// A way to estimate, for a group of cells at a time: sums stay in the nearest
/// cache until they are means.
struct EstimateForm {
    /// Of count cells from first on, up to cellsAtOnce(). A pixel's share in a sum
    /// is rounded to single precision at most as often as a cell has pixels and
    /// kRoundings more times.
    void (*sums)(const DownsampleCells& cells, const ColumnLines& lines, int channels,
                 std::size_t first, std::size_t count, float* sums);
    /// The bytes of the means of count sums that are certain; the places of the
    /// others, the first one being place, are added to open, as far as it has room.
    void (*means)(const MeanBounds& bounds, const float* sums, std::size_t count,
                  unsigned char* out, std::size_t place, std::vector<std::uint32_t>& open);

    /// Sums of a group, which for many channels or pixels a cell has fewer cells,
    /// come in whole vectors.
    static constexpr std::size_t kSums = 32, kColumns = 2304;
    static_assert(kSums * (KeptLines::kMostPixels + 2) <= kColumns);
    static std::size_t cellsAtOnce(const DownsampleCells& cells, int channels) {
        const std::size_t each = static_cast<std::size_t>(channels), whole = kSums / each;
        return (kColumns / each - 1) / (cells.leastWhole + 2) / whole * whole;
    }
};
constexpr int kRoundings = 5;

/// EstimateForm::means one by one, for the values from first on.
void certainMeans(const MeanBounds& bounds, const float* sums, std::size_t first, std::size_t count,
                  unsigned char* out, std::size_t place, std::vector<std::uint32_t>& open);

/// The rule's sum of a cell's channel, from nothing.
float ruleSum(const DownsampleCells& cells, const KeptLines& kept, std::size_t cell, int channel);

#if defined(__x86_64__)
extern const EstimateForm kEstimateAvx2;
void certainMeansAvx2(const MeanBounds& bounds, const float* sums, std::size_t count,
                      unsigned char* out, std::size_t place, std::vector<std::uint32_t>& open);
#endif

}  // namespace Vaskel

#endif
