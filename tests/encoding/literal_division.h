// A division by the literal loops, for comparison.

#ifndef TESTS_ENCODING_LITERAL_DIVISION_H
#define TESTS_ENCODING_LITERAL_DIVISION_H

#include <cstdint>
#include <string>

#include "tests/encoding/bigint_support.h"
#include "tests/encoding/literal_bigint.h"

struct Division {
    Digits quotient, remainder;
    int negatives = 0;
    bool operator==(const Division&) const = default;
};

inline std::string shown(const Division& d) {
    return shown(d.quotient) + " remainder " + shown(d.remainder) + ", " +
           std::to_string(d.negatives) + " negative results";
}

// The literal loops, on the divisor without its zeros on top where these
// cannot be divided by. False when they take more than steps.
template <std::uint32_t Base>
bool literally(const Digits& dividend, Digits divisor, std::int64_t steps, Division& result) {
    using Literal = LiteralBigint<Base>;
    for (;;) {
        Literal::lines.clear();
        Literal::stepsLeft = steps;
        Literal quotient, remainder;
        try {
            Literal(dividend).divmod(Literal(divisor), quotient, remainder);
        } catch (TooManySteps) {
            return false;
        } catch (typename Literal::DivisorNeedsTrimming) {
            while (divisor.back() == 0) divisor.pop_back();
            continue;
        }
        result = {quotient.digits(), remainder.digits(), static_cast<int>(Literal::lines.size())};
        return true;
    }
}

#endif
