// Polygons without crossings or touches in the shapes that path tools meet, of
// any size, all within +-2^24.

#ifndef BENCH_SUPPORT_POLYGONS_H
#define BENCH_SUPPORT_POLYGONS_H

#include <string>
#include <vector>

namespace Bench {

struct Vertex {
    int x, y;
};
using Polygon = std::vector<Vertex>;

struct Shape {
    const char* name;
    Polygon (*draw)(int vertices);
    bool longEdges;  // most boxes of edges overlap

    /// As draw, but drawn once only: several benchmarks run on each.
    const Polygon& make(int vertices) const;
};

Polygon star(int vertices);            // long and short radii in turns
Polygon spiky(int vertices);           // radii at random
Polygon spiral(int vertices);          // a band wound many times
Polygon verticalComb(int vertices);    // long upright teeth
Polygon horizontalComb(int vertices);  // long level teeth
Polygon hatch(int vertices);           // slanted teeth whose boxes all overlap
Polygon hilbert(int vertices);         // a band along a space-filling curve
Polygon randomSimple(int vertices);    // around a random tree, edges in all directions
Polygon tracedPage(int vertices);      // the outline of connected ink; about as many vertices

/// All of the above.
extern const std::vector<Shape> kShapes;

}  // namespace Bench

#endif
