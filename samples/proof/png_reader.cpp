// PNG through libpng: rows as they are stored, without conversion.
//
// libpng leaves its calls by longjmp when something is wrong. Every call that
// can do so stands in a function of its own that holds no object with a
// destructor, returns whether it went well, and leaves the reason in mReason.

#include <png.h>

#include <csetjmp>
#include <cstring>
#include <vector>

#include "samples/proof/failure.h"
#include "samples/proof/scan_reader.h"

namespace Proof {
namespace {

// Interlaced pictures cannot be read row by row; so much of them is kept.
constexpr std::uint64_t kMaxInterlaced = std::uint64_t{1} << 30;

class PngReader : public ScanReader {
 public:
    explicit PngReader(ByteSource& source) : mSource(source) { open(); }
    ~PngReader() override { close(); }

    void rewind() override {
        mRow = 0;
        if (mPicture.empty()) {
            close();
            open();
        }
    }

    void readRow(unsigned char* samples) override {
        if (mInterlaced) {
            if (mPicture.empty()) readPicture();
            std::memcpy(samples, mPicture.data() + static_cast<std::size_t>(mRow) * mRowBytes,
                        mRowBytes);
        } else if (!nextRow(samples)) {
            fail();
        }
        ++mRow;
    }

 private:
    static void onError(png_structp png, png_const_charp text) {
        auto* self = static_cast<PngReader*>(png_get_error_ptr(png));
        std::strncpy(self->mReason, text, sizeof self->mReason - 1);
        png_longjmp(png, 1);
    }
    static void onWarning(png_structp, png_const_charp) {}

    static void onRead(png_structp png, png_bytep to, png_size_t count) {
        auto* self = static_cast<PngReader*>(png_get_io_ptr(png));
        if (!self->copyBytes(to, count)) png_error(png, self->mIoReason);
    }

    // Keeps C++ exceptions out of libpng.
    bool copyBytes(png_bytep to, png_size_t count) noexcept {
        try {
            if (mSource.readAt(mOffset, to, count) == count) {
                mOffset += count;
                return true;
            }
            std::strcpy(mIoReason, "the file ends too early");
        } catch (const std::exception& error) {
            std::strncpy(mIoReason, error.what(), sizeof mIoReason - 1);
        }
        return false;
    }

    [[noreturn]] void fail() const {
        const bool atRow = mRow > 0;
        throw fileFailure(mSource.name(),
                          "is a damaged or truncated PNG" +
                              (atRow ? " (row " + std::to_string(mRow + 1) + "): " : ": ") +
                              mReason);
    }

    void open() {
        mOffset = 0;
        mPng = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, onError, onWarning);
        mHeader = mPng ? png_create_info_struct(mPng) : nullptr;
        if (!mHeader) {
            close();
            throw std::bad_alloc();
        }
        try {
            if (!readHeader()) fail();
            describe();
            if (!startRows()) fail();
        } catch (...) {
            close();
            throw;
        }
    }

    void close() { png_destroy_read_struct(&mPng, &mHeader, nullptr); }

    bool readHeader() {
        if (setjmp(png_jmpbuf(mPng))) return false;
        png_set_read_fn(mPng, this, onRead);
        png_set_user_limits(mPng, PNG_UINT_31_MAX, PNG_UINT_31_MAX);  // checkScanSize decides
        png_set_chunk_malloc_max(mPng, 64u << 20);
        png_read_info(mPng, mHeader);
        return true;
    }

    // Reads what png_get_ functions know; none of these leaves by longjmp.
    void describe() {
        checkScanSize(mSource.name(), png_get_image_width(mPng, mHeader),
                      png_get_image_height(mPng, mHeader));
        mInfo.width = static_cast<int>(png_get_image_width(mPng, mHeader));
        mInfo.height = static_cast<int>(png_get_image_height(mPng, mHeader));
        mInfo.format = "PNG";
        png_uint_32 x = 0;
        png_uint_32 y = 0;
        int unit = PNG_RESOLUTION_UNKNOWN;
        if (png_get_pHYs(mPng, mHeader, &x, &y, &unit) && unit == PNG_RESOLUTION_METER) {
            mInfo.xPpi = plausiblePpi(x * 0.0254);
            mInfo.yPpi = plausiblePpi(y * 0.0254);
        }
        describeSamples();
        mInterlaced = png_get_interlace_type(mPng, mHeader) != PNG_INTERLACE_NONE;
    }

