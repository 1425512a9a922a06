// Which of many line segments meet, without trying all pairs.

#ifndef SAMPLES_PROOF_CHECK_SEGMENT_PAIRS_H
#define SAMPLES_PROOF_CHECK_SEGMENT_PAIRS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

namespace Proof {

/// From (x1, y1) to (x2, y2), which are different points within half the
/// 32-bit range.
struct LineSegment {
    std::int32_t x1, y1, x2, y2;
};

/// Takes a pair of segment numbers, the lower one first; false ends the search.
using PairVisitor = std::function<bool(std::size_t, std::size_t)>;

/// Visits every pair of segments that have a point in common; a pair may come
/// more than once, and a few pairs come that are only near each other. False
/// when the visitor ended the search.
///
/// Takes n log^2 n steps and a step a visit for n segments, whatever their
/// directions: hatches of long slanted lines, whose boxes all overlap, too.
bool visitMeetingPairs(std::span<const LineSegment> segments, const PairVisitor& visit);

/// Visits all pairs whose boxes have a point in common. The form that the one
/// above is held to.
bool visitMeetingPairsPlain(std::span<const LineSegment> segments, const PairVisitor& visit);

}  // namespace Proof

#endif
