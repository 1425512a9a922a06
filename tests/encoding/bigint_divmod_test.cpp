// The division in closed form beside the loops it stands for.

#include <doctest/doctest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "encoding/bigint.h"
#include "encoding/bigint_divide.h"
#include "encoding/bigint_multiply.h"
#include "tests/encoding/literal_bigint.h"
#include "tests/support/fake_host.h"
#include "vaskel/encoding.h"

namespace {

using Digits = std::vector<unsigned short>;
using Vaskel::Digit;

template <std::uint32_t Base>
struct SmallBase {
    static constexpr std::uint64_t kBase = Base;
    static unsigned add(Digit* a, const Digit* b, std::size_t count) {
        unsigned carryOut = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const unsigned sum = a[i] + b[i] + carryOut;
            a[i] = static_cast<Digit>(sum % Base);
            carryOut = sum / Base;
        }
        return carryOut;
    }
    static unsigned carry(Digit* a, std::size_t count, unsigned in) {
        for (std::size_t i = 0; i < count; ++i) {
            const unsigned sum = a[i] + in;
            a[i] = static_cast<Digit>(sum % Base);
            in = sum / Base;
        }
        return in;
    }
    static unsigned subtract(Digit* a, const Digit* b, std::size_t count) {
        return subtractTimes(a, b, count, 1);
    }
    static unsigned borrow(Digit* a, std::size_t count, unsigned in) {
        for (std::size_t i = 0; i < count; ++i) {
            const unsigned difference = Base + a[i] - in;
            a[i] = static_cast<Digit>(difference % Base);
            in = 1 - difference / Base;
        }
        return in;
    }
    static unsigned subtractTimes(Digit* a, const Digit* b, std::size_t count, unsigned factor) {
        unsigned taken = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const unsigned product = b[i] * factor + taken;
            taken = product / Base + (a[i] < product % Base);
            a[i] = static_cast<Digit>((a[i] + Base - product % Base) % Base);
        }
        return taken;
    }
};

struct Division {
    Digits quotient, remainder;
    int negatives = 0;
    bool operator==(const Division&) const = default;
};

std::string shown(const Digits& digits) {
    std::string text;
    for (const unsigned short digit : digits) text = std::to_string(digit) + " " + text;
    return "[ " + text + "]";
}
std::string shown(const Division& d) {
    return shown(d.quotient) + " remainder " + shown(d.remainder) + ", " +
           std::to_string(d.negatives) + " negative results";
}

// The literal loops, on the divisor without its zeros on top where these
// cannot be divided by. False when they take more than steps.
template <std::uint32_t Base>
bool literally(const Digits& dividend, Digits divisor, std::int64_t steps, Division& result) {
    using Literal = LiteralBigint<Base>;
    for (;;) {
        Literal::lines.clear();
        Literal::stepsLeft = steps;
        Literal quotient, remainder;
        try {
            Literal(dividend).divmod(Literal(divisor), quotient, remainder);
        } catch (TooManySteps) {
            return false;
        } catch (typename Literal::DivisorNeedsTrimming) {
            while (divisor.back() == 0) divisor.pop_back();
            continue;
        }
        result = {quotient.digits(), remainder.digits(), static_cast<int>(Literal::lines.size())};
        return true;
    }
}

template <std::uint32_t Base>
Division inClosedForm(const Digits& dividend, const Digits& divisor) {
    const std::size_t n = Vaskel::trimmedCount(divisor.data(), divisor.size());
    Division result;
    result.remainder = dividend;
    if (LiteralBigint<Base>::compare(LiteralBigint<Base>(dividend), LiteralBigint<Base>(divisor)) <
        0)
        return result;
    result.remainder.push_back(0);
    Vaskel::DigitDivision<SmallBase<Base>> division(divisor.data(), n, result.remainder.data(),
                                                    dividend.size());
    result.quotient.resize(dividend.size() - n + 1);
    for (std::size_t s = result.quotient.size(); s-- > 0;)
        result.quotient[s] = division.digitAt(s, [&] { ++result.negatives; });
    result.remainder.resize(division.length());
    result.quotient.resize(Vaskel::trimmedCount(result.quotient.data(), result.quotient.size()));
    return result;
}

// All rows of length digits.
template <std::uint32_t Base>
std::vector<Digits> allRows(std::size_t length) {
    std::vector<Digits> rows(1);
    for (std::size_t i = 0; i < length; ++i) {
        std::vector<Digits> longer;
        for (const Digits& row : rows)
            for (unsigned digit = 0; digit < Base; ++digit) {
                longer.push_back(row);
                longer.back().push_back(static_cast<unsigned short>(digit));
            }
        rows = std::move(longer);
    }
    return rows;
}

// Every dividend of up to longest digits by every divisor of up to widest,
// zeros on top included.
template <std::uint32_t Base>
void tryAll(std::size_t longest, std::size_t widest) {
    long compared = 0, wrapped = 0, tooLong = 0, wrong = 0;
    for (std::size_t n = 1; n <= widest; ++n) {
        for (const Digits& divisor : allRows<Base>(n)) {
            if (Vaskel::trimmedCount(divisor.data(), n) == 0) continue;
            for (std::size_t length = 0; length <= longest; ++length) {
                for (const Digits& dividend : allRows<Base>(length)) {
                    Division want;
                    if (!literally<Base>(dividend, divisor, 20000, want)) {
                        ++tooLong;
                        continue;
                    }
                    const Division got = inClosedForm<Base>(dividend, divisor);
                    ++compared;
                    wrapped += want.negatives != 0;
                    if (got == want || ++wrong > 10) continue;
                    MESSAGE(shown(dividend) << " by " << shown(divisor) << ": got " << shown(got)
                                            << ", wanted " << shown(want));
                }
            }
        }
    }
    MESSAGE("base " << Base << ": " << compared << " compared, " << wrapped << " wrapped, "
                    << tooLong << " too long");
    CHECK(wrong == 0);
    CHECK(compared > 10000);
    CHECK(wrapped > 1000);
    CHECK(tooLong * 50 < compared);
}

}  // namespace

