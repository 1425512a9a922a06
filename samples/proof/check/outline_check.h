// Where outlines cross themselves, by three engines of the library:
//
//   intersect  whether they do at all
//   intcalc    where two of their lines meet
//   selint     the same place from the paths and the lines' numbers, as a tool
//              that holds a path and a click would ask for it
//
// They do not always agree, and each is right by its own rule. intcalc and
// selint count every point that two lines share, touches included, save where
// the lines are collinear. intersect counts overlaps, and a touch only where
// the outline passes to the other side. Where two vertices meet, though, it
// looks at the neighbour at the first vertex of one of the lines, also if they
// meet at the second one: it counts some touches and misses some passes,
// depending on the walks' directions and the children's order, and it takes
// repeated points for neighbours. What is called a crossing or a touch here is
// decided by all four directions at the place, exactly.

#ifndef SAMPLES_PROOF_CHECK_OUTLINE_CHECK_H
#define SAMPLES_PROOF_CHECK_OUTLINE_CHECK_H

#include <cstddef>
#include <functional>
#include <vector>

#include "platform/pemmit.h"

namespace Proof {

struct Finding {
    enum Kind {
        Crossing,  // one line passes to the other side of the other
        Touch,     // they share a point, and stay on their sides
        Overlap    // they share more than a point
    };
    /// A line of an outline: contour, counted from 0, and segment of its walk.
    struct Line {
        int contour;
        int segment;
        friend bool operator==(const Line&, const Line&) = default;
    };

    Kind kind;
    Line first;  // the lower one
    Line second;
    Pemmit::PointBase<int> at;  // of an overlap: where it begins along first
    Pemmit::PointBase<int> to;  // where it ends; otherwise the same as at
    bool confirmed;             // selint names the same lines and point
};

struct OutlineFindings {
    bool intersects = false;  // what intersect says
    bool complete = true;     // false: there may be more findings
    std::vector<Finding> findings;

    std::size_t count(Finding::Kind kind) const;
    /// Whether the outline crosses itself by intersect or by a finding.
    bool crosses() const;
};

/// The contours of a path, or of a compound's children that are paths.
std::vector<Pemmit::Path*> contoursOf(Pemmit::Object* outline);

/// Checks a path or a compound path, all its contours together. Neighbours
/// along the outline are no finding where they join, only where one folds back
/// over the other. Of touches in one place between the same two contours one is
/// reported, with the lowest lines. At most limit findings are collected, and
/// at most 100 pairs of lines a line and 1000 a finding wanted are looked at.
/// Coordinates lie within half the 32-bit range.
///
/// watch is asked now and then; false ends the check as incomplete.
OutlineFindings checkOutline(Pemmit::Object* outline, std::size_t limit,
                             const std::function<bool()>& watch);

}  // namespace Proof

#endif
