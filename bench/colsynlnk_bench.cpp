// Chains of one to three links beside the bare matching calls with buffers of
// the caller's: what the chain itself costs. Sizes are pixels.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "embedded/profiles.h"
#include "platform/libiccprofile.h"
#include "vaskel/colour.h"

namespace {

constexpr std::uint32_t kRgb = 0x52474220, kLab = 0x4C616220, kCmyk = 0x434D594B;

// RGB to press CMYK to Lab to RGB, as far as links says.
struct Chain {
    explicit Chain(std::size_t links) {
        void* const profiles[] = {Embedded::makeSrgbProfile(),
                                  Embedded::openProfile(VASKEL_SAMPLE_DATA "/FOGRA39L_coated.icc"),
                                  Embedded::makeLabProfile(), Embedded::makeSrgbProfile()};
        for (std::size_t i = 0; i < 4; ++i) {
            if (i > 0 && i <= links)
                handles.push_back(LibICCProfile::MakeProfileLink(profiles[i - 1], profiles[i]));
        }
        for (void* profile : profiles) LibICCProfile::CloseProfile(profile);
    }
    ~Chain() {
        for (void* link : handles) LibICCProfile::DisposeProfileLink(link);
    }
    Chain(const Chain&) = delete;
    Chain& operator=(const Chain&) = delete;

    static constexpr std::uint32_t spaces[] = {kRgb, kCmyk, kLab, kRgb};
    std::vector<void*> handles;
};

std::vector<unsigned char> pixelsFor(const benchmark::State& state) {
    std::vector<unsigned char> pixels(4 * static_cast<std::size_t>(state.range(0)));
    std::mt19937 random(3);
    for (unsigned char& byte : pixels) byte = static_cast<unsigned char>(random());
    return pixels;
}

void ours(benchmark::State& state, std::size_t links) {
    const Chain made(links);
    Vaskel::colsynlnk chain;
    for (std::size_t i = 0; i < links; ++i)
        chain.addlink(made.handles[i], Chain::spaces[i], Chain::spaces[i + 1]);
    const std::vector<unsigned char> in = pixelsFor(state);
    std::vector<unsigned char> out(in.size());
    for (auto _ : state)
        if (chain.process(in.data(), out.data(), in.size() / 4) != 1)
            return state.SkipWithError("the chain refuses");
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void bareCalls(benchmark::State& state, std::size_t links) {
    const Chain made(links);
    const std::vector<unsigned char> in = pixelsFor(state);
    std::vector<unsigned char> out(in.size()), between[2] = {out, out};
    for (auto _ : state) {
        const unsigned char* from = in.data();
        for (std::size_t i = 0; i < links; ++i) {
            unsigned char* const to = i + 1 == links ? out.data() : between[i % 2].data();
            if (!LibICCProfile::MatchColours(made.handles[i], in.size() / 4, 8, Chain::spaces[i],
                                             from, Chain::spaces[i + 1], to))
                return state.SkipWithError("a link refuses");
            from = to;
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

}  // namespace

int main(int argc, char** argv) {
    for (std::size_t links = 1; links <= 3; ++links) {
        const std::string work = "links_" + std::to_string(links);
        for (const auto& [who, function] :
             {std::pair{"/vaskel", &ours}, {"/bare_calls", &bareCalls}})
            benchmark::RegisterBenchmark((work + who).c_str(), function, links)
                ->Arg(1000)
                ->Arg(100000)
                ->Unit(benchmark::kMicrosecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
