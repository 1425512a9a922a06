#include <doctest/doctest.h>

#include <string>

#include "tests/support/fake_host.h"
#include "tests/support/guarded_bytes.h"
#include "vaskel/units.h"

using namespace Vaskel;

namespace {

struct Row {
    const char* why;
    std::string text;
    int rc;
    double lo;
    double hi;
};

const Row kRows[] = {
    {"a range", "10:90", 0, 10, 90},
    {"the upper one is clamped", "20:150", 0, 20, 100},
    {"both are clamped", "101:1000", 0, 100, 100},
    {"just above", "100.5:100", 0, 100, 100},
    {"no upper one is 0", " 5.5 : ", 0, 5.5, 0},
    {"no upper one, no blank", "5:", 0, 5, 0},
    {"no lower one is 0", ":50", 0, 0, 50},
    {"only the colon", ":", 0, 0, 0},
    {"the order is not checked", "90:10", 0, 90, 10},
    {"all kinds of white space", "\t\n\f\r 1 \t\n\f\r:\t\n\f\r 2 \t\n\f\r", 0, 1, 2},
    {"a fraction", "0.25:99.75", 0, 0.25, 99.75},
    {"a fraction adds up digit by digit", "0.123:0.7", 0, 0 + 1 / 10.0 + 2 / 100.0 + 3 / 1000.0,
     7 / 10.0},
    {"a point first", ".5:.25", 0, 0.5, 0.25},
    {"a point alone", ".:.", 0, 0, 0},
    {"a second point changes nothing", "1.2.5:3..5", 0, 1 + 2 / 10.0 + 5 / 100.0, 3.5},
    {"many digits", std::string(400, '9') + ":" + std::string(400, '9'), 0, 100, 100},
    {"many decimals", "1." + std::string(400, '0') + "5:2", 0, 1, 2},

    {"no colon", "5", 1, 5, 0},
    {"no colon behind white space", "5 ", 1, 5, 0},
    {"no colon, not clamped", "150", 1, 150, 0},
    {"white space only", "  ", 1, 0, 0},
    {"a letter", "a:5", 1, 0, 0},
    {"a letter behind the lower number", "12a:5", 1, 12, 0},
    {"a sign", "-5:10", 1, 0, 0},
    {"a plus sign", "+5:10", 1, 0, 0},
    {"a sign behind the colon", "5:-10", 1, 5, 0},
    {"a comma", "1,5:10", 1, 1, 0},
    {"two lower numbers", "1 2:3", 1, 1, 0},
    {"two upper numbers", "1:2 3", 1, 1, 0},
    {"a letter behind the upper number", "150:5x", 1, 150, 0},
    {"a second colon", "1:2:3", 1, 1, 0},
    {"a vertical tab is no white space", "1\v:2", 1, 1, 0},
    {"a vertical tab at the end", "1:2\v", 1, 1, 0},
    {"a percent sign", "1:2%", 1, 1, 0},
};

}  // namespace

TEST_CASE("parseRange reads two percentages around a colon") {
    FakeHost host;
    for (const Row& row : kRows) {
        CAPTURE(row.why);
        CAPTURE(row.text);
        double lo = 77, hi = 77;
        CHECK(parseRange(GuardedText(row.text), &lo, &hi) == row.rc);
        CHECK(lo == row.lo);
        CHECK(hi == row.hi);
    }
    CHECK(host.calls().empty());
}

TEST_CASE("parseRange leaves both outputs alone for a null or empty text") {
    for (const char* text : {static_cast<const char*>(nullptr), ""}) {
        double lo = 77, hi = 78;
        CHECK(parseRange(text, &lo, &hi) == 1);
        CHECK(lo == 77);
        CHECK(hi == 78);
    }
}
