// Tracing a page at 600 dpi, beside potrace and OpenCV on the same bitmap.
//
// All times are those of library calls: the bitmap is in memory in the form
// that each library takes, and what it returns is kept until the end and
// released. The tracer takes positions; "from bits" adds finding them in packed
// pixels.
//
// Counters: Mpos/s million positions (run boundaries of all lines) a second,
// outlines and points as delivered, own_MB the tracer's memory without
// outlines at its end, all_MB the same with all outlines.

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <cstring>
#include <map>
#include <memory>
#include <vector>

#include "bench/support/page.h"
#include "platform/pemmit.h"
#include "raster/vectorizer.h"
#include "vaskel/geometry.h"
#include "vaskel/raster.h"

#if VASKEL_BENCH_POTRACE
#include <potracelib.h>
#endif
#if VASKEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

// What malloc has handed out and not got back, in bytes.
std::size_t inUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

constexpr int kA4Width = 4960;
constexpr int kA4Height = 7016;

// A4 at 600 dpi, scaled by scale / 4 in both directions with the same letters.
struct Input {
    explicit Input(int scale)
        : page(makePage(kA4Width * scale / 4, kA4Height * scale / 4)), runs(runsOf(page)) {
        words = (static_cast<std::size_t>(page.width) + 63) / 64;
        bits.resize(words * static_cast<std::size_t>(page.height));
        for (int y = 0; y < page.height; ++y)
            for (int x = 0; x < page.width; ++x)
                if (page.line(y)[x])
                    bits[static_cast<std::size_t>(y) * words + static_cast<std::size_t>(x / 64)] |=
                        std::uint64_t{1} << (63 - x % 64);
    }

    Page page;
    PageRuns runs;
    std::size_t words;
    std::vector<std::uint64_t> bits;  // leftmost pixel highest
};

const Input& input(int scale) {
    static std::map<int, std::unique_ptr<Input>> inputs;
    std::unique_ptr<Input>& entry = inputs[scale];
    if (!entry) entry = std::make_unique<Input>(scale);
    return *entry;
}

struct Cleaning {
    int order, tolerance, step;
};

class PageTracer : public Vaskel::Vectorizer {
 public:
    PageTracer(const Input& from, const Cleaning& cleaning, bool smooth, bool bits)
        : Vectorizer(0, cleaning.order, cleaning.tolerance, cleaning.step, 1, smooth),
          mInput(from),
          mFromBits(bits) {}
    ~PageTracer() override { releaseOutlines(); }

    int getLine(int line, int* runs) override {
        const auto y = static_cast<std::size_t>(line);
        if (mFromBits) {
            fromBits(mInput.bits.data() + y * mInput.words, runs);
        } else {
            const std::size_t from = mInput.runs.begin[y];
            std::memcpy(runs, mInput.runs.positions.data() + from,
                        (mInput.runs.begin[y + 1] - from) * sizeof(int));
        }
        return 0;
    }

    void addPath(Pemmit::Path* path) override { mOutlines.push_back(path); }

    void releaseOutlines() {
        for (Pemmit::Path* const path : mOutlines) Pemmit::objrem(path);
        mOutlines.clear();
    }

    const std::vector<Pemmit::Path*>& outlines() const { return mOutlines; }

 private:
    void fromBits(const std::uint64_t* words, int* runs) const {
        std::uint64_t before = 0;  // the last pixel of the word before, in the top bit
        for (std::size_t i = 0; i < mInput.words; ++i) {
            std::uint64_t changes = words[i] ^ (words[i] >> 1 | before << 63);
            for (; changes != 0;) {
                const int at = __builtin_clzll(changes);
                *runs++ = static_cast<int>(i) * 64 + at;
                changes &= ~(std::uint64_t{1} << 63 >> at);
            }
            before = words[i] & 1;
        }
        if (before) *runs++ = mInput.page.width;
        *runs = INT_MAX;
    }

    const Input& mInput;
    bool mFromBits;
    std::vector<Pemmit::Path*> mOutlines;
};

void trace(benchmark::State& state, Cleaning cleaning, bool smooth, bool bits,
           Vaskel::AddLineForm form = Vaskel::AddLineForm::kFast) {
    const Input& from = input(static_cast<int>(state.range(0)));
    Vaskel::gAddLineForm = form;
    for (auto _ : state) {
        PageTracer tracer(from, cleaning, smooth, bits);
        tracer.vectorize(from.page.height, false);
        benchmark::DoNotOptimize(tracer.outlines().data());
    }

    const std::size_t before = inUse();
    PageTracer tracer(from, cleaning, smooth, bits);
    tracer.vectorize(from.page.height, false);
    const std::size_t all = inUse() - before;
    const std::size_t outlines = tracer.outlines().size();
    std::int64_t points = 0;
    for (const Pemmit::Path* const path : tracer.outlines()) points += Pemmit::patsiz(path) - 1;
    tracer.releaseOutlines();
    const std::size_t own = inUse() - before - tracer.outlines().capacity() * sizeof(void*);
    Vaskel::cleanpar(0, 0, 0);
    Vaskel::gAddLineForm = Vaskel::AddLineForm::kFast;
    state.counters["Mpos/s"] = benchmark::Counter(static_cast<double>(from.runs.boundaries) / 1e6,
                                                  benchmark::Counter::kIsIterationInvariantRate);
    state.counters["outlines"] = static_cast<double>(outlines);
    state.counters["points"] = static_cast<double>(points);
    state.counters["own_MB"] = static_cast<double>(own) / 1e6;
    state.counters["all_MB"] = static_cast<double>(all) / 1e6;
}

