// The forms of the division in base 65536: digit by digit beside the literal
// loops, blocks of digits beside digit by digit, and the true division that
// blocks are made of, by halves and by rows.

#include <doctest/doctest.h>

#include <random>
#include <string>
#include <vector>

#include "encoding/bigint_divide.h"
#include "encoding/bigint_divide_short.h"
#include "encoding/bigint_multiply.h"
#include "encoding/bigint_row_divisor.h"
#include "tests/encoding/bigint_support.h"
#include "tests/encoding/literal_division.h"

namespace {

int gNegatives = 0;

using DivideRows = std::size_t (*)(const unsigned short* divisor, std::size_t n,
                                   unsigned short* rest, std::size_t length,
                                   unsigned short* quotient, void (*report)());

Vaskel::DivideCounts gCounts;  // of byBlocks

constexpr DivideRows kByDigits = Vaskel::divideRowsPlain, kChosen = Vaskel::divideRows,
                     kShort = Vaskel::divideRowsShort,
                     kByBlocks = [](const unsigned short*divisor, std::size_t n,
                                    unsigned short*rest, std::size_t length,
                                    unsigned short*quotient, void (*report)()) {
                         return Vaskel::divideRowsByBlocks(divisor, n, rest, length, quotient,
                                                           report, &gCounts);
                     };

// Division by rows; what is above the remainder has to be zero.
Division byRows(const Digits& dividend, const Digits& divisor, DivideRows divide) {
    Division result;
    Digits rest(dividend.size() + Vaskel::kDivideSpare);
    std::copy(dividend.begin(), dividend.end(), rest.begin());
    result.quotient.resize(dividend.size() - divisor.size() + 1);
    gNegatives = 0;
    const std::size_t left = divide(divisor.data(), divisor.size(), rest.data(), dividend.size(),
                                    result.quotient.data(), [] { ++gNegatives; });
    if (Vaskel::trimmedCount(rest.data() + left, rest.size() - left) != 0) return {};
    result.remainder.assign(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(left));
    result.quotient.resize(Vaskel::trimmedCount(result.quotient.data(), result.quotient.size()));
    result.negatives = gNegatives;
    return result;
}

Digits product(const Digits& a, const Digits& b) {
    Digits out(a.size() + b.size());
    Vaskel::multiplyRowsPlain(a.data(), a.size(), b.data(), b.size(), out.data());
    return out;
}

Digits awkwardDivisor(std::mt19937& random, std::size_t n) {
    Digits divisor = awkwardRow(random, n);
    if (divisor.back() == 0 || random() % 3 == 0)
        divisor.back() = static_cast<unsigned short>(random() % 2 == 0 ? 1 + random() % 3
                                                                       : 1 + random() % 65535);
    return divisor;
}

// Any, or a multiple of divisor, or a number beside one.
Digits awkwardDividend(std::mt19937& random, const Digits& divisor, std::size_t longer) {
    if (random() % 3 != 0 || longer == 0) return awkwardRow(random, divisor.size() + longer);
    Digits row = product(divisor, awkwardRow(random, longer));
    if (random() % 2 == 0) Vaskel::carryInto(row.data(), row.size(), 1);
    if (random() % 3 == 0) Vaskel::borrowFrom(row.data(), row.size(), 1);
    return row;
}

// Puts every form of the long loops to use in turn.
template <class Body>
void withAllLoops(Body body) {
    for (const Vaskel::LimbLoops* loops : Vaskel::limbLoopForms()) {
        CAPTURE(loops->name);
        Vaskel::forceLimbLoops(loops);
        body(*loops);
    }
    Vaskel::forceLimbLoops(nullptr);
}

}  // namespace

