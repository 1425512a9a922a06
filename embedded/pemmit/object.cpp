// Objects: the resolution, boxes, children, flags, release.

#include "platform/pemmit/object.h"

#include <algorithm>

#include "embedded/orlune/sinks.h"
#include "embedded/pemmit/blocks.h"
#include "embedded/pemmit/contour.h"
#include "platform/pemmit/build.h"

namespace Embedded {
namespace {

using Pemmit::Box;

bool holds(const Box& outer, const Box& inner) {
    return inner.minX >= outer.minX && inner.minY >= outer.minY && inner.maxX <= outer.maxX &&
           inner.maxY <= outer.maxY;
}

bool isEmpty(const Box& box) { return box.minX > box.maxX; }

void unite(Box& box, const Box& other) {
    box.minX = std::min(box.minX, other.minX);
    box.minY = std::min(box.minY, other.minY);
    box.maxX = std::max(box.maxX, other.maxX);
    box.maxY = std::max(box.maxY, other.maxY);
}

bool sharesBorder(const Box& outer, const Box& inner) {
    return inner.minX == outer.minX || inner.minY == outer.minY || inner.maxX == outer.maxX ||
           inner.maxY == outer.maxY;
}

Box boxOfChildren(const Compound& parent) {
    Box box;
    for (const Node* child = parent.firstChild; child; child = child->nextNode())
        unite(box, child->box);
    return box;
}

// Makes the boxes from parent upwards true after one below it lost gone. The
// siblings are looked at only where gone reached the border.
void shrinkAncestors(Compound* parent, Box gone) {
    for (; parent && !isEmpty(gone) && sharesBorder(parent->box, gone); parent = parent->parent) {
        gone = parent->box;
        parent->box = boxOfChildren(*parent);
    }
}

}  // namespace

void growBox(Node& node, const Box& other) {
    if (isEmpty(other)) return;
    for (Node* at = &node; at && !holds(at->box, other); at = at->parent) unite(at->box, other);
}

void emptyBox(Node& node) {
    const Box gone = node.box;
    node.box = Box();
    shrinkAncestors(node.parent, gone);
}

void linkChild(Compound& parent, Node& child) {
    child.isChild = true;
    child.parent = &parent;
    child.previous = parent.lastChild;
    child.next = nullptr;
    if (parent.lastChild)
        parent.lastChild->next = &child;
    else
        parent.firstChild = &child;
    parent.lastChild = &child;
}

void unlinkChild(Node& child) {
    Compound* const parent = child.parent;
    if (!parent) return;
    Node* const after = child.nextNode();
    if (child.previous)
        child.previous->next = after;
    else
        parent->firstChild = after;
    if (after)
        after->previous = child.previous;
    else
        parent->lastChild = child.previous;
    child.isChild = false;
    child.parent = nullptr;
    child.previous = nullptr;
    child.next = nullptr;
    shrinkAncestors(parent, child.box);
}

void freeTree(Node* root) noexcept {
    // Without recursion: a child goes when it has no children left itself.
    for (Node* at = root; at;) {
        Compound* const compound = compoundOf(at);
        if (compound && compound->firstChild) {
            at = compound->firstChild;
            continue;
        }
        Compound* const parent = at == root ? nullptr : at->parent;
        if (parent) parent->firstChild = at->nextNode();
        if (compound)
            delete compound;
        else
            Contour::release(contourOf(at));
        at = parent;
    }
}

}  // namespace Embedded

namespace Pemmit {

using namespace Embedded;

int getppi() { return sinks().ppi; }

void objrem(Object* object) {
    Node* const node = nodeOf(object);
    if (!node) return;
    // Objects are mostly released in the order in which they were made: what
    // comes next may stand a little further on.
    const auto later = reinterpret_cast<std::uintptr_t>(node) + 4 * kBlockBytes;
    __builtin_prefetch(reinterpret_cast<const void*>(later), 1);
    if (node->isChild) unlinkChild(*node);
    if (Contour* const contour = contourOf(node))
        Contour::release(contour);
    else
        freeTree(node);
}

void flaset(Object* object, std::uint32_t mask, bool on) {
    Contour* const contour = contourOf(object);
    // An open contour does not deliver its first point again, so a curve that
    // ends there needs a point of its own.
    if (contour && contour->closingCurve && on && (mask & kFlagOpen)) contour->storeClosingPoint();
    object->flags = on ? object->flags | mask : object->flags & ~mask;
}

}  // namespace Pemmit
