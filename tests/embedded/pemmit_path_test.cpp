// The embedded document model: what a declared call does not promise, but this
// model does, and how it is built inside.

#include <doctest/doctest.h>

#include <vector>

#include "embedded/document.h"
#include "platform/pemmit.h"

namespace {

using Points = std::vector<std::pair<int, int>>;

Points walk(const Pemmit::Object* object, int direction, int start) {
    Points points;
    Pemmit::scan scan(object, direction, start);
    for (int x, y; scan.scanex(&x, &y) >= 0;) points.push_back({x, y});
    return points;
}

Pemmit::Path* makePath(const Points& points) {
    Pemmit::Path* const path = Pemmit::patbeg();
    for (const auto& [x, y] : points) Pemmit::patlin(path, x, y);
    return path;
}

TEST_CASE("a closed contour delivers its first point again, an open one does not") {
    Pemmit::Path* const path = makePath({{1, 2}, {5, 2}, {5, 7}});
    CHECK(walk(path, 0, -1) == Points{{1, 2}, {5, 2}, {5, 7}, {1, 2}});
    CHECK(walk(path, 1, -1) == Points{{1, 2}, {5, 7}, {5, 2}, {1, 2}});
    CHECK(Pemmit::patsiz(path) == 4);
    Pemmit::patend(path, 0, 9);
    CHECK(walk(path, 0, -1) == Points{{1, 2}, {5, 2}, {5, 7}, {0, 9}});
    CHECK(walk(path, 1, 2) == Points{{5, 7}, {5, 2}, {1, 2}});
    CHECK(path->box.minX == 0);
    CHECK(path->box.maxY == 9);
    Pemmit::objrem(path);
}

TEST_CASE("joins link two paths into the outline that the tracer expects") {
    // P and p are mates, Q and q are mates; joining p with q leaves P and Q.
    Pemmit::Path *P = Pemmit::patbeg(), *p = Pemmit::patbeg();
    Pemmit::Path *Q = Pemmit::patbeg(), *q = Pemmit::patbeg();
    Pemmit::patlinbb(P, p);
    Pemmit::patlinbb(Q, q);
    for (int i = 1; i <= 3; ++i) {
        Pemmit::patlin(P, 10 + i, 0);
        Pemmit::patlin(p, 20 + i, 0);
        Pemmit::patlin(Q, 30 + i, 0);
        Pemmit::patlin(q, 40 + i, 0);
    }
    Pemmit::patlinee(p, q);
    CHECK(Pemmit::patsiz(p) == 0);
    CHECK(Pemmit::patsiz(q) == 0);
    CHECK(p->box.minX > p->box.maxX);
    CHECK(Pemmit::patsiz(P) == 10);
    CHECK(walk(P, 0, 8) == Points{{13, 0}, {41, 0}});
    Pemmit::objrem(p);
    Pemmit::objrem(q);
    Pemmit::patlin(P, 99, 1);
    Pemmit::patlinee(Q, P);
    CHECK(Pemmit::patsiz(P) == 0);
    CHECK(walk(Q, 0, -1) == Points{{31, 0},
                                   {32, 0},
                                   {33, 0},
                                   {99, 1},
                                   {13, 0},
                                   {12, 0},
                                   {11, 0},
                                   {21, 0},
                                   {22, 0},
                                   {23, 0},
                                   {43, 0},
                                   {42, 0},
                                   {41, 0},
                                   {31, 0}});
    CHECK(Q->box.maxX == 99);
    Pemmit::objrem(P);
    Pemmit::objrem(Q);
}

TEST_CASE("a curve is walked as a polyline and read back as it was drawn") {
    Pemmit::Path* const path = makePath({{0, 0}});
    REQUIRE(Embedded::addCurve(path, 0, 55, 45, 100, 100, 100));
    Pemmit::patlin(path, 100, 0);
    const auto segments = Embedded::segments(path);
    REQUIRE(segments.size() == 3);
    CHECK(segments[1].kind == Embedded::Segment::kCurve);
    CHECK(segments[1].x == 100);
    CHECK(segments[2].kind == Embedded::Segment::kLine);
    CHECK(Pemmit::patsiz(path) > 6);
    Pemmit::objrem(path);
}

}  // namespace
