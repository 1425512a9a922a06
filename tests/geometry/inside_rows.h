// Rows of points and whether a path holds them.

#ifndef TESTS_GEOMETRY_INSIDE_ROWS_H
#define TESTS_GEOMETRY_INSIDE_ROWS_H

#include <doctest/doctest.h>

#include <cstddef>

#include "tests/support/paths.h"
#include "vaskel/geometry.h"

struct InsideRow {
    const char* why;
    Point p;
    bool inside;
};

template <std::size_t n>
void checkRows(const Pemmit::Path* path, const InsideRow (&rows)[n]) {
    for (const InsideRow& row : rows) {
        CAPTURE(row.why);
        CHECK(Vaskel::insidePath(row.p.x, row.p.y, path) == row.inside);
    }
}

#endif
