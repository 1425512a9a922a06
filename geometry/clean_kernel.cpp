// The filter is the autocorrelation of a Lanczos kernel of order 2, sampled n
// times a unit to each side and brought to a sum of 16384.

#include "geometry/clean_kernel.h"

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
std::vector<std::int32_t> cleanWeights(int n) {
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

}  // namespace Vaskel
