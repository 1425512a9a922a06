#include "geometry/edge_run.h"

#include <algorithm>
#include <atomic>
#include <iterator>

#include "geometry/edge_run_blocks.h"
#include "util/cpu.h"

#if defined(__x86_64__)
#include <emmintrin.h>
#endif

namespace Vaskel {
namespace {

bool runPlain(int x, int y, const PointRun& points, bool& inside) {
    for (int i = 1; i < points.count; ++i) {
        const WalkPoint &p = points[i - 1], &c = points[i];
        const EdgeAnswer answer = testEdge(x, y, p.x, p.y, c.x, c.y);
        if (answer == EdgeAnswer::kHoldsPoint) return true;
        if (answer == EdgeAnswer::kCrosses) inside = !inside;
    }
    return false;
}

#if defined(__x86_64__)

// One coordinate of 16 points.
struct Lanes {
    __m128i at[4];
};

template <int select>
inline Lanes lanesOf(const WalkPoint* points) {
    const auto load = [&](int i) {
        return _mm_castsi128_ps(_mm_loadu_si128(reinterpret_cast<const __m128i*>(points + 2 * i)));
    };
    Lanes lanes;
    for (int i = 0; i < 4; ++i)
        lanes.at[i] = _mm_castps_si128(_mm_shuffle_ps(load(2 * i), load(2 * i + 1), select));
    return lanes;
}
inline Lanes xOf(const WalkPoint* points) { return lanesOf<0x88>(points); }
inline Lanes yOf(const WalkPoint* points) { return lanesOf<0xDD>(points); }

inline PointBits bits(__m128i a, __m128i b, __m128i c, __m128i d) {
    const __m128i bytes = _mm_packs_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d));
    return static_cast<PointBits>(_mm_movemask_epi8(bytes));
}
inline PointBits above(const Lanes& v, __m128i limit) {
    return bits(_mm_cmpgt_epi32(v.at[0], limit), _mm_cmpgt_epi32(v.at[1], limit),
                _mm_cmpgt_epi32(v.at[2], limit), _mm_cmpgt_epi32(v.at[3], limit));
}
inline PointBits equal(const Lanes& v, __m128i value) {
    return bits(_mm_cmpeq_epi32(v.at[0], value), _mm_cmpeq_epi32(v.at[1], value),
                _mm_cmpeq_epi32(v.at[2], value), _mm_cmpeq_epi32(v.at[3], value));
}

bool runSse2(int x, int y, const PointRun& run, bool& inside) {
    constexpr int kBlock = 16;
    constexpr PointBits kAll = 0xFFFF;
    const EdgeBlocks blocks(x, y, run);
    const __m128i wideX = _mm_set1_epi32(x), wideY = _mm_set1_epi32(y);
    for (int next = 1, begin; next < blocks.count; next = begin + kBlock) {
        begin = next;
        PointBits fresh = kAll;
        if (blocks.count - begin < kBlock) {
            if (blocks.count <= kBlock) return blocks.testEach(begin, blocks.count, inside);
            // The last block is a whole one too, in part seen before.
            const int whole = blocks.count - kBlock;
            fresh = kAll << (begin - whole) & kAll;
            begin = whole;
        }
        const WalkPoint* const points = blocks.points + begin;
        const WalkPoint& last = blocks.points[begin - 1];
        const Lanes xs = xOf(points);
        const PointBits right = above(xs, wideX), at = equal(xs, wideX);
        const PointBits spanned = (right ^ EdgeBlocks::before(right, last.x > x)) & fresh;
        const PointBits upright = at & EdgeBlocks::before(at, last.x == x) & fresh;
        if ((spanned | upright) == 0) continue;
        const Lanes ys = yOf(points);
        const PointBits up = above(ys, wideY), level = equal(ys, wideY);
        const PointBits near = blocks.countFar(begin, spanned, ~(up | level), up, inside);
        if (blocks.testSides(begin, near, inside)) return true;
        if (blocks.testUprights(begin, upright)) return true;
    }
    return false;
}

#endif

#if defined(__x86_64__)
constexpr const EdgeRunForm* kForms[] = {&kEdgeRunPlain, &kEdgeRunSse2, &kEdgeRunAvx2};
const EdgeRunForm& bestForm() { return cpuLevel() >= CpuLevel::Avx2 ? kEdgeRunAvx2 : kEdgeRunSse2; }
#else
constexpr const EdgeRunForm* kForms[] = {&kEdgeRunPlain};
const EdgeRunForm& bestForm() { return kEdgeRunPlain; }
#endif

std::atomic<const EdgeRunForm*> gForced{nullptr};

}  // namespace

const EdgeRunForm kEdgeRunPlain = {"plain", runPlain};
#if defined(__x86_64__)
const EdgeRunForm kEdgeRunSse2 = {"sse2", runSse2};
#endif

std::span<const EdgeRunForm* const> edgeRunForms() {
    return {std::begin(kForms), std::find(std::begin(kForms), std::end(kForms), &bestForm()) + 1};
}

void forceEdgeRunForm(const EdgeRunForm* form) { gForced.store(form, std::memory_order_relaxed); }

const EdgeRunForm& chosenEdgeRunForm() {
    if (const EdgeRunForm* form = gForced.load(std::memory_order_relaxed)) return *form;
    // Not by the list of all, so that the plain form stays out of the library.
    static const EdgeRunForm& best = bestForm();
    return best;
}

}  // namespace Vaskel
