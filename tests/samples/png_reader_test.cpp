#include <doctest/doctest.h>
#include <png.h>

#include "samples/proof/failure.h"
#include "samples/proof/scan_reader.h"
#include "tests/samples/pictures.h"

using namespace Proof;

namespace {

// A diagonal of black pixels on white, w x h.
PngPicture diagonal(int width, int height, int bits) {
    PngPicture picture{.width = width, .height = height, .bits = bits};
    const std::size_t rowBytes = static_cast<std::size_t>(width * bits + 7) / 8;
    picture.rows.assign(rowBytes * static_cast<std::size_t>(height), 0xFF);
    for (int y = 0; y < height; ++y)
        for (int bit = y * bits; bit < (y + 1) * bits && y < width; ++bit)
            picture
                .rows[static_cast<std::size_t>(y) * rowBytes + static_cast<std::size_t>(bit / 8)] &=
                static_cast<unsigned char>(~(0x80 >> (bit % 8)));
    return picture;
}

std::string diagonalText(int width, int height) {
    std::string text;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) text += x == y ? '#' : '.';
        text += '\n';
    }
    return text;
}

}  // namespace

TEST_CASE("grey PNGs of every depth give their pixels, interlaced or not") {
    for (const int bits : {1, 2, 4, 8, 16}) {
        for (const bool interlaced : {false, true}) {
            CAPTURE(bits);
            CAPTURE(interlaced);
            PngPicture picture = diagonal(21, 13, bits);
            picture.interlaced = interlaced;
            CHECK(inkText(encodePng(picture)) == diagonalText(21, 13));
        }
    }
}

TEST_CASE("a PNG of two colours has the darker one as ink") {
    PngPicture picture = diagonal(9, 9, 1);
    picture.colourType = PNG_COLOR_TYPE_PALETTE;
    picture.palette = {0, 0, 90, 240, 240, 200};
    CHECK(inkText(encodePng(picture)) == diagonalText(9, 9));
    picture.palette = {240, 240, 200, 0, 0, 90};
    std::string swapped = diagonalText(9, 9);
    for (char& c : swapped) c = c == '#' ? '.' : c == '.' ? '#' : c;
    CHECK(inkText(encodePng(picture)) == swapped);
}

TEST_CASE("colour PNGs are read by lightness, transparent ones on white") {
    PngPicture colour{.width = 2, .height = 1, .colourType = PNG_COLOR_TYPE_RGB};
    colour.rows = {255, 0, 0, 0, 255, 0};
    CHECK(inkText(encodePng(colour)) == "#.\n");
    PngPicture clear{.width = 2, .height = 1, .colourType = PNG_COLOR_TYPE_RGB_ALPHA};
    clear.rows = {0, 0, 0, 255, 0, 0, 0, 0};
    CHECK(inkText(encodePng(clear)) == "#.\n");
    PngPicture grey{.width = 2, .height = 1, .colourType = PNG_COLOR_TYPE_GRAY_ALPHA};
    grey.rows = {0, 255, 0, 10};
    CHECK(inkText(encodePng(grey)) == "#.\n");
}

TEST_CASE("a PNG states its resolution per metre") {
    PngPicture picture = diagonal(8, 8, 1);
    picture.perMetre = 23622;
    const Bytes file = encodePng(picture);
    const auto source = memoryBytes("made", file);
    const auto scan = openScan(*source, 1, nullptr);
    CHECK(scan->info().xPpi == 600);
    CHECK(scan->info().yPpi == 600);
    CHECK(scan->info().format == "PNG");
}

TEST_CASE("a PNG can be read twice") {
    for (const bool interlaced : {false, true}) {
        PngPicture picture = diagonal(70, 30, 8);
        picture.interlaced = interlaced;
        const Bytes file = encodePng(picture);
        const auto source = memoryBytes("made", file);
        const auto scan = openScan(*source, 1, nullptr);
        CHECK(inkText(*scan) == diagonalText(70, 30));
        scan->rewind();
        CHECK(inkText(*scan) == diagonalText(70, 30));
    }
}

TEST_CASE("a PNG that ends anywhere too early is refused, never more than that") {
    for (const bool interlaced : {false, true}) {
        PngPicture picture = diagonal(40, 40, 8);
        picture.interlaced = interlaced;
        const Bytes whole = encodePng(picture);
        int refused = 0;
        // What follows the pixels (the last checksum and the end mark) may miss.
        for (std::size_t length = 8; length + 40 < whole.size(); ++length) {
            CAPTURE(length);
            const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
            const std::string failure = failureOf(part);
            CHECK(failure.find("made: is a damaged or truncated PNG") == 0);
            CHECK(failure.find("ends too early") != std::string::npos);
            ++refused;
        }
        CHECK(refused > 100);
    }
}

TEST_CASE("a PNG with a wrong byte in its pixels is refused") {
    Bytes file = encodePng(diagonal(40, 40, 8));
    const std::string text(file.begin(), file.end());
    file[text.find("IDAT") + 20] ^= 0x55;
    CHECK(failureOf(file).find("made: is a damaged or truncated PNG") == 0);
}

TEST_CASE("a PNG of a billion pixels a side is refused by its header") {
    Bytes file = encodePng(diagonal(40, 40, 8));
    // Width, height and the checksum of the header chunk.
    const unsigned char header[] = {0x3B, 0x9A, 0xCA, 0x00, 0x3B, 0x9A, 0xCA, 0x00};
    std::copy(std::begin(header), std::end(header), file.begin() + 16);
    std::uint32_t crc = 0xFFFFFFFF;
    for (std::size_t i = 12; i < 29; ++i) {
        crc ^= file[i];
        for (int k = 0; k < 8; ++k) crc = crc & 1 ? 0xEDB88320u ^ crc >> 1 : crc >> 1;
    }
    crc = ~crc;
    for (std::size_t i = 0; i < 4; ++i)
        file[29 + i] = static_cast<unsigned char>(crc >> (24 - 8 * i));
    CHECK(failureOf(file) ==
          "made: is too large: 1000000000 x 1000000000 pixels, and a side may have 1000000");
}
