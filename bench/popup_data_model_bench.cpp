// Choosing in a pop-up model: what a call costs without and with a listener,
// beside the bare signal.

#include <benchmark/benchmark.h>

#include "vaskel/util.h"

namespace {

constexpr int kValues[] = {1, 2, 3, 4, 5, 6, 7, 8, 0};
constexpr const char* kTexts[] = {"1", "2", "3", "4", "5", "6", "7", "8", nullptr};

void find(benchmark::State& state) {
    const Vaskel::PopupDataModel model(0, kValues, kTexts);
    int value = 0;
    for (auto _ : state) benchmark::DoNotOptimize(model.GetIndex(1 + (value++ & 7)));
}
BENCHMARK(find)->Name("popup_find_in_8/vaskel");

void select(benchmark::State& state, bool listening) {
    Vaskel::PopupDataModel model(0, kValues, kTexts);
    int heard = 0;
    if (listening) model.mChanged.connect([&] { ++heard; });
    int value = 0;
    for (auto _ : state) model.SetSelection(1 + (value++ & 1));
    benchmark::DoNotOptimize(heard);
}
BENCHMARK_CAPTURE(select, listening, true)->Name("popup_select_and_notify/vaskel");
BENCHMARK_CAPTURE(select, silent, false)->Name("popup_select/vaskel");

void bare(benchmark::State& state) {
    boost::signals2::signal<void()> changed;
    int heard = 0;
    changed.connect([&] { ++heard; });
    for (auto _ : state) changed();
    benchmark::DoNotOptimize(heard);
}
BENCHMARK(bare)->Name("popup_select_and_notify/signal_alone");

}  // namespace

BENCHMARK_MAIN();
