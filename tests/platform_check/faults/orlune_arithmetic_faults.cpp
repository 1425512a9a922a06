// Faults of Orlune: arithmetic.

#include <climits>
#include <cmath>

#include "faults/faults.h"
#include "platform/orlune/arithmetic.h"

namespace Orlune {

int iround(double value) {
    static auto* const next = real<int(double)>("_ZN6Orlune6iroundEd");
    if (fault("iround-halves-to-even") && std::fabs(value) < 2e9)
        return static_cast<int>(std::nearbyint(value));
    if (fault("iround-adds-a-half") && std::fabs(value) < 2e9)
        return static_cast<int>(value < 0 ? value - 0.5 : value + 0.5);
    if (fault("iround-wraps") && std::fabs(value) < 1e18)
        return static_cast<int>(static_cast<unsigned>(std::llround(value)));
    if (fault("iround-follows-the-mode") && std::fabs(value) < 2e9 &&
        value != std::trunc(value) + 0.5)
        return static_cast<int>(std::lrint(value));
    return next(value);
}

std::int64_t muldiv(std::int64_t a, std::int64_t b, std::int64_t c) {
    static auto* const next =
        real<std::int64_t(std::int64_t, std::int64_t, std::int64_t)>("_ZN6Orlune6muldivElll");
    const std::int64_t product =
        static_cast<std::int64_t>(static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b));
    const bool small = std::llabs(a / 2) < INT_MAX && std::llabs(b / 2) < INT_MAX && c != 0;
    if (fault("muldiv-rounds-down") && small)
        return product / c - (product % c != 0 && (product < 0) != (c < 0) ? 1 : 0);
    if (fault("muldiv-has-64-bits") && c != 0 && c != -1) return product / c;
    if (fault("muldiv-by-zero-saturates") && c == 0) return a < 0 ? INT64_MIN : INT64_MAX;
    if (fault("muldiv-wraps") && (c == 1 || c == -1)) return product;
    return next(a, b, c);
}

int mulcom(int a, int b, int c, int d) {
    static auto* const next = real<int(int, int, int, int)>("_ZN6Orlune6mulcomEiiii");
    if (fault("mulcom-in-double")) {
        const double left = static_cast<double>(a) * b, right = static_cast<double>(c) * d;
        return (left > right) - (left < right);
    }
    return next(a, b, c, d);
}

std::int64_t mulsqrt(std::int64_t a, std::int64_t b) {
    static auto* const next =
        real<std::int64_t(std::int64_t, std::int64_t)>("_ZN6Orlune7mulsqrtEll");
    if (fault("mulsqrt-rounds") && std::fabs(static_cast<double>(a)) < 1e9)
        return a < 0 && b > 0
                   ? 0
                   : std::llround(std::sqrt(static_cast<double>(a) * static_cast<double>(b)));
    return next(a, b);
}

std::int64_t mulsqrt(std::int64_t a, std::int64_t b, std::int64_t c, std::int64_t d) {
    static auto* const next =
        real<std::int64_t(std::int64_t, std::int64_t, std::int64_t, std::int64_t)>(
            "_ZN6Orlune7mulsqrtEllll");
    const double sum = static_cast<double>(a) * static_cast<double>(b) +
                       static_cast<double>(c) * static_cast<double>(d);
    if (fault("mulsqrt-in-double") && sum >= 0 && sum < 1e37)
        return static_cast<std::int64_t>(std::ceil(std::sqrt(sum)));
    return next(a, b, c, d);
}

}  // namespace Orlune
