// Expressions of numbers and units, evaluated strictly from left to right.
//
// Every step moves the cursor forward by at least one byte and looks at most
// nine bytes ahead, so the cost is linear in the text.

#include "units/strtodou.h"

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "units/unit_state.h"
#include "util/cpu.h"
#include "vaskel/units.h"

namespace Vaskel {
namespace {

constexpr double kNoValue = std::numeric_limits<double>::infinity();
constexpr Field kFailure = {Field::kFailed, kNoValue};

constexpr int kLongestWord = 8;
constexpr int kPicaPoint = 7;
constexpr int kDidotPoint = 9;

bool isDigit(char c) { return static_cast<unsigned char>(c - '0') < 10; }

const char* skipBlanks(const char* s) {
    while (*s == ' ') ++s;
    return s;
}

// A name or word of up to 8 bytes as one number: equal texts are equal
// numbers, and a prefix equals the low bytes.
constexpr std::uint64_t packed(const char* text) {
    std::uint64_t word = 0;
    for (int i = 0; i < kLongestWord && text[i] != '\0'; ++i)
        word |= std::uint64_t{static_cast<unsigned char>(text[i])} << (8 * i);
    return word;
}

struct NameTable {
    std::uint64_t names[kUnitCount];  // 0 matches no word
};

constexpr NameTable nameTable(bool distinctNames) {
    NameTable table{};
    for (int unit = 0; unit < kUnitCount; ++unit) {
        // Three units show "pt"; the word means the one of them that is 1/72
        // inch.
        const bool hidden = unit == kPicaPoint || unit == kDidotPoint;
        table.names[unit] = distinctNames ? packed(kUnits[unit].distinct)
                            : hidden      ? 0
                                          : packed(kUnits[unit].display);
    }
    return table;
}

// The code of a unit word of length bytes, 1 to 8, or -1. Equality goes before
// prefixes: "pt" is not the pica of "p", "int" is not an "inch".
int findUnit(std::uint64_t word, int length, bool distinctNames) {
    static constexpr NameTable tables[2] = {nameTable(false), nameTable(true)};
    const NameTable& table = tables[distinctNames];
    for (int unit = 0; unit < kUnitCount; ++unit)
        if (table.names[unit] == word) return unit;
    const std::uint64_t mask = ~std::uint64_t{0} >> (64 - 8 * length);
    for (int unit = 0; unit < kUnitCount; ++unit)
        if ((table.names[unit] & mask) == word) return unit;
    return -1;
}

struct UnitRules {
    int current;
    bool blankBeforeUnit;
    bool distinctNames;

