// The proof as PostScript, level 3, with the structure of Adobe's Document
// Structuring Conventions 3.0.

#ifndef SAMPLES_PROOF_MAKE_PS_PROOF_H
#define SAMPLES_PROOF_MAKE_PS_PROOF_H

#include <string>

#include "samples/proof/make/canvas.h"
#include "samples/proof/make/font_source.h"
#include "samples/proof/output_file.h"
#include "samples/proof/pdf_document.h"

namespace Proof {

/// The font comes as two resources: one spells its encoding out, the other looks
/// it up in userdict as DravixEncoding, which the prolog defines. Texts take
/// them in turns, so that both are seen to work.
///
/// Document information and links stand as pdfmark operators, which programs
/// that make PDF of the file understand and others skip.
class PsProof : public Canvas {
 public:
    PsProof(double width, double height, const FontSource& font,
            const Fonts::Type1Font& withEncoding, const Fonts::Type1Font& withHostEncoding);

    void fillArea(const Area& area, Rgb colour) override;
    void frameArea(const Area& area) override;
    void drawText(double x, double y, double size, const std::string& text) override;
    void drawOutlines(double x, double y, const OutlinePage& page) override;
    void drawPicture(const Area& area, const Picture& picture) override;
    void linkArea(const Area& area, const std::string& url) override;

    void write(const DocumentInfo& info, OutputFile& file) const;

 private:
    double mWidth, mHeight;
    const FontSource& mFont;
    const Fonts::Type1Font& mWithEncoding;
    const Fonts::Type1Font& mWithHostEncoding;
    std::string mBody;
    int mTexts = 0;
};

}  // namespace Proof

#endif
