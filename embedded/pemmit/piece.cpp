#include "embedded/pemmit/piece.h"

#include <new>

namespace Embedded {

static_assert(alignof(Piece) > 1 && alignof(Point) <= alignof(Piece));

Piece* makePiece(std::uint32_t capacity) {
    return new (::operator new(pieceBytes(capacity)))
        Piece{nullptr, 0, capacity & kMostCapacity, 0, {nullptr, nullptr}};
}

void Chain::append(const Chain& other) {
    if (other.empty()) return;
    if (empty()) {
        *this = other;
        return;
    }
    const End last = end[1];
    const End first = other.end[0];
    last.piece()->link[last.side()] = first.piece();
    first.piece()->link[first.side()] = last.piece();
    end[1] = other.end[1];
}

void Chain::append(Piece* piece) {
    Chain one;
    one.end[0] = {piece, 0};
    one.end[1] = {piece, 1};
    append(one);
}

void Chain::replace(Piece* old, Piece* fresh) {
    for (int side = 0; side < 2; ++side) {
        Piece* const neighbour = old->link[side];
        fresh->link[side] = neighbour;
        if (neighbour) neighbour->link[neighbour->sideOf(old)] = fresh;
        if (end[side].piece() == old) end[side] = {fresh, end[side].side()};
    }
}

}  // namespace Embedded
