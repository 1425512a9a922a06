// A small bitmap of two outlines.

#ifndef TESTS_RASTER_RING_H
#define TESTS_RASTER_RING_H

#include "tests/support/bitmaps.h"

inline const Bitmap kRing = {"####", "#..#", "#..#", "####"};
inline const Outlines kRingOutlines = {{{1, 1}, {3, 1}, {3, 3}, {1, 3}},
                                       {{0, 0}, {4, 0}, {4, 4}, {0, 4}}};

#endif
