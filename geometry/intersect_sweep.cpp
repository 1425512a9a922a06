// Why testing few pairs gives the plain sweep's answer.
//
// The plain sweep tests every pair of segments that are active at the same
// time. Within +-2^25 a pair that is reported shares a point: coordinate
// differences stay within 2^26 and all sums of products in the pair test within
// 2^53, so that both determinants are exact, their quotient is 0 only for 0,
// and 1 only for equal ones (the quotient nearest to 1 that differs from it is
// more than half a unit in the last place away). What remains open at a shared
// point, the angles, is left to the pair test itself.
//
// Pairs that share a point are of four kinds. (1) They cross inside both, or
// (2) overlap: these are always reported. (3) One ends inside the other, or
// (4) both end there: reported or not, after their neighbours. Kinds 3 and 4
// meet at a vertex, and when the sweep comes to a place, every pair that meets
// there and that the plain sweep would have tested is tested. Kinds 1 and 2 are
// found by keeping the active segments in their order from bottom to top and
// testing neighbours: of the leftmost crossing's two segments nothing lies in
// between just before it, so they are neighbours from some vertex on, or it
// lies at a vertex, where all pairs are tested; an overlap begins at a vertex.
// Up to that place nothing has crossed, so the order is true.
//
// The plain sweep stops at the vertex where the later segment of a reported
// pair is entered, before it comes to the place where they meet. How often it
// has asked the system by then follows from the earliest such vertex, which
// repeated sweeps over the segments entered before a given vertex find.

#include "geometry/intersect_sweep.h"

#include <algorithm>

#include "geometry/intersect_order.h"
#include "geometry/intersect_pair.h"
#include "geometry/sweep_sort.h"
#include "platform/orlune.h"

namespace Vaskel::Intersect {
namespace {

// A segment with an end at the sweep's place, and the number in sweep order of
// the vertex there.
struct EndHere {
    Index segment;
    Index number;
};

class OrderedSweep {
 public:
    explicit OrderedSweep(const Outline& outline)
        : mOutline(outline),
          mOrder(sortedForSweep(outline.vertices)),
          mEntries(outline.segments.size()) {}

    Index vertexCount() const { return static_cast<Index>(mOrder.size()); }

    // Sweeps over the segments that are entered at vertices numbered below
    // limit. Returns the number at which the later segment of some reported
    // pair was entered, or kNone when no pair is reported.
    Index run(Index limit);

 private:
    struct Entry {
        ActiveSegment* active = nullptr;
        Index number = 0;    // of the vertex where it was entered
        Index sequence = 0;  // how many segments were entered before
    };

    Place place(Index vertex) const {
        const Vertex& v = mOutline.vertex(vertex);
        return {v.x, v.y};
    }
    Entry& entry(Index segment) { return mEntries[static_cast<std::size_t>(segment)]; }

    void collectEnds(Index begin, Index end, Index limit);
    void addEnd(Index segment, Index vertex, Index number, Index limit);
    void findNeighbours(Place p);
    bool testMeetingPairs();
    void enterAndLeave(Place p);
    bool testNewNeighbours();
    bool test(Index a, Index b);
    bool testEntered(Index later, Index earlier);

    const Outline& mOutline;
    const std::vector<Index> mOrder;
    std::vector<Entry> mEntries;
    ActiveOrder mActive;

