// Big integers by their digits, zeros on top included.

#ifndef TESTS_ENCODING_BIGINT_SUPPORT_H
#define TESTS_ENCODING_BIGINT_SUPPORT_H

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "encoding/bigint.h"

using Digits = std::vector<unsigned short>;

inline Vaskel::bigint numberOf(const Digits& digits) {
    using Access = Vaskel::BigintAccess;
    Vaskel::bigint number;
    Access::reserve(number, digits.size());
    std::copy(digits.begin(), digits.end(), Access::digits(number));
    Access::setLength(number, static_cast<int>(digits.size()));
    return number;
}

inline Digits digitsOf(const Vaskel::bigint& number) {
    using Access = Vaskel::BigintAccess;
    return {Access::digits(number), Access::digits(number) + Access::length(number)};
}

/// As one reads numbers: the top digit first.
inline std::string shown(const Digits& digits) {
    std::string text;
    for (const unsigned short digit : digits) text = std::to_string(digit) + " " + text;
    return "[ " + text + "]";
}

/// A digit that makes trouble with a probability of kind / 4, or any.
inline unsigned short awkwardDigit(std::mt19937& random, unsigned kind) {
    constexpr unsigned short kAwkward[] = {0, 0xFFFF, 1, 0xFFFE, 0x8000, 2, 3};
    if (random() % 4 < kind) return kAwkward[random() % std::size(kAwkward)];
    return static_cast<unsigned short>(random());
}

/// Rows of such digits, many with stretches of the same one.
inline Digits awkwardRow(std::mt19937& random, std::size_t length) {
    const auto kind = static_cast<unsigned>(random() % 5);
    Digits row(length);
    for (std::size_t i = 0; i < length; ++i)
        row[i] = i > 0 && kind > 2 && random() % 3 == 0 ? row[i - 1] : awkwardDigit(random, kind);
    return row;
}

#endif
