#include "embedded/pemmit/piece.h"

#include <algorithm>
#include <new>

namespace Embedded {

Piece noPiece = {{nullptr, nullptr}, 0, 0, nullptr};

Piece* makePiece(std::uint32_t capacity) {
    void* const memory =
        ::operator new(sizeof(Piece) + static_cast<std::size_t>(capacity) * sizeof(Point));
    return new (memory) Piece{{nullptr, nullptr}, 0, capacity, nullptr};
}

void freePiece(Piece* piece) noexcept {
    delete piece->curves;
    ::operator delete(piece);
}

void Chain::append(const Chain& other) {
    if (other.empty()) return;
    if (empty()) {
        *this = other;
        return;
    }
    End& last = end[1];
    const End& first = other.end[0];
    last.piece->link[last.side] = first.piece;
    first.piece->link[first.side] = last.piece;
    last = other.end[1];
    pieces += other.pieces;
}

void Chain::append(Piece* piece) {
    Chain one;
    one.end[0] = {piece, 0};
    one.end[1] = {piece, 1};
    one.pieces = 1;
    append(one);
}

void Chain::replace(Piece* old, Piece* fresh) {
    for (int side = 0; side < 2; ++side) {
        Piece* const neighbour = old->link[side];
        fresh->link[side] = neighbour;
        if (neighbour) neighbour->link[neighbour->sideOf(old)] = fresh;
        if (end[side].piece == old) end[side].piece = fresh;
    }
}

std::size_t Chain::bytes() const {
    std::size_t sum = 0;
    for (End at = end[0]; at.piece; at = after(at)) {
        const Piece& piece = *at.piece;
        sum += sizeof(Piece) + piece.capacity * sizeof(Point);
        if (piece.curves) sum += sizeof(*piece.curves) + piece.curves->capacity() * sizeof(Curve);
    }
    return sum;
}

void Chain::clear() noexcept {
    for (End at = end[0]; at.piece;) {
        Piece* const piece = at.piece;
        at = after(at);
        freePiece(piece);
    }
    *this = Chain();
}

void copyPoints(const Chain& chain, Point* out) {
    for (End at = chain.end[0]; at.piece; at = after(at)) {
        const Point* const points = at.piece->points();
        const std::uint32_t count = at.piece->count;
        if (at.side == 0)
            std::copy(points, points + count, out);
        else
            std::reverse_copy(points, points + count, out);
        out += count;
    }
}

std::vector<Curve> copyCurves(const Chain& chain) {
    std::vector<Curve> curves;
    std::int64_t base = 0;
    for (End at = chain.end[0]; at.piece; at = after(at)) {
        const std::int64_t count = at.piece->count;
        const std::size_t own = at.piece->curves ? at.piece->curves->size() : 0;
        for (std::size_t i = 0; i < own; ++i) {
            Curve curve = (*at.piece->curves)[at.side == 0 ? i : own - 1 - i];
            if (at.side != 0) {
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

}  // namespace Embedded
