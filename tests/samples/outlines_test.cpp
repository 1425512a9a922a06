#include "samples/proof/outlines.h"

#include <doctest/doctest.h>

#include <vector>

using namespace Proof;

namespace {

using Points = std::vector<OutlinePoint>;

Points pointsOf(const Outlines& outlines, std::size_t index) {
    const auto contour = outlines.contour(index);
    return {contour.begin(), contour.end()};
}

}  // namespace

TEST_CASE("contours keep their points and their order") {
    Outlines outlines;
    const Points triangle = {{0, 0}, {10, 0}, {0, 10}};
    const Points square = {{1, 1}, {2, 1}, {2, 2}, {1, 2}};
    outlines.add(triangle);
    outlines.add(square);
    REQUIRE(outlines.count() == 2);
    CHECK(outlines.pointCount() == 7);
    CHECK(pointsOf(outlines, 0) == triangle);
    CHECK(pointsOf(outlines, 1) == square);
}

TEST_CASE("what encloses nothing is left out") {
    Outlines outlines;
    outlines.add(Points{});
    outlines.add(Points{{0, 0}, {5, 5}});
    CHECK(outlines.count() == 0);
    CHECK(outlines.pointCount() == 0);
}

TEST_CASE("a traced path gives each point once, column before row") {
    Pemmit::Path* path = Pemmit::patbeg();
    // Row and column, as the tracer stores them.
    Pemmit::patlin(path, 2, 10);
    Pemmit::patlin(path, 2, 30);
    Pemmit::patlin(path, 5, 30);
    Pemmit::patlin(path, 5, 10);
    Pemmit::patendclo(path);
    Outlines outlines;
    addTraced(path, Orientation(1, 100, 50), outlines);
    Pemmit::objrem(path);
    REQUIRE(outlines.count() == 1);
    CHECK(pointsOf(outlines, 0) == Points{{10, 2}, {30, 2}, {30, 5}, {10, 5}});
}

TEST_CASE("every orientation puts the stored corners where TIFF says") {
    // Where the stored row 0 and column 0 are seen: TIFF 6.0, section 8.
    struct Row {
        int code;
        OutlinePoint origin;    // of the bitmap's first corner on the page
        OutlinePoint alongRow;  // the corner at the end of row 0
        OutlinePoint alongColumn;
    };
    const Row rows[] = {
        {1, {0, 0}, {40, 0}, {0, 30}},    // row 0 top, column 0 left
        {2, {40, 0}, {0, 0}, {40, 30}},   // top, right
        {3, {40, 30}, {0, 30}, {40, 0}},  // bottom, right
        {4, {0, 30}, {40, 30}, {0, 0}},   // bottom, left
        {5, {0, 0}, {0, 40}, {30, 0}},    // row 0 left, column 0 top
        {6, {30, 0}, {30, 40}, {0, 0}},   // right, top
        {7, {30, 40}, {30, 0}, {0, 40}},  // right, bottom
        {8, {0, 40}, {0, 0}, {30, 40}},   // left, bottom
    };
    for (const Row& row : rows) {
        CAPTURE(row.code);
        const Orientation orientation(row.code, 40, 30);
        CHECK(orientation.onPage(0, 0) == row.origin);
        CHECK(orientation.onPage(40, 0) == row.alongRow);
        CHECK(orientation.onPage(0, 30) == row.alongColumn);
        CHECK(orientation.pageWidth() == (row.code < 5 ? 40 : 30));
        CHECK(orientation.pageHeight() == (row.code < 5 ? 30 : 40));
    }
}