    void describeSamples() {
        const int type = png_get_color_type(mPng, mHeader);
        const bool keyed = png_get_valid(mPng, mHeader, PNG_INFO_tRNS) != 0;
        SampleLayout& layout = mInfo.layout;
        layout.bits = png_get_bit_depth(mPng, mHeader);
        layout.channels = png_get_channels(mPng, mHeader);
        mAlphaFromKey = keyed && type != PNG_COLOR_TYPE_PALETTE;
        if (mAlphaFromKey) {
            ++layout.channels;
            if (layout.bits < 8) layout.bits = 8;
        }
        if (type == PNG_COLOR_TYPE_PALETTE) readPalette();
    }

    // Entries beyond the palette's end, which damaged files use, are black.
    void readPalette() {
        png_colorp colours = nullptr;
        int count = 0;
        png_bytep alphas = nullptr;
        int alphaCount = 0;
        png_get_PLTE(mPng, mHeader, &colours, &count);
        png_get_tRNS(mPng, mHeader, &alphas, &alphaCount, nullptr);
        auto& greys = mInfo.layout.palette.emplace();
        greys.fill(0);
        for (int i = 0; i < count && i < 256; ++i) {
            const unsigned alpha = alphas && i < alphaCount ? alphas[i] : 255;
            const unsigned grey = greyOf(colours[i].red, colours[i].green, colours[i].blue);
            greys[static_cast<std::size_t>(i)] =
                static_cast<std::uint8_t>((grey * alpha + 255 * (255 - alpha) + 127) / 255);
        }
    }

    bool startRows() {
        if (setjmp(png_jmpbuf(mPng))) return false;
        if (mAlphaFromKey) png_set_tRNS_to_alpha(mPng);
        if (mInterlaced) png_set_interlace_handling(mPng);
        png_read_update_info(mPng, mHeader);
        mRowBytes = png_get_rowbytes(mPng, mHeader);
        return true;
    }

    bool nextRow(unsigned char* samples) {
        if (setjmp(png_jmpbuf(mPng))) return false;
        png_read_row(mPng, samples, nullptr);
        return true;
    }

    void readPicture() {
        const std::uint64_t bytes =
            std::uint64_t{mRowBytes} * static_cast<std::uint64_t>(mInfo.height);
        if (bytes > kMaxInterlaced)
            throw fileFailure(mSource.name(), "is interlaced and takes " +
                                                  std::to_string(bytes >> 20) +
                                                  " MiB unpacked; save it without interlacing");
        std::vector<unsigned char> picture(bytes);
        std::vector<unsigned char*> rows(static_cast<std::size_t>(mInfo.height));
        for (std::size_t y = 0; y < rows.size(); ++y) rows[y] = picture.data() + y * mRowBytes;
        if (!readAll(rows.data())) fail();
        mPicture = std::move(picture);
    }

    bool readAll(unsigned char** rows) {
        if (setjmp(png_jmpbuf(mPng))) return false;
        png_read_image(mPng, rows);
        return true;
    }

    ByteSource& mSource;
    std::uint64_t mOffset = 0;
    png_structp mPng = nullptr;
    png_infop mHeader = nullptr;
    bool mInterlaced = false;
    bool mAlphaFromKey = false;
    std::size_t mRowBytes = 0;
    int mRow = 0;
    std::vector<unsigned char> mPicture;  // of an interlaced file, as stored
    char mReason[256] = "";
    char mIoReason[256] = "";
};

}  // namespace

std::unique_ptr<ScanReader> openPng(ByteSource& source) {
    return std::make_unique<PngReader>(source);
}

}  // namespace Proof
