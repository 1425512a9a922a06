// Pictures from files: JPEG through libjpeg, PNG through libpng, TIFF through
// libtiff.

#include <png.h>
#include <tiffio.h>

#include <cerrno>
#include <csetjmp>
#include <cstdio>
// jpeglib.h wants stdio.h before it.
#include <jpeglib.h>

#include <cstring>
#include <memory>

#include "samples/proof/failure.h"
#include "samples/proof/make/picture.h"

namespace Proof {
namespace {

constexpr std::uint64_t kMostPixels = 200'000'000;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

void setSize(Picture& picture, std::uint64_t width, std::uint64_t height) {
    if (width == 0 || height == 0 || width > 1000000 || height > 1000000 ||
        width * height > kMostPixels)
        throw fileFailure(picture.name, "a picture of this size is too large");
    picture.width = static_cast<int>(width);
    picture.height = static_cast<int>(height);
    picture.pixels.assign(static_cast<std::size_t>(width * height), 0);
}

unsigned char* rowBytes(Picture& picture, int y) {
    return reinterpret_cast<unsigned char*>(picture.pixels.data() +
                                            static_cast<std::size_t>(y) *
                                                static_cast<std::size_t>(picture.width));
}

// One line of samples into four bytes a pixel.
void storeRow(Picture& picture, int y, const unsigned char* samples, int channels, bool inverted) {
    unsigned char* out = rowBytes(picture, y);
    for (int x = 0; x < picture.width; ++x, samples += channels, out += 4) {
        for (int c = 0; c < picture.channels(); ++c) {
            const unsigned char sample = samples[channels == 1 ? 0 : c];
            out[c] = inverted ? static_cast<unsigned char>(255 - sample) : sample;
        }
    }
}

struct JpegErrors {
    jpeg_error_mgr manager;
    std::jmp_buf jump;
    char text[JMSG_LENGTH_MAX];

