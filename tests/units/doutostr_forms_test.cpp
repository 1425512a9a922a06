#include <doctest/doctest.h>

#include <cfenv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "platform/orlune.h"
#include "tests/units/written.h"
#include "units/doutostr.h"
#include "vaskel/units.h"

using namespace Vaskel;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::size_t kLongest = 40;  // whatever the arguments

// What the rule says, written from the decimal text of the integer.
std::string expected(std::int64_t n, int intDigits, int decimals, bool plusSign) {
    std::string digits = std::to_string(n < 0 ? -n : n);
    while (digits.size() <= static_cast<std::size_t>(decimals)) digits.insert(digits.begin(), '0');
    std::string whole = digits.substr(0, digits.size() - static_cast<std::size_t>(decimals));
    std::string fraction = digits.substr(whole.size());
    while (!fraction.empty() && fraction.back() == '0') fraction.pop_back();
    std::string text;
    if (intDigits > 0) {
        const auto width = static_cast<std::size_t>(intDigits);
        if (whole.size() > width) {
            whole.erase(0, whole.size() - width);
            whole.front() = '*';
        }
        text.assign(2 * (width - whole.size()), ' ');
    }
    text += n < 0 ? '-' : plusSign ? '+' : ' ';
    text += whole;
    text += '.';
    text += fraction;
    return text;
}

std::uint32_t amountOf(int n) {
    return n < 0 ? 0u - static_cast<std::uint32_t>(n) : static_cast<std::uint32_t>(n);
}

int interesting(std::mt19937& random) {
    static constexpr int kPowers[] = {1,      10,      100,      1000,      10000,
                                      100000, 1000000, 10000000, 100000000, 1000000000};
    const auto any = static_cast<std::int32_t>(random());
    const int power = kPowers[random() % 10];
    switch (random() % 6) {
        case 0:
            return any;
        case 1:
            return any % power;
        case 2:
            return power - 1 + static_cast<int>(random() % 3);
        case 3:
            return -power + 1 - static_cast<int>(random() % 3);
        case 4:
            return any / power * power;  // zeros at the end
        default:
            return random() % 2 ? INT_MAX : INT_MIN;
    }
}

// Whether run writes n / 10^decimals as the plain form does.
bool likePlain(FormatNumber* run, int n, const TextWidths& widths) {
    char plain[kLongest], text[kLongest];
    placesPlain(n, plain, widths);
    run(n / widths.unit, text, widths);
    return std::strcmp(plain, text) == 0;
}

}  // namespace

TEST_CASE("doutostr: every form writes what the rule says, to the byte") {
    std::mt19937 random(20);
    int word = 0, wide = 0, neither = 0;
    for (int round = 0; round < 20000; ++round) {
        const int n = interesting(random);
        const int intDigits = static_cast<int>(random() % 21) - 1;
        const int decimals = static_cast<int>(random() % 10);
        const bool plusSign = random() % 2;
        const TextWidths widths = TextWidths::of(intDigits, decimals, plusSign);
        const std::string want = expected(n, widths.intDigits, decimals, plusSign);
        CAPTURE(n);
        CAPTURE(intDigits);
        CAPTURE(decimals);
        REQUIRE(writes(want, [&](char* out) { placesPlain(n, out, widths); }));
        // The quotient of so few digits, times the unit, rounds to n.
        for (const NumberForm& form : numberForms()) {
            CAPTURE(form.name);
            REQUIRE(writes(want, [&](char* out) { form.run(n / widths.unit, out, widths); }));
        }
        const std::uint32_t amount = amountOf(n);
        neither += amount >= widths.wordLimit && !widths.inWide(amount);
        wide += widths.inWide(amount);
        if (amount >= widths.wordLimit) continue;
        ++word;
        REQUIRE(writes(want, [&](char* out) { placesInWord(n < 0, amount, out, widths); }));
    }
    CHECK(word > 1000);
    CHECK(wide > 1000);
    CHECK(neither > 1000);
}

