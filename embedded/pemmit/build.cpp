// Building, joining and copying paths.

#include "platform/pemmit/build.h"

#include <algorithm>
#include <climits>
#include <memory>

#include "embedded/pemmit/node.h"

namespace Embedded {
namespace {

// Hangs the chain of from before or behind the others of a chain that is
// being put together, and counts its points.
void collect(Chain& chain, std::int64_t& count, Contour& from, bool reversed) noexcept {
    count += from.pointCount() + (from.closingCurve ? 1 : 0);
    Chain own = from.take();
    if (reversed) own.reverse();
    chain.append(own);
}

// One object without its children and its place among others.
Node* copyOne(const Node& from) {
    if (from.kind == Node::kCompound) {
        auto* const copy = new Compound;
        copy->flags = from.flags;
        copy->box = from.box;
        return copy;
    }
    const auto& source = static_cast<const Contour&>(from);
    auto copy = std::make_unique<Contour>();
    copy->flags = from.flags;
    copy->box = from.box;
    if (!source.chain.empty()) {
        auto curves = std::make_unique<std::vector<Curve>>(copyCurves(source.chain));
        const auto count = static_cast<std::uint32_t>(source.pointCount());
        Piece* const piece = makePiece(source.closingCurve ? count + 1 : count);
        copyPoints(source.chain, piece->points());
        piece->count = count;
        if (!curves->empty()) piece->curves = curves.release();
        Chain chain;
        chain.append(piece);
        copy->put(chain, count);
        if (source.closingCurve) {
            copy->closingCurve = true;
            copy->before = count;
            copy->grow = &noPiece;
        }
    }
    return copy.release();
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

Path* patbeg() { return new Contour; }

void patlin(Path* path, int x, int y) {
    Node& node = *nodeOf(path);
    Piece* grow = node.grow;
    if (grow->count == grow->capacity) [[unlikely]] {
        Contour* const contour = contourOf(path);
        if (!contour) return;  // an object with children has no points of its own
        grow = contour->makeRoom(1);
    }
    grow->points()[grow->count++] = {x, y};
    Box& box = node.box;
    if (x < box.minX) box.minX = x;
    if (x > box.maxX) box.maxX = x;
    if (y < box.minY) box.minY = y;
    if (y > box.maxY) box.maxY = y;
    if (node.parent) [[unlikely]]
        growBox(*node.parent, node.box);
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
    Chain chain;
    std::int64_t count = 0;
    if (start == second || (!start && !end)) {
        collect(chain, count, *first, false);
        collect(chain, count, *second, true);
        first->put(chain, count);
        growBox(*first, second->box);
        emptyBox(*second);
        first->mate = second->mate = nullptr;
        first->flags &= ~kFlagOpen;
        first->settle();
        return;
    }
    // The outline runs from the free end of start to that of end. Where p is
    // the free end itself, the same outline is told from the other side.
    Contour& heir = start ? *start : *end;
    Contour& near = start ? *first : *second;
    Contour& far = start ? *second : *first;
    collect(chain, count, far, false);
    collect(chain, count, near, true);
    collect(chain, count, heir, false);
    heir.put(chain, count);
    growBox(heir, near.box);
    growBox(heir, far.box);
    emptyBox(near);
    emptyBox(far);
    first->mate = second->mate = nullptr;
    if (start) start->mate = end;
    if (end) end->mate = start;
}

Path* patdup(const Path* path) { return copyTree(*nodeOf(path)); }

int patsiz(const Path* path) {
    const Contour* const contour = contourOf(path);
    if (!contour || contour->chain.empty()) return 0;
    const std::int64_t count = contour->pointCount() + (contour->isOpen() ? 0 : 1);
    return static_cast<int>(std::min<std::int64_t>(count, INT_MAX));
}

}  // namespace Pemmit
