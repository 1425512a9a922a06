#include "samples/proof/numbers.h"

#include <doctest/doctest.h>

using namespace Proof;

TEST_CASE("decimals are written short, with a point and without a sign on zero") {
    struct Row {
        double value;
        int decimals;
        std::string want;
    };
    const Row rows[] = {
        {210.05799, 3, "210.058"},
        {3.0, 3, "3"},
        {0.125, 12, "0.125"},
        {-0.004, 2, "0"},
        {-0.12, 12, "-0.12"},
        {100, 0, "100"},
        {0, 6, "0"},
        {72.0 / 203, 12, "0.354679802956"},
    };
    for (const Row& row : rows) CHECK(decimal(row.value, row.decimals) == row.want);
}

TEST_CASE("large numbers are grouped in threes") {
    CHECK(grouped(0) == "0");
    CHECK(grouped(999) == "999");
    CHECK(grouped(1000) == "1,000");
    CHECK(grouped(123456) == "123,456");
    CHECK(grouped(1234567) == "1,234,567");
}

TEST_CASE("integers are appended as they are") {
    std::string text = "x";
    appendInt(text, -2147483647 - 1);
    appendInt(text, 0);
    CHECK(text == "x-21474836480");
}
