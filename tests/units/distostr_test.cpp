#include <doctest/doctest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "tests/support/fake_host.h"
#include "tests/support/guarded_bytes.h"
#include "tests/units/fresh_units.h"
#include "vaskel/units.h"

using namespace Vaskel;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// What form writes for value, checked to end where the memory ends.
template <class Value>
std::string text(void (*form)(const Value*, char*), Value value) {
    char roomy[32];
    form(&value, roomy);
    GuardedBytes exact(std::strlen(roomy) + 1);
    form(&value, exact.chars());
    CHECK(std::string(exact.chars()) == roomy);
    return roomy;
}

struct Row {
    int unit;
    const char* inch;     // one inch with the unit's decimals
    const char* oneMore;  // with one more
    const char* twoMore;  // with two more
    const char* area;     // a square inch
};

// Behind the area of a unit with w integer digits, min(2w, 9) and the rest of
// nine: inch 4 and 5, mm and its like 8 and 1, cm 6 and 3, int and mil 9 and 0.
constexpr Row kInch[] = {
    {0, "  +1.", "  +1.", "  +1.", "       1."},
    {1, "    +25.4", "    +25.4", "    +25.4", "           645.2"},
    {2, "    +2.54", "    +2.54", "    +2.54", "           6.452"},
    {3, "+1200.", "+1200.", "+1200.", "   1440000."},
    {4, "+4000.", "+4000.", "+4000.", " 16000000."},
    {5, "      +2400.", "      +2400.", "      +2400.", "     5760000."},
    {6, "  +1000.", "  +1000.", "  +1000.", "     1000000."},
    {7, "    +72.29", "    +72.289", "    +72.2892", "         5225.7"},
    {8, "    +72.", "    +72.", "    +72.", "         5184."},
    {9, "      +9.55", "      +9.55", "      +9.5504", "             91.2"},
    {10, "  +101.6", "  +101.6", "  +101.6", "       10322.6"},
    {11, "    +11.35", "    +11.349", "    +11.3494", "           128.8"},
    {12, "+1.", "+1.", "+1.", "   1."},
    {-5, "+1.", "+1.", "+1.", "   1."},
};

}  // namespace

TEST_CASE("distostr and its kin write an inch in every unit") {
    FreshUnits fresh;
    FakeHost host(FakeHost::Settings{.ppi = 2400});
    numbersinit();
    for (const Row& row : kInch) {
        CAPTURE(row.unit);
        setuni(row.unit);
        settexuni(3);
        scauni = 3;
        CHECK(text(distostr, 2400) == row.inch);
        CHECK(text(distostr2, 2400) == row.oneMore);
        CHECK(text(distostrdou, 2400.0) == row.twoMore);
        CHECK(text(sqdistostr, 5760000.0) == row.area);
        setuni(3);
        settexuni(row.unit);
        CHECK(text(textostr, 2400) == row.inch);
        settexuni(3);
        scauni = row.unit;
        CHECK(text(vectostr, 2400) == row.inch);
    }
}

TEST_CASE("distostr writes distances as fields show them") {
    FreshUnits fresh;
    FakeHost host(FakeHost::Settings{.ppi = 2400});
    CHECK(text(distostr, 0) == "      +0.");
    CHECK(text(distostr, 1181) == "    +12.5");  // 12.4989...
    CHECK(text(distostr, -1181) == "    -12.5");
    CHECK(text(distostr2, 1181) == "    +12.499");
    CHECK(text(distostrdou, 1181.1023622047244) == "    +12.5");
    CHECK(text(distostrdou, 1181.0) == "    +12.4989");
    CHECK(text(distostr, INT_MAX) == "+*836.47");  // saturates at 21474836.47
    CHECK(text(distostr, -INT_MAX) == "-*836.48");
    setuni(0);
    CHECK(text(distostr, 2400) == "  +1.");
    CHECK(text(distostr, -3600) == "  -1.5");
    setuni(5);
    numbersinit();
    CHECK(text(distostr, 1234567) == "+1234567.");
    CHECK(text(distostr, -42) == "          -42.");
}

TEST_CASE("a missing distance is the empty text, except to vectostr") {
    FreshUnits fresh;
    FakeHost host(FakeHost::Settings{.ppi = 2400});
    CHECK(text(distostr, INT_MIN) == "");
    CHECK(text(distostr2, INT_MIN) == "");
    CHECK(text(textostr, INT_MIN) == "");
    CHECK(text(distostrdou, kInfinity) == "");
    CHECK(text(sqdistostr, kInfinity) == "");
    CHECK(text(distostrdou, -2147483648.0) != "");
}

TEST_CASE("vectostr prints the lowest distance as a number") {
    FreshUnits fresh;
    FakeHost host(FakeHost::Settings{.ppi = 2400});
    // -2147483648 / 2 pixels saturate at two decimals: -21474836.48
    CHECK(text(vectostr, INT_MIN) == "-*836.48");
    scauni = 0;  // -894784.8533 inches saturate at four: -214748.3648
    CHECK(text(vectostr, INT_MIN) == "-*8.3648");
}

TEST_CASE("the longest texts fill the room that the header asks for") {
    FreshUnits fresh;
    FakeHost host(FakeHost::Settings{.ppi = 2400});
    setuni(5);
    settexuni(5);
    scauni = 5;
    numbersinit();
    CHECK(text(distostr, 0).size() + 1 == 16);
    CHECK(text(textostr, 0).size() + 1 == 16);
    CHECK(text(vectostr, 0).size() + 1 == 16);
    CHECK(text(distostr2, 0).size() + 1 == 16);  // no decimal is left
    CHECK(text(distostrdou, 0.25).size() + 1 == 18);
    CHECK(text(sqdistostr, 0.0).size() + 1 == 20);
    gUnitFactors[5] = 240;  // a tenth of a distance: decimals of whole distances
    CHECK(text(distostr2, 1).size() + 1 == 17);
}

TEST_CASE("an area shares nine digits between its places") {
    FreshUnits fresh;
    FakeHost host(FakeHost::Settings{.ppi = 2400});
    CHECK(text(sqdistostr, 0.0) == "               0.");  // 7 suppressed places and the sign
    CHECK(text(sqdistostr, -5760000.0) == "          -645.2");
    setuni(5);
    numbersinit();
    CHECK(text(sqdistostr, 123456789.0) == " 123456789.");
    CHECK(text(sqdistostr, 1234567890.0) == " *34567890.");
}

TEST_CASE("distances and doubles convert there and back") {
    FreshUnits fresh;
    FakeHost host(FakeHost::Settings{.ppi = 2400});
    CHECK(distodou(1181) == 1181 * 25.4 / 2400);
    CHECK(doutodis(12.5) == 2400 * 12.5 / 25.4);
    numbersinit();
    for (int unit = -1; unit <= 12; ++unit) {
        CAPTURE(unit);
        setuni(unit);
        for (int d : {0, 1, -1, 1181, 2400, -99999, 123456789, INT_MAX, INT_MIN}) {
            CAPTURE(d);
            CHECK(distodou(d) == distodou(static_cast<double>(d)));
            CHECK(std::round(doutodis(distodou(d))) == d);
        }
    }
}
