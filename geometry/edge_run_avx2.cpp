// 32 edges at a time, told by the sides of their ends and one product form.
//
// Let a and b be the ways from an edge's first and second point to the point.
// While no difference wraps, x - px is a.x, y - py is a.y, cy - py is a.y - b.y
// and cx - px is a.x - b.x, so that the rule's comparison of products,
//   a.x (a.y - b.y) against a.y (a.x - b.x),
// is that of a.y b.x against a.x b.y: the same two terms have been taken off.
// An edge with x in its half-open span, whose a.x and b.x have different signs,
// crosses when the left side is less, or the other way round when it leads to
// the left, that is when a.x is below 0. That tells edges far above and below
// as well, whose ends' heights the rule asks first: they pass the point on the
// side on which both ends lie. Only where the point lies on an edge's line, so
// that the edge may hold it, nothing is told; such a block is tested edge by
// edge. For all others an edge's answer is one sign bit, and a block's their
// parity.
//
// Blocks that lie to one side of the point, or above it, are passed over, and of
// those below it the first and the last point tell the parity.

#if defined(__x86_64__)

#include <immintrin.h>

#include <cstdint>

#include "geometry/edge_run.h"
#include "geometry/edge_run_blocks.h"

#define VASKEL_AVX2 __attribute__((target("avx2"), always_inline)) inline

namespace Vaskel {
namespace {

// Within these, differences do not wrap.
constexpr int kLowest = -(1 << 30), kHighest = (1 << 30) - 1;
bool fits(int v) { return kLowest <= v && v <= kHighest; }

// Lanes hold x and y of four points in turns, also as bits of a mask.
constexpr unsigned kAllX = 0x55, kAllY = 0xAA;
VASKEL_AVX2 __m256i fourPoints(const WalkPoint* points) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(points));
}
VASKEL_AVX2 unsigned signs(__m256i lanes) {
    return static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(lanes)));
}
VASKEL_AVX2 bool has(unsigned bits, unsigned all) { return (bits & all) == all; }

// The 4 * groups edges that begin at points, or those of four whose x bit is in
// wanted: flips inside if an odd number of them cross. False when that cannot
// be told.
template <int groups>
VASKEL_AVX2 bool tellBlock(__m256i at, const WalkPoint* points, unsigned wanted, bool& inside) {
    constexpr int edges = 4 * groups;
    __m256i low = fourPoints(points + edges - 3), high = low;
    for (int i = 0; i < edges; i += 4) {
        low = _mm256_min_epi32(low, fourPoints(points + i));
        high = _mm256_max_epi32(high, fourPoints(points + i));
    }
    if constexpr (groups > 1) {
        const unsigned above = signs(_mm256_cmpgt_epi32(low, at));
        const unsigned below = signs(_mm256_cmpgt_epi32(at, high));
        if (has(above, kAllX) || has(below, kAllX) || has(above, kAllY)) return true;
        if (has(below, kAllY)) {
            const int x = _mm256_cvtsi256_si32(at);
            inside ^= (points[0].x > x) != (points[edges].x > x);
            return true;
        }
    }
    const __m256i wraps = _mm256_or_si256(_mm256_cmpgt_epi32(_mm256_set1_epi32(kLowest), low),
                                          _mm256_cmpgt_epi32(high, _mm256_set1_epi32(kHighest)));
    __m256i open = wraps, crossing = _mm256_setzero_si256();
    for (int i = 0; i < edges; i += 4) {
        const __m256i a = _mm256_sub_epi32(at, fourPoints(points + i));
        const __m256i b = _mm256_sub_epi32(at, fourPoints(points + i + 1));
        const __m256i left = _mm256_mul_epi32(_mm256_srli_epi64(a, 32), b);
        const __m256i right = _mm256_mul_epi32(a, _mm256_srli_epi64(b, 32));
        open = _mm256_or_si256(open, _mm256_cmpeq_epi64(left, right));
        const __m256i less = _mm256_cmpgt_epi64(right, left);
        const __m256i spanned = _mm256_xor_si256(a, b);
        crossing = _mm256_xor_si256(crossing, _mm256_and_si256(spanned, _mm256_xor_si256(less, a)));
    }
    if (!_mm256_testz_si256(open, open)) return false;
    inside ^= __builtin_parity(signs(crossing) & wanted) != 0;
    return true;
}

__attribute__((target("avx2"))) bool run(int x, int y, const PointRun& points, bool& inside) {
    const EdgeBlocks blocks(x, y, points);
    if (blocks.count <= 4 || !fits(x) || !fits(y)) return blocks.testEach(1, blocks.count, inside);
    const __m256i at = _mm256_set1_epi64x(static_cast<long long>(
        std::uint64_t{static_cast<std::uint32_t>(y)} << 32 | static_cast<std::uint32_t>(x)));
    int next = 1;  // the edge that ends at this point
    for (; next + 32 <= blocks.count; next += 32)
        if (!tellBlock<8>(at, blocks.points + next - 1, kAllX, inside) &&
            blocks.testEach(next, next + 32, inside))
            return true;
    for (; next < blocks.count; next += 4) {
        // The last block is a whole one too, in part seen before.
        const int seen = next + 4 > blocks.count ? next + 4 - blocks.count : 0;
        const unsigned fresh = kAllX << 2 * seen & kAllX;
        if (!tellBlock<1>(at, blocks.points + next - 1 - seen, fresh, inside) &&
            blocks.testEach(next, next + 4 - seen, inside))
            return true;
    }
    return false;
}

}  // namespace

const EdgeRunForm kEdgeRunAvx2 = {"avx2", run};

}  // namespace Vaskel

#endif
