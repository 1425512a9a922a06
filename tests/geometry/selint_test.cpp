#include <doctest/doctest.h>

#include "tests/support/paths.h"
#include "vaskel/geometry.h"

namespace {

using Vaskel::selint;

constexpr int kKept = -77;

struct Found {
    int rc = kKept, a = kKept, b = kKept, x = kKept, y = kKept;
    friend bool operator==(const Found&, const Found&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Found& f) {
        return out << "rc " << f.rc << " segments " << f.a << ' ' << f.b << " at " << f.x << ','
                   << f.y;
    }
};
constexpr Found kNone{-1, kKept, kKept, kKept, kKept};

Found find(const PathPtr& a, int indexA, const PathPtr& b, int indexB, Point ref, int tolerance) {
    Found f;
    f.rc =
        selint(a.get(), indexA, b.get(), indexB, &f.a, &f.b, &f.x, &f.y, ref.x, ref.y, tolerance);
    return f;
}

// Points (0,0) (10,0) (20,0) ...: segment i from 10 i to 10 i + 10.
PathPtr ruler(int segments) {
    Points points;
    for (int i = 0; i <= segments; ++i) points.push_back({10 * i, 0});
    return openPath(points);
}

// Crosses the ruler's line at x with its segment number; segments 100 high.
PathPtr upright(int x, int before, int after) {
    Points points;
    for (int i = before; i > 0; --i) points.push_back({x, -50 - 100 * i});
    points.push_back({x, -50});
    points.push_back({x, 50});
    for (int i = 1; i <= after; ++i) points.push_back({x, 50 + 100 * i});
    return openPath(points);
}

TEST_CASE("selint: finds the crossing of the segments themselves") {
    const PathPtr a = ruler(20), b = upright(105, 3, 3);
    CHECK(find(a, 10, b, 3, {105, 0}, 5) == Found{0, 10, 3, 105, 0});
}

TEST_CASE("selint: spreads about five segments each way from the starting ones") {
    const PathPtr a = ruler(40), b = upright(205, 20, 20);
    for (int off = -12; off <= 12; ++off) {
        CAPTURE(off);
        // The ruler's search begins off segments beside the crossing one.
        const Found onRuler = find(a, 20 + off, b, 20, {205, 0}, 5);
        const Found onUpright = find(a, 20, b, 20 + off, {205, 0}, 5);
        const bool near = off >= -5 && off <= 5;
        CHECK(onRuler == (near ? Found{0, 20, 20, 205, 0} : kNone));
        CHECK(onUpright == (near ? Found{0, 20, 20, 205, 0} : kNone));
    }
}

TEST_CASE("selint: the distance is compared strictly") {
    const PathPtr a = ruler(20), b = upright(105, 3, 3);
    CHECK(find(a, 10, b, 3, {102, 4}, 5) == kNone);  // 3-4-5: exactly the tolerance
    CHECK(find(a, 10, b, 3, {102, 4}, 6) == Found{0, 10, 3, 105, 0});
    CHECK(find(a, 10, b, 3, {105, 0}, 0) == kNone);
    CHECK(find(a, 10, b, 3, {2000000000, 2000000000}, 1) == kNone);
}

TEST_CASE("selint: goes on at the other end of a path") {
    // The crossing is on the ruler's last segment, the search starts on its first.
    const PathPtr a = ruler(20), b = upright(195, 3, 3);
    CHECK(find(a, 0, b, 3, {195, 0}, 5) == Found{0, 19, 3, 195, 0});
    CHECK(find(a, 19, b, 3, {195, 0}, 5) == Found{0, 19, 3, 195, 0});
    const PathPtr c = upright(5, 3, 3);
    CHECK(find(a, 19, c, 3, {5, 0}, 5) == Found{0, 0, 3, 5, 0});
}

TEST_CASE("selint: indices come back with the path that they belong to") {
    const PathPtr a = ruler(40), b = upright(205, 7, 7);
    CHECK(find(a, 20, b, 7, {205, 0}, 5) == Found{0, 20, 7, 205, 0});
    CHECK(find(b, 7, a, 20, {205, 0}, 5) == Found{0, 7, 20, 205, 0});
    CHECK(find(b, 8, a, 22, {205, 0}, 5) == Found{0, 7, 20, 205, 0});
    CHECK(find(b, 6, a, 19, {205, 0}, 5) == Found{0, 7, 20, 205, 0});
}

TEST_CASE("selint: one path with itself") {
    // A closed bow tie: segment 0 (0,0)-(100,100) crosses segment 2 (100,0)-(0,100).
    const PathPtr bow = closedPath({{0, 0}, {100, 100}, {100, 0}, {0, 100}});
    CHECK(find(bow, 0, bow, 2, {50, 50}, 3) == Found{0, 0, 2, 50, 50});
    CHECK(find(bow, 0, bow, 1, {50, 50}, 3) == Found{0, 0, 2, 50, 50});
}

TEST_CASE("selint: paths of one segment are searched without end") {
    const PathPtr a = openPath({{0, 0}, {10, 10}}), b = openPath({{0, 10}, {10, 0}});
    CHECK(find(a, 0, b, 0, {5, 5}, 1) == Found{0, 0, 0, 5, 5});
    CHECK(find(a, 0, b, 0, {9, 9}, 1) == kNone);
}

TEST_CASE("selint: refuses paths without segments and indices outside") {
    const PathPtr a = ruler(20), b = upright(105, 3, 3), dot = openPath({{1, 1}});
    const PathPtr empty(Pemmit::patbeg());
    CHECK(find(a, 10, dot, 0, {0, 0}, 5) == kNone);
    CHECK(find(empty, 0, b, 3, {0, 0}, 5) == kNone);
    CHECK(find(a, -1, b, 3, {105, 0}, 5) == kNone);
    CHECK(find(a, 20, b, 3, {105, 0}, 5) == kNone);  // 20 segments: 0 .. 19
    CHECK(find(a, 10, b, 7, {105, 0}, 5) == kNone);  // 7 segments: 0 .. 6
}

}  // namespace
