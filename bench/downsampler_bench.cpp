// Images of 24 megapixels (6000 by 4000) reduced line by line: averaging beside
// OpenCV's INTER_AREA, picking beside its INTER_NEAREST, and both beside the
// other scalers that are installed, on one thread each.
// Sizes are factors times 100.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "bench/support/images.h"
#include "bench/support/scalers.h"
#include "raster/downsample_cells.h"
#include "raster/downsample_picks.h"
#include "vaskel/raster.h"

#if VASKEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

constexpr unsigned kWidth = 6000, kHeight = 4000;

template <class Pixel>
std::span<const Pixel> image() {
    static const std::span<const Pixel> made =
        Bench::noise<Pixel>(std::size_t{kWidth} * kHeight, 24);
    return made;
}

// Room for the largest result, by 2, and for what a peer wants behind its lines.
template <class Pixel>
Pixel* result() {
    return static_cast<Pixel*>(Bench::resultImage((kWidth / 2 + 16) * (kHeight / 2 + 1) * 4));
}

double factorOf(const benchmark::State& state) { return static_cast<double>(state.range(0)) / 100; }

template <class Pixel>
void ours(benchmark::State& state, const Vaskel::DownsampleForm* form, bool filtering) {
    Vaskel::forceDownsampleForm(form);
    const std::span<const Pixel> pixels = image<Pixel>();
    Vaskel::downsampler settings(factorOf(state), 1, kWidth, kHeight);
    settings.setFiltering(filtering);
    const std::size_t n = settings.resize(kWidth);
    Pixel* const out = result<Pixel>();
    Bench::timed(state, [&] {
        Vaskel::downsampler sampler(settings);
        Pixel* to = out;
        for (unsigned y = 0; y < kHeight; ++y) {
            sampler.stuff(&pixels[std::size_t{kWidth} * y]);
            for (; sampler.ready(); to += n) sampler.get(to);
        }
    });
    Vaskel::forceDownsampleForm(nullptr);
    state.SetItemsProcessed(state.iterations() * kWidth * kHeight);
}

// Has every cache line fetched, a line of the image in four parts side by side,
// since a CPU looks ahead within a page.
void touch(const void* line, std::size_t bytes) {
    constexpr std::size_t kCacheLine = 64;
    const std::size_t part = bytes / 4;
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < part; i += kCacheLine)
        for (std::size_t j = 0; j < 4; ++j) {
            std::uint64_t word;
            std::memcpy(&word, static_cast<const char*>(line) + j * part + i, sizeof word);
            sum += word;
        }
    benchmark::DoNotOptimize(sum);
}

// What no form can do without: all lines that count are read, each cache line
// once, and all output lines written, from the cache.
template <class Pixel>
void readAndWrite(benchmark::State& state, bool filtering) {
    const std::span<const Pixel> pixels = image<Pixel>();
    const Vaskel::downsampler sizes(factorOf(state), 1, kWidth, kHeight);
    const std::size_t n = sizes.resize(kWidth), lines = sizes.resizeY(kHeight);
    const std::size_t read = filtering ? kHeight : lines;
    const std::vector<Pixel> line(n);
    Pixel* const out = result<Pixel>();
    Bench::timed(state, [&] {
        std::size_t written = 0;
        for (std::size_t y = 0; y < read; ++y) {
            touch(&pixels[kWidth * (y * kHeight / read)], kWidth * sizeof(Pixel));
            for (; written * read < (y + 1) * lines && written < lines; ++written)
                std::memcpy(&out[n * written], line.data(), n * sizeof(Pixel));
        }
    });
    state.SetItemsProcessed(state.iterations() * kWidth * kHeight);
}

// adjust alone, on each input line of which pick_1 takes one.
void adjust(benchmark::State& state, const Vaskel::PickForm* form) {
    Vaskel::forcePickForm(form);
    const std::span<const unsigned char> pixels = image<unsigned char>();
    const Vaskel::downsampler sampler(factorOf(state), 1, kWidth, kHeight);
    const std::size_t n = sampler.resize(kWidth), lines = sampler.resizeY(kHeight);
    unsigned char* const out = result<unsigned char>();
    Bench::timed(state, [&] {
        for (std::size_t y = 0; y < lines; ++y)
            sampler.adjust(&pixels[kWidth * (y * kHeight / lines)], &out[n * y]);
    });
    Vaskel::forcePickForm(nullptr);
    state.SetItemsProcessed(state.iterations() * kWidth * kHeight);
}

