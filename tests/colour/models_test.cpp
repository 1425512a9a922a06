#include <doctest/doctest.h>

#include <climits>
#include <limits>
#include <ostream>

#include "vaskel/colour.h"

namespace {

using namespace Vaskel;

constexpr int kKept = -77;

struct Three {
    int a = kKept, b = kKept, c = kKept;
    friend bool operator==(const Three&, const Three&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Three& t) {
        return out << t.a << ' ' << t.b << ' ' << t.c;
    }
};
constexpr Three kUnwritten{};

struct CmykRow {
    int c, m, y, k;
    Three result;
};

template <class Function, std::size_t n>
void check(Function function, const CmykRow (&rows)[n]) {
    for (const CmykRow& row : rows) {
        CAPTURE(row.c);
        CAPTURE(row.m);
        CAPTURE(row.y);
        CAPTURE(row.k);
        Three t;
        const auto byte = [](int v) { return static_cast<unsigned char>(v); };
        function(byte(row.c), byte(row.m), byte(row.y), byte(row.k), &t.a, &t.b, &t.c);
        CHECK(t == row.result);
    }
}

TEST_CASE("cmykrgbpix: ink and black off white, not below 0") {
    const CmykRow rows[] = {{100, 0, 0, 200, {0, 55, 55}},
                            {0, 0, 0, 0, {255, 255, 255}},
                            {10, 20, 30, 5, {240, 230, 220}},
                            {255, 255, 255, 255, {0, 0, 0}}};
    check(cmykrgbpix, rows);
}

TEST_CASE("cmykrgb: inks in percent") {
    const CmykRow rows[] = {
        {0, 0, 0, 0, {255, 255, 255}},
        {0, 0, 0, 100, {31, 31, 33}},     // 255 * 0.12 = 30.6, 255 * 0.13 = 33.15
        {255, 0, 0, 0, {255, 255, 255}},  // 255 marks no ink
        {255, 255, 255, 255, {255, 255, 255}},
        {100, 0, 0, 0, {0, 143, 219}},   // 255 * 0.56 = 142.8, 255 * 0.86 = 219.3
        {0, 100, 0, 0, {194, 0, 89}},    // 255 * 0.76 = 193.8, 255 * 0.35 = 89.25
        {0, 0, 100, 0, {245, 227, 0}},   // 255 * 0.96 = 244.8, 255 * 0.89 = 226.95
        {50, 50, 0, 0, {112, 99, 160}},  // 255*.5*.88 = 112.2, *.5*.78 = 99.45, *.675*.93 = 160.08
    };
    check(cmykrgb, rows);
}

TEST_CASE("cmykrgbscr: the same inks in bytes, without the mark") {
    const CmykRow rows[] = {
        {0, 0, 0, 0, {255, 255, 255}},
        {255, 0, 0, 0, {0, 143, 219}},
        {0, 255, 0, 0, {194, 0, 89}},
        {0, 0, 255, 0, {245, 227, 0}},
        {0, 0, 0, 255, {31, 31, 33}},
        // 51 is a fifth: 255 * 0.8 * 0.952 = 194.2, 255 * 0.8 * 0.912 = 186.05,
        // 255 * 0.972 * 0.87 = 215.6
        {51, 51, 0, 0, {194, 186, 216}},
    };
    check(cmykrgbscr, rows);
}

TEST_CASE("cmykhsl: colours, black and greys") {
    const CmykRow rows[] = {
        {0, 0, 0, 100, kUnwritten},  // a grey writes nothing
        {0, 0, 0, 0, kUnwritten},    // white is a grey
        // Red 255 0 0: hue 5 + bb with G = mn, bb = 1: 6 / 6 of the circle
        {0, 255, 255, 0, {100, 100, 50}},
        {255, 0, 255, 0, {33, 100, 50}},    // green: B = mn, hue 1 + rr = 2, 33.3
        {255, 255, 0, 0, {66, 100, 50}},    // blue: R = mn, hue 3 + gg = 4, 66.7
        {255, 0, 0, 0, {50, 100, 50}},      // cyan 0 255 255: G = mx, B > mn: 3 - bb = 3
        {255, 0, 0, 255, {50, 100, 0}},     // prints black: cyan's hue, lightness 0
        {255, 255, 255, 255, {0, 0, 0}},    // all inks are black themselves
        {0, 0, 0, 255, {kKept, kKept, 0}},  // the inks are white, a grey; lightness still 0
        // 200 100 50: mx .784, mn .196, sum .980: s = .588/.980 = 60, l = 49; hue
        // R = mx, B = mn: 1 - gg, gg = 100/150: 1/3 of a sixth = 5.55
        {55, 155, 205, 0, {5, 60, 49}},
        // 255 205 205: sum 1.804 > 1: s = .196 / (2 - 1.804) = 100, l = 90; G = mn: bb = 1
        {0, 50, 50, 0, {100, 100, 90}},
    };
    check(cmykhsl, rows);
}

struct HslRow {
    int h, s, l;
    Three result;
};

TEST_CASE("hslrgb: sixths of the circle") {
    const HslRow rows[] = {
        {0, 100, 50, {255, 0, 0}},
        {100, 100, 50, {255, 0, 0}},
        {50, 100, 50, {0, 255, 255}},
        {0, 0, 50, {128, 128, 128}},
        {0, 0, 100, {255, 255, 255}},
        {0, 0, 0, {0, 0, 0}},
        {30, 100, 0, {0, 0, 0}},  // lightness 0 has no delta: black
        // h 10: 0.6 of sector 0: green 0.6 * 255 = 153
        {10, 100, 50, {255, 153, 0}},
        {25, 100, 50, {128, 255, 0}},   // 1.5: red 1 - .5 = 127.5
        {40, 100, 50, {0, 255, 102}},   // 2.4
        {60, 100, 50, {0, 102, 255}},   // 3.6: green 1 - .6
        {75, 100, 50, {128, 0, 255}},   // 4.5
        {90, 100, 50, {255, 0, 153}},   // 5.4: blue 1 - .4
        {110, 100, 50, {255, 153, 0}},  // 6.6 is sector 6 with f 0.6
        {117, 100, 50, {0, 0, 0}},      // 7.02
        {-10, 100, 50, {255, 153, 0}},  // truncates to sector 0, f = 0.6
        {-17, 100, 50, {0, 0, 0}},      // -1.02
        // s 50, l 25: m2 = .375, m1 = .125
        {0, 50, 25, {96, 32, 32}},
        {INT_MAX, INT_MAX, INT_MAX, {0, 0, 0}},
        {INT_MIN, INT_MIN, INT_MIN, {0, 0, 0}},
    };
    for (const HslRow& row : rows) {
        CAPTURE(row.h);
        CAPTURE(row.s);
        CAPTURE(row.l);
        Three t;
        hslrgb(row.h, row.s, row.l, &t.a, &t.b, &t.c);
        CHECK(t == row.result);
    }
}

TEST_CASE("hslrgbscr: printed with all black as black ink") {
    Three t;
    hslrgbscr(0, 100, 50, &t.a, &t.b, &t.c);  // red: magenta and yellow
    // 255 * .76 * .96 = 186.05, 0, 0
    CHECK(t == Three{186, 0, 0});
    hslrgbscr(0, 0, 0, &t.a, &t.b, &t.c);
    CHECK(t == Three{31, 31, 33});
    hslrgbscr(0, 0, 100, &t.a, &t.b, &t.c);
    CHECK(t == Three{255, 255, 255});
}

struct BlackRow {
    int r, g, b;
    double removal, scale;
    int c, m, y, k;
};

TEST_CASE("rgbcmyk: black is taken out and printed as told") {
    const BlackRow rows[] = {
        {255, 255, 255, 1, 1, 0, 0, 0, 0},          {0, 0, 0, 1, 1, 0, 0, 0, 255},
        {0, 0, 0, 0, 0, 255, 255, 255, 0},          {200, 100, 50, 1, 1, 0, 100, 150, 55},
        {200, 100, 50, 0.5, 0.5, 28, 128, 178, 28},  // 27.5 of black: halves go up
        {200, 100, 50, 0, 1, 55, 155, 205, 55},     {200, 100, 50, 2, 2, 0, 45, 95, 110},
        {200, 100, 50, -2, -2, 165, 255, 255, 0},   {200, 100, 50, 1, 100, 0, 100, 150, 255},
    };
    for (const BlackRow& row : rows) {
        CAPTURE(row.removal);
        CAPTURE(row.scale);
        CAPTURE(row.r);
        unsigned char c, m, y, k;
        rgbcmyk(row.r, row.g, row.b, &c, &m, &y, &k, row.removal, row.scale);
        CHECK(c == row.c);
        CHECK(m == row.m);
        CHECK(y == row.y);
        CHECK(k == row.k);
    }
    unsigned char c, m, y, k;
    hslcmyk(0, 100, 50, &c, &m, &y, &k, 1, 1);
    CHECK(c == 0);
    CHECK(m == 255);
    CHECK(y == 255);
    CHECK(k == 0);
    rgbcmyk(INT_MIN, INT_MIN, INT_MIN, &c, &m, &y, &k, 1, 1);
    rgbcmyk(INT_MAX, INT_MAX, INT_MAX, &c, &m, &y, &k, std::numeric_limits<double>::quiet_NaN(),
            std::numeric_limits<double>::infinity());
}

struct HsbRow {
    double h, s, b;
    bool written;
    double r, g, bl;
};

TEST_CASE("hsbToRGB: sixths, greys and hues outside") {
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const HsbRow rows[] = {
        {0, 0.5, 8, true, 8, 4, 4},     {1, 0.5, 8, true, 8, 4, 4},
        {0.25, 1, 8, true, 4, 8, 0},                                  // sector 1, f 0.5: q
        {0.125, 1, 8, true, 8, 6, 0},                                 // sector 0, f 0.75: t
        {0.375, 1, 8, true, 0, 8, 2},                                 // sector 2, f 0.25
        {0.625, 1, 8, true, 0, 2, 8},                                 // sector 3, f 0.75
        {0.75, 1, 8, true, 4, 0, 8},                                  // sector 4, f 0.5
        {0.875, 1, 8, true, 8, 0, 6},                                 // sector 5, f 0.25
        {0.3, 0, 7, true, 7, 7, 7},     {nan, -1, 7, true, 7, 7, 7},  // a grey has no hue
        {0, 5, 8, true, 8, 0, 0},                                     // saturation counts as 1
        {-0.125, 1, 8, true, 8, -6, 0},  // truncates to sector 0, f -0.75
        {-0.25, 1, 8, false, 0, 0, 0},  {1.125, 1, 8, false, 0, 0, 0},
        {nan, 1, 8, false, 0, 0, 0},    {inf, 1, 8, false, 0, 0, 0},
        {-inf, 1, 8, false, 0, 0, 0},   {1e300, 1, 8, false, 0, 0, 0},
    };
    for (const HsbRow& row : rows) {
        CAPTURE(row.h);
        CAPTURE(row.s);
        double r = kKept, g = kKept, b = kKept;
        hsbToRGB(row.h, row.s, row.b, r, g, b);
        CHECK(r == (row.written ? row.r : kKept));
        CHECK(g == (row.written ? row.g : kKept));
        CHECK(b == (row.written ? row.bl : kKept));
    }
}

}  // namespace
