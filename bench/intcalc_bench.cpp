// Where two segments meet: random pairs, the point wanted. The peers give it in
// double precision; CGAL decides exactly whether there is one, as intcalc does.

#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "bench/support/peers.h"
#include "vaskel/geometry.h"

namespace {

using namespace Bench;

constexpr std::size_t kPairs = 4096;

// Ends anywhere within the range: about a quarter of the pairs meet. With near,
// the second segment begins near the middle of the first one, and most do.
std::vector<SegmentPair> randomPairs(int range, bool near) {
    std::mt19937 random(13);
    std::uniform_int_distribution<int> any(-range, range);
    const auto point = [&] { return Vertex{any(random), any(random)}; };
    std::vector<SegmentPair> pairs(kPairs);
    for (SegmentPair& pair : pairs) {
        pair = {point(), point(), point(), point()};
        if (!near) continue;
        const Vertex middle{(pair.a.x + pair.b.x) / 2, (pair.a.y + pair.b.y) / 2};
        pair.d = {2 * middle.x - pair.c.x, 2 * middle.y - pair.c.y};
    }
    return pairs;
}

struct Input {
    const char* name;
    int range;
    bool near;
};
constexpr Input kInputs[] = {{"small", 1000, false},
                             {"page", 1 << 15, false},
                             {"large", 1 << 24, false},
                             {"crossing", 1 << 15, true}};

// Asks one pair an iteration, all of them in turn.
template <class Ask>
void ask(benchmark::State& state, const Input& input, Ask crossing) {
    const std::vector<SegmentPair> pairs = randomPairs(input.range, input.near);
    std::size_t i = 0;
    for (auto _ : state) benchmark::DoNotOptimize(crossing(pairs[i++ % kPairs]));
}

bool oursCrossing(const SegmentPair& p, int& x, int& y) {
    return Vaskel::intcalc(p.a.x, p.a.y, p.b.x, p.b.y, p.c.x, p.c.y, p.d.x, p.d.y, &x, &y) != 0;
}

template <bool (*crossing)(const SegmentPair&, Crossing&)>
void peer(benchmark::State& state, const Input& input) {
    ask(state, input, [](const SegmentPair& pair) {
        Crossing at{};
        const bool meet = crossing(pair, at);
        benchmark::DoNotOptimize(at);
        return meet;
    });
}

void registerAll() {
    using benchmark::RegisterBenchmark;
    for (const Input& input : kInputs) {
        const std::string work = std::string("intcalc_") + input.name;
        RegisterBenchmark((work + "/vaskel").c_str(), [input](benchmark::State& state) {
            ask(state, input, [](const SegmentPair& pair) {
                int x = 0, y = 0;
                const bool meet = oursCrossing(pair, x, y);
                benchmark::DoNotOptimize(x);
                benchmark::DoNotOptimize(y);
                return meet;
            });
        });
        RegisterBenchmark((work + "/boost").c_str(), peer<boostCrossing>, input);
#if VASKEL_BENCH_GEOS
        RegisterBenchmark((work + "/geos").c_str(), peer<geosCrossing>, input);
#endif
#if VASKEL_BENCH_CGAL
        RegisterBenchmark((work + "/cgal").c_str(), peer<cgalCrossing>, input);
#endif
    }
}

}  // namespace

int main(int argc, char** argv) {
    registerAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
