// Distances and areas as text in a unit's own widths, and as numbers.

#include <algorithm>
#include <cstdint>
#include <limits>

#include "platform/pemmit.h"
#include "units/doutostr.h"
#include "units/unit_state.h"
#include "vaskel/units.h"

namespace Vaskel {
namespace {

constexpr int kNoDistance = std::numeric_limits<std::int32_t>::min();
constexpr double kNoValue = std::numeric_limits<double>::infinity();

double resolution() { return static_cast<double>(Pemmit::getppi()); }

// The widths of lengths in every unit, with 0, 1 and 2 decimals more.
struct LengthWidths {
    TextWidths of[kUnitCount + 1][3];
};

constexpr LengthWidths makeLengthWidths() {
    LengthWidths widths{};
    for (int row = 0; row <= kUnitCount; ++row)
        for (int more = 0; more < 3; ++more)
            widths.of[row][more] =
                TextWidths::of(kUnits[row].intDigits, kUnits[row].precision + more, true);
    return widths;
}
constexpr LengthWidths kLengthWidths = makeLengthWidths();

void lengthToText(double distance, int unit, int moreDecimals, char* out) {
    const int row = unitRow(unit);
    formatNumber(distance * gUnitFactors[row] / resolution(), out,
                 kLengthWidths.of[row][moreDecimals]);
}

void distanceToText(const int* dist, int unit, int moreDecimals, char* out) {
    if (*dist == kNoDistance) {
        *out = '\0';
        return;
    }
    lengthToText(*dist, unit, moreDecimals, out);
}

}  // namespace

void distostr(const int* dist, char* out) { distanceToText(dist, gCurrentUnit, 0, out); }
void distostr2(const int* dist, char* out) { distanceToText(dist, gCurrentUnit, 1, out); }
void textostr(const int* dist, char* out) { distanceToText(dist, gTextUnit, 0, out); }

void distostrdou(const double* dist, char* out) {
    if (*dist == kNoValue) {
        *out = '\0';
        return;
    }
    lengthToText(*dist, gCurrentUnit, 2, out);
}

// No test for the missing distance: a scan has none, and hosts print what they
// stored.
// Test: "vectostr prints the lowest distance as a number".
void vectostr(const int* dist, char* out) { lengthToText(*dist, scauni, 0, out); }

void sqdistostr(const double* sqdist, char* out) {
    if (*sqdist == kNoValue) {
        *out = '\0';
        return;
    }
    constexpr int allDigits = 9;
    const int row = unitRow(gCurrentUnit);
    const double factor = gUnitFactors[row];
    const double ppi = resolution();
    const int intDigits = std::min(2 * kUnits[row].intDigits, allDigits);
    formatNumber(factor * *sqdist * factor / ppi / ppi, out,
                 TextWidths::of(intDigits, allDigits - intDigits, false));
}

double distodou(int dist) { return distodou(static_cast<double>(dist)); }
double distodou(double dist) { return dist * unitFactor(gCurrentUnit) / resolution(); }
double doutodis(double value) { return resolution() * value / unitFactor(gCurrentUnit); }

}  // namespace Vaskel
