#include "samples/proof/scan_reader.h"

#include <cmath>
#include <cstring>

#include "samples/proof/failure.h"

namespace Proof {
namespace {

// What people give to a tracer by mistake, by the first bytes of the file.
const char* foreignFormat(const unsigned char* bytes, std::size_t count) {
    struct Mark {
        const char* bytes;
        const char* name;
    };
    static constexpr Mark kMarks[] = {
        {"\xFF\xD8\xFF", "a JPEG picture"},
        {"%PDF-", "a PDF document"},
        {"%!PS", "a PostScript document"},
        {"GIF8", "a GIF picture"},
        {"BM", "a BMP picture"},
        {"RIFF", "a WebP picture or a sound"},
        {"<svg", "an SVG drawing"},
        {"<?xml", "an XML document"},
        {"AT&TFORM", "a DjVu document"},
        {"\x1F\x8B", "compressed with gzip"},
    };
    for (const Mark& mark : kMarks) {
        const std::size_t length = std::strlen(mark.bytes);
        if (count >= length && std::memcmp(bytes, mark.bytes, length) == 0) return mark.name;
    }
    return nullptr;
}

}  // namespace

void checkScanSize(const std::string& name, std::uint64_t width, std::uint64_t height) {
    if (width == 0 || height == 0) throw fileFailure(name, "has no pixels");
    if (width > kMaxScanSide || height > kMaxScanSide)
        throw fileFailure(name, "is too large: " + std::to_string(width) + " x " +
                                    std::to_string(height) + " pixels, and a side may have " +
                                    std::to_string(kMaxScanSide));
}

double plausiblePpi(double ppi) {
    if (!(ppi >= 5) || ppi > 100000) return 0;
    // One pixel per metre is 0.0254 ppi, so a whole ppi is at most half of it
    // away after its way through whole pixels per metre.
    const double whole = std::round(ppi);
    return std::fabs(ppi - whole) <= 0.0128 ? whole : ppi;
}

std::unique_ptr<ScanReader> openScan(ByteSource& source, int page, ScanWarning warn) {
    unsigned char mark[16];
    const std::size_t count = source.readAt(0, mark, sizeof mark);
    const auto begins = [&](const char* bytes, std::size_t length) {
        return count >= length && std::memcmp(mark, bytes, length) == 0;
    };
    if (begins("II*\0", 4) || begins("MM\0*", 4) || begins("II+\0", 4) || begins("MM\0+", 4))
        return openTiff(source, page, std::move(warn));
    std::unique_ptr<ScanReader> reader;
    if (begins("\x89PNG\r\n\x1A\n", 8))
        reader = openPng(source);
    else if (count >= 3 && mark[0] == 'P' && mark[1] >= '1' && mark[1] <= '6')
        reader = openPnm(source);
    if (!reader) {
        const char* foreign = foreignFormat(mark, count);
        throw fileFailure(source.name(),
                          foreign ? std::string("is ") + foreign + ", not PNG, TIFF, PBM or PGM"
                                  : "is no picture in PNG, TIFF, PBM or PGM format");
    }
    if (page != 1) throw fileFailure(source.name(), "has one page only");
    return reader;
}

}  // namespace Proof
