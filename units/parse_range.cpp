// Ranges of percentages: two numbers around a colon.

#include "vaskel/units.h"

namespace Vaskel {
namespace {

// Blank, tab, line feed, form feed, carriage return; not the vertical tab.
bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r'; }

const char* skipSpace(const char* s) {
    while (isSpace(*s)) ++s;
    return s;
}

// Reads digits and points from s into *value and returns where they end. The
// fraction adds up digit by digit, unlike that of expressions.
const char* scanPercent(const char* s, double* value) {
    double number = 0;
    double place = 0;  // what the next digit is divided by, 0 before the point
    for (;; ++s) {
        if (*s >= '0' && *s <= '9') {
            const int digit = *s - '0';
            if (place == 0) {
                number = number * 10 + digit;
            } else {
                number += digit / place;
                place *= 10;
            }
        } else if (*s == '.') {
            if (place == 0) place = 10;
        } else {
            break;
        }
    }
    *value = number;
    return s;
}

double clampPercent(double value) { return value > 100 ? 100 : value > 0 ? value : 0; }

}  // namespace

int parseRange(const char* s, double* lo, double* hi) {
    if (!s || *s == '\0') return 1;
    *lo = 0;
    *hi = 0;
    s = skipSpace(s);
    s = skipSpace(scanPercent(s, lo));
    if (*s != ':') return 1;
    double upper;
    s = skipSpace(scanPercent(skipSpace(s + 1), &upper));
    if (*s != '\0') return 1;
    *lo = clampPercent(*lo);
    *hi = clampPercent(upper);
    return 0;
}

}  // namespace Vaskel
