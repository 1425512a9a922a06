#include <doctest/doctest.h>

#include <climits>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/fake_host.h"
#include "tests/units/fresh_units.h"
#include "vaskel/units.h"

using namespace Vaskel;
using Changes = std::vector<int>;

namespace {

// Taken before any test runs.
struct Loaded {
    int unit = getuni();
    int textUnit = gettexuni();
    int metricState = metric();
    int flag = gMetricFlag;
    int scan = scauni;
    std::string name = numunistr();
    std::string textName = gettexunistr();
    std::string distinct = GetDistinctUnitString();
    std::string textDistinct = GetDistinctTextUnitString();
    double scanFactor = gUnitFactors[3];
    double internalFactor = gUnitFactors[5];
};
const Loaded kLoaded;

// The arguments of gOnUnitChanged while it lives.
class Listener {
 public:
    Listener() : mConnection(gOnUnitChanged.connect([this](int what) { mSeen.push_back(what); })) {}
    Changes take() { return std::exchange(mSeen, {}); }

 private:
    Changes mSeen;
    boost::signals2::scoped_connection mConnection;
};

struct Row {
    int code;
    const char* display;
    const char* distinct;
    double factor;
    int precision;
    int metric;
};

constexpr Row kTable[] = {
    {0, "inch", "inch", 1.0, 4, 0},  {1, "mm", "mm", 25.4, 2, 1},
    {2, "cm", "cm", 2.54, 3, 1},     {3, "scan pix", "scanpix", 1200.0, 2, 0},
    {4, "", "exp", 4000.0, 2, 0},    {5, "", "int", 1.0, 0, 0},
    {6, "mil", "mil", 1000.0, 1, 0}, {7, "pt", "pica", 72.28915662650601, 2, 0},
    {8, "pt", "pt", 72.0, 2, 0},     {9, "pt", "didot", 9.5504, 2, 0},
    {10, "Q", "Q", 101.6, 1, 0},     {11, "bai", "bai", 11.349419124218052, 2, 0},
    {12, "", "", 1.0, 0, 0},         {-1, "", "", 1.0, 0, 0},
    {100, "", "", 1.0, 0, 0},        {INT_MAX, "", "", 1.0, 0, 0},
    {INT_MIN, "", "", 1.0, 0, 0},
};

}  // namespace

TEST_CASE("unit state: lengths are in mm and texts in pica points until set") {
    CHECK(kLoaded.unit == 1);
    CHECK(kLoaded.name == "mm");
    CHECK(kLoaded.distinct == "mm");
    CHECK(kLoaded.metricState == 1);
    CHECK(kLoaded.flag == 1);
    CHECK(kLoaded.textUnit == 7);
    CHECK(kLoaded.textName == "pt");
    CHECK(kLoaded.textDistinct == "pica");
    CHECK(kLoaded.scan == 3);
    CHECK(kLoaded.scanFactor == 1200);
    CHECK(kLoaded.internalFactor == 1);
}

TEST_CASE("unit state: every code shows its row, every other int the empty one") {
    FreshUnits fresh;
    FakeHost host(FakeHost::Settings{.ppi = 1});
    for (const Row& row : kTable) {
        CAPTURE(row.code);
        setuni(row.code);
        CHECK(getuni() == row.code);
        CHECK(std::string(numunistr()) == row.display);
        CHECK(std::string(GetDistinctUnitString()) == row.distinct);
        CHECK(getUnitPrecision() == row.precision);
        CHECK(metric() == row.metric);
        CHECK(distodou(1) == row.factor);

        settexuni(row.code);
        CHECK(gettexuni() == row.code);
        CHECK(std::string(gettexunistr()) == row.display);
        CHECK(std::string(GetDistinctTextUnitString()) == row.distinct);
        CHECK(getTextUnitPrecision() == row.precision);
    }
}

