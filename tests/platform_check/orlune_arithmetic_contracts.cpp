// Orlune: integer arithmetic.

#include <cfenv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>

#include "check.h"
#include "platform/orlune/arithmetic.h"

namespace {

constexpr std::int64_t kMin = INT64_MIN;
constexpr std::int64_t kMax = INT64_MAX;
constexpr double kInf = std::numeric_limits<double>::infinity();

}  // namespace

TEST_CASE("Orlune::iround: the nearest integer") {
    struct Row {
        double value;
        int rounded;
    };
    const Row rows[] = {
        {0.0, 0},
        {-0.0, 0},
        {0.4, 0},
        {0.6, 1},
        {-0.4, 0},
        {-0.6, -1},
        {1e9 + 0.25, 1000000000},
        {-7.75, -8},
        {5e-324, 0},
        // Adding a half before cutting off gives 1 here.
        {0.49999999999999994, 0},
        {-0.49999999999999994, 0},
        {2147483646.4999998, 2147483646},
    };
    for (const Row& row : rows) {
        CAPTURE(row.value);
        CHECK(Orlune::iround(row.value) == row.rounded);
    }
}

TEST_CASE("Orlune::iround: exact halves go away from zero") {
    for (int i : {0, 1, 2, 3, 4, 5, 100, 101, 4194303, 4194304, 2147483646}) {
        CAPTURE(i);
        CHECK(Orlune::iround(i + 0.5) == i + 1);
        CHECK(Orlune::iround(-i - 0.5) == -i - 1);
    }
}

TEST_CASE("Orlune::iround: saturates to the 32-bit range, and not-a-number gives 0") {
    for (double value : {2147483647.0, 2147483647.5, 2147483648.0, 1e10, 1e300, kInf}) {
        CAPTURE(value);
        CHECK(Orlune::iround(value) == INT_MAX);
    }
    for (double value : {-2147483648.0, -2147483648.5, -2147483649.0, -1e10, -1e300, -kInf}) {
        CAPTURE(value);
        CHECK(Orlune::iround(value) == INT_MIN);
    }
    CHECK(Orlune::iround(-2147483647.5) == INT_MIN);
    CHECK(Orlune::iround(2147483646.5) == INT_MAX);
    CHECK(Orlune::iround(std::nan("")) == 0);
    CHECK(Orlune::iround(-std::nan("")) == 0);
}

TEST_CASE("Orlune::iround: whatever the rounding mode of the processor") {
    for (int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO, FE_TONEAREST}) {
        std::fesetround(mode);
        const int half = Orlune::iround(2.5), minus = Orlune::iround(-2.5);
        const int below = Orlune::iround(1.4), above = Orlune::iround(-1.6);
        std::fesetround(FE_TONEAREST);
        CAPTURE(mode);
        CHECK(half == 3);
        CHECK(minus == -3);
        CHECK(below == 1);
        CHECK(above == -2);
    }
}

TEST_CASE("Orlune::muldiv: a * b / c, the quotient truncated towards zero") {
    struct Row {
        std::int64_t a, b, c, quotient;
    };
    const Row rows[] = {
        {7, 3, 2, 10},
        {-7, 3, 2, -10},
        {7, -3, 2, -10},
        {7, 3, -2, -10},
        {-7, -3, 2, 10},
        {-7, -3, -2, -10},
        {1, 5, 7, 0},
        {-1, 5, 7, 0},
        {0, 5, 7, 0},
        {INT_MAX, INT_MAX, INT_MIN, -2147483646},  // (2^31 - 1)^2 / 2^31 is 2^31 - 2 + 2^-31
    };
    for (const Row& row : rows) {
        CAPTURE(row.a);
        CAPTURE(row.b);
        CAPTURE(row.c);
        CHECK(Orlune::muldiv(row.a, row.b, row.c) == row.quotient);
    }
}

TEST_CASE("Orlune::muldiv: the product has 128 bits") {
    CHECK(Orlune::muldiv(kMax, kMax, kMax) == kMax);
    CHECK(Orlune::muldiv(kMin, kMin, kMin) == kMin);
    CHECK(Orlune::muldiv(kMax, 1000, 1000) == kMax);
    CHECK(Orlune::muldiv(kMin, 1000, 1000) == kMin);
    CHECK(Orlune::muldiv(kMin, 3, -6) == INT64_C(4611686018427387904));
    CHECK(Orlune::muldiv(INT64_C(1) << 62, INT64_C(1) << 62, INT64_C(1) << 62) == INT64_C(1) << 62);
}

TEST_CASE("Orlune::muldiv: a divisor of 0 gives 0") {
    for (std::int64_t a : {INT64_C(0), INT64_C(1), INT64_C(-1), kMax, kMin})
        for (std::int64_t b : {INT64_C(0), INT64_C(5), kMin}) {
            CAPTURE(a);
            CAPTURE(b);
            CHECK(Orlune::muldiv(a, b, 0) == 0);
        }
}

