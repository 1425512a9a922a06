// Building, joining and copying paths.

#include "platform/pemmit/build.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <new>

#include "embedded/pemmit/contour.h"

namespace Embedded {
namespace {

// One object without its children and its place among others.
Node* copyOne(const Node& from) {
    Node* copy = nullptr;
    if (const Contour* const source = contourOf(&from)) {
        if (source->pointCount() >= INT_MAX) throw std::bad_alloc();
        auto curves = std::make_unique<std::vector<Curve>>(source->copyCurves());
        const auto count = static_cast<std::uint32_t>(source->pointCount());
        // The end of a closing curve may be stored without asking for memory.
        const std::uint32_t capacity = source->closingCurve ? count + 1 : count;
        Contour* const made = Contour::make(std::max(capacity, 1u));
        if (count > 0) {
            source->copyPoints(made->write);
            made->write += count;
            if (!curves->empty()) {
                made->chain.end[1].piece()->curves = curves.release();
                made->curved = true;
            }
            made->pause();
            made->closingCurve = source->closingCurve;
            made->resume();
        }
        copy = made;
    } else {
        copy = new Compound;
    }
    copy->flags = from.flags;
    copy->box = from.box;
    return copy;
}

}  // namespace

Node* copyTree(const Node& root) {
    Node* const top = copyOne(root);
    try {
        const Node* from = &root;
        Node* to = top;
        for (;;) {
            const Compound* const compound = compoundOf(from);
            if (compound && compound->firstChild) {
                from = compound->firstChild;
            } else {
                while (from != &root && !from->next) {
                    from = from->parent;
                    to = to->parent;
                }
                if (from == &root) return top;
                from = from->nextNode();
                to = to->parent;
            }
            Node* const child = copyOne(*from);
            linkChild(*compoundOf(to), *child);
            to = child;
        }
    } catch (...) {
        freeTree(top);
        throw;
    }
}

}  // namespace Embedded