TEST_CASE("unit state: the table holds the factors to the last bit") {
    const double justBelow = std::nextafter(6000.0 / 83.0, 0.0);
    CHECK(gUnitFactors[7] == justBelow);
    CHECK(gUnitFactors[11] == 12700.0 / 1119.0);
    CHECK(gUnitFactors[9] == 9.5504);
}

TEST_CASE("unit state: setting the unit tells whether the metric state changed") {
    FreshUnits fresh;
    Listener listener;
    struct Step {
        int unit;
        int fired;
        int metric;
    };
    constexpr Step steps[] = {
        {0, 2, 0},  {8, 1, 0}, {2, 2, 1}, {1, 1, 1},       {1, 1, 1},       {12, 2, 0},
        {-1, 1, 0}, {1, 2, 1}, {3, 2, 0}, {INT_MIN, 1, 0}, {INT_MAX, 1, 0}, {2, 2, 1},
    };
    for (const Step& step : steps) {
        CAPTURE(step.unit);
        setuni(step.unit);
        CHECK(listener.take() == Changes{step.fired});
        CHECK(metric() == step.metric);
        CHECK(gMetricFlag == step.metric);
    }
    updateUnit();
    CHECK(listener.take() == Changes{1});
}

TEST_CASE("unit state: a negative flag inverts the metric state until the next update") {
    FreshUnits fresh;
    Listener listener;
    for (int flag : {-1, -2, INT_MIN}) {
        CAPTURE(flag);
        setuni(1);
        listener.take();
        gMetricFlag = flag;
        CHECK(metric() == 0);
        updateUnit();
        CHECK(listener.take() == Changes{2});
        CHECK(gMetricFlag == 1);  // the plain state, not the inverted one
        CHECK(metric() == 1);

        gMetricFlag = flag;
        setuni(0);
        CHECK(listener.take() == Changes{2});
        CHECK(gMetricFlag == 0);
        CHECK(metric() == 0);
    }
}

TEST_CASE("unit state: a flag above 1 is told as a change and replaced") {
    FreshUnits fresh;
    Listener listener;
    gMetricFlag = 5;
    CHECK(metric() == 1);
    updateUnit();
    CHECK(listener.take() == Changes{2});
    CHECK(gMetricFlag == 1);
}

TEST_CASE("unit state: the text unit fires 3 and leaves the other unit alone") {
    FreshUnits fresh;
    Listener listener;
    settexuni(1);
    CHECK(listener.take() == Changes{3});
    settexuni(1);
    CHECK(listener.take() == Changes{3});
    CHECK(std::string(gettexunistr()) == "mm");
    CHECK(getuni() == 1);
    CHECK(gMetricFlag == 1);
}

TEST_CASE("unit state: distinct names are found in either case, others change nothing") {
    FreshUnits fresh;
    Listener listener;
    struct NameRow {
        std::string name;
        int code;  // -1: unknown
    };
    const NameRow rows[] = {
        {"inch", 0},
        {"mm", 1},
        {"cm", 2},
        {"scanpix", 3},
        {"exp", 4},
        {"int", 5},
        {"mil", 6},
        {"pica", 7},
        {"pt", 8},
        {"didot", 9},
        {"Q", 10},
        {"bai", 11},
        {"PICA", 7},
        {"q", 10},
        {"ScanPix", 3},
        {"scan pix", -1},
        {"", -1},
        {"i", -1},
        {"inches", -1},
        {" mm", -1},
        {"mm ", -1},
        {"\xC3\x89", -1},
        {std::string("mm\0cm", 5), 1},
        {std::string("\0mm", 3), -1},
    };
    for (const NameRow& row : rows) {
        CAPTURE(row.name);
        setuni(6);
        settexuni(11);
        listener.take();
        CHECK(SetDistinctUnitString(row.name) == (row.code >= 0));
        CHECK(getuni() == (row.code >= 0 ? row.code : 6));
        const bool toMetric = row.code == 1 || row.code == 2;
        CHECK(listener.take() == (row.code < 0 ? Changes{} : Changes{toMetric ? 2 : 1}));

        CHECK(SetDistinctTextUnitString(row.name) == (row.code >= 0));
        CHECK(gettexuni() == (row.code >= 0 ? row.code : 11));
        CHECK(listener.take() == (row.code < 0 ? Changes{} : Changes{3}));
    }
    SetDistinctUnitString("PICA");
    CHECK(std::string(numunistr()) == "pt");
    SetDistinctTextUnitString("didot");
    CHECK(std::string(gettexunistr()) == "pt");
}

