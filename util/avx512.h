// The intrinsics of AVX-512, without the warnings that GCC 12 has for its own header.

#ifndef UTIL_AVX512_H
#define UTIL_AVX512_H

// It takes what that leaves undefined on purpose for a slip, wherever it is inlined.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif

#include <immintrin.h>

#endif
