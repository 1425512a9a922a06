// SVG 1.1 files as drawings: XML by libxml2, everything SVG by svgpp.

#ifndef SAMPLES_PROOF_CHECK_SVG_READER_H
#define SAMPLES_PROOF_CHECK_SVG_READER_H

#include <span>
#include <string>

#include "samples/proof/byte_source.h"
#include "samples/proof/check/drawing.h"

namespace Proof {

/// Reads paths and basic shapes with all their transforms, in the user units
/// of the outermost svg element (those of its view box). Arcs and quadratic
/// curves come as cubic ones. What is only defined (defs, symbol, clipPath ...)
/// is left out, hidden elements are not. A use element stands for the paths
/// that it refers to in the same file.
///
/// Throws Failure that names the file, the reason and, where there is one, the
/// line: no XML, no SVG, an attribute that cannot be read, a coordinate that is
/// farther than kFarthest from 0 or no number, or use elements that refer to
/// themselves or make more than kMostUsed elements and steps.
Drawing readSvg(const std::string& name, std::span<const unsigned char> bytes);

/// The same for a source, of at most 2 GB.
Drawing readSvg(ByteSource& source);

}  // namespace Proof

#endif
