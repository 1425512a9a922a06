#include "units/strtodou.h"

#include <doctest/doctest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "tests/support/fake_host.h"
#include "tests/support/guarded_bytes.h"
#include "tests/units/fresh_units.h"
#include "vaskel/units.h"

using namespace Vaskel;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kKept = 77;      // what the caller's variable held before
constexpr double kRefused = -77;  // marks rows that fail

std::string repeated(std::size_t count, const char* what) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += what;
    return text;
}

struct Row {
    const char* why;
    std::string text;
    double value;  // kRefused: fails
};

const Row kNumbers[] = {
    {"nothing", "", kInfinity},
    {"blanks", "   ", kInfinity},
    {"an integer", "42", 42},
    {"blanks around", "  42  ", 42},
    {"a point", "1.5", 1.5},
    {"a comma", "1,5", 1.5},
    {"no digits behind the point", "12.", 12},
    {"no digits before the point", ".25", 0.25},
    {"a lone point", ".", 0},
    {"a lone comma", ",", 0},
    {"a lone sign", "-", 0},
    {"a lone plus", "+", 0},
    {"signs multiply", "---2", -2},
    {"mixed signs", "-+-2", 2},
    {"a second separator is an operator", "1.5.3", kRefused},
    {"also when it differs", "1.5,3", kRefused},
    {"leading zeros", "007", 7},
    {"sum", "1+2", 3},
    {"difference", "1-2", -1},
    {"product", "3*4", 12},
    {"quotient", "7/2", 3.5},
    {"left to right", "2+3*4", 20},
    {"left to right with a quotient", "10-4/3", 2},
    {"minus minus", "10--2", 12},
    {"sign first", "-3+1", -2},
    {"blanks around the operator", "1 + 2", 3},
    {"a blank before the sign only", "1 +2", 3},
    {"a blank inside a number", "1 2", kRefused},
    {"a sign apart from its number", "- 5", kRefused},
    {"zero divisor", "6/0", kRefused},
    {"minus zero divisor", "6/-0", kRefused},
    {"empty digits as divisor", "6/.", kRefused},
    {"operator at the end", "1+", kRefused},
    {"operator and blanks at the end", "1+  ", kRefused},
    {"operator first", "*2", 0},  // the empty digits before it are 0
    {"two operators", "2**3", 0},
    {"a letter", "abc", kRefused},
    {"a letter behind", "1a", kRefused},
    {"a letter behind a blank", "1 a", kRefused},
    {"a unit", "1mm", kRefused},
    {"an exponent", "1e3", kRefused},
    {"a parenthesis", "(1)", kRefused},
    {"a tab is no blank", "1\t+2", kRefused},
    {"a leading tab", "\t1", kRefused},
    {"a line feed", "1\n", kRefused},
    {"a byte of UTF-8", "1\xC3\xA9", kRefused},
    {"the highest byte", "\xFF", kRefused},
    {"codes beside the digits", "1:2", kRefused},
    {"a slash is the quotient", "1/2", 0.5},

    {"the largest run of exact digits", "999999999999999", 999999999999999.0},
    {"sixteen digits", "1234567890123456", 1234567890123456.0},
    // 2^53 + 1 has no double; neither form may round it twice
    {"2 to the power 53, and one", "9007199254740993", 9007199254740992.0},
    {"many zeros in front", repeated(400, "0") + "5", 5},
    {"many digits overflow in the first operand", repeated(400, "9"), kInfinity},
    {"a negative one", "-" + repeated(400, "9"), -kInfinity},
    {"infinity goes on", repeated(400, "9") + "-1", kInfinity},
    {"infinity in a later operand", "1+" + repeated(400, "9"), kRefused},
    {"minus infinity in a later operand", "1+-" + repeated(400, "9"), -kInfinity},
    {"many decimals", "0." + repeated(400, "0") + "1", 0},
    {"results may overflow", repeated(200, "9") + "*" + repeated(200, "9"), kInfinity},
    {"many stars", "5" + repeated(200000, "*") + "2", 0},
    {"many stars and no end", repeated(200000, "*"), kRefused},
    {"many signs", repeated(200000, "-") + "2", 2},
    {"many blanks", repeated(200000, " ") + "2" + repeated(200000, " "), 2},
    {"many letters", "1" + repeated(200000, "a"), kRefused},
};

struct LengthRow {
    const char* why;
    int current;
    bool blankBeforeUnit;
    bool distinctNames;
    std::string text;
    double value;
};

constexpr double kPica = 72.28915662650601;

