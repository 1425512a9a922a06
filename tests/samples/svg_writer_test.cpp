#include "samples/proof/svg_writer.h"

#include <doctest/doctest.h>

#include <vector>

#include "tests/samples/pictures.h"

using namespace Proof;

namespace {

using Points = std::vector<OutlinePoint>;

}  // namespace

TEST_CASE("path data holds whole numbers, letters only where they change") {
    struct Row {
        std::string why;
        Points points;
        std::string want;
    };
    const Row rows[] = {
        {"slanted lines", {{0, 0}, {10, 5}, {-3, 7}}, "M0 0l10 5-13 2z\n"},
        {"level and upright lines", {{1, 2}, {9, 2}, {9, 8}, {1, 8}}, "M1 2h8v6h-8z\n"},
        {"two level lines", {{1, 2}, {9, 2}, {12, 2}, {12, 8}}, "M1 2h8 3v6z\n"},
        {"a point twice", {{1, 2}, {1, 2}, {12, 2}, {12, 8}}, "M1 2h0 11v6z\n"},
        {"negative beginning", {{-1, -2}, {9, 3}, {10, -4}}, "M-1-2l10 5 1-7z\n"},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        Outlines outlines;
        outlines.add(row.points);
        CHECK(svgPathData(outlines) == row.want);
    }
}

TEST_CASE("an SVG has the page's size in millimetres and its units in the view box") {
    const TempFolder folder;
    OutlinePage page;
    page.outlines.add(Points{{0, 0}, {100, 0}, {100, 50}});
    page.outlines.add(Points{{10, 10}, {20, 10}, {20, 20}});
    page.width = 1200;
    page.height = 600;
    page.xUnitsPerInch = 600;
    page.yUnitsPerInch = 300;
    OutputFile file(folder / "out.svg");
    writeSvg(page, "a <b> & \x80 c", file);
    file.commit();
    CHECK(readFile(folder / "out.svg") ==
          "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
          "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\" width=\"50.8mm\""
          " height=\"50.8mm\" viewBox=\"0 0 1200 600\" preserveAspectRatio=\"none\">\n"
          "<title>a &lt;b&gt; &amp; \xEF\xBF\xBD c</title>\n"
          "<path fill=\"#000\" fill-rule=\"evenodd\" d=\"\n"
          "M0 0h100v50z\nM10 10h10v10z\n\"/>\n</svg>\n");
}

TEST_CASE("lines and marks are stroked after the outlines") {
    const TempFolder folder;
    OutlinePage page;
    page.width = page.height = 600;
    page.xUnitsPerInch = page.yUnitsPerInch = 600;
    page.lines = {{PathStep::Move, 0, 0, 0, 0, 1, 2},
                  {PathStep::Line, 0, 0, 0, 0, 3.25, 4},
                  {PathStep::Close, 0, 0, 0, 0, 1, 2}};
    page.marks = {{PathStep::Move, 0, 0, 0, 0, 5, 6}, {PathStep::Curve, 1, 2, 3, 4, 5, 6.5}};
    OutputFile file(folder / "out.svg");
    writeSvg(page, "t", file);
    file.commit();
    const std::string written = readFile(folder / "out.svg");
    CHECK(written.substr(written.find("<path")) ==
          "<path fill=\"#000\" fill-rule=\"evenodd\" d=\"\n\"/>\n"
          "<path fill=\"none\" stroke=\"#000\" stroke-width=\"2.362\" d=\"\n"
          "M1 2\nL3.25 4\nz\n\"/>\n"
          "<path fill=\"none\" stroke=\"#f00\" stroke-width=\"4.724\" d=\"\n"
          "M5 6\nC1 2 3 4 5 6.5\n\"/>\n</svg>\n");
}

TEST_CASE("text for XML keeps characters and replaces what is none") {
    struct Row {
        std::string why;
        std::string text;
        std::string want;
    };
    const std::string bad = "\xEF\xBF\xBD";
    const Row rows[] = {
        {"ASCII", "scan.tif", "scan.tif"},
        {"two, three and four bytes", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80",
         "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"},
        {"control character", std::string("a\x01"), "a" + bad},
        {"overlong", "\xC0\x80", bad + bad},
        {"surrogate", "\xED\xA0\x80", bad + bad + bad},
        {"cut off", "\xE2\x82", bad + bad},
        {"beyond Unicode", "\xF4\x90\x80\x80", bad + bad + bad + bad},
        {"no character", "\xEF\xBF\xBE", bad + bad + bad},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        CHECK(xmlText(row.text) == row.want);
    }
}
