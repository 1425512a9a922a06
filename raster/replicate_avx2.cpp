// Repetition in vectors. Permutations move whole pixels, so that the bits are
// those of the table form.

#if defined(__x86_64__)

#include <immintrin.h>

#include <cstring>

#include "raster/replicate.h"

#define VASKEL_AVX2 __attribute__((target("avx2")))

namespace Vaskel {
namespace {

VASKEL_AVX2 void run(const Replication& replication, const unsigned int* line, unsigned char* out) {
    if (!replication.dense) return kReplicateTable.run(replication, line, out);
    const std::uint32_t* const sources = replication.sources;
    std::size_t j = 0;
    // Eight sources are at most seven above the first one, and eight pixels are
    // read from there on, which must lie in the line.
    for (; j + 8 <= replication.count && sources[j] + std::size_t{8} <= replication.width; j += 8) {
        const std::uint32_t first = sources[j];
        const __m256i from = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(sources + j));
        const __m256i places = _mm256_sub_epi32(from, _mm256_set1_epi32(static_cast<int>(first)));
        const __m256i pixels = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(line + first));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + 4 * j),
                            _mm256_permutevar8x32_epi32(pixels, places));
    }
    for (; j < replication.count; ++j) std::memcpy(out + 4 * j, line + sources[j], 4);
}

}  // namespace

const ReplicateForm kReplicateAvx2 = {"avx2", run};

}  // namespace Vaskel

#endif
