// Lines of 32-bit pixels repeated: 6 megapixels (3000 by 2000) beside OpenCV's
// INTER_NEAREST and the other scalers that are installed, on one thread each.
// Sizes are factors times 100.

#include <benchmark/benchmark.h>

#include <span>
#include <string>
#include <vector>

#include "bench/support/images.h"
#include "bench/support/scalers.h"
#include "raster/lines_ahead.h"
#include "raster/replicate.h"
#include "vaskel/raster.h"

#if VASKEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

constexpr int kWidth = 3000, kHeight = 2000;

constexpr double kMostFactor = 4.17;

std::span<const unsigned int> image() {
    static const std::span<const unsigned int> made =
        Bench::noise<unsigned int>(std::size_t{kWidth} * kHeight, 6);
    return made;
}

// Room for the largest result and for what a peer wants behind its lines.
unsigned int* result() {
    return static_cast<unsigned int*>(Bench::resultImage(
        static_cast<std::size_t>((kWidth * kMostFactor + 16) * (kHeight * kMostFactor + 1) * 4)));
}

double factorOf(const benchmark::State& state) { return static_cast<double>(state.range(0)) / 100; }

void setItems(benchmark::State& state) {
    const double factor = factorOf(state);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kWidth * factor) *
                            static_cast<std::int64_t>(kHeight * factor));
}

void ours(benchmark::State& state, const Vaskel::ReplicateForm* form) {
    Vaskel::forceReplicateForm(form);
    const std::span<const unsigned int> pixels = image();
    const Vaskel::upsampler settings(1, factorOf(state), kWidth);
    const auto n = static_cast<std::size_t>(settings.resize(kWidth));
    unsigned int* const out = result();
    Bench::timed(state, [&] {
        Vaskel::upsampler sampler(1, factorOf(state), kWidth);
        unsigned int* to = out;
        for (std::size_t y = 0; y < kHeight; ++y) {
            sampler.stuff(&pixels[kWidth * y]);
            for (; sampler.ready(); to += n) sampler.get(to, static_cast<int>(4 * n));
        }
    });
    Vaskel::forceReplicateForm(nullptr);
    setItems(state);
}

// The rule itself: both accumulators, for every output line.
void plain(benchmark::State& state) {
    const std::span<const unsigned int> pixels = image();
    const double factor = factorOf(state);
    const auto n = static_cast<std::size_t>(kWidth * factor);
    unsigned int* const out = result();
    Bench::timed(state, [&] {
        unsigned int* to = out;
        double row = factor;
        for (std::size_t y = 0; y < kHeight; ++y) {
            for (row -= factor; factor > row; row += 1, to += n) {
                double column = 0;
                std::size_t j = 0;
                for (std::size_t i = 0; i < kWidth; ++i, column -= factor)
                    for (; factor > column && j < n; column += 1) to[j++] = pixels[kWidth * y + i];
            }
        }
    });
    setItems(state);
}

// What no form can do without: a line in the cache copied to all output lines, the
// later ones past the caches.
void writeLines(benchmark::State& state) {
    const double factor = factorOf(state);
    const auto n = static_cast<std::size_t>(kWidth * factor);
    const std::vector<unsigned int> line(n, 6);
    const auto lines = static_cast<std::size_t>(kHeight * factor);
    unsigned int* const out = result();
    Bench::timed(state, [&] {
        Vaskel::TakenLines taken;
        const auto* const bytes = reinterpret_cast<const unsigned char*>(line.data());
        for (std::size_t y = 0; y < lines; ++y) taken.copy(out + n * y, bytes, 4 * n);
    });
    setItems(state);
}

#if VASKEL_BENCH_OPENCV
void openCv(benchmark::State& state) {
    cv::setNumThreads(1);
    const cv::Mat in(kHeight, kWidth, CV_8UC4, const_cast<unsigned int*>(image().data()));
    const double factor = factorOf(state);
    const Vaskel::upsampler sizes(1, factor, kWidth);
    const cv::Size size(sizes.resize(kWidth), sizes.resize(kHeight));
    cv::Mat out(size, CV_8UC4, result());
    Bench::timed(state, [&] { cv::resize(in, out, size, 0, 0, cv::INTER_NEAREST); });
    setItems(state);
}
#endif

void peer(benchmark::State& state, const Bench::Scaler& scaler) {
    const Vaskel::upsampler settings(1, factorOf(state), kWidth);
    const int width = settings.resize(kWidth), height = settings.resize(kHeight);
    const auto run = scaler.prepare({image().data(), kWidth, kHeight, 4, width, height, false,
                                     reinterpret_cast<unsigned char*>(result())});
    if (!run) return state.SkipWithError("the peer has no such operation");
    Bench::timed(state, run);
    setItems(state);
}

void sized(benchmark::internal::Benchmark* bench) {
    for (int factor : {150, 200, 300, 417}) bench->Arg(factor);
    bench->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
    sized(benchmark::RegisterBenchmark("repeat_4/vaskel", ours, nullptr));
    sized(benchmark::RegisterBenchmark("repeat_4/vaskel_table", ours, &Vaskel::kReplicateTable));
    sized(benchmark::RegisterBenchmark("repeat_4/vaskel_plain", plain));
    sized(benchmark::RegisterBenchmark("repeat_4/least_write", writeLines));
#if VASKEL_BENCH_OPENCV
    sized(benchmark::RegisterBenchmark("repeat_4/opencv", openCv));
#endif
    for (const Bench::Scaler& scaler : Bench::scalers()) {
        const std::string name = std::string("repeat_4/") + scaler.name;
        auto* const bench = benchmark::RegisterBenchmark(name.c_str(), peer, scaler);
        sized(bench);
        if (scaler.threads) bench->MeasureProcessCPUTime();
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
