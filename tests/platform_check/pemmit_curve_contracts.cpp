// Pemmit: curves as walks deliver them, and bezier::cubfla.

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "adapter.h"
#include "check.h"

using namespace Check;

namespace {

using Cubic = Pemmit::bezier;
using PointD = Pemmit::PointBase<double>;

Cubic cubic(double x0, double y0, double x1, double y1, double x2, double y2, double x3,
            double y3) {
    Cubic result;
    result.p[0] = {x0, y0};
    result.p[1] = {x1, y1};
    result.p[2] = {x2, y2};
    result.p[3] = {x3, y3};
    return result;
}

// The shapes that flatteners get wrong: a quarter circle, a loop, a cusp, ends
// that meet, control points that fold back over the chord, an S, a line.
const Cubic kShapes[] = {
    cubic(0, 0, 0, 5523, 4477, 10000, 10000, 10000),
    cubic(0, 0, 9000, 6000, -6000, 6000, 3000, 0),
    cubic(0, 0, 5000, 5000, 0, 5000, 5000, 0),
    cubic(100, 100, 4000, 3000, -4000, 3000, 100, 100),
    cubic(0, 0, -3000, 0, 9000, 0, 1000, 0),
    cubic(0, 0, 0, 3000, 1000, -3000, 1000, 0),
    cubic(-500, 200, -100, 360, 300, 520, 700, 680),
};

PointD at(const Cubic& c, double t) {
    const double s = 1 - t;
    const double w[4] = {s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t};
    PointD point{0, 0};
    for (int i = 0; i < 4; ++i) {
        point.x += w[i] * c.p[i].x;
        point.y += w[i] * c.p[i].y;
    }
    return point;
}

double distance(const PointD& p, const PointD& a, const PointD& b) {
    const double cx = b.x - a.x, cy = b.y - a.y;
    const double length2 = cx * cx + cy * cy;
    const double t =
        length2 > 0 ? std::clamp(((p.x - a.x) * cx + (p.y - a.y) * cy) / length2, 0.0, 1.0) : 0;
    return std::hypot(p.x - a.x - t * cx, p.y - a.y - t * cy);
}

// The largest distance of a point of one polyline from another one.
double distance(const std::vector<PointD>& from, const std::vector<PointD>& to) {
    double largest = 0;
    for (const PointD& point : from) {
        double nearest = std::numeric_limits<double>::infinity();
        for (std::size_t i = 1; i < to.size(); ++i)
            nearest = std::min(nearest, distance(point, to[i - 1], to[i]));
        largest = std::max(largest, nearest);
    }
    return largest;
}

std::vector<PointD> samples(const Cubic& c, int count) {
    std::vector<PointD> points;
    for (int i = 0; i <= count; ++i) points.push_back(at(c, static_cast<double>(i) / count));
    return points;
}

// The polyline of a flattening, P0 included, cut after far too many points.
struct Endless {};
struct Polyline {
    std::vector<PointD> points;
    std::size_t most = 4'000'000;
    static void add(void* context, const PointD* point) {
        auto& self = *static_cast<Polyline*>(context);
        self.points.push_back(*point);
        if (self.points.size() > self.most) throw Endless();
    }
};
std::vector<PointD> flatten(const Cubic& c, double tolerance) {
    Polyline line;
    line.points.push_back(c.p[0]);
    try {
        c.cubfla(tolerance, &Polyline::add, &line);
    } catch (const Endless&) {
        FAIL_CHECK("the flattening does not end");
    }
    return line.points;
}

bool sameBits(const PointD& a, const PointD& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

}  // namespace

TEST_CASE("Pemmit::bezier: eight doubles, all 0 at first") {
    static_assert(sizeof(Cubic) == 8 * sizeof(double));
    alignas(Cubic) unsigned char storage[sizeof(Cubic)];
    std::memset(storage, 0x55, sizeof storage);
    const Cubic* const made = new (storage) Cubic;
    for (const PointD& point : made->p) {
        CHECK(point.x == 0);
        CHECK(point.y == 0);
    }
}

TEST_CASE("Pemmit::bezier::cubfla: the polyline stays within tolerance of the curve") {
    for (const Cubic& shape : kShapes)
        for (double tolerance : {100.0, 5.0, 0.5, 0.05}) {
            CAPTURE(&shape - kShapes);
            CAPTURE(tolerance);
            const std::vector<PointD> line = flatten(shape, tolerance);
            const std::vector<PointD> curve = samples(shape, 2000);
            const double slack = 1e-6 * tolerance + 1e-9;
            CHECK(distance(curve, line) <= tolerance + slack);
            // The samples are the finer the shorter the curve, and their own
            // distance from the curve is far below this.
            CHECK(distance(line, curve) <= tolerance + 0.01);
        }
}

TEST_CASE("Pemmit::bezier::cubfla: delivers every point after P0, the last exactly P3") {
    for (const Cubic& shape : kShapes) {
        CAPTURE(&shape - kShapes);
        const std::vector<PointD> line = flatten(shape, 0.5);
        REQUIRE(line.size() >= 2);
        CHECK(sameBits(line.back(), shape.p[3]));
        CHECK_FALSE(sameBits(line[1], shape.p[0]));
    }
    const Cubic odd = cubic(0, 0, 1, 2, 3, 5, 0.1, 1e9 + 1 / 3.0);
    CHECK(sameBits(flatten(odd, 0.5).back(), odd.p[3]));
    const Cubic point = cubic(7, 8, 7, 8, 7, 8, 7, 8);
    REQUIRE(flatten(point, 0.5).size() >= 2);
    CHECK(sameBits(flatten(point, 0.5).back(), point.p[3]));
}

TEST_CASE("Pemmit::bezier::cubfla: points come in order along the curve") {
    const Cubic rising = cubic(0, 0, 1000, 4000, 3000, -4000, 4000, 0);  // x grows with t
    const std::vector<PointD> line = flatten(rising, 0.1);
    CHECK(line.size() > 10);
    for (std::size_t i = 1; i < line.size(); ++i) CHECK(line[i].x > line[i - 1].x);
}

TEST_CASE("Pemmit::bezier::cubfla: a finer tolerance does not take fewer points") {
    for (const Cubic& shape : kShapes) {
        CAPTURE(&shape - kShapes);
        CHECK(flatten(shape, 1).size() <= flatten(shape, 0.01).size());
    }
}

TEST_CASE("Pemmit::bezier::cubfla: ends for every tolerance") {
    constexpr double kInf = std::numeric_limits<double>::infinity();
    for (double tolerance : {0.0, -0.0, -1.0, -kInf, kInf, std::nan(""), 1e-300, 5e-324, 1e300}) {
        CAPTURE(tolerance);
        for (const Cubic& shape : {kShapes[0], kShapes[2], kShapes[6]}) {
            const std::vector<PointD> line = flatten(shape, tolerance);
            REQUIRE(line.size() >= 2);
            CHECK(sameBits(line.back(), shape.p[3]));
        }
    }
}

TEST_CASE("Pemmit::bezier::cubfla: ends for coordinates that are huge or not finite") {
    constexpr double kInf = std::numeric_limits<double>::infinity();
    constexpr double kMax = std::numeric_limits<double>::max();
    for (double odd : {kInf, -kInf, std::nan(""), kMax, -kMax, 1e200, 5e-324})
        for (int place = 0; place < 8; ++place) {
            CAPTURE(odd);
            CAPTURE(place);
            Cubic shape = kShapes[0];
            (place % 2 ? shape.p[place / 2].y : shape.p[place / 2].x) = odd;
            const std::vector<PointD> line = flatten(shape, 0.5);
            REQUIRE(line.size() >= 2);
            CHECK(sameBits(line.back(), shape.p[3]));
        }
    const Cubic far = cubic(-kMax, kMax, kMax, kMax, -kMax, -kMax, kMax, -kMax);
    CHECK(sameBits(flatten(far, 0.5).back(), far.p[3]));
}

TEST_CASE("Pemmit::bezier::cubfla: the callback may throw, and the context is passed unchanged") {
    struct Stop {};
    int calls = 0;
    const auto callback = [](void* context, const PointD*) {
        if (++*static_cast<int*>(context) == 3) throw Stop();
    };
    CHECK_THROWS_AS(kShapes[0].cubfla(0.5, callback, &calls), Stop);
    CHECK(calls == 3);
}

TEST_CASE("Pemmit::scan: a curve is delivered within the flatness, rounded, up to its end") {
    const double allowed = Adapter::flatness() + std::sqrt(0.5) + 1e-6;
    for (const Cubic& shape : kShapes) {
        CAPTURE(&shape - kShapes);
        const auto x = [&](int i) { return static_cast<int>(shape.p[i].x); };
        const auto y = [&](int i) { return static_cast<int>(shape.p[i].y); };
        PathPtr path(Pemmit::patbeg());
        append(path.get(), {{-5000, -5000}, {x(0), y(0)}});
        if (!Adapter::addCurve(path.get(), x(1), y(1), x(2), y(2), x(3), y(3))) {
            notChecked("the host has no curves");
            return;
        }
        Pemmit::patend(path.get(), 6000, 6000);

        const PointList points = walk(path.get());
        REQUIRE(points.size() >= 4);
        CHECK(points[0] == std::pair(-5000, -5000));
        CHECK(points[1] == std::pair(x(0), y(0)));
        CHECK(points[points.size() - 2] == std::pair(x(3), y(3)));
        CHECK(points.back() == std::pair(6000, 6000));
        std::vector<PointD> line;
        for (std::size_t i = 1; i + 1 < points.size(); ++i)
            line.push_back(
                {static_cast<double>(points[i].first), static_cast<double>(points[i].second)});
        const std::vector<PointD> curve = samples(shape, 2000);
        CHECK(distance(curve, line) <= allowed);
        CHECK(distance(line, curve) <= allowed + 0.01);

        // Size, box, both directions, every start: as for any other path.
        checkWalks(path.get(), points);
        const PathPtr copy(Pemmit::patdup(path.get()));
        path.reset();
        checkWalks(copy.get(), points);
    }
}

TEST_CASE("Pemmit::patlinee: curves go where their points go") {
    const auto arc = [](Pemmit::Path* path, int x) {
        append(path, {{x, 0}});
        return Adapter::addCurve(path, x, 5523, x + 4477, 10000, x + 10000, 10000);
    };
    PathPtr p(Pemmit::patbeg()), q(Pemmit::patbeg());
    Pemmit::patlinbb(p.get(), q.get());
    if (!arc(p.get(), 0) || !arc(q.get(), 500)) {
        notChecked("the host has no curves");
        return;
    }
    PointList outline = walk(p.get());
    outline.pop_back();  // the repeated first point
    PointList second = walk(q.get());
    second.pop_back();
    second = reversed(second);
    outline.insert(outline.end(), second.begin(), second.end());
    Pemmit::patlinee(p.get(), q.get());
    outline.push_back(outline.front());
    checkWalks(p.get(), outline);
    checkWalks(q.get(), {});
}
