// The segments that a sweep has entered and not yet left, from bottom to top.

#ifndef GEOMETRY_INTERSECT_ORDER_H
#define GEOMETRY_INTERSECT_ORDER_H

#include <boost/intrusive/rbtree.hpp>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "geometry/intersect_outline.h"

namespace Vaskel::Intersect {

/// A point within the range in which everything below is exact.
struct Place {
    std::int32_t x, y;
};

/// The sign of (b - a) x (c - a): above 0 when c lies to the left of the way
/// from a to b. With coordinates within 2^25 the products stay below 2^53.
inline std::int64_t turn(Place a, Place b, Place c) {
    return std::int64_t{b.x - a.x} * (c.y - a.y) - std::int64_t{b.y - a.y} * (c.x - a.x);
}

namespace Intrusive = boost::intrusive;

/// An active segment with its ends in sweep order; one cache line.
struct ActiveSegment : Intrusive::set_base_hook<Intrusive::optimize_size<true>,
                                                Intrusive::link_mode<Intrusive::normal_link>> {
    Place left, right;
    Index segment;
    ActiveSegment* nextFree;

    /// Above 0 when p lies above the segment, 0 when it lies on it. p comes
    /// between the segment's ends in sweep order.
    std::int64_t side(Place p) const { return turn(left, right, p); }
};

/// The order of active segments at the sweep's present place. As long as none
/// of them cross it is the same at every place where they are active, so that
/// only the ends of segments change it.
class ActiveOrder {
    struct ByAddress {
        bool operator()(const ActiveSegment& a, const ActiveSegment& b) const { return &a < &b; }
    };
    using Tree = Intrusive::rbtree<ActiveSegment, Intrusive::compare<ByAddress>,
                                   Intrusive::constant_time_size<false>>;

 public:
    using Position = Tree::iterator;

    ActiveOrder() = default;
    ~ActiveOrder() { mTree.clear(); }
    ActiveOrder(const ActiveOrder&) = delete;
    ActiveOrder& operator=(const ActiveOrder&) = delete;

    bool empty() const { return mTree.empty(); }
    Position begin() { return mTree.begin(); }
    Position end() { return mTree.end(); }
    static Position positionOf(ActiveSegment& segment) { return Tree::s_iterator_to(segment); }

    /// The lowest segment that p does not lie above.
    Position firstNotBelow(Place p) {
        return mTree.lower_bound(
            p, [](const auto& segment, const auto& place) { return segmentBelow(segment, place); });
    }

    /// Enters a segment right below above; std::bad_alloc leaves all as it was.
    ActiveSegment& insertBefore(Position above, Index segment, Place left, Place right);
    void erase(Position position);

    /// Takes every segment out.
    void clear();

 private:
    static bool segmentBelow(const ActiveSegment& segment, Place p) { return segment.side(p) > 0; }

    static constexpr std::size_t kBlock = 500;
    Tree mTree;
    std::vector<std::unique_ptr<ActiveSegment[]>> mBlocks;
    std::size_t mUsedOfLast = kBlock;
    ActiveSegment* mFree = nullptr;
};

}  // namespace Vaskel::Intersect

#endif
