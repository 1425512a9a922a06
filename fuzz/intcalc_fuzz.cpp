// Crossings of any two segments: whether there is one is what 128-bit integers
// say, which segment comes first and where it begins play no part, and of short
// coordinates the point is the exact one, rounded.

#include <algorithm>

#include "fuzz/outline_reader.h"
#include "vaskel/geometry.h"

namespace {

__extension__ typedef __int128 Wide;

constexpr int kKept = 77;

struct Answer {
    int rc, x = kKept, y = kKept;
    friend bool operator==(const Answer&, const Answer&) = default;
};

Answer answerTo(Point a, Point b, Point c, Point d) {
    Answer answer{};
    answer.rc = Vaskel::intcalc(a.x, a.y, b.x, b.y, c.x, c.y, d.x, d.y, &answer.x, &answer.y);
    require(answer.rc == 0 || answer.rc == 1);
    require(answer.rc == 1 || (answer.x == kKept && answer.y == kKept));
    return answer;
}

int side(Point a, Point b, Point p) {
    const Wide turn = (Wide{b.x} - a.x) * (Wide{p.y} - a.y) - (Wide{b.y} - a.y) * (Wide{p.x} - a.x);
    return (turn > 0) - (turn < 0);
}

// num / den rounded, halves away from zero.
Wide nearest(Wide num, Wide den) {
    if (den < 0) {
        num = -num;
        den = -den;
    }
    const Wide size = (2 * (num < 0 ? -num : num) + den) / (2 * den);
    return num < 0 ? -size : size;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OutlineReader in(data, size);
    const Point a = in.point(), b = in.point(), c = in.point(), d = in.point();
    const Answer answer = answerTo(a, b, c, d);
    constexpr int half = 1 << 30;
    for (const int v : {a.x, a.y, b.x, b.y, c.x, c.y, d.x, d.y})
        if (v < -half || v >= half) return 0;  // differences wrap

    const bool meet = side(c, d, a) != side(c, d, b) && side(a, b, c) != side(a, b, d);
    require(answer.rc == (meet ? 1 : 0));
    require(answerTo(c, d, a, b).rc == answer.rc);
    require(answerTo(b, a, c, d).rc == answer.rc);
    if (!meet) return 0;

    int widest = 0;
    for (const int v : {a.x, a.y, b.x, b.y, c.x, c.y, d.x, d.y})
        widest = std::max(widest, std::abs(v));
    if (widest > 1 << 12) return 0;  // beyond, the double formula rounds more than once
    require(answerTo(c, d, a, b) == answer);
    require(answerTo(b, a, d, c) == answer);
    const Wide ax = b.x - a.x, ay = b.y - a.y, bx = d.x - c.x, by = d.y - c.y;
    const Wide den = ax * by - ay * bx;
    const Wide along = (Wide{c.x} - a.x) * by - (Wide{c.y} - a.y) * bx;
    require(nearest(a.x * den + along * ax, den) == answer.x);
    require(nearest(a.y * den + along * ay, den) == answer.y);
    return 0;
}