TEST_CASE("doutostr: every form writes alike what a field in mm holds, and seven whole digits") {
    const TextWidths widths = TextWidths::of(4, 2, true);
    CHECK(widths.wordLimit == 1000000);
    CHECK(widths.inWide(-999999));
    CHECK_FALSE(widths.inWide(1000000));
    const TextWidths sevenDigits = TextWidths::of(7, 0, false);
    CHECK(sevenDigits.wordLimit == 1000000);
    CHECK(sevenDigits.inWide(9999999));
    CHECK_FALSE(sevenDigits.inWide(-10000000));
    for (const NumberForm& form : numberForms()) {
        CAPTURE(form.name);
        int differing = 0;
        for (int n = -1000001; n <= 1000001; ++n) differing += !likePlain(form.run, n, widths);
        for (int n = -10000003; n <= 10000003; n += 13)
            differing += !likePlain(form.run, n, sevenDigits);
        CHECK(differing == 0);
    }
}

// Rests of the digits' products come nearest to their limits at the ends of tens.
TEST_CASE("doutostr: every form writes eight digits at the ends of tens and of their range") {
    const TextWidths widths = TextWidths::of(4, 4, true);
    CHECK(widths.inWide(99999999));
    CHECK_FALSE(widths.inWide(100000000));
    for (const NumberForm& form : numberForms()) {
        CAPTURE(form.name);
        int differing = 0, count = 0;
        for (int power = 10; power <= 100000000; power *= 10) {
            for (int top = 100000000; top > 99000000; top -= power) {
                for (int n = top - 2; n <= top + 1; ++n, ++count)
                    differing += !likePlain(form.run, n, widths);
                if (power > 1000 && top < 99900000) break;
            }
        }
        CHECK(count > 400000);
        CHECK(differing == 0);
    }
}

TEST_CASE("doutostr: every form has room for its texts in every width") {
    for (int intDigits = 1; intDigits <= 19; ++intDigits) {
        for (int decimals = 0; decimals <= 9; ++decimals) {
            const TextWidths widths = TextWidths::of(intDigits, decimals, true);
            for (int n : {0, 1, 9, 10, 100, 12345, 999999, 99999999, -1, -10, -99999999}) {
                CAPTURE(intDigits);
                CAPTURE(decimals);
                CAPTURE(n);
                const std::string want = expected(n, widths.intDigits, widths.decimals, true);
                for (const NumberForm& form : numberForms()) {
                    CAPTURE(form.name);
                    CHECK(writes(want, [&](char* out) { form.run(n / widths.unit, out, widths); }));
                }
            }
        }
    }
}

TEST_CASE("doutostr: every form rounds as the host does, beside every half and in every mode") {
    std::mt19937_64 random(21);
    std::vector<double> values;
    for (int i = 0; i < 4000; ++i) {
        const double half = static_cast<double>(random() % (i % 2 ? 100 : 2000000)) / 2;
        for (double v : {half, std::nextafter(half, -kInfinity), std::nextafter(half, kInfinity)})
            values.insert(values.end(), {v, -v, v / 100, -v / 10000});
    }
    for (double power = 1; power < 1e10; power *= 10)
        for (double v :
             {power - 0.5, std::nextafter(power - 0.5, 0.0), std::nextafter(power - 0.5, 1e10)})
            values.insert(values.end(), {v, -v, v / 100, -v / 100, v / 10000, -v / 10000});
    values.insert(values.end(),
                  {0.0, -0.0, 0.49999999999999994, -0.49999999999999994, 999999.5, -999999.5,
                   99999.499999999985, 1e9, -1e300, 2147483647.5, -2147483648.5, 4294967296.0,
                   -kInfinity, std::numeric_limits<double>::quiet_NaN()});
    for (const int mode : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        for (const NumberForm& form : numberForms()) {
            CAPTURE(mode);
            CAPTURE(form.name);
            int differing = 0;
            std::fesetround(mode);
            for (const double value : values) {
                for (const int decimals : {0, 2, 4}) {
                    const TextWidths widths = TextWidths::of(4, decimals, true);
                    char want[kLongest], got[kLongest];
                    placesPlain(Orlune::iround(widths.unit * value), want, widths);
                    form.run(value, got, widths);
                    if (std::strcmp(want, got) != 0) ++differing;
                }
            }
            std::fesetround(FE_TONEAREST);
            CHECK(differing == 0);
        }
    }
}

TEST_CASE("doutostr: the forced form runs") {
    static int calls = 0;
    const NumberForm counting = {"counting", [](double, char*, const TextWidths&) { ++calls; }};
    char text[kLongest];
    forceNumberForm(&counting);
    doutostr(1, text, 4, 2, true);
    forceNumberForm(nullptr);
    CHECK(calls == 1);
    doutostr(1, text, 4, 2, true);
    CHECK(calls == 1);
    CHECK(std::string(text) == "      +1.");
}
