#include "samples/proof/check/check_report.h"

#include <doctest/doctest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "embedded/document.h"
#include "samples/proof/check/marks.h"
#include "samples/proof/check/svg_reader.h"
#include "samples/proof/svg_writer.h"
#include "vaskel/geometry.h"

using namespace Proof;

namespace {

Drawing inSvg(const std::string& content) {
    const std::string text =
        "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 200 100' "
        "width='100mm' height='50mm'>" +
        content + "</svg>";
    return readSvg("test.svg", {reinterpret_cast<const unsigned char*>(text.data()), text.size()});
}

std::string lines(const std::string& content, CheckSettings settings = {}) {
    return reportLines(checkDrawing("test.svg", inSvg(content), settings));
}

}  // namespace

TEST_CASE("the grid is the finest power of two that keeps coordinates small") {
    const struct {
        const char* data;
        double perUnit, extent;
    } rows[] = {
        {"M0 0L1 1", 65536, 1},         // no finer than 2^16
        {"M0 0L256 -256", 65536, 256},  // 2^8 * 2^16 = 2^24
        {"M0 0L257 0", 32768, 257},
        {"M0 0L-112256 0", 128, 112256},           // 2^24 / 112256 = 149.5
        {"M0 0C0 0 30000000 0 1 1", 1, 30000000},  // control points count
    };
    for (const auto& row : rows) {
        CAPTURE(row.data);
        const Grid grid(inSvg("<path d='" + std::string(row.data) + "'/>"));
        CHECK(grid.perUnit() == row.perUnit);
        CHECK(grid.extent() == row.extent);
        CHECK(grid.unit(grid.place(0.5)) == (row.perUnit == 1 ? 1 : 0.5));
    }
}

TEST_CASE("paths become contours without repeated points, open where they are not closed") {
    const Drawing drawing = inSvg("<path d='M0 0h0h8v8h0zM20 20h9v9M5 5M6 6zm3 3h4v4h-4v-4z'/>");
    const Grid grid(drawing);
    const ObjectPtr object = makeObject(drawing.paths[0], grid, 0.01);
    const auto contours = contoursOf(object.get());
    REQUIRE(contours.size() == 3);
    const bool open[] = {false, true, false};
    const int points[] = {4, 3, 5};  // the first one delivered twice where closed
    for (std::size_t i = 0; i < 3; ++i) {
        CAPTURE(i);
        CHECK(((contours[i]->flags & Pemmit::kFlagOpen) != 0) == open[i]);
        CHECK(Pemmit::patsiz(contours[i]) == points[i]);
    }
}

TEST_CASE("flatness rules how many lines stand for a curve") {
    const Drawing drawing = inSvg("<circle cx='100' cy='50' r='40'/>");
    const Grid grid(drawing);
    int before = 0;
    for (const double flatness : {4.0, 0.4, 0.04, 0.004}) {
        const ObjectPtr object = makeObject(drawing.paths[0], grid, flatness);
        const int points = Pemmit::patsiz(contoursOf(object.get())[0]);
        CHECK(points > before);
        before = points;
        // The middle of each line is as near to the circle.
        Pemmit::scan walk(contoursOf(object.get())[0], 0, -1);
        int x1 = 0, y1 = 0, x2 = 0, y2 = 0;
        walk.scanex(&x1, &y1);
        while (walk.scanex(&x2, &y2) >= 0) {
            const double r = std::hypot(grid.unit(x1 + x2) / 2 - 100, grid.unit(y1 + y2) / 2 - 50);
            CHECK(std::abs(r - 40) < flatness + 0.012);  // the curve itself: 0.03 %
            x1 = x2, y1 = y2;
        }
    }
}

TEST_CASE("the report has a line a finding, and says where intersect differs") {
    CHECK(lines("<rect width='10' height='10'/><path id='bow' d='M0 0L10 5L10 0L0 5z'/>") ==
          "path 2 \"bow\": crossing at 5 2.5: contour 0 line 0, contour 0 line 2\n"
          "2 paths, 2 contours, 10 points: 1 path crosses itself; 1 crossing, 0 touches, "
          "0 overlaps\n");
    CHECK(lines("<path d='M0 0h10v10h-10zM10 10h5v5h-5zM50 0h10h-5'/>") ==
          "path 1: touch at 10 10: contour 0 line 1, contour 1 line 0\n"
          "path 1: overlap from 55 0 to 60 0: contour 2 line 0, contour 2 line 1\n"
          "1 path, 3 contours, 13 points: 1 path crosses itself; 0 crossings, 1 touch, "
          "1 overlap\n");
    CHECK(lines("<path d='M-100 0L10 5L0 0L10-5L-50-60zM0 0L-10 3L-10-3z'/>") ==
          "path 1: touch at 0 0: contour 0 line 1, contour 1 line 0\n"
          "path 1: crosses itself by intersect, which counts such a touch\n"
          "1 path, 2 contours, 10 points: 1 path crosses itself; 0 crossings, 1 touch, "
          "0 overlaps\n");
    // The second contour passes the tip of the first one from inside. intersect
    // has taken the first one's lines out before it comes to the second one's.
    CHECK(lines("<path d='M-10 10L0 0L-10-10M-20 0h10h10h10'/>") ==
          "path 1: crossing at 0 0: contour 0 line 0, contour 1 line 1\n"
          "path 1: does not cross itself by intersect, which misses such a place\n"
          "1 path, 2 contours, 7 points: 1 path crosses itself; 1 crossing, 0 touches, "
          "0 overlaps\n");
    CheckSettings few;
    few.limit = 1;
    CHECK(lines("<path d='M0 0H100V50H50V-5'/><path d='M0 0h9v9h-4v-20h-3v40'/>", few) ==
          "path 1: crossing at 50 0: contour 0 line 0, contour 0 line 3\n"
          "path 2: crossing at 5 0: contour 0 line 0, contour 0 line 3\n"
          "path 2: there may be more; the list ends here\n"
          "2 paths, 2 contours, 12 points: 2 paths cross themselves; 2 crossings, 0 touches, "
          "0 overlaps\n");
}

