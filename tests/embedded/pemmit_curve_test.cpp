// Curves and compound objects of the embedded document model, as an embedding
// program builds and reads them.

#include <doctest/doctest.h>

#include <climits>
#include <new>
#include <string>
#include <vector>

#include "embedded/document.h"
#include "embedded/host.h"
#include "platform/pemmit.h"
#include "tests/embedded/drawn.h"
#include "tests/support/fake_host.h"

namespace {

using Embedded::addCurve;
using Embedded::Segment;

TEST_CASE("curves are read back as they were drawn, between lines and after one another") {
    Pemmit::Path* const path = Pemmit::patbeg();
    CHECK_FALSE(addCurve(path, 1, 2, 3, 4, 5, 6));  // from no point
    CHECK(Pemmit::patsiz(path) == 0);
    CHECK(drawn(path).empty());
    Pemmit::patlin(path, 0, 0);
    CHECK(addCurve(path, 0, 55, 45, 100, 100, 100));
    CHECK(addCurve(path, 155, 100, 200, 55, 200, 0));
    Pemmit::patlin(path, 100, -50);
    CHECK(addCurve(path, 100, -50, 0, 0, -7, -7));
    Pemmit::patend(path, 1, 1);
    const char* const want =
        "M 0,0  C 0,55 45,100 100,100  C 155,100 200,55 200,0  L 100,-50  C 100,-50 0,0 -7,-7  L "
        "1,1";
    CHECK(drawn(path) == want);
    Pemmit::Path* const copy = Pemmit::patdup(path);
    CHECK(drawn(copy) == want);
    CHECK(walk(copy) == walk(path));
    Pemmit::objrem(path);
    Pemmit::objrem(copy);
}

TEST_CASE("the flatness that is set when a curve is added decides on its points") {
    std::size_t last = 0;
    for (double flatness : {50.0, 5.0, 0.5, 0.05, 0.0}) {
        CAPTURE(flatness);
        Embedded::setFlatness(flatness);
        Pemmit::Path* const path = Pemmit::patbeg();
        Pemmit::patlin(path, 0, 0);
        addCurve(path, 0, 552, 448, 1000, 1000, 1000);
        Embedded::setFlatness(100);
        CHECK(walk(path).size() >= last);
        last = walk(path).size();
        Pemmit::objrem(path);
    }
    // Not more than the whole distances that the curve can come by.
    CHECK(last <= 2003);
    CHECK(last > 1000);
    Embedded::setFlatness(0.5);
}

TEST_CASE("neighbours that are rounded to the same point are delivered once") {
    Pemmit::Path* const path = Pemmit::patbeg();
    Pemmit::patlin(path, 10, 10);
    Embedded::setFlatness(0);
    CHECK(addCurve(path, 10, 11, 11, 12, 12, 12));
    CHECK(addCurve(path, 12, 12, 12, 12, 12, 12));  // a point
    Embedded::setFlatness(0.5);
    Pemmit::patend(path, 50, 50);
    const Points points = walk(path);
    REQUIRE(points.size() >= 4);
    CHECK(points[points.size() - 3] == std::pair(12, 12));
    CHECK(points[points.size() - 2] == std::pair(12, 12));
    for (std::size_t i = 1; i + 2 < points.size(); ++i) CHECK(points[i] != points[i - 1]);
    CHECK(drawn(path) == "M 10,10  C 10,11 11,12 12,12  C 12,12 12,12 12,12  L 50,50");
    Pemmit::objrem(path);
}

TEST_CASE("curves over the whole range of distances end at their ends") {
    Pemmit::Path* const path = Pemmit::patbeg();
    Pemmit::patlin(path, INT_MIN, INT_MAX);
    CHECK(addCurve(path, INT_MAX, INT_MAX, INT_MIN, INT_MIN, INT_MAX, INT_MIN));
    Pemmit::patend(path, 0, 0);
    const Points points = walk(path);
    CHECK(points.front() == std::pair(INT_MIN, INT_MAX));
    CHECK(points[points.size() - 2] == std::pair(INT_MAX, INT_MIN));
    CHECK(points.size() < 140000);
    CHECK(path->box.minX == INT_MIN);
    CHECK(path->box.maxY == INT_MAX);
    Pemmit::objrem(path);
}

TEST_CASE("closeContour takes a repeated first point away, and a curve goes on to close") {
    Pemmit::Path* const lines = Pemmit::patbeg();
    for (auto [x, y] : Points{{0, 0}, {10, 0}, {0, 10}, {0, 0}}) Pemmit::patlin(lines, x, y);
    Embedded::closeContour(lines);
    CHECK(walk(lines) == Points{{0, 0}, {10, 0}, {0, 10}, {0, 0}});
    CHECK(drawn(lines) == "M 0,0  L 10,0  L 0,10");
    Pemmit::patlin(lines, 5, 5);
    CHECK(walk(lines) == Points{{0, 0}, {10, 0}, {0, 10}, {5, 5}, {0, 0}});
    Embedded::closeContour(lines);  // nothing repeated
    CHECK(Pemmit::patsiz(lines) == 5);
    Pemmit::objrem(lines);

    Pemmit::Path* const curved = Pemmit::patbeg();
    Pemmit::patlin(curved, 0, 0);
    Pemmit::patlin(curved, 100, 0);
    addCurve(curved, 100, 55, 55, 100, 0, 0);
    const Points open = walk(curved);  // 0,0 twice at its end: stored, and again
    const char* const want = "M 0,0  L 100,0  C 100,55 55,100 0,0";
    CHECK(drawn(curved) == want);
    Embedded::closeContour(curved);
    CHECK(drawn(curved) == want);
    CHECK(walk(curved) == Points(open.begin(), open.end() - 1));
    const Points closed = walk(curved);
    for (int start = 0; start < Pemmit::patsiz(curved); ++start) {
        CHECK(walk(curved, 0, start) == Points(closed.begin() + start, closed.end()));
        CHECK(walk(curved, 1, start) == Points(closed.rend() - 1 - start, closed.rend()));
    }
    Embedded::closeContour(curved);
    CHECK(walk(curved) == closed);

    Pemmit::Path* const copy = Pemmit::patdup(curved);
    CHECK(drawn(copy) == want);
    CHECK(walk(copy) == closed);

    // What follows the curve needs its end as a point again.
    Pemmit::flaset(copy, Pemmit::kFlagOpen, true);
    CHECK(drawn(copy) == want);
    CHECK(walk(copy) == closed);
    Pemmit::flaset(copy, Pemmit::kFlagOpen, false);
    CHECK(walk(copy) == open);

    Pemmit::patlin(curved, -5, 5);
    CHECK(drawn(curved) == std::string(want) + "  L -5,5");
    Points longer = closed;
    longer.push_back({-5, 5});
    longer.push_back({0, 0});
    CHECK(walk(curved) == longer);
    Pemmit::objrem(curved);
    Pemmit::objrem(copy);
}

TEST_CASE("a curve may follow the curve that closed a contour") {
    Pemmit::Path* const path = Pemmit::patbeg();
    Pemmit::patlin(path, 0, 0);
    addCurve(path, 100, 0, 0, 100, 0, 0);
    Embedded::closeContour(path);
    addCurve(path, -100, 0, 0, -100, 0, 0);
    CHECK(drawn(path) == "M 0,0  C 100,0 0,100 0,0  C -100,0 0,-100 0,0");
    Embedded::closeContour(path);
    const Points points = walk(path);
    CHECK(points.front() == points.back());
    CHECK(points[points.size() - 2] != points.back());
    Pemmit::objrem(path);
}

TEST_CASE("a curve closes a contour of any length") {
    for (int lines : {1, 13, 14, 48, 20000, 60000}) {
        CAPTURE(lines);
        Pemmit::Path* const path = Pemmit::patbeg();
        Pemmit::patlin(path, 0, 0);
        for (int i = 1; i <= lines; ++i) Pemmit::patlin(path, i, i % 3);
        addCurve(path, lines, 50, 10, 50, 0, 0);
        Points want = walk(path);
        want.pop_back();
        const std::string segments = drawn(path);
        Embedded::closeContour(path);
        CHECK(walk(path) == want);
        CHECK(walk(path, 1) == Points(want.rbegin(), want.rend()));
        CHECK(drawn(path) == segments);
        Pemmit::patlin(path, -1, -1);
        want.push_back({-1, -1});
        want.push_back({0, 0});
        CHECK(walk(path) == want);
        CHECK(Pemmit::patsiz(path) == static_cast<int>(want.size()));
        Pemmit::objrem(path);
    }
}

TEST_CASE("a curve without memory leaves the path as it was") {
    for (int stored : {1, 7, 14, 49}) {
        CAPTURE(stored);
        Pemmit::Path* const path = Pemmit::patbeg();
        for (int i = 0; i < stored; ++i) Pemmit::patlin(path, i, -i);
        if (stored > 1) addCurve(path, 0, 55, 45, 100, 100, 100);
        const Points before = walk(path);
        const std::string segments = drawn(path);
        const Pemmit::Box box = path->box;
        int failed = 0;
        failEachAllocation([&] {
            try {
                addCurve(path, 500, 55, 45, 1000, 700, 700);
            } catch (const std::bad_alloc&) {
                ++failed;
            }
            if (failed && path->box.maxX == box.maxX) {
                CHECK(walk(path) == before);
                CHECK(drawn(path) == segments);
            }
        });
        CHECK(failed >= 3);
        CHECK(path->box.maxX == 700);
        Pemmit::objrem(path);
    }
}

TEST_CASE("appending without memory to a contour that a curve closed leaves it closed") {
    Pemmit::Path* const path = Pemmit::patbeg();
    Pemmit::patlin(path, 0, 0);
    addCurve(path, 1000, 0, 0, 1000, 0, 0);
    Embedded::closeContour(path);
    Pemmit::Path* const tight = Pemmit::patdup(path);  // no room but for the end of the curve
    const Points before = walk(tight);
    int failed = 0;
    failEachAllocation([&] {
        try {
            Pemmit::patlin(tight, 9, 9);
        } catch (const std::bad_alloc&) {
            ++failed;
            CHECK(walk(tight) == before);
        }
    });
    CHECK(failed == 1);
    CHECK(walk(tight).size() == before.size() + 2);
    Pemmit::objrem(path);
    Pemmit::objrem(tight);
}

TEST_CASE("children are refused where they would not make a tree") {
    Pemmit::Path* const a = Embedded::makeCompound();
    Pemmit::Path* const b = Embedded::makeCompound();
    Pemmit::Path* const c = Embedded::makeCompound();
    Pemmit::Path* const path = Pemmit::patbeg();
    CHECK_FALSE(Embedded::addChild(a, a));
    CHECK(Embedded::addChild(a, b));
    CHECK_FALSE(Embedded::addChild(a, b));  // has a parent
    CHECK_FALSE(Embedded::addChild(c, b));
    CHECK(Embedded::addChild(b, c));
    CHECK_FALSE(Embedded::addChild(c, a));  // is above it
    CHECK_FALSE(Embedded::addChild(path, a));
    CHECK_FALSE(Embedded::addChild(a, nullptr));
    CHECK_FALSE(Embedded::addChild(nullptr, path));
    CHECK(Embedded::addChild(c, path));
    CHECK(Embedded::parentOf(path) == c);
    CHECK(Embedded::parentOf(a) == nullptr);
    CHECK(Embedded::parentOf(nullptr) == nullptr);
    Pemmit::objrem(a);
}

TEST_CASE("nesting may be as deep as memory goes") {
    constexpr int kDeep = 100000;
    Pemmit::Path* root = Pemmit::patbeg();
    Pemmit::patlin(root, 1, 2);
    for (int i = 0; i < kDeep; ++i) {
        Pemmit::Path* const above = Embedded::makeCompound();
        REQUIRE(Embedded::addChild(above, root));
        root = above;
    }
    CHECK(root->box.maxY == 2);
    Pemmit::Path* const copy = Pemmit::patdup(root);
    CHECK(Embedded::bytesOf(copy) <= Embedded::bytesOf(root));
    Pemmit::objrem(root);
    Pemmit::objrem(copy);
}

TEST_CASE("a flattening delivers at most 131072 points") {
    Pemmit::bezier cubic;
    cubic.p[1] = {3, 5};
    cubic.p[2] = {-7, 11};
    cubic.p[3] = {13, -17};
    int count = 0;
    cubic.cubfla(
        0, [](void* at, const Pemmit::PointBase<double>*) { ++*static_cast<int*>(at); }, &count);
    CHECK(count == 131072);
    count = 0;
    cubic.p[2] = {0, 0};  // on the chord: nothing to halve
    cubic.p[1] = {0, 0};
    cubic.cubfla(
        0, [](void* at, const Pemmit::PointBase<double>*) { ++*static_cast<int*>(at); }, &count);
    CHECK(count == 1);
}

}  // namespace
