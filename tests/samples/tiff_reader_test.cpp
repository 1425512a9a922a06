#include <doctest/doctest.h>
#include <tiffio.h>

#include <algorithm>
#include <random>

#include "samples/proof/failure.h"
#include "samples/proof/scan_reader.h"
#include "tests/samples/pictures.h"

using namespace Proof;

namespace {

struct TiffPicture {
    int width = 37;
    int height = 23;
    int bits = 1;
    int samples = 1;
    int photometric = PHOTOMETRIC_MINISWHITE;
    int compression = COMPRESSION_NONE;
    int rowsPerStrip = 8;
    int tile = 0;  // side, 0 for strips
    int orientation = 0;
    float xResolution = 0;
    float yResolution = 0;
    int resolutionUnit = RESUNIT_INCH;
};

// The picture that all these files hold: random strokes.
bool inked(int x, int y) { return (x * 7 + y * 13) % 11 < 4 || x == y; }

std::string wantedText(const TiffPicture& picture) {
    std::string text;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) text += inked(x, y) ? '#' : '.';
        text += '\n';
    }
    return text;
}

// A block of rows from (x0, y0), w wide and h high, as stored.
Bytes samplesOf(const TiffPicture& picture, int x0, int y0, int w, int h) {
    const int bitsPerPixel = picture.bits * picture.samples;
    const std::size_t rowBytes = static_cast<std::size_t>(w * bitsPerPixel + 7) / 8;
    Bytes block(rowBytes * static_cast<std::size_t>(h));
    const bool inkIsOne = picture.photometric == PHOTOMETRIC_MINISWHITE;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const bool ones = inked(x0 + x, y0 + y) == inkIsOne;
            for (int bit = x * bitsPerPixel; ones && bit < (x + 1) * bitsPerPixel; ++bit)
                block[static_cast<std::size_t>(y) * rowBytes + static_cast<std::size_t>(bit / 8)] |=
                    static_cast<unsigned char>(0x80 >> (bit % 8));
        }
    return block;
}

void writePage(TIFF* tiff, const TiffPicture& picture) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, picture.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, picture.samples);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, picture.photometric);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, picture.compression);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    if (picture.orientation) TIFFSetField(tiff, TIFFTAG_ORIENTATION, picture.orientation);
    if (picture.xResolution > 0) {
        TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, picture.resolutionUnit);
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, static_cast<double>(picture.xResolution));
        TIFFSetField(tiff, TIFFTAG_YRESOLUTION, static_cast<double>(picture.yResolution));
    }
    if (picture.tile) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, picture.tile);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, picture.tile);
        for (int y = 0; y < picture.height; y += picture.tile)
            for (int x = 0; x < picture.width; x += picture.tile) {
                Bytes block = samplesOf(picture, x, y, picture.tile, picture.tile);
                TIFFWriteTile(tiff, block.data(), static_cast<std::uint32_t>(x),
                              static_cast<std::uint32_t>(y), 0, 0);
            }
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, picture.rowsPerStrip);
        for (int y = 0; y < picture.height; ++y) {
            Bytes row = samplesOf(picture, 0, y, picture.width, 1);
            TIFFWriteScanline(tiff, row.data(), static_cast<std::uint32_t>(y), 0);
        }
    }
    TIFFWriteDirectory(tiff);
}

Bytes encode(const TiffPicture& picture) {
    return encodeTiff([&](TIFF* tiff) { writePage(tiff, picture); });
}

ScanInfo infoOf(const Bytes& file, int page = 1) {
    const auto source = memoryBytes("made", file);
    return openScan(*source, page, nullptr)->info();
}

}  // namespace

TEST_CASE("bilevel TIFFs of every compression give their pixels") {
    for (const int compression :
         {COMPRESSION_NONE, COMPRESSION_CCITTRLE, COMPRESSION_CCITTFAX3, COMPRESSION_CCITTFAX4,
          COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE, COMPRESSION_PACKBITS}) {
        for (const int photometric : {PHOTOMETRIC_MINISWHITE, PHOTOMETRIC_MINISBLACK}) {
            CAPTURE(compression);
            CAPTURE(photometric);
            TiffPicture picture;
            picture.compression = compression;
            picture.photometric = photometric;
            CHECK(inkText(encode(picture)) == wantedText(picture));
        }
    }
}

TEST_CASE("grey and colour TIFFs of every depth give their pixels") {
    for (const int bits : {2, 4, 8, 16}) {
        CAPTURE(bits);
        TiffPicture picture;
        picture.bits = bits;
        picture.photometric = PHOTOMETRIC_MINISBLACK;
        CHECK(inkText(encode(picture)) == wantedText(picture));
        picture.photometric = PHOTOMETRIC_MINISWHITE;
        CHECK(inkText(encode(picture)) == wantedText(picture));
    }
    for (const int bits : {8, 16}) {
        TiffPicture picture;
        picture.bits = bits;
        picture.samples = 3;
        picture.photometric = PHOTOMETRIC_RGB;
        CHECK(inkText(encode(picture)) == wantedText(picture));
    }
}

TEST_CASE("tiled TIFFs give their pixels, also at the right and lower edge") {
    for (const int bits : {1, 8}) {
        for (const int compression : {COMPRESSION_NONE, COMPRESSION_CCITTFAX4}) {
            if (bits == 8 && compression == COMPRESSION_CCITTFAX4) continue;
            TiffPicture picture;
            picture.bits = bits;
            picture.tile = 16;
            picture.compression = compression;
            CAPTURE(bits);
            CAPTURE(compression);
            CHECK(inkText(encode(picture)) == wantedText(picture));
        }
    }
}

