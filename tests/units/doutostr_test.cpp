#include "units/doutostr.h"

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
#include "tests/support/guarded_bytes.h"
#include "vaskel/units.h"

using namespace Vaskel;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::size_t kLongest = 40;  // whatever the arguments

struct Row {
    const char* why;
    double value;
    int intDigits;
    int decimals;
    bool plusSign;
    const char* text;
};

const Row kRows[] = {
    {"two places of four are blank", 12.0, 4, 2, true, "    +12."},
    {"zeros at the end are dropped", 12.5, 4, 2, true, "    +12.5"},
    {"the last decimal is rounded", -3.14159, 2, 4, true, "  -3.1416"},
    {"zero has its units digit", 0.0, 4, 2, true, "      +0."},
    {"a blank for the plus sign", 0.5, 2, 2, false, "   0.5"},
    {"one digit too many", 12345.678, 4, 2, true, "+*345.68"},
    {"no width", 123.456, -1, 2, false, " 123.46"},
    {"the sign is that of the rounded value", -0.004, 4, 2, true, "      +0."},

    {"full width", 1234.56, 4, 2, true, "+1234.56"},
    {"zeros inside stay", 1005.05, 4, 2, true, "+1005.05"},
    {"zeros behind the point stay", 1.0005, 2, 4, true, "  +1.0005"},
    {"rounding adds a place", 9.996, 2, 2, true, "+10."},
    {"rounding overflows the width", 99.996, 2, 2, true, "+*0."},
    {"three digits too many", 123456.0, 3, 0, true, "+*56."},
    {"overflow at the units place", 12.0, 1, 0, true, "+*."},
    {"overflow, then decimals", -123.45, 1, 2, true, "-*.45"},
    {"negative, blank for plus", -1.0, 1, 2, false, "-1."},
    {"no decimals", 7.0, 3, 0, true, "    +7."},

    {"width 0 is width 1", 5.0, 0, 2, true, "+5."},
    {"width 0 overflows as width 1", 12.0, 0, 0, true, "+*."},
    {"no width, below one", 0.25, -1, 2, true, "+0.25"},
    {"no width, zero", 0.0, -1, 2, true, "+0."},
    {"no width, one digit", 9.99, -1, 2, true, "+9.99"},
    {"no width, exactly a power", 1000.0, -1, 2, true, "+1000."},
    {"no width, just below a power", 999.99, -1, 2, true, "+999.99"},
    {"any negative width is the same", 123.456, INT_MIN, 2, false, " 123.46"},
    {"negative decimals are none", 12.6, 2, -1, true, "+13."},
    {"the lowest decimals are none", 12.6, 2, INT_MIN, true, "+13."},
    {"nine decimals", 1.123456789, 1, 9, true, "+1.123456789"},
    {"more decimals are nine", 1.5, 1, 10, true, "+1.5"},
    {"the highest decimals are nine", -0.5, 1, INT_MAX, true, "-0.5"},
    {"nine decimals saturate", 3.0, 1, 9, true, "+2.147483647"},
    {"nine decimals saturate below", -3.0, -1, 9, true, "-2.147483648"},
    {"ten places", 2147483647.0, 10, 0, true, "+2147483647."},
    {"the lowest integer", -2147483648.0, 10, 0, true, "-2147483648."},
    {"the lowest integer without width", -2147483648.0, -1, 0, true, "-2147483648."},
    {"saturated", 1e300, -1, 0, true, "+2147483647."},
    {"minus infinity saturates", -kInfinity, -1, 0, true, "-2147483648."},
    {"not-a-number is zero", std::numeric_limits<double>::quiet_NaN(), 1, 2, true, "+0."},
    {"the smallest double is zero", 5e-324, 1, 9, true, "+0."},
    {"minus zero is zero", -0.0, 1, 2, true, "+0."},
    {"infinity is empty", kInfinity, 4, 2, true, ""},
    {"infinity is empty without width", kInfinity, -1, 2, false, ""},
    {"eleven places", 1.0, 11, 0, true, "                    +1."},
    {"as many places as there are", 7.0, 19, 0, true, "                                    +7."},
    {"more places are 19", 7.0, 20, 0, true, "                                    +7."},
    {"the highest width is 19", -7.0, INT_MAX, 0, true, "                                    -7."},
    {"19 less the decimals", 7.5, INT_MAX, 2, true, "                                +7.5"},
    {"10 beside nine decimals", 1.5, 1000, 1000, true, "                  +1.5"},
};

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