constexpr Cleaning kOff = {0, 0, 1};
constexpr Cleaning kTolerance = {0, 1, 1};
constexpr Cleaning kFilter = {1, 1, 1};
constexpr Cleaning kFilter2 = {2, 1, 1};

void ours_plain_off(benchmark::State& s) {
    trace(s, kOff, false, false, Vaskel::AddLineForm::kPlain);
}
void ours_off(benchmark::State& s) { trace(s, kOff, false, false); }
void ours_off_from_bits(benchmark::State& s) { trace(s, kOff, false, true); }
void ours_smooth_off(benchmark::State& s) { trace(s, kOff, true, false); }
void ours_tolerance(benchmark::State& s) { trace(s, kTolerance, false, false); }
void ours_filter(benchmark::State& s) { trace(s, kFilter, false, false); }
void ours_filter_from_bits(benchmark::State& s) { trace(s, kFilter, false, true); }
void ours_filter2(benchmark::State& s) { trace(s, kFilter2, false, false); }

// 4 is A4; halves and doubles of its sides show how the cost grows.
void sizes(benchmark::internal::Benchmark* b) {
    b->Arg(1)->Arg(2)->Arg(4)->Arg(8)->Unit(benchmark::kMillisecond);
}
void a4(benchmark::internal::Benchmark* b) { b->Arg(4)->Unit(benchmark::kMillisecond); }

BENCHMARK(ours_plain_off)->Name("trace_uncleaned/vaskel_plain")->Apply(a4);
BENCHMARK(ours_off)->Name("trace_uncleaned/vaskel")->Apply(sizes);
BENCHMARK(ours_off_from_bits)->Name("trace_uncleaned/vaskel_from_bits")->Apply(a4);
BENCHMARK(ours_smooth_off)->Name("trace_smoothed/vaskel")->Apply(a4);
BENCHMARK(ours_tolerance)->Name("trace_tolerance/vaskel")->Apply(a4);
BENCHMARK(ours_filter)->Name("trace_cleaned/vaskel")->Apply(sizes);
BENCHMARK(ours_filter_from_bits)->Name("trace_cleaned/vaskel_from_bits")->Apply(a4);
BENCHMARK(ours_filter2)->Name("trace_cleaned/vaskel_filter2")->Apply(a4);

#if VASKEL_BENCH_POTRACE
// polygons: no curves (alphamax 0) and no joining of curves.
void potrace(benchmark::State& state, bool polygons) {
    const Input& from = input(static_cast<int>(state.range(0)));
    static_assert(sizeof(potrace_word) == 8);
    potrace_bitmap_t bitmap = {from.page.width, from.page.height, static_cast<int>(from.words),
                               nullptr};
    std::vector<potrace_word> words(from.bits.begin(), from.bits.end());
    bitmap.map = words.data();
    potrace_param_t* const parameters = potrace_param_default();
    parameters->turdsize = 0;
    if (polygons) {
        parameters->alphamax = 0;
        parameters->opticurve = 0;
    }
    std::int64_t outlines = 0;
    for (auto _ : state) {
        potrace_state_t* const result = potrace_trace(parameters, &bitmap);
        outlines = 0;
        for (potrace_path_t* path = result->plist; path; path = path->next) ++outlines;
        potrace_state_free(result);
    }
    potrace_param_free(parameters);
    state.counters["Mpos/s"] = benchmark::Counter(static_cast<double>(from.runs.boundaries) / 1e6,
                                                  benchmark::Counter::kIsIterationInvariantRate);
    state.counters["outlines"] = static_cast<double>(outlines);
}

void peer_potrace_polygons(benchmark::State& s) { potrace(s, true); }
void peer_potrace(benchmark::State& s) { potrace(s, false); }
BENCHMARK(peer_potrace_polygons)
    ->Name("trace_cleaned/potrace_polygons")
    ->Arg(1)
    ->Arg(2)
    ->Arg(4)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(peer_potrace)->Name("trace_cleaned/potrace_curves")->Apply(a4);
#endif

#if VASKEL_BENCH_OPENCV
void peer_opencv_contours(benchmark::State& state) {
    const Input& from = input(static_cast<int>(state.range(0)));
    cv::setNumThreads(1);
    const cv::Mat image(from.page.height, from.page.width, CV_8UC1,
                        const_cast<std::uint8_t*>(from.page.pixels.data()));
    std::int64_t outlines = 0;
    for (auto _ : state) {
        std::vector<std::vector<cv::Point>> contours;
        cv::findContours(image, contours, cv::RETR_LIST, cv::CHAIN_APPROX_SIMPLE);
        outlines = static_cast<std::int64_t>(contours.size());
    }
    state.counters["Mpos/s"] = benchmark::Counter(static_cast<double>(from.runs.boundaries) / 1e6,
                                                  benchmark::Counter::kIsIterationInvariantRate);
    state.counters["outlines"] = static_cast<double>(outlines);
}
BENCHMARK(peer_opencv_contours)->Name("trace_uncleaned/opencv")->Apply(sizes);
#endif

}  // namespace

BENCHMARK_MAIN();
