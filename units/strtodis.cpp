// What dialog fields hold: distances, text sizes, coordinates, integers.
//
// Whoever refuses a text beeps last, with all state as it was, so that a host
// may throw from its beep.

#include <cstdint>
#include <limits>

#include "platform/orlune.h"
#include "platform/pemmit.h"
#include "units/strtodou.h"
#include "units/unit_state.h"
#include "vaskel/units.h"

namespace Vaskel {
namespace {

constexpr int kNoDistance = std::numeric_limits<std::int32_t>::min();

int refuse() {
    Orlune::Beep(500);
    return -1;
}

Field readDistance(const char* s) { return readLengths(s, gCurrentUnit, false, false); }

double toDistance(double value, int unit) { return Pemmit::getppi() * value / unitFactor(unit); }

// Stores what field holds as a distance; emptyDistance for an empty field.
int storeDistance(const Field& field, int unit, int emptyDistance, int* out) {
    if (field.state == Field::kFailed) return refuse();
    *out = field.state == Field::kEmpty ? emptyDistance
                                        : Orlune::iround(toDistance(field.value, unit));
    return 0;
}

}  // namespace

int strtodisnil(const char* s, int* out) {
    return storeDistance(readDistance(s), gCurrentUnit, kNoDistance, out);
}

int strtodis(const char* s, int* out) {
    return storeDistance(readDistance(s), gCurrentUnit, 0, out);
}

int strtodisdou(const char* s, double* out) {
    const Field field = readDistance(s);
    if (field.state != Field::kValue) return refuse();
    *out = toDistance(field.value, gCurrentUnit);
    return 0;
}

// Names and empty fields differ between the two cases: hosts rely on both.
// Test: "strtotex reads distinct names while the units differ".
int strtotex(const char* s, int* out) {
    if (gTextUnit == gCurrentUnit) return strtodis(s, out);
    return storeDistance(readLengths(s, gTextUnit, false, true), gTextUnit, kNoDistance, out);
}

int strtovec(const char* s, int* out) {
    const Field field = readNumbers(s);
    if (field.state != Field::kValue) return refuse();
    *out = Orlune::iround(toDistance(field.value, scauni));
    return 0;
}

int strtoint(const char* s, int* out) { return strtointmsg(s, out, 1); }

int strtointmsg(const char* s, int* out, int beep) {
    const Field field = readNumbers(s);
    if (field.state != Field::kValue) return beep != 0 ? refuse() : -1;
    *out = Orlune::iround(field.value);
    return 0;
}

}  // namespace Vaskel