TEST_CASE("divide: digit by digit gives the literal loops' results in base 65536") {
    constexpr unsigned kSeed = 7301;
    std::mt19937 random(kSeed);
    int compared = 0, wrapped = 0, turned = 0, wrong = 0;
    for (int round = 0; round < 30000; ++round) {
        // Great top digits keep the corrections few, the same ones above make
        // estimates of two digits.
        Digits divisor = awkwardDivisor(random, 1 + random() % 4);
        if (random() % 4 != 0) divisor.back() = static_cast<unsigned short>(0xFFFF - random() % 40);
        Digits dividend = awkwardDividend(random, divisor, random() % 4);
        // Now and then the dividend's upper digits are just less than the divisor:
        // estimates have two digits then, and corrections take their time.
        const bool close = round % 200 == 0 && dividend.size() > divisor.size();
        if (close) {
            std::copy(divisor.rbegin(), divisor.rend(), dividend.rbegin());
            Vaskel::borrowFrom(dividend.data() + dividend.size() - divisor.size(), divisor.size(),
                               1);
        }
        Division want;
        if (!literally<65536>(dividend, divisor, close ? 300000 : 2000, want)) continue;
        ++compared;
        wrapped += want.negatives != 0;
        const Division got = byRows(dividend, divisor, kByDigits);
        // A true quotient, times the divisor, and the remainder make the dividend.
        Digits back = product(want.quotient.empty() ? Digits{0} : want.quotient, divisor);
        back.resize(dividend.size() + 2);
        Digits rest = want.remainder;
        rest.resize(back.size());
        Vaskel::addDigits(back.data(), rest.data(), back.size());
        back.resize(dividend.size());
        turned += want.negatives == 0 && back != dividend;
        if (got == want || ++wrong > 10) continue;
        MESSAGE(shown(dividend) << " by " << shown(divisor) << ": got " << shown(got) << ", wanted "
                                << shown(want));
    }
    MESSAGE(compared << " compared, " << wrapped << " wrapped, " << turned << " turned");
    CHECK(wrong == 0);
    CHECK(compared > 10000);
    CHECK(wrapped > 100);
    CHECK(turned > 20);
}

TEST_CASE("divide: blocks of digits are those that come one at a time") {
    constexpr unsigned kSeed = 7303;
    std::mt19937 random(kSeed);
    withAllLoops([&](const Vaskel::LimbLoops&) {
        gCounts = {};
        int wrong = 0;
        for (int round = 0; round < 12000; ++round) {
            const Digits divisor = awkwardDivisor(random, 1 + random() % 40);
            const Digits dividend = awkwardDividend(random, divisor, random() % 60);
            const Division want = byRows(dividend, divisor, kByDigits);
            const Division got = byRows(dividend, divisor, kByBlocks);
            if (got == want || ++wrong > 10) continue;
            MESSAGE(shown(dividend) << " by " << shown(divisor) << ": got " << shown(got)
                                    << ", wanted " << shown(want));
        }
        CHECK(wrong == 0);
        CHECK(gCounts.regular > 100000);
        CHECK(gCounts.wrapped > 50000);
        CHECK(gCounts.single > 50000);
        CHECK(gCounts.stopped > 1000);
    });
}

TEST_CASE("divide: so they are where rows are divided by halves") {
    constexpr unsigned kSeed = 7304;
    std::mt19937 random(kSeed);
    gCounts = {};
    for (int round = 0; round < 60; ++round) {
        CAPTURE(round);
        const Digits divisor = awkwardDivisor(random, 100 + random() % 600);
        const Digits dividend = awkwardDividend(random, divisor, 100 + random() % 900);
        const Division want = byRows(dividend, divisor, kByDigits);
        const Division got = byRows(dividend, divisor, kByBlocks);
        CHECK((got == want));
    }
    CHECK(gCounts.regular > 5000);
    CHECK(gCounts.wrapped > 5000);
}

