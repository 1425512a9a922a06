// Big integers: construction, comparison, sums, differences, products by a
// digit and shifts, from the rules.

#include <doctest/doctest.h>

#include <climits>
#include <string>
#include <vector>

#include "tests/encoding/bigint_support.h"
#include "tests/support/fake_host.h"
#include "vaskel/encoding.h"

using Vaskel::bigint;
using Access = Vaskel::BigintAccess;
using Lines = std::vector<std::string>;

namespace {

const Lines kNone;
const Lines kNegative = {"bigint::operator -= >> negative result!"};

}  // namespace

TEST_CASE("bigint: a value has as many digits as it needs") {
    struct Row {
        unsigned value;
        Digits digits;
    };
    const Row kRows[] = {
        {0, {}},
        {1, {1}},
        {65535, {65535}},
        {65536, {0, 1}},
        {100000, {34464, 1}},
        {131071, {65535, 1}},
        {4294967295u, {65535, 65535}},
    };
    for (const Row& row : kRows) {
        CAPTURE(row.value);
        const bigint number(row.value);
        CHECK(digitsOf(number) == row.digits);
        CHECK(static_cast<unsigned>(number) == row.value);
        CHECK(digitsOf(bigint(number)) == row.digits);
    }
    CHECK(digitsOf(bigint()).empty());
    CHECK(bigint(0u) == bigint());
}

TEST_CASE("bigint: other integer types keep all their digits") {
    CHECK(digitsOf(bigint(5)) == Digits{5});
    CHECK(digitsOf(bigint(static_cast<unsigned short>(7))) == Digits{7});
    CHECK(digitsOf(bigint(5000000000)) == Digits{61952, 10757, 1});  // 0x1'2A05'F200
    CHECK(digitsOf(bigint(ULLONG_MAX)) == Digits{65535, 65535, 65535, 65535});
    CHECK(digitsOf(bigint(LLONG_MAX)) == Digits{65535, 65535, 65535, 32767});
}

TEST_CASE("bigint: a negative value is reported and gives zero") {
    FakeHost host;
    CHECK(digitsOf(bigint(-1)).empty());
    CHECK(digitsOf(bigint(LLONG_MIN)).empty());
    CHECK(host.takeDebugLines() == Lines{"bigint >> negative operand: -1",
                                         "bigint >> negative operand: -9223372036854775808"});
}

TEST_CASE("bigint: more than two digits do not convert to an unsigned int") {
    FakeHost host;
    CHECK(static_cast<unsigned>(numberOf({1, 2, 3})) == 4294967295u);
    CHECK(host.takeDebugLines() == Lines{"bigint::operator uns32 >> overflow"});
    // Zeros on top count.
    CHECK(static_cast<unsigned>(numberOf({5, 0, 0})) == 4294967295u);
    CHECK(host.takeDebugLines().size() == 1);
    CHECK(static_cast<unsigned>(numberOf({5, 0})) == 5);
    CHECK(static_cast<unsigned>(numberOf({0})) == 0);
    CHECK(host.takeDebugLines() == kNone);
}

TEST_CASE("bigint: comparison goes by length, then from the top digit down") {
    struct Row {
        const char* why;
        Digits a, b;
        int order;
    };
    const Row kRows[] = {
        {"zeros are equal", {}, {}, 0},
        {"zero is less", {}, {1}, -1},
        {"one digit", {5}, {7}, -1},
        {"equal", {5, 7}, {5, 7}, 0},
        {"the top digit decides", {9, 1}, {1, 2}, -1},
        {"below an equal top digit", {3, 9, 9}, {4, 9, 9}, -1},
        {"the middle one decides", {9, 1, 5}, {1, 2, 5}, -1},
        {"length first", {65535}, {0, 1}, -1},
        {"a zero on top makes greater", {5, 0}, {65535}, 1},
        {"a zero on top makes different", {5, 0}, {5}, 1},
        {"a zero with a length is not zero", {0}, {}, 1},
    };
    for (const Row& row : kRows) {
        CAPTURE(std::string(row.why));
        for (const bool turned : {false, true}) {
            const bigint a = numberOf(turned ? row.b : row.a), b = numberOf(turned ? row.a : row.b);
            const int order = turned ? -row.order : row.order;
            CHECK((a == b) == (order == 0));
            CHECK((a != b) == (order != 0));
            CHECK((a < b) == (order < 0));
            CHECK((a <= b) == (order <= 0));
            CHECK((a > b) == (order > 0));
            CHECK((a >= b) == (order >= 0));
        }
    }
}

