// Bitmaps for tests of the tracer, and what outlines make of them.

#ifndef TESTS_SUPPORT_BITMAPS_H
#define TESTS_SUPPORT_BITMAPS_H

#include <cstddef>
#include <initializer_list>
#include <map>
#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/support/paths.h"
#include "vaskel/raster.h"

/// A bitmap, one string a line, '#' for a set pixel.
using Bitmap = std::vector<std::string>;

constexpr int kLineEnd = 0x7FFFFFFF;

/// Writes where a line changes colour, with the terminator.
inline void writeRuns(const std::string& pixels, int* runs) {
    bool set = false;
    for (std::size_t x = 0; x <= pixels.size(); ++x) {
        const bool now = x < pixels.size() && pixels[x] == '#';
        if (now != set) *runs++ = static_cast<int>(x);
        set = now;
    }
    *runs = kLineEnd;
}

/// The outlines of a trace.
using Outlines = std::vector<Points>;

inline std::ostream& operator<<(std::ostream& out, const Outlines& outlines) {
    for (const Points& outline : outlines) out << "[ " << outline << "] ";
    return out;
}

/// Traces bitmaps, or lists of positions as they stand, and keeps the outlines
/// as lists of points; the closing point is not repeated.
class TestTracer : public Vaskel::Vectorizer {
 public:
    explicit TestTracer(int minSize = -1) : Vectorizer(minSize) {}
    TestTracer(int minSize, int p1, int p2, int p3, int p4, bool smooth)
        : Vectorizer(minSize, p1, p2, p3, p4, smooth) {}

    Outlines trace(const Bitmap& bitmap, bool flip = false) {
        lists.clear();
        for (const std::string& line : bitmap) {
            lists.emplace_back(line.size() + 2);
            writeRuns(line, lists.back().data());
        }
        return traceLists(flip);
    }

    Outlines traceLists(bool flip = false) {
        outlines.clear();
        vectorize(static_cast<int>(lists.size()), flip);
        return outlines;
    }

    int getLine(int line, int* runs) override {
        for (const int position : lists[static_cast<std::size_t>(line)]) {
            *runs++ = position;
            if (position == kLineEnd) break;
        }
        return 0;
    }

    void addPath(Pemmit::Path* path) override {
        const PathPtr owned(path);
        outlines.push_back(walked(path));
        outlines.back().pop_back();
    }

    std::vector<std::vector<int>> lists;
    Outlines outlines;
};

/// The unit edges along which set and clear pixels meet, or which outlines
/// cover, and how often. An edge is its lower end and whether it runs along the
/// line coordinate.
using UnitEdges = std::map<std::tuple<int, int, bool>, int>;

inline UnitEdges boundaryOf(const Bitmap& bitmap) {
    UnitEdges edges;
    const auto at = [&](int line, int x) {
        return line >= 0 && line < static_cast<int>(bitmap.size()) && x >= 0 &&
               x < static_cast<int>(bitmap[static_cast<std::size_t>(line)].size()) &&
               bitmap[static_cast<std::size_t>(line)][static_cast<std::size_t>(x)] == '#';
    };
    int width = 0;
    for (const std::string& line : bitmap) width = std::max(width, static_cast<int>(line.size()));
    for (int line = 0; line <= static_cast<int>(bitmap.size()); ++line)
        for (int x = 0; x <= width; ++x) {
            if (at(line, x) != at(line - 1, x)) ++edges[{line, x, false}];
            if (at(line, x) != at(line, x - 1)) ++edges[{line, x, true}];
        }
    return edges;
}

/// The unit edges of outlines; slanted ones count as an edge at line -1.
inline UnitEdges edgesOf(const Outlines& outlines) {
    UnitEdges edges;
    for (const Points& outline : outlines)
        for (std::size_t i = 0; i < outline.size(); ++i) {
            Point from = outline[i];
            Point to = outline[(i + 1) % outline.size()];
            if (from.x > to.x || from.y > to.y) std::swap(from, to);
            if (from.x != to.x && from.y != to.y) ++edges[{-1, 0, false}];
            for (int x = from.x; x < to.x; ++x) ++edges[{x, from.y, true}];
            for (int y = from.y; y < to.y; ++y) ++edges[{from.x, y, false}];
        }
    return edges;
}

/// The even-odd fill of outlines in a field of pixels.
inline Bitmap filled(const Outlines& outlines, int lines, int width) {
    Bitmap bitmap(static_cast<std::size_t>(lines),
                  std::string(static_cast<std::size_t>(width), '.'));
    // A pixel is inside when an odd number of edges along the line coordinate
    // passes its line at smaller positions.
    for (const auto& [edge, count] : edgesOf(outlines)) {
        const auto [line, position, along] = edge;
        if (!along || line < 0 || line >= lines || count % 2 == 0) continue;
        for (int x = position; x < width; ++x) {
            char& pixel = bitmap[static_cast<std::size_t>(line)][static_cast<std::size_t>(x)];
            pixel = pixel == '#' ? '.' : '#';
        }
    }
    return bitmap;
}

#endif
