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

// The widths of lengths: for each number of integer digits those with as many decimals
// as units of so many digits have, and up to two more, one behind the other.
struct WidthRange {
    int intDigits, leastDecimals, mostDecimals;
};
constexpr int kMostMore = 2;
constexpr WidthRange kRanges[] = {{1, 0, 2}, {2, 4, 6}, {3, 3, 5}, {4, 1, 4}, {5, 1, 3}, {7, 0, 2}};

struct LengthWidths {
    TextWidths of[19];
    std::uint16_t first[kUnitCount + 1];  // in bytes, those of a unit without more decimals

    const TextWidths* ofRow(unsigned row) const {
        return reinterpret_cast<const TextWidths*>(reinterpret_cast<const char*>(of) + first[row]);
    }
};

constexpr LengthWidths makeLengthWidths() {
    LengthWidths widths{};
    int at = 0;
    for (const WidthRange& range : kRanges) {
        for (int row = 0; row <= kUnitCount; ++row)
            if (kUnits[row].intDigits == range.intDigits)
                widths.first[row] = static_cast<std::uint16_t>(
                    sizeof(TextWidths) *
                    static_cast<unsigned>(at + kUnits[row].precision - range.leastDecimals));
        for (int decimals = range.leastDecimals; decimals <= range.mostDecimals; ++decimals)
            widths.of[at++] = TextWidths::of(range.intDigits, decimals, true);
    }
    return widths;
}
constexpr LengthWidths kLengthWidths = makeLengthWidths();

constexpr bool hasAllWidths() {
    for (int row = 0; row <= kUnitCount; ++row) {
        for (int more = 0; more <= kMostMore; ++more) {
            const TextWidths& widths =
                kLengthWidths.of[kLengthWidths.first[row] / sizeof(TextWidths) +
                                 static_cast<unsigned>(more)];
            if (widths.intDigits != kUnits[row].intDigits ||
                widths.decimals != kUnits[row].precision + more)
                return false;
        }
    }
    return true;
}
static_assert(hasAllWidths());

// The host's answer first, so that no product waits in memory while it is asked.
template <class Distance>
void lengthToText(Distance distance, const int& unit, int moreDecimals, char* out) {
    const double ppi = resolution();
    const auto row = static_cast<unsigned>(unitRow(unit));
    formatNumber(distance * gUnitFactors[row] / ppi, out, kLengthWidths.ofRow(row)[moreDecimals]);
}

void distanceToText(const int* dist, const int& unit, int moreDecimals, char* out) {
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
    doutostr(factor * *sqdist * factor / ppi / ppi, out, intDigits, allDigits - intDigits, false);
}

double distodou(int dist) { return distodou(static_cast<double>(dist)); }
double distodou(double dist) { return dist * unitFactor(gCurrentUnit) / resolution(); }
double doutodis(double value) { return resolution() * value / unitFactor(gCurrentUnit); }

}  // namespace Vaskel