// Runs form into memory that ends where the text has to end.
template <class Form>
bool writes(const std::string& want, Form form) {
    GuardedBytes out(want.size() + 1);
    std::memset(out.data(), 0x55, out.size());
    form(out.chars());
    return std::memcmp(out.chars(), want.c_str(), want.size() + 1) == 0;
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

}  // namespace

TEST_CASE("doutostr writes sign, digits, point and decimals") {
    for (const Row& row : kRows) {
        CAPTURE(row.why);
        const std::string want = row.text;
        CHECK(want.size() < kLongest);
        char text[kLongest];
        doutostr(row.value, text, row.intDigits, row.decimals, row.plusSign);
        CHECK(std::string(text) == want);
        CHECK(writes(want, [&](char* out) {
            doutostr(row.value, out, row.intDigits, row.decimals, row.plusSign);
        }));
    }
}

TEST_CASE("doutostr: no text is longer than the header says") {
    std::size_t longest = 0;
    std::size_t longestFree = 0;
    for (int intDigits : {-1, 0, 1, 2, 3, 9, 10, 11, 18, 19, 20, 1000}) {
        for (int decimals = -1; decimals <= 12; ++decimals) {
            const TextWidths widths = TextWidths::of(intDigits, decimals, true);
            for (double value : {0.0, 0.123456789, -0.999999999, 7.7, -1e10, 12345.678901234}) {
                char text[kLongest];
                doutostr(value, text, intDigits, decimals, true);
                const std::size_t bytes = std::strlen(text) + 1;
                const auto bound =
                    static_cast<std::size_t>(2 * widths.intDigits + widths.decimals + 2);
                if (intDigits >= 0) CHECK(bytes <= bound);
                (intDigits < 0 ? longestFree : longest) =
                    std::max(intDigits < 0 ? longestFree : longest, bytes);
            }
        }
    }
    CHECK(longest == 40);
    CHECK(longestFree == 13);
}

TEST_CASE("doutostr: both forms write what the rule says, to the byte") {
    std::mt19937 random(20);
    int taken = 0, declined = 0;
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
        const std::uint32_t amount = amountOf(n);
        if (amount >= widths.wordLimit) {
            ++declined;
            continue;
        }
        ++taken;
        REQUIRE(writes(want, [&](char* out) { placesInWord(n < 0, amount, out, widths); }));
    }
    CHECK(taken > 1000);
    CHECK(declined > 1000);
}

TEST_CASE("doutostr: both forms agree on every number that a field in mm holds") {
    const TextWidths widths = TextWidths::of(4, 2, true);
    int differing = 0;
    for (int n = -999999; n <= 999999; ++n) {
        char plain[kLongest], words[kLongest];
        placesPlain(n, plain, widths);
        placesInWord(n < 0, amountOf(n), words, widths);
        if (std::strcmp(plain, words) != 0) ++differing;
    }
    CHECK(widths.wordLimit == 1000000);
    CHECK(differing == 0);
}

TEST_CASE("doutostr rounds as the host does, beside every half and in every mode") {
    std::mt19937_64 random(21);
    std::vector<double> values;
    for (int i = 0; i < 4000; ++i) {
        const double half = static_cast<double>(random() % (i % 2 ? 100 : 2000000)) / 2;
        for (double v : {half, std::nextafter(half, -kInfinity), std::nextafter(half, kInfinity)})
            values.insert(values.end(), {v, -v, v / 100, -v / 10000});
    }
    values.insert(values.end(), {0.49999999999999994, -0.49999999999999994, 999999.5, -999999.5,
                                 99999.499999999985, 1e9, -1e300});
    for (const int mode : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        CAPTURE(mode);
        int differing = 0;
        std::fesetround(mode);
        for (const double value : values) {
            for (const int decimals : {0, 2, 4}) {
                const TextWidths widths = TextWidths::of(4, decimals, true);
                char want[kLongest], got[kLongest];
                placesPlain(Orlune::iround(widths.unit * value), want, widths);
                doutostr(value, got, 4, decimals, true);
                if (std::strcmp(want, got) != 0) ++differing;
            }
        }
        std::fesetround(FE_TONEAREST);
        CHECK(differing == 0);
    }
}
