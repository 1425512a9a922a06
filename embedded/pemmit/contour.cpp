// Appending to contours, and chains that change owners.

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <new>

#include "embedded/pemmit/node.h"

namespace Embedded {
namespace {

// 7 points at first, then about twice as many each time, so that appending
// copies each point about once. With its 32 bytes of its own a piece is then 8
// bytes short of a multiple of 32, the unit in which usual allocators hand out
// memory with 8 bytes of theirs.
constexpr std::uint64_t capacityAfter(std::uint64_t capacity) {
    return capacity == 0 ? 7 : 2 * capacity + 5;
}

// Up to this many pieces are left as they are: an outline of one peak and one
// pit has two, and copying it would cost more than walking two runs.
constexpr std::int64_t kFewPieces = 4;

// patsiz counts in an int, the repeated first point included.
constexpr std::int64_t kMostPoints = INT_MAX - 1;

}  // namespace

const Point& Contour::firstPoint() const {
    const Piece* const piece = chain.end[0].piece;
    return piece->points()[chain.end[0].side == 0 ? 0 : piece->count - 1];
}

const Point& Contour::lastPoint() const {
    const Piece* const piece = chain.end[1].piece;
    return piece->points()[chain.end[1].side == 0 ? 0 : piece->count - 1];
}

Piece* Contour::makeRoom(std::uint32_t n) {
    Piece* const last = closingCurve ? chain.end[1].piece : grow;
    const std::uint32_t more = closingCurve ? n + 1 : n;
    if (last->capacity - last->count < more) {
        if (pointCount() + more > kMostPoints) throw std::bad_alloc();
        const std::uint64_t needed = static_cast<std::uint64_t>(last->count) + more;
        const std::uint64_t wanted = std::max(needed, capacityAfter(last->capacity));
        Piece* const fresh =
            makePiece(static_cast<std::uint32_t>(std::min<std::uint64_t>(wanted, kMostPoints)));
        if (last == &noPiece) {
            before = pointCount();
            chain.append(fresh);
        } else {
            std::memcpy(fresh->points(), last->points(), last->count * sizeof(Point));
            fresh->count = last->count;
            fresh->curves = std::exchange(last->curves, nullptr);
            chain.replace(last, fresh);
            freePiece(last);
        }
        grow = fresh;
    }
    if (closingCurve) storeClosingPoint();
    return grow;
}

Chain Contour::take() noexcept {
    if (closingCurve) storeClosingPoint();
    grow = &noPiece;
    before = 0;
    return std::exchange(chain, Chain());
}

void Contour::put(const Chain& all, std::int64_t count) noexcept {
    chain = all;
    const End& last = chain.end[1];
    grow = last.piece && last.side == 1 ? last.piece : &noPiece;
    before = count - grow->count;
}

void Contour::flatten() {
    const bool whole = chain.pieces <= 1 && chain.end[0].side == 0;
    if (whole || closingCurve) return;
    if (pointCount() > kMostPoints) throw std::bad_alloc();
    const auto count = static_cast<std::uint32_t>(pointCount());
    auto curves = std::make_unique<std::vector<Curve>>(copyCurves(chain));
    Piece* const fresh = makePiece(count);
    copyPoints(chain, fresh->points());
    fresh->count = count;
    if (!curves->empty()) fresh->curves = curves.release();
    chain.clear();
    Chain one;
    one.append(fresh);
    put(one, count);
}

void Contour::settle() noexcept {
    if (chain.pieces <= kFewPieces) return;
    try {
        flatten();
    } catch (const std::bad_alloc&) {
        // Many pieces walk as well as one; only numbered starts take longer.
    }
}

void Contour::storeClosingPoint() noexcept {
    Piece* const last = chain.end[1].piece;
    const Point first = firstPoint();
    last->points()[last->count++] = first;
    closingCurve = false;
    put(chain, last->count);
}

}  // namespace Embedded
