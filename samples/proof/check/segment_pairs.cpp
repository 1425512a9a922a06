// Vertical strips, halved again and again. A segment that reaches across a
// strip is dealt with there and handed down no further; the others, which have
// an end inside, go on to the halves that they reach into. Each segment reaches
// across at most two strips of a level, and has an end in at most two.
//
// Two segments that meet in a strip's inside or on its sides are found in the
// smallest strip that holds the place and reaches across which at least one of
// them goes. Segments across a strip that do not cross have one order from its
// left to its right side, a staircase, in which the stretch that another
// segment meets is found by halving. What crosses a staircase goes into the
// next one, so that each staircase but the first costs at least one crossing.
//
// Upright segments would reach across nothing. So the strips are upright in a
// plane sheared by X = x (height + 1) + y, in which points of different places
// have different X and the lines stay lines over which y runs.

#include "samples/proof/check/segment_pairs.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace Proof {
namespace {

__extension__ typedef __int128 Wide;
using Index = std::uint32_t;
using List = std::vector<Index>;

// So few segments are tried with each other.
constexpr std::size_t kFew = 8;

// A segment in the sheared plane, its ends in order. Y stays below 2^31 and X
// below 2^62.
struct Line {
    std::int64_t left, right;  // X of the ends
    std::int64_t y, dy;        // y of the left end, and how much it changes
    double slope;              // dy / dx

    Line(std::int64_t x1, std::int64_t y1, std::int64_t x2, std::int64_t y2)
        : left(std::min(x1, x2)),
          right(std::max(x1, x2)),
          y(x1 < x2 ? y1 : y2),
          dy(x1 < x2 ? y2 - y1 : y1 - y2),
          slope(static_cast<double>(dy) / static_cast<double>(right - left)) {}

    double near(std::int64_t x) const {
        return static_cast<double>(y) + static_cast<double>(x - left) * slope;
    }
};

// y at X as a whole number and a numerator over right - left.
struct Height {
    Wide whole, part;

    Height(const Line& line, std::int64_t x) {
        const Wide run = line.right - line.left;
        const Wide rise = Wide(x - line.left) * line.dy;
        whole = rise / run;
        part = rise % run;
        if (part < 0) part += run, --whole;
        whole += line.y;
    }
};

// Whether a lies below (-1), on (0) or above (1) b at X, exactly.
int compareAt(const Line& a, const Line& b, std::int64_t x) {
    // Of the roundings behind near() four are off by 2^-53 of at most 2^31, the
    // last one by as much of 2^32, so that a difference above 2^-18 is none.
    const double difference = a.near(x) - b.near(x);
    constexpr double sure = 1.0 / (1 << 18);
    if (difference > sure) return 1;
    if (difference < -sure) return -1;
    const Height p(a, x), q(b, x);
    if (p.whole != q.whole) return p.whole < q.whole ? -1 : 1;
    const Wide left = p.part * (b.right - b.left), right = q.part * (a.right - a.left);
    return left < right ? -1 : left > right ? 1 : 0;
}

class Search {
 public:
    Search(std::span<const LineSegment> segments, const PairVisitor& visit)
        : mSegments(segments), mVisit(visit) {
        std::int64_t low = 0, high = 0;
        for (const LineSegment& s : segments) {
            low = std::min<std::int64_t>({low, s.y1, s.y2});
            high = std::max<std::int64_t>({high, s.y1, s.y2});
        }
        const std::int64_t shear = high - low + 1;
        mLines.reserve(segments.size());
        mSides.reserve(2 * segments.size());
        for (const LineSegment& s : segments) {
            mLines.emplace_back(s.x1 * shear + s.y1, s.y1, s.x2 * shear + s.y2, s.y2);
            mSides.push_back(mLines.back().left);
            mSides.push_back(mLines.back().right);
        }
        std::sort(mSides.begin(), mSides.end());
        mSides.erase(std::unique(mSides.begin(), mSides.end()), mSides.end());
    }

    bool run() {
        if (mLines.size() < 2) return true;
        List all(mLines.size());
        for (Index i = 0; i < all.size(); ++i) all[i] = i;
        return commonEnds(all) && strip(0, mSides.size() - 1, all);
    }

 private:
    bool visit(Index a, Index b) { return mVisit(std::min(a, b), std::max(a, b)); }

    bool visitIfNear(Index a, Index b) {
        const LineSegment &s = mSegments[a], &t = mSegments[b];
        const auto apart = [](int a1, int a2, int b1, int b2) {
            return std::max(a1, a2) < std::min(b1, b2) || std::max(b1, b2) < std::min(a1, a2);
        };
        if (apart(s.x1, s.x2, t.x1, t.x2) || apart(s.y1, s.y2, t.y1, t.y2)) return true;
        return visit(a, b);
    }

    bool tryAll(const List& list) {
        for (std::size_t i = 0; i < list.size(); ++i)
            for (std::size_t j = i + 1; j < list.size(); ++j)
                if (!visitIfNear(list[i], list[j])) return false;
        return true;
    }

