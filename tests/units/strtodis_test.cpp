#include <doctest/doctest.h>

#include <climits>
#include <limits>
#include <string>
#include <vector>

#include "embedded/host.h"
#include "tests/support/fake_host.h"
#include "tests/support/guarded_bytes.h"
#include "tests/units/fresh_units.h"
#include "vaskel/units.h"

using namespace Vaskel;

namespace {

constexpr int kKept = 77;  // what the caller's variable held before
constexpr int kNone = INT_MIN;
const std::string kHuge(400, '9');

struct Row {
    const char* why;
    std::string text;
    int rc;
    int distance;  // kNone of an empty field
};

const Row kRows[] = {
    // unit mm, 2400 ppi
    {"comma is a decimal sign", "12,5", 0, 1181},        // 12.5 * 2400 / 25.4
    {"left to right, no precedence", "2+3*4", 0, 1890},  // 20 mm
    {"blank frees the operator", "10mm +5", 0, 1417},    // 15 mm
    {"operator glued to the unit", "10mm+5", -1, kKept},
    {"an inch", "1inch", 0, 2400},
    {"no blank before the unit", "1 inch", -1, kKept},
    {"display names only", "1pica", -1, kKept},
    {"points", "72pt", 0, 2400},
    {"half a distance goes away from zero", "254/48000", 0, 1},  // exactly 0.5 distances
    {"negative", "-12,5", 0, -1181},
    {"beyond the range", "99999999inch", 0, INT_MAX},
    {"below the range", "-99999999inch", 0, INT_MIN},
    {"digits without end are not an empty field", kHuge, 0, INT_MAX},
    {"no number", "abc", -1, kKept},
    {"zero divisor", "1/0", -1, kKept},
};

}  // namespace

TEST_CASE("strtodis and strtodisnil read a distance field") {
    FreshUnits fresh;
    FakeHost host(FakeHost::Settings{.ppi = 2400});
    for (const Row& row : kRows) {
        CAPTURE(row.why);
        CAPTURE(row.text);
        for (auto* reader : {strtodis, strtodisnil}) {
            int distance = kKept;
            CHECK(reader(GuardedText(row.text), &distance) == row.rc);
            CHECK(distance == row.distance);
            CHECK(host.takeBeeps() == (row.rc ? 1 : 0));
        }
    }
}

TEST_CASE("an empty field is zero, no distance or a failure, as each reader says") {
    FreshUnits fresh;
    FakeHost host(FakeHost::Settings{.ppi = 2400});
    for (const char* text : {"", "   "}) {
        int out = kKept;
        CHECK(strtodis(text, &out) == 0);
        CHECK(out == 0);
        CHECK(strtodisnil(text, &out) == 0);
        CHECK(out == kNone);
        CHECK(host.takeBeeps() == 0);

        out = kKept;
        double number = kKept;
        CHECK(strtodisdou(text, &number) == -1);
        CHECK(number == kKept);
        CHECK(host.takeBeeps() == 1);
        CHECK(strtovec(text, &out) == -1);
        CHECK(host.takeBeeps() == 1);
        CHECK(strtoint(text, &out) == -1);
        CHECK(host.takeBeeps() == 1);
        CHECK(strtointmsg(text, &out, 1) == -1);
        CHECK(host.takeBeeps() == 1);
        CHECK(strtointmsg(text, &out, 0) == -1);
        CHECK(host.takeBeeps() == 0);
        CHECK(out == kKept);
    }
}

TEST_CASE("a null text is refused with the reader's beep") {
    FreshUnits fresh;
    FakeHost host;
    int out = kKept;
    double number = kKept;
    CHECK(strtodis(nullptr, &out) == -1);
    CHECK(strtodisnil(nullptr, &out) == -1);
    CHECK(strtodisdou(nullptr, &number) == -1);
    CHECK(strtotex(nullptr, &out) == -1);
    CHECK(strtovec(nullptr, &out) == -1);
    CHECK(strtoint(nullptr, &out) == -1);
    CHECK(strtointmsg(nullptr, &out, -1) == -1);
    CHECK(host.takeCalls() == std::vector<std::string>(7, "beep 500"));
    CHECK(strtointmsg(nullptr, &out, 0) == -1);
    CHECK(host.takeCalls().empty());
    CHECK(out == kKept);
    CHECK(number == kKept);
}

