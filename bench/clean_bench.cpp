// Cleaning all outlines of a traced page, beside simplifiers that drop points
// within a tolerance.
//
// The outlines are made once, for each library in its own form; an iteration
// simplifies all of them and lets each result go. "filter" resamples and
// smooths besides, which no peer does.
//
// "least_paths" is the host's calls alone: it walks every outline, adding its
// coordinates up, and makes and releases a path of as many points as the result
// has.
//
// Counters: Mpt/s million points of the input a second, points those left.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <vector>

#include "bench/support/page.h"
#include "geometry/clean.h"
#include "platform/pemmit.h"
#include "vaskel/geometry.h"
#include "vaskel/raster.h"

#if VASKEL_BENCH_BOOST
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/linestring.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#endif
#if VASKEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif
#if VASKEL_BENCH_GEOS
#include <geos/geom/CoordinateArraySequence.h>
#include <geos/geom/GeometryFactory.h>
#include <geos/geom/LineString.h>
#include <geos/simplify/DouglasPeuckerSimplifier.h>
#endif

namespace {

// All outlines of a page of 600 dpi, in halves of A4 size by scale / 4.
class Outlines : public Vaskel::Vectorizer {
 public:
    explicit Outlines(int scale) : Vectorizer(0, 0, 0, 1, 1, false) {
        const Page page = makePage(4960 * scale / 4, 7016 * scale / 4);
        mRuns = runsOf(page);
        vectorize(page.height, false);
        // In order in memory, as the peers' copies are.
        for (Pemmit::Path*& path : paths) {
            Pemmit::Path* const copy = Pemmit::patdup(path);
            Pemmit::objrem(path);
            path = copy;
        }
    }
    ~Outlines() override {
        for (Pemmit::Path* const path : paths) Pemmit::objrem(path);
    }
    int getLine(int line, int* runs) override {
        const auto y = static_cast<std::size_t>(line);
        const std::size_t from = mRuns.begin[y];
        std::memcpy(runs, mRuns.positions.data() + from, (mRuns.begin[y + 1] - from) * sizeof(int));
        return 0;
    }
    void addPath(Pemmit::Path* path) override {
        paths.push_back(path);
        points += Pemmit::patsiz(path);
    }

    std::vector<Pemmit::Path*> paths;
    std::int64_t points = 0;

 private:
    PageRuns mRuns;
};

const Outlines& outlines(benchmark::State& state) {
    static std::map<std::int64_t, std::unique_ptr<Outlines>> all;
    std::unique_ptr<Outlines>& entry = all[state.range(0)];
    if (!entry) entry = std::make_unique<Outlines>(static_cast<int>(state.range(0)));
    return *entry;
}

// Calls take(x, y) for each point of a walk.
template <class Take>
void walk(const Pemmit::Path* path, Take take) {
    Pemmit::scan scan(path, 0, -1);
    for (int x, y; scan.scanex(&x, &y) >= 0;) take(x, y);
}

void report(benchmark::State& state, std::int64_t points) {
    state.counters["Mpt/s"] = benchmark::Counter(static_cast<double>(outlines(state).points) / 1e6,
                                                 benchmark::Counter::kIsIterationInvariantRate);
    state.counters["points"] = static_cast<double>(points);
}

void clean(benchmark::State& state, int n, int tolerance, int step,
           Pemmit::Path* (*form)(const Pemmit::Path*, int)) {
    const Outlines& all = outlines(state);
    Vaskel::cleanpar(n, tolerance, step);
    std::int64_t points = 0;
    for (auto _ : state) {
        points = 0;
        for (const Pemmit::Path* const path : all.paths) {
            Pemmit::Path* const result = form(path, -1);
            points += Pemmit::patsiz(result);
            Pemmit::objrem(result);
        }
    }
    Vaskel::cleanpar(0, 0, 0);
    report(state, points);
}

void leastPaths(benchmark::State& state, int tolerance) {
    const Outlines& all = outlines(state);
    Vaskel::cleanpar(0, tolerance, 1);
    std::vector<int> sizes;
    int most = 1;
    for (const Pemmit::Path* const path : all.paths) {
        Pemmit::Path* const result = Vaskel::clean(path, -1);
        sizes.push_back(std::max(Pemmit::patsiz(result) - 1, 1));
        most = std::max(most, sizes.back());
        Pemmit::objrem(result);
    }
    Vaskel::cleanpar(0, 0, 0);
    const std::vector<Pemmit::PointBase<int>> points(static_cast<std::size_t>(most));
    std::int64_t made = 0;
    for (auto _ : state) {
        made = 0;
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            Pemmit::scan scan(all.paths[i], 0, -1);
            const Pemmit::PointBase<int>* run = nullptr;
            std::int64_t sum = 0;
            int step = 1;
            for (int n; (n = Pemmit::scan::scarun(&scan, &run, &step)) > 0;)
                for (int k = 0; k < n; ++k) sum += run[k * step].x ^ run[k * step].y;
            benchmark::DoNotOptimize(sum);
            Pemmit::Path* const result = Pemmit::patnew(points.data(), sizes[i]);
            made += Pemmit::patsiz(result);
            Pemmit::objrem(result);
        }
    }
    report(state, made);
}
void least_paths1(benchmark::State& s) { leastPaths(s, 1); }
void least_paths2(benchmark::State& s) { leastPaths(s, 2); }