TEST_CASE("divide: divisors of up to four digits give the digits that come one at a time") {
    constexpr unsigned kSeed = 7307;
    std::mt19937 random(kSeed);
    int wrong = 0, wrapped = 0, endsWrapped = 0;
    for (int round = 0; round < 60000; ++round) {
        Digits divisor = awkwardDivisor(random, 1 + random() % Vaskel::kShortDivisor);
        // Powers of the base are their own kind: their remainders are zero.
        if (random() % 16 == 0) {
            std::fill(divisor.begin(), divisor.end(), static_cast<unsigned short>(0));
            divisor.back() = 1;
        }
        const Digits dividend = awkwardDividend(random, divisor, random() % 40);
        const Division want = byRows(dividend, divisor, kByDigits);
        wrapped += want.negatives > 0;
        endsWrapped += want.remainder.size() > divisor.size() + 2 && want.remainder.back() == 65535;
        const Division got = byRows(dividend, divisor, kShort);
        if (got == want || ++wrong > 10) continue;
        MESSAGE(shown(dividend) << " by " << shown(divisor) << ": got " << shown(got) << ", wanted "
                                << shown(want));
    }
    CHECK(wrong == 0);
    CHECK(wrapped > 10000);
    CHECK(endsWrapped > 3000);
}

// The first pair of places where every rest wraps has n + 3 digits. Below the B - 1 on top
// of its rest may then stand a 1 instead of a 0, by divisors that are nearly B^n.
TEST_CASE("divide: short divisors wrap in pairs from three digits more than theirs on") {
    struct Row {
        Digits dividend, divisor;
        std::size_t place;  // the first of such a pair
    };
    const Row rows[] = {
        {{0, 0xFFFF, 0x4FF3, 0xBDD2, 0x7621, 0xB009, 0xFFFF, 0x89DE, 0xFFFF, 0x422C, 0xFFFF},
         {0xFFFF, 0xFFFF, 0xFFFF},
         1},
        {{1, 0, 0, 0, 0xFFFF, 0xFFFF, 0xBFFE, 0x7FFF, 1, 0, 0, 0, 1}, {0x8000, 0xFFFF, 0xFFFF}, 4},
        {{0, 0xFFFF, 1, 0xFFFF, 0x7D51, 0xFFFD, 0xFFFF, 0xFFFE, 0x82AB, 1, 0xFFFF, 0xFFFF, 0, 1, 1},
         {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF},
         3},
        {{0, 0xFFFF, 1, 0xFFFF, 0x82AA, 0x7D57, 0xFFFC, 2, 0x82AB, 1, 0xFFFF, 0xFFFF, 0, 1, 1},
         {1, 0xFFFF, 0xFFFF, 0xFFFF},
         3},
    };
    for (const Row& row : rows) {
        const std::size_t n = row.divisor.size(), top = row.place + n + 2;
        CAPTURE(shown(row.dividend));
        // The row does reach that place, and has the 1.
        Digits rest = row.dividend;
        rest.push_back(0);
        Vaskel::DigitDivision<Vaskel::Base65536> division(row.divisor.data(), n, rest.data(),
                                                          row.dividend.size());
        for (std::size_t s = row.dividend.size() - n; s > row.place; --s)
            division.digitAt(s, [] {});
        CHECK(division.length() - row.place == n + 3);
        CHECK(rest[top] == 0);
        division.digitAt(row.place, [] {});
        CHECK(rest[top] == 65535);
        CHECK(rest[top - 1] == 1);

        const Division want = byRows(row.dividend, row.divisor, kByDigits);
        const Division got = byRows(row.dividend, row.divisor, kShort);
        CHECK(shown(got) == shown(want));
        CHECK(want.negatives > 0);
    }
}

TEST_CASE("divide: the form that the lengths choose gives the digits that come one at a time") {
    constexpr unsigned kSeed = 7308;
    std::mt19937 random(kSeed);
    for (std::size_t n = 1; n < 12; ++n) {
        for (std::size_t longer = 0; longer < 2 * Vaskel::kBlocksFrom; ++longer) {
            CAPTURE(n);
            CAPTURE(longer);
            const Digits divisor = awkwardDivisor(random, n);
            const Digits dividend = awkwardDividend(random, divisor, longer);
            CHECK((byRows(dividend, divisor, kChosen) == byRows(dividend, divisor, kByDigits)));
        }
    }
}

