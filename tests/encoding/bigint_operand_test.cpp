// Integers as operands of big integers: which operator they choose, and what
// does not compile.

#include <doctest/doctest.h>

#include <climits>
#include <string>
#include <vector>

#include "tests/encoding/bigint_support.h"
#include "tests/support/fake_host.h"
#include "vaskel/encoding.h"

using Vaskel::bigint;
using Lines = std::vector<std::string>;

namespace {

enum Colour { kRed = 1 };
enum class Shape { kRound = 1 };

// clang-format off
template <class A, class B> concept Adds = requires(A a, B b) { a + b; };
template <class A, class B> concept Subtracts = requires(A a, B b) { a - b; };
template <class A, class B> concept Multiplies = requires(A a, B b) { a * b; };
template <class A, class B> concept Divides = requires(A a, B b) { a / b; };
template <class A, class B> concept TakesRest = requires(A a, B b) { a % b; };
template <class A, class B> concept AddsTo = requires(A a, B b) { a += b; };
template <class A, class B> concept SubtractsFrom = requires(A a, B b) { a -= b; };
template <class A, class B> concept MultipliesBy = requires(A a, B b) { a *= b; };
template <class A, class B> concept DividesBy = requires(A a, B b) { a /= b; };
template <class A, class B> concept LeavesRest = requires(A a, B b) { a %= b; };
template <class A, class B> concept Equals = requires(A a, B b) { a == b; };
template <class A, class B> concept Differs = requires(A a, B b) { a != b; };
template <class A, class B> concept Less = requires(A a, B b) { a < b; };
template <class A, class B> concept LessOrEqual = requires(A a, B b) { a <= b; };
template <class A, class B> concept Greater = requires(A a, B b) { a > b; };
template <class A, class B> concept GreaterOrEqual = requires(A a, B b) { a >= b; };

template <class A, class B>
constexpr int kArithmetic = Adds<A, B> + Subtracts<A, B> + Multiplies<A, B> + Divides<A, B> + TakesRest<A, B>;
template <class A, class B>
constexpr int kAssigning = AddsTo<A, B> + SubtractsFrom<A, B> + MultipliesBy<A, B> + DividesBy<A, B> + LeavesRest<A, B>;
template <class A, class B>
constexpr int kComparing = Equals<A, B> + Differs<A, B> + Less<A, B> + LessOrEqual<A, B> + Greater<A, B> + GreaterOrEqual<A, B>;
// clang-format on

template <class... T>
constexpr bool kTaken = ((kArithmetic<bigint, T> == 5 && kAssigning<bigint&, T> == 5 &&
                          std::is_constructible_v<bigint, T>)&&...);
static_assert(kTaken<int, unsigned, short, unsigned short, long, unsigned long, long long,
                     unsigned long long, signed char, unsigned char, bigint>);

template <class... T>
constexpr bool kRefused = ((kArithmetic<bigint, T> == 0 && kAssigning<bigint&, T> == 0 &&
                            !std::is_constructible_v<bigint, T>)&&...);
static_assert(kRefused<bool, char, wchar_t, char8_t, char16_t, char32_t, float, double, long double,
                       Colour, Shape>);
#ifdef __SIZEOF_INT128__
__extension__ using Wide = __int128;
__extension__ using UnsignedWide = unsigned __int128;
static_assert(kRefused<Wide, UnsignedWide>);  // added their lower half
#endif

template <class... T>
constexpr bool kRefusedOnTheLeft = ((kArithmetic<T, bigint> == 0) && ...);
static_assert(
    kRefusedOnTheLeft<int, unsigned, unsigned short, long long, bool, char, double, Colour>);

template <class... T>
constexpr bool kRefusedInComparisons =
    ((kComparing<bigint, T> == 0 && kComparing<T, bigint> == 0) && ...);
static_assert(
    kRefusedInComparisons<int, unsigned, unsigned short, long long, bool, char, double, Colour>);
static_assert(kComparing<bigint, bigint> == 6);

}  // namespace

TEST_CASE("bigint: integers of any size are operands") {
    const bigint a(100000);
    CHECK(digitsOf(a + 5) == Digits{34469, 1});
    CHECK(digitsOf(a - 34465) == Digits{65535});
    CHECK(digitsOf(a / 7) == Digits{14285});
    CHECK(digitsOf(a % 7) == Digits{5});
    CHECK(digitsOf(a + 5000000000) == Digits{30880, 10759, 1});  // 0x1'2A07'78A0
    CHECK(digitsOf(a / 100000ull) == Digits{1});
    CHECK(digitsOf(a % 99999L) == Digits{1});
    bigint b(7);
    b += static_cast<short>(3);
    b -= static_cast<unsigned char>(2);
    CHECK(digitsOf(b) == Digits{8});
    b /= 3u;
    CHECK(digitsOf(b) == Digits{2});
    b %= 2ll;
    CHECK(digitsOf(b).empty());
}

TEST_CASE("bigint: factors up to 65535 are one digit, greater ones whole numbers") {
    const bigint a = numberOf({1, 2, 3});
    // One digit: the length is kept. As a number, zero would make it zero.
    CHECK(digitsOf(a * 0) == Digits{0, 0, 0});
    CHECK(digitsOf(a * bigint(0)) == Digits{});
    CHECK(digitsOf(a * 0ull) == Digits{0, 0, 0});
    CHECK(digitsOf(a * 65535) == Digits{65535, 65534, 65534, 2});
    // A number of two digits, which count in reverse order: 65537 reads the
    // same both ways, 65536 is multiplied by as 1.
    CHECK(digitsOf(a * 65537) == Digits{1, 3, 5, 3});
    CHECK(digitsOf(a * 65536) == Digits{1, 2, 3, 0});
    CHECK(digitsOf(a * 100000) == digitsOf(a * bigint(100000)));
    CHECK(digitsOf(a * 100000) == Digits{1, 34466, 3395, 37857, 1});
    bigint b = a;
    b *= 0;
    CHECK(digitsOf(b) == Digits{0, 0, 0});
    b = a;
    b *= 100000;
    CHECK(digitsOf(b) == digitsOf(a * 100000));
}

TEST_CASE("bigint: a negative operand is reported and changes nothing") {
    FakeHost host;
    bigint a = numberOf({1, 2, 3});
    const Lines wanted = {"bigint >> negative operand: -5"};
    for (const bigint& result : {a + -5, a - -5, a * -5, a / -5, a % -5})
        CHECK(digitsOf(result) == Digits{1, 2, 3});
    CHECK(host.takeDebugLines() == Lines{wanted[0], wanted[0], wanted[0], wanted[0], wanted[0]});
    a += -5;
    CHECK(host.takeDebugLines() == wanted);
    a -= -5L;
    CHECK(host.takeDebugLines() == wanted);
    a *= static_cast<short>(-5);
    CHECK(host.takeDebugLines() == wanted);
    a /= static_cast<signed char>(-5);
    CHECK(host.takeDebugLines() == wanted);
    a %= -5ll;
    CHECK(host.takeDebugLines() == wanted);
    CHECK(digitsOf(a) == Digits{1, 2, 3});
    a += LLONG_MIN;
    CHECK(host.takeDebugLines() == Lines{"bigint >> negative operand: -9223372036854775808"});
}
