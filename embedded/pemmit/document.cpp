// What embedded/document.h offers beside the platform's own calls.

#include "embedded/document.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "embedded/orlune/sinks.h"
#include "embedded/pemmit/contour.h"

namespace Embedded {
namespace {

struct Flattened {
    std::vector<Point> points;
    Point before;  // the last point so far

    static void take(void* context, const Pemmit::PointBase<double>* point) {
        auto& self = *static_cast<Flattened*>(context);
        // Halves away from zero. Halving never leaves the range of the control
        // points, so that the results are integers of 32 bits.
        const Point rounded = {static_cast<int>(std::round(point->x)),
                               static_cast<int>(std::round(point->y))};
        if (rounded.x == self.before.x && rounded.y == self.before.y) return;
        self.points.push_back(rounded);
        self.before = rounded;
    }
};

bool same(const Point& a, const Point& b) { return a.x == b.x && a.y == b.y; }

// The points of a cubic segment behind its first one; at least one.
std::vector<Point> flatten(const Point (&control)[4]) {
    Pemmit::bezier cubic;
    for (int i = 0; i < 4; ++i)
        cubic.p[i] = {static_cast<double>(control[i].x), static_cast<double>(control[i].y)};
    Flattened result{{}, control[0]};
    cubic.cubfla(sinks().flatness, &Flattened::take, &result);
    if (result.points.empty()) result.points.push_back(control[3]);
    return std::move(result.points);
}

}  // namespace

bool addCurve(Pemmit::Path* path, int x1, int y1, int x2, int y2, int x3, int y3) {
    Contour* const contour = contourOf(path);
    if (!contour || !contour->hasPoints()) return false;
    const Point start = contour->closingCurve ? contour->firstPoint() : contour->lastPoint();
    const std::vector<Point> points = flatten({start, {x1, y1}, {x2, y2}, {x3, y3}});

    // All memory first. The curve goes into the list of the last piece or, where
    // that cannot grow, into one of its own: a failure leaves spare room at most.
    const auto count = static_cast<std::uint32_t>(points.size());
    auto fresh = std::make_unique<std::vector<Curve>>();
    fresh->reserve(1);
    if (std::vector<Curve>* const list = contour->chain.end[1].piece()->curves)
        if (list->size() == list->capacity()) list->reserve(2 * list->size());
    contour->makeRoom(count);
    Piece* const piece = contour->chain.end[1].piece();
    if (!piece->curves) piece->curves = fresh.release();
    contour->curved = true;

    piece->curves->push_back({contour->write - piece->points(), count, {{x1, y1}, {x2, y2}}});
    contour->write = std::copy(points.begin(), points.end(), contour->write);
    for (const Point& point : points) growBox(*contour, {point.x, point.y, point.x, point.y});
    return true;
}

void closeContour(Pemmit::Path* path) {
    Contour* const contour = contourOf(path);
    if (!contour) return;
    const bool repeated = !contour->mate && !contour->closingCurve && contour->pointCount() > 1 &&
                          same(contour->firstPoint(), contour->lastPoint());
    if (repeated) {
        contour->flatten();
        contour->pause();
        const Piece* const piece = contour->chain.end[1].piece();
        const bool byCurve =
            piece->curves &&
            piece->curves->back().first + piece->curves->back().count == piece->count;
        contour->dropLastPoint();
        contour->closingCurve = byCurve;
        contour->resume();
    }
    Pemmit::patendclo(path);
}

Pemmit::Path* makeCompound() { return new Compound; }

bool addChild(Pemmit::Object* parent, Pemmit::Object* child) {
    Compound* const owner = compoundOf(nodeOf(parent));
    Node* const node = nodeOf(child);
    if (!owner || !node || node->parent) return false;
    for (const Node* above = owner; above; above = above->parent)
        if (above == node) return false;
    linkChild(*owner, *node);
    growBox(*owner, node->box);
    return true;
}

Pemmit::Object* parentOf(const Pemmit::Object* object) {
    const Node* const node = nodeOf(object);
    return node ? node->parent : nullptr;
}

std::vector<Segment> segments(const Pemmit::Path* path) {
    std::vector<Segment> result;
    const Contour* const contour = contourOf(path);
    if (!contour || !contour->hasPoints()) return result;
    std::vector<Point> points(static_cast<std::size_t>(contour->pointCount()));
    contour->copyPoints(points.data());
    if (contour->closingCurve) points.push_back(points.front());
    const std::vector<Curve> curves = contour->copyCurves();

    result.push_back({Segment::kMove, 0, 0, 0, 0, points[0].x, points[0].y});
    auto curve = curves.begin();
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (curve != curves.end() && curve->first == static_cast<std::int64_t>(i)) {
            i += static_cast<std::size_t>(curve->count) - 1;
            const Point& a = curve->control[0];
            const Point& b = curve->control[1];
            result.push_back({Segment::kCurve, a.x, a.y, b.x, b.y, points[i].x, points[i].y});
            ++curve;
        } else {
            result.push_back({Segment::kLine, 0, 0, 0, 0, points[i].x, points[i].y});
        }
    }
    return result;
}

std::size_t bytesOf(const Pemmit::Object* object) {
    const Node* const root = nodeOf(object);
    std::size_t bytes = 0;
    for (const Node* at = root; at;) {
        const Compound* const compound = compoundOf(at);
        bytes += compound ? sizeof(Compound) : static_cast<const Contour*>(at)->bytes();
        if (compound && compound->firstChild) {
            at = compound->firstChild;
            continue;
        }
        while (at != root && !at->next) at = at->parent;
        if (at == root) break;
        at = at->nextNode();
    }
    return bytes;
}

}  // namespace Embedded
