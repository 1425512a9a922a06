// TIFF through libtiff: strips and tiles, every compression that libtiff
// knows, rows as they are stored.

#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <vector>

#include "samples/proof/failure.h"
#include "samples/proof/scan_reader.h"

namespace Proof {
namespace {

// More than any honest tile, strip buffer or tag needs.
constexpr tmsize_t kMaxAllocation = tmsize_t{256} << 20;
constexpr int kMaxWarnings = 3;

struct TiffCloser {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};

const char* compressionName(std::uint16_t code) {
    switch (code) {
        case COMPRESSION_NONE:
            return "uncompressed";
        case COMPRESSION_CCITTRLE:
        case COMPRESSION_CCITTRLEW:
            return "CCITT modified Huffman";
        case COMPRESSION_CCITTFAX3:
            return "CCITT Group 3";
        case COMPRESSION_CCITTFAX4:
            return "CCITT Group 4";
        case COMPRESSION_LZW:
            return "LZW";
        case COMPRESSION_JPEG:
        case COMPRESSION_OJPEG:
            return "JPEG";
        case COMPRESSION_ADOBE_DEFLATE:
        case COMPRESSION_DEFLATE:
            return "Deflate";
        case COMPRESSION_PACKBITS:
            return "PackBits";
        case COMPRESSION_ZSTD:
            return "Zstandard";
        case COMPRESSION_LZMA:
            return "LZMA";
        case COMPRESSION_WEBP:
            return "WebP";
        default:
            return "compression";
    }
}

class TiffReader : public ScanReader {
 public:
    TiffReader(ByteSource& source, int page, ScanWarning warn)
        : mSource(source), mWarn(std::move(warn)) {
        open();
        choosePage(page);
        describe();
    }

    void rewind() override { mRow = 0; }

    void readRow(unsigned char* samples) override {
        if (mTileHeight > 0)
            readTiledRow(samples);
        else if (TIFFReadScanline(mTiff.get(), samples, static_cast<std::uint32_t>(mRow)) < 0)
            fail();
        if (!mReason.empty()) fail();
        passWarnings();
        ++mRow;
    }

 private:
    // libtiff's ways to the bytes and to our messages; nothing may throw.
    static tmsize_t onRead(thandle_t handle, void* to, tmsize_t count) {
        auto* self = static_cast<TiffReader*>(handle);
        try {
            const std::size_t got =
                self->mSource.readAt(self->mOffset, to, static_cast<std::size_t>(count));
            self->mOffset += got;
            return static_cast<tmsize_t>(got);
        } catch (const std::exception& error) {
            self->keepReason(error.what());
            return -1;
        }
    }
    static tmsize_t onWrite(thandle_t, void*, tmsize_t) { return -1; }
    static toff_t onSeek(thandle_t handle, toff_t offset, int whence) {
        auto* self = static_cast<TiffReader*>(handle);
        if (whence == SEEK_CUR) offset += self->mOffset;
        if (whence == SEEK_END) offset += self->mSource.size();
        return self->mOffset = offset;
    }
    static int onClose(thandle_t) { return 0; }
    static toff_t onSize(thandle_t handle) {
        return static_cast<TiffReader*>(handle)->mSource.size();
    }

    static int onError(TIFF*, void* user, const char*, const char* format, va_list arguments) {
        char text[256];
        std::vsnprintf(text, sizeof text, format, arguments);
        static_cast<TiffReader*>(user)->keepReason(text);
        return 1;
    }
    static int onWarning(TIFF*, void* user, const char*, const char* format, va_list arguments) {
        char text[256];
        std::vsnprintf(text, sizeof text, format, arguments);
        static_cast<TiffReader*>(user)->warn(text);
        return 1;
    }

    // The first error says most; later ones follow from it.
    void keepReason(const char* text) noexcept {
        try {
            if (mReason.empty()) mReason = text;
        } catch (const std::bad_alloc&) {
        }
    }

    // Warnings are held back to the end of the call that made them: the
    // receiver may throw, and libtiff is no place to throw through.
    void warn(const char* text) noexcept {
        try {
            // A directory that is read twice has the same to say twice.
            const bool known = std::count(mWarnings.begin(), mWarnings.end(), text) > 0;
            if (!known && mWarnings.size() < kMaxWarnings) mWarnings.emplace_back(text);
        } catch (const std::bad_alloc&) {
        }
    }

    void passWarnings() {
        if (mWarn)
            for (; mPassed < mWarnings.size(); ++mPassed)
                mWarn(oneLine(mSource.name() + ": " + mWarnings[mPassed]));
    }

    [[noreturn]] void fail() const {
        std::string where = mRow > 0 ? " (row " + std::to_string(mRow + 1) + "): " : ": ";
        throw fileFailure(mSource.name(), "is a damaged or truncated TIFF" + where +
                                              (mReason.empty() ? "it cannot be decoded" : mReason));
    }

