#include "geometry/intersect_outline.h"

#include "geometry/point_runs.h"

namespace Vaskel::Intersect {

void WalkedOutline::add(const Pemmit::Object* path) {
    const auto begin = static_cast<Index>(points.size());
    RunWalk walk(path, 0, -1);
    for (PointRun run; walk.next(run);) {
        const std::size_t before = points.size();
        points.resize(before + static_cast<std::size_t>(run.count));
        for (int i = 0; i < run.count; ++i)
            points[before + static_cast<std::size_t>(i)] = packed(run[i].x, run[i].y);
    }
    auto end = static_cast<Index>(points.size());
    bool closed = false;
    if (end - begin == 1) {
        points.pop_back();
    } else if (end > begin && points.back() == points[static_cast<std::size_t>(begin)]) {
        points.pop_back();
        closed = true;
    }
    end = static_cast<Index>(points.size());
    if (end > begin) contours.push_back({begin, end, closed});
}

WalkedOutline walkedOutlineOf(const Pemmit::Object* object) {
    WalkedOutline outline;
    if (!object) return outline;
    if (object->flags & Pemmit::kFlagPath) {
        outline.add(object);
    } else if (object->flags & Pemmit::kFlagChildren) {
        Pemmit::queryseq children;
        for (const Pemmit::Object* child = children.quebeg(object, nullptr); child;
             child = child->next)
            if (child->flags & Pemmit::kFlagPath) outline.add(child);
    }
    return outline;
}

void Outline::add(const WalkedOutline& walked) {
    vertices.reserve(vertices.size() + walked.points.size());
    segments.reserve(segments.size() + walked.points.size());
    for (const WalkedContour& contour : walked.contours) {
        const auto first = static_cast<Index>(vertices.size());
        for (Index i = contour.begin; i < contour.end; ++i) {
            const PackedPlace p = walked.points[static_cast<std::size_t>(i)];
            const auto here = static_cast<Index>(vertices.size());
            Index arriving = kNone;
            if (here > first) {
                arriving = static_cast<Index>(segments.size());
                segments.push_back({here - 1, here});
                vertices.back().leaving = arriving;
            }
            vertices.push_back({xOf(p), yOf(p), arriving, kNone});
        }
        if (!contour.closed) continue;
        const auto closing = static_cast<Index>(segments.size());
        segments.push_back({static_cast<Index>(vertices.size()) - 1, first});
        vertices.back().leaving = closing;
        vertices[static_cast<std::size_t>(first)].arriving = closing;
    }
}

void Outline::add(const Pemmit::Object* path) {
    WalkedOutline walked;
    walked.add(path);
    add(walked);
}

Outline outlineOf(const Pemmit::Object* object) {
    Outline outline;
    outline.add(walkedOutlineOf(object));
    return outline;
}

}  // namespace Vaskel::Intersect
