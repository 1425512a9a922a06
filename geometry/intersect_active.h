// The chains that a sweep has entered and not yet left, from bottom to top.

#ifndef GEOMETRY_INTERSECT_ACTIVE_H
#define GEOMETRY_INTERSECT_ACTIVE_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "geometry/intersect_outline.h"

namespace Vaskel::Intersect {

/// A chain where the sweep is, as far as it has been compared with the chain
/// above it and with the one below it, which may be different stretches. One
/// cache line.
struct alignas(64) ActiveChain {
    struct Edge {
        PackedPlace left, right;
        /// Above 0 when p lies above the edge's line, 0 when on it.
        std::int64_t side(PackedPlace p) const { return turnAt(left, right, p); }
    };
    Edge upper;        // the edge last compared with the chain above
    Edge lower;        // and with the chain below
    Index upperPoint;  // the points at which these end
    Index lowerPoint;
    Index above, below;
    Index place;  // in the row, or kNone
    Index step;   // 1 or -1: the way to the right through the points
};

/// A list of chains. Most places are found by steps from a chain nearby; for the
/// others every few chains stand in a row as well, among which a place is found
/// by halving. The row is put in order anew when searches have taken as many steps
/// beside it as that takes.
class ActiveChains {
 public:
    static constexpr Index kBottom = 0, kTop = 1;  // beyond all coordinates

    /// Expects most chains at a time, and finds room for more.
    ActiveChains(const std::vector<PackedPlace>& points, std::size_t most);

    ActiveChain& operator[](Index chain) { return mChains[static_cast<std::size_t>(chain)]; }

    /// Asks for the memory of a chain, of its neighbours, and of theirs.
    [[gnu::always_inline]] void fetch(Index chain) {
        if (chain >= 0) __builtin_prefetch(&(*this)[chain]);
    }
    [[gnu::always_inline]] void fetchNext(Index chain) {
        if (chain < 0) return;
        fetch((*this)[chain].above);
        fetch((*this)[chain].below);
    }
    [[gnu::always_inline]] void fetchSecond(Index chain) {
        if (chain < 0) return;
        const Index above = (*this)[chain].above, below = (*this)[chain].below;
        if (above >= 0) fetch((*this)[above].above);
        if (below >= 0) fetch((*this)[below].below);
    }

    /// Compares a chain with the one above it as far as p: every vertex of the
    /// two before p. False unless each lies strictly on its side of the other.
    bool advance(Index lower, Index upper, PackedPlace p) {
        ActiveChain& a = (*this)[lower];
        ActiveChain& b = (*this)[upper];
        return std::min(a.upper.right, b.lower.right) >= p || follow(a, b, p);
    }

    /// The last chain that p lies above, looking from the chain near if that is
    /// active (not below 0). kNone when chains come in no order.
    Index chainBelow(PackedPlace p, Index near);

    /// Enters a chain right above another, at the place where it begins.
    /// upperPoint is the second of its points. Throws std::bad_alloc.
    Index insertAbove(Index below, PackedPlace left, Index rightPoint, Index step);
    void erase(Index chain);

 private:
    bool follow(ActiveChain& lower, ActiveChain& upper, PackedPlace p) const;
    bool isBelow(Index chain, PackedPlace p);
    Index findBelow(PackedPlace p);
    void addToRow(Index chain, std::size_t place);
    void putInOrder();
    void setPlace(Index chain, std::size_t place) {
        mRow[place] = chain;
        (*this)[chain].place = static_cast<Index>(place);
    }
    Index allocate();

    const std::vector<PackedPlace>& mPoints;
    std::vector<ActiveChain> mChains;
    std::vector<Index> mFreeChains;
    std::vector<Index> mRow;  // from bottom to top; kNone where nothing stands
    std::size_t mSteps = 0;   // beside the row, since it was put in order
    bool mInOrder = true;
};

}  // namespace Vaskel::Intersect

#endif
