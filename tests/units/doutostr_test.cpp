#include "units/doutostr.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <limits>
#include <string>

#include "tests/units/written.h"
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

}  // namespace

TEST_CASE("doutostr writes sign, digits, point and decimals") {
    for (const Row& row : kRows) {
        CAPTURE(row.why);
        const std::string want = row.text;
        CHECK(want.size() < kLongest);
        char text[kLongest];
        doutostr(row.value, text, row.intDigits, row.decimals, row.plusSign);
        CHECK(std::string(text) == want);
        for (const NumberForm& form : numberForms()) {
            CAPTURE(form.name);
            forceNumberForm(&form);
            CHECK(writes(want, [&](char* out) {
                doutostr(row.value, out, row.intDigits, row.decimals, row.plusSign);
            }));
        }
        forceNumberForm(nullptr);
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