TEST_CASE("Orlune::muldiv: a quotient beyond 64 bits gives the nearer end of the range") {
    CHECK(Orlune::muldiv(kMax, 2, 1) == kMax);
    CHECK(Orlune::muldiv(kMax, -2, 1) == kMin);
    CHECK(Orlune::muldiv(kMin, -1, 1) == kMax);
    CHECK(Orlune::muldiv(kMin, 1, -1) == kMax);
    CHECK(Orlune::muldiv(kMin, kMin, -1) == kMin);
    CHECK(Orlune::muldiv(kMin, kMin, 1) == kMax);
}

TEST_CASE("Orlune::mulcom: the order of the exact products") {
    struct Row {
        int a, b, c, d, order;
    };
    const Row rows[] = {
        {2, 3, 1, 6, 0},
        {2, 3, 1, 7, -1},
        {2, 3, 1, 5, 1},
        {-2, 3, 2, 3, -1},
        {-2, -3, 2, 3, 0},
        {0, INT_MIN, INT_MAX, 0, 0},
        {INT_MIN, INT_MIN, INT_MIN, INT_MIN, 0},
        {INT_MIN, INT_MIN, INT_MAX, INT_MAX, 1},
        {INT_MIN, INT_MAX, INT_MIN, INT_MIN, -1},
        {INT_MAX, INT_MAX, INT_MAX, INT_MAX - 1, 1},
        {INT_MIN, INT_MAX, INT_MAX, INT_MIN, 0},
        {65536, 65536, 0, 0, 1},            // 2^32: 0 in 32 bits
        {INT_MAX, INT_MAX, INT_MIN, 1, 1},  // a difference of products of more than 62 bits
        // Products that a double cannot tell apart: 2^62 - 2^32 + 1 and - 2^32.
        {2147483647, 2147483647, 2147483646, -2147483647 - 1, 1},
        {1073741825, 1073741823, 1073741824, 1073741824, -1},
        {94906267, 94906265, 94906266, 94906266, -1},
    };
    for (const Row& row : rows) {
        CAPTURE(row.a);
        CAPTURE(row.b);
        CAPTURE(row.c);
        CAPTURE(row.d);
        CHECK(Orlune::mulcom(row.a, row.b, row.c, row.d) == row.order);
        CHECK(Orlune::mulcom(row.c, row.d, row.a, row.b) == -row.order);
    }
}

TEST_CASE("Orlune::mulsqrt: the root of a * b, rounded down, a negative product gives 0") {
    struct Row {
        std::int64_t a, b, root;
    };
    const Row rows[] = {
        {0, 5, 0},
        {3, 4, 3},
        {4, 4, 4},
        {-4, -4, 4},
        {-2, 2, 0},
        {1, 1, 1},
        {15, 1, 3},
        {kMax, kMax, kMax},
        {kMax, kMax - 1, kMax - 1},  // n (n - 1) is below n^2 and not below (n - 1)^2
        {kMin, 1, 0},
        {INT64_C(94906267), INT64_C(94906265), INT64_C(94906265)},
        {INT64_C(4503599761588225), 1, 67108865},  // 67108865^2, and
        {INT64_C(4503599761588224), 1, 67108864},  // one below: equal to it in single precision
        {INT64_C(9223372030926249000), 1, INT64_C(3037000498)},  // 3037000499^2 is ...249001
        {INT64_C(9223372030926249001), 1, INT64_C(3037000499)},
    };
    for (const Row& row : rows) {
        CAPTURE(row.a);
        CAPTURE(row.b);
        CHECK(Orlune::mulsqrt(row.a, row.b) == row.root);
        CHECK(Orlune::mulsqrt(row.b, row.a) == row.root);
    }
}

TEST_CASE("Orlune::mulsqrt: the root of a * b + c * d, the sum exact") {
    CHECK(Orlune::mulsqrt(3, 3, 4, 4) == 5);
    CHECK(Orlune::mulsqrt(-3, -3, -4, -4) == 5);
    CHECK(Orlune::mulsqrt(1, 1, 1, 1) == 1);
    CHECK(Orlune::mulsqrt(-3, 3, 4, 4) == 2);  // root of 7
    CHECK(Orlune::mulsqrt(-5, 3, 2, 4) == 0);  // of -7
    CHECK(Orlune::mulsqrt(kMax, kMax, -kMax, kMax) == 0);
    CHECK(Orlune::mulsqrt(kMax, kMax, 0, 0) == kMax);
    CHECK(Orlune::mulsqrt(kMax, kMax, kMax, kMax) == kMax);  // 2^63 * 1.41 does not fit
    CHECK(Orlune::mulsqrt(kMin, kMin, kMin, kMin) == kMax);
    CHECK(Orlune::mulsqrt(kMin, kMax, kMax, kMin) == 0);
    // Each product alone fills 126 bits; their sum is 25.
    CHECK(Orlune::mulsqrt(INT64_C(1) << 62, INT64_C(1) << 62, 0, 7) == INT64_C(1) << 62);
    // The diagonal of the largest 32-bit box: sqrt(2) * (2^32 - 1).
    constexpr std::int64_t kSide = 4294967295;
    CHECK(Orlune::mulsqrt(kSide, kSide, kSide, kSide) == INT64_C(6074000998));
}
