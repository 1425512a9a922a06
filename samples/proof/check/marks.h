// Circles that show where something was found.

#ifndef SAMPLES_PROOF_CHECK_MARKS_H
#define SAMPLES_PROOF_CHECK_MARKS_H

#include <vector>

#include "samples/proof/outlines.h"

namespace Proof {

/// Appends a circle around (x, y) in page units, of four quarters made by
/// Vaskel::arccub. It is round on the page also where the page has other units
/// an inch in y than in x; radius counts units in x.
void appendCircle(std::vector<PathStep>& marks, const OutlinePage& page, double x, double y,
                  int radius);

/// A radius that is seen and does not hide much: 2 mm, on small pages a
/// fortieth of the longer side; at least 1 unit.
int markRadius(const OutlinePage& page);

}  // namespace Proof

#endif
