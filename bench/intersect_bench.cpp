// Whether a polygon crosses itself: the answer is no, so that everything has to
// be looked at. GEOS and CGAL decide exactly, Boost.Geometry by its turns.

#include <benchmark/benchmark.h>

#include "bench/support/peers.h"
#include "bench/support/polygons.h"
#include "geometry/intersect_plain.h"
#include "vaskel/geometry.h"

namespace {

using namespace Bench;

void ours(benchmark::State& state, const Shape& shape) {
    const DocumentPath path(shape.make(static_cast<int>(state.range(0))));
    if (Vaskel::intersect(path.get()) != 0) state.SkipWithError("the shape crosses itself");
    for (auto _ : state) benchmark::DoNotOptimize(Vaskel::intersect(path.get()));
    state.SetComplexityN(state.range(0));
    state.counters["ns_per_vertex"] = benchmark::Counter(
        static_cast<double>(state.range(0)) * 1e-9,
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
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
    state.SetComplexityN(state.range(0));
}
#endif

void boostSimple(benchmark::State& state, const Shape& shape) {
    const BoostPolygon polygon(shape.make(static_cast<int>(state.range(0))));
    for (auto _ : state) benchmark::DoNotOptimize(polygon.crosses());
    state.SetComplexityN(state.range(0));
}

#if VASKEL_BENCH_CGAL
void cgalSimple(benchmark::State& state, const Shape& shape) {
    const CgalPolygon polygon(shape.make(static_cast<int>(state.range(0))));
    for (auto _ : state) benchmark::DoNotOptimize(polygon.isSimple());
    state.SetComplexityN(state.range(0));
}
#endif

void registerAll() {
    using benchmark::RegisterBenchmark;
    for (const Shape& shape : kShapes) {
        const std::string work = std::string("intersect_") + shape.name;
        const auto sized = [](auto* bench) {
            bench->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMicrosecond);
        };
        sized(RegisterBenchmark((work + "/vaskel").c_str(), ours, shape)->Complexity());
        RegisterBenchmark((work + "/vaskel_plain").c_str(), plain, shape)
            ->Arg(1000)
            ->Unit(benchmark::kMicrosecond);
#if VASKEL_BENCH_GEOS
        sized(RegisterBenchmark((work + "/geos").c_str(), geosSimple, shape));
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
}
