#include "geometry/intersect_active.h"

#include <algorithm>
#include <cstddef>

namespace Vaskel::Intersect {
namespace {

constexpr std::int32_t kBeyond = 1 << 27;
constexpr Index kBetween = 8;  // chains from one in the row to the next
constexpr int kNearby = 8;     // chains tried around the one that may be near

}  // namespace

ActiveChains::ActiveChains(const std::vector<PackedPlace>& points, std::size_t most)
    : mPoints(points) {
    const auto levelAt = [](std::int32_t y) {
        return ActiveChain::Edge{packed(-kBeyond, y), packed(kBeyond, y)};
    };
    mChains.reserve(most + 2);
    mChains.resize(2);
    const ActiveChain::Edge bottom = levelAt(-kBeyond), top = levelAt(kBeyond);
    mChains[kBottom] = {bottom, bottom, 0, 0, kTop, kNone, 0, 0};
    mChains[kTop] = {top, top, 0, 0, kNone, kBottom, kNone, 0};
    mRow.push_back(kBottom);
}

bool ActiveChains::follow(ActiveChain& lower, ActiveChain& upper, PackedPlace p) const {
    // No chain is followed beyond its end, where the sweep takes it out.
    for (;;) {
        if (lower.upper.right < upper.lower.right) {
            if (!(lower.upper.right < p)) return true;
            if (upper.lower.side(lower.upper.right) >= 0) return false;
            lower.upper.left = lower.upper.right;
            lower.upperPoint += lower.step;
            lower.upper.right = mPoints[static_cast<std::size_t>(lower.upperPoint)];
        } else {
            if (!(upper.lower.right < p)) return true;
            if (lower.upper.side(upper.lower.right) <= 0) return false;
            upper.lower.left = upper.lower.right;
            upper.lowerPoint += upper.step;
            upper.lower.right = mPoints[static_cast<std::size_t>(upper.lowerPoint)];
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
    if (mSteps > mChains.size() - mFreeChains.size()) putInOrder();
    std::size_t first = 0;  // of the bottom, which is never left
    for (std::size_t end = mRow.size(); end - first > 1;) {
        std::size_t at = first + (end - first) / 2;
        for (; mRow[at] == kNone; --at) ++mSteps;
        if (at == first) {  // nothing stands in the lower half
            at = first + (end - first) / 2;
            while (++at < end && mRow[at] == kNone) ++mSteps;
            if (at == end) break;
        }
        (isBelow(mRow[at], p) ? first : end) = at;
    }
    Index found = mRow[first];
    Index steps = 0;
    for (Index above = (*this)[found].above; isBelow(above, p); above = (*this)[found].above) {
        found = above;
        ++steps;
    }
    mSteps += static_cast<std::size_t>(steps);
    if (steps > kBetween && (*this)[found].place == kNone) addToRow(found, first + 1);
    return found;
}

// Puts a chain in the row at a place, and those that stand there one place
// further, as far as the next free one.
void ActiveChains::addToRow(Index chain, std::size_t place) {
    constexpr std::size_t kReach = 64;
    std::size_t free = place;
    while (free < mRow.size() && free < place + kReach && mRow[free] != kNone) ++free;
    if (free == mRow.size()) mRow.push_back(kNone);
    if (mRow[free] != kNone) return;
    for (; free > place; --free) setPlace(mRow[free - 1], free);
    setPlace(chain, place);
}

// Each search is followed by as many steps as it has taken, so that this costs
// no more than the searches before it. Every other place stays free.
void ActiveChains::putInOrder() {
    for (const Index chain : mRow)
        if (chain != kNone) (*this)[chain].place = kNone;
    mRow.clear();
    Index count = 0;
    for (Index chain = kBottom; chain != kTop; chain = (*this)[chain].above) {
        if (count++ % kBetween != 0) continue;
        mRow.resize(mRow.size() + 2, kNone);
        setPlace(chain, mRow.size() - 2);
    }
    mSteps = 0;
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
    const Index chain = allocate();
    ActiveChain& lower = (*this)[below];
    const ActiveChain::Edge edge = {left, mPoints[static_cast<std::size_t>(rightPoint)]};
    (*this)[chain] = {edge, edge, rightPoint, rightPoint, lower.above, below, kNone, step};
    (*this)[lower.above].below = chain;
    lower.above = chain;
    return chain;
}

void ActiveChains::erase(Index chain) {
    const ActiveChain& gone = (*this)[chain];
    (*this)[gone.below].above = gone.above;
    (*this)[gone.above].below = gone.below;
    if (gone.place != kNone) {
        // The next one below stands in the row instead, unless it does already.
        Index& heir = mRow[static_cast<std::size_t>(gone.place)];
        Index& place = (*this)[gone.below].place;
        heir = place == kNone ? gone.below : kNone;
        if (place == kNone) place = gone.place;
    }
    mFreeChains.push_back(chain);
}

}  // namespace Vaskel::Intersect
