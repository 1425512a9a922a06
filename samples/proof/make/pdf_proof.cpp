#include "samples/proof/make/pdf_proof.h"

#include <cstdio>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>

#include "samples/proof/make/page_text.h"
#include "samples/proof/make/pdf_font.h"
#include "samples/proof/pdf_text.h"
#include "samples/proof/pdf_writer.h"

namespace Proof {
namespace {

// The order of names is that of the pictures, up to 99 of them.
std::string imageName(std::size_t number) {
    return (number < 10 ? "/I0" : "/I") + std::to_string(number);
}

}  // namespace

PdfProof::PdfProof(double width, double height, const FontSource& font,
                   const Fonts::Type1Font& program, bool embed, const ProfileBytes& press)
    : mWidth(width),
      mHeight(height),
      mFont(font),
      mProgram(program),
      mEmbed(embed),
      mPress(press) {}

void PdfProof::fillArea(const Area& area, Rgb colour) {
    mContent += numbers({colour.r / 255.0, colour.g / 255.0, colour.b / 255.0}) + "rg\n" +
                numbers({area.x, area.y, area.width, area.height}) + "re f\n0 g\n";
}

void PdfProof::frameArea(const Area& area) {
    mContent += "0.25 w " + numbers({area.x, area.y, area.width, area.height}) + "re S\n";
}

void PdfProof::drawText(double x, double y, double size, const std::string& text) {
    mContent += "BT /F1 " + numbers({size}) + "Tf " + numbers({x, y}) + "Td " +
                hex(mFont.encoded(text)) + " Tj ET\n";
}

void PdfProof::drawOutlines(double x, double y, const OutlinePage& page) {
    mContent += "q 1 0 0 1 " + numbers({x, y}) + "cm\n" + pdfPageContent(page) + "Q\n";
}

void PdfProof::drawPicture(const Area& area, const Picture& picture) {
    mImages.push_back({picture.width, picture.height, picture.space, ascii85(samplesOf(picture))});
    mContent += "q " + numbers({area.width, 0, 0, area.height, area.x, area.y}) + "cm " +
                imageName(mImages.size()) + " Do Q\n";
}

void PdfProof::linkArea(const Area& area, const std::string& url) { mLinks.push_back({area, url}); }

QPDFObjectHandle PdfProof::imageStream(QPDF& pdf, const Image& image,
                                       QPDFObjectHandle profile) const {
    QPDFObjectHandle stream = QPDFObjectHandle::newStream(&pdf);
    stream.replaceStreamData(image.data, QPDFObjectHandle::newName("/ASCII85Decode"),
                             QPDFObjectHandle::newNull());
    QPDFObjectHandle dict = stream.getDict();
    dict.replaceKey("/Type", QPDFObjectHandle::newName("/XObject"));
    dict.replaceKey("/Subtype", QPDFObjectHandle::newName("/Image"));
    dict.replaceKey("/Width", QPDFObjectHandle::newInteger(image.width));
    dict.replaceKey("/Height", QPDFObjectHandle::newInteger(image.height));
    dict.replaceKey("/BitsPerComponent", QPDFObjectHandle::newInteger(8));
    if (image.space == Picture::Cmyk) {
        QPDFObjectHandle space = QPDFObjectHandle::newArray();
        space.appendItem(QPDFObjectHandle::newName("/ICCBased"));
        space.appendItem(profile);
        dict.replaceKey("/ColorSpace", space);
    } else {
        dict.replaceKey(
            "/ColorSpace",
            QPDFObjectHandle::newName(image.space == Picture::Rgb ? "/DeviceRGB" : "/DeviceGray"));
    }
    return pdf.makeIndirectObject(stream);
}

// Link annotations (ISO 32000-1, 12.5.6.5) without a border of their own.
QPDFObjectHandle PdfProof::annotations(QPDF& pdf) const {
    QPDFObjectHandle all = QPDFObjectHandle::newArray();
    for (const Link& link : mLinks) {
        QPDFObjectHandle action = QPDFObjectHandle::parse("<< /Type /Action /S /URI >>");
        action.replaceKey("/URI", QPDFObjectHandle::newString(link.url));
        // The flag says that it is printed, as archiving standards want it.
        QPDFObjectHandle annotation =
            QPDFObjectHandle::parse("<< /Type /Annot /Subtype /Link /Border [0 0 0] /F 4 >>");
        annotation.replaceKey("/Rect",
                              QPDFObjectHandle::parse(
                                  "[" +
                                  numbers({link.area.x, link.area.y, link.area.x + link.area.width,
                                           link.area.y + link.area.height}) +
                                  "]"));
        annotation.replaceKey("/A", action);
        all.appendItem(pdf.makeIndirectObject(annotation));
    }
    return all;
}

QPDFObjectHandle PdfProof::outputIntent(QPDFObjectHandle profile) const {
    QPDFObjectHandle intent = QPDFObjectHandle::parse("<< /Type /OutputIntent /S /GTS_PDFX >>");
    const QPDFObjectHandle description = QPDFObjectHandle::newString(pdfText(mPress.description));
    intent.replaceKey("/OutputConditionIdentifier", description);
    intent.replaceKey("/Info", description);
    intent.replaceKey("/DestOutputProfile", profile);
    return intent;
}

void PdfProof::write(const DocumentInfo& info, OutputFile& file) {
    QPDF pdf;
    pdf.emptyPDF();
    setDocumentInfo(pdf, info);
    QPDFObjectHandle profile = QPDFObjectHandle::newStream(&pdf, mPress.bytes);
    profile.getDict().replaceKey("/N", QPDFObjectHandle::newInteger(mPress.channels));
    profile = pdf.makeIndirectObject(profile);

    QPDFObjectHandle images = QPDFObjectHandle::newDictionary();
    for (std::size_t i = 0; i < mImages.size(); ++i)
        images.replaceKey(imageName(i + 1), imageStream(pdf, mImages[i], profile));
    QPDFObjectHandle fonts = QPDFObjectHandle::newDictionary();
    fonts.replaceKey("/F1", pdfFont(pdf, mFont, mProgram, mEmbed));
    QPDFObjectHandle resources = QPDFObjectHandle::newDictionary();
    resources.replaceKey("/Font", fonts);
    resources.replaceKey("/XObject", images);

    QPDFObjectHandle page = QPDFObjectHandle::parse("<< /Type /Page >>");
    page.replaceKey("/MediaBox",
                    QPDFObjectHandle::parse("[0 0 " + numbers({mWidth, mHeight}) + "]"));
    page.replaceKey("/Resources", resources);
    page.replaceKey("/Contents", QPDFObjectHandle::newStream(&pdf, mContent));
    if (!mLinks.empty()) page.replaceKey("/Annots", annotations(pdf));
    QPDFPageDocumentHelper(pdf).addPage(QPDFPageObjectHelper(pdf.makeIndirectObject(page)), false);

    if (mPress.channels == 4) {
        QPDFObjectHandle intents = QPDFObjectHandle::newArray();
        intents.appendItem(pdf.makeIndirectObject(outputIntent(profile)));
        pdf.getRoot().replaceKey("/OutputIntents", intents);
    }
    writeDocument(pdf, PdfStreams::AsTheyAre, file);
}

}  // namespace Proof
