// Memory of the images that contenders read and write.
//
// All read the same image and write their results to the same place, so that none
// pays for pages that it has to be given first, and places differ for none. Pages
// are large ones where the system has such, as it has for other large memory on
// most systems: small ones come to lie as chance will have it.

#ifndef BENCH_SUPPORT_IMAGES_H
#define BENCH_SUPPORT_IMAGES_H

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstring>
#include <random>
#include <span>

namespace Bench {

/// bytes of zeros that were written once; never given back.
void* newImage(std::size_t bytes);

/// Where the contenders' results go, one after the other: the same memory for all
/// images of up to mostBytes, which the first caller states for all.
void* resultImage(std::size_t mostBytes);

/// Enough noise that nothing can be guessed.
template <class Pixel>
std::span<const Pixel> noise(std::size_t pixels, unsigned seed) {
    auto* const made = static_cast<Pixel*>(newImage(pixels * sizeof(Pixel)));
    std::mt19937 random(seed);
    for (std::size_t i = 0; i < pixels; ++i) made[i] = static_cast<Pixel>(random());
    return {made, pixels};
}

/// Times run, once it has found its images' bytes wherever the caches hold them.
template <class Run>
void timed(benchmark::State& state, Run run) {
    run();
    for (auto _ : state) {
        run();
        benchmark::ClobberMemory();
    }
}

}  // namespace Bench

#endif
