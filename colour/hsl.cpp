// Hue, saturation, lightness, and the way to CMYK.

#include <algorithm>
#include <cmath>

#include "platform/orlune.h"
#include "vaskel/colour.h"

namespace Vaskel {
namespace {

// Writes nothing for a grey other than black.
void rgbhsl(int r, int g, int b, int* h, int* s, int* l) {
    const double R = r / 255.0, G = g / 255.0, B = b / 255.0;
    const double mx = std::max({R, G, B}), mn = std::min({R, G, B});
    const double sum = mx + mn;
    if (sum / 2 <= 0) {
        *h = *s = *l = 0;
        return;
    }
    const double d = mx - mn;
    if (d <= 0) return;
    const double saturation = d / (sum / 2 <= 0.5 ? sum : 2 - mx - mn);
    const double rr = (mx - R) / d, gg = (mx - G) / d, bb = (mx - B) / d;
    double hue;
    if (R == mx)
        hue = G == mn ? 5 + bb : 1 - gg;
    else if (G == mx)
        hue = B == mn ? 1 + rr : 3 - bb;
    else
        hue = R == mn ? 3 + gg : 5 - rr;
    *h = static_cast<int>(hue / 6 * 100);
    *s = static_cast<int>(saturation * 100);
    *l = static_cast<int>(sum / 2 * 100);
}

struct Channels {
    double r, g, b;
};

// By sixths of the circle; black outside of 0 to 6.
Channels bySector(int sector, double m1, double m2, double up, double down) {
    switch (sector) {
        case 0:
        case 6:
            return {m2, up, m1};
        case 1:
            return {down, m2, m1};
        case 2:
            return {m1, m2, up};
        case 3:
            return {m1, down, m2};
        case 4:
            return {up, m1, m2};
        case 5:
            return {m2, m1, down};
        default:
            return {0, 0, 0};
    }
}

int channel(double value) { return Orlune::iround(std::clamp(value * 255, 0.0, 255.0)); }

unsigned char inkByte(double amount) {
    return static_cast<unsigned char>(std::min(Orlune::iround(std::max(0.0, amount)), 255));
}

// 255 less the largest component, as a byte.
unsigned char blackOf(int r, int g, int b) {
    return static_cast<unsigned char>(255u - static_cast<unsigned>(std::max({r, g, b})));
}

}  // namespace

void cmykhsl(unsigned char c, unsigned char m, unsigned char y, unsigned char k, int* h, int* s,
             int* l) {
    int r, g, b;
    cmykrgbpix(c, m, y, k, &r, &g, &b);
    if (r + g + b != 0) {
        rgbhsl(r, g, b, h, s, l);
        return;
    }
    rgbhsl(255 - c, 255 - m, 255 - y, h, s, l);
    *l = 0;
}

void hslrgb(int h, int s, int l, int* r, int* g, int* b) {
    *r = *g = *b = 0;
    const double L = l / 100.0, S = s / 100.0;
    const double m2 = L <= 0.5 ? L * (1 + S) : L + S - L * S;
    const double m1 = 2 * L - m2;
    // m2 is 0 for lightness 0, where delta has no value: black.
    if (!(m2 > 0)) return;
    const double H6 = h / 100.0 * 6;
    const int sector = static_cast<int>(H6);
    const double f = std::fabs(H6 - sector);
    const double delta = f * ((m2 - m1) / m2 * m2);
    const Channels c = bySector(sector, m1, m2, m1 + delta, m2 - delta);
    *r = channel(c.r);
    *g = channel(c.g);
    *b = channel(c.b);
}

void hslrgbscr(int h, int s, int l, int* r, int* g, int* b) {
    unsigned char c, m, y, k;
    hslcmyk(h, s, l, &c, &m, &y, &k, 1, 1);
    cmykrgbscr(c, m, y, k, r, g, b);
}

void rgbcmyk(int r, int g, int b, unsigned char* c, unsigned char* m, unsigned char* y,
             unsigned char* k, double removal, double blackScale) {
    const unsigned char black = blackOf(r, g, b);
    *c = inkByte((255.0 - r) - black * removal);
    *m = inkByte((255.0 - g) - black * removal);
    *y = inkByte((255.0 - b) - black * removal);
    *k = inkByte(black * blackScale);
}

void hslcmyk(int h, int s, int l, unsigned char* c, unsigned char* m, unsigned char* y,
             unsigned char* k, double removal, double blackScale) {
    int r, g, b;
    hslrgb(h, s, l, &r, &g, &b);
    rgbcmyk(r, g, b, c, m, y, k, removal, blackScale);
}

}  // namespace Vaskel