    // Segments that end at one place may lie in no common strip, one on its
    // left and one on its right.
    bool commonEnds(const List& all) {
        List byLeft = all, byRight = all;
        std::sort(byLeft.begin(), byLeft.end(),
                  [&](Index a, Index b) { return mLines[a].left < mLines[b].left; });
        std::sort(byRight.begin(), byRight.end(),
                  [&](Index a, Index b) { return mLines[a].right < mLines[b].right; });
        std::size_t begin = 0;
        for (const Index right : byRight) {
            const std::int64_t x = mLines[right].right;
            while (begin < byLeft.size() && mLines[byLeft[begin]].left < x) ++begin;
            for (std::size_t i = begin; i < byLeft.size() && mLines[byLeft[i]].left == x; ++i)
                if (!visit(right, byLeft[i])) return false;
        }
        return true;
    }

    // The strip between two sides; each segment of the list has an inner point
    // in it.
    bool strip(std::size_t low, std::size_t high, const List& list) {
        if (list.size() <= kFew) return tryAll(list);
        const std::int64_t left = mSides[low], right = mSides[high];
        List across, inside;
        for (const Index i : list)
            (mLines[i].left <= left && mLines[i].right >= right ? across : inside).push_back(i);
        if (!staircases(left, right, across, inside)) return false;
        if (inside.empty()) return true;
        // An end lies between the sides, so that there is one between them.
        const std::size_t middle = low + (high - low) / 2;
        for (const bool second : {false, true}) {
            List half;
            for (const Index i : inside)
                if (second ? mLines[i].right > mSides[middle] : mLines[i].left < mSides[middle])
                    half.push_back(i);
            if (!(second ? strip(middle, high, half) : strip(low, middle, half))) return false;
        }
        return true;
    }

    bool staircases(std::int64_t left, std::int64_t right, List& rest, const List& inside) {
        std::sort(rest.begin(), rest.end(), [&](Index a, Index b) {
            const int order = compareAt(mLines[a], mLines[b], left);
            return order ? order < 0 : compareAt(mLines[a], mLines[b], right) < 0;
        });
        List stairs, next;
        while (!rest.empty()) {
            stairs.clear();
            next.clear();
            for (const Index i : rest) {
                const bool fits =
                    stairs.empty() || compareAt(mLines[stairs.back()], mLines[i], right) <= 0;
                (fits ? stairs : next).push_back(i);
            }
            if (!touchesWithin(stairs, left) || !touchesWithin(stairs, right)) return false;
            for (const List* others : {static_cast<const List*>(&next), &inside})
                for (const Index i : *others)
                    if (!meetStairs(stairs, i, left, right)) return false;
            rest.swap(next);
        }
        return true;
    }

    // Segments of a staircase meet on the strip's sides at most, where equal
    // heights stand side by side.
    bool touchesWithin(const List& stairs, std::int64_t side) {
        for (std::size_t i = 0; i < stairs.size(); ++i)
            for (std::size_t j = i + 1; j < stairs.size(); ++j) {
                if (compareAt(mLines[stairs[i]], mLines[stairs[j]], side) != 0) break;
                if (!visit(stairs[i], stairs[j])) return false;
            }
        return true;
    }

    // Of the stairs those meet the segment that are not below it all the way
    // and not above it all the way.
    bool meetStairs(const List& stairs, Index i, std::int64_t left, std::int64_t right) {
        const Line& line = mLines[i];
        auto begin = stairs.end(), end = stairs.begin();
        for (const std::int64_t x : {std::max(left, line.left), std::min(right, line.right)}) {
            const auto low = std::partition_point(stairs.begin(), stairs.end(), [&](Index stair) {
                return compareAt(mLines[stair], line, x) < 0;
            });
            const auto high = std::partition_point(low, stairs.end(), [&](Index stair) {
                return compareAt(mLines[stair], line, x) <= 0;
            });
            begin = std::min(begin, low);
            end = std::max(end, high);
        }
        for (auto stair = begin; stair < end; ++stair)
            if (!visit(i, *stair)) return false;
        return true;
    }

    std::span<const LineSegment> mSegments;
    const PairVisitor& mVisit;
    std::vector<Line> mLines;
    std::vector<std::int64_t> mSides;  // X of all ends, ascending
};

}  // namespace

bool visitMeetingPairs(std::span<const LineSegment> segments, const PairVisitor& visit) {
    return Search(segments, visit).run();
}

bool visitMeetingPairsPlain(std::span<const LineSegment> segments, const PairVisitor& visit) {
    const auto apart = [](int a1, int a2, int b1, int b2) {
        return std::max(a1, a2) < std::min(b1, b2) || std::max(b1, b2) < std::min(a1, a2);
    };
    for (std::size_t i = 0; i < segments.size(); ++i)
        for (std::size_t j = i + 1; j < segments.size(); ++j) {
            const LineSegment &s = segments[i], &t = segments[j];
            if (apart(s.x1, s.x2, t.x1, t.x2) || apart(s.y1, s.y2, t.y1, t.y2)) continue;
            if (!visit(i, j)) return false;
        }
    return true;
}

}  // namespace Proof
