// Pieces: the stretches of contiguous points that contours are made of.
//
// A contour that was only ever appended to is one piece or two. Joins hang
// pieces together instead of copying points, and since one side of a join
// arrives back to front, a piece does not know its direction: it has two sides,
// 0 before its first point and 1 behind its last, and a walk that enters by one
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

/// A piece; its points follow it in memory.
struct Piece {
    std::vector<Curve>* curves;  // ascending; null for none
    std::uint32_t count;         // out of date while a contour grows here
    std::uint32_t capacity : 31;
    std::uint32_t inBody : 1;  // lies in a contour's own memory
    Piece* link[2];            // the neighbour at each side, or null

    Point* points() { return reinterpret_cast<Point*>(this + 1); }
    const Point* points() const { return reinterpret_cast<const Point*>(this + 1); }

    /// The side of this piece that from is linked to. The two sides of a piece
    /// never have the same neighbour, since chains are not rings.
    int sideOf(const Piece* from) const { return link[1] == from ? 1 : 0; }
};

/// How many bytes a piece takes.
constexpr std::size_t pieceBytes(std::size_t capacity) {
    return sizeof(Piece) + capacity * sizeof(Point);
}

constexpr std::uint32_t kMostCapacity = 0x7FFFFFFF;

/// A piece with memory of its own, without points, links or curves. Throws
/// std::bad_alloc.
Piece* makePiece(std::uint32_t capacity);

/// A piece, or none, and the side by which a walk enters it, in one word.
class End {
 public:
    End() = default;
    End(Piece* piece, int side)
        : mBits(reinterpret_cast<std::uintptr_t>(piece) | static_cast<std::uintptr_t>(side)) {}

    Piece* piece() const { return reinterpret_cast<Piece*>(mBits & ~std::uintptr_t{1}); }
    int side() const { return static_cast<int>(mBits & 1); }

    /// Where a walk goes on behind this piece: the neighbour, if any.
    End next() const {
        Piece* const here = piece();
        Piece* const neighbour = here->link[1 - side()];
        return {neighbour, neighbour ? neighbour->sideOf(here) : 0};
    }

 private:
    std::uintptr_t mBits = 0;
};

/// Pieces in a row, told by the two ways in. Does not own them.
struct Chain {
    End end[2];

    bool empty() const { return !end[0].piece(); }
    void reverse() { std::swap(end[0], end[1]); }
    /// Hangs other behind this chain. Constant time.
    void append(const Chain& other);
    /// Hangs one piece without neighbours behind this chain.
    void append(Piece* piece);
    /// Puts fresh in the place of old.
    void replace(Piece* old, Piece* fresh);
};

}  // namespace Embedded

#endif
