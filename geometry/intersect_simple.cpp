// Why True here means that the plain sweep reports nothing.
//
// Think of the sweep line as leaning by next to nothing, so that it comes to
// vertices by x, then y, and no segment is upright to it. The outline is cut
// into chains without turning back, of which it meets some at every place. They
// are kept in a list, and any two that are neighbours there for a while are
// compared over just that while: every vertex of either, also the vertices at
// which the while begins and ends, lies strictly on its own side of the other's
// segment. Between vertices both are straight. So the list is strictly ordered
// at every moment, and nothing touches, except that two chains begin or end at
// one vertex: neighbours of the outline, whose segments are not parallel. (No
// two turns lie at one place, which leaves no moment in between unseen.) How
// the list came by its order does not matter; a wrong guess only fails to
// compare.
//
// Within +-2^25 the pair test reports only pairs that share a point (see
// intersect_sweep.cpp), and of neighbours that share their vertex only those
// that overlap. Hence no pair is reported.
//
// Only turns are sorted and looked up. Each vertex of a chain is compared with
// what is above and what is below once, when the sweep has to know. Most turns
// lie near the turns before and after them in walk order, so that the list is
// rarely searched from scratch; where it is, by halving.

#include "geometry/intersect_simple.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <span>

#include "geometry/intersect_active.h"
#include "geometry/intersect_chains.h"

#if defined(__x86_64__)
#include <emmintrin.h>
#endif

namespace Vaskel::Intersect {
namespace {

class Proof {
 public:
    explicit Proof(const MonotoneChains& chains)
        : mChains(chains),
          mActive(chains.points, chains.turns.size() / 2),
          mActiveOf(chains.turns.size() + 2 * kMargin, kNone) {
        mAhead.fill(kNone);
    }

    bool succeeds();

 private:
    // What is at a turn: chains by number or kNone, and the points beside it.
    struct Ways {
        Index arriving = kNone, leaving = kNone;
        Index before = kNone, after = kNone;
    };

    const Turn& turn(Index i) const { return mChains.turns[static_cast<std::size_t>(i)]; }
    PackedPlace point(Index i) const { return mChains.points[static_cast<std::size_t>(i)]; }
    Index& activeOf(Index chain) { return mActiveOf[static_cast<std::size_t>(chain + kMargin)]; }

    Ways waysAt(Index turn) const;
    Index activeNear(Index turn, Index& eights);
    Index activeAt(Index turn);
    bool enter(Index turn, PackedPlace p, const Ways& ways);
    bool leave(PackedPlace p, const Ways& ways);
    // Inlined always: compilers drop calls of functions that only ask for memory.
    [[gnu::always_inline]] void fetchAhead(std::size_t event);

    static constexpr Index kMargin = 9;
    static constexpr Index kEightsEach = 4;  // for each turn at which the sweep enters
    static constexpr std::size_t kStage = 6, kAhead = 16;  // events

    const MonotoneChains& mChains;
    ActiveChains mActive;
    std::vector<Index> mActiveOf;      // by chain; kNone where not active and beyond both ends
    Index mEights = 0;                 // that may still be looked at
    std::array<Index, kAhead> mAhead;  // chains asked for, by event
};

Proof::Ways Proof::waysAt(Index i) const {
    const Turn& here = turn(i);
    Ways ways;
    if (here.kind != Turn::kLastOpen) {
        ways.leaving = i;
        ways.after = here.point + 1;
    }
    if (here.kind == Turn::kInner || here.kind == Turn::kLastOpen) {
        ways.arriving = i - 1;
        ways.before = here.point - 1;
    } else if (here.kind == Turn::kFirstClosed) {
        const Index last = mChains.lastTurnOf(i);
        ways.arriving = last - 1;
        ways.before = turn(last).point - 1;
    }
    return ways;
}

// Bits 0 to 7 for the chains at before, and 8 to 15 for those at after, that are
// active.
std::uint32_t activeAmong(const Index* before, const Index* after) {
#if defined(__x86_64__)
    static_assert(kNone < 0 && sizeof(Index) == 4);
    const auto four = [](const Index* chains) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(chains));
    };
    const __m128i idle = _mm_packs_epi16(_mm_packs_epi32(four(before), four(before + 4)),
                                         _mm_packs_epi32(four(after), four(after + 4)));
    return static_cast<std::uint32_t>(_mm_movemask_epi8(idle)) ^ 0xFFFF;
#else
    std::uint32_t active = 0;
    for (int k = 0; k < 8; ++k)
        active |= (before[k] >= 0 ? 1u : 0u) << k | (after[k] >= 0 ? 0x100u : 0u) << k;
    return active;
#endif
}