TEST_CASE("a TIFF can be read twice") {
    for (const int tile : {0, 16}) {
        TiffPicture picture;
        picture.compression = COMPRESSION_CCITTFAX4;
        picture.tile = tile;
        const Bytes file = encode(picture);
        const auto source = memoryBytes("made", file);
        const auto scan = openScan(*source, 1, nullptr);
        CHECK(inkText(*scan) == wantedText(picture));
        scan->rewind();
        CHECK(inkText(*scan) == wantedText(picture));
    }
}

TEST_CASE("a TIFF states its resolution in inches or centimetres") {
    TiffPicture picture;
    picture.compression = COMPRESSION_CCITTFAX4;
    CHECK(infoOf(encode(picture)).xPpi == 0);
    picture.xResolution = 204;
    picture.yResolution = 98;
    CHECK(infoOf(encode(picture)).xPpi == 204);
    CHECK(infoOf(encode(picture)).yPpi == 98);
    picture.resolutionUnit = RESUNIT_CENTIMETER;
    picture.xResolution = picture.yResolution = 236.22f;
    CHECK(infoOf(encode(picture)).xPpi == doctest::Approx(600).epsilon(0.0001));
    picture.resolutionUnit = RESUNIT_NONE;
    CHECK(infoOf(encode(picture)).xPpi == 0);
    CHECK(infoOf(encode(picture)).format == "TIFF, CCITT Group 4");
    picture.orientation = 6;
    CHECK(infoOf(encode(picture)).orientation == 6);
}

TEST_CASE("a page of a TIFF is chosen by its number") {
    TiffPicture first;
    TiffPicture second;
    second.width = 50;
    const Bytes file = encodeTiff([&](TIFF* tiff) {
        writePage(tiff, first);
        writePage(tiff, second);
    });
    CHECK(infoOf(file).pages == 2);
    CHECK(infoOf(file, 1).width == 37);
    CHECK(infoOf(file, 2).width == 50);
    CHECK_THROWS_WITH(infoOf(file, 3), "made: has no page 3, only 2");
    CHECK_THROWS_WITH(infoOf(file, 0), "made: has no page 0, only 2");
}

TEST_CASE("what is odd about a TIFF is told, with its name, and the page is read") {
    TiffPicture picture;
    picture.xResolution = picture.yResolution = 600;
    Bytes file = encode(picture);
    // The last field, ResolutionUnit (296, a short), gets a number that nobody knows.
    const unsigned char field[] = {0x28, 0x01, 0x03, 0x00};
    const auto at = std::search(file.begin(), file.end(), std::begin(field), std::end(field));
    REQUIRE(at != file.end());
    at[0] = 0xE9;
    at[1] = 0xFD;
    std::vector<std::string> warnings;
    const auto source = memoryBytes("made", file);
    const auto scan =
        openScan(*source, 1, [&](const std::string& text) { warnings.push_back(text); });
    CHECK(inkText(*scan) == wantedText(picture));
    REQUIRE(warnings.size() == 1);
    CHECK(warnings[0].find("made: ") == 0);
    CHECK(warnings[0].find("65001") != std::string::npos);
}

TEST_CASE("TIFFs that are no scans are refused with the reason") {
    TiffPicture cmyk;
    cmyk.bits = 8;
    cmyk.samples = 4;
    cmyk.photometric = PHOTOMETRIC_SEPARATED;
    CHECK(failureOf(encode(cmyk)) ==
          "made: is a TIFF with CMYK samples; save it as bilevel, grey or RGB");
    TiffPicture deep;
    deep.bits = 32;
    deep.photometric = PHOTOMETRIC_MINISBLACK;
    CHECK(failureOf(encode(deep)) ==
          "made: is a TIFF with 32 bits a sample; save it as bilevel, grey or RGB");
}

TEST_CASE("a TIFF that ends anywhere too early is refused, never more than that") {
    for (const int compression : {COMPRESSION_NONE, COMPRESSION_CCITTFAX4, COMPRESSION_LZW}) {
        TiffPicture picture;
        picture.compression = compression;
        const Bytes whole = encode(picture);
        for (std::size_t length = 4; length < whole.size(); length += 3) {
            CAPTURE(length);
            const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
            CHECK(failureOf(part).find("made: is a damaged or truncated TIFF") == 0);
        }
    }
}

TEST_CASE("a TIFF with wrong bytes is read or refused, but does no harm") {
    std::mt19937 random(20240613);
    int refused = 0;
    for (const int compression : {COMPRESSION_NONE, COMPRESSION_CCITTFAX4, COMPRESSION_LZW}) {
        TiffPicture picture;
        picture.compression = compression;
        const Bytes whole = encode(picture);
        for (int round = 0; round < 400; ++round) {
            Bytes file = whole;
            for (int k = 0; k < 3; ++k)
                file[random() % file.size()] = static_cast<unsigned char>(random());
            // Huge dimensions by chance would only cost time.
            refused += failureOf(file).empty() ? 0 : 1;
        }
    }
    CHECK(refused > 100);
}

TEST_CASE("a TIFF of a billion pixels a side is refused by its fields") {
    const Bytes file = encodeTiff([](TIFF* tiff) {
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 1000000000);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 1000000000);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 1000000000);
        char byte[] = "x";
        TIFFWriteRawStrip(tiff, 0, byte, 1);
        TIFFWriteDirectory(tiff);
    });
    CHECK(failureOf(file) ==
          "made: is too large: 1000000000 x 1000000000 pixels, and a side may have 1000000");
}
