#include "geometry/intersect_active.h"

#include <algorithm>
#include <cstddef>

namespace Vaskel::Intersect {
namespace {

constexpr std::int32_t kBeyond = 1 << 27;
constexpr std::size_t kFewMoves = 64;
constexpr int kNearby = 8;  // chains tried around the one that may be near

}  // namespace

ActiveChains::ActiveChains(const std::vector<PackedPlace>& points) : mPoints(points) {
    const auto levelAt = [](std::int32_t y) {
        return ActiveChain::Edge{packed(-kBeyond, y), packed(kBeyond, y)};
    };
    mChains.resize(2);
    const ActiveChain::Edge bottom = levelAt(-kBeyond), top = levelAt(kBeyond);
    mChains[kBottom] = {bottom, bottom, 0, 0, kTop, kNone, 0, 0};
    mChains[kTop] = {top, top, 0, 0, kNone, kBottom, 0, 0};
    mBlocks.resize(1);
    mBlocks[0].count = 2;
    mBlocks[0].chains[0] = kBottom;
    mBlocks[0].chains[1] = kTop;
    mOrder.push_back(0);
}

bool ActiveChains::advance(Index lower, Index upper, PackedPlace p) {
    ActiveChain& a = (*this)[lower];
    ActiveChain& b = (*this)[upper];
    // No chain is followed beyond its end, where the sweep takes it out.
    for (;;) {
        if (a.upper.right < b.lower.right) {
            if (!(a.upper.right < p)) return true;
            if (b.lower.side(a.upper.right) >= 0) return false;
            a.upper.left = a.upper.right;
            a.upperPoint += a.step;
            a.upper.right = mPoints[static_cast<std::size_t>(a.upperPoint)];
        } else {
            if (!(b.lower.right < p)) return true;
            if (a.upper.side(b.lower.right) <= 0) return false;
            b.lower.left = b.lower.right;
            b.lowerPoint += b.step;
            b.lower.right = mPoints[static_cast<std::size_t>(b.lowerPoint)];
        }
    }
}

bool ActiveChains::isBelow(Index chain, PackedPlace p) {
    const ActiveChain& c = (*this)[chain];
    if (c.upper.right < p && !advance(chain, c.above, p)) mInOrder = false;
    return c.upper.side(p) > 0;
}

Index ActiveChains::chainBelow(PackedPlace p, Index near) {
    Index found = kNone;
    if (near >= 0 && isBelow(near, p)) {
        for (int i = 0; i < kNearby && found == kNone; ++i) {
            const Index above = (*this)[near].above;
            if (!isBelow(above, p)) found = near;
            near = above;
        }
    } else if (near >= 0) {
        for (int i = 0; i < kNearby && found == kNone; ++i) {
            near = (*this)[near].below;
            if (isBelow(near, p)) found = near;
        }
    }
    if (found == kNone) found = findBelow(p);
    return mInOrder ? found : kNone;
}

Index ActiveChains::findBelow(PackedPlace p) {
    std::size_t first = 0;
    for (std::size_t count = mOrder.size(); count > 1;) {
        const std::size_t half = count / 2;
        if (isBelow(block(mOrder[first + half]).chains[0], p)) first += half;
        count -= half;
    }
    const Block& among = block(mOrder[first]);
    Index place = 0;
    for (Index count = among.count; count > 1;) {
        const Index half = count / 2;
        if (isBelow(among.chains[place + half], p)) place += half;
        count -= half;
    }
    return among.chains[place];
}

Index ActiveChains::allocate() {
    if (!mFreeChains.empty()) {
        const Index chain = mFreeChains.back();
        mFreeChains.pop_back();
        return chain;
    }
    mChains.emplace_back();
    return static_cast<Index>(mChains.size()) - 1;
}

Index ActiveChains::insertAbove(Index below, PackedPlace left, Index rightPoint, Index step) {
    if (block((*this)[below].block).count == kMost) split((*this)[below].block);
    const Index chain = allocate();
    ActiveChain& lower = (*this)[below];
    const ActiveChain::Edge edge = {left, mPoints[static_cast<std::size_t>(rightPoint)]};
    (*this)[chain] = {edge, edge, rightPoint, rightPoint, lower.above, below, lower.block, step};
    (*this)[lower.above].below = chain;
    lower.above = chain;
    Block& home = block(lower.block);
    Index place = home.count++;
    for (; home.chains[place - 1] != below; --place) home.chains[place] = home.chains[place - 1];
    home.chains[place] = chain;
    return chain;
}

void ActiveChains::erase(Index chain) {
    const ActiveChain& gone = (*this)[chain];
    (*this)[gone.below].above = gone.above;
    (*this)[gone.above].below = gone.below;
    Block& home = block(gone.block);
    Index* const end = home.chains + home.count;
    Index* const at = std::find(home.chains, end, chain);
    std::copy(at + 1, end, at);
    if (--home.count == 0) dropBlock(gone.block);
    mFreeChains.push_back(chain);
}

// Looks outwards from where the block was last seen: blocks entered and taken
// out below it have moved it since, which is made good now and then.
std::size_t ActiveChains::positionOf(Index wanted) {
    const std::size_t last = mOrder.size() - 1;
    if (++mMoves > kFewMoves + last / 16) {
        mMoves = 0;
        for (std::size_t i = 0; i <= last; ++i) block(mOrder[i]).place = static_cast<Index>(i);
    }
    const auto seen = std::min(static_cast<std::size_t>(block(wanted).place), last);
    for (std::size_t away = 0;; ++away) {
        if (away <= seen && mOrder[seen - away] == wanted) return seen - away;
        if (away <= last - seen && mOrder[seen + away] == wanted) return seen + away;
    }
}

// The upper half of a full block becomes a block of its own.
void ActiveChains::split(Index full) {
    const std::size_t place = positionOf(full);
    Index fresh = static_cast<Index>(mBlocks.size());
    if (mFreeBlocks.empty()) {
        mBlocks.emplace_back();
    } else {
        fresh = mFreeBlocks.back();
        mFreeBlocks.pop_back();
    }
    mOrder.insert(mOrder.begin() + static_cast<std::ptrdiff_t>(place) + 1, fresh);
    Block& from = block(full);
    Block& to = block(fresh);
    from.place = static_cast<Index>(place);
    to.place = from.place + 1;
    from.count = kMost / 2;
    to.count = kMost - kMost / 2;
    for (Index i = 0; i < to.count; ++i) {
        to.chains[i] = from.chains[from.count + i];
        (*this)[to.chains[i]].block = fresh;
    }
}

void ActiveChains::dropBlock(Index empty) {
    mOrder.erase(mOrder.begin() + static_cast<std::ptrdiff_t>(positionOf(empty)));
    mFreeBlocks.push_back(empty);
}

}  // namespace Vaskel::Intersect
