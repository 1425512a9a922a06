// Whole runs of CMYK pixels as ink colours.

#ifndef COLOUR_INK_RUN_H
#define COLOUR_INK_RUN_H

namespace Vaskel {

/// The rule itself; every faster form is held to it.
void inkRunPlain(unsigned char* pixels, int count);

/// One table row an ink and amount instead of divisions. Same bits: rows hold
/// the plain form's own factors, inks keep their order, and the row of amount 0
/// is exactly 1.0, so that multiplying by it equals skipping the ink. A pixel
/// equal to the one before is not calculated again.
void inkRunTable(unsigned char* pixels, int count);

}  // namespace Vaskel

#endif