TEST_CASE("the report as JSON") {
    const auto json = nlohmann::json::parse(reportJson(checkDrawing(
        "in/test.svg",
        inSvg("<path id='\xC3\xA4' d='M0 0L10 5L10 0L0 5z'/><path d='M50 0h10h-5'/>"), {})));
    CHECK(json["input"] == "in/test.svg");
    CHECK(json["unitsPerInch"]["x"].get<double>() == doctest::Approx(50.8));
    CHECK(json["crossings"] == 1);
    CHECK(json["touches"] == 0);
    CHECK(json["overlaps"] == 1);
    REQUIRE(json["paths"].size() == 2);
    const auto& path = json["paths"][0];
    CHECK(path["element"] == "path");
    CHECK(path["number"] == 1);
    CHECK(path["id"] == "\xC3\xA4");
    CHECK(path["contours"] == 1);
    CHECK(path["points"] == 5);
    CHECK(path["crossesItself"] == true);
    CHECK(path["intersect"] == true);
    CHECK(path["complete"] == true);
    CHECK(path["findings"] ==
          nlohmann::json::parse(R"([{"kind": "crossing", "x": 5.0, "y": 2.5, "selint": true,
              "lines": [{"contour": 0, "line": 0}, {"contour": 0, "line": 2}]}])"));
    CHECK(json["paths"][1]["findings"] ==
          nlohmann::json::parse(R"([{"kind": "overlap", "x": 55.0, "y": 0.0,
              "to": {"x": 60.0, "y": 0.0},
              "lines": [{"contour": 0, "line": 0}, {"contour": 0, "line": 1}]}])"));
}

TEST_CASE("a watch that says no cancels the check") {
    CheckSettings settings;
    int asked = 0;
    settings.watch = [&](double) { return ++asked < 2; };
    const CheckReport report =
        checkDrawing("test.svg",
                     inSvg("<rect width='1' height='1'/><rect width='1' height='1'/>"
                           "<rect width='1' height='1'/>"),
                     settings);
    CHECK(report.cancelled);
    CHECK(report.paths.size() == 2);
}

TEST_CASE("traced outlines are checked together") {
    OutlinePage page;
    page.width = page.height = 100;
    page.xUnitsPerInch = 1200;
    page.yUnitsPerInch = 600;
    using Points = std::vector<OutlinePoint>;
    page.outlines.add(Points{{0, 0}, {10, 0}, {10, 10}, {0, 10}});
    page.outlines.add(Points{{5, 5}, {15, 5}, {15, 15}, {5, 15}});
    const CheckReport report = checkOutlines("scan.tif", page, {});
    CHECK(reportLines(report) ==
          "path 1: crossing at 10 5: contour 0 line 1, contour 1 line 0\n"
          "path 1: crossing at 5 10: contour 0 line 2, contour 1 line 3\n"
          "1 path, 2 contours, 10 points: 1 path crosses itself; 2 crossings, 0 touches, "
          "0 overlaps\n");
    markFindings(report, page);
    CHECK(page.marks.size() == 12);
}

TEST_CASE("a mark is a circle of four arcs, round on the page") {
    OutlinePage page;
    page.width = page.height = 100000;
    page.xUnitsPerInch = 1200;
    page.yUnitsPerInch = 600;
    std::vector<PathStep> marks;
    appendCircle(marks, page, 1000, 500, 100);
    // Handles of 0.5523 radii; half as many units in y.
    CHECK(svgStepData(marks) ==
          "M1100 500\nC1100 527.614 1055.228 550 1000 550\nC944.772 550 900 527.614 900 500\n"
          "C900 472.386 944.772 450 1000 450\nC1055.228 450 1100 472.386 1100 500\nz\n");
    // 2 mm, and a fortieth of 1/3 inch by 1/12 inch.
    CHECK(markRadius(page) == 94);
    page.width = 400;
    page.height = 50;
    CHECK(markRadius(page) == 10);
    page.width = page.height = 1;
    CHECK(markRadius(page) == 1);
}

TEST_CASE("findings are marked where the page shows them") {
    const Drawing drawing = inSvg("<path d='M0 0L10 5L10 0L0 5z'/>");
    OutlinePage page = drawingPage(drawing);
    // 200 user units: the longer side gets 2^20 / 256 a unit.
    CHECK(page.width == 200 * 4096);
    CHECK(page.height == 100 * 4096);
    CHECK(page.xUnitsPerInch == doctest::Approx(50.8 * 4096));
    REQUIRE(page.lines.size() == 5);
    CHECK(page.lines[1].x == 10 * 4096);
    CHECK(page.lines[1].y == 5 * 4096);
    markFindings(checkDrawing("test.svg", drawing, {}), drawing, page);
    REQUIRE(page.marks.size() == 6);
    CHECK(page.marks[0].x - markRadius(page) == 5 * 4096);
    CHECK(page.marks[0].y == 2.5 * 4096);
}
