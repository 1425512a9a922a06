// From the tree of an SVG file to its paths, by svgpp.

#ifndef SAMPLES_PROOF_CHECK_SVG_WALK_H
#define SAMPLES_PROOF_CHECK_SVG_WALK_H

#include <libxml/tree.h>

#include <string>

#include "samples/proof/check/drawing.h"
#include "samples/proof/check/matrix.h"

namespace Proof {

/// What is wrong with an element, and the line it begins on.
struct SvgProblem {
    std::string text;
    long line = 0;
};

/// How many elements and steps use elements may make: those of nested ones
/// multiply, so that a small file could ask for any number.
constexpr long kMostUsed = 1000000;

/// Adds the paths and basic shapes below the outermost svg element to the
/// drawing, in that element's user units, and sets its width and height in
/// pixels, 0 where they are none. Returns the matrix from user units to pixels.
/// Throws SvgProblem.
Matrix walkSvg(xmlNode* root, Drawing& drawing);

}  // namespace Proof

#endif
