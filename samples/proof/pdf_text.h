// Text strings of PDF, made by the library's conversions.

#ifndef SAMPLES_PROOF_PDF_TEXT_H
#define SAMPLES_PROOF_PDF_TEXT_H

#include <string>

namespace Proof {

/// The bytes of a text string (ISO 32000-1, 7.9.2.2): big-endian UTF-16 with
/// its mark, as the library makes it of UTF-8. Text that the library does not
/// give back (characters beyond U+FFFF, malformed UTF-8) is left to qpdf.
std::string pdfText(const std::string& utf8);

}  // namespace Proof

#endif
