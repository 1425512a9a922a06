// Random numbers: a bounded draw one at a time and in blocks, words, seeding.
// PCG-like stands for the small modern generators, written out here.

#include <benchmark/benchmark.h>

#include <boost/random/linear_congruential.hpp>
#include <boost/random/mersenne_twister.hpp>
#include <boost/random/uniform_int_distribution.hpp>
#include <boost/random/uniform_smallint.hpp>
#include <cstdint>
#include <random>
#include <vector>

#include "util/random.h"
#include "vaskel/util.h"

namespace {

// 64-bit congruential state, permuted to 32 bits.
class PcgLike {
 public:
    using result_type = std::uint32_t;
    explicit PcgLike(std::uint64_t seed) : mState(seed * 2 + 1) { operator()(); }
    static constexpr result_type min() { return 0; }
    static constexpr result_type max() { return 0xFFFFFFFF; }
    result_type operator()() {
        const std::uint64_t old = mState;
        mState = old * 6364136223846793005u + 1442695040888963407u;
        const auto mixed = static_cast<std::uint32_t>(((old >> 18) ^ old) >> 27);
        return std::rotr(mixed, static_cast<int>(old >> 59));
    }

 private:
    std::uint64_t mState;
};

constexpr int kBound = 1000;

// ---- A bounded draw --------------------------------------------------------------

void drawVaskel(benchmark::State& state) {
    Vaskel::Random random(42);
    for (auto _ : state) benchmark::DoNotOptimize(random.nextInt(kBound));
}
BENCHMARK(drawVaskel)->Name("bounded_draw/vaskel");

template <class Engine, class Distribution>
void drawPeer(benchmark::State& state) {
    Engine engine(42);
    Distribution below(0, kBound - 1);
    for (auto _ : state) benchmark::DoNotOptimize(below(engine));
}
using Uniform = std::uniform_int_distribution<int>;
BENCHMARK(drawPeer<std::minstd_rand, Uniform>)->Name("bounded_draw/minstd_rand");
BENCHMARK(drawPeer<std::mt19937, Uniform>)->Name("bounded_draw/mt19937");
BENCHMARK(drawPeer<PcgLike, Uniform>)->Name("bounded_draw/pcg_like");
BENCHMARK(drawPeer<boost::random::mt19937, boost::random::uniform_int_distribution<int>>)
    ->Name("bounded_draw/boost_mt19937");
BENCHMARK(drawPeer<boost::random::minstd_rand, boost::random::uniform_int_distribution<int>>)
    ->Name("bounded_draw/boost_minstd_rand");
BENCHMARK(drawPeer<boost::random::mt19937, boost::random::uniform_smallint<int>>)
    ->Name("bounded_draw/boost_smallint");

// ---- Blocks; the time is that of 1024 numbers ---------------------------------------

constexpr std::size_t kBlock = 1024;

void intsVaskel(benchmark::State& state) {
    Vaskel::Random random(42);
    std::vector<int> out(kBlock);
    for (auto _ : state) {
        random.nextInts(kBound, out.data(), kBlock);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(intsVaskel)->Name("1024_bounded/vaskel");

void bytesVaskel(benchmark::State& state) {
    Vaskel::Random random(42);
    std::vector<char> out(kBlock);
    for (auto _ : state) {
        random.nextBytes(out.data(), kBlock);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(bytesVaskel)->Name("1024_words/vaskel");

void doublesVaskel(benchmark::State& state) {
    Vaskel::Random random(42);
    std::vector<double> out(kBlock);
    for (auto _ : state) {
        random.nextDoubles(out.data(), kBlock);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(doublesVaskel)->Name("1024_doubles/vaskel");

template <class Engine>
void wordsPeer(benchmark::State& state) {
    Engine engine(42);
    std::vector<std::uint32_t> out(kBlock);
    for (auto _ : state) {
        for (std::uint32_t& word : out) word = static_cast<std::uint32_t>(engine());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(wordsPeer<std::minstd_rand>)->Name("1024_words/minstd_rand");
BENCHMARK(wordsPeer<std::mt19937>)->Name("1024_words/mt19937");
BENCHMARK(wordsPeer<boost::random::mt19937>)->Name("1024_words/boost_mt19937");
BENCHMARK(wordsPeer<PcgLike>)->Name("1024_words/pcg_like");

template <class Engine>
void intsPeer(benchmark::State& state) {
    Engine engine(42);
    Uniform below(0, kBound - 1);
    std::vector<int> out(kBlock);
    for (auto _ : state) {
        for (int& number : out) number = below(engine);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(intsPeer<std::minstd_rand>)->Name("1024_bounded/minstd_rand");
BENCHMARK(intsPeer<std::mt19937>)->Name("1024_bounded/mt19937");
BENCHMARK(intsPeer<PcgLike>)->Name("1024_bounded/pcg_like");

template <class Engine>
void doublesPeer(benchmark::State& state) {
    Engine engine(42);
    std::uniform_real_distribution<double> unit;
    std::vector<double> out(kBlock);
    for (auto _ : state) {
        for (double& number : out) number = unit(engine);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(doublesPeer<std::mt19937>)->Name("1024_doubles/mt19937");
BENCHMARK(doublesPeer<PcgLike>)->Name("1024_doubles/pcg_like");

// ---- Seeding; "and a draw" since some peers do their work then ------------------------

void seedVaskel(benchmark::State& state) {
    int seed = 0;
    for (auto _ : state) {
        Vaskel::Random random(seed++);
        benchmark::DoNotOptimize(random.nextInt(kBound));
    }
}
BENCHMARK(seedVaskel)->Name("seed_and_draw/vaskel");

void seedPlain(benchmark::State& state) {
    int seed = 0;
    std::uint32_t ring[Vaskel::kRingSize];
    for (auto _ : state) {
        Vaskel::fillRingPlain(seed++, ring);
        benchmark::DoNotOptimize(ring);
    }
}
BENCHMARK(seedPlain)->Name("seed_and_draw/vaskel_plain");

// The 32 words of a ring, each a multiplication and an addition, and nothing else.
void seedRing(benchmark::State& state) {
    int seed = 0;
    std::uint32_t ring[Vaskel::kRingSize];
    for (auto _ : state) {
        Vaskel::firstRound(seed++, ring);
        benchmark::DoNotOptimize(ring);
    }
}
BENCHMARK(seedRing)->Name("seed_and_draw/least_ring");

template <class Engine>
void seedPeer(benchmark::State& state) {
    std::uint32_t seed = 0;
    for (auto _ : state) {
        Engine engine(seed++);
        benchmark::DoNotOptimize(engine());
    }
}
BENCHMARK(seedPeer<std::minstd_rand>)->Name("seed_and_draw/minstd_rand");
BENCHMARK(seedPeer<std::mt19937>)->Name("seed_and_draw/mt19937");
BENCHMARK(seedPeer<boost::random::mt19937>)->Name("seed_and_draw/boost_mt19937");

}  // namespace

BENCHMARK_MAIN();
