// Outlines of several contours, open and closed, for the tests of the geometry.

#ifndef TESTS_GEOMETRY_CONTOURS_H
#define TESTS_GEOMETRY_CONTOURS_H

#include <ostream>
#include <vector>

#include "tests/support/paths.h"

struct Contour {
    bool closed;
    Points points;

    PathPtr path() const { return closed ? closedPath(points) : openPath(points); }
};
using Contours = std::vector<Contour>;

inline std::ostream& operator<<(std::ostream& out, const Contours& contours) {
    for (const Contour& c : contours) out << (c.closed ? "closed " : "open ") << c.points;
    return out;
}

#endif
