// Reading the expression in a field.

#ifndef UNITS_STRTODOU_H
#define UNITS_STRTODOU_H

#include <span>

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

// strtodou in one of its forms.
using ReadField = int(const char* s, double* out);

// Any expression, byte by byte.
ReadField readFieldByBytes;

#if defined(__x86_64__)
// One number of up to 15 digits and nothing behind it, in front of which blanks may
// stand, at once; other texts as readFieldByBytes. For CpuLevel::Avx512Vbmi2.
ReadField readFieldAvx512;

// Whether that is how s is read, behind its blanks; if so, stores the number. For tests.
bool readsNumberAvx512(const char* s, double* out);
#endif

struct FieldForm {
    const char* name;
    ReadField* run;
};

// The forms that this CPU can run, the best one last.
std::span<const FieldForm> fieldForms();

// Makes strtodou use form; null for the best one again. For tests and benchmarks.
void forceFieldForm(const FieldForm* form);

}  // namespace Vaskel

#endif