TEST_CASE("strtodisdou does not round") {
    FreshUnits fresh;
    FakeHost host(FakeHost::Settings{.ppi = 2400});
    double out = kKept;
    CHECK(strtodisdou("12,5", &out) == 0);
    CHECK(out == 2400 * 12.5 / 25.4);
    CHECK(strtodisdou("1pt", &out) == 0);
    CHECK(out == 2400 * (1 * 25.4 / 72) / 25.4);
    CHECK(strtodisdou(kHuge.c_str(), &out) == 0);
    CHECK(out == std::numeric_limits<double>::infinity());
    CHECK(host.takeBeeps() == 0);
    out = kKept;
    CHECK(strtodisdou("1x", &out) == -1);
    CHECK(out == kKept);
    CHECK(host.takeBeeps() == 1);
}

TEST_CASE("strtodis converts with every unit") {
    FreshUnits fresh;
    FakeHost host(FakeHost::Settings{.ppi = 2400});
    numbersinit();
    struct InchRow {
        int unit;
        const char* inch;
        int distance;
    };
    constexpr InchRow rows[] = {
        {0, "1", 2400},       {1, "25.4", 2400},   {2, "2.54", 2400},
        {3, "1200", 2400},    {4, "4000", 2400},   {5, "2400", 2400},
        {6, "1000", 2400},    {7, "72.289", 2400},  // 2399.995
        {8, "72", 2400},      {9, "9.5504", 2400}, {10, "101.6", 2400},
        {11, "11.349", 2400},  // 2399.911
        {12, "3", 7200},      {-9, "3", 7200},
    };
    for (const InchRow& row : rows) {
        CAPTURE(row.unit);
        setuni(row.unit);
        int out = kKept;
        CHECK(strtodis(row.inch, &out) == 0);
        CHECK(out == row.distance);
        scauni = row.unit;
        out = kKept;
        CHECK(strtovec(row.inch, &out) == 0);
        CHECK(out == row.distance);
    }
}

TEST_CASE("strtotex reads distinct names while the units differ") {
    FreshUnits fresh;  // mm, texts in pica points
    FakeHost host(FakeHost::Settings{.ppi = 2400});
    int fired = 0;
    gOnUnitChanged.connect([&](int) { ++fired; });
    const Row rows[] = {
        {"the text unit by itself", "72", 0, 2390},  // 72 * 2400 / 72.289 = 2390.4
        {"pica points by name", "72pica", 0, 2390},
        {"points", "72pt", 0, 2400},
        {"p is pica here", "72p", 0, 2390},
        {"didot", "9.5504didot", 0, 2400},
        {"exp", "4000exp", 0, 2400},
        {"an empty field is no distance", "", 0, kNone},
        {"blanks too", "  ", 0, kNone},
        {"a word that is none", "1scan pix", -1, kKept},
        {"no blank before the unit", "1 pt", -1, kKept},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        int out = kKept;
        CHECK(strtotex(GuardedText(row.text), &out) == row.rc);
        CHECK(out == row.distance);
        CHECK(host.takeBeeps() == (row.rc ? 1 : 0));
        CHECK(getuni() == 1);
        CHECK(std::string(numunistr()) == "mm");
    }
    CHECK(fired == 0);
}

