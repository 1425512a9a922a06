// The chains that a sweep has entered and not yet left, from bottom to top.

#ifndef GEOMETRY_INTERSECT_ACTIVE_H
#define GEOMETRY_INTERSECT_ACTIVE_H

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
    Index block;
    Index step;  // 1 or -1: the way to the right through the points
};

/// A list of chains, in blocks, so that a place is found by halving: first
/// among the blocks, then within one.
class ActiveChains {
 public:
    static constexpr Index kBottom = 0, kTop = 1;  // beyond all coordinates

    explicit ActiveChains(const std::vector<PackedPlace>& points);

    ActiveChain& operator[](Index chain) { return mChains[static_cast<std::size_t>(chain)]; }

    /// Asks for the memory of a chain, or of its neighbours and its block.
    [[gnu::always_inline]] void fetch(Index chain) { __builtin_prefetch(&(*this)[chain]); }
    [[gnu::always_inline]] void fetchAround(Index chain) {
        const ActiveChain& c = (*this)[chain];
        if (c.above >= 0) fetch(c.above);
        if (c.below >= 0) fetch(c.below);
        __builtin_prefetch(&block(c.block));
    }

    /// Compares a chain with the one above it as far as p: every vertex of the
    /// two before p. False unless each lies strictly on its side of the other.
    bool advance(Index lower, Index upper, PackedPlace p);

    /// The last chain that p lies above, looking from the chain near if that is
    /// active (not below 0). kNone when chains come in no order.
    Index chainBelow(PackedPlace p, Index near);

    /// Enters a chain right above another, at the place where it begins.
    /// upperPoint is the second of its points. Throws std::bad_alloc.
    Index insertAbove(Index below, PackedPlace left, Index rightPoint, Index step);
    void erase(Index chain);

 private:
    static constexpr Index kMost = 62;
    struct Block {
        Index count = 0;
        Index place = 0;  // near its position in mOrder
        Index chains[kMost];
    };

    bool isBelow(Index chain, PackedPlace p);
    Index findBelow(PackedPlace p);
    Index allocate();
    std::size_t positionOf(Index block);
    void split(Index block);
    void dropBlock(Index block);
    Block& block(Index i) { return mBlocks[static_cast<std::size_t>(i)]; }
    const Block& block(Index i) const { return mBlocks[static_cast<std::size_t>(i)]; }

    const std::vector<PackedPlace>& mPoints;
    std::vector<ActiveChain> mChains;
    std::vector<Index> mFreeChains;
    std::vector<Block> mBlocks;
    std::vector<Index> mFreeBlocks;
    std::vector<Index> mOrder;  // blocks from bottom to top
    std::size_t mMoves = 0;     // changes of mOrder since all places were true
    bool mInOrder = true;
};

}  // namespace Vaskel::Intersect

#endif
