// Products of big integers: the rule, word by word, and all faster forms.

#include <doctest/doctest.h>

#include <boost/multiprecision/cpp_int.hpp>
#include <random>
#include <string>
#include <vector>

#include "encoding/bigint_multiply.h"
#include "tests/encoding/bigint_support.h"
#include "tests/encoding/literal_bigint.h"
#include "vaskel/encoding.h"

using Vaskel::bigint;

namespace {

using Literal = LiteralBigint<65536>;

Digits literalProduct(const Digits& a, const Digits& b) {
    Literal product(a);
    product.multiply(Literal(b));
    return product.digits();
}

// The digits that the rules treat apart, and some others.
const std::vector<unsigned short> kFew = {0, 1, 2, 255, 32768, 65534, 65535};

std::vector<Digits> rowsOfFew(std::size_t length) {
    std::vector<Digits> rows(1);
    for (std::size_t i = 0; i < length; ++i) {
        std::vector<Digits> longer;
        for (const Digits& row : rows)
            for (const unsigned short digit : kFew) {
                longer.push_back(row);
                longer.back().push_back(digit);
            }
        rows = std::move(longer);
    }
    return rows;
}

boost::multiprecision::cpp_int valueOf(const Digits& digits) {
    boost::multiprecision::cpp_int value;
    for (std::size_t i = digits.size(); i-- > 0;) value = value * 65536 + digits[i];
    return value;
}

}  // namespace

TEST_CASE("bigint: a factor's digits count in reverse order") {
    struct Row {
        const char* why;
        Digits a, b, product;
    };
    const Row kRows[] = {
        {"by zero", {1, 2, 3}, {}, {}},
        {"zero", {}, {1, 2, 3}, {}},
        {"by one digit", {1, 2, 3}, {2}, {2, 4, 6}},
        {"100000 * (65536 + 1)", {34464, 1}, {1, 1}, {34464, 34465, 1}},
        // 100000 * (1 + 2 * 65536) = 13107300000 = 0x3'0D41'86A0
        {"100000 * (digit 0 = 2, digit 1 = 1)", {34464, 1}, {2, 1}, {34464, 3393, 3}},
        {"a digit more where it is needed", {0, 32768}, {2, 0}, {0, 0, 0, 1}},
        {"a zero on top stays", {5, 1}, {0, 1}, {5, 1, 0}},
        {"zeros on top of the factor count lowest", {5, 1}, {1, 0}, {0, 5, 1}},
        {"a factor of zeros", {5, 1}, {0, 0, 0}, {0, 0, 0, 0}},
        {"zero with a length of two", {0, 0}, {7, 7}, {0, 0, 0}},
        {"one digit, a zero first", {5}, {0, 3}, {15}},
        {"one digit, zeros first", {5}, {0, 0, 3, 4}, {20, 15}},
        {"one digit, zeros only", {5}, {0, 0, 0}, {0}},
        {"the one digit 0", {0}, {3, 4, 5}, {0}},
    };
    for (const Row& row : kRows) {
        CAPTURE(std::string(row.why));
        REQUIRE(literalProduct(row.a, row.b) == row.product);
        bigint a = numberOf(row.a);
        const bigint b = numberOf(row.b);
        CHECK(digitsOf(a * b) == row.product);
        CHECK(&(a *= b) == &a);
        CHECK(digitsOf(a) == row.product);
        CHECK(digitsOf(b) == row.b);
    }
}

TEST_CASE("bigint: products of up to three digits by three follow the rule") {
    long compared = 0, wrong = 0;
    for (std::size_t n = 0; n <= 3; ++n)
        for (std::size_t m = 0; n + m <= 5 && m <= 3; ++m)
            for (const Digits& a : rowsOfFew(n))
                for (const Digits& b : rowsOfFew(m)) {
                    const Digits want = literalProduct(a, b);
                    const Digits got = digitsOf(numberOf(a) * numberOf(b));
                    ++compared;
                    if (got == want || ++wrong > 10) continue;
                    MESSAGE(shown(a) << " * " << shown(b) << ": got " << shown(got) << ", wanted "
                                     << shown(want));
                }
    CHECK(wrong == 0);
    CHECK(compared ==
          1 + 7 + 49 + 343 + (1 + 7 + 49 + 343) * 7 + (1 + 7 + 49 + 343) * 49 + (1 + 7 + 49) * 343);
}

TEST_CASE("bigint: longer products follow the rule, and are the value times the reversed one") {
    constexpr unsigned kSeed = 7310;
    std::mt19937 random(kSeed);
    for (int round = 0; round < 1500; ++round) {
        const Digits a = awkwardRow(random, 1 + random() % 90);
        const Digits b = awkwardRow(random, 1 + random() % 90);
        CAPTURE(shown(a));
        CAPTURE(shown(b));
        const Digits got = digitsOf(numberOf(a) * numberOf(b));
        CHECK(got == literalProduct(a, b));
        CHECK(valueOf(got) == valueOf(a) * valueOf(Digits(b.rbegin(), b.rend())));
    }
}