namespace Pemmit {

using namespace Embedded;

Path* patbeg() { return Contour::make(Contour::kBlockPoints); }

namespace {

using Lanes = int __attribute__((vector_size(16)));

// Four comparisons at once, and no branch to guess wrong: with the minima in
// the first two lanes and the maxima in the others.
void enlarge(Box& box, int x, int y) {
    static_assert(sizeof(Box) == sizeof(Lanes));
    constexpr Lanes kMinima = {-1, -1, 0, 0};
    const Lanes point = {x, y, x, y};
    Lanes edges;
    std::memcpy(&edges, &box, sizeof edges);
    const Lanes taken = ((edges > point) & kMinima) | ((point > edges) & ~kMinima);
    edges = (point & taken) | (edges & ~taken);
    std::memcpy(static_cast<void*>(&box), &edges, sizeof edges);
}

// Four values at a time, the minima in both halves of low and the maxima in
// those of high; an odd last point is taken twice.
void storeRun(Node& node, const Point* points, int count) {
    static_assert(2 * sizeof(Point) == sizeof(Lanes));
    Point* const out = node.write;
    Lanes edges;
    std::memcpy(&edges, &node.box, sizeof edges);
    Lanes low = {edges[0], edges[1], edges[0], edges[1]};
    Lanes high = {edges[2], edges[3], edges[2], edges[3]};
    const auto take = [&](const Lanes& both) {
        low = both < low ? both : low;
        high = both > high ? both : high;
    };
    int i = 0;
    for (; i + 1 < count; i += 2) {
        // Point by point: they may just have been written so, and a wide load
        // behind narrow stores would have to wait for them.
        using Pair = long long __attribute__((vector_size(16)));
        long long each[2];
        std::memcpy(&each, points + i, sizeof each);
        const Pair pair = {each[0], each[1]};
        Lanes both;
        std::memcpy(&both, &pair, sizeof both);
        std::memcpy(out + i, &both, sizeof both);
        take(both);
    }
    if (i < count) {
        out[i] = points[i];
        take(Lanes{points[i].x, points[i].y, points[i].x, points[i].y});
    }
    node.write = out + count;
    const Lanes low2 = {low[2], low[3], low[2], low[3]};
    const Lanes high2 = {high[2], high[3], high[2], high[3]};
    low = low2 < low ? low2 : low;
    high = high2 > high ? high2 : high;
    edges = Lanes{low[0], low[1], high[0], high[1]};
    std::memcpy(static_cast<void*>(&node.box), &edges, sizeof edges);
}

void store(Node& node, int x, int y) {
    *node.write++ = {x, y};
    enlarge(node.box, x, y);
}

// Apart, so that patlin itself needs no stack.
[[gnu::noinline]] void appendToFull(Node& node, int x, int y) {
    Contour* const contour = contourOf(&node);
    if (!contour) return;  // an object with children has no points of its own
    contour->makeRoom(1);
    store(node, x, y);
    if (node.parent) growBox(*node.parent, node.box);
}

[[gnu::noinline]] void tellParent(Node& node) { growBox(*node.parent, node.box); }

}  // namespace

void patlin(Path* path, int x, int y) {
    Node& node = *nodeOf(path);
    if (node.write == node.limit) [[unlikely]]
        return appendToFull(node, x, y);
    store(node, x, y);
    if (node.isChild) [[unlikely]]
        tellParent(node);
}

void patrun(Path* path, const PointBase<int>* points, int count) {
    Node& node = *nodeOf(path);
    if (node.limit - node.write < count) [[unlikely]] {
        Contour* const contour = contourOf(path);
        if (!contour) return;
        contour->makeRoom(static_cast<std::uint32_t>(count));
    }
    storeRun(node, points, count);
    if (node.isChild) [[unlikely]]
        tellParent(node);
}

Path* patnew(const PointBase<int>* points, int count) {
    Contour* const made = Contour::make(static_cast<std::uint32_t>(count));
    storeRun(*made, points, count);
    return made;
}

void patend(Path* path, int x, int y) {
    patlin(path, x, y);
    flaset(path, kFlagOpen, true);
    if (Contour* const contour = contourOf(path); contour && !contour->mate) contour->settle();
}

void patendclo(Path* path) {
    flaset(path, kFlagOpen, false);
    if (Contour* const contour = contourOf(path); contour && !contour->mate) contour->settle();
}

void patlinbb(Path* p, Path* q) {
    Contour* const first = contourOf(p);
    Contour* const second = contourOf(q);
    if (!first || !second || first == second || first->mate || second->mate) return;
    first->mate = second;
    second->mate = first;
}

void patlinee(Path* p, Path* q) {
    Contour* const first = contourOf(p);
    Contour* const second = contourOf(q);
    if (!first || !second || first == second) return;
    Contour* const start = first->mate;
    Contour* const end = second->mate;
    if (start == second || (!start && !end)) {
        if (!first->takeFewReversed(*second)) first->append(second->take().reversed());
        growBox(*first, second->box);
        emptyBox(*second);
        first->mate = second->mate = nullptr;
        first->flags &= ~kFlagOpen;
        first->settle();
        return;
    }
    // The outline runs from the free end of start to that of end. Where p has
    // no mate, and so is a free end itself, the same outline is told from the
    // other side.
    Contour& heir = start ? *start : *end;
    Contour& near = start ? *first : *second;
    Contour& far = start ? *second : *first;
    heir.prepend(near.take().reversed());
    heir.prepend(far.take());
    growBox(heir, near.box);
    growBox(heir, far.box);
    emptyBox(near);
    emptyBox(far);
    first->mate = second->mate = nullptr;
    if (start) start->mate = end;
    if (end) end->mate = start;
    if (!heir.mate) heir.settle();
}

Path* patdup(const Path* path) { return copyTree(*nodeOf(path)); }

int patsiz(const Path* path) {
    const Contour* const contour = contourOf(path);
    if (!contour || !contour->hasPoints()) return 0;
    const std::int64_t count = contour->pointCount() + (contour->isOpen() ? 0 : 1);
    return static_cast<int>(std::min<std::int64_t>(count, INT_MAX));
}

}  // namespace Pemmit
