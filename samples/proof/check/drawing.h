// Paths as a drawing holds them, and the same paths as objects of the document
// model.

#ifndef SAMPLES_PROOF_CHECK_DRAWING_H
#define SAMPLES_PROOF_CHECK_DRAWING_H

#include <memory>
#include <string>
#include <vector>

#include "platform/pemmit.h"
#include "samples/proof/path_step.h"

namespace Proof {

struct DrawnPath {
    std::string element;          // "path", "rect" ...
    std::string id;               // may be empty
    std::vector<PathStep> steps;  // in the user units of the drawing
};

struct Drawing {
    std::vector<DrawnPath> paths;
    int lost = 0;  // use elements that refer to nothing in the file
    // The visible part in user units, and how many of them make an inch.
    double left = 0, top = 0, width = 0, height = 0;
    double xPerInch = 96, yPerInch = 96;
};

/// The most that a coordinate may be away from 0, in user units: within it
/// intersect has a fast way, as all of its determinants are exact.
constexpr double kFarthest = 1 << 25;

struct ObjectRemover {
    void operator()(Pemmit::Object* object) const { Pemmit::objrem(object); }
};
using ObjectPtr = std::unique_ptr<Pemmit::Object, ObjectRemover>;

/// How user units become whole distances: times a power of two, so that whole
/// user units and their halves, quarters ... stay exact.
class Grid {
 public:
    /// The finest one, of at most 2^16 distances a unit, on which no coordinate
    /// of the drawing is more than 2^24 away from 0, or 1 distance a unit.
    explicit Grid(const Drawing& drawing);

    double perUnit() const { return mPerUnit; }
    /// The largest coordinate's distance from 0, in user units.
    double extent() const { return mExtent; }
    int place(double coordinate) const;
    double unit(int coordinate) const { return coordinate / mPerUnit; }

 private:
    double mExtent = 0;
    double mPerUnit = 1;
};

/// A compound path with a contour a subpath of at least two points. Points that
/// fall onto the one before are left out. What is not closed in the drawing is
/// open. Curves are flattened to within flatness user units.
ObjectPtr makeObject(const DrawnPath& path, const Grid& grid, double flatness);

}  // namespace Proof

#endif