    void open() {
        TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
        if (!options) throw std::bad_alloc();
        TIFFOpenOptionsSetMaxSingleMemAlloc(options, kMaxAllocation);
        TIFFOpenOptionsSetErrorHandlerExtR(options, onError, this);
        TIFFOpenOptionsSetWarningHandlerExtR(options, onWarning, this);
        // m: no memory mapping; the source may be a pipe's copy or memory.
        mTiff.reset(TIFFClientOpenExt("scan", "rm", this, onRead, onWrite, onSeek, onClose, onSize,
                                      nullptr, nullptr, options));
        TIFFOpenOptionsFree(options);
        if (!mTiff) fail();
    }

    void choosePage(int page) {
        mInfo.pages = static_cast<int>(TIFFNumberOfDirectories(mTiff.get()));
        if (page < 1 || page > mInfo.pages)
            throw fileFailure(mSource.name(), "has no page " + std::to_string(page) + ", only " +
                                                  std::to_string(mInfo.pages));
        mInfo.page = page;
        if (!TIFFSetDirectory(mTiff.get(), static_cast<tdir_t>(page - 1))) fail();
        mReason.clear();  // what is wrong with other pages is not ours to judge
    }

    template <class T>
    T field(std::uint32_t tag, T otherwise) const {
        T value = otherwise;
        return TIFFGetFieldDefaulted(mTiff.get(), tag, &value) ? value : otherwise;
    }

    void describe() {
        const auto width = field<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0);
        const auto height = field<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0);
        checkScanSize(mSource.name(), width, height);
        mInfo.width = static_cast<int>(width);
        mInfo.height = static_cast<int>(height);
        const auto orientation = field<std::uint16_t>(TIFFTAG_ORIENTATION, 1);
        mInfo.orientation = orientation >= 1 && orientation <= 8 ? orientation : 1;
        const auto compression = field<std::uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
        mInfo.format = std::string("TIFF, ") + compressionName(compression);
        describeResolution();
        describeSamples(compression);
        describeTiles();
        passWarnings();
    }