// Where the sweep enters at a turn, chains that lie near in walk order may be
// active already and near in the plane: the nearest of them. Which that is cannot
// be guessed, so that among eight on each side it is found without a branch; the
// next eight are looked at as long as any are left of so many.
Index Proof::activeNear(Index i, Index& eights) {
    const Index* const first = mActiveOf.data();
    const Index* const last = first + mActiveOf.size() - 8;
    const Index* before = &activeOf(i - 1);
    const Index* after = &activeOf(i + 1);
    for (; eights > 0; after = std::min(after + 8, last)) {
        before = before - first > 8 ? before - 8 : first;
        --eights;
        if (const std::uint32_t active = activeAmong(before, after)) {
            const int up = std::countr_zero(active >> 8 | 0x100);
            const int down = std::countl_zero(active << 24 | 0x800000);
            return up <= down ? after[up] : before[7 - down];
        }
        if (before == first && after == last) break;
    }
    return kNone;
}

bool Proof::enter(Index i, PackedPlace p, const Ways& ways) {
    mEights += kEightsEach;
    const Index below = mActive.chainBelow(p, activeNear(i, mEights));
    if (below == kNone) return false;
    const Index above = mActive[below].above;
    if (above == kNone || !mActive.advance(below, above, p)) return false;
    if (mActive[below].upper.side(p) <= 0 || mActive[above].lower.side(p) >= 0) return false;

    bool leavingIsUpper = true;
    if (ways.before != kNone && ways.after != kNone) {
        const std::int64_t side = turnAt(p, point(ways.before), point(ways.after));
        if (side == 0) return false;
        leavingIsUpper = side > 0;
    }
    Index lowest = below;
    for (const bool leaving : {!leavingIsUpper, leavingIsUpper}) {
        const Index next = leaving ? ways.after : ways.before;
        if (next == kNone) continue;
        lowest = mActive.insertAbove(lowest, p, next, leaving ? 1 : -1);
        activeOf(leaving ? ways.leaving : ways.arriving) = lowest;
    }
    return true;
}

bool Proof::leave(PackedPlace p, const Ways& ways) {
    Index lower = ways.arriving == kNone ? kNone : activeOf(ways.arriving);
    Index upper = ways.leaving == kNone ? lower : activeOf(ways.leaving);
    if (lower == kNone) lower = upper;
    if (lower == kNone || upper == kNone) return false;
    if (lower != upper) {
        if (mActive[lower].above != upper) std::swap(lower, upper);
        if (mActive[lower].above != upper || !mActive.advance(lower, upper, p)) return false;
    }
    const Index below = mActive[lower].below, above = mActive[upper].above;
    if (!mActive.advance(below, lower, p) || !mActive.advance(upper, above, p)) return false;
    if (mActive[below].upper.side(p) <= 0 || mActive[above].lower.side(p) >= 0) return false;
    mActive.erase(lower);
    if (upper != lower) mActive.erase(upper);
    if (ways.arriving != kNone) activeOf(ways.arriving) = kNone;
    if (ways.leaving != kNone) activeOf(ways.leaving) = kNone;
    return true;
}

// The chain with which the event at a turn has to do.
Index Proof::activeAt(Index i) {
    Index eights = 2;
    return activeOf(i) != kNone ? activeOf(i) : activeNear(i, eights);
}

// What an event needs lies scattered in memory, each piece named by the one
// before: asked for some events ahead, so that it is there when its turn comes.
inline void Proof::fetchAhead(std::size_t event) {
    const std::span<const Event> events = mChains.events;
    if (event + 4 * kStage >= events.size()) return;
    __builtin_prefetch(&turn(events[event + 4 * kStage].turn));
    const Index i = events[event + 3 * kStage].turn;
    __builtin_prefetch(&mChains.points[static_cast<std::size_t>(turn(i).point)]);
    __builtin_prefetch(&activeOf(i));
    // The chain may be another one by then, which costs nothing but time.
    const Index active = activeAt(events[event + 2 * kStage].turn);
    mAhead[(event + 2 * kStage) % kAhead] = active;
    mActive.fetch(active);
    mActive.fetchNext(mAhead[(event + kStage) % kAhead]);
    mActive.fetchSecond(mAhead[(event + kStage / 2) % kAhead]);
}

bool Proof::succeeds() {
    PackedPlace last = 0;
    for (std::size_t event = 0; event < mChains.events.size(); ++event) {
        fetchAhead(event);
        const Index i = mChains.events[event].turn;
        const PackedPlace p = point(turn(i).point);
        // One that is left where another one begins would never be compared.
        if (p == last && event > 0) return false;
        last = p;
        const Ways ways = waysAt(i);
        const Index beside = ways.after != kNone ? ways.after : ways.before;
        if (!(point(beside) > p ? enter(i, p, ways) : leave(p, ways))) return false;
    }
    return true;
}

}  // namespace

bool isSurelySimple(const WalkedOutline& outline) {
    MonotoneChains chains;
    return chains.build(outline) && Proof(chains).succeeds();
}

}  // namespace Vaskel::Intersect
