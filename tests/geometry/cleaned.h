// What cleaning makes of a path, as a list of points.

#ifndef TESTS_GEOMETRY_CLEANED_H
#define TESTS_GEOMETRY_CLEANED_H

#include <doctest/doctest.h>

#include <climits>

#include "platform/pemmit.h"
#include "tests/support/paths.h"
#include "vaskel/geometry.h"

constexpr int kAnySize = INT_MIN;  // refuses nothing

inline Points cleaned(const Pemmit::Path* path, int size = kAnySize) {
    const PathPtr result(Vaskel::clean(path, size));
    REQUIRE(result);
    CHECK((result->flags & Pemmit::kFlagOpen) == (path->flags & Pemmit::kFlagOpen));
    return walked(result.get());
}

/// A closed square of the given side.
inline PathPtr squareOf(int side) {
    return closedPath({{0, 0}, {side, 0}, {side, side}, {0, side}});
}

#endif
