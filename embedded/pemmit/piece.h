// Pieces: the stretches of contiguous points that contours are made of.
//
// A contour that was only ever appended to is one piece. Joins hang pieces
// together instead of copying points, and since one side of a join arrives
// back to front, a piece does not know its direction: it has two sides, 0
// before its first point and 1 behind its last, and a walk that enters by one
// side leaves by the other. Reversing a chain is swapping its two ends.

#ifndef EMBEDDED_PEMMIT_PIECE_H
#define EMBEDDED_PEMMIT_PIECE_H

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/pemmit/bezier.h"

namespace Embedded {

using Point = Pemmit::PointBase<int>;

/// A cubic segment beside the points that stand for it. Points first .. first
/// + count - 1 of the piece are its flattened form, the last of them its end;
/// it begins at the point before, which for first = 0 is that of the
/// neighbour at side 0.
struct Curve {
    std::int64_t first;
    std::int64_t count;
    Point control[2];
};

/// A piece; its points follow it in memory. Never without a point, except
/// noPiece.
struct Piece {
    Piece* link[2];  // the neighbour at each side, or null
    std::uint32_t count;
    std::uint32_t capacity;
    std::vector<Curve>* curves;  // ascending; null for none

    Point* points() { return reinterpret_cast<Point*>(this + 1); }
    const Point* points() const { return reinterpret_cast<const Point*>(this + 1); }

    /// The side of this piece that from is linked to. The two sides of a piece
    /// never have the same neighbour, since chains are not rings.
    int sideOf(const Piece* from) const { return link[1] == from ? 1 : 0; }
};

/// Stands for "no piece to append to": it is always full.
extern Piece noPiece;

/// A piece without points, links or curves. Throws std::bad_alloc.
Piece* makePiece(std::uint32_t capacity);
void freePiece(Piece* piece) noexcept;

/// One end of a chain: its outermost piece and the side that faces out, by
/// which a walk from there enters it.
struct End {
    Piece* piece = nullptr;
    int side = 0;
};

/// Where a walk goes on: the next piece, if any, and the side of entry.
inline End after(const End& at) {
    Piece* const next = at.piece->link[1 - at.side];
    return {next, next ? next->sideOf(at.piece) : 0};
}

/// Pieces in a row, from end[0] to end[1]. Does not own them.
struct Chain {
    End end[2];
    std::int64_t pieces = 0;

    bool empty() const { return !end[0].piece; }
    void reverse() { std::swap(end[0], end[1]); }
    /// Hangs other behind this chain. Constant time.
    void append(const Chain& other);
    /// Hangs one piece without neighbours behind this chain.
    void append(Piece* piece);
    /// Puts fresh, which holds the same points, in the place of old.
    void replace(Piece* old, Piece* fresh);
    /// The memory of all pieces.
    std::size_t bytes() const;
    /// Frees all pieces.
    void clear() noexcept;
};

/// Stores the points of a chain in order. Takes a step a piece and a point.
void copyPoints(const Chain& chain, Point* out);
/// The curves of a chain, ascending, numbered by its points from 0 on.
/// Throws std::bad_alloc.
std::vector<Curve> copyCurves(const Chain& chain);

}  // namespace Embedded

#endif
