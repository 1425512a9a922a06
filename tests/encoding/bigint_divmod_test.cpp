// Quotients and remainders of big integers, as callers see them.

#include <doctest/doctest.h>

#include <boost/multiprecision/cpp_int.hpp>
#include <chrono>
#include <random>
#include <string>
#include <vector>

#include "tests/encoding/bigint_support.h"
#include "tests/support/fake_host.h"
#include "vaskel/encoding.h"

using Vaskel::bigint;
using Access = Vaskel::BigintAccess;
using Lines = std::vector<std::string>;
using boost::multiprecision::cpp_int;

namespace {

const Lines kByZero = {"bigint::divmod >> division by 0"};
const std::string kNegative = "bigint::operator -= >> negative result!";

cpp_int valueOf(const Digits& digits) {
    cpp_int value;
    for (std::size_t i = digits.size(); i-- > 0;) value = value * 65536 + digits[i];
    return value;
}

Digits withTop(Digits row, unsigned short top) {
    row.back() = top;
    return row;
}

}  // namespace

TEST_CASE("divmod: quotient and remainder are those of the rule") {
    struct Row {
        const char* why;
        Digits dividend, divisor, quotient, remainder;
        std::size_t negatives;
    };
    const Row kRows[] = {
        {"7 by 10", {7}, {10}, {}, {7}, 0},
        {"zero", {}, {10}, {}, {}, 0},
        {"10 by 10 leaves nothing", {10}, {10}, {1}, {}, 0},
        {"13 by 10", {13}, {10}, {1}, {3}, 0},
        // 1000000 = 15 * 65536 + 16960, and 142857 = 2 * 65536 + 11785
        {"1000000 by 7", {16960, 15}, {7}, {11785, 2}, {1}, 0},
        {"two digits by two", {5, 9}, {1, 3}, {3}, {2}, 0},
        {"equal lengths, zeros stay", {5, 7, 9}, {5, 7, 9}, {1}, {0, 0}, 0},
        {"a shorter dividend", {1, 2}, {1, 2, 3}, {}, {1, 2}, 0},
        {"a remainder of zero may have a length", {0, 0, 6}, {0, 0, 3}, {2}, {0, 0}, 0},
        // The estimate for the second place is for [0 0]: 65535, and wraps.
        {"2^32 by 1", {0, 0, 1}, {1}, {65535, 0, 1}, {1, 65535}, 1},
        {"2^48 by 1", {0, 0, 0, 1}, {1}, {2, 65535, 0, 1}, {0, 0}, 1},
        {"2^80 by 1", {0, 0, 0, 0, 0, 1}, {1}, {1, 65535, 2, 65535, 0, 1}, {0, 0, 0}, 2},
        // A dividend with zeros on top: the digit is made for [0] above 1.
        {"one with a zero on top, by 1", {1, 0}, {1}, {65535}, {2, 65535}, 1},
        {"equal lengths with zeros on top", {5, 0}, {1, 0}, {65535}, {6, 65535}, 1},
        // 56959 times, and 25734 / 3 - 1 more for the equal top digits: 65536.
        {"a digit that is 0 again", {65431, 63414, 25734, 3}, {59214, 3}, {26496}, {63127, 0}, 0},
        // 10^18 is 0DE0 B6B3 A764 0000; 65535 / 10 is 6553.
        {"10^19 by 10",
         {0, 0x89E8, 0x2304, 0x8AC7},
         {10},
         {6553, 0xA764, 0xB6B3, 0x0DE0},
         {6, 65535},
         1},
        // 32769 * 65536 by 32769 * 65536 + 1, one place down: both have 32769 on
        // top, the digit below is 0, so that e is 0 and 65535 becomes 65534.
        {"the same digit on top", {7, 0, 32769}, {1, 32769}, {65534}, {8, 32768}, 0},
    };
    for (const Row& row : kRows) {
        CAPTURE(std::string(row.why));
        FakeHost host;
        const bigint dividend = numberOf(row.dividend), divisor = numberOf(row.divisor);
        bigint quotient(99), remainder(98);
        dividend.divmod(divisor, quotient, remainder);
        CHECK(digitsOf(quotient) == row.quotient);
        CHECK(digitsOf(remainder) == row.remainder);
        CHECK(host.takeDebugLines() == Lines(row.negatives, kNegative));
        CHECK(digitsOf(dividend / divisor) == row.quotient);
        CHECK(digitsOf(dividend % divisor) == row.remainder);
        bigint a = dividend;
        CHECK(&(a /= divisor) == &a);
        CHECK(digitsOf(a) == row.quotient);
        a = dividend;
        CHECK(&(a %= divisor) == &a);
        CHECK(digitsOf(a) == row.remainder);
        CHECK(host.takeDebugLines() == Lines(4 * row.negatives, kNegative));
    }
}

