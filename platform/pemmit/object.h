// Pemmit: objects, paths and the document resolution.

#ifndef PLATFORM_PEMMIT_OBJECT_H
#define PLATFORM_PEMMIT_OBJECT_H

#include <climits>
#include <cstdint>

#include "platform/export.h"

namespace Pemmit {

/// The document resolution: how many distances make an inch; above 0. The
/// engines ask at every conversion and never keep the answer, so that a host
/// may change it between two calls.
PLATFORM_API int getppi();

/// An inclusive box in distances. The box of nothing has minimum above
/// maximum: { INT_MAX, INT_MAX, INT_MIN, INT_MIN }.
struct Box {
    int minX = INT_MAX;
    int minY = INT_MAX;
    int maxX = INT_MIN;
    int maxY = INT_MIN;
};

/// Bits of an object's flags word; all others are the host's.
constexpr std::uint32_t kFlagPath = 1u << 3;       // the object is a path with a walk of its own
constexpr std::uint32_t kFlagOpen = 1u << 20;      // that path is open
constexpr std::uint32_t kFlagChildren = 1u << 31;  // the object has children

/// What every document object shows to the engines. The three members are
/// read directly and stand at the start of every object in this order; what
/// follows is the host's. Objects are made and released by Pemmit only.
///
/// The host keeps box true at every change of the object, by whatever call:
/// it is the smallest box of the points that a walk delivers, and for an object
/// with children the union of theirs. Joins that take all points away leave
/// the box of nothing.
///
/// A path with several contours is an object with kFlagChildren whose
/// children are the contours, each with kFlagPath; it does not have kFlagPath
/// itself, and its own walk is empty.
class Object {
 public:
    std::uint32_t flags;  // kFlagPath, kFlagOpen, kFlagChildren
    Box box;              // of all points
    Object* next;         // the next child of the same parent; null for the last and without one

 protected:
    Object() = default;
    ~Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
};

/// A contour, or a list of contours as described above.
class Path : public Object {
 protected:
    Path() = default;
    ~Path() = default;
};

}  // namespace Pemmit

#endif
