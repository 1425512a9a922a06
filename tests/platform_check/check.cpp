#include "check.h"

#include <algorithm>
#include <climits>

namespace Check {

PointList walk(const Pemmit::Object* object, int direction, int start) {
    constexpr std::size_t kEndless = 20'000'000;
    PointList points;
    Pemmit::scan scan(object, direction, start);
    for (int x, y; scan.scanex(&x, &y) >= 0;) {
        points.push_back({x, y});
        if (points.size() == kEndless) {
            FAIL_CHECK("the walk does not end");
            break;
        }
    }
    return points;
}

void append(Pemmit::Path* path, const PointList& points) {
    for (const auto& [x, y] : points) Pemmit::patlin(path, x, y);
}

PathPtr closedPath(const PointList& points) {
    PathPtr path(Pemmit::patbeg());
    append(path.get(), points);
    Pemmit::patendclo(path.get());
    return path;
}

PathPtr openPath(const PointList& points) {
    PathPtr path(Pemmit::patbeg());
    append(path.get(), {points.begin(), points.end() - 1});
    Pemmit::patend(path.get(), points.back().first, points.back().second);
    return path;
}

PointList reversed(PointList points) {
    std::reverse(points.begin(), points.end());
    return points;
}

bool sameBox(const Pemmit::Box& a, const Pemmit::Box& b) {
    return a.minX == b.minX && a.minY == b.minY && a.maxX == b.maxX && a.maxY == b.maxY;
}

Pemmit::Box boxOf(const PointList& points) {
    Pemmit::Box box;
    for (const auto& [x, y] : points) {
        box.minX = std::min(box.minX, x);
        box.minY = std::min(box.minY, y);
        box.maxX = std::max(box.maxX, x);
        box.maxY = std::max(box.maxY, y);
    }
    return box;
}

void checkWalks(const Pemmit::Path* path, const PointList& forward) {
    const PointList backward = reversed(forward);
    const auto size = static_cast<int>(forward.size());
    CHECK(walk(path, 0, -1) == forward);
    CHECK(walk(path, 1, -1) == backward);
    CHECK(Pemmit::patsiz(path) == size);
    CHECK(sameBox(path->box, boxOf(forward)));
    const int step = std::max(1, size / 16);
    for (int start = 0; start < size; start += start < 8 || start + 8 >= size ? 1 : step) {
        const PointList ahead(forward.begin() + start, forward.end());
        const PointList behind(backward.end() - 1 - start, backward.end());
        if (walk(path, 0, start) == ahead && walk(path, 1, start) == behind) continue;
        CAPTURE(start);
        CHECK(walk(path, 0, start) == ahead);
        CHECK(walk(path, 1, start) == behind);
    }
}

int Dice::coordinate() {
    switch (below(16)) {
        case 0:
            return INT_MAX - below(2);
        case 1:
            return INT_MIN + below(2);
        case 2:
            return 0;
        default:
            return below(2001) - 1000;
    }
}

}  // namespace Check
