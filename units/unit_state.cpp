// The table of measurement units, the current ones, and their change signal.

#include <cstddef>
#include <string>

#include "platform/orlune.h"
#include "platform/pemmit.h"
#include "units/unit_state.h"
#include "vaskel/units.h"

namespace Vaskel {

constexpr int kScanPixels = 3;
constexpr int kInternal = 5;

// The pica point lies one unit in the last place below 6000/83, and the didot
// point is far from the usual 67.6 an inch: stored sizes were made with these
// factors, so they stay.
// Test: "unit state: the table holds the factors to the last bit".
double gUnitFactors[kUnitCount + 1] = {
    1.0,  25.4,   2.54,  1200.0,           4000.0, 1.0, 1000.0, 72.28915662650601,
    72.0, 9.5504, 101.6, 12700.0 / 1119.0, 1.0,
};

int gCurrentUnit = 1;
int gTextUnit = 7;
int gMetricFlag = 1;
int scauni = kScanPixels;
boost::signals2::signal<void(int)> gOnUnitChanged;

namespace {

char gUnitString[24] = "mm";
char gTextUnitString[16] = "pt";
static_assert(sizeof gTextUnitString >= sizeof UnitRow::display);

constexpr int kUnitSet = 1;
constexpr int kUnitAndMetricSet = 2;
constexpr int kTextUnitSet = 3;

// Only mm and cm; in unsigned numbers, so that every other int is not.
int isMetric(int unit) { return static_cast<unsigned>(unit) - 1u <= 1u; }

// The code with this distinct name, or -1. The host compares up to a zero byte.
int distinctUnit(const std::string& name) {
    for (int unit = 0; unit < kUnitCount; ++unit)
        if (Orlune::strcomign(name.c_str(), kUnits[unit].distinct) == 0) return unit;
    return -1;
}

}  // namespace

int getuni() { return gCurrentUnit; }

void setuni(int unit) {
    gCurrentUnit = unit;
    updateUnit();
}

void updateUnit() {
    Orlune::strmov(gUnitString, kUnits[unitRow(gCurrentUnit)].display);
    if (metric() == gMetricFlag) {
        gOnUnitChanged(kUnitSet);
        return;
    }
    // The plain state, also where the flag inverted what metric() told: a
    // negative flag never equals 0 or 1, so it always ends here.
    gMetricFlag = isMetric(gCurrentUnit);
    gOnUnitChanged(kUnitAndMetricSet);
}

int gettexuni() { return gTextUnit; }

void settexuni(int unit) {
    gTextUnit = unit;
    Orlune::strmov(gTextUnitString, kUnits[unitRow(unit)].display);
    gOnUnitChanged(kTextUnitSet);
}

const char* numunistr() { return gUnitString; }
const char* gettexunistr() { return gTextUnitString; }
int getUnitPrecision() { return kUnits[unitRow(gCurrentUnit)].precision; }
int getTextUnitPrecision() { return kUnits[unitRow(gTextUnit)].precision; }
const char* GetDistinctUnitString() { return kUnits[unitRow(gCurrentUnit)].distinct; }
const char* GetDistinctTextUnitString() { return kUnits[unitRow(gTextUnit)].distinct; }

bool SetDistinctUnitString(const std::string& name) {
    const int unit = distinctUnit(name);
    if (unit < 0) return false;
    setuni(unit);
    return true;
}

bool SetDistinctTextUnitString(const std::string& name) {
    const int unit = distinctUnit(name);
    if (unit < 0) return false;
    settexuni(unit);
    return true;
}

int metric() { return isMetric(gCurrentUnit) ^ (gMetricFlag < 0); }

void numsca(double unitsPerInch) { gUnitFactors[kScanPixels] = unitsPerInch; }
void numbersinit() { gUnitFactors[kInternal] = Pemmit::getppi(); }

Orlune::Unit GetDravixDistanceUnit() {
    Orlune::Unit unit;
    unit.SetPower(Orlune::Unit::kLength, 1);
    unit.SetScale(0.0254 / static_cast<double>(Pemmit::getppi()));
    return unit;
}

}  // namespace Vaskel