    // The place that the sweep has come to.
    std::vector<EndHere> mEnding, mStarting;
    std::vector<Index> mThrough;       // active segments with the place in their inside
    ActiveOrder::Position mAbove;      // the first active segment above the place
    ActiveOrder::Position mFirstHere;  // the first one at the place, or mAbove
    Index mSequence = 0;
    Index mFound = kNone;
};

void OrderedSweep::addEnd(Index segment, Index vertex, Index number, Index limit) {
    if (segment == kNone) return;
    const Vertex& here = mOutline.vertex(vertex);
    const Vertex& far = mOutline.vertex(mOutline.farEnd(segment, vertex));
    if (precedes(far, here)) {
        if (entry(segment).active) mEnding.push_back({segment, number});
    } else if (number < limit && precedes(here, far)) {
        entry(segment).number = number;
        entry(segment).sequence = mSequence++;
        mStarting.push_back({segment, number});
    }
}

// What ends and starts at the vertices numbered begin .. end - 1, which lie at
// one place, in the order in which the plain sweep comes to it.
void OrderedSweep::collectEnds(Index begin, Index end, Index limit) {
    mEnding.clear();
    mStarting.clear();
    for (Index number = begin; number < end; ++number) {
        const Index vertex = mOrder[static_cast<std::size_t>(number)];
        addEnd(mOutline.vertex(vertex).arriving, vertex, number, limit);
        addEnd(mOutline.vertex(vertex).leaving, vertex, number, limit);
    }
}

// Sets mFirstHere, mAbove and mThrough. The active segments that hold the place
// stand side by side.
void OrderedSweep::findNeighbours(Place p) {
    if (mEnding.empty()) {
        mFirstHere = mActive.firstNotBelow(p);
    } else {
        mFirstHere = ActiveOrder::positionOf(*entry(mEnding.front().segment).active);
        while (mFirstHere != mActive.begin()) {
            auto below = std::prev(mFirstHere);
            if (below->side(p) != 0) break;
            mFirstHere = below;
        }
    }
    mThrough.clear();
    mAbove = mFirstHere;
    for (; mAbove != mActive.end() && mAbove->side(p) == 0; ++mAbove)
        if (mAbove->right.x != p.x || mAbove->right.y != p.y) mThrough.push_back(mAbove->segment);
}

bool OrderedSweep::testEntered(Index later, Index earlier) {
    if (!pairCrosses(mOutline, later, earlier)) return false;
    mFound = entry(later).number;
    return true;
}

bool OrderedSweep::test(Index a, Index b) {
    return entry(a).sequence > entry(b).sequence ? testEntered(a, b) : testEntered(b, a);
}

// The pairs that meet at the place. Not tested: segments that end at one vertex
// (neighbours, never reported unless they overlap, which shows where the
// overlap begins), and a starting segment with those that the plain sweep has
// left by then, which end at its own vertex or at an earlier one.
bool OrderedSweep::testMeetingPairs() {
    for (std::size_t i = 0; i < mThrough.size(); ++i) {
        for (std::size_t j = i + 1; j < mThrough.size(); ++j)
            if (test(mThrough[i], mThrough[j])) return true;
        for (const EndHere& ending : mEnding)
            if (test(mThrough[i], ending.segment)) return true;
        for (const EndHere& starting : mStarting)
            if (testEntered(starting.segment, mThrough[i])) return true;
    }
    for (std::size_t i = 0; i < mEnding.size(); ++i)
        for (std::size_t j = i + 1; j < mEnding.size(); ++j)
            if (mEnding[i].number != mEnding[j].number &&
                test(mEnding[i].segment, mEnding[j].segment))
                return true;
    for (std::size_t i = 0; i < mStarting.size(); ++i) {
        for (const EndHere& ending : mEnding)
            if (ending.number > mStarting[i].number &&
                testEntered(mStarting[i].segment, ending.segment))
                return true;
        for (std::size_t j = 0; j < i; ++j)
            if (testEntered(mStarting[i].segment, mStarting[j].segment)) return true;
    }
    return false;
}

// Takes the ending segments out and puts the starting ones in, from bottom to
// top by their direction, around the one that goes through the place, if any.
// mFirstHere becomes the lowest segment at the place, or mAbove if none is left.
void OrderedSweep::enterAndLeave(Place p) {
    const auto rightEnd = [&](Index segment) {
        const Segment& s = mOutline.segment(segment);
        const Place first = place(s.first);
        return first.x == p.x && first.y == p.y ? place(s.second) : first;
    };
    if (mEnding.size() == 1 && mStarting.size() == 1 && mThrough.empty()) {
        // The outline goes on: the new segment takes the place of the old one.
        Entry& old = entry(mEnding.front().segment);
        const Index segment = mStarting.front().segment;
        old.active->left = p;
        old.active->right = rightEnd(segment);
        old.active->segment = segment;
        entry(segment).active = old.active;
        old.active = nullptr;
        return;
    }

    for (const EndHere& ending : mEnding) {
        Entry& old = entry(ending.segment);
        const auto position = ActiveOrder::positionOf(*old.active);
        if (position == mFirstHere) ++mFirstHere;
        mActive.erase(position);
        old.active = nullptr;
    }
    std::sort(mStarting.begin(), mStarting.end(), [&](const EndHere& a, const EndHere& b) {
        return turn(p, rightEnd(a.segment), rightEnd(b.segment)) > 0;
    });
    for (const EndHere& starting : mStarting) {
        const Place right = rightEnd(starting.segment);
        auto above = mAbove;
        if (!mThrough.empty()) {
            ActiveSegment* const through = entry(mThrough.front()).active;
            if (turn(p, right, through->right) > 0) above = ActiveOrder::positionOf(*through);
        }
        ActiveSegment& active = mActive.insertBefore(above, starting.segment, p, right);
        entry(starting.segment).active = &active;
        if (above == mFirstHere) mFirstHere = ActiveOrder::positionOf(active);
    }
}

// The segments that have become neighbours across the edges of the place.
bool OrderedSweep::testNewNeighbours() {
    if (mFirstHere != mActive.begin() && mFirstHere != mActive.end() &&
        test(std::prev(mFirstHere)->segment, mFirstHere->segment))
        return true;
    return mFirstHere != mAbove && mAbove != mActive.end() &&
           test(std::prev(mAbove)->segment, mAbove->segment);
}

Index OrderedSweep::run(Index limit) {
    mActive.clear();
    std::fill(mEntries.begin(), mEntries.end(), Entry{});
    mSequence = 0;
    mFound = kNone;
    const Index count = vertexCount();
    for (Index begin = 0; begin < count && (begin < limit || !mActive.empty());) {
        const Place p = place(mOrder[static_cast<std::size_t>(begin)]);
        Index end = begin + 1;
        for (; end < count; ++end) {
            const Place q = place(mOrder[static_cast<std::size_t>(end)]);
            if (q.x != p.x || q.y != p.y) break;
        }
        collectEnds(begin, end, limit);
        begin = end;
        if (mEnding.empty() && mStarting.empty()) continue;
        findNeighbours(p);
        if (testMeetingPairs()) return mFound;
        enterAndLeave(p);
        if (testNewNeighbours()) return mFound;
    }
    return kNone;
}

constexpr Index kBetweenCalls = 200;

// Asks the system before every 200th of the vertices numbered begin .. end - 1.
void askSystem(Index begin, Index end) {
    for (Index number = (begin + kBetweenCalls - 1) / kBetweenCalls * kBetweenCalls; number < end;
         number += kBetweenCalls)
        Orlune::cancel(0, 0);
}

// With no pair reported among the segments entered before clean, and one whose
// later segment was entered at found: the number, exact to its group of 200, of
// the first vertex at which a reported pair is complete.
Index firstReported(OrderedSweep& sweep, Index clean, Index found) {
    // In turns the group of the vertex found, which mostly is the first one,
    // and the middle, which bounds the number of sweeps.
    for (bool middle = false; clean / kBetweenCalls < found / kBetweenCalls; middle = !middle) {
        Index limit = found - found % kBetweenCalls;
        if (middle) {
            const Index half = clean + (limit - clean) / 2;
            if (half - half % kBetweenCalls > clean) limit = half - half % kBetweenCalls;
        }
        const Index earlier = sweep.run(limit);
        if (earlier == kNone)
            clean = limit;
        else
            found = earlier;
    }
    return found;
}

// From this many vertices on the sweep is made in steps, so that the system is
// asked now and then during a long test.
constexpr Index kFirstStep = 1 << 21;
constexpr Index kStepGrowth = 8;

}  // namespace

bool withinExactRange(const Outline& outline) {
    constexpr int limit = 1 << 25;
    return std::all_of(outline.vertices.begin(), outline.vertices.end(), [](const Vertex& v) {
        return -limit <= v.x && v.x <= limit && -limit <= v.y && v.y <= limit;
    });
}

int sweepOrdered(const Outline& outline) { return sweepInSteps(outline, kFirstStep); }

int sweepInSteps(const Outline& outline, Index firstStep) {
    OrderedSweep sweep(outline);
    const Index count = sweep.vertexCount();
    for (Index clean = 0, limit = firstStep; clean < count;) {
        limit = std::min(limit, count);
        const Index found = sweep.run(limit);
        if (found != kNone) {
            askSystem(clean, firstReported(sweep, clean, found) + 1);
            return 1;
        }
        askSystem(clean, limit);
        clean = limit;
        limit = limit > count / kStepGrowth ? count : limit * kStepGrowth;
    }
    return 0;
}

}  // namespace Vaskel::Intersect