TEST_CASE("strtotex reads display names while the units are the same") {
    FreshUnits fresh;
    FakeHost host(FakeHost::Settings{.ppi = 2400});
    setuni(7);
    const Row rows[] = {
        {"the unit by itself", "72", 0, 2390},
        {"pt is the 72nd", "72pt", 0, 2400},
        {"p is pt here", "72p", 0, 2400},
        {"no distinct names", "72pica", -1, kKept},
        {"an empty field is zero", "", 0, 0},
        {"blanks too", "  ", 0, 0},
        {"the lowest distance is no empty field", "-99999999inch", 0, INT_MIN},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        int out = kKept;
        CHECK(strtotex(GuardedText(row.text), &out) == row.rc);
        CHECK(out == row.distance);
        CHECK(host.takeBeeps() == (row.rc ? 1 : 0));
    }
}

TEST_CASE("strtotex has the current unit as before when the host beeps, and when the beep throws") {
    FreshUnits fresh;
    struct Refusal {};
    int unitAtBeep = -1;
    Embedded::onBeep([&](int tone) {
        CHECK(tone == 500);
        unitAtBeep = getuni();
        throw Refusal{};
    });
    int out = kKept;
    CHECK_THROWS_AS(strtotex("x", &out), Refusal);
    Embedded::onBeep({});
    CHECK(unitAtBeep == 1);
    CHECK(getuni() == 1);
    CHECK(out == kKept);
}

TEST_CASE("strtovec and strtoint take no units") {
    FreshUnits fresh;
    FakeHost host(FakeHost::Settings{.ppi = 2400});
    int out = kKept;
    CHECK(strtovec("600", &out) == 0);
    CHECK(out == 1200);
    CHECK(strtovec("600+0.3", &out) == 0);
    CHECK(out == 1201);  // 1200.6
    numsca(600);
    CHECK(strtovec("600", &out) == 0);
    CHECK(out == 2400);
    out = kKept;
    CHECK(strtovec("600mm", &out) == -1);
    CHECK(out == kKept);
    CHECK(host.takeBeeps() == 1);

    const Row rows[] = {
        {"halves away from zero", "7/2", 0, 4},
        {"also below", "-7/2", 0, -4},
        {"less than a half", "2,4", 0, 2},
        {"saturates", "3000000000", 0, INT_MAX},
        {"saturates below", "-3000000000", 0, INT_MIN},
        {"digits without end", kHuge, 0, INT_MAX},
        {"a unit", "5mm", -1, kKept},
        {"a letter", "x", -1, kKept},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        out = kKept;
        CHECK(strtoint(row.text.c_str(), &out) == row.rc);
        CHECK(out == row.distance);
        CHECK(host.takeBeeps() == (row.rc ? 1 : 0));
        for (int beep : {0, 1, -1}) {
            out = kKept;
            CHECK(strtointmsg(row.text.c_str(), &out, beep) == row.rc);
            CHECK(out == row.distance);
            CHECK(host.takeBeeps() == (row.rc && beep ? 1 : 0));
        }
    }
}

TEST_CASE("a field shown and read again holds the same distance where its decimals allow") {
    FreshUnits fresh;
    FakeHost host(FakeHost::Settings{.ppi = 100});
    // One distance is 0.01 inch, 0.254 mm, 0.72 pt: all units but bai and
    // didot show at least one step of the last decimal for it.
    numbersinit();
    for (int unit : {0, 1, 2, 3, 4, 5, 6, 7, 8, 10}) {
        CAPTURE(unit);
        setuni(unit);
        for (int d = -200; d <= 200; ++d) {
            char text[32];
            distostr(&d, text);
            int back = kKept;
            REQUIRE(strtodis(text, &back) == 0);
            REQUIRE(back == d);
        }
    }
}

TEST_CASE("nothing here allocates") {
    FreshUnits fresh;
    const long before = allocationCount();
    int distance = 12345;
    double number = 0;
    char text[40];
    for (int unit = -1; unit <= 12; ++unit) {
        gCurrentUnit = unit;
        distostr(&distance, text);
        strtodis("1inch +2*3mm", &distance);
        strtodouuni("1 pica + 2", &number, true, true);
        strtotex("12pt", &distance);
        parseRange("10:90", &number, &number);
    }
    CHECK(allocationCount() == before);
}
