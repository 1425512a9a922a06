// A row of ink as the tracer wants it: the positions at which it changes.

#ifndef SAMPLES_PROOF_RUNS_H
#define SAMPLES_PROOF_RUNS_H

namespace Proof {

/// Finds the run boundaries of a packed row: every position between two
/// pixels of different kind, and 0 and width where ink touches them, in
/// ascending order, each multiplied by scale. Their number is even. The first
/// capacity of them are stored; the result is how many there are, so that a
/// result above capacity tells that the row did not fit.
///
///   10011000 (8 pixels), scale 1:  0 1 3 5
///
/// ink holds one bit a pixel, the most significant first; the bits behind
/// the width are 0. Cost: a step per 64 pixels and one per boundary.
int findRuns(const unsigned char* ink, int width, int scale, int* runs, int capacity);

}  // namespace Proof

#endif
