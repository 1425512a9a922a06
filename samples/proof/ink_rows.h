// A scan as rows of ink, whatever its samples: the threshold chosen, one row
// unpacked at a time.

#ifndef SAMPLES_PROOF_INK_ROWS_H
#define SAMPLES_PROOF_INK_ROWS_H

#include <functional>
#include <optional>
#include <vector>

#include "samples/proof/scan_reader.h"

namespace Proof {

class InkRows {
 public:
    /// Called now and then with the percentage of the rows looked at; false
    /// stops, and the constructor throws Cancelled.
    using Watch = std::function<bool(double percent)>;
    struct Cancelled {};

    /// level is the grey from which on pixels are paper; without one it is
    /// found by otsuLevel from a first pass over the scan. Bilevel scans have
    /// no level. inverted swaps ink and paper. The reader outlives this.
    InkRows(ScanReader& scan, std::optional<int> level, bool inverted, const Watch& watch);

    int width() const { return mScan.info().width; }
    int height() const { return mScan.info().height; }
    /// The level in use, or nothing for a bilevel scan.
    std::optional<int> level() const { return mLevel; }

    /// The next row: one bit a pixel, the most significant first, 1 for ink,
    /// bits behind the width 0. Valid until the next call.
    const unsigned char* next();

 private:
    ScanReader& mScan;
    std::optional<int> mLevel;
    bool mInverted;
    std::vector<unsigned char> mSamples;
    std::vector<std::uint8_t> mGrey;
    std::vector<unsigned char> mInk;
};

}  // namespace Proof

#endif