TEST_CASE("bigint: a sum carries through both operands and gets a digit if it needs one") {
    struct Row {
        const char* why;
        Digits a, b, sum;
    };
    const Row kRows[] = {
        {"zero and zero", {}, {}, {}},
        {"zero and something", {}, {4, 5}, {4, 5}},
        {"something and zero", {4, 5}, {}, {4, 5}},
        {"no carry", {1, 2}, {3, 4}, {4, 6}},
        {"a carry between", {65535, 1}, {1, 1}, {0, 3}},
        {"a carry on top", {65535}, {1}, {0, 1}},
        {"a carry through the longer left", {65535, 65535, 7}, {1}, {0, 0, 8}},
        {"a carry through the longer right", {1}, {65535, 65535, 7}, {0, 0, 8}},
        {"a carry out of the longer one", {65535, 65535}, {1}, {0, 0, 1}},
        {"a carry out of the longer right", {1}, {65535, 65535}, {0, 0, 1}},
        {"zeros on top stay", {1, 0, 0}, {1}, {2, 0, 0}},
        {"zeros on top of the right count", {1}, {1, 0}, {2, 0}},
        {"across limbs of four digits",
         {65535, 65535, 65535, 65535, 65535},
         {65535, 65535, 65535, 65535, 65535},
         {65534, 65535, 65535, 65535, 65535, 1}},
    };
    for (const Row& row : kRows) {
        CAPTURE(std::string(row.why));
        bigint a = numberOf(row.a);
        const bigint b = numberOf(row.b);
        CHECK(digitsOf(a + b) == row.sum);
        CHECK(&(a += b) == &a);
        CHECK(digitsOf(a) == row.sum);
        CHECK(digitsOf(b) == row.b);
    }
    // Ten digits fill the first step of growth; the eleventh needs another.
    bigint ten = numberOf(Digits(10, 65535));
    CHECK(digitsOf(ten += bigint(1)) == Digits{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1});
}

TEST_CASE("bigint: a difference loses one zero on top, and reports where it goes below zero") {
    struct Row {
        const char* why;
        Digits a, b, difference;
        Lines lines;
    };
    const Row kRows[] = {
        {"zero less zero", {}, {}, {}, kNone},
        {"something less zero", {4, 5}, {}, {4, 5}, kNone},
        {"no borrow", {5, 6}, {1, 2}, {4, 4}, kNone},
        {"65536 - 65535", {0, 1}, {65535}, {1}, kNone},
        {"2^32 - 4294967295 keeps a zero", {0, 0, 1}, {65535, 65535}, {1, 0}, kNone},
        {"itself leaves zeros", {1, 2, 3}, {1, 2, 3}, {0, 0}, kNone},
        {"one digit of itself is gone", {9}, {9}, {}, kNone},
        {"a zero on top is lost by nothing", {5, 0}, {}, {5}, kNone},
        {"5 - 7 wraps", {5}, {7}, {65534}, kNegative},
        {"wraps through all digits", {0, 0, 5}, {1, 0, 6}, {65535, 65535, 65534}, kNegative},
        {"wraps and loses a zero",
         {0, 1, 5},
         {1, 1, 65535 - 65530},
         {65535, 65535, 65535},
         kNegative},
        {"a longer one is refused", {5}, {0, 1}, {5}, kNegative},
        {"zero less something is refused", {}, {1}, {}, kNegative},
        {"zeros on top make it longer", {5}, {1, 0}, {5}, kNegative},
        {"a zero with a length less one", {0}, {1}, {65535}, kNegative},
    };
    for (const Row& row : kRows) {
        CAPTURE(std::string(row.why));
        FakeHost host;
        bigint a = numberOf(row.a);
        const bigint b = numberOf(row.b);
        CHECK(digitsOf(a - b) == row.difference);
        CHECK(host.takeDebugLines() == row.lines);
        CHECK(&(a -= b) == &a);
        CHECK(digitsOf(a) == row.difference);
        CHECK(host.takeDebugLines() == row.lines);
    }
}

