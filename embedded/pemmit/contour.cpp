// Contours: memory and growth.

#include "embedded/pemmit/contour.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

#include "embedded/pemmit/blocks.h"

namespace Embedded {
namespace {

// About twice as many points each time, so that appending copies each point
// about once. With its 32 bytes of its own a piece is then 8 bytes short of a
// multiple of 32, the unit in which usual allocators hand out memory with 8
// bytes of theirs.
constexpr std::uint64_t capacityAfter(std::uint64_t capacity) { return (2 * capacity + 5) | 3; }

// Larger pieces are not copied to grow: the next one takes as many points as
// there are, and the memory of both is never held at the same time.
constexpr std::uint32_t kMostCopied = 8192;

// Up to this many pieces are left as they are: finding a point by its number
// takes a step each, and copying small outlines would cost more than walking
// a few runs.
constexpr std::uint32_t kFewPieces = 8;

// Up to this many points are copied rather than linked.
constexpr std::int64_t kFewPoints = 16;

// patsiz counts in an int, the repeated first point included.
constexpr std::int64_t kMostPoints = INT_MAX - 1;

}  // namespace

Contour* Contour::make(std::uint32_t capacity) {
    static_assert(alignof(Piece) <= alignof(Contour) && sizeof(Contour) % alignof(Piece) == 0);
    static_assert(std::is_trivially_destructible_v<Contour>);
    static_assert(sizeof(Contour) + pieceBytes(kBlockPoints) == kBlockBytes);
    if (capacity <= kBlockPoints) {
        if (FreeBlock* const block = takeBlock()) {
            const std::uint8_t place = block->place;
            auto* const made = new (block) Contour(kBlockPoints);
            made->pooled = true;
            made->place = place;
            return made;
        }
    }
    return new (::operator new(sizeof(Contour) + pieceBytes(capacity))) Contour(capacity);
}

void Contour::freeBlock(Contour* block) noexcept {
    if (block->pooled)
        giveBlock(block, block->place);
    else
        ::operator delete(block);
}

void Contour::release(Contour* contour) noexcept {
    const bool isOneBlock = contour->own == kHere && contour->pieces == 1 && !contour->curved;
    if (!isOneBlock && !contour->chain.empty()) {
        contour->pause();
        contour->freePieces();
    }
    if (contour->mate) {
        contour->mate->mate = nullptr;
        contour->mate->settle();
    }
    if (contour->own == kLent)
        drop(contour);
    else
        freeBlock(contour);
}

// Gives up one of the two holds on a block whose piece is lent. The last one
// needs no exchange: nobody else can be there.
void Contour::drop(Contour* block) noexcept {
    if (block->holders.load(std::memory_order_acquire) == 1 ||
        block->holders.fetch_sub(1, std::memory_order_acq_rel) == 1)
        freeBlock(block);
}

void Contour::freePiece(Piece* piece) noexcept {
    delete std::exchange(piece->curves, nullptr);
    if (!piece->inBody) {
        ::operator delete(piece);
    } else if (own == kHere && isOwn(piece)) {
        own = kUnused;
        piece->count = 0;
        piece->link[0] = piece->link[1] = nullptr;
    } else {
        drop(reinterpret_cast<Contour*>(piece) - 1);
    }
}

void Contour::freePieces() noexcept {
    for (End at = chain.end[0]; at.piece();) {
        Piece* const piece = at.piece();
        at = at.next();
        freePiece(piece);
    }
    chain = Chain();
    pieces = 0;
    before = 0;
}

void Contour::pause() noexcept {
    if (!write) return;
    Piece* const last = chain.end[1].piece();
    last->count = static_cast<std::uint32_t>(write - last->points());
    before += last->count;
    write = limit = nullptr;
}

void Contour::resume() noexcept {
    const End end = chain.end[1];
    Piece* const last = end.piece();
    if (write || !last || end.side() == 0 || closingCurve) return;
    write = last->points() + last->count;
    limit = last->points() + last->capacity;
    before -= last->count;
}

void Contour::makeRoom(std::uint32_t n) {
    pause();
    if (closingCurve) ++n;  // for the point that the curve ends at
    const End end = chain.end[1];
    Piece* const last = end.side() == 1 ? end.piece() : nullptr;
    if (!last || last->capacity - last->count < n) {
        try {
            extend(last, n);
        } catch (const std::bad_alloc&) {
            resume();
            throw;
        }
    }
    if (closingCurve)
        storeClosingPoint();
    else
        resume();
}

void Contour::extend(Piece* last, std::uint32_t n) {
    if (before + n > kMostPoints) throw std::bad_alloc();
    if (before == 0 && last) {  // its own piece, which is too small
        freePieces();
        last = nullptr;
    }
    if (chain.empty() && own == kUnused && ownPiece()->capacity >= n) {
        own = kHere;
        chain.append(ownPiece());
        ++pieces;
        return;
    }
    // A large piece keeps its points and gets a neighbour, and so does one in a
    // body, since its memory would not come free before the body goes.
    const bool small = last && !last->inBody && last->capacity <= kMostCopied;
    const bool copies = small || closingCurve;
    const std::uint64_t needed = std::uint64_t{copies ? last->count : 0} + n;
    const std::uint64_t more = last && last->capacity > kMostCopied
                                   ? static_cast<std::uint64_t>(before)
                                   : capacityAfter(last ? last->capacity : 0);
    const std::uint64_t wanted = std::max(needed, more);
    Piece* const fresh =
        makePiece(static_cast<std::uint32_t>(std::min<std::uint64_t>(wanted, kMostPoints)));
    if (!copies) {
        chain.append(fresh);
        ++pieces;
        return;
    }
    std::memcpy(fresh->points(), last->points(), last->count * sizeof(Point));
    fresh->count = last->count;
    fresh->curves = std::exchange(last->curves, nullptr);
    chain.replace(last, fresh);
    freePiece(last);
}

Stretch Contour::take() noexcept {
    if (!hasPoints()) return {};
    if (closingCurve) storeClosingPoint();
    pause();
    if (own == kHere) {
        own = kLent;
        holders.store(2, std::memory_order_relaxed);
    }
    return {std::exchange(chain, Chain()), std::exchange(before, 0), std::exchange(pieces, 0)};
}

bool Contour::takeFewReversed(Contour& other) noexcept {
    if (!write || other.pieces != 1 || other.closingCurve) return false;
    const std::int64_t count = other.pointCount();
    const End first = other.chain.end[0];
    if (count > kFewPoints || count > limit - write || first.piece()->curves) return false;
    const Point* const points = first.piece()->points();
    for (std::int64_t i = 0; i < count; ++i)
        *write++ = points[first.side() == 0 ? count - 1 - i : i];
    if (other.own == kHere) {  // which is all it has
        other.restart();
    } else {
        other.pause();
        other.freePieces();
    }
    return true;
}

void Contour::pauseForJoin() noexcept {
    if (closingCurve) storeClosingPoint();
    pause();
    if (before == 0) freePieces();
}

void Contour::append(const Stretch& more) noexcept {
    pauseForJoin();
    chain.append(more.chain);
    before += more.points;
    pieces += more.pieces;
    resume();
}

void Contour::prepend(const Stretch& more) noexcept {
    pauseForJoin();
    Chain all = more.chain;
    all.append(chain);
    chain = all;
    before += more.points;
    pieces += more.pieces;
    resume();
}

void Contour::flatten() {
    const bool whole = pieces <= 1 && chain.end[0].side() == 0;
    if (whole || closingCurve) return;
    const std::int64_t count = pointCount();
    if (count > kMostPoints) throw std::bad_alloc();
    auto curves = std::make_unique<std::vector<Curve>>(copyCurves());
    Piece* const fresh = makePiece(static_cast<std::uint32_t>(count));
    copyPoints(fresh->points());
    fresh->count = fresh->capacity;
    if (!curves->empty()) fresh->curves = curves.release();
    pause();
    freePieces();
    chain.append(fresh);
    before = count;
    pieces = 1;
    resume();
}

void Contour::settle() noexcept {
    if (pieces <= kFewPieces) return;
    try {
        flatten();
    } catch (const std::bad_alloc&) {
        // Many pieces walk as well as one; only numbered starts take longer.
    }
}

void Contour::dropLastPoint() noexcept {
    --chain.end[1].piece()->count;
    --before;
}

void Contour::storeClosingPoint() noexcept {
    Piece* const last = chain.end[1].piece();
    const Point first = firstPoint();
    last->points()[last->count++] = first;
    ++before;
    closingCurve = false;
    resume();
}

}  // namespace Embedded
