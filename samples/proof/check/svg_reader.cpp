#include "samples/proof/check/svg_reader.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "samples/proof/check/svg_references.h"
#include "samples/proof/check/svg_walk.h"
#include "samples/proof/check/xml_tree.h"
#include "samples/proof/failure.h"

namespace Proof {
namespace {

bool isSvg(const xmlNode* root) {
    const auto text = [](const xmlChar* name) { return reinterpret_cast<const char*>(name); };
    return root->ns && std::strcmp(text(root->ns->href), kSvgNamespace) == 0 &&
           std::strcmp(text(root->name), "svg") == 0;
}

// Whether both sides of the outermost element are stated other than as a share
// of a page that is not known.
bool hasSize(xmlNode* root) {
    for (const char* side : {"width", "height"}) {
        xmlChar* const text = xmlGetNoNsProp(root, reinterpret_cast<const xmlChar*>(side));
        const bool stated = text && !std::strchr(reinterpret_cast<const char*>(text), '%');
        xmlFree(text);
        if (!stated) return false;
    }
    return true;
}

// The box of all paths and their control points, with a margin.
void frameAllPaths(Drawing& drawing) {
    double low[2] = {kFarthest, kFarthest}, high[2] = {-kFarthest, -kFarthest};
    const auto take = [&](double x, double y) {
        for (const int axis : {0, 1}) {
            low[axis] = std::min(low[axis], axis == 0 ? x : y);
            high[axis] = std::max(high[axis], axis == 0 ? x : y);
        }
    };
    for (const DrawnPath& path : drawing.paths)
        for (const PathStep& step : path.steps) {
            take(step.x, step.y);
            if (step.kind == PathStep::Curve) take(step.x1, step.y1), take(step.x2, step.y2);
        }
    const double side = std::max(high[0] - low[0], high[1] - low[1]);
    const double margin = side > 0 ? 0.05 * side : 1;
    drawing.left = low[0] - margin;
    drawing.top = low[1] - margin;
    drawing.width = high[0] - low[0] + 2 * margin;
    drawing.height = high[1] - low[1] + 2 * margin;
    // 96 pixels an inch, as CSS has them, unless that makes no page.
    const double inches = (side + 2 * margin) / 96;
    drawing.xPerInch = drawing.yPerInch =
        inches > 0.1 && inches < 200 ? 96 : (side + 2 * margin) / 10;
}

// The visible part: what the outermost element shows of its user units. Where
// that is not stated, or no page that can be drawn, all paths.
void frame(Drawing& drawing, const Matrix& toPixels, bool sized) {
    const double pixels[] = {drawing.width, drawing.height};
    frameAllPaths(drawing);
    if (!sized || !(pixels[0] > 0 && pixels[1] > 0 && toPixels.a > 0 && toPixels.d > 0)) return;
    const double left = -toPixels.e / toPixels.a, top = -toPixels.f / toPixels.d;
    const double width = pixels[0] / toPixels.a, height = pixels[1] / toPixels.d;
    const double side = std::max(width, height), inches = std::max(pixels[0], pixels[1]) / 96;
    const double reach = std::max({std::abs(left), std::abs(top), std::abs(drawing.left),
                                   std::abs(drawing.top), drawing.width, drawing.height});
    if (!(inches > 0.01 && inches < 10000 && side > 1e-9 && reach < 1e6 * side)) return;
    if (!(std::min(width, height) > 1e-6 * side &&
          std::max(toPixels.a, toPixels.d) < 1e6 * std::min(toPixels.a, toPixels.d)))
        return;
    drawing.left = left;
    drawing.top = top;
    drawing.width = width;
    drawing.height = height;
    drawing.xPerInch = 96 / toPixels.a;
    drawing.yPerInch = 96 / toPixels.d;
}

}  // namespace

Drawing readSvg(const std::string& name, std::span<const unsigned char> bytes) {
    if (bytes.size() > 1 && bytes[0] == 0x1F && bytes[1] == 0x8B)
        throw fileFailure(name, "is compressed; gunzip unpacks it");
    const XmlDocument document = readXml(name, bytes);
    xmlNode* const root = xmlDocGetRootElement(document.get());
    if (!isSvg(root)) throw fileFailure(name, "is XML, but no SVG: its outermost element is none");
    Drawing drawing;
    try {
        const Matrix toPixels = walkSvg(root, drawing);
        if (!drawing.paths.empty()) frame(drawing, toPixels, hasSize(root));
    } catch (const SvgProblem& problem) {
        throw fileFailure(name, "line " + std::to_string(problem.line) + ": " + problem.text);
    }
    return drawing;
}

Drawing readSvg(ByteSource& source) {
    if (source.size() > std::numeric_limits<int>::max())
        throw fileFailure(source.name(), "is larger than 2 GB");
    std::vector<unsigned char> bytes(static_cast<std::size_t>(source.size()));
    bytes.resize(source.readAt(0, bytes.data(), bytes.size()));
    return readSvg(source.name(), bytes);
}

}  // namespace Proof
