// Every form of strtodou against an evaluator that first cuts the text into tokens, and
// both forms of number scanning against each other.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "units/strtodou.h"
#include "vaskel/units.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

void require(bool holds) {
    if (!holds) std::abort();
}

bool sameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

struct Token {
    bool isNumber;
    double number;
    char op;
};

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Takes one operand from the front of text.
std::optional<double> takeNumber(std::string* text) {
    text->erase(0, text->find_first_not_of(' '));
    if (text->empty()) return std::nullopt;
    std::size_t at = 0;
    double sign = 1;
    while (at < text->size() && ((*text)[at] == '-' || (*text)[at] == '+'))
        if ((*text)[at++] == '-') sign = -sign;
    double value = 0;
    while (at < text->size() && isDigit((*text)[at])) value = value * 10 + ((*text)[at++] - '0');
    if (at < text->size() && ((*text)[at] == '.' || (*text)[at] == ',')) {
        double divisor = 1;
        for (++at; at < text->size() && isDigit((*text)[at]); divisor *= 10)
            value = value * 10 + ((*text)[at++] - '0');
        value /= divisor;
    }
    text->erase(0, at);
    text->erase(0, text->find_first_not_of(' '));
    return value * sign;
}

// The value, +infinity for an empty text, nothing for a failure.
std::optional<double> evaluate(std::string text) {
    std::optional<double> value = takeNumber(&text);
    if (!value) return kInfinity;
    while (!text.empty()) {
        const char op = text.front();
        text.erase(0, 1);
        const std::optional<double> operand = takeNumber(&text);
        if (!operand || *operand == kInfinity) return std::nullopt;
        if (op == '*') {
            *value *= *operand;
        } else if (op == '+') {
            *value += *operand;
        } else if (op == '-') {
            *value -= *operand;
        } else if (op == '/' && *operand != 0) {
            *value /= *operand;
        } else {
            return std::nullopt;
        }
    }
    return value;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 4096) return 0;  // evaluate is quadratic
    std::string text(reinterpret_cast<const char*>(data), size);
    text.resize(std::strlen(text.c_str()));
    const std::vector<char> exact(text.c_str(), text.c_str() + text.size() + 1);

    const std::optional<double> want = evaluate(text);
    for (const Vaskel::FieldForm& form : Vaskel::fieldForms()) {
        double got = 77;
        const int rc = form.run(exact.data(), &got);
        require(rc == (want ? 0 : -1));
        require(want ? sameBits(got, *want) || (got != got && *want != *want) : got == 77);
    }

    for (const char* from = exact.data(); *from != '\0'; ++from) {
        const char* plain = from;
        const char* fast = from;
        const double a = Vaskel::scanNumberPlain(&plain);
        const double b = Vaskel::scanNumber(&fast);
        require(plain == fast && sameBits(a, b));
        if (from - exact.data() > 64) break;
    }
    return 0;
}
