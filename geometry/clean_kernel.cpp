// The filter is the autocorrelation of a Lanczos kernel of order 2, sampled n
// times a unit to each side and brought to a sum of 16384.

#include "geometry/clean_kernel.h"

#include <algorithm>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "platform/orlune.h"
#include "util/libm.h"

namespace Vaskel {
namespace {

// The order of operations, and pi to nine digits, are part of the kernel.
double lanczos(double x) {
    constexpr double kPi = 3.14159265;
    if (x > -0.001 && x < 0.001) return 1.0;
    if (x >= 2.0 || x <= -2.0) return 0.0;
    const double u = x * kPi;
    return libm::sin(u / 2) * libm::sin(u) / (u * kPi * x * 0.5);
}

}  // namespace

// Why kFlatOrder: no w[i] exceeds w[0] in magnitude (Cauchy-Schwarz), so none
// of the weights exceeds 16384 w[0] / total, and total is the square of the sum
// of all f. These sums are 2n times the integrals of f^2 (0.8326) and of f
// (1.0098) over -2 .. 2, each off by no more than the function's variation,
// which is below 3: at n = 16384 the bound is 0.41, and it falls with 1/n.
[[gnu::cold]] std::vector<std::int32_t> cleanWeights(int n) {
    if (n >= kFlatOrder) return {};
    const auto half = static_cast<std::size_t>(cleanHalfLength(n));

    // f[k + 4n - 1] = f(k / 2n) for all k where it is not 0.
    std::vector<double> f(half + 1);
    for (std::size_t i = 0; i <= half; ++i) {
        const int k = static_cast<int>(i) - (4 * n - 1);
        f[i] = lanczos(k / (2.0 * n));
    }

    // w[i] sums f(k / 2n) f((k + i) / 2n) over ascending k. All sums grow side
    // by side, each in its own order.
    std::vector<double> w(half + 1, 0.0);
    for (std::size_t k = 0; k <= half; ++k)
        for (std::size_t i = 0; i <= half - k; ++i) w[i] += f[k] * f[k + i];

    double outer = 0.0;
    for (std::size_t i = 1; i <= half; ++i) outer += w[i];
    const double total = w[0] + 2 * outer;

    std::vector<std::int32_t> weights(half);
    for (std::size_t j = 0; j < half; ++j) weights[j] = Orlune::iround(w[half - j] * 16384 / total);
    return weights;
}

// The centre's tap, -2 sum w[i], fits in 16 bits while the sum is below 16384.
// Unrounded it is below 8192; the roundings of thousands of weights bring it to
// 9317 at order 8242, the most that was seen, which is looked at here rather
// than proved for all orders.
[[gnu::cold]] CleanKernel makeKernel(int n) {
    const std::vector<std::int32_t> all = cleanWeights(n);
    const auto first = std::find_if(all.begin(), all.end(), [](int w) { return w != 0; });
    CleanKernel kernel;
    kernel.weights.assign(first, all.end());
    if (kernel.weights.empty()) kernel.weights.push_back(0);
    kernel.reach = kernel.weights.size();
    int sum = 0;
    for (const std::int32_t weight : kernel.weights) sum += weight;
    if (sum > 16383 || sum < -16383) return kernel;
    const std::size_t length = 2 * kernel.reach + 1;
    kernel.taps.resize((length + kTapBlock - 1) / kTapBlock * kTapBlock);
    for (std::size_t i = 0; i < kernel.reach; ++i)
        kernel.taps[i] = kernel.taps[2 * kernel.reach - i] =
            static_cast<std::int16_t>(kernel.weights[i]);
    kernel.taps[kernel.reach] = static_cast<std::int16_t>(-2 * sum);
    return kernel;
}

void filterBlockPlain(const CleanKernel& kernel, const FilterBlock& block, WalkPoint* out) {
    for (std::size_t j = 0; j < block.count; ++j) {
        const std::size_t at = j * block.stride;
        out[j] = {filterSample(block.x + at, kernel.weights.data(), kernel.reach),
                  filterSample(block.y + at, kernel.weights.data(), kernel.reach)};
    }
}

#ifdef __SSE2__

namespace {

inline __m128i loadValues(const std::int32_t* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

// Writes how far each value lies from the first; false when one does not fit in
// 16 bits. Differences wrap as the filter's sums do.
bool narrowAll(const std::int32_t* values, std::size_t count, std::int16_t* out) {
    const auto first = static_cast<std::uint32_t>(values[0]);
    std::uint32_t beyond = 0;
    std::size_t i = 0;
    const __m128i base = _mm_set1_epi32(values[0]);
    const __m128i half = _mm_set1_epi32(0x8000);
    __m128i any = _mm_setzero_si128();
    for (; i + 8 <= count; i += 8) {
        const __m128i low = _mm_sub_epi32(loadValues(values + i), base);
        const __m128i high = _mm_sub_epi32(loadValues(values + i + 4), base);
        any = _mm_or_si128(any, _mm_or_si128(_mm_add_epi32(low, half), _mm_add_epi32(high, half)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_packs_epi32(low, high));
    }
    for (; i < count; ++i) {
        const std::uint32_t difference = static_cast<std::uint32_t>(values[i]) - first;
        beyond |= difference + 0x8000;
        out[i] = static_cast<std::int16_t>(difference);
    }
    const __m128i upper = _mm_srli_epi32(any, 16);
    const bool fits = _mm_movemask_epi8(_mm_cmpeq_epi32(upper, _mm_setzero_si128())) == 0xFFFF;
    return fits && beyond <= 0xFFFF;
}

inline __m128i loadTaps(const std::int16_t* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

// Four partial sums.
inline __m128i products(const std::int16_t* samples, const std::int16_t* taps, std::size_t count) {
    __m128i sum = _mm_madd_epi16(loadTaps(samples), loadTaps(taps));
    for (std::size_t i = kTapBlock; i < count; i += kTapBlock)
        sum = _mm_add_epi32(sum, _mm_madd_epi16(loadTaps(samples + i), loadTaps(taps + i)));
    return sum;
}

void filterNarrow(const CleanKernel& kernel, const FilterBlock& block, const std::int16_t* x,
                  const std::int16_t* y, WalkPoint* out) {
    const std::int16_t* const taps = kernel.taps.data();
    const std::size_t count = kernel.taps.size();
    const std::size_t outputs = block.count;
    const std::size_t stride = block.stride;
    const std::int32_t* centreX = block.x + kernel.reach;
    const std::int32_t* centreY = block.y + kernel.reach;
    const __m128i half = _mm_set1_epi32(8192);
    for (std::size_t j = 0; j < outputs; ++j) {
        const __m128i sumX = products(x, taps, count);
        const __m128i sumY = products(y, taps, count);
        // x0 y0 x1 y1 + x2 y2 x3 y3, then both halves of that.
        __m128i sum = _mm_add_epi32(_mm_unpacklo_epi32(sumX, sumY), _mm_unpackhi_epi32(sumX, sumY));
        sum = _mm_add_epi32(sum, _mm_unpackhi_epi64(sum, sum));
        sum = _mm_srai_epi32(_mm_add_epi32(sum, half), 14);
        sum = _mm_add_epi32(
            sum, _mm_unpacklo_epi32(_mm_cvtsi32_si128(*centreX), _mm_cvtsi32_si128(*centreY)));
        static_assert(sizeof(WalkPoint) == 8);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + j), sum);
        x += stride;
        y += stride;
        centreX += stride;
        centreY += stride;
    }
}

// The sums of four outputs, two samples apart: a tap pair to a multiply-add.
template <int pairs>
inline __m128i sumOfPairs(const std::int16_t* samples, const __m128i* taps) {
    __m128i sum = _mm_madd_epi16(loadTaps(samples), taps[0]);
#pragma GCC unroll 16
    for (int i = 1; i < pairs; ++i)
        sum = _mm_add_epi32(sum, _mm_madd_epi16(loadTaps(samples + 2 * i), taps[i]));
    return _mm_srai_epi32(_mm_add_epi32(sum, _mm_set1_epi32(8192)), 14);
}

inline void storeFour(WalkPoint* out, __m128i x, __m128i y) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi32(x, y));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 2), _mm_unpackhi_epi32(x, y));
}

