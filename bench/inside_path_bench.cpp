// Whether points lie inside a polygon: one question at a time, and many of one
// polygon through an index.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "bench/support/peers.h"
#include "bench/support/polygons.h"
#include "vaskel/geometry.h"

namespace {

using namespace Bench;

// Points at random within the polygon's box.
std::vector<Vertex> questionsAbout(const Polygon& polygon) {
    Pemmit::Box box;
    for (const Vertex& v : polygon) {
        box.minX = std::min(box.minX, v.x);
        box.minY = std::min(box.minY, v.y);
        box.maxX = std::max(box.maxX, v.x);
        box.maxY = std::max(box.maxY, v.y);
    }
    std::mt19937 random(5);
    std::uniform_int_distribution<int> x(box.minX, box.maxX), y(box.minY, box.maxY);
    std::vector<Vertex> points(1024);
    for (Vertex& p : points) p = {x(random), y(random)};
    return points;
}

// Has every cache line of the vertices fetched, which no form can do without:
// whichever edge is left out may be what a point lies behind.
void touch(benchmark::State& state, const Polygon& polygon) {
    constexpr std::size_t kVertices = 64 / sizeof(Vertex);
    for (auto _ : state) {
        int sum = 0;
        for (std::size_t i = 0; i < polygon.size(); i += kVertices) sum ^= polygon[i].x;
        benchmark::DoNotOptimize(sum);
    }
    state.SetComplexityN(state.range(0));
}

// Asks one question an iteration, all of them in turn.
template <class Ask>
void ask(benchmark::State& state, const Polygon& polygon, Ask inside) {
    const std::vector<Vertex> points = questionsAbout(polygon);
    // Indexes that are built when first asked are there by then.
    benchmark::DoNotOptimize(inside(points[0].x, points[0].y));
    std::size_t i = 0;
    for (auto _ : state) {
        const Vertex& p = points[i++ % points.size()];
        benchmark::DoNotOptimize(inside(p.x, p.y));
    }
    state.SetComplexityN(state.range(0));
}

Polygon made(benchmark::State& state, const Shape& shape) {
    return shape.make(static_cast<int>(state.range(0)));
}

void registerAll() {
    using benchmark::RegisterBenchmark;
    using benchmark::State;
    for (const Shape& shape : kShapes) {
        const std::string one = std::string("insidePath_") + shape.name;
        const std::string many = std::string("preparedPath_") + shape.name;
        const auto sized = [](auto* bench) { bench->RangeMultiplier(10)->Range(1000, 1000000); };
        sized(RegisterBenchmark((one + "/vaskel").c_str(), [shape](State& state) {
            const Polygon outline = made(state, shape);
            const DocumentPath path(outline);
            ask(state, outline, [&](int x, int y) { return Vaskel::insidePath(x, y, path.get()); });
        }));
        sized(RegisterBenchmark((one + "/least_read").c_str(),
                                [shape](State& state) { touch(state, made(state, shape)); }));
        sized(RegisterBenchmark((one + "/boost").c_str(), [shape](State& state) {
            const Polygon outline = made(state, shape);
            const BoostPolygon polygon(outline);
            ask(state, outline, [&](int x, int y) { return polygon.covers(x, y); });
        }));
#if VASKEL_BENCH_CGAL
        sized(RegisterBenchmark((one + "/cgal").c_str(), [shape](State& state) {
            const Polygon outline = made(state, shape);
            const CgalPolygon polygon(outline);
            ask(state, outline, [&](int x, int y) { return polygon.covers(x, y); });
        }));
#endif
#if VASKEL_BENCH_OPENCV
        sized(RegisterBenchmark((one + "/opencv").c_str(), [shape](State& state) {
            const Polygon outline = made(state, shape);
            const OpencvPolygon polygon(outline);
            ask(state, outline, [&](int x, int y) { return polygon.covers(x, y); });
        }));
#endif
        sized(RegisterBenchmark((many + "/vaskel").c_str(), [shape](State& state) {
            const Polygon outline = made(state, shape);
            const DocumentPath path(outline);
            const Vaskel::preparedPath prepared(path.get());
            ask(state, outline, [&](int x, int y) { return prepared.inside(x, y); });
        }));
#if VASKEL_BENCH_GEOS
        sized(RegisterBenchmark((many + "/geos_prepared").c_str(), [shape](State& state) {
            const Polygon outline = made(state, shape);
            const GeosPolygon polygon(outline);
            ask(state, outline, [&](int x, int y) { return polygon.preparedCovers(x, y); });
        }));
#endif
        sized(RegisterBenchmark((many + "_build/vaskel").c_str(), [shape](State& state) {
            const Polygon outline = made(state, shape);
            const DocumentPath path(outline);
            for (auto _ : state)
                benchmark::DoNotOptimize(Vaskel::preparedPath(path.get()).inside(0, 0));
        }));
    }
}

}  // namespace

int main(int argc, char** argv) {
    registerAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
