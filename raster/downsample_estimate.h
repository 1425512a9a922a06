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
};

/// An estimated sum by area lies within slack of the rule's one.
struct MeanBounds {
    double area;
    double slack;
};
MeanBounds meanBounds(const DownsampleCells& cells, const KeptLines& kept, double area);

/// A way to estimate.
struct EstimateForm {
    /// Of the first count cells. Each sum is rounded to single precision at most
    /// as often as a cell has pixels and kRoundings more times.
    void (*sums)(const DownsampleCells& cells, const KeptLines& kept, const LinesAhead& ahead,
                 std::size_t count, float* sums);
    /// The bytes of the means that are certain; the places of the others are
    /// added to open, as far as it has room.
    void (*means)(const MeanBounds& bounds, const float* sums, std::size_t count,
                  unsigned char* out, std::vector<std::uint32_t>& open);
};
constexpr int kRoundings = 8;

/// EstimateForm::means one by one, for the values from first on.
void certainMeans(const MeanBounds& bounds, const float* sums, std::size_t first, std::size_t count,
                  unsigned char* out, std::vector<std::uint32_t>& open);

/// The rule's sum of a cell's channel, from nothing.
float ruleSum(const DownsampleCells& cells, const KeptLines& kept, std::size_t cell, int channel);

#if defined(__x86_64__)
extern const EstimateForm kEstimateAvx2;
void certainMeansAvx2(const MeanBounds& bounds, const float* sums, std::size_t count,
                      unsigned char* out, std::vector<std::uint32_t>& open);
#endif

}  // namespace Vaskel

#endif
