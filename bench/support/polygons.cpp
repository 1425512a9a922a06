#include "bench/support/polygons.h"

#include <cmath>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>

namespace Bench {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr int kRadius = 1 << 24;

Vertex at(double radius, double angle) {
    return {static_cast<int>(std::lround(radius * std::cos(angle))),
            static_cast<int>(std::lround(radius * std::sin(angle)))};
}

// The lower outline of a comb from left to right, closed below.
template <class Place>
Polygon comb(int vertices, Place place) {
    Polygon polygon;
    const int teeth = (vertices - 2) / 4;
    const int pitch = 2 * kRadius / (teeth + 1) / 4;
    int along = -kRadius;
    polygon.push_back(place(along, -kRadius));
    for (int i = 0; i < teeth; ++i) {
        along += pitch;
        polygon.push_back(place(along, -kRadius + 100));
        polygon.push_back(place(along, kRadius - 100));
        along += pitch;
        polygon.push_back(place(along, kRadius - 100));
        polygon.push_back(place(along, -kRadius + 100));
    }
    polygon.push_back(place(along + pitch, -kRadius));
    return polygon;
}

void hilbertPoint(int order, int index, int& x, int& y) {
    x = y = 0;
    for (int s = 1; s < order; s *= 2) {
        const int rx = 1 & (index / 2);
        const int ry = 1 & (index ^ rx);
        if (ry == 0) {
            if (rx == 1) {
                x = s - 1 - x;
                y = s - 1 - y;
            }
            std::swap(x, y);
        }
        x += s * rx;
        y += s * ry;
        index /= 4;
    }
}

}  // namespace

Polygon star(int vertices) {
    Polygon polygon;
    for (int i = 0; i < vertices; ++i)
        polygon.push_back(at(i % 2 ? kRadius : kRadius * 0.6, 2 * kPi * i / vertices));
    return polygon;
}

Polygon spiky(int vertices) {
    std::mt19937 random(1);
    Polygon polygon;
    for (int i = 0; i < vertices; ++i)
        polygon.push_back(at(kRadius * (0.5 + 0.5 * static_cast<double>(random()) / 4294967296.0),
                             2 * kPi * i / vertices));
    return polygon;
}

Polygon spiral(int vertices) {
    // Out along the inner edge of the band, back along the outer one.
    const int half = vertices / 2;
    const double turns = std::sqrt(half) / 8 + 1;
    const double step = kRadius / (turns + 2);
    Polygon polygon;
    const auto point = [&](int i, double shift) {
        const double turn = turns * i / (half - 1);
        return at(step * (turn + 1 + shift), 2 * kPi * turn);
    };
    for (int i = 0; i < half; ++i) polygon.push_back(point(i, 0));
    for (int i = half - 1; i >= 0; --i) polygon.push_back(point(i, 0.4));
    return polygon;
}

Polygon verticalComb(int vertices) {
    return comb(vertices, [](int along, int across) { return Vertex{along, across}; });
}

Polygon horizontalComb(int vertices) {
    return comb(vertices, [](int along, int across) { return Vertex{across, along}; });
}

Polygon hatch(int vertices) {
    // The comb, sheared by 45 degrees and halved to fit.
    return comb(vertices, [](int along, int across) {
        return Vertex{across / 2 + along / 2, across / 2};
    });
}

Polygon hilbert(int vertices) {
    // One side of the curve out, the other side back: each corner of the curve
    // gives two vertices of the band.
    int order = 2;
    while (2 * order * order < vertices) order *= 2;
    const int count = vertices / 2;
    const int cell = 2 * kRadius / order / 4 * 4;
    std::vector<Vertex> middle;
    for (int i = 0; i < count; ++i) {
        Vertex v{};
        hilbertPoint(order, i, v.x, v.y);
        middle.push_back({v.x * cell - kRadius, v.y * cell - kRadius});
    }
    const auto sign = [](int v) { return (v > 0) - (v < 0); };
    const auto beside = [&](int i, int side) {
        const std::size_t n = static_cast<std::size_t>(i);
        const Vertex& here = middle[n];
        const Vertex before =
            i > 0 ? middle[n - 1]
                  : Vertex{2 * here.x - middle[n + 1].x, 2 * here.y - middle[n + 1].y};
        const Vertex after =
            i + 1 < count ? middle[n + 1] : Vertex{2 * here.x - before.x, 2 * here.y - before.y};
        const int inX = sign(here.x - before.x), inY = sign(here.y - before.y);
        const int outX = sign(after.x - here.x), outY = sign(after.y - here.y);
        // The left normals of both directions, added where the curve turns.
        const bool straight = inX == outX && inY == outY;
        const int nx = straight ? -inY : -inY - outY, ny = straight ? inX : inX + outX;
        return Vertex{here.x + side * nx * cell / 4, here.y + side * ny * cell / 4};
    };
    Polygon polygon;
    for (int i = 0; i < count; ++i) polygon.push_back(beside(i, 1));
    for (int i = count - 1; i >= 0; --i) polygon.push_back(beside(i, -1));
    return polygon;
}

const Polygon& Shape::make(int vertices) const {
    static std::map<std::pair<std::string, int>, Polygon> made;
    Polygon& polygon = made[{name, vertices}];
    if (polygon.empty()) polygon = draw(vertices);
    return polygon;
}

const std::vector<Shape> kShapes = {
    {"star", star, true},
    {"spiky", spiky, true},
    {"spiral", spiral, false},
    {"verticalComb", verticalComb, false},
    {"horizontalComb", horizontalComb, false},
    {"hatch", hatch, true},
    {"hilbert", hilbert, false},
    {"randomSimple", randomSimple, false},
    {"tracedPage", tracedPage, false},
};

}  // namespace Bench
