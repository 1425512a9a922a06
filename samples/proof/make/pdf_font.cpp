#include "samples/proof/make/pdf_font.h"

#include <algorithm>
#include <cstdio>

namespace Proof {
namespace {

QPDFObjectHandle integer(int value) { return QPDFObjectHandle::newInteger(value); }

// The codes as characters (ISO 32000-1, 9.10.3), so that text can be copied out.
std::string toUnicode(const FontSource& source) {
    std::string text =
        "/CIDInit /ProcSet findresource begin\n12 dict begin\nbegincmap\n"
        "/CIDSystemInfo << /Registry (Adobe) /Ordering (UCS) /Supplement 0 >> def\n"
        "/CMapName /Adobe-Identity-UCS def\n/CMapType 2 def\n"
        "1 begincodespacerange\n<00> <FF>\nendcodespacerange\n";
    const std::vector<FontChar>& chars = source.chars();
    constexpr std::size_t kBlock = 100;  // entries a block, the format's limit
    char line[40];
    for (std::size_t begin = 0; begin < chars.size(); begin += kBlock) {
        const std::size_t end = std::min(begin + kBlock, chars.size());
        text += std::to_string(end - begin) + " beginbfchar\n";
        for (std::size_t i = begin; i < end; ++i) {
            const auto c = static_cast<unsigned>(chars[i].character);
            if (c > 0xFFFF)
                std::snprintf(line, sizeof line, "<%02X> <%04X%04X>\n", chars[i].code,
                              0xD800 + ((c - 0x10000) >> 10), 0xDC00 + ((c - 0x10000) & 0x3FF));
            else
                std::snprintf(line, sizeof line, "<%02X> <%04X>\n", chars[i].code, c);
            text += line;
        }
        text += "endbfchar\n";
    }
    return text + "endcmap\nCMapName currentdict /CMap defineresource pop\nend\nend\n";
}

QPDFObjectHandle descriptorOf(QPDF& pdf, const Fonts::Type1Font& font) {
    QPDFObjectHandle descriptor =
        QPDFObjectHandle::parse("<< /Type /FontDescriptor /Flags 4 /ItalicAngle 0 /StemV 80 >>");
    descriptor.replaceKey("/FontName",
                          QPDFObjectHandle::newName(std::string("/") + font.getName()));
    descriptor.replaceKey("/Ascent", integer(font.getAscent()));
    descriptor.replaceKey("/Descent", integer(font.getDescent()));
    descriptor.replaceKey("/CapHeight", integer(font.getCapHeight()));
    // The library's boxes have their y axis downwards.
    const Fonts::Rectangle box = font.getBoundingBox();
    QPDFObjectHandle array = QPDFObjectHandle::newArray();
    for (const int edge : {box.left, -box.bottom, box.right, -box.top})
        array.appendItem(integer(edge));
    descriptor.replaceKey("/FontBBox", array);

    const std::vector<unsigned char>& data = font.getData();
    QPDFObjectHandle file =
        QPDFObjectHandle::newStream(&pdf, std::string(data.begin(), data.end()));
    file.getDict().replaceKey("/Length1", integer(font.getHeaderLength()));
    file.getDict().replaceKey("/Length2", integer(font.getCharProcsLength()));
    file.getDict().replaceKey("/Length3", integer(font.getZeroesLength()));
    descriptor.replaceKey("/FontFile", pdf.makeIndirectObject(file));
    return pdf.makeIndirectObject(descriptor);
}

}  // namespace

QPDFObjectHandle pdfFont(QPDF& pdf, const FontSource& source, const Fonts::Type1Font& font,
                         bool embed) {
    QPDFObjectHandle dict = QPDFObjectHandle::parse("<< /Type /Font /Subtype /Type1 >>");
    dict.replaceKey("/BaseFont", QPDFObjectHandle::newName(std::string("/") + font.getName()));
    dict.replaceKey("/FirstChar", integer(0));
    dict.replaceKey("/LastChar", integer(255));
    QPDFObjectHandle widths = QPDFObjectHandle::newArray();
    QPDFObjectHandle differences = QPDFObjectHandle::newArray();
    for (int code = 0; code < 256; ++code) {
        const auto c = static_cast<unsigned char>(code);
        widths.appendItem(integer(font.getCharWidth(c)));
        if (!font.hasChar(c)) continue;
        differences.appendItem(integer(code));
        differences.appendItem(
            QPDFObjectHandle::newName(std::string("/").append(font.getCharEncoding(c))));
    }
    dict.replaceKey("/Widths", widths);
    QPDFObjectHandle encoding = QPDFObjectHandle::parse("<< /Type /Encoding >>");
    encoding.replaceKey("/Differences", differences);
    dict.replaceKey("/Encoding", encoding);
    if (embed) dict.replaceKey("/FontDescriptor", descriptorOf(pdf, font));
    dict.replaceKey("/ToUnicode",
                    pdf.makeIndirectObject(QPDFObjectHandle::newStream(&pdf, toUnicode(source))));
    return pdf.makeIndirectObject(dict);
}

}  // namespace Proof
