#include "platform/orlune/arithmetic.h"

#include <cmath>
#include <limits>

namespace Orlune {
namespace {

__extension__ typedef __int128 Wide;
__extension__ typedef unsigned __int128 UnsignedWide;

constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max();

// The largest r with r * r <= value, for value up to 2^127.
std::int64_t floorRoot(UnsignedWide value) {
    // The double root lies within 2^-51 of the root in every rounding mode: less
    // than 2 off below 2^104, and at most 2^13 off up to 2^127, where one of
    // Newton's steps squares the relative error. Both leave a unit or two to
    // correct. Points of documents never need the step, which divides by 64 bits.
    auto root = static_cast<std::uint64_t>(std::sqrt(static_cast<double>(value)));
    if (value >> 104 != 0) root = static_cast<std::uint64_t>((root + value / root) / 2);
    while (UnsignedWide{root} * root > value) --root;
    while (UnsignedWide{root + 1} * (root + 1) <= value) ++root;
    return root > static_cast<std::uint64_t>(kHighest) ? kHighest : static_cast<std::int64_t>(root);
}

}  // namespace

int iround(double value) {
    // The truncation and the difference are exact, so that no rounding mode and
    // no sum such as value + 0.5 can move a result.
    if (value >= 2147483647.0) return std::numeric_limits<int>::max();
    if (value <= -2147483648.0) return std::numeric_limits<int>::min();
    if (value != value) return 0;
    const int whole = static_cast<int>(value);
    const double rest = value - whole;
    return whole + (rest >= 0.5) - (rest <= -0.5);
}

std::int64_t muldiv(std::int64_t a, std::int64_t b, std::int64_t c) {
    if (c == 0) return 0;
    const Wide quotient = Wide{a} * b / c;
    if (quotient < kLowest) return kLowest;
    if (quotient > kHighest) return kHighest;
    return static_cast<std::int64_t>(quotient);
}

int mulcom(int a, int b, int c, int d) {
    const std::int64_t left = std::int64_t{a} * b;
    const std::int64_t right = std::int64_t{c} * d;
    return (left > right) - (left < right);
}

std::int64_t mulsqrt(std::int64_t a, std::int64_t b) {
    const Wide product = Wide{a} * b;
    return product < 0 ? 0 : floorRoot(static_cast<UnsignedWide>(product));
}

std::int64_t mulsqrt(std::int64_t a, std::int64_t b, std::int64_t c, std::int64_t d) {
    // Each product lies within -2^126 .. 2^126; two positive ones may reach
    // 2^127, which only the unsigned type holds.
    const Wide first = Wide{a} * b, second = Wide{c} * d;
    if (first >= 0 && second >= 0)
        return floorRoot(static_cast<UnsignedWide>(first) + static_cast<UnsignedWide>(second));
    if (first < 0 && second < 0) return 0;
    const Wide sum = first + second;
    return sum < 0 ? 0 : floorRoot(static_cast<UnsignedWide>(sum));
}

}  // namespace Orlune
