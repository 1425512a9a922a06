#include "samples/proof/sample_layout.h"

#include <doctest/doctest.h>

#include <cstring>
#include <random>
#include <vector>

#include "tests/support/guarded_bytes.h"

using namespace Proof;

namespace {

std::vector<int> greysOf(const SampleLayout& layout, const std::vector<unsigned char>& row,
                         int width) {
    REQUIRE(row.size() == layout.rowBytes(width));
    GuardedBytes guarded(row.size());
    std::memcpy(guarded.data(), row.data(), row.size());
    GuardedBytes grey(static_cast<std::size_t>(width));
    toGrey(layout, guarded.data(), width, grey.data());
    return {grey.data(), grey.data() + width};
}

using Greys = std::vector<int>;

}  // namespace

TEST_CASE("grey of a colour weighs red, green and blue") {
    CHECK(greyOf(0, 0, 0) == 0);
    CHECK(greyOf(255, 255, 255) == 255);
    CHECK(greyOf(255, 0, 0) == 76);   // 76.245
    CHECK(greyOf(0, 255, 0) == 150);  // 149.685
    CHECK(greyOf(0, 0, 255) == 29);   // 29.07
}

TEST_CASE("samples of every depth become grey") {
    CHECK(greysOf({.bits = 1}, {0b10100000}, 3) == Greys{255, 0, 255});
    CHECK(greysOf({.bits = 2}, {0b00011011, 0b11000000}, 5) == Greys{0, 85, 170, 255, 255});
    CHECK(greysOf({.bits = 4}, {0x0F, 0x80}, 3) == Greys{0, 255, 136});
    CHECK(greysOf({.bits = 8}, {0, 7, 255}, 3) == Greys{0, 7, 255});
    CHECK(greysOf({.bits = 16}, {0x12, 0xFF, 0xFF, 0x00}, 2) == Greys{0x12, 0xFF});
    CHECK(greysOf({.bits = 8, .whiteIsZero = true}, {0, 7, 255}, 3) == Greys{255, 248, 0});
}

TEST_CASE("samples in the processor's order give their upper byte") {
    const std::uint16_t samples[2] = {0x1234, 0xFF00};
    std::vector<unsigned char> row(4);
    std::memcpy(row.data(), samples, 4);
    CHECK(greysOf({.bits = 16, .nativeOrder = true}, row, 2) == Greys{0x12, 0xFF});
}

TEST_CASE("a transparent pixel is as white as it is transparent") {
    CHECK(greysOf({.channels = 2}, {0, 255, 0, 0, 0, 128, 100, 255}, 4) == Greys{0, 255, 127, 100});
    CHECK(greysOf({.channels = 4}, {255, 0, 0, 255, 0, 0, 0, 0}, 2) == Greys{76, 255});
}

TEST_CASE("colours and palettes become grey by lightness") {
    CHECK(greysOf({.channels = 3}, {255, 0, 0, 0, 0, 255}, 2) == Greys{76, 29});
    SampleLayout layout{.bits = 2};
    layout.palette.emplace().fill(0);
    (*layout.palette)[1] = 10;
    (*layout.palette)[3] = 200;
    CHECK(greysOf(layout, {0b01110001}, 4) == Greys{10, 200, 0, 10});
}

TEST_CASE("a bilevel row keeps its bits, darker ones as ink, nothing behind the width") {
    struct Row {
        std::string why;
        SampleLayout layout;
        unsigned char want[2];
    };
    const auto palette = [](std::uint8_t zero, std::uint8_t one) {
        SampleLayout layout{.bits = 1};
        layout.palette.emplace().fill(0);
        (*layout.palette)[0] = zero;
        (*layout.palette)[1] = one;
        return layout;
    };
    const Row rows[] = {
        {"1 is white", {.bits = 1}, {0b01010101, 0b01000000}},
        {"1 is black", {.bits = 1, .whiteIsZero = true}, {0b10101010, 0b10000000}},
        {"1 is the darker colour", palette(250, 240), {0b10101010, 0b10000000}},
        {"0 is the darker colour", palette(3, 9), {0b01010101, 0b01000000}},
        {"two light colours", palette(200, 200), {0, 0}},
        {"two dark colours", palette(20, 20), {0xFF, 0b11000000}},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        const unsigned char stored[2] = {0b10101010, 0b10101010};
        GuardedBytes ink(2);
        toInk(row.layout, stored, 10, ink.data());
        CHECK(int(ink[0]) == int(row.want[0]));
        CHECK(int(ink[1]) == int(row.want[1]));
    }
}

TEST_CASE("greys below the level are ink, for every width") {
    std::mt19937 random(20240611);
    for (const int width : {1, 7, 8, 9, 16, 63, 64, 65, 100}) {
        for (const int level : {0, 1, 128, 255, 256}) {
            CAPTURE(width);
            CAPTURE(level);
            GuardedBytes grey(static_cast<std::size_t>(width));
            for (std::size_t i = 0; i < grey.size(); ++i)
                grey[i] = static_cast<unsigned char>(random());
            GuardedBytes ink(inkBytes(width));
            GuardedBytes want(inkBytes(width));
            for (int x = 0; x < width; ++x)
                if (grey[static_cast<std::size_t>(x)] < level)
                    want[static_cast<std::size_t>(x / 8)] |=
                        static_cast<unsigned char>(0x80 >> (x % 8));
            thresholdRow(grey.data(), width, level, ink.data());
            CHECK(ink == want);
        }
    }
}

TEST_CASE("inverting leaves what stands behind the width empty") {
    unsigned char ink[2] = {0b11110000, 0b10000000};
    invertInk(ink, 11);
    CHECK(int(ink[0]) == 0b00001111);
    CHECK(int(ink[1]) == 0b01100000);
}