TEST_CASE("multiply: every form gives the plain form's digits") {
    constexpr unsigned kSeed = 7311;
    std::mt19937 random(kSeed);
    const std::size_t split = Vaskel::kSplitFrom;
    struct Size {
        std::size_t na, nb;
    };
    std::vector<Size> sizes = {{1, 1},
                               {5, 3},
                               {3, 5},
                               {split - 1, split - 1},
                               {split, split},
                               {split + 1, split + 1},
                               {2 * split + 1, 2 * split + 1},
                               {100, 100},
                               {127, 127},
                               {200, split},
                               {split, 200},
                               {199, 55},
                               {89, 55},
                               {144, 89},
                               {233, 144},
                               {301, 299}};
    for (int i = 0; i < 60; ++i) sizes.push_back({1 + random() % 130, 1 + random() % 130});
    for (const Vaskel::LimbLoops* loops : Vaskel::limbLoopForms()) {
        CAPTURE(loops->name);
        Vaskel::forceLimbLoops(loops);
        for (const auto& size : sizes) {
            const std::size_t na = size.na, nb = size.nb;
            CAPTURE(na);
            CAPTURE(nb);
            const Digits a = awkwardRow(random, 4 * na), b = awkwardRow(random, 4 * nb);
            // A known value behind what may be written.
            Digits want(4 * (na + nb)), got(want.size() + 8, 4711);
            Digits scratch(Vaskel::multiplyScratch(na, nb) + 8, 4712);
            Vaskel::multiplyRowsPlain(a.data(), a.size(), b.data(), b.size(), want.data());
            Vaskel::multiplyLimbs(a.data(), na, b.data(), nb, got.data(), scratch.data());
            for (std::size_t i = 0; i < 8; ++i) {
                CHECK(got[want.size() + i] == 4711);
                CHECK(scratch[scratch.size() - 1 - i] == 4712);
            }
            got.resize(want.size());
            CHECK((got == want));
        }
    }
    Vaskel::forceLimbLoops(nullptr);
}

TEST_CASE("limb loops: every form gives the plain form's digits at every length") {
    constexpr unsigned kSeed = 7312;
    std::mt19937 random(kSeed);
    for (const Vaskel::LimbLoops* loops : Vaskel::limbLoopForms()) {
        CAPTURE(loops->name);
        for (std::size_t limbs = 0; limbs < 40; ++limbs) {
            for (int round = 0; round < 40; ++round) {
                CAPTURE(limbs);
                const Digits a = awkwardRow(random, 4 * limbs + 3),
                             b = awkwardRow(random, 4 * limbs + 3);
                const Vaskel::Limb factor = Vaskel::loadLimb(awkwardRow(random, 4).data());
                const std::size_t at = random() % 4;  // rows lie anywhere
                Digits want = a, got = a;
                CHECK(loops->add(got.data() + at % 4 * (limbs != 0), b.data(),
                                 limbs - (limbs != 0)) ==
                      Vaskel::addLimbsPlain(want.data() + at % 4 * (limbs != 0), b.data(),
                                            limbs - (limbs != 0)));
                CHECK(loops->subtract(got.data(), b.data() + at % 4 * (limbs != 0),
                                      limbs - (limbs != 0)) ==
                      Vaskel::subtractLimbsPlain(want.data(), b.data() + at % 4 * (limbs != 0),
                                                 limbs - (limbs != 0)));
                CHECK(loops->addMultiple(got.data(), b.data(), limbs, factor) ==
                      Vaskel::addMultiplePlain(want.data(), b.data(), limbs, factor));
                CHECK(loops->subtractMultiple(got.data(), b.data(), limbs, factor) ==
                      Vaskel::subtractMultiplePlain(want.data(), b.data(), limbs, factor));
                CHECK((got == want));
                CHECK(loops->multiply(got.data() + at % 4 * (limbs != 0), limbs - (limbs != 0),
                                      factor) ==
                      Vaskel::multiplyPlain(want.data() + at % 4 * (limbs != 0),
                                            limbs - (limbs != 0), factor));
                CHECK((got == want));
            }
        }
    }
}

TEST_CASE("limb loops: the forced form is the one in use") {
    for (const Vaskel::LimbLoops* loops : Vaskel::limbLoopForms()) {
        Vaskel::forceLimbLoops(loops);
        CHECK(&Vaskel::limbLoops() == loops);
    }
    // A loop that counts its calls is called by the operators.
    static int calls = 0;
    static const Vaskel::LimbLoops counting = {
        "counting",
        [](Vaskel::Digit* a, const Vaskel::Digit* b, std::size_t limbs) {
            ++calls;
            return Vaskel::addLimbsPlain(a, b, limbs);
        },
        Vaskel::subtractLimbsPlain,
        Vaskel::addMultiplePlain,
        Vaskel::subtractMultiplePlain,
        Vaskel::multiplyPlain};
    Vaskel::forceLimbLoops(&counting);
    bigint a = numberOf(Digits(100, 1));
    a += a;
    CHECK(calls == 1);
    Vaskel::forceLimbLoops(nullptr);
    CHECK(&Vaskel::limbLoops() == Vaskel::limbLoopForms().back());
}
