#include "samples/proof/pdf_writer.h"

#include <algorithm>
#include <cmath>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>

#include "samples/proof/numbers.h"
#include "samples/proof/pdf_document.h"

namespace Proof {
namespace {

// Enough for the last unit of a page of ten million of them to stay in place.
constexpr int kMatrixDecimals = 12;
constexpr double kLargestPage = 14400;  // user units

double widthPt(const OutlinePage& page) { return page.width / page.xUnitsPerInch * 72; }
double heightPt(const OutlinePage& page) { return page.height / page.yUnitsPerInch * 72; }

// How many points a user unit has to be so that the page keeps to the limit.
int userUnit(const OutlinePage& page) {
    return std::max(
        1, static_cast<int>(std::ceil(std::max(widthPt(page), heightPt(page)) / kLargestPage)));
}

}  // namespace

std::string pdfPathOperators(const Outlines& outlines) {
    std::string text;
    text.reserve(outlines.pointCount() * 12);
    for (std::size_t i = 0; i < outlines.count(); ++i) {
        const char* operation = " m\n";
        for (const OutlinePoint& point : outlines.contour(i)) {
            appendInt(text, point.x);
            text += ' ';
            appendInt(text, point.y);
            text += operation;
            operation = " l\n";
        }
        text += "h\n";
    }
    return text;
}

std::string pdfPageMatrix(const OutlinePage& page) {
    const double unit = userUnit(page);
    return decimal(72 / page.xUnitsPerInch / unit, kMatrixDecimals) + " 0 0 " +
           decimal(-72 / page.yUnitsPerInch / unit, kMatrixDecimals) + " 0 " +
           decimal(heightPt(page) / unit, kMatrixDecimals);
}

std::string pdfStepOperators(std::span<const PathStep> steps) {
    std::string text;
    for (const PathStep& step : steps) {
        if (step.kind == PathStep::Close) {
            text += "h\n";
            continue;
        }
        if (step.kind == PathStep::Curve)
            for (const double value : {step.x1, step.y1, step.x2, step.y2})
                text += decimal(value, kStepDecimals) + " ";
        text += decimal(step.x, kStepDecimals) + " " + decimal(step.y, kStepDecimals) + " ";
        text += "mlc"[step.kind];
        text += '\n';
    }
    return text;
}

std::string pdfPageContent(const OutlinePage& page) {
    std::string content;
    if (page.outlines.count() > 0) content += pdfPathOperators(page.outlines) + "f*\n";
    const auto stroke = [&](const std::vector<PathStep>& steps, const char* colour, double inch) {
        if (!steps.empty())
            content += colour + decimal(inch * page.xUnitsPerInch, kStepDecimals) + " w\n" +
                       pdfStepOperators(steps) + "S\n";
    };
    stroke(page.lines, "0 G ", kHairlineInch);
    stroke(page.marks, "1 0 0 RG ", kMarkInch);
    if (content.empty()) return {};
    return "q\n" + pdfPageMatrix(page) + " cm\n" + content + "Q\n";
}

void writePdf(const OutlinePage& page, const std::string& title, std::optional<std::time_t> date,
              OutputFile& file) {
    QPDF pdf;
    pdf.emptyPDF();
    setDocumentInfo(pdf, {.title = title, .date = date});
    QPDFObjectHandle object = QPDFObjectHandle::parse("<< /Type /Page /Resources << >> >>");
    const int unit = userUnit(page);
    QPDFObjectHandle box = QPDFObjectHandle::newArray();
    for (const double edge : {0.0, 0.0, widthPt(page) / unit, heightPt(page) / unit})
        box.appendItem(QPDFObjectHandle::newReal(decimal(edge, 6)));
    object.replaceKey("/MediaBox", box);
    if (unit > 1) object.replaceKey("/UserUnit", QPDFObjectHandle::newInteger(unit));
    object.replaceKey("/Contents", QPDFObjectHandle::newStream(&pdf, pdfPageContent(page)));
    QPDFPageDocumentHelper(pdf).addPage(QPDFPageObjectHelper(pdf.makeIndirectObject(object)),
                                        false);
    writeDocument(pdf, PdfStreams::Compress, file);
}

}  // namespace Proof
