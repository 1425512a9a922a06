#include "samples/proof/threshold.h"

#include <doctest/doctest.h>

#include "samples/proof/failure.h"

using namespace Proof;

namespace {

// Otsu's rule in its other form, least variance within the classes, by plain
// sums; the levels that reach it.
void leastWithin(const GreyHistogram& histogram, int* first, int* last) {
    double best = -1;
    for (int level = 1; level < 256; ++level) {
        double within = 0;
        bool both = true;
        for (int part = 0; part < 2; ++part) {
            const int from = part == 0 ? 0 : level;
            const int to = part == 0 ? level : 256;
            double count = 0, sum = 0;
            for (int g = from; g < to; ++g) {
                count += static_cast<double>(histogram[static_cast<std::size_t>(g)]);
                sum += static_cast<double>(histogram[static_cast<std::size_t>(g)]) * g;
            }
            both = both && count > 0;
            for (int g = from; count > 0 && g < to; ++g)
                within += static_cast<double>(histogram[static_cast<std::size_t>(g)]) *
                          (g - sum / count) * (g - sum / count);
        }
        if (!both) continue;
        if (best < 0 || within < best - 1e-9 * best - 1e-9) {
            best = within;
            *first = *last = level;
        } else if (within <= best + 1e-9 * best + 1e-9) {
            *last = level;
        }
    }
}

}  // namespace

TEST_CASE("two peaks are split half way between them") {
    GreyHistogram histogram{};
    histogram[40] = 1000;
    histogram[200] = 9000;
    // Every level from 41 to 200 makes the same two classes.
    CHECK(otsuLevel(histogram) == (41 + 200) / 2);
}

TEST_CASE("a page of one grey is split in the middle of all greys") {
    GreyHistogram histogram{};
    histogram[250] = 500;
    CHECK(otsuLevel(histogram) == 128);
    CHECK(otsuLevel(GreyHistogram{}) == 128);
}

TEST_CASE("broad peaks are split where the variance within the classes is least") {
    GreyHistogram histogram{};
    for (int grey = 0; grey < 256; ++grey) {
        const int dark = std::max(0, 30 - std::abs(grey - 60));
        const int light = std::max(0, 50 - std::abs(grey - 190));
        histogram[static_cast<std::size_t>(grey)] =
            static_cast<std::uint64_t>(dark * 100 + light * 900 + 3);
    }
    int first = 0;
    int last = 0;
    leastWithin(histogram, &first, &last);
    REQUIRE(first == last);
    CHECK(otsuLevel(histogram) == first);
}

TEST_CASE("greys are counted") {
    GreyHistogram histogram{};
    const std::uint8_t row[] = {0, 255, 255, 7};
    countGreys(row, 4, histogram);
    countGreys(row, 2, histogram);
    CHECK(histogram[0] == 2);
    CHECK(histogram[7] == 1);
    CHECK(histogram[255] == 3);
}

TEST_CASE("a threshold is read as otsu, a grey or a share of white") {
    CHECK_FALSE(parseThreshold("otsu").has_value());
    CHECK(parseThreshold("0") == 0);
    CHECK(parseThreshold("255") == 255);
    CHECK(parseThreshold("127.6") == 128);
    CHECK(parseThreshold("50%") == 128);
    CHECK(parseThreshold("100%") == 256);
    for (const char* text : {"", "%", "256", "-1", "101%", "dark", "12x", "nan"}) {
        CAPTURE(text);
        CHECK_THROWS_AS(parseThreshold(text), Failure);
    }
}