TEST_CASE("unit state: slots see the new state, and what they throw finds it stored") {
    FreshUnits fresh;
    struct Refusal {};
    gOnUnitChanged.connect([](int what) {
        CHECK(getuni() == 0);
        CHECK(std::string(numunistr()) == "inch");
        CHECK(gMetricFlag == 0);
        if (what == 3) CHECK(gettexuni() == 10);
        if (what == 3) CHECK(std::string(gettexunistr()) == "Q");
        throw Refusal{};
    });
    CHECK_THROWS_AS(setuni(0), Refusal);
    CHECK(getuni() == 0);
    CHECK(std::string(numunistr()) == "inch");
    CHECK(gMetricFlag == 0);
    CHECK_THROWS_AS(settexuni(10), Refusal);
    CHECK(gettexuni() == 10);
    CHECK_THROWS_AS(SetDistinctUnitString("inch"), Refusal);
    CHECK_THROWS_AS(SetDistinctTextUnitString("q"), Refusal);
}

TEST_CASE("unit state: a slot may set the unit itself") {
    FreshUnits fresh;
    Changes seen;
    gOnUnitChanged.connect([&](int what) {
        seen.push_back(what);
        if (getuni() == 0) setuni(2);
    });
    setuni(0);
    CHECK(seen == Changes{2, 2});
    CHECK(getuni() == 2);
    CHECK(std::string(numunistr()) == "cm");
}

TEST_CASE("unit state: groups order the slots by number") {
    FreshUnits fresh;
    std::string order;
    gOnUnitChanged.connect(2, [&](int) { order += 'b'; });
    gOnUnitChanged.connect(1, [&](int) { order += 'a'; });
    gOnUnitChanged.connect([&](int) { order += 'c'; });
    updateUnit();
    CHECK(order == "abc");
}

TEST_CASE("unit state: the scan's resolution and the document's become factors, silently") {
    FreshUnits fresh;
    Listener listener;
    FakeHost host(FakeHost::Settings{.ppi = 2400});
    numsca(600);
    numbersinit();
    CHECK(listener.take().empty());
    setuni(3);
    CHECK(distodou(2400) == 600);
    setuni(5);
    CHECK(distodou(1234567) == 1234567);
}

TEST_CASE("unit state: the distance is described as a length") {
    FakeHost host(FakeHost::Settings{.ppi = 2400});
    const Orlune::Unit unit = GetDravixDistanceUnit();
    CHECK(unit.GetScale() == 0.0254 / 2400.0);
    CHECK(unit.GetPower(Orlune::Unit::kLength) == 1);
    for (int base = 1; base < Orlune::Unit::kBaseUnits; ++base)
        CHECK(unit.GetPower(static_cast<Orlune::Unit::BaseUnit>(base)) == 0);
}

TEST_CASE("unit state: conversions ask for the resolution each time") {
    FreshUnits fresh;
    setuni(0);
    {
        FakeHost host(FakeHost::Settings{.ppi = 2400});
        CHECK(distodou(4800) == 2);
        CHECK(doutodis(2) == 4800);
    }
    FakeHost host(FakeHost::Settings{.ppi = 1200});
    CHECK(distodou(4800) == 4);
    CHECK(doutodis(2) == 2400);
}
