// Whether a polygon crosses itself: the answer is no, so that everything has to
// be looked at. GEOS and CGAL decide exactly, Boost.Geometry by its turns.
//
// At the end it prints by which power of the number of vertices our time grows.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "bench/support/peers.h"
#include "bench/support/polygons.h"
#include "geometry/intersect_plain.h"
#include "vaskel/geometry.h"

namespace {

using namespace Bench;

struct Measured {
    double vertices, seconds;
};
std::map<std::string, std::vector<Measured>> gMeasured;  // ours, by shape

void ours(benchmark::State& state, const Shape& shape) {
    const DocumentPath path(shape.make(static_cast<int>(state.range(0))));
    const double vertices = Pemmit::patsiz(path.get()) - 1;
    if (Vaskel::intersect(path.get()) != 0) state.SkipWithError("the shape crosses itself");
    const std::clock_t start = std::clock();
    for (auto _ : state) benchmark::DoNotOptimize(Vaskel::intersect(path.get()));
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC /
                           static_cast<double>(state.iterations());
    gMeasured[shape.name].push_back({vertices, seconds});
    state.counters["ns_per_vertex"] = seconds * 1e9 / vertices;
}

// Times of the largest and the smallest size, each the last one measured.
void printExponents() {
    for (auto& [shape, all] : gMeasured) {
        const auto bySize = [](const Measured& a, const Measured& b) {
            return a.vertices < b.vertices;
        };
        std::stable_sort(all.begin(), all.end(), bySize);
        const Measured& large = all.back();
        const Measured& small =
            *std::prev(std::upper_bound(all.begin(), all.end(), all[0], bySize));
        if (small.vertices == large.vertices) continue;
        std::printf(
            "%s: time grows as n^%.2f from %.0f to %.0f vertices\n", shape.c_str(),
            std::log(large.seconds / small.seconds) / std::log(large.vertices / small.vertices),
            small.vertices, large.vertices);
    }
}

void plain(benchmark::State& state, const Shape& shape) {
    const DocumentPath path(shape.make(static_cast<int>(state.range(0))));
    const auto outline = Vaskel::Intersect::outlineOf(path.get());
    for (auto _ : state) benchmark::DoNotOptimize(Vaskel::Intersect::sweepPlain(outline));
}

#if VASKEL_BENCH_GEOS
void geosSimple(benchmark::State& state, const Shape& shape) {
    const GeosPolygon polygon(shape.make(static_cast<int>(state.range(0))));
    if (!polygon.isSimple()) state.SkipWithError("the shape crosses itself");
    for (auto _ : state) benchmark::DoNotOptimize(polygon.isSimple());
}
#endif

void boostSimple(benchmark::State& state, const Shape& shape) {
    const BoostPolygon polygon(shape.make(static_cast<int>(state.range(0))));
    for (auto _ : state) benchmark::DoNotOptimize(polygon.crosses());
}

#if VASKEL_BENCH_CGAL
void cgalSimple(benchmark::State& state, const Shape& shape) {
    const CgalPolygon polygon(shape.make(static_cast<int>(state.range(0))));
    for (auto _ : state) benchmark::DoNotOptimize(polygon.isSimple());
}
#endif

void registerAll() {
    using benchmark::RegisterBenchmark;
    for (const Shape& shape : kShapes) {
        const std::string work = std::string("intersect_") + shape.name;
        const auto sized = [](auto* bench) {
            bench->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMicrosecond);
        };
        sized(RegisterBenchmark((work + "/vaskel").c_str(), ours, shape));
        RegisterBenchmark((work + "/vaskel_plain").c_str(), plain, shape)
            ->Arg(1000)
            ->Unit(benchmark::kMicrosecond);
#if VASKEL_BENCH_GEOS
        // Tests all pairs whose boxes meet: for shapes with nothing but long
        // edges that is minutes at 100000 vertices, which nobody waits for.
        const bool longEdges = shape.longEdges;
        auto* const geos = RegisterBenchmark((work + "/geos").c_str(), geosSimple, shape);
        geos->RangeMultiplier(10)->Range(1000, longEdges ? 10000 : 1000000);
        geos->Unit(benchmark::kMicrosecond);
#endif
#if VASKEL_BENCH_CGAL
        sized(RegisterBenchmark((work + "/cgal").c_str(), cgalSimple, shape));
#endif
        RegisterBenchmark((work + "/boost").c_str(), boostSimple, shape)
            ->RangeMultiplier(10)
            ->Range(1000, 10000)  // grows faster than the others
            ->Unit(benchmark::kMicrosecond);
    }
}

}  // namespace

int main(int argc, char** argv) {
    registerAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    printExponents();
}
