// The crossing of two segments: decided exactly, placed in double precision.

#include <cstdint>
#include <limits>

#include "geometry/products.h"
#include "platform/orlune.h"
#include "util/narrow.h"
#include "vaskel/geometry.h"

#if defined(__x86_64__)
#include <emmintrin.h>
#endif

namespace Vaskel {
namespace {

__extension__ typedef __int128 Wide;

// num / den to the nearest integer, halves away from zero as Orlune::iround
// has them; den is not 0. |num| and |den| stay below 2^126: see exactCrossing.
int roundedQuotient(Wide num, Wide den) {
    const bool negative = (num < 0) != (den < 0);
    if (num < 0) num = -num;
    if (den < 0) den = -den;
    const Wide quotient = (2 * num + den) / (2 * den);
    constexpr Wide highest = std::numeric_limits<std::int32_t>::max();
    if (negative) return static_cast<int>(quotient > highest + 1 ? -highest - 1 : -quotient);
    return static_cast<int>(quotient > highest ? highest : quotient);
}

// The crossing of the lines through both segments from the same formula in
// integers. Differences have 32 bits and coordinates too, so a determinant
// stays within 2^63 and a numerator within 2^96. False when the lines are
// parallel, which wrapped differences can make of segments that cross.
bool exactCrossing(int x1, int y1, Wide dx1, Wide dy1, int x3, int y3, Wide dx2, Wide dy2, int* x,
                   int* y) {
    const Wide c2 = y3 * dx2 - x3 * dy2;
    const Wide c1 = y1 * dx1 - x1 * dy1;
    const Wide d = dx2 * dy1 - dx1 * dy2;
    if (d == 0) return false;
    *x = roundedQuotient(dx1 * c2 - dx2 * c1, d);
    *y = roundedQuotient(dy1 * c2 - dy2 * c1, d);
    return true;
}

// False for not-a-number too.
bool roundsToInt(double value) { return value > -2147483648.5 && value < 2147483647.5; }

// The point as the rule has it. Long, nearly parallel segments: the terms of d
// round to the same double although they differ, or the quotient's error is
// larger than the plane; then the exact point stands.
[[gnu::noinline]] int placePlain(int x1, int y1, int x2, int y2, int x3, int y3, int x4, int y4,
                                 int* x, int* y) {
    const int dx1Int = difference(x1, x2), dy1Int = difference(y1, y2);
    const int dx2Int = difference(x3, x4), dy2Int = difference(y3, y4);
    const double dx1 = dx1Int, dy1 = dy1Int, dx2 = dx2Int, dy2 = dy2Int;
    const double c2 = y3 * dx2 - x3 * dy2;
    const double c1 = y1 * dx1 - x1 * dy1;
    const double d = dx2 * dy1 - dx1 * dy2;
    const double qx = (dx1 * c2 - dx2 * c1) / d;
    const double qy = (dy1 * c2 - dy2 * c1) / d;
    if (!roundsToInt(qx) || !roundsToInt(qy))
        return exactCrossing(x1, y1, dx1Int, dy1Int, x3, y3, dx2Int, dy2Int, x, y) ? 1 : 0;
    *x = Orlune::iround(qx);
    *y = Orlune::iround(qy);
    return 1;
}

#if defined(__x86_64__)

// Both divisions and both roundings at once, and no call: lane by lane the
// operations of the plain form in their order. The nearest integer is less than
// half away from every value that has one among the ints and is no half, and the
// difference is exact then; of all other values, not-a-number included, it is
// not, because those beyond the ints are converted to the lowest one. They are
// left to the plain form: which way a half goes is the host's.
int place(int x1, int y1, int x2, int y2, int x3, int y3, int x4, int y4, int* x, int* y) {
    const double dx1 = difference(x1, x2), dy1 = difference(y1, y2);
    const double dx2 = difference(x3, x4), dy2 = difference(y3, y4);
    const double c2 = y3 * dx2 - x3 * dy2;
    const double c1 = y1 * dx1 - x1 * dy1;
    const double d = dx2 * dy1 - dx1 * dy2;
    const __m128d q =
        _mm_div_pd(_mm_setr_pd(dx1 * c2 - dx2 * c1, dy1 * c2 - dy2 * c1), _mm_set1_pd(d));
    const __m128i nearest = _mm_cvtpd_epi32(q);
    const __m128d away = _mm_andnot_pd(_mm_set1_pd(-0.0), _mm_sub_pd(q, _mm_cvtepi32_pd(nearest)));
    if (_mm_movemask_pd(_mm_cmplt_pd(away, _mm_set1_pd(0.5))) != 3)
        return placePlain(x1, y1, x2, y2, x3, y3, x4, y4, x, y);
    *x = _mm_cvtsi128_si32(nearest);
    *y = _mm_cvtsi128_si32(_mm_srli_epi64(nearest, 32));
    return 1;
}

#else

int place(int x1, int y1, int x2, int y2, int x3, int y3, int x4, int y4, int* x, int* y) {
    return placePlain(x1, y1, x2, y2, x3, y3, x4, y4, x, y);
}

#endif

// Of which sign this is tells on which side of a line a point lies. Products of
// 32-bit integers lie within -2^62 + 2^31 .. 2^62, so that their difference
// stays in 64 bits, also one less.
std::int64_t side(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d) {
    return std::int64_t{a} * b - std::int64_t{c} * d;
}

// Below 0 when the signs of a and b differ: the first term when one is negative
// and the other is not, the second when one is above 0 and the other is not.
std::int64_t signsDiffer(std::int64_t a, std::int64_t b) { return (a ^ b) | ((a - 1) ^ (b - 1)); }

}  // namespace

int intcalc(int x1, int y1, int x2, int y2, int x3, int y3, int x4, int y4, int* x, int* y) {
    // Sides of P2 and P1 relative to line P3P4, then of P4 and P3 relative to
    // line P1P2. Different is enough: an end exactly on the other line counts
    // as a crossing, two collinear segments never do.
    const std::int64_t s2 =
        side(difference(x2, x3), difference(y2, y4), difference(x2, x4), difference(y2, y3));
    const std::int64_t s1 =
        side(difference(x1, x3), difference(y1, y4), difference(x1, x4), difference(y1, y3));
    const std::int64_t s4 =
        side(difference(x1, x4), difference(y2, y4), difference(x2, x4), difference(y1, y4));
    const std::int64_t s3 =
        side(difference(x1, x3), difference(y2, y3), difference(x2, x3), difference(y1, y3));
    // Both at once: which of them it is that fails is hard to guess.
    if ((signsDiffer(s1, s2) & signsDiffer(s3, s4)) >= 0) return 0;
    return place(x1, y1, x2, y2, x3, y3, x4, y4, x, y);
}

}  // namespace Vaskel