// Filters in groups of eight with order 1, of four with order 2, the last of
// which may do some a second time; false where there are not enough for one. The
// taps, of which there is an odd number, are followed by a zero.
template <int order>
constexpr std::size_t kReach = order == 1 ? 6 : 13;

template <int order>
bool filterGroups(const CleanKernel& kernel, const FilterBlock& block, const std::int16_t* x,
                  const std::int16_t* y, WalkPoint* out) {
    constexpr int kPairs = static_cast<int>(kReach<order>) + 1;
    constexpr std::size_t kGroup = order == 1 ? 8 : 4;
    __m128i taps[kPairs];
    for (int i = 0; i < kPairs; ++i) {
        int pair;
        std::memcpy(&pair, kernel.taps.data() + 2 * i, sizeof pair);
        taps[i] = _mm_set1_epi32(pair);
    }
    const std::int32_t* const centreX = block.x + kernel.reach;
    const std::int32_t* const centreY = block.y + kernel.reach;
    if (block.count < kGroup) return false;
    for (std::size_t group = 0; group < block.count; group += kGroup) {
        const std::size_t j = std::min(group, block.count - kGroup);
        const std::size_t at = j * order;
        if constexpr (order == 1) {
            const __m128i evenX = sumOfPairs<kPairs>(x + at, taps);
            const __m128i oddX = sumOfPairs<kPairs>(x + at + 1, taps);
            const __m128i evenY = sumOfPairs<kPairs>(y + at, taps);
            const __m128i oddY = sumOfPairs<kPairs>(y + at + 1, taps);
            storeFour(out + j,
                      _mm_add_epi32(_mm_unpacklo_epi32(evenX, oddX), loadValues(centreX + at)),
                      _mm_add_epi32(_mm_unpacklo_epi32(evenY, oddY), loadValues(centreY + at)));
            storeFour(out + j + 4,
                      _mm_add_epi32(_mm_unpackhi_epi32(evenX, oddX), loadValues(centreX + at + 4)),
                      _mm_add_epi32(_mm_unpackhi_epi32(evenY, oddY), loadValues(centreY + at + 4)));
        } else {
            // Every second of eight centres.
            const auto centres = [](const std::int32_t* from) {
                const __m128 low = _mm_castsi128_ps(loadValues(from));
                const __m128 high = _mm_castsi128_ps(loadValues(from + 3));
                return _mm_castps_si128(_mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 2, 0)));
            };
            storeFour(out + j,
                      _mm_add_epi32(sumOfPairs<kPairs>(x + at, taps), centres(centreX + at)),
                      _mm_add_epi32(sumOfPairs<kPairs>(y + at, taps), centres(centreY + at)));
        }
    }
    return true;
}

}  // namespace

bool filterBlockFast(const CleanKernel& kernel, const FilterBlock& block, std::int16_t* narrow,
                     WalkPoint* out) {
    if (kernel.taps.empty()) return false;
    const std::size_t length = block.length(kernel.reach);
    std::int16_t* const x = narrow;
    std::int16_t* const y = narrow + length + kTapBlock;
    if (!narrowAll(block.x, length, x) || !narrowAll(block.y, length, y)) return false;
    bool done = false;
    if (kernel.reach == kReach<1> && block.stride == 1)
        done = filterGroups<1>(kernel, block, x, y, out);
    else if (kernel.reach == kReach<2> && block.stride == 2)
        done = filterGroups<2>(kernel, block, x, y, out);
    if (!done) filterNarrow(kernel, block, x, y, out);
    return true;
}

#else

bool filterBlockFast(const CleanKernel&, const FilterBlock&, std::int16_t*, WalkPoint*) {
    return false;
}

#endif

}  // namespace Vaskel