const LengthRow kLengths[] = {
    {"no unit", 1, false, false, "12.5", 12.5},
    {"nothing", 1, false, false, "", kInfinity},
    {"blanks", 1, true, true, "  ", kInfinity},
    {"the current unit", 1, false, false, "10mm", 10},
    {"another unit", 1, false, false, "1inch", 25.4},
    {"a beginning of a name", 1, false, false, "1in", 25.4},
    {"one letter of a name", 1, false, false, "1i", 25.4},
    {"a letter of two names means the first", 1, false, false, "1m", 1},
    {"two letters", 1, false, false, "1mi", 1 * 25.4 / 1000},
    {"a name with a letter more", 1, false, false, "1inchs", kRefused},
    {"case counts", 1, false, false, "1MM", kRefused},
    {"a capital name", 1, false, false, "1Q", 1 * 25.4 / 101.6},
    {"its small letter is none", 1, false, false, "1q", kRefused},
    {"centimetres", 1, false, false, "1cm", 1 * 25.4 / 2.54},
    {"scan pixels", 1, false, false, "1scan", 1 * 25.4 / 1200},
    {"scan pixels, one letter", 1, false, false, "1s", 1 * 25.4 / 1200},
    {"no word holds a blank", 1, false, false, "1scan pix", kRefused},
    {"the distinct name of scan pixels", 1, false, true, "1scanpix", 1 * 25.4 / 1200},
    {"is no display name", 1, false, false, "1scanpix", kRefused},
    {"bai", 1, false, false, "1bai", 1 * 25.4 / (12700.0 / 1119.0)},
    {"pt is the 72nd", 1, false, false, "1pt", 1 * 25.4 / 72},
    {"p is pt", 1, false, false, "1p", 1 * 25.4 / 72},
    {"pt by its distinct name", 1, false, true, "1pt", 1 * 25.4 / 72},
    {"p is pica among the distinct names", 1, false, true, "1p", 1 * 25.4 / kPica},
    {"pica", 1, false, true, "1pica", 1 * 25.4 / kPica},
    {"pica is no display name", 1, false, false, "1pica", kRefused},
    {"didot", 1, false, true, "1didot", 1 * 25.4 / 9.5504},
    {"didot is no display name", 1, false, false, "1didot", kRefused},
    {"exp", 1, false, true, "1exp", 1 * 25.4 / 4000},
    {"exp has no display name", 1, false, false, "1exp", kRefused},
    {"int is equal before inch begins", 1, false, true, "1int", 1 * 25.4 / 1},
    {"in is inch", 1, false, true, "1in", 25.4},
    {"pt while the unit is pica", 7, false, false, "1pt", 1 * kPica / 72},
    {"pt while the unit is didot", 9, false, false, "1pt", 1 * 9.5504 / 72},
    {"pt while the unit is pt", 8, false, false, "1pt", 1},
    {"a current unit that is none", 99, false, false, "2inch", 2},
    {"mm in one that is none", -1, false, false, "25.4mm", 25.4 * 1 / 25.4},

    {"a blank ends the operand", 1, false, false, "1 inch", kRefused},
    {"unless blanks may stand there", 1, true, false, "1 inch", 25.4},
    {"several blanks", 1, true, false, "1   inch", 25.4},
    {"a tab is no blank", 1, true, false, "1\tinch", kRefused},
    {"blanks behind the unit", 1, false, false, "1inch  ", 25.4},
    {"blanks allowed, no unit", 1, true, false, "10 + 5", 15},
    {"blanks allowed, unit glued to the operator", 1, true, false, "10 mm+5", kRefused},

    {"the operator belongs to the word", 1, false, false, "10mm+5", kRefused},
    {"a blank frees it", 1, false, false, "10mm +5", 15},
    {"and another", 1, false, false, "10mm + 5", 15},
    {"a digit ends the word", 1, false, false, "10mm5", kRefused},
    {"an operator alone is no unit", 1, false, false, "10+5", 15},
    {"units in every operand", 1, false, false, "1inch +1cm", 25.4 + 10.0},
    {"the factor is converted", 1, false, false, "2*1inch", 2 * 25.4},
    {"the divisor is converted", 1, false, false, "254/1inch", 254 / 25.4},
    {"left to right", 1, false, false, "2+3*4mm", 20},
    {"a unit without a number", 1, false, false, "mm", 0},
    {"a sign and a unit", 1, false, false, "-mm", 0},
    {"an operator before the unit", 1, false, false, "10-mm", 10},
    {"eight letters", 1, false, true, "1scanpixx", kRefused},
    {"nine letters", 1, false, true, "1scanpixxx", kRefused},
    {"nine stars", 1, false, false, "1*********2", 0},
    {"eight stars", 1, false, false, "1********2", 0},
    {"many stars", 1, false, false, "5" + repeated(200000, "*") + "2", 0},
    {"many letters", 1, false, false, "1" + repeated(200000, "m"), kRefused},
    {"bytes of UTF-8", 1, false, false, "1\xC2\xB5m", kRefused},
    {"infinity in the first operand", 1, false, false, repeated(400, "9") + "inch", kInfinity},
    {"infinity by conversion", 1, false, false, "1+" + repeated(308, "9") + "inch", kRefused},
    {"zero divisor with a unit", 1, false, false, "1/0mm", kRefused},
};

bool isMinusZero(double value) { return value == 0 && std::signbit(value); }

}  // namespace