void ours_copy(benchmark::State& s) { clean(s, 0, 0, 1, Vaskel::clean); }
void ours_tolerance1(benchmark::State& s) { clean(s, 0, 1, 1, Vaskel::clean); }
void ours_tolerance2(benchmark::State& s) { clean(s, 0, 2, 1, Vaskel::clean); }
void ours_plain_tolerance1(benchmark::State& s) { clean(s, 0, 1, 1, Vaskel::cleanPlain); }
void ours_filter1(benchmark::State& s) { clean(s, 1, 1, 1, Vaskel::clean); }
void ours_filter1_step3(benchmark::State& s) { clean(s, 1, 1, 3, Vaskel::clean); }
void ours_filter2(benchmark::State& s) { clean(s, 2, 1, 1, Vaskel::clean); }
void ours_plain_filter1(benchmark::State& s) { clean(s, 1, 1, 1, Vaskel::cleanPlain); }

void sizes(benchmark::internal::Benchmark* b) {
    b->Arg(1)->Arg(2)->Arg(4)->Unit(benchmark::kMillisecond);
}
void a4(benchmark::internal::Benchmark* b) { b->Arg(4)->Unit(benchmark::kMillisecond); }

BENCHMARK(ours_copy)->Name("clean_nothing/vaskel")->Apply(a4);
BENCHMARK(ours_tolerance1)->Name("clean_tolerance_1/vaskel")->Apply(sizes);
BENCHMARK(ours_tolerance2)->Name("clean_tolerance_2/vaskel")->Apply(a4);
BENCHMARK(least_paths1)->Name("clean_tolerance_1/least_paths")->Apply(a4);
BENCHMARK(least_paths2)->Name("clean_tolerance_2/least_paths")->Apply(a4);
BENCHMARK(ours_plain_tolerance1)->Name("clean_tolerance_1/vaskel_plain")->Apply(a4);
BENCHMARK(ours_filter1)->Name("clean_filter_1/vaskel")->Apply(sizes);
BENCHMARK(ours_filter1_step3)->Name("clean_filter_1_step_3/vaskel")->Apply(a4);
BENCHMARK(ours_filter2)->Name("clean_filter_2/vaskel")->Apply(a4);
BENCHMARK(ours_plain_filter1)->Name("clean_filter_1/vaskel_plain")->Apply(a4);

#if VASKEL_BENCH_BOOST
void boost_simplify(benchmark::State& state, double tolerance) {
    namespace bg = boost::geometry;
    using Line = bg::model::linestring<bg::model::d2::point_xy<double>>;
    std::vector<Line> lines;
    for (const Pemmit::Path* const path : outlines(state).paths) {
        Line& line = lines.emplace_back();
        walk(path, [&](int x, int y) { bg::append(line, bg::model::d2::point_xy<double>(x, y)); });
    }
    std::int64_t points = 0;
    Line result;
    for (auto _ : state) {
        points = 0;
        for (const Line& line : lines) {
            result.clear();
            bg::simplify(line, result, tolerance);
            points += static_cast<std::int64_t>(result.size());
        }
    }
    report(state, points);
}
void peer_boost_simplify1(benchmark::State& s) { boost_simplify(s, 1); }
void peer_boost_simplify2(benchmark::State& s) { boost_simplify(s, 2); }
BENCHMARK(peer_boost_simplify1)->Name("clean_tolerance_1/boost")->Apply(sizes);
BENCHMARK(peer_boost_simplify2)->Name("clean_tolerance_2/boost")->Apply(a4);
#endif

#if VASKEL_BENCH_OPENCV
void opencv_approx(benchmark::State& state, double tolerance) {
    cv::setNumThreads(1);
    std::vector<std::vector<cv::Point>> contours;
    for (const Pemmit::Path* const path : outlines(state).paths) {
        std::vector<cv::Point>& contour = contours.emplace_back();
        walk(path, [&](int x, int y) { contour.emplace_back(x, y); });
        contour.pop_back();
    }
    std::int64_t points = 0;
    std::vector<cv::Point> result;
    for (auto _ : state) {
        points = 0;
        for (const std::vector<cv::Point>& contour : contours) {
            cv::approxPolyDP(contour, result, tolerance, true);
            points += static_cast<std::int64_t>(result.size());
        }
    }
    report(state, points);
}
void peer_opencv_approx1(benchmark::State& s) { opencv_approx(s, 1); }
void peer_opencv_approx2(benchmark::State& s) { opencv_approx(s, 2); }
BENCHMARK(peer_opencv_approx1)->Name("clean_tolerance_1/opencv")->Apply(sizes);
BENCHMARK(peer_opencv_approx2)->Name("clean_tolerance_2/opencv")->Apply(a4);
#endif

#if VASKEL_BENCH_GEOS
void geos_simplify(benchmark::State& state, double tolerance) {
    const auto factory = geos::geom::GeometryFactory::create();
    std::vector<std::unique_ptr<geos::geom::LineString>> lines;
    for (const Pemmit::Path* const path : outlines(state).paths) {
        std::vector<geos::geom::Coordinate> points;
        walk(path, [&](int x, int y) { points.emplace_back(x, y); });
        auto sequence =
            std::make_unique<geos::geom::CoordinateArraySequence>(std::move(points), 2u);
        lines.push_back(factory->createLineString(std::move(sequence)));
    }
    std::int64_t points = 0;
    for (auto _ : state) {
        points = 0;
        for (const auto& line : lines)
            points += static_cast<std::int64_t>(
                geos::simplify::DouglasPeuckerSimplifier::simplify(line.get(), tolerance)
                    ->getNumPoints());
    }
    report(state, points);
}
void peer_geos_simplify1(benchmark::State& s) { geos_simplify(s, 1); }
BENCHMARK(peer_geos_simplify1)->Name("clean_tolerance_1/geos")->Apply(a4);
#endif

}  // namespace

BENCHMARK_MAIN();
