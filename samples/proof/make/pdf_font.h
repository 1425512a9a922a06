#ifndef SAMPLES_PROOF_MAKE_PDF_FONT_H
#define SAMPLES_PROOF_MAKE_PDF_FONT_H

#include <qpdf/QPDF.hh>

#include "samples/proof/make/font_source.h"

namespace Proof {

/// The font dictionary (ISO 32000-1, 9.6.2) of a font that the library built:
/// widths, an encoding of its own, the text of each code, and, if embed is set,
/// its program as FontFile with the three lengths that the library gives.
QPDFObjectHandle pdfFont(QPDF& pdf, const FontSource& source, const Fonts::Type1Font& font,
                         bool embed);

}  // namespace Proof

#endif
