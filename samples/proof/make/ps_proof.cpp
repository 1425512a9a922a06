#include "samples/proof/make/ps_proof.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "samples/proof/make/page_text.h"
#include "samples/proof/pdf_text.h"
#include "samples/proof/pdf_writer.h"

namespace Proof {
namespace {

// Text of a DSC comment: printable ASCII only.
std::string commentText(std::string text) {
    for (char& c : text)
        if (c < 32 || c > 126) c = '?';
    return "(" + text.substr(0, 180) + ")";
}

std::string resource(const Fonts::Type1Font& font, bool explicitEncoding) {
    const std::vector<unsigned char>& data = font.getPSData(explicitEncoding);
    const std::string name = font.getName();
    return "%%BeginResource: font " + name + "\n" + std::string(data.begin(), data.end()) +
           "%%EndResource\n";
}

// The array that the second font looks up while it is defined.
std::string hostEncoding(const Fonts::Type1Font& font) {
    std::string text =
        "userdict /DravixEncoding 256 array\n0 1 255 {1 index exch /.notdef put} for\n";
    for (int code = 0; code < 256; ++code)
        if (font.hasChar(static_cast<unsigned char>(code)))
            text += "dup " + std::to_string(code) + " /" +
                    font.getCharEncoding(static_cast<unsigned char>(code)) + " put\n";
    return text + "put\n";
}

std::string informationMark(const DocumentInfo& info) {
    const std::pair<const char*, std::string> entries[] = {{"Title", info.title},
                                                           {"Author", info.author},
                                                           {"Subject", info.subject},
                                                           {"Creator", "vaskel-proof"}};
    std::string text = "[";
    for (const auto& [key, value] : entries)
        if (!value.empty()) text += std::string(" /") + key + " " + hex(pdfText(value)) + "\n";
    return text + " /DOCINFO pdfmark\n";
}

constexpr const char* kProcedures =
    "%%BeginResource: procset VaskelProof 1.0 0\n"
    "/ProofDict 20 dict def ProofDict begin\n"
    "/m /moveto load def /l /lineto load def /h /closepath load def\n"
    "/re {4 2 roll moveto 1 index 0 rlineto 0 exch rlineto neg 0 rlineto closepath} bind def\n"
    "/tx {findfont exch scalefont setfont moveto show} bind def\n"
    "end\n"
    "/pdfmark where {pop} {userdict /pdfmark /cleartomark load put} ifelse\n"
    "%%EndResource\n";

}  // namespace

PsProof::PsProof(double width, double height, const FontSource& font,
                 const Fonts::Type1Font& withEncoding, const Fonts::Type1Font& withHostEncoding)
    : mWidth(width),
      mHeight(height),
      mFont(font),
      mWithEncoding(withEncoding),
      mWithHostEncoding(withHostEncoding) {}

void PsProof::fillArea(const Area& area, Rgb colour) {
    mBody += numbers({colour.r / 255.0, colour.g / 255.0, colour.b / 255.0}) + "setrgbcolor\n" +
             numbers({area.x, area.y, area.width, area.height}) + "re fill\n0 setgray\n";
}

void PsProof::frameArea(const Area& area) {
    mBody +=
        "0.25 setlinewidth " + numbers({area.x, area.y, area.width, area.height}) + "re stroke\n";
}

void PsProof::drawText(double x, double y, double size, const std::string& text) {
    const Fonts::Type1Font& font = mTexts++ % 2 == 0 ? mWithEncoding : mWithHostEncoding;
    mBody +=
        hex(mFont.encoded(text)) + " " + numbers({x, y, size}) + "/" + font.getName() + " tx\n";
}

void PsProof::drawOutlines(double x, double y, const OutlinePage& page) {
    if (page.outlines.count() == 0) return;
    mBody += "gsave " + numbers({x, y}) + "translate [" + pdfPageMatrix(page) +
             "] concat newpath\n" + pdfPathOperators(page.outlines) + "eofill grestore\n";
}

void PsProof::drawPicture(const Area& area, const Picture& picture) {
    const char* const decode[] = {"0 1 0 1 0 1 0 1", "0 1 0 1 0 1", "0 1"};
    const char* const space[] = {"/DeviceCMYK", "/DeviceRGB", "/DeviceGray"};
    const std::string data = ascii85(samplesOf(picture));
    std::string image = "<< /ImageType 1 /Width " + std::to_string(picture.width) + " /Height " +
                        std::to_string(picture.height) + " /BitsPerComponent 8 /Decode [" +
                        decode[picture.space] + "] /ImageMatrix [" + std::to_string(picture.width) +
                        " 0 0 -" + std::to_string(picture.height) + " 0 " +
                        std::to_string(picture.height) +
                        "] /DataSource currentfile /ASCII85Decode filter >> image\n" + data;
    if (image.back() != '\n') image += '\n';
    mBody += "gsave " + numbers({area.x, area.y}) + "translate " +
             numbers({area.width, area.height}) + "scale " + space[picture.space] +
             " setcolorspace\n";
    // Lines of a stream may begin with two percent signs: they are data.
    mBody += "%%BeginData: " + std::to_string(image.size()) + " ASCII Bytes\n" + image +
             "%%EndData\ngrestore\n";
}

void PsProof::linkArea(const Area& area, const std::string& url) {
    mBody += "[ /Rect [" + numbers({area.x, area.y, area.x + area.width, area.y + area.height}) +
             "] /Border [0 0 0]\n/Action << /Subtype /URI /URI " + hex(url) +
             " >> /Subtype /Link /ANN pdfmark\n";
}

void PsProof::write(const DocumentInfo& info, OutputFile& file) const {
    char created[40] = "";
    std::tm parts{};
    if (info.date && gmtime_r(&*info.date, &parts))
        std::strftime(created, sizeof created, "(%Y-%m-%d %H:%M:%S UTC)", &parts);
    const std::string box = std::to_string(static_cast<int>(std::ceil(mWidth))) + " " +
                            std::to_string(static_cast<int>(std::ceil(mHeight)));
    const std::string fonts = std::string("font ") + mWithEncoding.getName() + "\n%%+ font " +
                              mWithHostEncoding.getName();
    file.write("%!PS-Adobe-3.0\n%%Title: " + commentText(info.title) +
               "\n%%Creator: (VaskelLib)\n");
    if (created[0]) file.write(std::string("%%CreationDate: ") + created + "\n");
    file.write("%%LanguageLevel: 3\n%%DocumentData: Binary\n%%BoundingBox: 0 0 " + box +
               "\n%%HiResBoundingBox: 0 0 " + numbers({mWidth, mHeight}) +
               "\n%%Pages: 1\n%%DocumentSuppliedResources: procset VaskelProof 1.0 0\n%%+ " +
               fonts + "\n%%EndComments\n%%BeginProlog\n" + kProcedures +
               hostEncoding(mWithHostEncoding) + "%%EndProlog\n%%BeginSetup\n");
    file.write(informationMark(info));
    file.write(resource(mWithEncoding, true));
    file.write(resource(mWithHostEncoding, false));
    file.write("%%EndSetup\n%%Page: 1 1\n%%BeginPageSetup\n<< /PageSize [" +
               numbers({mWidth, mHeight}) +
               "] >> setpagedevice\nProofDict begin\n%%EndPageSetup\n");
    file.write(mBody);
    file.write("end showpage\n%%PageTrailer\n%%Trailer\n%%EOF\n");
}

}  // namespace Proof