TEST_CASE("divmod: dividing by zero is reported and leaves the dividend") {
    for (const Digits& zero : {Digits{}, Digits{0}, Digits{0, 0, 0}}) {
        FakeHost host;
        const bigint dividend = numberOf({1, 2});
        bigint quotient(5), remainder;
        dividend.divmod(numberOf(zero), quotient, remainder);
        CHECK(digitsOf(quotient).empty());
        CHECK(digitsOf(remainder) == Digits{1, 2});
        CHECK(host.takeDebugLines() == kByZero);
        CHECK(digitsOf(dividend / numberOf(zero)).empty());
        CHECK(digitsOf(dividend % numberOf(zero)) == Digits{1, 2});
        CHECK(host.takeDebugLines() == Lines{kByZero[0], kByZero[0]});
    }
}

TEST_CASE("divmod: zeros on top of the divisor count only where no quotient is needed") {
    struct Row {
        const char* why;
        Digits dividend, divisor, quotient, remainder;
    };
    const Row kRows[] = {
        {"a shorter dividend", {9}, {2, 0}, {}, {9}},
        {"a dividend that is less with zeros of its own", {1, 0}, {2, 0}, {}, {1, 0}},
        {"as long and greater", {9, 1}, {2, 0}, {32772}, {1}},
        {"longer", {9, 1, 1}, {2, 0, 0}, {32772, 32768}, {1}},
        // 2 by 2 with a zero on top of the dividend: made for 65535, and wraps.
        {"as long and equal", {2, 0}, {2, 0}, {32767}, {4, 65535}},
    };
    for (const Row& row : kRows) {
        CAPTURE(std::string(row.why));
        FakeHost host;
        bigint quotient, remainder;
        numberOf(row.dividend).divmod(numberOf(row.divisor), quotient, remainder);
        CHECK(digitsOf(quotient) == row.quotient);
        CHECK(digitsOf(remainder) == row.remainder);
    }
}

TEST_CASE("divmod: operands and results may be the same objects") {
    const Digits dividend = {5, 6, 7, 8, 9}, divisor = {1, 2, 3};
    bigint quotient, remainder;
    numberOf(dividend).divmod(numberOf(divisor), quotient, remainder);
    const Digits q = digitsOf(quotient), r = digitsOf(remainder);

    bigint a = numberOf(dividend), b = numberOf(divisor), other;
    a.divmod(b, a, other);
    CHECK(digitsOf(a) == q);
    CHECK(digitsOf(other) == r);
    a = numberOf(dividend);
    a.divmod(b, other, a);
    CHECK(digitsOf(a) == r);
    CHECK(digitsOf(other) == q);
    a = numberOf(dividend);
    a.divmod(b, b, other);
    CHECK(digitsOf(b) == q);
    CHECK(digitsOf(other) == r);
    b = numberOf(divisor);
    a.divmod(b, other, b);
    CHECK(digitsOf(b) == r);
    b = numberOf(divisor);
    a.divmod(b, b, a);
    CHECK(digitsOf(b) == q);
    CHECK(digitsOf(a) == r);
    a = numberOf(dividend);
    a.divmod(a, a, other);  // one, and nothing of five digits less one
    CHECK(digitsOf(a) == Digits{1});
    CHECK(digitsOf(other) == Digits{0, 0, 0, 0});
    a = numberOf(dividend);
    const bigint& same = a;
    a /= same;
    CHECK(digitsOf(a) == Digits{1});
    a %= same;
    CHECK(digitsOf(a).empty());
}

