// The embedded document model's calls beside the plainest thing that could
// stand in for each: a vector of points for building and walking, and joins
// that copy.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <vector>

#include "platform/pemmit.h"

namespace {

using Point = Pemmit::PointBase<int>;

// A staircase, as the tracer draws it.
Point stair(std::int64_t i) { return {static_cast<int>(i / 2), static_cast<int>(i * 7 % 1000)}; }

void countPoints(benchmark::State& state) {
    state.SetComplexityN(state.range(0));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void appendPath(benchmark::State& state) {
    for (auto _ : state) {
        Pemmit::Path* const path = Pemmit::patbeg();
        for (std::int64_t i = 0; i < state.range(0); ++i) {
            const Point point = stair(i);
            Pemmit::patlin(path, point.x, point.y);
        }
        Pemmit::objrem(path);
    }
    countPoints(state);
}

void appendVector(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<Point> points;
        Pemmit::Box box;
        for (std::int64_t i = 0; i < state.range(0); ++i) {
            const Point point = stair(i);
            points.push_back(point);
            box.minX = std::min(box.minX, point.x);
            box.minY = std::min(box.minY, point.y);
            box.maxX = std::max(box.maxX, point.x);
            box.maxY = std::max(box.maxY, point.y);
        }
        benchmark::DoNotOptimize(points.data());
        benchmark::DoNotOptimize(box);
    }
    countPoints(state);
}

void walkPath(benchmark::State& state) {
    Pemmit::Path* const path = Pemmit::patbeg();
    for (std::int64_t i = 0; i < state.range(0); ++i) Pemmit::patlin(path, stair(i).x, stair(i).y);
    for (auto _ : state) {
        Pemmit::scan scan(path, 0, -1);
        int sum = 0;
        for (int x, y; scan.scanex(&x, &y) >= 0;) sum ^= x + y;
        benchmark::DoNotOptimize(sum);
    }
    Pemmit::objrem(path);
    countPoints(state);
}

// The same number of points in an outline that was put together from joins,
// the most pieces an outline can have.
void walkJoined(benchmark::State& state);

void walkVector(benchmark::State& state) {
    std::vector<Point> points;
    for (std::int64_t i = 0; i < state.range(0); ++i) points.push_back(stair(i));
    for (auto _ : state) {
        int sum = 0;
        for (const Point& point : points) {
            int x = point.x, y = point.y;
            benchmark::DoNotOptimize(x);
            benchmark::DoNotOptimize(y);
            sum ^= x + y;
        }
        benchmark::DoNotOptimize(sum);
    }
    countPoints(state);
}

// A comb of range(0) teeth: every tooth is a pair of mates, and all gaps end
// on one line. Returns the closed outline, already without its empty partners.
Pemmit::Path* comb(std::int64_t teeth, int pointsASide) {
    Pemmit::Path* outer = Pemmit::patbeg();
    Pemmit::Path* open = Pemmit::patbeg();
    Pemmit::patlinbb(outer, open);
    for (int i = 0; i < pointsASide; ++i) {
        Pemmit::patlin(outer, i, 0);
        Pemmit::patlin(open, i, 1);
    }
    for (std::int64_t tooth = 1; tooth < teeth; ++tooth) {
        Pemmit::Path* const left = Pemmit::patbeg();
        Pemmit::Path* const right = Pemmit::patbeg();
        Pemmit::patlinbb(left, right);
        for (int i = 0; i < pointsASide; ++i) {
            Pemmit::patlin(left, i, static_cast<int>(2 * tooth));
            Pemmit::patlin(right, i, static_cast<int>(2 * tooth + 1));
        }
        Pemmit::patlinee(open, left);
        Pemmit::objrem(open);
        Pemmit::objrem(left);
        open = right;
    }
    Pemmit::patlinee(outer, open);
    Pemmit::objrem(open);
    return outer;
}

void walkJoined(benchmark::State& state) {
    Pemmit::Path* const path = comb(state.range(0) / 8, 4);
    for (auto _ : state) {
        Pemmit::scan scan(path, 0, -1);
        int sum = 0;
        for (int x, y; scan.scanex(&x, &y) >= 0;) sum ^= x + y;
        benchmark::DoNotOptimize(sum);
    }
    Pemmit::objrem(path);
    countPoints(state);
}

// From nothing to the closed outline and gone again; the time a join is that
// of its four-point tooth as well.
void joinComb(benchmark::State& state) {
    for (auto _ : state) Pemmit::objrem(comb(state.range(0), static_cast<int>(state.range(1))));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Small outlines, as a halftone page has by the hundred thousand: two paths
// that grow by turns, close and go.
void smallOutlines(benchmark::State& state) {
    for (auto _ : state) {
        Pemmit::Path* const left = Pemmit::patbeg();
        Pemmit::Path* const right = Pemmit::patbeg();
        Pemmit::patlinbb(left, right);
        for (int i = 0; i < state.range(0); ++i) {
            Pemmit::patlin(left, i, -i);
            Pemmit::patlin(right, i, i);
        }
        Pemmit::patlinee(left, right);
        Pemmit::objrem(right);
        Pemmit::objrem(left);
    }
    state.SetItemsProcessed(state.iterations());
}

void flattenCubic(benchmark::State& state) {
    Pemmit::bezier cubic;
    cubic.p[1] = {0, 5523};
    cubic.p[2] = {4477, 10000};
    cubic.p[3] = {10000, 10000};
    const double tolerance = 1.0 / static_cast<double>(state.range(0));
    std::int64_t points = 0;
    for (auto _ : state)
        cubic.cubfla(
            tolerance,
            [](void* count, const Pemmit::PointBase<double>*) {
                ++*static_cast<std::int64_t*>(count);
            },
            &points);
    state.SetItemsProcessed(points);
}

}  // namespace

BENCHMARK(appendPath)->Name("append/vaskel")->RangeMultiplier(10)->Range(10, 1000000);
BENCHMARK(appendVector)->Name("append/std_vector")->RangeMultiplier(10)->Range(10, 1000000);
BENCHMARK(walkPath)->Name("walk/vaskel")->RangeMultiplier(10)->Range(10, 1000000);
BENCHMARK(walkJoined)->Name("walk/vaskel_joined")->RangeMultiplier(10)->Range(100, 1000000);
BENCHMARK(walkVector)->Name("walk/std_vector")->RangeMultiplier(10)->Range(10, 1000000);
BENCHMARK(joinComb)->Name("join_comb/vaskel")->RangeMultiplier(10)->Ranges({{10, 100000}, {4, 4}});
BENCHMARK(joinComb)->Name("join_comb/vaskel")->Args({12498, 4})->Args({12498, 100});
BENCHMARK(smallOutlines)->Name("small_outlines/vaskel")->RangeMultiplier(2)->Range(2, 128);
BENCHMARK(flattenCubic)->Name("flatten_cubic/vaskel")->RangeMultiplier(10)->Range(1, 1000);

BENCHMARK_MAIN();