    void describeResolution() {
        const auto unit = field<std::uint16_t>(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
        const double scale = unit == RESUNIT_INCH ? 1 : unit == RESUNIT_CENTIMETER ? 2.54 : 0;
        mInfo.xPpi =
            plausiblePpi(scale * static_cast<double>(field<float>(TIFFTAG_XRESOLUTION, 0)));
        mInfo.yPpi =
            plausiblePpi(scale * static_cast<double>(field<float>(TIFFTAG_YRESOLUTION, 0)));
    }

    [[noreturn]] void unsupported(const std::string& what) const {
        throw fileFailure(mSource.name(),
                          "is a TIFF with " + what + "; save it as bilevel, grey or RGB");
    }

    void describeSamples(std::uint16_t compression) {
        if (!TIFFIsCODECConfigured(compression))
            unsupported("a compression that cannot be decoded here");
        const auto bits = field<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1);
        const auto samples = field<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1);
        const auto format = field<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
        if (bits != 1 && bits != 2 && bits != 4 && bits != 8 && bits != 16)
            unsupported(std::to_string(bits) + " bits a sample");
        if (format != SAMPLEFORMAT_UINT && format != SAMPLEFORMAT_VOID)
            unsupported("signed or floating samples");
        if (samples > 1 && (bits < 8 || field<std::uint16_t>(TIFFTAG_PLANARCONFIG, 1) != 1))
            unsupported("separate colour planes");
        SampleLayout& layout = mInfo.layout;
        layout.bits = bits;
        layout.channels = samples;
        layout.nativeOrder = true;
        describeColour(compression, samples);
    }

    void describeColour(std::uint16_t compression, int samples) {
        SampleLayout& layout = mInfo.layout;
        std::uint16_t photometric = PHOTOMETRIC_MINISWHITE;
        TIFFGetField(mTiff.get(), TIFFTAG_PHOTOMETRIC, &photometric);
        switch (photometric) {
            case PHOTOMETRIC_MINISWHITE:
            case PHOTOMETRIC_MINISBLACK:
                if (samples > 2) unsupported(std::to_string(samples) + " samples a pixel");
                layout.whiteIsZero = photometric == PHOTOMETRIC_MINISWHITE;
                break;
            case PHOTOMETRIC_PALETTE:
                if (samples != 1 || layout.bits > 8) unsupported("an unusual palette");
                readPalette();
                break;
            case PHOTOMETRIC_YCBCR:
                if (compression != COMPRESSION_JPEG || samples != 3) unsupported("YCbCr samples");
                TIFFSetField(mTiff.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
                break;
            case PHOTOMETRIC_RGB:
                if (samples != 3 && samples != 4)
                    unsupported(std::to_string(samples) + " samples a pixel");
                break;
            default:
                unsupported(photometric == PHOTOMETRIC_SEPARATED ? "CMYK samples"
                                                                 : "an unusual colour space");
        }
    }

    // TIFF palettes have 16 bits a sample; writers that leave the upper byte
    // empty mean 8.
    void readPalette() {
        std::uint16_t* red = nullptr;
        std::uint16_t* green = nullptr;
        std::uint16_t* blue = nullptr;
        if (!TIFFGetField(mTiff.get(), TIFFTAG_COLORMAP, &red, &green, &blue))
            unsupported("a palette that is missing");
        const std::size_t count = std::size_t{1} << mInfo.layout.bits;
        bool wide = false;
        for (std::size_t i = 0; i < count; ++i)
            wide = wide || red[i] > 255 || green[i] > 255 || blue[i] > 255;
        const int shift = wide ? 8 : 0;
        auto& greys = mInfo.layout.palette.emplace();
        greys.fill(0);
        for (std::size_t i = 0; i < count; ++i)
            greys[i] = greyOf(red[i] >> shift, green[i] >> shift, blue[i] >> shift);
    }

    // What libtiff says a row or tile takes has to be what the layout says:
    // rows are copied by the layout.
    void describeTiles() {
        const std::size_t rowBytes = mInfo.layout.rowBytes(mInfo.width);
        if (!TIFFIsTiled(mTiff.get())) {
            if (TIFFScanlineSize64(mTiff.get()) != rowBytes) unsupported("an unusual row length");
            return;
        }
        mTileWidth = static_cast<int>(
            std::min<std::uint32_t>(field<std::uint32_t>(TIFFTAG_TILEWIDTH, 0), kMaxScanSide));
        mTileHeight = static_cast<int>(
            std::min<std::uint32_t>(field<std::uint32_t>(TIFFTAG_TILELENGTH, 0), kMaxScanSide));
        const std::uint64_t tileBytes = TIFFTileSize64(mTiff.get());
        if (mTileWidth == 0 || mTileHeight == 0 || mTileWidth % 8 != 0 ||
            tileBytes !=
                mInfo.layout.rowBytes(mTileWidth) * static_cast<std::uint64_t>(mTileHeight))
            unsupported("unusual tiles");
        const std::uint64_t bandBytes = rowBytes * static_cast<std::uint64_t>(mTileHeight);
        if (tileBytes > kMaxAllocation || bandBytes > kMaxAllocation) unsupported("huge tiles");
    }

    void readTiledRow(unsigned char* samples) {
        if (mRow % mTileHeight == 0) readBand();
        const std::size_t rowBytes = mInfo.layout.rowBytes(mInfo.width);
        std::memcpy(samples, mBand.data() + static_cast<std::size_t>(mRow % mTileHeight) * rowBytes,
                    rowBytes);
    }

    // A row of tiles; tile widths are multiples of 8 (16 by the standard), so
    // that tiles meet at bytes whatever the sample size.
    void readBand() {
        const std::size_t rowBytes = mInfo.layout.rowBytes(mInfo.width);
        const std::size_t tileRowBytes = mInfo.layout.rowBytes(mTileWidth);
        const int rows = std::min(mTileHeight, mInfo.height - mRow);
        mBand.resize(rowBytes * static_cast<std::size_t>(mTileHeight));
        mTile.resize(tileRowBytes * static_cast<std::size_t>(mTileHeight));
        for (std::size_t at = 0, x = 0; at < rowBytes;
             at += tileRowBytes, x += static_cast<std::size_t>(mTileWidth)) {
            if (TIFFReadTile(mTiff.get(), mTile.data(), static_cast<std::uint32_t>(x),
                             static_cast<std::uint32_t>(mRow), 0, 0) < 0)
                fail();
            const std::size_t bytes = std::min(tileRowBytes, rowBytes - at);
            for (std::size_t y = 0; y < static_cast<std::size_t>(rows); ++y)
                std::memcpy(mBand.data() + y * rowBytes + at, mTile.data() + y * tileRowBytes,
                            bytes);
        }
    }

    ByteSource& mSource;
    ScanWarning mWarn;
    std::uint64_t mOffset = 0;
    std::string mReason;
    std::vector<std::string> mWarnings;
    std::size_t mPassed = 0;  // of mWarnings
    int mRow = 0;
    int mTileWidth = 0;  // 0: strips
    int mTileHeight = 0;
    std::vector<unsigned char> mBand;  // a row of tiles
    std::vector<unsigned char> mTile;
    std::unique_ptr<TIFF, TiffCloser> mTiff;  // last: its closing may call back
};

}  // namespace

std::unique_ptr<ScanReader> openTiff(ByteSource& source, int page, ScanWarning warn) {
    return std::make_unique<TiffReader>(source, page, std::move(warn));
}

}  // namespace Proof
