// Lines of 32-bit pixels repeated: 6 megapixels (3000 by 2000) beside OpenCV's
// INTER_NEAREST and the other scalers that are installed, on one thread each.
// Sizes are factors times 100.

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "bench/support/scalers.h"
#include "raster/replicate.h"
#include "vaskel/raster.h"

#if VASKEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

constexpr int kWidth = 3000, kHeight = 2000;

const std::vector<unsigned int>& image() {
    static const std::vector<unsigned int> made = [] {
        std::vector<unsigned int> pixels(std::size_t{kWidth} * kHeight);
        std::mt19937 random(6);
        for (unsigned int& pixel : pixels) pixel = static_cast<unsigned int>(random());
        return pixels;
    }();
    return made;
}

double factorOf(const benchmark::State& state) { return static_cast<double>(state.range(0)) / 100; }

void ours(benchmark::State& state, const Vaskel::ReplicateForm* form) {
    Vaskel::forceReplicateForm(form);
    const std::vector<unsigned int>& pixels = image();
    const Vaskel::upsampler settings(1, factorOf(state), kWidth);
    const auto n = static_cast<std::size_t>(settings.resize(kWidth));
    std::vector<unsigned int> out(n * static_cast<std::size_t>(settings.resize(kHeight) + 1));
    for (auto _ : state) {
        Vaskel::upsampler sampler(1, factorOf(state), kWidth);
        unsigned int* to = out.data();
        for (std::size_t y = 0; y < kHeight; ++y) {
            sampler.stuff(&pixels[kWidth * y]);
            for (; sampler.ready(); to += n) sampler.get(to, static_cast<int>(4 * n));
        }
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    Vaskel::forceReplicateForm(nullptr);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(out.size()));
}

// The rule itself: both accumulators, for every output line.
void plain(benchmark::State& state) {
    const std::vector<unsigned int>& pixels = image();
    const double factor = factorOf(state);
    const auto n = static_cast<std::size_t>(kWidth * factor);
    std::vector<unsigned int> out(n * static_cast<std::size_t>(kHeight * factor + 1));
    for (auto _ : state) {
        unsigned int* to = out.data();
        double row = factor;
        for (std::size_t y = 0; y < kHeight; ++y) {
            for (row -= factor; factor > row; row += 1, to += n) {
                double column = 0;
                std::size_t j = 0;
                for (std::size_t i = 0; i < kWidth; ++i, column -= factor)
                    for (; factor > column && j < n; column += 1) to[j++] = pixels[kWidth * y + i];
            }
        }
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(out.size()));
}

// What no form can do without: a line in the cache copied to all output lines.
void moveBytes(benchmark::State& state) {
    const double factor = factorOf(state);
    const auto n = static_cast<std::size_t>(kWidth * factor);
    const std::vector<unsigned int> line(n, 6);
    std::vector<unsigned int> out(n * static_cast<std::size_t>(kHeight * factor));
    for (auto _ : state) {
        for (std::size_t at = 0; at < out.size(); at += n)
            std::memcpy(&out[at], line.data(), 4 * n);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(out.size()));
}

#if VASKEL_BENCH_OPENCV
void openCv(benchmark::State& state) {
    cv::setNumThreads(1);
    const cv::Mat in(kHeight, kWidth, CV_8UC4, const_cast<unsigned int*>(image().data()));
    const double factor = factorOf(state);
    cv::Mat out;
    for (auto _ : state) {
        cv::resize(in, out, {}, factor, factor, cv::INTER_NEAREST);
        benchmark::DoNotOptimize(out.data);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(out.total()));
}
#endif

void peer(benchmark::State& state, const Bench::Scaler& scaler) {
    const Vaskel::upsampler settings(1, factorOf(state), kWidth);
    const int width = settings.resize(kWidth), height = settings.resize(kHeight);
    const auto run = scaler.prepare({image().data(), kWidth, kHeight, 4, width, height, false});
    if (!run) return state.SkipWithError("the peer has no such operation");
    for (auto _ : state) run();
    state.SetItemsProcessed(state.iterations() * width * height);
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
    sized(benchmark::RegisterBenchmark("repeat_4/least_memcpy", moveBytes));
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