TEST_CASE("bigint: an operand that is the object itself counts as copied first") {
    bigint a = numberOf({65535, 65535});
    a += a;
    CHECK(digitsOf(a) == Digits{65534, 65535, 1});
    const bigint& same = a;
    a -= same;
    CHECK(digitsOf(a) == Digits{0, 0});
    a = numberOf({3, 1});  // times 3 * 65536 + 1
    a *= a;
    CHECK(digitsOf(a) == Digits{3, 10, 3});
    for (const std::size_t length : {30u, 200u}) {
        a = numberOf(withTop(Digits(length, 5), 9));
        const bigint copy = a;
        const bigint product = a * copy;
        a *= a;
        CHECK(digitsOf(a) == digitsOf(product));
        a = copy;
        a += a;
        CHECK(digitsOf(a) == digitsOf(copy * 2));
    }
}

TEST_CASE(
    "divmod: dividends of up to two digits, and equal lengths, divide truly without zeros on top") {
    constexpr unsigned kSeed = 7320;
    std::mt19937 random(kSeed);
    FakeHost host;
    for (int round = 0; round < 20000; ++round) {
        const std::size_t length = round % 2 == 0 ? 1 + random() % 2 : 1 + random() % 30;
        Digits dividend = awkwardRow(random, length), divisor = awkwardRow(random, length);
        if (round % 2 == 0) divisor.resize(1 + random() % length);
        if (dividend.back() == 0) dividend.back() = 1;
        if (divisor.back() == 0) divisor.back() = 1;
        CAPTURE(shown(dividend));
        CAPTURE(shown(divisor));
        bigint quotient, remainder;
        numberOf(dividend).divmod(numberOf(divisor), quotient, remainder);
        CHECK(valueOf(digitsOf(quotient)) == valueOf(dividend) / valueOf(divisor));
        CHECK(valueOf(digitsOf(remainder)) == valueOf(dividend) % valueOf(divisor));
    }
    CHECK(host.takeDebugLines() == Lines{});
}

TEST_CASE("divmod: other divisions are true unless a known case says otherwise") {
    constexpr unsigned kSeed = 7321;
    std::mt19937 random(kSeed);
    int exact = 0, turned = 0, wrapped = 0;
    for (int round = 0; round < 6000; ++round) {
        // Small top digits make the cases likely.
        const std::size_t n = 1 + random() % 20;
        const auto top = static_cast<unsigned short>(random() % 2 == 0 ? 1 + random() % 60
                                                                       : 1 + random() % 65535);
        const Digits divisor = withTop(awkwardRow(random, n), top);
        Digits dividend = awkwardRow(random, n + 1 + random() % (round % 2 == 0 ? 20 : 2));
        if (dividend.back() == 0) dividend.back() = 1;
        FakeHost host;
        bigint quotient, remainder;
        numberOf(dividend).divmod(numberOf(divisor), quotient, remainder);
        const std::size_t reports = host.takeDebugLines().size();
        const cpp_int value = valueOf(dividend), by = valueOf(divisor);
        if (reports > 0) {
            ++wrapped;  // the first case: both results may be other ones
            continue;
        }
        // Without a wrap the remainder is true, and so is the quotient unless
        // what is left once has the divisor's top digit on top.
        CHECK(valueOf(digitsOf(remainder)) == value % by);
        const cpp_int trueQuotient = value / by;
        bool sameTop = false;
        for (std::size_t s = dividend.size() - n; s-- > 0;) {
            const cpp_int left = (value >> 16 * (s + 1)) % by * 65536 + dividend[s];
            sameTop = sameTop || (left >> 16 * n) == divisor.back();
        }
        if (valueOf(digitsOf(quotient)) == trueQuotient) {
            ++exact;
        } else {
            ++turned;
            CHECK(sameTop);
        }
    }
    CHECK(exact > 3000);
    CHECK(turned > 20);
    CHECK(wrapped > 100);
}

TEST_CASE("divmod: no operands make it wait") {
    const auto started = std::chrono::steady_clock::now();
    FakeHost host;
    Digits power(4000);
    power.back() = 1;
    for (const Digits& divisor :
         {Digits{1}, Digits{2}, Digits{10}, Digits{0, 1}, Digits{1, 1}, Digits(2000, 1),
          withTop(Digits(2000, 0), 1), Digits(2000, 65535)}) {
        bigint quotient, remainder;
        numberOf(power).divmod(numberOf(divisor), quotient, remainder);
        CHECK(quotient > bigint());
    }
    // Corrected step by step any of these would take years.
    CHECK(std::chrono::steady_clock::now() - started < std::chrono::seconds(60));
}

