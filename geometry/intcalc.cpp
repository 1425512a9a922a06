// The crossing of two segments: decided exactly, placed in double precision.

#include <cstdint>
#include <limits>

#include "geometry/products.h"
#include "platform/orlune.h"
#include "util/narrow.h"
#include "vaskel/geometry.h"

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
[[gnu::noinline]] bool exactCrossing(int x1, int y1, Wide dx1, Wide dy1, int x3, int y3, Wide dx2,
                                     Wide dy2, int* x, int* y) {
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

// Orlune::iround, for a value that rounds to an int. Whole part and rest are
// exact, so that the nearest integer is known without a call; which way a half
// goes is the host's.
int rounded(double value) {
    const auto whole = static_cast<std::int64_t>(value);
    const double rest = value - static_cast<double>(whole);
    if (rest == 0.5 || rest == -0.5) return Orlune::iround(value);
    return static_cast<int>(whole + (rest > 0.5) - (rest < -0.5));
}

}  // namespace

int intcalc(int x1, int y1, int x2, int y2, int x3, int y3, int x4, int y4, int* x, int* y) {
    // Sides of P2 and P1 relative to line P3P4, then of P4 and P3 relative to
    // line P1P2. Different is enough: an end exactly on the other line counts
    // as a crossing, two collinear segments never do.
    const int s2 = compareProducts(difference(x2, x3), difference(y2, y4), difference(x2, x4),
                                   difference(y2, y3));
    const int s1 = compareProducts(difference(x1, x3), difference(y1, y4), difference(x1, x4),
                                   difference(y1, y3));
    const int s4 = compareProducts(difference(x1, x4), difference(y2, y4), difference(x2, x4),
                                   difference(y1, y4));
    const int s3 = compareProducts(difference(x1, x3), difference(y2, y3), difference(x2, x3),
                                   difference(y1, y3));
    // Both at once: which of them it is that fails is hard to guess.
    if ((int{s1 == s2} | int{s3 == s4}) != 0) return 0;

    const int dx1Int = difference(x1, x2), dy1Int = difference(y1, y2);
    const int dx2Int = difference(x3, x4), dy2Int = difference(y3, y4);
    const double dx1 = dx1Int, dy1 = dy1Int, dx2 = dx2Int, dy2 = dy2Int;
    const double c2 = y3 * dx2 - x3 * dy2;
    const double c1 = y1 * dx1 - x1 * dy1;
    const double d = dx2 * dy1 - dx1 * dy2;
    const double qx = (dx1 * c2 - dx2 * c1) / d;
    const double qy = (dy1 * c2 - dy2 * c1) / d;
    if (!roundsToInt(qx) || !roundsToInt(qy)) {
        // Long, nearly parallel segments: the terms of d round to the same
        // double although they differ, or the quotient's error is larger than
        // the plane.
        return exactCrossing(x1, y1, dx1Int, dy1Int, x3, y3, dx2Int, dy2Int, x, y) ? 1 : 0;
    }
    *x = rounded(qx);
    *y = rounded(qy);
    return 1;
}

}  // namespace Vaskel
