// Flattening cubic segments by halving until a part is as good as its chord.

#include "platform/pemmit/bezier.h"

#include <cmath>

namespace Pemmit {
namespace {

using PointD = PointBase<double>;

// Each halving divides the distance of a small part from its chord by four.
// 17 halvings bring any segment with 32-bit coordinates, at most 2^33 off its
// chord, below half a distance, and bound the count: 2^17 points.
constexpr int kMostHalvings = 17;

PointD middle(const PointD& a, const PointD& b) {
    return {0.5 * a.x + 0.5 * b.x, 0.5 * a.y + 0.5 * b.y};  // a.x + b.x may overflow
}

// The squared distance of p from the chord a to b, ends included.
double distance2(const PointD& p, const PointD& a, const PointD& b) {
    const double cx = b.x - a.x;
    const double cy = b.y - a.y;
    const double length2 = cx * cx + cy * cy;
    double t = length2 > 0 ? ((p.x - a.x) * cx + (p.y - a.y) * cy) / length2 : 0;
    t = t > 0 ? (t < 1 ? t : 1) : 0;
    const double dx = p.x - (a.x + t * cx);
    const double dy = p.y - (a.y + t * cy);
    return dx * dx + dy * dy;
}

// The distance f(X) of a point X from the chord is a convex function, 0 at P0
// and P3. So f(B(t)) <= 3t(1-t)^2 f(P1) + 3t^2(1-t) f(P2), whose weights add up
// to 3t(1-t) <= 3/4: the curve stays within tolerance if P1 and P2 stay within
// 4/3 of it. The chord in turn stays as near to the curve, which crosses every
// perpendicular of the chord. False for not-a-number.
bool isFlat(const PointD (&p)[4], double limit2) {
    return distance2(p[1], p[0], p[3]) <= limit2 && distance2(p[2], p[0], p[3]) <= limit2;
}

bool isFinite(const PointD (&p)[4]) {
    for (const PointD& point : p)
        if (!std::isfinite(point.x) || !std::isfinite(point.y)) return false;
    return true;
}

struct Part {
    PointD p[4];
    int halvings;
};

// Cuts part at its middle; it keeps the first half, the result is the second.
Part cut(Part& part) {
    PointD(&p)[4] = part.p;
    const PointD a = middle(p[0], p[1]);
    const PointD b = middle(p[1], p[2]);
    const PointD c = middle(p[2], p[3]);
    const PointD ab = middle(a, b);
    const PointD bc = middle(b, c);
    const PointD centre = middle(ab, bc);
    ++part.halvings;
    const Part second = {{centre, bc, c, p[3]}, part.halvings};
    p[1] = a;
    p[2] = ab;
    p[3] = centre;
    return second;
}

}  // namespace

bezier::bezier() : p{} {}

void bezier::cubfla(double tolerance, void (*callback)(void*, const PointBase<double>*),
                    void* context) const {
    if (!isFinite(p)) {
        callback(context, &p[3]);
        return;
    }
    const double limit = tolerance > 0 ? tolerance * (4.0 / 3.0) : 0;
    const double limit2 = limit * limit;
    // The parts still to come, the next one on top; each level leaves one.
    Part parts[kMostHalvings + 1];
    int count = 0;
    parts[count++] = {{p[0], p[1], p[2], p[3]}, 0};
    while (count > 0) {
        Part& part = parts[count - 1];
        if (part.halvings == kMostHalvings || isFlat(part.p, limit2)) {
            callback(context, &part.p[3]);
            --count;
        } else {
            const Part second = cut(part);
            parts[count] = part;
            parts[count - 1] = second;
            ++count;
        }
    }
}

}  // namespace Pemmit