TEST_CASE("bigint: a product by one digit carries, and by 0 keeps its length") {
    struct Row {
        const char* why;
        Digits a;
        unsigned short factor;
        Digits product;
    };
    const Row kRows[] = {
        {"zero stays", {}, 7, {}},
        {"by one", {1, 2, 3}, 1, {1, 2, 3}},
        {"no carry", {1, 2}, 3, {3, 6}},
        {"a carry between", {40000, 1}, 2, {14464, 3}},
        {"a carry on top", {40000}, 2, {14464, 1}},
        {"the greatest", {65535, 65535}, 65535, {1, 65535, 65534}},
        {"by 0 keeps the length", {1, 2, 3}, 0, {0, 0, 0}},
        {"zeros on top stay", {1, 0}, 5, {5, 0}},
        {"across limbs",
         {65535, 65535, 65535, 65535, 65535, 1},
         2,
         {65534, 65535, 65535, 65535, 65535, 3}},
    };
    for (const Row& row : kRows) {
        CAPTURE(std::string(row.why));
        bigint a = numberOf(row.a);
        CHECK(digitsOf(a * row.factor) == row.product);
        CHECK(&(a *= row.factor) == &a);
        CHECK(digitsOf(a) == row.product);
    }
    bigint ten = numberOf(Digits(10, 65535));
    ten *= static_cast<unsigned short>(65535);
    CHECK(digitsOf(ten) ==
          Digits{1, 65535, 65535, 65535, 65535, 65535, 65535, 65535, 65535, 65535, 65534});
}

TEST_CASE("bigint: shifts move whole digits") {
    struct Row {
        Digits a;
        int by;
        Digits left, right;
    };
    const Row kRows[] = {
        {{}, 3, {}, {}},
        {{0}, 3, {0}, {}},
        {{7}, 1, {0, 7}, {}},
        {{7, 8, 9}, 2, {0, 0, 7, 8, 9}, {9}},
        {{7, 8, 9}, 3, {0, 0, 0, 7, 8, 9}, {}},
        {{7, 8, 9}, 0, {7, 8, 9}, {7, 8, 9}},
        {{7, 8, 9}, -1, {7, 8, 9}, {7, 8, 9}},
        {{0, 0}, 1, {0, 0, 0}, {0}},
        {{1}, 11, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, {}},
    };
    for (const Row& row : kRows) {
        CAPTURE(shown(row.a));
        CAPTURE(row.by);
        bigint left = numberOf(row.a), right = left;
        Access::leftshift(left, row.by);
        Access::rightshift(right, row.by);
        CHECK(digitsOf(left) == row.left);
        CHECK(digitsOf(right) == row.right);
    }
}

TEST_CASE("bigint: copies are independent of what they were made from") {
    bigint a = numberOf({1, 2, 3});
    const bigint b = a;
    a += a;
    CHECK(digitsOf(b) == Digits{1, 2, 3});
    bigint c;
    c = a;
    a *= static_cast<unsigned short>(2);
    CHECK(digitsOf(c) == Digits{2, 4, 6});
    bigint& same = c;
    c = same;
    CHECK(digitsOf(c) == Digits{2, 4, 6});
    c = bigint();
    CHECK(digitsOf(c).empty());
}
