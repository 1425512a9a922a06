// Scanned pages as the sample host sees them, whatever the file format: a
// description and one stored row after the other.

#ifndef SAMPLES_PROOF_SCAN_READER_H
#define SAMPLES_PROOF_SCAN_READER_H

#include <functional>
#include <memory>
#include <string>

#include "samples/proof/byte_source.h"
#include "samples/proof/sample_layout.h"

namespace Proof {

/// The most pixels a side of a scan may have: 42 m at 600 dpi. Outline
/// coordinates, in fractions of a pixel, stay far inside 32 bits.
constexpr int kMaxScanSide = 1000000;

struct ScanInfo {
    std::string format;  // for the user: "TIFF, CCITT Group 4"
    int width = 0;       // pixels, as stored
    int height = 0;
    double xPpi = 0;  // pixels per inch along a row; 0 where the file says nothing
    double yPpi = 0;
    SampleLayout layout;
    /// How the stored rows are to be shown: 1 to 8, TIFF 6.0 section 8, field
    /// Orientation; 1 is upright.
    int orientation = 1;
    int page = 1;  // of pages
    int pages = 1;
};

class ScanReader {
 public:
    virtual ~ScanReader() = default;

    const ScanInfo& info() const { return mInfo; }

    /// Copies the next row's samples, info().layout.rowBytes(width) bytes.
    /// Throws Failure where the file is truncated or damaged. Called height
    /// times at most between rewinds.
    virtual void readRow(unsigned char* samples) = 0;

    /// Goes back to the first row.
    virtual void rewind() = 0;

 protected:
    ScanInfo mInfo;
};

/// Receives what is odd about a file that can be read all the same.
using ScanWarning = std::function<void(const std::string& text)>;

/// The reader for what the bytes are: PNG, TIFF, PBM, PGM or PPM. Throws
/// Failure where they are none of these, or damaged, or too large. page
/// counts from 1 and picks one of a TIFF's; the others have page 1 only.
/// The source outlives the reader.
std::unique_ptr<ScanReader> openScan(ByteSource& source, int page, ScanWarning warn);

// One reader a file format; openScan picks.
std::unique_ptr<ScanReader> openPng(ByteSource& source);
std::unique_ptr<ScanReader> openTiff(ByteSource& source, int page, ScanWarning warn);
std::unique_ptr<ScanReader> openPnm(ByteSource& source);

/// Throws Failure unless both sides are between 1 and kMaxScanSide.
void checkScanSize(const std::string& name, std::uint64_t width, std::uint64_t height);

/// A resolution that can be true, or 0: formats that count whole pixels per
/// metre or centimetre give 599.9988 for 600, and some writers leave 0, 1 or
/// nonsense.
double plausiblePpi(double ppi);

}  // namespace Proof

#endif
