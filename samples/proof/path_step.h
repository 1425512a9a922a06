// A step of a path of lines and curves.

#ifndef SAMPLES_PROOF_PATH_STEP_H
#define SAMPLES_PROOF_PATH_STEP_H

namespace Proof {

struct PathStep {
    enum Kind { Move, Line, Curve, Close };
    Kind kind;
    double x1, y1, x2, y2;  // control points of a curve
    double x, y;            // where it ends; of Close: where the subpath began
};

}  // namespace Proof

#endif
