#include <doctest/doctest.h>

#include "samples/proof/failure.h"
#include "samples/proof/scan_reader.h"
#include "tests/samples/pictures.h"

using namespace Proof;
using namespace std::string_literals;

TEST_CASE("plain and raw bitmaps give their pixels") {
    struct Row {
        std::string why;
        std::string file;
        std::string want;
    };
    const Row rows[] = {
        {"plain bits", "P1\n3 2\n1 0 1\n0 1 1\n", "#.#\n.##\n"},
        {"plain bits without space", "P1 3 2 101011", "#.#\n.##\n"},
        {"comments in the header", "P1 # a bitmap\n# of\r3#w\n 2 101011", "#.#\n.##\n"},
        {"raw bits, rows begin at a byte", "P4 3 2\n\xA0\x60", "#.#\n.##\n"},
        {"raw bits behind the width do not matter", "P4 3 2\n\xBF\x7F", "#.#\n.##\n"},
        {"plain grey", "P2 3 1 255\n0 200 127", "#.#\n"},
        {"plain grey of another scale", "P2 3 1 10 0 6 4", "#.#\n"},
        {"raw grey", "P5 3 1 255\n\x00\xC8\x7F"s, "#.#\n"},
        {"raw grey of two bytes", "P5 3 1 65535\n\x00\xFF\xC8\x00\x7F\xFF"s, "#.#\n"},
        {"plain colour", "P3 2 1 255 255 0 0 0 255 0", "#.\n"},
        {"raw colour", "P6 2 1 255\n\xFF\x00\x00\x00\xFF\x00"s, "#.\n"},
        {"a second picture is left alone", "P4 8 1\n\xF0P4 8 1\n\x0F", "####....\n"},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        CHECK(inkText(bytesOf(row.file)) == row.want);
    }
}

TEST_CASE("a bitmap states no resolution") {
    const Bytes file = bytesOf("P4 8 1\n\xF0");
    const auto source = memoryBytes("made", file);
    const auto scan = openScan(*source, 1, nullptr);
    CHECK(scan->info().xPpi == 0);
    CHECK(scan->info().format == "PBM");
    CHECK(scan->info().width == 8);
}

TEST_CASE("rewinding delivers the first row again") {
    const Bytes file = bytesOf("P2 2 2 255 0 200 200 0");
    const auto source = memoryBytes("made", file);
    const auto scan = openScan(*source, 1, nullptr);
    CHECK(inkText(*scan) == "#.\n.#\n");
    scan->rewind();
    CHECK(inkText(*scan) == "#.\n.#\n");
}

TEST_CASE("bad bitmaps are refused with the reason") {
    struct Row {
        std::string why;
        std::string file;
        std::string want;
    };
    const Row rows[] = {
        {"no header", "P4\n", "made: has a bad header"},
        {"no height", "P4 8 ", "made: has a bad header"},
        {"letters for numbers", "P4 eight 1\n", "made: has a bad header"},
        {"nothing behind the header", "P4 8 1", "made: has a bad header"},
        {"no pixels", "P4 0 1\n ", "made: has no pixels"},
        {"one row too few", "P4 8 2\n\xF0",
         "made: is truncated: 8 x 2 pixels do not fit into 8 bytes"},
        {"plain and truncated", "P1 3 2 1 0 1 0 1 ",
         "made: is truncated: 3 x 2 pixels do not fit into 17 bytes"},
        {"plain grey and truncated", "P2 2 2 255 0 200 200 ",
         "made: is truncated: 2 x 2 pixels do not fit into 21 bytes"},
        {"huge", "P5 2000000000 2000000000 255\n",
         "made: is too large: 2000000000 x 2000000000 pixels, and a side may have 1000000"},
        {"larger than any number", "P5 99999999999999999999999 1 255\n",
         "made: is too large: 2147483648 x 1 pixels, and a side may have 1000000"},
        {"huge by its header only", "P5 1000000 1000000 255\n ",
         "made: is truncated: 1000000 x 1000000 pixels do not fit into 24 bytes"},
        {"no largest sample", "P5 1 1 0\n ", "made: has a bad header: the largest sample is 0"},
        {"too large a largest sample", "P5 1 1 65536\n ",
         "made: has a bad header: the largest sample is 65536"},
        {"letters for bits", "P1 2 1 1 x",
         "made: is damaged: row 1 has something other than digits"},
        {"letters for greys", "P2 2 1 255 1 x   ",
         "made: is damaged: row 1 has something other than digits"},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        CHECK(failureOf(bytesOf(row.file)) == row.want);
    }
}

TEST_CASE("what is no scan is refused by what it is") {
    struct Row {
        std::string file;
        std::string want;
    };
    const Row rows[] = {
        {"\xFF\xD8\xFF\xE0", "made: is a JPEG picture, not PNG, TIFF, PBM or PGM"},
        {"%PDF-1.7", "made: is a PDF document, not PNG, TIFF, PBM or PGM"},
        {"P7 8 1", "made: is no picture in PNG, TIFF, PBM or PGM format"},
        {"P", "made: is no picture in PNG, TIFF, PBM or PGM format"},
        {"hello", "made: is no picture in PNG, TIFF, PBM or PGM format"},
    };
    for (const Row& row : rows) {
        CAPTURE(row.file);
        CHECK(failureOf(bytesOf(row.file)) == row.want);
    }
}

TEST_CASE("only a TIFF has a second page") {
    const Bytes file = bytesOf("P4 8 1\n\xF0");
    const auto source = memoryBytes("made", file);
    CHECK_THROWS_WITH(openScan(*source, 2, nullptr), "made: has one page only");
}

TEST_CASE("a resolution that cannot be true is none") {
    CHECK(plausiblePpi(600) == 600);
    CHECK(plausiblePpi(23622 * 0.0254) == 600);  // 599.9988
    CHECK(plausiblePpi(11811 * 0.0254) == 300);  // 299.9994
    CHECK(plausiblePpi(203.2) == 203.2);
    CHECK(plausiblePpi(0) == 0);
    CHECK(plausiblePpi(1) == 0);
    CHECK(plausiblePpi(-300) == 0);
    CHECK(plausiblePpi(1e9) == 0);
    CHECK(plausiblePpi(0.0 / 0.0) == 0);
}
