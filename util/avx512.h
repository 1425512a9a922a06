// The intrinsics of AVX-512, without the warnings that GCC 12 has for its own header.

#ifndef UTIL_AVX512_H
#define UTIL_AVX512_H

// It takes what that leaves undefined on purpose for a slip, wherever it is inlined.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif

#include <immintrin.h>

namespace Vaskel {

// A vector whose lowest element is value; without cost, the others may be anything.
__attribute__((target("avx512f"))) inline __m128d lowestOf(double value) {
#if defined(__clang__)
    return _mm_set_sd(value);
#else
    __m128d vector;
    __asm__("" : "=v"(vector) : "0"(value));
    return vector;
#endif
}

}  // namespace Vaskel

#endif
