// Repetition in vectors. Permutations move whole pixels, so that the bits are
// those of the table form.

#if defined(__x86_64__)

#include <immintrin.h>

#include "raster/replicate.h"

#define VASKEL_AVX2 __attribute__((target("avx2")))

namespace Vaskel {
namespace {

// Of an eight's places, eight pixels are read from the first one on. The CPU is told
// of the next line besides, since it does not look beyond a page's end by itself;
// telling it never faults, wherever that may be.
VASKEL_AVX2 void run(const Replication& replication, const unsigned int* line, std::uintptr_t ahead,
                     unsigned char* out) {
    unsigned char* to = out;
    for (const EightSources& eight : replication.eights) {
        const unsigned int* const from = line + eight.first;
        _mm_prefetch(reinterpret_cast<const char*>(reinterpret_cast<std::uintptr_t>(from) + ahead),
                     _MM_HINT_T1);
        const __m256i places =
            _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(eight.places)));
        const __m256i pixels = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to),
                            _mm256_permutevar8x32_epi32(pixels, places));
        to += 32;
    }
    replicateFrom(8 * replication.eights.size(), replication, line, out);
}

}  // namespace

const ReplicateForm kReplicateAvx2 = {"avx2", run};

}  // namespace Vaskel

#endif
