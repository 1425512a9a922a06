#include "samples/proof/lengths.h"

#include <doctest/doctest.h>

#include "samples/proof/failure.h"

using namespace Proof;

TEST_CASE("lengths in any unit become outline units of the scan") {
    setLengthUnit("mm");
    setScanResolution(600, 16);  // 9600 outline units an inch
    struct Row {
        std::string text;
        int want;
    };
    const Row rows[] = {
        {"0", 0},          {"0.2mm", 76},       // 75.59
        {"0,2 mm", 76},                         // either decimal sign, a blank before the unit
        {"0.2", 76},                            // millimetres unless told otherwise
        {"1inch", 9600},   {"1inch /8", 1200},  // a factor has no unit
        {"4mil", 38},                           // 38.4
        {"3scanpix", 48},  {"1pt", 133},        // 133.33
        {"1pica", 133},                         // 9600 * 83 / 6000 = 132.8
        {"1mm +1mm", 756},                      // 755.9
        {"1cm", 3780},                          // 3779.5
    };
    for (const Row& row : rows) {
        CAPTURE(row.text);
        CHECK(readLength("--x", row.text) == row.want);
    }
}

TEST_CASE("a length without unit is in the unit that was set") {
    setLengthUnit("inch");
    setScanResolution(300, 1);
    CHECK(readLength("--x", "0.5") == 150);
    setLengthUnit("SCANPIX");
    CHECK(readLength("--x", "7") == 7);
    setLengthUnit("mm");
    CHECK(readLength("--x", "25.4") == 300);
    CHECK_THROWS_AS(setLengthUnit("ell"), Failure);
    CHECK(readLength("--x", "25.4") == 300);
}

TEST_CASE("what is no length is refused in one line that names the option") {
    setLengthUnit("mm");
    setScanResolution(600, 16);
    for (const char* text : {"", " ", "-1mm", "x", "1 elephant", "1mm+", "99999999mm"}) {
        CAPTURE(text);
        CHECK_THROWS_AS(readLength("--x", text), Failure);
    }
    CHECK_THROWS_WITH(
        readLength("--min-size", "1 elephant"),
        "--min-size takes a length such as 0.2mm, 4mil or 3scanpix, not \"1 elephant\"");
}

TEST_CASE("plain numbers are above 0") {
    CHECK(readNumber("--resolution", "600") == 600);
    CHECK(readNumber("--resolution", "203,2") == 203.2);
    for (const char* text : {"", "0", "-600", "600dpi", "1/0"}) {
        CAPTURE(text);
        CHECK_THROWS_AS(readNumber("--resolution", text), Failure);
    }
}

TEST_CASE("a length is shown in the unit that was set, with its precision") {
    setScanResolution(600, 16);
    setLengthUnit("mm");
    CHECK(lengthText(7016 / 600.0) == "297.01");
    CHECK(lengthText(1) == "25.4");
    setLengthUnit("cm");
    CHECK(lengthText(1) == "2.54");
    setLengthUnit("inch");
    CHECK(lengthText(4960 / 600.0) == "8.2667");
    CHECK(lengthText(3) == "3");
    setLengthUnit("mm");
}
