#include "geometry/intersect_outline.h"

namespace Vaskel::Intersect {

void Outline::add(const Pemmit::Object* path) {
    Pemmit::scan walk(path, 0, -1);
    Vertex v{0, 0, kNone, kNone};
    const auto first = static_cast<Index>(vertices.size());
    while (walk.scanex(&v.x, &v.y) >= 0) {
        const auto here = static_cast<Index>(vertices.size());
        v.arriving = kNone;
        if (here > first) {
            v.arriving = static_cast<Index>(segments.size());
            segments.push_back({here - 1, here});
            vertices.back().leaving = v.arriving;
        }
        vertices.push_back(v);
    }

    const auto count = static_cast<Index>(vertices.size()) - first;
    if (count == 1) {
        vertices.pop_back();
    } else if (count > 1) {
        Vertex& start = vertices[static_cast<std::size_t>(first)];
        const Vertex& last = vertices.back();
        if (last.x == start.x && last.y == start.y) {
            start.arriving = last.arriving;
            segments.back().second = first;
            vertices.pop_back();
        }
    }
}

Outline outlineOf(const Pemmit::Object* object) {
    Outline outline;
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

}  // namespace Vaskel::Intersect
