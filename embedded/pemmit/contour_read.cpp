// Contours: reading.

#include <algorithm>

#include "embedded/pemmit/contour.h"

namespace Embedded {

const Point& Contour::firstPoint() const {
    const End end = chain.end[0];
    return end.piece()->points()[end.side() == 0 ? 0 : countOf(end.piece()) - 1];
}

const Point& Contour::lastPoint() const {
    const End end = chain.end[1];
    return end.piece()->points()[end.side() == 0 ? 0 : countOf(end.piece()) - 1];
}

void Contour::copyPoints(Point* out) const {
    for (End at = chain.end[0]; at.piece(); at = at.next()) {
        const Point* const points = at.piece()->points();
        const std::int64_t count = countOf(at.piece());
        if (at.side() == 0)
            std::copy(points, points + count, out);
        else
            std::reverse_copy(points, points + count, out);
        out += count;
    }
}

std::vector<Curve> Contour::copyCurves() const {
    std::vector<Curve> curves;
    std::int64_t base = 0;
    for (End at = chain.end[0]; at.piece(); at = at.next()) {
        const std::vector<Curve>* const from = at.piece()->curves;
        const std::int64_t count = countOf(at.piece());
        const std::size_t size = from ? from->size() : 0;
        for (std::size_t i = 0; i < size; ++i) {
            Curve curve = (*from)[at.side() == 0 ? i : size - 1 - i];
            if (at.side() != 0) {
                // It ran from point first - 1 to point first + count - 1, and
                // what was point i is now point count - 1 - i of the piece.
                curve.first = count - curve.first - curve.count + 1;
                std::swap(curve.control[0], curve.control[1]);
            }
            curve.first += base;
            curves.push_back(curve);
        }
        base += count;
    }
    return curves;
}

std::size_t Contour::bytes() const {
    std::size_t sum =
        sizeof(Contour) + pieceBytes(reinterpret_cast<const Piece*>(this + 1)->capacity);
    for (End at = chain.end[0]; at.piece(); at = at.next()) {
        const Piece& piece = *at.piece();
        if (piece.curves) sum += sizeof(*piece.curves) + piece.curves->capacity() * sizeof(Curve);
        if (isOwn(&piece)) continue;
        sum += pieceBytes(piece.capacity) + (piece.inBody ? sizeof(Contour) : 0);
    }
    return sum;
}

}  // namespace Embedded
