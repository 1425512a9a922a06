// The division digit by digit beside the loops it stands for: whole small
// spaces in small bases.

#include <doctest/doctest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "encoding/bigint_divide.h"
#include "tests/encoding/bigint_support.h"
#include "tests/encoding/literal_division.h"

namespace {

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
        return static_cast<unsigned>(subtractTimes(a, b, count, 1));
    }
    static unsigned borrow(Digit* a, std::size_t count, unsigned in) {
        for (std::size_t i = 0; i < count; ++i) {
            const unsigned difference = Base + a[i] - in;
            a[i] = static_cast<Digit>(difference % Base);
            in = 1 - difference / Base;
        }
        return in;
    }
    static std::uint64_t subtractTimes(Digit* a, const Digit* b, std::size_t count,
                                       std::uint64_t factor) {
        std::uint64_t taken = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint64_t product = b[i] * factor + taken;
            taken = product / Base + (a[i] < product % Base);
            a[i] = static_cast<Digit>((a[i] + Base - product % Base) % Base);
        }
        return taken;
    }
};

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
