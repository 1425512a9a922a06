// The readers of lengths: byte 0 chooses the units, the rest is the field. Every
// reader agrees with strtodouuni about the value, beeps exactly once when it
// fails, and leaves its output and the units alone then.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

#include "embedded/host.h"
#include "platform/orlune.h"
#include "vaskel/units.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr int kNoDistance = std::numeric_limits<int>::min();

int gBeeps = 0;

void require(bool holds) {
    if (!holds) std::abort();
}

bool isEmpty(const char* text) {
    while (*text == ' ') ++text;
    return *text == '\0';
}

// Both not-a-numbers count as equal.
bool same(double a, double b) { return a == b || (a != a && b != b); }

struct Reading {
    int rc;
    double value;
};

Reading read(const char* text, bool blankBeforeUnit, bool distinctNames) {
    Reading reading{0, 77};
    reading.rc = Vaskel::strtodouuni(text, &reading.value, blankBeforeUnit, distinctNames);
    require(reading.rc == 0 || (reading.rc == -1 && reading.value == 77));
    return reading;
}

template <class Output>
void check(int (*reader)(const char*, Output*), const char* text, bool succeeds, Output want) {
    Output out = 77;
    gBeeps = 0;
    const int unit = Vaskel::getuni();
    const int rc = reader(text, &out);
    require(rc == (succeeds ? 0 : -1));
    require(gBeeps == (succeeds ? 0 : 1));
    require(same(out, succeeds ? want : Output{77}));
    require(Vaskel::getuni() == unit);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    Embedded::onBeep([](int tone) { gBeeps += tone == 500 ? 1 : 100; });
    std::vector<char> field(data + 1, data + size);
    field.push_back('\0');
    const char* const text = field.data();
    const int unit = data[0] % 14 - 1;  // -1 and 12 are no units
    const int textUnit = data[0] / 14 % 14 - 1;
    Vaskel::setuni(unit);
    Vaskel::settexuni(textUnit);
    Vaskel::numbersinit();

    const bool empty = isEmpty(text);
    const Reading length = read(text, false, false);
    const bool ok = length.rc == 0;
    require(!empty || (ok && length.value == kInfinity));
    const int distance = Orlune::iround(Vaskel::doutodis(length.value));
    check<int>(Vaskel::strtodis, text, ok, empty ? 0 : distance);
    check<int>(Vaskel::strtodisnil, text, ok, empty ? kNoDistance : distance);
    check<double>(Vaskel::strtodisdou, text, ok && !empty, Vaskel::doutodis(length.value));

    // A blank that is allowed before a unit can only help.
    for (bool distinctNames : {false, true}) {
        const Reading strict = read(text, false, distinctNames);
        const Reading lenient = read(text, true, distinctNames);
        if (std::strchr(text, ' ') == nullptr)
            require(strict.rc == lenient.rc && same(strict.value, lenient.value));
    }

    if (unit == textUnit) {
        check<int>(Vaskel::strtotex, text, ok, empty ? 0 : distance);
    } else {
        Vaskel::setuni(textUnit);
        const Reading size2 = read(text, false, true);
        const int points = Orlune::iround(Vaskel::doutodis(size2.value));
        Vaskel::setuni(unit);
        check<int>(Vaskel::strtotex, text, size2.rc == 0, empty ? kNoDistance : points);
    }

    double number = 77;
    const bool isNumber = Vaskel::strtodou(text, &number) == 0 && !empty;
    check<int>(Vaskel::strtoint, text, isNumber, Orlune::iround(number));
    // A text without units reads the same with them, unless a word gets in.
    if (isNumber && ok) require(same(number, length.value));
    Embedded::onBeep({});
    return 0;
}
