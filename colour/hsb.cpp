// Hue, saturation, brightness.

#include "vaskel/colour.h"

namespace Vaskel {

void hsbToRGB(double h, double s, double brightness, double& r, double& g, double& b) {
    const double br = brightness;
    const auto write = [&](double red, double green, double blue) {
        r = red;
        g = green;
        b = blue;
    };
    if (s <= 0) {
        write(br, br, br);
        return;
    }
    if (s > 1) s = 1;
    if (h == 1.0) h = 0;
    const double H6 = h * 6;
    if (!(H6 > -1 && H6 < 6)) return;  // not-a-number too
    const int i = static_cast<int>(H6);
    const double f = H6 - i;
    const double p = (1 - s) * br;
    const double q = (1 - f * s) * br;
    const double t = (1 - (1 - f) * s) * br;
    switch (i) {
        case 0:
            return write(br, t, p);
        case 1:
            return write(q, br, p);
        case 2:
            return write(p, br, t);
        case 3:
            return write(p, q, br);
        case 4:
            return write(t, p, br);
        default:
            return write(br, p, q);
    }
}

}  // namespace Vaskel
