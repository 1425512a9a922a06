// Reading the expression in a field.

#ifndef UNITS_STRTODOU_H
#define UNITS_STRTODOU_H

namespace Vaskel {

struct Field {
    enum State { kFailed, kEmpty, kValue };
    State state;
    double value;  // +infinity unless kValue
};

// An expression without units.
[[gnu::noinline]] Field readNumbers(const char* s);

// An expression whose operands may carry units, in the unit current.
[[gnu::noinline]] Field readLengths(const char* s, int current, bool blankBeforeUnit,
                                    bool distinctNames);

// Reads one number at *cursor, signs and digits, and moves *cursor behind it.
// The rule itself: digits accumulate in a double.
[[gnu::noinline]] double scanNumberPlain(const char** cursor);

// The same number and cursor. Up to 15 digits accumulate in an integer instead:
// below 10^15 < 2^53 every step of the plain form is exact, so is the power of
// ten, and the one division rounds the same quotient. Longer runs of digits
// are handed to the plain form.
double scanNumber(const char** cursor);

}  // namespace Vaskel

#endif
