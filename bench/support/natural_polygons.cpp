// Polygons with the irregularity of drawn and of scanned outlines.

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <random>

#include "bench/support/polygons.h"
#include "vaskel/raster.h"

namespace Bench {
namespace {

constexpr int kRadius = 1 << 24;

int below(std::mt19937& random, int limit) {
    return static_cast<int>(random() % static_cast<unsigned>(limit));
}

std::size_t at(int i) { return static_cast<std::size_t>(i); }

// A random spanning tree of a grid of cells: which cells are joined to the one
// on their right, and to the one above.
struct CellTree {
    int width, height;
    std::vector<std::uint8_t> right, up;

    CellTree(int w, int h) : width(w), height(h), right(at(w * h)), up(at(w * h)) {
        std::vector<int> walls(at(2 * w * h)), root(at(w * h));
        std::iota(walls.begin(), walls.end(), 0);
        std::iota(root.begin(), root.end(), 0);
        std::mt19937 random(7);
        for (int i = 2 * w * h - 1; i > 0; --i)
            std::swap(walls[at(i)], walls[at(below(random, i + 1))]);
        const auto rootOf = [&](int cell) {
            while (root[at(cell)] != cell) cell = root[at(cell)] = root[at(root[at(cell)])];
            return cell;
        };
        for (const int wall : walls) {
            const int cell = wall / 2;
            const bool upwards = wall % 2 != 0;
            if (upwards ? cell / w == h - 1 : cell % w == w - 1) continue;
            const int a = rootOf(cell), b = rootOf(upwards ? cell + w : cell + 1);
            if (a == b) continue;
            root[at(a)] = b;
            (upwards ? up : right)[at(cell)] = 1;
        }
    }
    bool isJoined(int cell, int dx, int dy) const {
        if (dx > 0) return right[at(cell)] != 0;
        if (dy > 0) return up[at(cell)] != 0;
        const int x = cell % width, y = cell / width;
        if (dx < 0) return x > 0 && right[at(cell - 1)] != 0;
        return y > 0 && up[at(cell - width)] != 0;
    }
};

// A line of connected ink as a scan shows it: strokes of rough edges upon a
// base line that a margin at the left joins to the others. Strokes never get so
// thin, nor so near to each other, that pixels would meet at a corner only.
struct Ink {
    static constexpr int kPitch = 14, kRow = 64, kMargin = 4;
    int width, height;
    std::vector<std::uint8_t> pixels;

    std::uint8_t& pixel(int x, int y) { return pixels[at(y) * at(width) + at(x)]; }

    explicit Ink(int strokes) {
        const int columns = std::max(1, static_cast<int>(std::sqrt(strokes * kRow / kPitch)));
        const int rows = (strokes + columns - 1) / columns;
        width = kMargin + (columns + 1) * kPitch;
        height = rows * kRow;
        pixels.resize(at(width) * at(height));
        std::mt19937 random(11);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < (y % kRow < 3 ? width : kMargin); ++x) pixel(x, y) = 1;
        for (int i = 0; i < strokes; ++i) {
            const int middle = kMargin + (i % columns) * kPitch + kPitch / 2;
            const int foot = i / columns * kRow + 3;
            int left = middle - 2, right = middle + 2;
            for (int y = foot + 20 + below(random, kRow - 30); y >= foot; --y) {
                if (below(random, 3) == 0)
                    left = std::clamp(left + below(random, 3) - 1, middle - 5, middle - 1);
                if (below(random, 3) == 0)
                    right = std::clamp(right + below(random, 3) - 1, middle + 1, middle + 5);
                for (int x = left; x < right; ++x) pixel(x, y) = 1;
            }
        }
    }
};

// Keeps the longest outline.
class InkTracer : public Vaskel::Vectorizer {
 public:
    explicit InkTracer(Ink& ink) : Vectorizer(0, 0, 0, 1, 1, false), mInk(ink) {
        vectorize(ink.height, false);
    }
    int getLine(int line, int* runs) override {
        std::uint8_t last = 0;
        for (int x = 0; x < mInk.width; ++x) {
            if (mInk.pixel(x, line) == last) continue;
            last = mInk.pixel(x, line);
            *runs++ = x;
        }
        if (last != 0) *runs++ = mInk.width;
        *runs = INT_MAX;
        return 0;
    }
    void addPath(Pemmit::Path* path) override {
        Polygon outline;
        Pemmit::scan walk(path, 0, -1);
        for (Vertex v{}; walk.scanex(&v.x, &v.y) >= 0;)
            if (outline.empty() || v.x != outline.back().x || v.y != outline.back().y)
                outline.push_back(v);
        Pemmit::objrem(path);
        outline.pop_back();
        if (outline.size() > longest.size()) longest = std::move(outline);
    }

    Polygon longest;

 private:
    Ink& mInk;
};

}  // namespace

// Around a spanning tree of cells leads one closed way over the grid of half
// the width, whose edges that do not follow each other are a grid width apart;
// moving vertices by less than a quarter of it makes none of them meet.
Polygon randomSimple(int vertices) {
    const int width = std::max(1, static_cast<int>(std::sqrt(vertices / 4)));
    const CellTree tree(width, vertices / 4 / width);
    const int count = 4 * tree.width * tree.height;
    const int grid = 2 * kRadius / (2 * std::max(tree.width, tree.height) + 2);
    std::mt19937 random(3);
    Polygon polygon;
    int x = 0, y = 0, fromX = 0, fromY = 1;  // as if it had come from above
    for (int i = 0; i < count; ++i) {
        const int jitter = grid * 24 / 100;
        polygon.push_back({(x + 1) * grid - kRadius + below(random, 2 * jitter + 1) - jitter,
                           (y + 1) * grid - kRadius + below(random, 2 * jitter + 1) - jitter});
        // Each place lies at two sides of its cell, and its two ways on lead
        // across a side where cells are joined and along it where not.
        const int cell = y / 2 * tree.width + x / 2;
        const int sideX = x % 2 ? 1 : -1, sideY = y % 2 ? 1 : -1;
        const Vertex ways[2] = {
            tree.isJoined(cell, sideX, 0) ? Vertex{x + sideX, y} : Vertex{x, y - sideY},
            tree.isJoined(cell, 0, sideY) ? Vertex{x, y + sideY} : Vertex{x - sideX, y}};
        const Vertex& on = ways[0].x == fromX && ways[0].y == fromY ? ways[1] : ways[0];
        fromX = x;
        fromY = y;
        x = on.x;
        y = on.y;
    }
    // What is missing to the number comes from halved edges.
    Polygon whole;
    for (int i = 0; i < count; ++i) {
        const Vertex& v = polygon[at(i)];
        const Vertex& next = polygon[at((i + 1) % count)];
        whole.push_back(v);
        if (i < vertices - count) whole.push_back({(v.x + next.x) / 2, (v.y + next.y) / 2});
    }
    return whole;
}

Polygon tracedPage(int vertices) {
    constexpr int kVerticesAStroke = 31;
    Ink ink(std::max(1, vertices / kVerticesAStroke));
    return InkTracer(ink).longest;
}

}  // namespace Bench