TEST_CASE("strtodou reads an expression of numbers") {
    for (const Row& row : kNumbers) {
        CAPTURE(row.why);
        double out = kKept;
        const int rc = strtodou(GuardedText(row.text), &out);
        CHECK(rc == (row.value == kRefused ? -1 : 0));
        CHECK(out == (row.value == kRefused ? kKept : row.value));
    }
}

TEST_CASE("strtodou: signs reach a zero, and decimals beyond a double are no number") {
    double out = kKept;
    CHECK(strtodou("-0", &out) == 0);
    CHECK(isMinusZero(out));
    CHECK(strtodou("--0", &out) == 0);
    CHECK(!isMinusZero(out));
    const std::string decimals = "0." + repeated(400, "9");
    CHECK(strtodou(decimals.c_str(), &out) == 0);
    CHECK(std::isnan(out));  // infinity divided by infinity
    int number = 77;
    CHECK(strtoint(decimals.c_str(), &number) == 0);
    CHECK(number == 0);
}

TEST_CASE("strtodou: a null text fails") {
    double out = kKept;
    CHECK(strtodou(nullptr, &out) == -1);
    CHECK(strtodouuni(nullptr, &out, true, true) == -1);
    CHECK(out == kKept);
}

TEST_CASE("strtodouuni converts each operand into the current unit") {
    FreshUnits fresh;
    for (const LengthRow& row : kLengths) {
        CAPTURE(row.why);
        setuni(row.current);
        double out = kKept;
        const int rc =
            strtodouuni(GuardedText(row.text), &out, row.blankBeforeUnit, row.distinctNames);
        CHECK(rc == (row.value == kRefused ? -1 : 0));
        CHECK(out == (row.value == kRefused ? kKept : row.value));
    }
}

TEST_CASE("strtodouuni knows all names, and every beginning of them means the first such name") {
    FreshUnits fresh;
    setuni(0);
    int read = 0;
    for (bool distinctNames : {false, true}) {
        for (int code = 0; code < kUnitCount; ++code) {
            const std::string name = distinctNames ? kUnits[code].distinct : kUnits[code].display;
            for (std::size_t length = 1; length <= name.size(); ++length) {
                const std::string word = name.substr(0, length);
                if (word.find(' ') != std::string::npos) continue;
                CAPTURE(word);
                // Equality first, then prefixes, by plain string comparison.
                int means = -1;
                for (int pass = 0; pass < 2 && means < 0; ++pass) {
                    for (int other = 0; other < kUnitCount && means < 0; ++other) {
                        if (!distinctNames && (other == 7 || other == 9)) continue;
                        const std::string candidate =
                            distinctNames ? kUnits[other].distinct : kUnits[other].display;
                        if (pass == 0 ? candidate == word : candidate.rfind(word, 0) == 0)
                            means = other;
                    }
                }
                REQUIRE(means >= 0);
                double out = kKept;
                CHECK(strtodouuni(("3" + word).c_str(), &out, false, distinctNames) == 0);
                CHECK(out == (means == 0 ? 3 : 3 * 1.0 / gUnitFactors[means]));
                ++read;
            }
        }
    }
    CHECK(read == 64);
}

TEST_CASE("strtodouuni follows the scan's resolution") {
    FreshUnits fresh;
    double out = kKept;
    numsca(600);
    CHECK(strtodouuni("300s", &out, false, false) == 0);
    CHECK(out == 300 * 25.4 / 600);
}

TEST_CASE("scanning a number: the fast form gives the plain form's bits and cursor") {
    std::mt19937 engine(7);
    const auto random = [&] { return static_cast<unsigned>(engine()); };
    int inOneDivision = 0;
    for (int round = 0; round < 30000; ++round) {
        std::string text;
        for (unsigned signs = random() % 3; signs > 0; --signs) text += random() % 2 ? '-' : '+';
        const unsigned limit = random() % 4 ? 19 : 40;
        for (unsigned digits = random() % limit; digits > 0; --digits)
            text += static_cast<char>('0' + random() % 10);
        if (random() % 3) text += random() % 2 ? '.' : ',';
        for (unsigned digits = random() % limit; digits > 0; --digits)
            text += static_cast<char>('0' + (random() % 3 ? random() % 10 : 0));
        text += std::string(1, "\0 .,+m:/"[random() % 8]);
        CAPTURE(text);
        const GuardedText guarded(text);
        const char* plain = guarded;
        const char* fast = guarded;
        const double want = scanNumberPlain(&plain);
        const double got = scanNumber(&fast);
        REQUIRE(std::memcmp(&want, &got, sizeof want) == 0);
        REQUIRE(plain == fast);

        // Up to 15 digits the value is the nearest double, which the C library
        // finds by another way.
        std::string number(static_cast<const char*>(guarded), plain);
        std::size_t digits = 0;
        for (char& c : number) {
            if (c == ',') c = '.';
            digits += c >= '0' && c <= '9';
        }
        const std::size_t sign = number.find_first_not_of("+-");
        if (digits == 0 || digits > 15) continue;
        ++inOneDivision;
        REQUIRE(std::fabs(want) == std::strtod(number.c_str() + sign, nullptr));
    }
    CHECK(inOneDivision > 3000);
}
