#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "colour/ink_run.h"
#include "tests/support/guarded_bytes.h"
#include "vaskel/colour.h"

namespace {

TEST_CASE("cmykrgbrun: ink colours over each other") {
    struct Row {
        unsigned char in[4], out[4];
    };
    constexpr Row rows[] = {
        {{0, 0, 0, 0}, {255, 255, 255, 0}},
        {{255, 0, 0, 0}, {219, 143, 0, 0}},
        {{0, 255, 0, 0}, {89, 0, 194, 0}},
        {{0, 0, 255, 0}, {0, 227, 245, 0}},
        {{0, 0, 0, 255}, {33, 31, 31, 0}},
        // magenta and yellow: red 255 * 194/255 * 245/255 = 186.4
        {{0, 255, 255, 0}, {0, 0, 186, 0}},
        // half cyan, 51 of 255: blue 255 - 36 * .2 = 247.8, green 255 - 112 * .2 = 232.6, red 204
        {{51, 0, 0, 0}, {248, 233, 204, 0}},
    };
    for (const Row& row : rows) {
        GuardedBytes pixel(4);
        for (std::size_t i = 0; i < 4; ++i) pixel[i] = row.in[i];
        Vaskel::cmykrgbrun(pixel.data(), 1);
        for (std::size_t i = 0; i < 4; ++i) CHECK(pixel[i] == row.out[i]);
    }
    Vaskel::cmykrgbrun(nullptr, 0);
    Vaskel::cmykrgbrun(nullptr, -5);
}

void checkForms(const GuardedBytes& pixels, int count) {
    GuardedBytes want(pixels.size());
    std::copy(pixels.data(), pixels.data() + pixels.size(), want.data());
    Vaskel::inkRunPlain(want.data(), count);
    for (const Vaskel::InkRunForm& form : Vaskel::inkRunForms().subspan(1)) {
        CAPTURE(std::string(form.name));
        GuardedBytes got(pixels.size());
        std::copy(pixels.data(), pixels.data() + pixels.size(), got.data());
        form.run(got.data(), count);
        CHECK(got == want);
    }
}

TEST_CASE("ink run: every form gives the plain form's bytes") {
    std::mt19937 random(3);
    for (int count : {0, 1, 3, 4, 5, 63, 64, 65, 1000}) {
        CAPTURE(count);
        GuardedBytes pixels(4 * static_cast<std::size_t>(count));
        for (std::size_t i = 0; i < pixels.size();
             ++i)  // half the amounts 0 or 255, runs of equals
            pixels[i] = i >= 4 && random() % 4 == 0 ? pixels[i - 4]
                        : random() % 2              ? static_cast<unsigned char>(random())
                                       : static_cast<unsigned char>(random() % 2 * 255);
        checkForms(pixels, count);
    }
}

TEST_CASE("ink run: all amounts of each two inks, the others at three amounts") {
    constexpr int kOthers[] = {0, 91, 255};
    GuardedBytes pixels(4 * 65536);
    for (int first = 0; first < 4; ++first)
        for (int second = first + 1; second < 4; ++second)
            for (const int other : kOthers) {
                for (std::size_t i = 0; i < 65536; ++i)
                    for (int ink = 0; ink < 4; ++ink)
                        pixels[4 * i + static_cast<std::size_t>(ink)] = static_cast<unsigned char>(
                            ink == first    ? i & 255
                            : ink == second ? i >> 8
                                            : static_cast<std::size_t>(other));
                checkForms(pixels, 65536);
            }
}

TEST_CASE("ink run: each ink's amounts with many others, every form") {
    // A stride that is odd in each byte goes through all amounts of each ink.
    constexpr int kCount = 1 << 20;
    GuardedBytes pixels(4 * std::size_t{kCount});
    std::uint32_t inks = 0;
    for (std::size_t i = 0; i < kCount; ++i, inks += 0x9E3779B1u)
        std::memcpy(&pixels[4 * i], &inks, 4);
    checkForms(pixels, kCount);
#if defined(__x86_64__)
    // Pixels of both kinds come up.
    const std::size_t forms = Vaskel::inkRunForms().size();
    if (forms > 2) {
        const int declines = Vaskel::inkRunAvx2Declines(pixels.data(), kCount);
        CHECK(declines > 100);
        CHECK(declines < kCount / 100);
        if (forms > 3) CHECK(Vaskel::inkRunAvx512Declines(pixels.data(), kCount) == declines);
    }
#endif
}

// What is left to the table form lies within 16 units of 2^-15 of a half.
TEST_CASE("ink run: channels that lie next to a half, every form") {
    constexpr int kAbsorbed[3][4] = {{255, 61, 10, 224}, {112, 255, 28, 224}, {36, 166, 255, 222}};
    std::mt19937 random(5);
    std::vector<std::uint32_t> close;
    for (int round = 0; round < 4000000; ++round) {
        const auto inks = static_cast<std::uint32_t>(random());
        double distance = 1;
        for (const auto& absorbed : kAbsorbed) {
            double light = 255;
            for (int ink = 0; ink < 4; ++ink)
                light *= 1 - absorbed[ink] * (inks >> (8 * ink) & 255) / 65025.0;
            distance = std::min(distance, std::abs(light - std::floor(light) - 0.5));
        }
        if (distance * (1 << 15) < 20) close.push_back(inks);
    }
    CHECK(close.size() > 10000);
    GuardedBytes pixels(4 * close.size());
    std::memcpy(pixels.data(), close.data(), pixels.size());
    checkForms(pixels, static_cast<int>(close.size()));
}

// Takes minutes, so it runs when asked for:
//   colour_tests --no-skip --test-case="ink run: all pixels there are*"
TEST_CASE("ink run: all pixels there are, every form" * doctest::skip()) {
    constexpr int kBlock = 1 << 16;
    std::vector<unsigned char> inks(4 * kBlock), want, got;
    for (std::uint32_t high = 0; high <= 0xFFFF; ++high) {
        for (std::uint32_t low = 0; low < kBlock; ++low) {
            const std::uint32_t pixel = high << 16 | low;
            std::memcpy(&inks[4 * low], &pixel, sizeof pixel);
        }
        want = inks;
        Vaskel::inkRunPlain(want.data(), kBlock);
        for (const Vaskel::InkRunForm& form : Vaskel::inkRunForms().subspan(1)) {
            CAPTURE(form.name);
            CAPTURE(high);
            got = inks;
            form.run(got.data(), kBlock);
            REQUIRE(std::memcmp(got.data(), want.data(), got.size()) == 0);
        }
    }
}

TEST_CASE("ink run: the forced form runs") {
    static int calls = 0;
    const Vaskel::InkRunForm counting = {"counting", [](unsigned char*, int) { ++calls; }};
    unsigned char pixel[4] = {1, 2, 3, 4};
    Vaskel::forceInkRunForm(&counting);
    Vaskel::cmykrgbrun(pixel, 1);
    Vaskel::forceInkRunForm(nullptr);
    CHECK(calls == 1);
    Vaskel::cmykrgbrun(pixel, 1);
    CHECK(calls == 1);
}

}  // namespace
