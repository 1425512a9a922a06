// What objects of the embedded document model hold, as points and as text.

#ifndef TESTS_EMBEDDED_DRAWN_H
#define TESTS_EMBEDDED_DRAWN_H

#include <string>
#include <utility>
#include <vector>

#include "embedded/document.h"
#include "platform/pemmit.h"

using Points = std::vector<std::pair<int, int>>;

inline Points walk(const Pemmit::Object* object, int direction = 0, int start = -1) {
    Points points;
    Pemmit::scan scan(object, direction, start);
    for (int x, y; scan.scanex(&x, &y) >= 0;) points.push_back({x, y});
    return points;
}

/// Segments as text: "M 0,0  L 5,5  C 1,1 2,2 3,3".
inline std::string drawn(const Pemmit::Path* path) {
    using Embedded::Segment;
    std::string text;
    const auto point = [](int x, int y) { return std::to_string(x) + ',' + std::to_string(y); };
    for (const Segment& s : Embedded::segments(path)) {
        if (!text.empty()) text += "  ";
        text += "MLC"[s.kind];
        if (s.kind == Segment::kCurve) text += ' ' + point(s.x1, s.y1) + ' ' + point(s.x2, s.y2);
        text += ' ' + point(s.x, s.y);
    }
    return text;
}

#endif
