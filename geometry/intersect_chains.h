// The outline cut into chains that lead from left to right without turning
// back: what the proof that nothing touches works on.

#ifndef GEOMETRY_INTERSECT_CHAINS_H
#define GEOMETRY_INTERSECT_CHAINS_H

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "geometry/intersect_outline.h"

namespace Vaskel::Intersect {

/// A turning point of a contour, or an end of an open one.
struct Turn {
    enum Kind : std::uint8_t {
        kInner,
        kFirstClosed,  // the chain that arrives is the contour's last one
        kLastClosed,   // the same place again; not an event
        kFirstOpen,
        kLastOpen
    };
    Index point;
    Kind kind;
};

/// The sweep comes to a turn.
struct Event {
    std::uint32_t key;  // of the last pass of sorting
    Index turn;
};

/// Chains are the stretches of points between turns: chain i, in walk order,
/// from turns[i] to turns[i + 1] of one contour, rises or falls in sweep order
/// all the way.
class MonotoneChains {
 public:
    /// False, and nothing can be said, when a point is repeated or lies outside
    /// -2^25 .. 2^25. Throws std::bad_alloc.
    bool build(const WalkedOutline& outline);

    /// The contours' points in walk order, each contour from a turn on; that of
    /// a closed one stands at both ends.
    std::vector<PackedPlace> points;
    std::span<const Turn> turns;
    /// The turns in sweep order, kLastClosed ones left out.
    std::span<const Event> events;

    /// For a turn of kind kFirstClosed, the kLastClosed one of its contour.
    Index lastTurnOf(Index first) const;

 private:
    struct Ring {
        Index firstTurn, lastTurn;
    };

    bool addContour(const PackedPlace* walked, Index count, bool closed);
    void sortEvents();

    // Without first values: of memory that is not used nothing is touched.
    std::unique_ptr<Turn[]> mTurns;
    std::unique_ptr<Event[]> mEvents;
    std::vector<Ring> mRings;
    Index mTurnCount = 0;
};

}  // namespace Vaskel::Intersect

#endif
