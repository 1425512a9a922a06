// The embedded platform's calls that engines make once a point or a text, beside
// the standard library's nearest.

#include <benchmark/benchmark.h>
#include <uriparser/Uri.h>
#include <utf8cpp/utf8.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "platform/orlune.h"

namespace {

constexpr std::size_t kValues = 1024;

std::vector<double> doubles() {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> any(-1e6, 1e6);
    std::vector<double> values(kValues);
    for (double& value : values) value = any(random);
    return values;
}

std::vector<int> integers(int bits) {
    std::mt19937 random(2);
    std::vector<int> values(kValues + 4);
    for (int& value : values) value = static_cast<int>(random()) >> (32 - bits);
    return values;
}

template <class Body>
void each(benchmark::State& state, Body body) {
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(body(i));
        i = (i + 1) % kValues;
    }
}

std::string url() {
    std::string text;
    for (int i = 0; i < 20; ++i) text += "Volumes/a disk \xC3\xA9/";
    return text;
}

void registerAll() {
    using benchmark::RegisterBenchmark;
    using benchmark::State;
    RegisterBenchmark("iround/vaskel", [](State& state) {
        const std::vector<double> values = doubles();
        each(state, [&](std::size_t i) { return Orlune::iround(values[i]); });
    });
    RegisterBenchmark("iround/std_lround", [](State& state) {
        const std::vector<double> values = doubles();
        each(state, [&](std::size_t i) { return std::lround(values[i]); });
    });
    RegisterBenchmark("mulcom/vaskel", [](State& state) {
        const std::vector<int> v = integers(31);
        each(state,
             [&](std::size_t i) { return Orlune::mulcom(v[i], v[i + 1], v[i + 2], v[i + 3]); });
    });
    for (const int bits : {16, 32})
        RegisterBenchmark(("mulsqrt_" + std::to_string(bits) + "_bits/vaskel").c_str(),
                          [bits](State& state) {
                              const std::vector<int> v = integers(bits);
                              each(state, [&](std::size_t i) {
                                  return Orlune::mulsqrt(v[i], v[i], v[i + 1], v[i + 1]);
                              });
                          });
    RegisterBenchmark("mulsqrt_16_bits/std_hypot", [](State& state) {
        const std::vector<int> v = integers(16);
        each(state, [&](std::size_t i) {
            return static_cast<std::int64_t>(
                std::hypot(static_cast<double>(v[i]), static_cast<double>(v[i + 1])));
        });
    });
    RegisterBenchmark("muldiv/vaskel", [](State& state) {
        const std::vector<int> v = integers(31);
        each(state, [&](std::size_t i) { return Orlune::muldiv(v[i], v[i + 1], v[i + 2] | 1); });
    });
    RegisterBenchmark("Ticks/vaskel", [](State& state) {
        each(state, [](std::size_t) { return Orlune::Clock::Ticks(); });
    });
    RegisterBenchmark("url/vaskel", [](State& state) {
        const std::string text = url();
        std::vector<char> out(3 * text.size() + 1);
        each(state, [&](std::size_t) {
            return Orlune::UTF8ToURLEncoding(text.c_str(), out.data(), out.size());
        });
        state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
    });
    RegisterBenchmark("url/uriparser", [](State& state) {
        const std::string text = url();
        std::vector<char> out(3 * text.size() + 1);
        each(state, [&](std::size_t) {
            return uriEscapeA(text.c_str(), out.data(), URI_FALSE, URI_FALSE);
        });
        state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
    });
    RegisterBenchmark("utf16/vaskel", [](State& state) {
        const std::string text = url();
        std::vector<wchar_t> out(text.size() + 1);
        each(state, [&](std::size_t) {
            return Orlune::UTF8ToUni16Char(text.c_str(), out.data(), out.size());
        });
        state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
    });
    RegisterBenchmark("utf16/utfcpp", [](State& state) {
        const std::string text = url();
        std::vector<wchar_t> out(text.size() + 1);
        each(state, [&](std::size_t) {
            return utf8::utf8to16(text.begin(), text.end(), out.data()) - out.data();
        });
        state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
    });
}

}  // namespace

int main(int argc, char** argv) {
    registerAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
}
