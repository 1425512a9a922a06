// A page of outlines as SVG 1.1: one compound path, filled even-odd.

#ifndef SAMPLES_PROOF_SVG_WRITER_H
#define SAMPLES_PROOF_SVG_WRITER_H

#include <span>
#include <string>

#include "samples/proof/outlines.h"
#include "samples/proof/output_file.h"

namespace Proof {

/// The path data (SVG 1.1 section 8.3) of all outlines in outline units: each
/// contour begins with an absolute moveto on a line of its own, goes on with
/// relative lines, and is closed.
std::string svgPathData(const Outlines& outlines);

/// The path data of steps in outline units, to three decimals.
std::string svgStepData(std::span<const PathStep> steps);

/// Writes the page. The outlines' coordinates are the outlines' own whole numbers in a view
/// box of the page's size in outline units, so that nothing is rounded; width
/// and height give the true size in millimetres.
void writeSvg(const OutlinePage& page, const std::string& title, OutputFile& file);

/// text with what XML reserves as entities, and with what is no UTF-8 or no
/// character that XML 1.0 allows as U+FFFD.
std::string xmlText(const std::string& text);

}  // namespace Proof

#endif
