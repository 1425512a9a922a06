// The outlines of a page: all contours of one compound path, filled even-odd.

#ifndef SAMPLES_PROOF_OUTLINES_H
#define SAMPLES_PROOF_OUTLINES_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/pemmit.h"
#include "samples/proof/path_step.h"

namespace Proof {

/// A place on the page in outline units, x to the right, y down.
struct OutlinePoint {
    std::int32_t x;
    std::int32_t y;
    friend bool operator==(const OutlinePoint&, const OutlinePoint&) = default;
};

class Outlines {
 public:
    std::size_t count() const { return mEnds.size(); }
    std::size_t pointCount() const { return mPoints.size(); }

    /// The points of a closed contour, the first one not repeated.
    std::span<const OutlinePoint> contour(std::size_t index) const {
        const std::size_t begin = index == 0 ? 0 : mEnds[index - 1];
        return {mPoints.data() + begin, mEnds[index] - begin};
    }

    /// Appends a contour; one of fewer than three points encloses nothing and
    /// is left out. Memory that ends passes std::bad_alloc on and leaves the
    /// outlines as they were.
    void add(std::span<const OutlinePoint> contour);

 private:
    std::vector<OutlinePoint> mPoints;
    std::vector<std::size_t> mEnds;  // of each contour, in mPoints
};

/// How stored rows are shown, TIFF's field Orientation: maps places of the
/// stored bitmap to places of the upright page.
class Orientation {
 public:
    /// code is 1 to 8; width and height are the stored bitmap's.
    Orientation(int code, int width, int height) : mCode(code), mWidth(width), mHeight(height) {}

    /// Whether rows of the bitmap are columns of the page.
    bool swapsSides() const { return mCode >= 5; }
    int pageWidth() const { return swapsSides() ? mHeight : mWidth; }
    int pageHeight() const { return swapsSides() ? mWidth : mHeight; }
    OutlinePoint onPage(int column, int row) const;

 private:
    int mCode;
    int mWidth;
    int mHeight;
};

/// A page of outlines with all that a writer needs.
struct OutlinePage {
    Outlines outlines;  // filled
    int width = 0;      // of the page in outline units
    int height = 0;
    double xUnitsPerInch = 0;
    double yUnitsPerInch = 0;
    std::vector<PathStep> lines = {};  // drawn as hair lines
    std::vector<PathStep> marks = {};  // drawn over all, in red
};

// How wide lines and marks are drawn, and how exactly: outline units are small.
constexpr double kHairlineInch = 0.1 / 25.4;
constexpr double kMarkInch = 0.2 / 25.4;
constexpr int kStepDecimals = 3;

/// Appends the tracer's outline: its points hold the row in x and the column
/// in y.
void addTraced(const Pemmit::Path* path, const Orientation& orientation, Outlines& outlines);

}  // namespace Proof

#endif