TEST_CASE("row divisor: quotients by halves are those by rows, and true") {
    constexpr unsigned kSeed = 7305;
    std::mt19937 random(kSeed);
    for (int round = 0; round < 300; ++round) {
        const std::size_t n = 1 + random() % (round % 4 == 0 ? 800 : 300);
        const std::size_t limbs = 1 + random() % 120;
        CAPTURE(round);
        const Digits divisor = awkwardDivisor(random, n);
        Vaskel::RowDivisor rows(divisor.data(), n);
        const std::size_t size = (rows.limbs() + limbs) * Vaskel::kPerLimb;
        // A quotient and a remainder, and what they make together.
        const Digits quotient = awkwardRow(random, limbs * Vaskel::kPerLimb);
        Digits remainder = awkwardRow(random, n);
        if (Vaskel::compareDigits(remainder.data(), divisor.data(), n) >= 0) {
            remainder = divisor;
            Vaskel::borrowFrom(remainder.data(), n, 1);
        }
        Digits window = product(quotient, divisor);
        window.resize(size);
        remainder.resize(size);
        Vaskel::addDigits(window.data(), remainder.data(), size);
        Digits other = window, q(limbs * Vaskel::kPerLimb), otherQ = q;
        rows.divide(window.data(), limbs, q.data());
        rows.dividePlain(other.data(), limbs, otherQ.data());
        CHECK((q == quotient));
        CHECK((otherQ == quotient));
        CHECK((window == remainder));
        CHECK((other == remainder));
    }
}

TEST_CASE("row divisor: three limbs by two are divided exactly") {
    constexpr unsigned kSeed = 7306;
    std::mt19937_64 random(kSeed);
    constexpr Vaskel::Limb kTop = Vaskel::Limb{1} << 63;
    constexpr Vaskel::Limb kEdges[] = {
        0, 1, 2, kTop - 1, kTop, kTop + 1, ~Vaskel::Limb{0} - 1, ~Vaskel::Limb{0}};
    const auto limb = [&] { return random() % 2 == 0 ? kEdges[random() % 8] : random(); };
    int clamped = 0;
    for (int round = 0; round < 200000; ++round) {
        const Vaskel::Limb high = limb() | kTop, low = limb();
        const Vaskel::TwoLimbs divisor = Vaskel::TwoLimbs(high) << 64 | low;
        const Vaskel::TwoLimbDivisor by(high, low);
        // q * divisor + r, with r < divisor, from its limbs up.
        const Vaskel::Limb q = limb();
        Vaskel::TwoLimbs r = Vaskel::TwoLimbs(limb()) << 64 | limb();
        if (r >= divisor) r %= divisor;
        const Vaskel::TwoLimbs lower = Vaskel::TwoLimbs(low) * q;
        const Vaskel::TwoLimbs sum0 =
            Vaskel::TwoLimbs(static_cast<Vaskel::Limb>(lower)) + static_cast<Vaskel::Limb>(r);
        const Vaskel::TwoLimbs middle = Vaskel::TwoLimbs(high) * q + (lower >> 64) + (sum0 >> 64);
        const Vaskel::TwoLimbs upper = middle + (r >> 64);
        if (upper < middle) continue;  // more than three limbs
        CHECK(by.quotient(static_cast<Vaskel::Limb>(upper >> 64), static_cast<Vaskel::Limb>(upper),
                          static_cast<Vaskel::Limb>(sum0)) == q);
        if (random() % 4 == 0) {
            CHECK(by.quotient(high, low, limb()) == ~Vaskel::Limb{0});
            ++clamped;
        }
    }
    CHECK(clamped > 10000);
}
