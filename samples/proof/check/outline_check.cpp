#include "samples/proof/check/outline_check.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <tuple>

#include "platform/orlune.h"
#include "samples/proof/check/segment_pairs.h"
#include "vaskel/geometry.h"

namespace Proof {
namespace {

using Place = Pemmit::PointBase<int>;
using Number = std::uint32_t;
constexpr Number kNone = ~Number{0};

// All lines of an outline that have a length. Segments of none have no side
// and meet nothing; their neighbours become neighbours.
struct Lines {
    std::vector<LineSegment> ends;
    std::vector<Finding::Line> names;
    std::vector<Number> next;      // along the contour
    std::vector<Number> previous;  // kNone at the ends of an open one

    Place begin(Number i) const { return {ends[i].x1, ends[i].y1}; }
    Place end(Number i) const { return {ends[i].x2, ends[i].y2}; }

    void add(const Pemmit::Path* contour, int number) {
        const Number first = static_cast<Number>(ends.size());
        Pemmit::scan walk(contour, 0, -1);
        Place start{}, from{}, to{};
        if (walk.scanex(&start.x, &start.y) < 0) return;
        from = start;
        for (int segment = 0; walk.scanex(&to.x, &to.y) >= 0; ++segment) {
            if (to.x == from.x && to.y == from.y) continue;
            const Number own = static_cast<Number>(ends.size());
            ends.push_back({from.x, from.y, to.x, to.y});
            names.push_back({number, segment});
            previous.push_back(own == first ? kNone : own - 1);
            next.push_back(own + 1);
            from = to;
        }
        if (ends.size() == first) return;
        // An outline that ends where it began goes on there.
        const bool ring = from.x == start.x && from.y == start.y;
        next.back() = ring ? first : kNone;
        if (ring) previous[first] = static_cast<Number>(ends.size() - 1);
    }
};

bool same(Place a, Place b) { return a.x == b.x && a.y == b.y; }

// The side of c as seen along a to b, exactly.
int side(Place a, Place b, Place c) {
    return Orlune::mulcom(b.x - a.x, c.y - a.y, c.x - a.x, b.y - a.y);
}

// Whether c, on the line through a and b, lies between them.
bool between(Place a, Place b, Place c) {
    return (c.x - std::int64_t{a.x}) * (c.x - std::int64_t{b.x}) <= 0 &&
           (c.y - std::int64_t{a.y}) * (c.y - std::int64_t{b.y}) <= 0;
}

// The two points between which an outline passes through a place on it.
struct Passage {
    Place from, to;
    bool whole;  // false where an open contour ends
};

Passage passage(const Lines& lines, Number i, Place at) {
    if (same(at, lines.begin(i))) {
        const Number before = lines.previous[i];
        return {before == kNone ? at : lines.begin(before), lines.end(i), before != kNone};
    }
    if (same(at, lines.end(i))) {
        const Number after = lines.next[i];
        return {lines.begin(i), after == kNone ? at : lines.end(after), after != kNone};
    }
    return {lines.begin(i), lines.end(i), true};
}

// Where point lies as seen from at: in the angle from p.from counterclockwise to
// p.to 1, outside of it -1, on one of its legs 0.
int within(const Passage& p, Place at, Place point) {
    const auto ahead = [&](Place leg) {  // on the leg, not on its other side
        return side(at, leg, point) == 0 && !between(leg, point, at);
    };
    if (ahead(p.from) || ahead(p.to)) return 0;
    const bool leftOfFrom = side(at, p.from, point) > 0;
    const bool rightOfTo = side(at, p.to, point) < 0;
    const int turn = side(at, p.from, p.to);
    if (turn > 0) return leftOfFrom && rightOfTo ? 1 : -1;
    if (turn < 0) return leftOfFrom || rightOfTo ? 1 : -1;
    const bool straight = between(p.from, p.to, at);  // otherwise the legs are one
    return straight && leftOfFrom ? 1 : -1;
}

// Whether two parts of an outline that share the place pass through each other
// there. Where they share a line as well, the overlap tells.
bool passThrough(const Passage& p, const Passage& q, Place at) {
    return p.whole && q.whole && within(p, at, q.from) * within(p, at, q.to) < 0;
}

auto order(const Finding& f) {
    return std::tuple(f.first.contour, f.first.segment, f.second.contour, f.second.segment, f.kind);
}

class Check {
    using Key = std::array<int, 6>;

 public:
    Check(Pemmit::Object* outline, std::size_t limit, const std::function<bool()>& watch)
        : mContours(contoursOf(outline)), mLimit(limit), mWatch(watch) {
        for (std::size_t i = 0; i < mContours.size(); ++i)
            mLines.add(mContours[i], static_cast<int>(i));
    }

    void run(OutlineFindings& result) {
        mResult = &result;
        result.complete =
            foldsBack() && visitMeetingPairs(mLines.ends, [&](std::size_t i, std::size_t j) {
                return consider(static_cast<Number>(i), static_cast<Number>(j));
            });
        for (Finding& finding : result.findings)
            finding.confirmed = finding.kind != Finding::Overlap && confirm(finding);
        std::sort(result.findings.begin(), result.findings.end(),
                  [](const Finding& a, const Finding& b) { return order(a) < order(b); });
    }

