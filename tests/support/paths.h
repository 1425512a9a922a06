// Paths for tests, written as lists of points, and read back as such.

#ifndef TESTS_SUPPORT_PATHS_H
#define TESTS_SUPPORT_PATHS_H

#include <memory>
#include <ostream>
#include <vector>

#include "platform/pemmit.h"

struct Point {
    int x, y;
    friend bool operator==(const Point&, const Point&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Point& p) {
        return out << '(' << p.x << ',' << p.y << ')';
    }
};
using Points = std::vector<Point>;

inline std::ostream& operator<<(std::ostream& out, const Points& points) {
    for (const Point& p : points) out << p << ' ';
    return out;
}

struct ObjectRemover {
    void operator()(Pemmit::Object* object) const { Pemmit::objrem(object); }
};
using PathPtr = std::unique_ptr<Pemmit::Path, ObjectRemover>;

/// A closed path with these points; its walk delivers the first one twice.
inline PathPtr closedPath(const Points& points) {
    PathPtr path(Pemmit::patbeg());
    for (const Point& p : points) Pemmit::patlin(path.get(), p.x, p.y);
    Pemmit::patendclo(path.get());
    return path;
}

/// An open path with these points; at least one.
inline PathPtr openPath(const Points& points) {
    PathPtr path(Pemmit::patbeg());
    for (std::size_t i = 0; i + 1 < points.size(); ++i)
        Pemmit::patlin(path.get(), points[i].x, points[i].y);
    Pemmit::patend(path.get(), points.back().x, points.back().y);
    return path;
}

/// What a walk from start delivers.
inline Points walked(const Pemmit::Object* object, int direction = 0, int start = -1) {
    Points points;
    Pemmit::scan walk(object, direction, start);
    for (Point p{}; walk.scanex(&p.x, &p.y) >= 0;) points.push_back(p);
    return points;
}

#endif