TEST_CASE("divmod: the closed form gives the loops' results in base 2") { tryAll<2>(10, 4); }
TEST_CASE("divmod: the closed form gives the loops' results in base 3") { tryAll<3>(7, 3); }
TEST_CASE("divmod: the closed form gives the loops' results in base 4") { tryAll<4>(5, 3); }
TEST_CASE("divmod: the closed form gives the loops' results in base 5") { tryAll<5>(5, 2); }
TEST_CASE("divmod: the closed form gives the loops' results in base 10") { tryAll<10>(4, 2); }

namespace {

struct InRows {
    Division division;
    Vaskel::DivideCounts counts;
};

int gNegatives = 0;

InRows inRows(const Digits& dividend, const Digits& divisor, bool plain) {
    InRows result;
    Digits& rest = result.division.remainder;
    rest = dividend;
    rest.resize(dividend.size() + Vaskel::kDivideSpare);
    Digits quotient(dividend.size() - divisor.size() + 1);
    gNegatives = 0;
    const auto report = [] { ++gNegatives; };
    const std::size_t left =
        plain ? Vaskel::divideRowsPlain(divisor.data(), divisor.size(), rest.data(),
                                        dividend.size(), quotient.data(), report)
              : Vaskel::divideRows(divisor.data(), divisor.size(), rest.data(), dividend.size(),
                                   quotient.data(), report, &result.counts);
    for (std::size_t i = left; i < rest.size(); ++i) CHECK(rest[i] == 0);
    rest.resize(left);
    quotient.resize(Vaskel::trimmedCount(quotient.data(), quotient.size()));
    result.division.quotient = quotient;
    result.division.negatives = gNegatives;
    return result;
}

// Digits that make trouble: ends of the range, small ones, and any.
unsigned short awkwardDigit(std::mt19937& random, unsigned kind) {
    switch (random() % 4 < kind ? random() % 6 : 6) {
        case 0:
            return 0;
        case 1:
            return 0xFFFF;
        case 2:
            return 1;
        case 3:
            return 0xFFFE;
        case 4:
            return 0x8000;
        case 5:
            return static_cast<unsigned short>(random() % 4);
        default:
            return static_cast<unsigned short>(random());
    }
}

Digits awkwardRow(std::mt19937& random, std::size_t length) {
    const unsigned kind = static_cast<unsigned>(random() % 5);
    Digits row(length);
    for (std::size_t i = 0; i < length; ++i)
        row[i] = i > 0 && random() % 3 == 0 && kind > 2 ? row[i - 1] : awkwardDigit(random, kind);
    return row;
}

}  // namespace

TEST_CASE("divmod: blocks of digits are those that come one at a time") {
    constexpr unsigned kSeed = 7303;
    std::mt19937 random(kSeed);
    Vaskel::DivideCounts all;
    int wrong = 0;
    for (const Vaskel::LimbLoops* loops : Vaskel::limbLoopForms()) {
        Vaskel::forceLimbLoops(loops);
        for (int round = 0; round < 20000; ++round) {
            Digits divisor = awkwardRow(random, 1 + random() % 40);
            if (divisor.back() == 0 || random() % 3 == 0)
                divisor.back() = static_cast<unsigned short>(
                    random() % 2 == 0 ? 1 + random() % 3 : 1 + random() % 65535);
            Digits dividend = awkwardRow(random, divisor.size() + random() % 60);
            // Some dividends are multiples of the divisor, or just beside one.
            if (random() % 3 == 0) {
                Vaskel::bigint product;
                Digits factor = awkwardRow(random, 1 + random() % 20);
                Digits out(divisor.size() + factor.size());
                Vaskel::multiplyRowsPlain(divisor.data(), divisor.size(), factor.data(),
                                          factor.size(), out.data());
                if (random() % 2 == 0) Vaskel::carryInto(out.data(), out.size(), 1);
                if (random() % 3 == 0) Vaskel::borrowFrom(out.data(), out.size(), 1);
                dividend = out;
            }
            const Division want = inRows(dividend, divisor, true).division;
            const InRows got = inRows(dividend, divisor, false);
            all.single += got.counts.single;
            all.regular += got.counts.regular;
            all.wrapped += got.counts.wrapped;
            all.stopped += got.counts.stopped;
            if (got.division == want || ++wrong > 10) continue;
            MESSAGE(loops->name << ": " << shown(dividend) << " by " << shown(divisor) << ": got "
                                << shown(got.division) << ", wanted " << shown(want));
        }
    }
    Vaskel::forceLimbLoops(nullptr);
    CHECK(wrong == 0);
    MESSAGE(all.single << " single, " << all.regular << " regular, " << all.wrapped << " wrapped, "
                       << all.stopped << " blocks stopped");
    CHECK(all.regular > 100000);
    CHECK(all.wrapped > 100000);
    CHECK(all.stopped > 1000);
}