 private:
    bool consider(Number i, Number j) {
        if (++mVisits % 4096 == 0 && mWatch && !mWatch()) return false;
        // Outlines that come back to one place very often meet there in as many
        // pairs as the square of that, all of which are one finding.
        if (mVisits / 100 > mLines.ends.size() + 10 * mLimit) return false;
        if (mLines.next[i] == j || mLines.next[j] == i) return true;
        const LineSegment &s = mLines.ends[i], &t = mLines.ends[j];
        Place at{};
        if (Vaskel::intcalc(s.x1, s.y1, s.x2, s.y2, t.x1, t.y1, t.x2, t.y2, &at.x, &at.y) == 0)
            return collinear(i, j);
        const int s1 = side(mLines.begin(j), mLines.end(j), mLines.begin(i));
        const int s2 = side(mLines.begin(j), mLines.end(j), mLines.end(i));
        const int s3 = side(mLines.begin(i), mLines.end(i), mLines.begin(j));
        const int s4 = side(mLines.begin(i), mLines.end(i), mLines.end(j));
        if (s1 * s2 < 0 && s3 * s4 < 0) return report(Finding::Crossing, i, j, at, at, false);
        at = s1 == 0   ? mLines.begin(i)
             : s2 == 0 ? mLines.end(i)
             : s3 == 0 ? mLines.begin(j)
                       : mLines.end(j);
        return meeting(i, j, at);
    }

    // Lines that intcalc leaves out.
    bool collinear(Number i, Number j) {
        const Place a = mLines.begin(i), b = mLines.end(i);
        const Place c = mLines.begin(j), d = mLines.end(j);
        if (side(a, b, c) != 0 || side(a, b, d) != 0) return true;
        // What both share runs between the inner two of the four ends.
        Place shared[4];
        int count = 0;
        for (const Place p : {a, b})
            if (between(c, d, p)) shared[count++] = p;
        for (const Place p : {c, d})
            if (between(a, b, p) && !same(p, a) && !same(p, b)) shared[count++] = p;
        if (count == 0) return true;
        if (count == 1) return meeting(i, j, shared[0]);
        const bool swapped = between(a, shared[0], shared[1]);
        return report(Finding::Overlap, i, j, shared[swapped], shared[!swapped], false);
    }

    // Neighbours that turn right back lie on each other.
    bool foldsBack() {
        for (Number i = 0; i < mLines.ends.size(); ++i) {
            const Number j = mLines.next[i];
            if (j == kNone || j == i) continue;
            const Place a = mLines.begin(i), b = mLines.end(i), d = mLines.end(j);
            if (side(a, b, d) != 0 || between(a, d, b)) continue;
            if (!collinear(std::min(i, j), std::max(i, j))) return false;
        }
        return true;
    }

    // A point that is an end of at least one of the lines.
    bool meeting(Number i, Number j, Place at) {
        const bool through = passThrough(passage(mLines, i, at), passage(mLines, j, at), at);
        return report(through ? Finding::Crossing : Finding::Touch, i, j, at, at, true);
    }

    bool report(Finding::Kind kind, Number i, Number j, Place at, Place to, bool atEnd) {
        const Finding finding{kind, mLines.names[i], mLines.names[j], at, to, false};
        const auto [known, isNew] =
            mKnown.try_emplace(keyOf(finding, atEnd), mResult->findings.size());
        if (!isNew) {  // the lowest lines stand for it, in whatever order they come
            Finding& before = mResult->findings[known->second];
            if (order(finding) < order(before)) before = finding;
            return true;
        }
        if (mResult->findings.size() == mLimit) return false;
        mResult->findings.push_back(finding);
        return true;
    }

    // Touches, and crossings at an end of a line, come with up to four pairs of
    // lines: the contours and the place tell one from another. Other findings
    // differ by their lines.
    static Key keyOf(const Finding& f, bool atEnd) {
        if (atEnd) return {f.kind, f.first.contour, f.second.contour, f.at.x, f.at.y, 1};
        return {f.kind, f.first.contour, f.first.segment, f.second.contour, f.second.segment, 0};
    }

    // selint starts at the two lines, so that the first pair it tries is this.
    bool confirm(const Finding& f) const {
        int a = -1, b = -1;
        Place at{};
        const auto contour = [&](int number) {
            return mContours[static_cast<std::size_t>(number)];
        };
        return Vaskel::selint(contour(f.first.contour), f.first.segment, contour(f.second.contour),
                              f.second.segment, &a, &b, &at.x, &at.y, f.at.x, f.at.y, 1) == 0 &&
               same(at, f.at);
    }

    std::vector<Pemmit::Path*> mContours;
    Lines mLines;
    std::size_t mLimit;
    const std::function<bool()>& mWatch;
    OutlineFindings* mResult = nullptr;
    std::map<Key, std::size_t> mKnown;  // their places in the findings
    std::size_t mVisits = 0;
};

}  // namespace

std::size_t OutlineFindings::count(Finding::Kind kind) const {
    return static_cast<std::size_t>(
        std::count_if(findings.begin(), findings.end(),
                      [kind](const Finding& finding) { return finding.kind == kind; }));
}

bool OutlineFindings::crosses() const {
    return intersects || count(Finding::Touch) < findings.size();
}

std::vector<Pemmit::Path*> contoursOf(Pemmit::Object* outline) {
    std::vector<Pemmit::Path*> contours;
    if (!outline) return contours;
    if (outline->flags & Pemmit::kFlagPath) {
        contours.push_back(static_cast<Pemmit::Path*>(outline));
    } else if (outline->flags & Pemmit::kFlagChildren) {
        Pemmit::queryseq sequence;
        for (Pemmit::Object* child = sequence.quebeg(outline, nullptr); child; child = child->next)
            if (child->flags & Pemmit::kFlagPath)
                contours.push_back(static_cast<Pemmit::Path*>(child));
    }
    return contours;
}

OutlineFindings checkOutline(Pemmit::Object* outline, std::size_t limit,
                             const std::function<bool()>& watch) {
    OutlineFindings result;
    result.intersects = Vaskel::intersect(outline) != 0;
    Check(outline, limit, watch).run(result);
    return result;
}

}  // namespace Proof