TEST_CASE("bigint: memory that ends leaves all operands as they were") {
    const Digits a = withTop(Digits(100, 65535), 65535), b = withTop(Digits(60, 7), 1);
    struct Row {
        const char* name;
        int failures;  // at least so many allocations
        void (*run)(bigint& a, bigint& b, bigint& c, bigint& d);
    };
    const Row kRows[] = {
        {"+=", 1, [](bigint& x, bigint& y, bigint&, bigint&) { x += y; }},
        {"+= shorter", 1, [](bigint& x, bigint& y, bigint&, bigint&) { y += x; }},
        {"*=", 1, [](bigint& x, bigint& y, bigint&, bigint&) { x *= y; }},
        {"*= digit", 1,
         [](bigint& x, bigint&, bigint&, bigint&) { x *= static_cast<unsigned short>(9); }},
        {"*= few", 0,
         [](bigint& x, bigint&, bigint& z, bigint&) {
             z *= z;
             x += z;
         }},
        {"=", 1, [](bigint& x, bigint& y, bigint&, bigint&) { y = x; }},
        {"divmod", 3, [](bigint& x, bigint& y, bigint& z, bigint& w) { x.divmod(y, z, w); }},
        {"/=", 2, [](bigint& x, bigint& y, bigint&, bigint&) { x /= y; }},
        {"%=", 2, [](bigint& x, bigint& y, bigint&, bigint&) { x %= y; }},
        {"leftshift", 1, [](bigint& x, bigint&, bigint&, bigint&) { Access::leftshift(x, 20); }},
        {"a + integer", 2, [](bigint& x, bigint&, bigint&, bigint&) { x += 5; }},
    };
    for (const Row& row : kRows) {
        CAPTURE(std::string(row.name));
        FakeHost host;
        int failures = 0;
        // The operands are made before the failing allocation counts.
        for (int n = 1;; ++n) {
            bigint x = numberOf(a), y = numberOf(b), z = numberOf({3, 4}), w = numberOf({5});
            bool failed = false;
            {
                FailingAllocation failing(n);
                try {
                    row.run(x, y, z, w);
                } catch (const std::bad_alloc&) {
                    failed = true;
                }
            }
            if (!failed) break;
            CHECK(digitsOf(x) == a);
            CHECK(digitsOf(y) == b);
            CHECK(digitsOf(w) == Digits{5});
            if (row.failures > 1) CHECK(digitsOf(z) == Digits{3, 4});
            ++failures;
            REQUIRE(n < 100);
        }
        CHECK(failures >= row.failures);
    }
}

TEST_CASE("bigint: a host that throws while it is told of an error changes nothing") {
    struct Row {
        const char* name;
        Digits a, b;
        void (*run)(bigint& a, bigint& b);
    };
    const Row kRows[] = {
        {"-= longer", {5}, {0, 1}, [](bigint& a, bigint& b) { a -= b; }},
        {"-= greater", {5, 1}, {7, 1}, [](bigint& a, bigint& b) { a -= b; }},
        {"divmod by zero", {5, 1}, {}, [](bigint& a, bigint& b) { a.divmod(b, a, b); }},
        {"divmod that wraps", {0, 0, 1}, {1}, [](bigint& a, bigint& b) { a.divmod(b, a, b); }},
        {"/= that wraps", {0, 0, 1}, {1}, [](bigint& a, bigint& b) { a /= b; }},
        {"+= negative", {5}, {1}, [](bigint& a, bigint&) { a += -1; }},
    };
    for (const Row& row : kRows) {
        CAPTURE(std::string(row.name));
        FakeHost host({.throwAtCall = 1});
        bigint a = numberOf(row.a), b = numberOf(row.b);
        CHECK_THROWS_AS(row.run(a, b), HostFailure);
        CHECK(digitsOf(a) == row.a);
        CHECK(digitsOf(b) == row.b);
    }
}