#if VASKEL_BENCH_OPENCV
template <class Pixel>
void openCv(benchmark::State& state, int interpolation) {
    cv::setNumThreads(1);
    const int type = sizeof(Pixel) == 4 ? CV_8UC4 : CV_8UC1;
    const cv::Mat in(kHeight, kWidth, type, const_cast<Pixel*>(image<Pixel>().data()));
    const Vaskel::downsampler sizes(factorOf(state), 1, kWidth, kHeight);
    const cv::Size size(static_cast<int>(sizes.resize(kWidth)),
                        static_cast<int>(sizes.resizeY(kHeight)));
    cv::Mat out(size, type, result<Pixel>());
    Bench::timed(state, [&] { cv::resize(in, out, size, 0, 0, interpolation); });
    state.SetItemsProcessed(state.iterations() * kWidth * kHeight);
}
#endif

template <class Pixel>
void peer(benchmark::State& state, const Bench::Scaler& scaler, bool filtering) {
    const Vaskel::downsampler sizes(factorOf(state), 1, kWidth, kHeight);
    const auto run = scaler.prepare({image<Pixel>().data(), kWidth, kHeight, sizeof(Pixel),
                                     static_cast<int>(sizes.resize(kWidth)),
                                     static_cast<int>(sizes.resizeY(kHeight)), filtering,
                                     result<unsigned char>()});
    if (!run) return state.SkipWithError("the peer has no such operation");
    Bench::timed(state, run);
    state.SetItemsProcessed(state.iterations() * kWidth * kHeight);
}

template <class Pixel>
void registerWork(const std::string& work, bool filtering, std::initializer_list<int> factors) {
    const auto sized = [&](auto* bench) {
        for (int factor : factors) bench->Arg(factor);
        bench->Unit(benchmark::kMillisecond);
    };
    const auto form = [&](const char* who, const Vaskel::DownsampleForm* chosen) {
        sized(benchmark::RegisterBenchmark((work + who).c_str(), ours<Pixel>, chosen, filtering));
    };
    form("/vaskel", nullptr);
    sized(benchmark::RegisterBenchmark((work + "/least_read_write").c_str(), readAndWrite<Pixel>,
                                       filtering));
    if (filtering) {
        form("/vaskel_table", &Vaskel::kDownsampleTable);
        form("/vaskel_plain", &Vaskel::kDownsamplePlain);
    }
#if VASKEL_BENCH_OPENCV
    sized(benchmark::RegisterBenchmark((work + "/opencv").c_str(), openCv<Pixel>,
                                       filtering ? cv::INTER_AREA : cv::INTER_NEAREST));
#endif
    for (const Bench::Scaler& scaler : Bench::scalers()) {
        auto* const bench = benchmark::RegisterBenchmark((work + "/" + scaler.name).c_str(),
                                                         peer<Pixel>, scaler, filtering);
        sized(bench);
        if (scaler.threads) bench->MeasureProcessCPUTime();
    }
}

}  // namespace

int main(int argc, char** argv) {
    registerWork<unsigned int>("average_4", true, {200, 250, 400, 417});
    registerWork<unsigned char>("average_1", true, {250, 400, 417});
    registerWork<unsigned int>("pick_4", false, {250, 417});
    registerWork<unsigned char>("pick_1", false, {250, 417});
    for (const auto& [name, form] :
         {std::pair{"adjust/vaskel", static_cast<const Vaskel::PickForm*>(nullptr)},
          {"adjust/vaskel_table", &Vaskel::kPickTable},
          {"adjust/vaskel_plain", &Vaskel::kPickPlain}})
        benchmark::RegisterBenchmark(name, adjust, form)
            ->Arg(250)
            ->Arg(417)
            ->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
