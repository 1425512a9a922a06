// The bodies behind Pemmit::Object: what contours and compound objects share,
// and trees of them.

#ifndef EMBEDDED_PEMMIT_NODE_H
#define EMBEDDED_PEMMIT_NODE_H

#include <atomic>
#include <cstdint>

#include "embedded/pemmit/piece.h"
#include "platform/pemmit/object.h"

namespace Embedded {

struct Contour;
struct Compound;

/// What contours and compound objects are made of. The kind is kept apart from
/// the flags word, which flaset may change as it likes.
///
/// What patlin needs, and what is asked of a small contour when it is released,
/// stands in the first 64 bytes: the rest of a contour that goes need not be
/// fetched.
struct Node : Pemmit::Path {
    enum Kind : std::uint8_t { kContour, kCompound };
    /// Where the piece in a contour's own block is.
    enum Own : std::uint8_t { kUnused, kHere, kLent };

    explicit Node(Kind k) : kind(k) {
        flags = k == kContour ? Pemmit::kFlagPath : Pemmit::kFlagChildren;
        next = nullptr;
    }

    Node* nextNode() const { return static_cast<Node*>(next); }

    // Appended points go to write while it is not limit; both are null where
    // nothing can grow right now, and in compound objects.
    Point* write = nullptr;
    Point* limit = nullptr;
    Kind kind;
    // Of contours, up to mate.
    Own own : 2 = kHere;
    // The last curve ends at the first point, which is not stored a second
    // time: its end is the point that a closed walk delivers again. The chain
    // is then one piece with room for one point more, and write is null.
    bool closingCurve : 1 = false;
    bool curved : 1 = false;      // its own piece may have curves
    bool pooled : 1 = false;      // its block goes back to the pool
    bool isChild : 1 = false;     // of any kind: has a parent
    std::uint8_t unused : 2 = 0;  // so that the byte is written, not changed
    // Who needs the block: the contour, and whoever its piece was lent to. The
    // two may be on different threads.
    std::atomic<std::uint8_t> holders{1};
    std::uint8_t place = 0;  // of a block of the pool
    std::uint32_t pieces = 1;
    Contour* mate = nullptr;

    Compound* parent = nullptr;
    Node* previous = nullptr;  // the child before this one
};

/// An object with children.
struct Compound : Node {
    Compound() : Node(kCompound) {}

    Node* firstChild = nullptr;
    Node* lastChild = nullptr;
};

/// The body of an object; null for null.
inline Node* nodeOf(Pemmit::Object* object) { return static_cast<Node*>(object); }
inline const Node* nodeOf(const Pemmit::Object* object) { return static_cast<const Node*>(object); }

/// The body of an object with children; null for null and for a contour.
inline Compound* compoundOf(Node* node) {
    return node && node->kind == Node::kCompound ? static_cast<Compound*>(node) : nullptr;
}
inline const Compound* compoundOf(const Node* node) {
    return node && node->kind == Node::kCompound ? static_cast<const Compound*>(node) : nullptr;
}

/// Enlarges the node's box, and its ancestors', to hold other.
void growBox(Node& node, const Pemmit::Box& other);
/// Makes the node's box that of nothing, and its ancestors' boxes true.
void emptyBox(Node& node);

/// Puts a child without a parent behind the others; boxes stay as they are.
void linkChild(Compound& parent, Node& child);
/// Takes a child out of its parent, whose box becomes true.
void unlinkChild(Node& child);

/// The object with all below it. Throws std::bad_alloc.
Node* copyTree(const Node& root);
void freeTree(Node* root) noexcept;

}  // namespace Embedded

#endif
