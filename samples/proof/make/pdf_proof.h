// The proof as PDF: one page, everything in it made by the library, structure
// by qpdf, streams as they are.

#ifndef SAMPLES_PROOF_MAKE_PDF_PROOF_H
#define SAMPLES_PROOF_MAKE_PDF_PROOF_H

#include <string>
#include <vector>

#include "samples/proof/make/canvas.h"
#include "samples/proof/make/font_source.h"
#include "samples/proof/output_file.h"
#include "samples/proof/pdf_document.h"

namespace Proof {

/// A profile as it stands in its file.
struct ProfileBytes {
    std::string bytes;
    std::string description;
    int channels = 4;
};

class PdfProof : public Canvas {
 public:
    /// embed says whether the font's program goes into the file; the 14 standard
    /// fonts need none. Pictures of inks are given the press profile's colours.
    PdfProof(double width, double height, const FontSource& font, const Fonts::Type1Font& program,
             bool embed, const ProfileBytes& press);

    void fillArea(const Area& area, Rgb colour) override;
    void frameArea(const Area& area) override;
    void drawText(double x, double y, double size, const std::string& text) override;
    void drawOutlines(double x, double y, const OutlinePage& page) override;
    void drawPicture(const Area& area, const Picture& picture) override;
    void linkArea(const Area& area, const std::string& url) override;

    void write(const DocumentInfo& info, OutputFile& file);

 private:
    struct Image {
        int width, height;
        Picture::Space space;
        std::string data;
    };

    struct Link {
        Area area;
        std::string url;
    };

    QPDFObjectHandle imageStream(QPDF& pdf, const Image& image, QPDFObjectHandle profile) const;
    QPDFObjectHandle annotations(QPDF& pdf) const;
    QPDFObjectHandle outputIntent(QPDFObjectHandle profile) const;

    double mWidth, mHeight;
    const FontSource& mFont;
    const Fonts::Type1Font& mProgram;
    bool mEmbed;
    const ProfileBytes& mPress;
    std::string mContent;
    std::vector<Image> mImages;
    std::vector<Link> mLinks;
};

}  // namespace Proof

#endif
