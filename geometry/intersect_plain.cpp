#include "geometry/intersect_plain.h"

#include <algorithm>
#include <numeric>

#include "geometry/intersect_pair.h"
#include "platform/orlune.h"

namespace Vaskel::Intersect {
namespace {

constexpr std::size_t kBetweenCalls = 200;

}  // namespace

std::vector<Index> sweepOrder(const Outline& outline) {
    std::vector<Index> order(outline.vertices.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](Index a, Index b) {
        return precedes(outline.vertex(a), outline.vertex(b));
    });
    return order;
}

void askWholeSweep(std::size_t vertices) {
    for (std::size_t number = 0; number < vertices; number += kBetweenCalls) Orlune::cancel(0, 0);
}

int sweepPlain(const Outline& outline) {
    std::vector<Index> active;
    std::size_t number = 0;
    for (const Index v : sweepOrder(outline)) {
        if (number++ % kBetweenCalls == 0) Orlune::cancel(0, 0);
        const Vertex& vertex = outline.vertex(v);
        for (const Index segment : {vertex.arriving, vertex.leaving}) {
            const auto found = std::find(active.begin(), active.end(), segment);
            if (found != active.end()) active.erase(found);
        }
        for (const Index segment : {vertex.arriving, vertex.leaving}) {
            if (segment == kNone) continue;
            if (!precedes(vertex, outline.vertex(outline.farEnd(segment, v)))) continue;
            for (const Index other : active)
                if (pairCrosses(outline, segment, other)) return 1;
            active.push_back(segment);
        }
    }
    return 0;
}

}  // namespace Vaskel::Intersect
