// A page of outlines as PDF: one compound path, filled even-odd.

#ifndef SAMPLES_PROOF_PDF_WRITER_H
#define SAMPLES_PROOF_PDF_WRITER_H

#include <ctime>
#include <optional>
#include <span>
#include <string>

#include "samples/proof/outlines.h"
#include "samples/proof/output_file.h"

namespace Proof {

/// The path construction operators (ISO 32000-1, 8.5.2) of all outlines in
/// outline units, without the painting operator.
std::string pdfPathOperators(const Outlines& outlines);

/// The path construction operators of steps in outline units, to three decimals.
std::string pdfStepOperators(std::span<const PathStep> steps);

/// The six numbers of the matrix that brings outline units, y down, to
/// points, y up, with the page's lower left corner at the origin.
std::string pdfPageMatrix(const OutlinePage& page);

/// The content that paints the page's outlines and lines in black and its marks
/// in red under that matrix.
std::string pdfPageContent(const OutlinePage& page);

/// Writes a document of one page of the true size. Coordinates stay the
/// outlines' own whole numbers, brought to size by one matrix, so that
/// nothing is rounded. Pages beyond 14400 points (ISO 32000-1, annex C) get a
/// user unit of several points.
void writePdf(const OutlinePage& page, const std::string& title, std::optional<std::time_t> date,
              OutputFile& file);

}  // namespace Proof

#endif
