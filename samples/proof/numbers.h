// Numbers as file formats want them, whatever the locale.

#ifndef SAMPLES_PROOF_NUMBERS_H
#define SAMPLES_PROOF_NUMBERS_H

#include <charconv>
#include <string>

namespace Proof {

/// Appends value in decimal.
inline void appendInt(std::string& to, int value) {
    char digits[12];
    to.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

/// value with at most decimals digits behind the point, without trailing
/// zeros and never as "-0": 210.05799 with 3 is "210.058", 3.0 is "3". The
/// value is finite and below 1e15.
std::string decimal(double value, int decimals);

/// "1,234,567" for 1234567.
std::string grouped(unsigned long long value);

}  // namespace Proof

#endif
