// CMYK to RGB, a colour at a time: the naive model and the two scales of the
// ink simulation.

#include <algorithm>

#include "platform/orlune.h"
#include "vaskel/colour.h"

namespace Vaskel {

void cmykrgbpix(unsigned char c, unsigned char m, unsigned char y, unsigned char k, int* r, int* g,
                int* b) {
    *r = 255 - std::min(c + k, 255);
    *g = 255 - std::min(m + k, 255);
    *b = 255 - std::min(y + k, 255);
}

void cmykrgb(unsigned char c, unsigned char m, unsigned char y, unsigned char k, int* r, int* g,
             int* b) {
    for (unsigned char* ink : {&c, &m, &y, &k})
        if (*ink == 255) *ink = 0;
    // Blue keeps a little more light under black (0.87) than red and green
    // (0.88): previews in documents have these values.
    const double black = 100 - 0.88 * k;
    *r = Orlune::iround((100 - c) * (100 - 0.24 * m) * (100 - 0.04 * y) * black * 255 / 100000000);
    *g = Orlune::iround((100 - m) * (100 - 0.44 * c) * (100 - 0.11 * y) * black * 255 / 100000000);
    *b = Orlune::iround((100 - y) * (100 - 0.65 * m) * (100 - 0.14 * c) * (100 - 0.87 * k) * 255 /
                        100000000);
}

void cmykrgbscr(unsigned char c, unsigned char m, unsigned char y, unsigned char k, int* r, int* g,
                int* b) {
    *r = Orlune::iround((255 - c) * (255 - 0.24 * m) * (255 - 0.04 * y) * (255 - 0.88 * k) /
                        16581375);
    *g = Orlune::iround((255 - m) * (255 - 0.44 * c) * (255 - 0.11 * y) * (255 - 0.88 * k) /
                        16581375);
    *b = Orlune::iround((255 - 0.14 * c) * (255 - 0.65 * m) * (255 - y) * (255 - 0.87 * k) /
                        16581375);
}

}  // namespace Vaskel