    // Converts *value by the unit word at cursor, if there is one, and returns
    // the address behind it.
    const char* operator()(const char* cursor, double* value) const {
        if (blankBeforeUnit) cursor = skipBlanks(cursor);
        std::uint64_t word = 0;
        int length = 0;
        for (char c; (c = cursor[length]) != '\0' && c != ' ' && !isDigit(c); ++length) {
            if (length == kLongestWord) return cursor;
            word |= std::uint64_t{static_cast<unsigned char>(c)} << (8 * length);
        }
        if (length == 0) return cursor;
        const int unit = findUnit(word, length, distinctNames);
        if (unit < 0) return cursor;
        if (unit != current) *value = *value * unitFactor(current) / unitFactor(unit);
        return cursor + length;
    }
};

// Adds the digits at s to *number, modulo 2^64, and returns where they end. Three
// digits for each jump back.
inline const char* addDigits(const char* s, std::uint64_t* number) {
    std::uint64_t sum = *number;
#pragma GCC unroll 3
    for (unsigned digit; (digit = static_cast<unsigned char>(*s) - unsigned{'0'}) < 10; ++s)
        sum = sum * 10 + digit;
    // Anew from here on: otherwise every turn keeps what the last one has to say.
    __asm__("" : "+r"(s));
    *number = sum;
    return s;
}

struct Number {
    double value;
    const char* end;
};

// In one place, in registers: every reader of operands calls it.
[[gnu::noinline, gnu::aligned(64)]] Number scanFast(const char* s) {
    constexpr std::ptrdiff_t mostDigits = 15;
    static constexpr double powers[mostDigits + 1] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                      1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    const char* const begin = s;
    std::uint64_t negative = 0;
    for (; *s == '-' || *s == '+'; ++s) negative ^= *s == '-';

    std::uint64_t digits = 0;
    const char* const first = s;
    s = addDigits(s, &digits);
    std::ptrdiff_t count = s - first;
    std::ptrdiff_t decimals = 0;
    if (*s == '.' || *s == ',') {
        const char* const fraction = s + 1;
        s = addDigits(fraction, &digits);
        decimals = s - fraction;
        count += decimals;
    }
    if (count > mostDigits) {
        const char* cursor = begin;
        const double value = scanNumberPlain(&cursor);
        return {value, cursor};
    }
    double value = static_cast<double>(static_cast<std::int64_t>(digits));
    if (decimals != 0) value /= powers[decimals];
    // Times the sign, without a branch that is guessed wrong at every other text.
    return {std::bit_cast<double>(std::bit_cast<std::uint64_t>(value) ^ negative << 63), s};
}

struct NoUnits {
    const char* operator()(const char* cursor, double*) const { return cursor; }
};

// Skips blanks and reads an operand; false when the text ends there.
template <class Units>
inline bool readOperand(const char** cursor, double* value, const Units& units) {
    *cursor = skipBlanks(*cursor);
    if (**cursor == '\0') return false;
    const Number number = scanFast(*cursor);
    *value = number.value;
    *cursor = skipBlanks(units(number.end, value));
    return true;
}

// What follows the first operand, apart from it: most fields hold no more than
// that, and its reading is shorter where nothing else needs registers.
template <class Units>
[[gnu::noinline]] Field readOperations(const char* s, double value, const Units& units) {
    while (*s != '\0') {
        const char op = *s++;
        double operand;
        if (!readOperand(&s, &operand, units) || operand == kNoValue) return kFailure;
        switch (op) {
            case '*':
                value *= operand;
                break;
            case '+':
                value += operand;
                break;
            case '-':
                value -= operand;
                break;
            case '/':
                if (operand == 0) return kFailure;
                value /= operand;
                break;
            default:
                return kFailure;
        }
    }
    return {Field::kValue, value};
}

template <class Units>
inline Field readField(const char* s, const Units& units) {
    if (!s) return kFailure;
    double value;
    if (!readOperand(&s, &value, units)) return {Field::kEmpty, kNoValue};
    if (*s == '\0') return {Field::kValue, value};
    return readOperations(s, value, units);
}

int stored(const Field& field, double* out) {
    if (field.state == Field::kFailed) return -1;
    *out = field.value;
    return 0;
}

constexpr FieldForm kForms[] = {
    {"bytes", readFieldByBytes},
#if defined(__x86_64__)
    {"avx512", readFieldAvx512},
#endif
};

// Not by the list of all, so that it stays out of the library.
ReadField* bestForm() {
#if defined(__x86_64__)
    if (cpuLevel() >= CpuLevel::Avx512Vbmi2) return readFieldAvx512;
#endif
    return readFieldByBytes;
}

int readFirstField(const char* s, double* out);

// What strtodou calls: at first a function that puts the best form here.
constinit std::atomic<ReadField*> gReadField{readFirstField};

int readFirstField(const char* s, double* out) {
    ReadField* const best = bestForm();
    gReadField.store(best, std::memory_order_relaxed);
    return best(s, out);
}

}  // namespace

std::span<const FieldForm> fieldForms() {
    std::size_t count = 1;
    while (kForms[count - 1].run != bestForm()) ++count;
    return std::span(kForms).first(count);
}

void forceFieldForm(const FieldForm* form) {
    gReadField.store(form ? form->run : readFirstField, std::memory_order_relaxed);
}

double scanNumberPlain(const char** cursor) {
    const char* s = *cursor;
    double sign = 1;
    for (; *s == '-' || *s == '+'; ++s)
        if (*s == '-') sign = -sign;
    double value = 0;
    double divisor = 0;
    for (;; ++s) {
        if (isDigit(*s)) {
            value = value * 10 + (*s - '0');
            divisor *= 10;
        } else if ((*s == '.' || *s == ',') && divisor == 0) {
            divisor = 1;
        } else {
            break;
        }
    }
    *cursor = s;
    if (divisor != 0) value /= divisor;
    return value * sign;
}

double scanNumber(const char** cursor) {
    const Number number = scanFast(*cursor);
    *cursor = number.end;
    return number.value;
}

Field readNumbers(const char* s) { return readField(s, NoUnits{}); }

Field readLengths(const char* s, int current, bool blankBeforeUnit, bool distinctNames) {
    return readField(s, UnitRules{current, blankBeforeUnit, distinctNames});
}

int readFieldByBytes(const char* s, double* out) { return stored(readNumbers(s), out); }

int strtodou(const char* s, double* out) {
    return gReadField.load(std::memory_order_relaxed)(s, out);
}

int strtodouuni(const char* s, double* out, bool blankBeforeUnit, bool distinctNames) {
    return stored(readLengths(s, gCurrentUnit, blankBeforeUnit, distinctNames), out);
}

}  // namespace Vaskel
