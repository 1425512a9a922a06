// From the tree of an SVG file to its paths, by svgpp.

#ifndef SAMPLES_PROOF_CHECK_SVG_WALK_H
#define SAMPLES_PROOF_CHECK_SVG_WALK_H

#include <libxml/tree.h>

#include <string>

#include "samples/proof/check/drawing.h"

namespace Proof {

/// What is wrong with an element, and the line it begins on.
struct SvgProblem {
    std::string text;
    long line = 0;
};

/// x' = a x + c y + e, y' = b x + d y + f.
struct Matrix {
    double a = 1, b = 0, c = 0, d = 1, e = 0, f = 0;

    Matrix operator*(const Matrix& inner) const {
        return {a * inner.a + c * inner.b,     b * inner.a + d * inner.b,
                a * inner.c + c * inner.d,     b * inner.c + d * inner.d,
                a * inner.e + c * inner.f + e, b * inner.e + d * inner.f + f};
    }
    void apply(double& x, double& y) const {
        const double before = x;
        x = a * before + c * y + e;
        y = b * before + d * y + f;
    }
};

/// Adds the paths and basic shapes below the outermost svg element to the
/// drawing, in that element's user units, and sets its width and height in
/// pixels, 0 where they are none. Returns the matrix from user units to pixels.
/// Throws SvgProblem.
Matrix walkSvg(xmlNode* root, Drawing& drawing);

}  // namespace Proof

#endif
