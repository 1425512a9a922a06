// The bodies behind Pemmit::Object: contours and compound objects.

#ifndef EMBEDDED_PEMMIT_NODE_H
#define EMBEDDED_PEMMIT_NODE_H

#include <cstdint>

#include "embedded/pemmit/piece.h"
#include "platform/pemmit/object.h"

namespace Embedded {

struct Contour;
struct Compound;

/// What contours and compound objects share. The kind is kept apart from the
/// flags word, which flaset may change as it likes.
struct Node : Pemmit::Path {
    enum Kind : std::uint32_t { kContour, kCompound };

    explicit Node(Kind k) : kind(k) {
        flags = k == kContour ? Pemmit::kFlagPath : Pemmit::kFlagChildren;
        next = nullptr;
    }

    Kind kind;
    Piece* grow = &noPiece;  // the piece that appended points go to; noPiece for compounds
    Compound* parent = nullptr;
    Node* previous = nullptr;  // the child before this one

    Node* nextNode() const { return static_cast<Node*>(next); }
};

/// A contour: a chain of pieces.
struct Contour : Node {
    Contour() : Node(kContour) {}
    ~Contour() {
        chain.clear();
        if (mate) mate->mate = nullptr;
    }

    Chain chain;
    std::int64_t before = 0;  // points of all pieces but grow
    Contour* mate = nullptr;
    // The last curve ends at the first point, which is not stored a second
    // time: its end is the point that a closed walk delivers again. The chain
    // is then one piece with room for one point more, and grow is noPiece.
    bool closingCurve = false;

    std::int64_t pointCount() const { return before + grow->count; }
    bool isOpen() const { return (flags & Pemmit::kFlagOpen) != 0; }
    /// The first and the last stored point of a contour that has points.
    const Point& firstPoint() const;
    const Point& lastPoint() const;

    /// Makes room for n more points at the end of grow and returns grow.
    /// Throws std::bad_alloc and leaves the contour as it was.
    Piece* makeRoom(std::uint32_t n);
    /// Empties the contour and hands its chain over.
    Chain take() noexcept;
    /// Gives an empty contour a chain of count points.
    void put(const Chain& chain, std::int64_t count) noexcept;
    /// Makes one piece of the chain, in forward direction. Throws
    /// std::bad_alloc and leaves the contour as it was.
    void flatten();
    /// Makes one piece of a chain of many if memory allows. Joins may leave
    /// thousands of pieces behind; a handful is as good as one.
    void settle() noexcept;
    /// Stores the end of a closing curve as a point of its own.
    void storeClosingPoint() noexcept;
};

/// An object with children.
struct Compound : Node {
    Compound() : Node(kCompound) {}

    Node* firstChild = nullptr;
    Node* lastChild = nullptr;
};

/// The body of an object; null for null.
inline const Node* nodeOf(const Pemmit::Object* object) { return static_cast<const Node*>(object); }
inline Node* nodeOf(Pemmit::Object* object) { return static_cast<Node*>(object); }
/// The body of a contour; null for null and for a compound object.
inline const Contour* contourOf(const Pemmit::Object* object) {
    const Node* const node = nodeOf(object);
    return node && node->kind == Node::kContour ? static_cast<const Contour*>(node) : nullptr;
}
inline Contour* contourOf(Pemmit::Object* object) {
    Node* const node = nodeOf(object);
    return node && node->kind == Node::kContour ? static_cast<Contour*>(node) : nullptr;
}
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

/// The object with all below it.
Node* copyTree(const Node& root);
void freeTree(Node* root) noexcept;

}  // namespace Embedded

#endif
