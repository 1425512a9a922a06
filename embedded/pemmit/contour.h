// Contours: a path's points as a chain of pieces.
//
// A contour and its first piece are one block of memory, so that a small path
// is one block of the pool. A join may hand that piece to another contour while
// this one is released, or the other way round: then the block goes with the
// last of the two.
//
// The first piece is in the chain from the start, without points, so that the
// first point is stored like any other. No other piece is without points.

#ifndef EMBEDDED_PEMMIT_CONTOUR_H
#define EMBEDDED_PEMMIT_CONTOUR_H

#include <cstdint>
#include <vector>

#include "embedded/pemmit/node.h"

namespace Embedded {

/// Pieces on their way from one contour to another.
struct Stretch {
    Chain chain;
    std::int64_t points = 0;
    std::uint32_t pieces = 0;

    Stretch reversed() const {
        Stretch result = *this;
        result.chain.reverse();
        return result;
    }
};

struct Contour : Node {
    /// How many points fit into a block of the pool: a rectangle, one side of a
    /// dot of a halftone screen.
    static constexpr std::uint32_t kBlockPoints = 15;

    Chain chain;
    std::int64_t before = 0;  // points of all pieces but the one that grows

    /// A contour without points and with room for at least so many in its own
    /// block. Throws std::bad_alloc.
    static Contour* make(std::uint32_t capacity);
    /// Releases the points and the contour.
    static void release(Contour* contour) noexcept;

    bool isOpen() const { return (flags & Pemmit::kFlagOpen) != 0; }
    std::int64_t pointCount() const {
        return before + (write ? write - chain.end[1].piece()->points() : 0);
    }
    bool hasPoints() const { return pointCount() > 0; }
    /// How many points a piece of this contour holds.
    std::int64_t countOf(const Piece* piece) const {
        return write && piece == chain.end[1].piece() ? write - piece->points() : piece->count;
    }
    /// The first and the last stored point of a contour that has points.
    const Point& firstPoint() const;
    const Point& lastPoint() const;
    /// Stores the points in order.
    void copyPoints(Point* out) const;
    /// The curves, ascending, numbered by the contour's points. Throws
    /// std::bad_alloc.
    std::vector<Curve> copyCurves() const;
    /// The memory that the contour holds.
    std::size_t bytes() const;

    /// Makes room for n more points at write. Throws std::bad_alloc and leaves
    /// the contour as it was.
    void makeRoom(std::uint32_t n);
    /// Empties the contour and hands its pieces over.
    Stretch take() noexcept;
    /// Copies the points of another contour, back to front, behind this one's if
    /// they are few and there is room, and empties the other: an outline of few
    /// points is then one block of memory, and the other one free for the next
    /// contour while it is still in the cache. Else returns false.
    bool takeFewReversed(Contour& other) noexcept;
    /// Hangs pieces behind or before the contour's own.
    void append(const Stretch& more) noexcept;
    void prepend(const Stretch& more) noexcept;
    /// Makes one piece of the chain, in forward direction. Throws
    /// std::bad_alloc and leaves the contour as it was.
    void flatten();
    /// Makes one piece of a chain of many if memory allows. Joins may leave
    /// thousands of pieces behind; a handful is as good as one.
    void settle() noexcept;
    /// Takes the last point of a paused contour of one forward piece away.
    void dropLastPoint() noexcept;
    /// Stores the end of a closing curve as a point of its own.
    void storeClosingPoint() noexcept;

    /// Lets nothing grow, so that every piece's count is true; and lets the
    /// last piece grow again where it can.
    void pause() noexcept;
    void resume() noexcept;

 private:
    explicit Contour(std::uint32_t capacity) : Node(kContour) {
        auto* const piece =
            new (ownPiece()) Piece{nullptr, 0, capacity & kMostCapacity, 1, {nullptr, nullptr}};
        chain.end[0] = {piece, 0};
        chain.end[1] = {piece, 1};
        restart();
    }

    // Lets a contour that is its own piece alone begin without points.
    void restart() noexcept {
        write = ownPiece()->points();
        limit = write + ownPiece()->capacity;
        before = 0;
    }

    Piece* ownPiece() { return reinterpret_cast<Piece*>(this + 1); }
    bool isOwn(const Piece* piece) const {
        return piece == reinterpret_cast<const Piece*>(this + 1);
    }
    void extend(Piece* last, std::uint32_t n);
    void freePiece(Piece* piece) noexcept;
    void freePieces() noexcept;
    void pauseForJoin() noexcept;
    static void drop(Contour* block) noexcept;
    static void freeBlock(Contour* block) noexcept;
};

/// The body of a contour; null for null and for a compound object.
inline Contour* contourOf(Pemmit::Object* object) {
    Node* const node = nodeOf(object);
    return node && node->kind == Node::kContour ? static_cast<Contour*>(node) : nullptr;
}
inline const Contour* contourOf(const Pemmit::Object* object) {
    const Node* const node = nodeOf(object);
    return node && node->kind == Node::kContour ? static_cast<const Contour*>(node) : nullptr;
}

}  // namespace Embedded

#endif
