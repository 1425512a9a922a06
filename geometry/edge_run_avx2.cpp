// 32 points at a time. The same tests as in the narrower form: bits only name
// edges.

#if defined(__x86_64__)

#include <immintrin.h>

#include <cstdint>

#include "geometry/edge_run.h"
#include "geometry/edge_run_blocks.h"

#define VASKEL_AVX2 __attribute__((target("avx2"), always_inline)) inline

namespace Vaskel {
namespace {

// One coordinate of 32 points; of each eight, the order is 0 1 4 5 2 3 6 7.
struct Lanes {
    __m256i at[4];
};

template <int select>
VASKEL_AVX2 Lanes lanesOf(const WalkPoint* points) {
    const auto* const from = reinterpret_cast<const __m256i*>(points);
    Lanes lanes;
    for (int i = 0; i < 4; ++i) {
        const __m256 a = _mm256_castsi256_ps(_mm256_loadu_si256(from + 2 * i));
        const __m256 b = _mm256_castsi256_ps(_mm256_loadu_si256(from + 2 * i + 1));
        lanes.at[i] = _mm256_castps_si256(_mm256_shuffle_ps(a, b, select));
    }
    return lanes;
}

// Packing leaves pairs of points in the order 0 2 4 6 8 .. 14 within the lower
// half of the register and 1 3 5 .. 15 in the upper one.
VASKEL_AVX2 PointBits bits(__m256i a, __m256i b, __m256i c, __m256i d) {
    const __m256i bytes = _mm256_packs_epi16(_mm256_packs_epi32(a, b), _mm256_packs_epi32(c, d));
    const __m128i even = _mm256_castsi256_si128(bytes);
    const __m128i odd = _mm256_extracti128_si256(bytes, 1);
    const int low = _mm_movemask_epi8(_mm_unpacklo_epi16(even, odd));
    const int high = _mm_movemask_epi8(_mm_unpackhi_epi16(even, odd));
    return static_cast<PointBits>(low) | static_cast<PointBits>(high) << 16;
}
VASKEL_AVX2 PointBits above(const Lanes& v, __m256i limit) {
    return bits(_mm256_cmpgt_epi32(v.at[0], limit), _mm256_cmpgt_epi32(v.at[1], limit),
                _mm256_cmpgt_epi32(v.at[2], limit), _mm256_cmpgt_epi32(v.at[3], limit));
}
VASKEL_AVX2 PointBits equal(const Lanes& v, __m256i value) {
    const __m256i a = _mm256_cmpeq_epi32(v.at[0], value), b = _mm256_cmpeq_epi32(v.at[1], value);
    const __m256i c = _mm256_cmpeq_epi32(v.at[2], value), d = _mm256_cmpeq_epi32(v.at[3], value);
    const __m256i any = _mm256_or_si256(_mm256_or_si256(a, b), _mm256_or_si256(c, d));
    return _mm256_testz_si256(any, any) ? 0 : bits(a, b, c, d);
}

// EdgeBlocks::testSides with four edges at a time: differences in 32 bits and
// products of them in 64, as there.
VASKEL_AVX2 bool testSides(const EdgeBlocks& blocks, int begin, PointBits near, bool& inside) {
    const __m256i at = _mm256_set1_epi64x(
        static_cast<long long>(std::uint64_t{static_cast<std::uint32_t>(blocks.y)} << 32 |
                               static_cast<std::uint32_t>(blocks.x)));
    while (near != 0) {
        const int group = __builtin_ctz(near) / 4 * 4;
        const int wanted = static_cast<int>(near >> group & 15);
        near &= ~(PointBits{15} << group);
        const WalkPoint* const to = blocks.points + begin + group;
        const WalkPoint* const from = blocks.backward ? to : to - 1;
        const __m256i p = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
        const __m256i c =
            _mm256_loadu_si256(reinterpret_cast<const __m256i*>(blocks.backward ? to - 1 : to));
        const __m256i edge = _mm256_sub_epi32(c, p), way = _mm256_sub_epi32(at, p);
        const __m256i left = _mm256_mul_epi32(way, _mm256_srli_epi64(edge, 32));
        const __m256i right = _mm256_mul_epi32(_mm256_srli_epi64(way, 32), edge);
        const __m256d equal = _mm256_castsi256_pd(_mm256_cmpeq_epi64(left, right));
        if ((_mm256_movemask_pd(equal) & wanted) != 0) return true;
        // To the left, cx < px, signs are the other way round: not less is more.
        const __m256d less = _mm256_castsi256_pd(_mm256_cmpgt_epi64(right, left));
        const __m256d leftwards =
            _mm256_castsi256_pd(_mm256_shuffle_epi32(_mm256_cmpgt_epi32(p, c), 0xA0));
        const int crossing = _mm256_movemask_pd(_mm256_xor_pd(less, leftwards));
        inside ^= __builtin_parity(static_cast<unsigned>(crossing & wanted)) != 0;
    }
    return false;
}

__attribute__((target("avx2"))) bool run(int x, int y, const PointRun& points, bool& inside) {
    constexpr int kBlock = 32;
    const EdgeBlocks blocks(x, y, points);
    const __m256i wideX = _mm256_set1_epi32(x), wideY = _mm256_set1_epi32(y);
    for (int next = 1, begin; next < blocks.count; next = begin + kBlock) {
        begin = next;
        PointBits fresh = ~PointBits{0};
        if (blocks.count - begin < kBlock) {
            if (blocks.count <= kBlock) return blocks.testEach(begin, blocks.count, inside);
            // The last block is a whole one too, in part seen before.
            const int whole = blocks.count - kBlock;
            fresh <<= begin - whole;
            begin = whole;
        }
        const WalkPoint* const from = blocks.points + begin;
        const WalkPoint& last = blocks.points[begin - 1];
        const Lanes xs = lanesOf<0x88>(from);
        const PointBits right = above(xs, wideX), at = equal(xs, wideX);
        const PointBits spanned = (right ^ EdgeBlocks::before(right, last.x > x)) & fresh;
        const PointBits upright = at & EdgeBlocks::before(at, last.x == x) & fresh;
        if ((spanned | upright) == 0) continue;
        const Lanes ys = lanesOf<0xDD>(from);
        const PointBits up = above(ys, wideY), level = equal(ys, wideY);
        const PointBits near = blocks.countFar(begin, spanned, ~(up | level), up, inside);
        if (testSides(blocks, begin, near, inside)) return true;
        if (blocks.testUprights(begin, upright)) return true;
    }
    return false;
}

}  // namespace

const EdgeRunForm kEdgeRunAvx2 = {"avx2", run};

}  // namespace Vaskel

#endif
