#include "samples/proof/svg_writer.h"

#include "samples/proof/numbers.h"

namespace Proof {
namespace {

// Appends number, apart from a digit before it by its sign or a blank.
void appendNext(std::string& to, int number) {
    if (number >= 0) to += ' ';
    appendInt(to, number);
}

// Lines of one direction need their letter once.
void appendContour(std::string& to, std::span<const OutlinePoint> contour) {
    to += 'M';
    appendInt(to, contour[0].x);
    appendNext(to, contour[0].y);
    char letter = 0;
    for (std::size_t i = 1; i < contour.size(); ++i) {
        const int dx = contour[i].x - contour[i - 1].x;
        const int dy = contour[i].y - contour[i - 1].y;
        const char wanted = dy == 0 ? 'h' : dx == 0 ? 'v' : 'l';
        if (wanted != letter) {
            to += letter = wanted;
            appendInt(to, wanted == 'v' ? dy : dx);
        } else {
            appendNext(to, wanted == 'v' ? dy : dx);
        }
        if (wanted == 'l') appendNext(to, dy);
    }
    to += "z\n";
}

// The length of the UTF-8 sequence of a character that XML allows at text[at],
// or 0. Unicode 15, table 3-7.
std::size_t characterLength(const std::string& text, std::size_t at) {
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u;
    };
    const auto follows = [&](std::size_t i, unsigned low, unsigned high) {
        return byte(i) >= low && byte(i) <= high;
    };
    const unsigned lead = byte(at);
    if (lead < 0x80) return lead >= 0x20 || lead == 9 || lead == 10 || lead == 13 ? 1 : 0;
    if (lead >= 0xC2 && lead <= 0xDF) return follows(at + 1, 0x80, 0xBF) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        const bool second = follows(at + 1, lead == 0xE0 ? 0xA0 : 0x80, lead == 0xED ? 0x9F : 0xBF);
        const bool allowed = !(lead == 0xEF && byte(at + 1) == 0xBF && byte(at + 2) >= 0xBE);
        return second && allowed && follows(at + 2, 0x80, 0xBF) ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        const bool second = follows(at + 1, lead == 0xF0 ? 0x90 : 0x80, lead == 0xF4 ? 0x8F : 0xBF);
        return second && follows(at + 2, 0x80, 0xBF) && follows(at + 3, 0x80, 0xBF) ? 4 : 0;
    }
    return 0;
}

}  // namespace

std::string svgPathData(const Outlines& outlines) {
    std::string data;
    data.reserve(outlines.pointCount() * 8);
    for (std::size_t i = 0; i < outlines.count(); ++i) appendContour(data, outlines.contour(i));
    return data;
}

std::string svgStepData(std::span<const PathStep> steps) {
    std::string data;
    for (const PathStep& step : steps) {
        if (step.kind == PathStep::Close) {
            data += "z\n";
            continue;
        }
        data += "MLC"[step.kind];
        if (step.kind == PathStep::Curve)
            for (const double value : {step.x1, step.y1, step.x2, step.y2})
                data += decimal(value, kStepDecimals) + " ";
        data += decimal(step.x, kStepDecimals) + " " + decimal(step.y, kStepDecimals) + "\n";
    }
    return data;
}

std::string xmlText(const std::string& text) {
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = characterLength(text, at);
        if (length == 0)
            out += "\xEF\xBF\xBD";
        else if (text[at] == '&')
            out += "&amp;";
        else if (text[at] == '<')
            out += "&lt;";
        else if (text[at] == '>')
            out += "&gt;";
        else
            out.append(text, at, length);
        at += length ? length : 1;
    }
    return out;
}

namespace {

void writeStroke(const std::vector<PathStep>& steps, const char* colour, double width,
                 OutputFile& file) {
    if (steps.empty()) return;
    file.write("<path fill=\"none\" stroke=\"" + std::string(colour) + "\" stroke-width=\"" +
               decimal(width, kStepDecimals) + "\" d=\"\n");
    file.write(svgStepData(steps));
    file.write("\"/>\n");
}

}  // namespace

void writeSvg(const OutlinePage& page, const std::string& title, OutputFile& file) {
    const auto millimetres = [](int units, double perInch) {
        return decimal(units / perInch * 25.4, 6);
    };
    std::string head =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\"";
    head += " width=\"" + millimetres(page.width, page.xUnitsPerInch) + "mm\"";
    head += " height=\"" + millimetres(page.height, page.yUnitsPerInch) + "mm\"";
    head += " viewBox=\"0 0 " + std::to_string(page.width) + " " + std::to_string(page.height) +
            "\" preserveAspectRatio=\"none\">\n<title>";
    file.write(head + xmlText(title) +
               "</title>\n<path fill=\"#000\" fill-rule=\"evenodd\" d=\"\n");
    file.write(svgPathData(page.outlines));
    file.write("\"/>\n");
    writeStroke(page.lines, "#000", kHairlineInch * page.xUnitsPerInch, file);
    writeStroke(page.marks, "#f00", kMarkInch * page.xUnitsPerInch, file);
    file.write("</svg>\n");
}

}  // namespace Proof