    static void exit(j_common_ptr info) {
        auto* self = reinterpret_cast<JpegErrors*>(info->err);
        info->err->format_message(info, self->text);
        std::longjmp(self->jump, 1);
    }
    static void quiet(j_common_ptr) {}
};

// libjpeg leaves by longjmp, so that everything with a destructor lives outside.
bool readJpegInto(Picture& picture, std::FILE* file, JpegErrors& errors,
                  std::vector<unsigned char>& line) {
    jpeg_decompress_struct jpeg;
    jpeg.err = jpeg_std_error(&errors.manager);
    errors.manager.error_exit = JpegErrors::exit;
    errors.manager.output_message = JpegErrors::quiet;
    if (setjmp(errors.jump)) {
        jpeg_destroy_decompress(&jpeg);
        return false;
    }
    jpeg_create_decompress(&jpeg);
    jpeg_stdio_src(&jpeg, file);
    jpeg_read_header(&jpeg, TRUE);
    const bool inks = jpeg.num_components == 4;
    jpeg.out_color_space = inks ? JCS_CMYK : JCS_RGB;
    // Programs that write the Adobe marker write inks the other way round.
    const bool inverted = inks && jpeg.saw_Adobe_marker;
    picture.space = inks ? Picture::Cmyk : Picture::Rgb;
    picture.format = inverted ? "JPEG, inverted inks" : inks ? "JPEG, inks" : "JPEG";
    if (std::uint64_t{jpeg.image_width} * jpeg.image_height > kMostPixels) {
        std::strcpy(errors.text, "a picture of this size is too large");
        jpeg_destroy_decompress(&jpeg);
        return false;
    }
    setSize(picture, jpeg.image_width, jpeg.image_height);
    jpeg_start_decompress(&jpeg);
    line.resize(static_cast<std::size_t>(picture.width) * 4);
    while (jpeg.output_scanline < jpeg.output_height) {
        unsigned char* rows[1] = {line.data()};
        const int y = static_cast<int>(jpeg.output_scanline);
        jpeg_read_scanlines(&jpeg, rows, 1);
        storeRow(picture, y, line.data(), jpeg.output_components, inverted);
    }
    jpeg_finish_decompress(&jpeg);
    if (errors.manager.num_warnings > 0) {  // a truncated file ends in grey
        errors.manager.format_message(reinterpret_cast<j_common_ptr>(&jpeg), errors.text);
        jpeg_destroy_decompress(&jpeg);
        return false;
    }
    jpeg_destroy_decompress(&jpeg);
    return true;
}

void readJpeg(Picture& picture, std::FILE* file) {
    JpegErrors errors{};
    std::vector<unsigned char> line;
    if (!readJpegInto(picture, file, errors, line)) throw fileFailure(picture.name, errors.text);
}

void readPng(Picture& picture, const std::string& path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    struct Freer {
        png_image& image;
        ~Freer() { png_image_free(&image); }
    } freer{image};
    if (!png_image_begin_read_from_file(&image, path.c_str()))
        throw fileFailure(picture.name, image.message);
    image.format = PNG_FORMAT_RGB;
    picture.space = Picture::Rgb;
    picture.format = "PNG";
    setSize(picture, image.width, image.height);
    std::vector<unsigned char> samples(PNG_IMAGE_SIZE(image));
    const png_color white = {255, 255, 255};
    if (!png_image_finish_read(&image, &white, samples.data(), 0, nullptr))
        throw fileFailure(picture.name, image.message);
    for (int y = 0; y < picture.height; ++y)
        storeRow(picture, y, samples.data() + static_cast<std::size_t>(y) * 3 * image.width, 3,
                 false);
}

struct TiffCloser {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};

thread_local std::string tTiffReason;
void noteTiffError(const char*, const char* format, va_list arguments) {
    char text[300];
    std::vsnprintf(text, sizeof text, format, arguments);
    tTiffReason = text;
}

void readTiff(Picture& picture, const std::string& path) {
    tTiffReason = "this is no TIFF picture that can be read";
    TIFFSetErrorHandler(noteTiffError);
    TIFFSetWarningHandler(nullptr);
    const std::unique_ptr<TIFF, TiffCloser> tiff(TIFFOpen(path.c_str(), "r"));
    if (!tiff) throw fileFailure(picture.name, tTiffReason);
    std::uint32_t width = 0, height = 0;
    std::uint16_t bits = 1, samples = 1, photometric = 0, planar = PLANARCONFIG_CONTIG;
    TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height);
    TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, &samples);
    TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_PLANARCONFIG, &planar);
    TIFFGetField(tiff.get(), TIFFTAG_PHOTOMETRIC, &photometric);
    if (photometric == PHOTOMETRIC_YCBCR)
        TIFFSetField(tiff.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    const bool inks = photometric == PHOTOMETRIC_SEPARATED;
    if (bits != 8 || planar != PLANARCONFIG_CONTIG || TIFFIsTiled(tiff.get()) ||
        (inks ? samples < 4
              : photometric != PHOTOMETRIC_RGB && photometric != PHOTOMETRIC_MINISBLACK &&
                    photometric != PHOTOMETRIC_YCBCR))
        throw fileFailure(picture.name,
                          "only TIFF pictures of 8 bits a channel, grey, RGB or CMYK, in strips");
    picture.space = inks ? Picture::Cmyk : Picture::Rgb;
    picture.format = inks ? "TIFF, inks" : "TIFF";
    setSize(picture, width, height);
    std::vector<unsigned char> line(static_cast<std::size_t>(TIFFScanlineSize(tiff.get())));
    if (line.size() < std::size_t{width} * samples)
        throw fileFailure(picture.name, "its lines are too short");
    for (int y = 0; y < picture.height; ++y) {
        if (TIFFReadScanline(tiff.get(), line.data(), static_cast<std::uint32_t>(y)) < 0)
            throw fileFailure(picture.name, tTiffReason);
        storeRow(picture, y, line.data(), samples, false);
    }
}

}  // namespace

Picture readPicture(const std::string& path) {
    Picture picture;
    picture.name = path;
    const File file(std::fopen(path.c_str(), "rb"));
    if (!file) throw fileFailure(path, std::strerror(errno));
    unsigned char head[8] = {};
    const std::size_t read = std::fread(head, 1, sizeof head, file.get());
    std::rewind(file.get());
    if (read >= 3 && head[0] == 0xFF && head[1] == 0xD8 && head[2] == 0xFF)
        readJpeg(picture, file.get());
    else if (read == 8 && std::memcmp(head, "\x89PNG\r\n\x1a\n", 8) == 0)
        readPng(picture, path);
    else if (read >= 4 &&
             (std::memcmp(head, "II*\0", 4) == 0 || std::memcmp(head, "MM\0*", 4) == 0 ||
              std::memcmp(head, "II+\0", 4) == 0 || std::memcmp(head, "MM\0+", 4) == 0))
        readTiff(picture, path);
    else
        throw fileFailure(path, "not a JPEG, PNG or TIFF picture");
    return picture;
}

}  // namespace Proof
