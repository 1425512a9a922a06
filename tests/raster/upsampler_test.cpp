#include <doctest/doctest.h>

#include <climits>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "raster/replicate.h"
#include "tests/support/fake_host.h"
#include "tests/support/guarded_bytes.h"
#include "vaskel/raster.h"

namespace {

using Vaskel::upsampler;
using Words = std::vector<unsigned>;

void stuff(upsampler& u, const Words& pixels) {
    GuardedBytes line(4 * pixels.size());
    if (!pixels.empty()) std::memcpy(line.data(), pixels.data(), line.size());
    u.stuff(reinterpret_cast<const unsigned*>(line.data()));
}

Words taken(upsampler& u, std::size_t pixels) {
    GuardedBytes out(4 * pixels);
    u.get(reinterpret_cast<unsigned*>(out.data()), static_cast<int>(out.size()));
    Words words(pixels);
    if (pixels > 0) std::memcpy(words.data(), out.data(), out.size());
    return words;
}

TEST_CASE("upsampler: pixels are repeated, the fraction goes on to the next") {
    struct Row {
        double in, out;
        Words line, enlarged;
    };
    const Row rows[] = {
        {1, 1, {7, 8}, {7, 8}},
        {1, 2, {7, 8}, {7, 7, 8, 8}},
        {2, 3, {7, 8, 9}, {7, 7, 8, 9}},  // a fifth pixel has no room
        {2, 3, {6, 7, 8, 9}, {6, 6, 7, 8, 8, 9}},
        {4, 5, {1, 2, 3, 4}, {1, 1, 2, 3, 4}},
        {2, 1, {1, 2, 3, 4}, {1, 3}},  // below 1 pixels are left out
        {1, 3.5, {5}, {5, 5, 5}},
        {300, 450, {1}, {1}},
    };
    for (const Row& row : rows) {
        CAPTURE(row.out / row.in);
        upsampler u(row.in, row.out, static_cast<int>(row.line.size()));
        CHECK(u.resize(static_cast<int>(row.line.size())) == static_cast<int>(row.enlarged.size()));
        stuff(u, row.line);
        CHECK(u.ready() == 1);
        CHECK(taken(u, row.enlarged.size()) == row.enlarged);
    }
}

std::string linesOf(double in, double out, int inputLines) {
    upsampler u(in, out, 2);
    std::string counts;
    for (int i = 0; i < inputLines; ++i) {
        stuff(u, {1, 2});
        int count = 0;
        for (; u.ready(); ++count) taken(u, 1);
        counts += static_cast<char>('0' + count);
    }
    return counts;
}

TEST_CASE("upsampler: lines are repeated, the fraction goes on to the next") {
    CHECK(linesOf(1, 1, 4) == "1111");
    CHECK(linesOf(1, 2, 4) == "2222");
    CHECK(linesOf(2, 3, 6) == "212121");
    CHECK(linesOf(4, 5, 8) == "21112111");
    CHECK(linesOf(2, 1, 6) == "101010");  // factor 1/2 drops every second line
    CHECK(linesOf(1, 4, 2) == "44");
}

// Factor 1/2: after the first line is taken the row count stands at 1, and the
// second line brings it to 1/2, which is not below the factor.
TEST_CASE("upsampler: a dropped line leaves the line before") {
    upsampler u(2, 1, 2);
    stuff(u, {1, 2});
    CHECK(taken(u, 1) == Words{1});
    stuff(u, {3, 4});
    CHECK(u.ready() == 0);
    CHECK(taken(u, 1) == Words{1});
}

TEST_CASE("upsampler: get copies what the caller has room for, to the byte") {
    upsampler u(1, 2, 2);
    stuff(u, {0x04030201u, 0x08070605u});
    unsigned char out[24] = {};
    out[7] = 77;
    u.get(reinterpret_cast<unsigned*>(out), 7);
    CHECK(out[6] == 3);
    CHECK(out[7] == 77);
    u.get(reinterpret_cast<unsigned*>(out), -5);
    CHECK(u.ready() == 0);  // two lines are taken, however little was copied
    out[16] = 77;
    u.get(reinterpret_cast<unsigned*>(out), 24);
    CHECK(out[15] == 8);
    CHECK(out[16] == 77);  // a line has 16 bytes
}

TEST_CASE("upsampler: the line is all zero before the first stuff") {
    upsampler u(1, 2, 3);
    CHECK(taken(u, 6) == Words(6, 0));
}

TEST_CASE("upsampler: sizes are truncated and limited") {
    CHECK(upsampler(2, 3, 1).resize(10) == 15);
    CHECK(upsampler(4, 5, 1).resize(10) == 12);
    CHECK(upsampler(4, 5, 1).resize(-10) == -12);
    CHECK(upsampler(1, 3, 1).resize(INT_MAX) == INT_MAX);
    CHECK(upsampler(1, 3, 1).resize(INT_MIN) == INT_MIN);
    CHECK(upsampler(1, 2, 0).resize(10) == 20);
}

TEST_CASE("upsampler: images without pixels") {
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    struct Row {
        double in, out;
        int width;
    };
    const Row rows[] = {{1, 2, 0},     {1, 2, -5},  {1, 0, 5},   {1, -2, 5}, {0, 1, 5},
                        {inf, inf, 5}, {nan, 1, 5}, {1, inf, 5}, {3, 1, 2}};
    for (const Row& row : rows) {
        CAPTURE(row.out / row.in);
        CAPTURE(row.width);
        upsampler u(row.in, row.out, row.width);
        const unsigned line[5] = {1, 2, 3, 4, 5};
        unsigned out[5] = {77};
        u.stuff(line);
        for (int i = 0; i < 3 && u.ready(); ++i) u.get(out, 20);
        u.get(out, 20);
        CHECK(out[0] == 77);
    }
    CHECK(upsampler(1, 0, 5).resize(10) == 0);
    CHECK(upsampler(1, 2, -5).resize(10) == 0);
}

TEST_CASE("upsampler: copies share the line, whichever goes first") {
    auto first = std::make_unique<upsampler>(1.0, 2.0, 2);
    auto second = std::make_unique<upsampler>(*first);
    stuff(*first, {5, 6});
    CHECK(taken(*second, 4) == Words{5, 5, 6, 6});
    first.reset();
    CHECK(taken(*second, 4) == Words{5, 5, 6, 6});
    upsampler third(1, 3, 1);
    third = *second;
    second.reset();
    CHECK(taken(third, 4) == Words{5, 5, 6, 6});
}

TEST_CASE("upsampler: every width and factor fills lines of exact size") {
    for (int width = 1; width < 50; ++width)
        for (double factor = 0.05; factor < 6; factor += 0.0713) {
            CAPTURE(width);
            CAPTURE(factor);
            upsampler u(1, factor, width);
            const auto n = static_cast<std::size_t>(u.resize(width));
            Words line;
            for (int i = 0; i < width; ++i) line.push_back(static_cast<unsigned>(i + 1));
            stuff(u, line);
            const Words got = taken(u, n);
            // By the rule: pixel i is written while the running column allows.
            Words want;
            double column = 0;
            for (const unsigned pixel : line) {
                for (; factor > column; column += 1) want.push_back(pixel);
                column -= factor;
            }
            REQUIRE(want.size() + 1 >= n);
            want.resize(n);
            REQUIRE(got == want);
        }
}

TEST_CASE("upsampler: memory that ends or cannot be had") {
    CHECK(upsampler(1, 1e300, 2).resize(2) == 0);  // as an infinite factor
    CHECK_THROWS_AS(upsampler(1, 4e15, 2), std::bad_alloc);
    CHECK_THROWS_AS(upsampler(1e-9, 1, INT_MAX), std::bad_alloc);
    for (int n = 1; n <= 3; ++n) {
        const FailingAllocation failing(n);
        CHECK_THROWS_AS(upsampler(1, 2, 1000), std::bad_alloc);
    }
}

}  // namespace
