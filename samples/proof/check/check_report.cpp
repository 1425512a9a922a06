#include "samples/proof/check/check_report.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "embedded/document.h"
#include "samples/proof/check/marks.h"
#include "samples/proof/numbers.h"

namespace Proof {
namespace {

constexpr const char* kKinds[] = {"crossing", "touch", "overlap"};

CheckedPath checkObject(Pemmit::Object* object, std::string element, int number, std::string id,
                        const CheckSettings& settings, double percent, bool& cancelled) {
    CheckedPath path{std::move(element), number, std::move(id), 0, 0, {}};
    for (const Pemmit::Path* contour : contoursOf(object)) {
        ++path.contours;
        path.points += static_cast<std::size_t>(Pemmit::patsiz(contour));
    }
    path.result = checkOutline(object, settings.limit, [&] {
        if (settings.watch && !settings.watch(percent)) cancelled = true;
        return !cancelled;
    });
    return path;
}

std::string plural(std::size_t count, const char* one, const char* more) {
    return grouped(count) + " " + (count == 1 ? one : more);
}

std::string nameOf(const CheckedPath& path) {
    std::string name = path.element + " " + std::to_string(path.number);
    if (!path.id.empty()) name += " \"" + path.id + "\"";
    return name;
}

// As many decimals as tell two neighbours of the grid apart.
int decimalsOf(const CheckReport& report) {
    return static_cast<int>(std::ceil(std::log10(report.perUnit)));
}

std::string placeText(const CheckReport& report, Pemmit::PointBase<int> at) {
    const int decimals = decimalsOf(report);
    return decimal(at.x / report.perUnit, decimals) + " " +
           decimal(at.y / report.perUnit, decimals);
}

std::string lineText(const Finding::Line& line) {
    return "contour " + std::to_string(line.contour) + " line " + std::to_string(line.segment);
}

std::string findingText(const CheckReport& report, const Finding& finding) {
    std::string text = kKinds[finding.kind];
    if (finding.kind == Finding::Overlap)
        text += " from " + placeText(report, finding.at) + " to " + placeText(report, finding.to);
    else
        text += " at " + placeText(report, finding.at);
    text += ": " + lineText(finding.first) + ", " + lineText(finding.second);
    if (finding.kind != Finding::Overlap && !finding.confirmed) text += " (not by selint)";
    return text;
}

// What the list alone does not tell, or empty.
std::string verdictText(const OutlineFindings& result) {
    if (!result.complete) return "there may be more; the list ends here";
    const bool listed = result.count(Finding::Touch) < result.findings.size();
    if (result.intersects && !listed)
        return result.findings.empty() ? "crosses itself by intersect"
                                       : "crosses itself by intersect, which counts such a touch";
    if (!result.intersects && listed)
        return "does not cross itself by intersect, which misses such a place";
    return {};
}

nlohmann::json findingJson(const CheckReport& report, const Finding& finding) {
    nlohmann::json json;
    json["kind"] = kKinds[finding.kind];
    json["x"] = finding.at.x / report.perUnit;
    json["y"] = finding.at.y / report.perUnit;
    if (finding.kind == Finding::Overlap)
        json["to"] = {{"x", finding.to.x / report.perUnit}, {"y", finding.to.y / report.perUnit}};
    else
        json["selint"] = finding.confirmed;
    for (const Finding::Line& line : {finding.first, finding.second})
        json["lines"].push_back({{"contour", line.contour}, {"line", line.segment}});
    return json;
}

std::size_t sum(const CheckReport& report, Finding::Kind kind) {
    std::size_t count = 0;
    for (const CheckedPath& path : report.paths) count += path.result.count(kind);
    return count;
}

std::size_t crossingPaths(const CheckReport& report) {
    return static_cast<std::size_t>(
        std::count_if(report.paths.begin(), report.paths.end(),
                      [](const CheckedPath& path) { return path.result.crosses(); }));
}

// Page units a user unit: a power of two that gives the longer side about a
// million of them.
double pageScale(const Drawing& drawing) {
    return std::exp2(20 - std::ceil(std::log2(std::max(drawing.width, drawing.height))));
}

}  // namespace

bool CheckReport::crosses() const { return crossingPaths(*this) > 0; }

CheckReport checkDrawing(const std::string& input, const Drawing& drawing,
                         const CheckSettings& settings) {
    const Grid grid(drawing);
    const double flatness = settings.flatness > 0 ? settings.flatness : grid.extent() / 32768;
    CheckReport report{input, grid.perUnit(), drawing.xPerInch, drawing.yPerInch, {}, false};
    for (std::size_t i = 0; i < drawing.paths.size() && !report.cancelled; ++i) {
        const DrawnPath& path = drawing.paths[i];
        const double percent =
            100 * static_cast<double>(i) / static_cast<double>(drawing.paths.size());
        const ObjectPtr object = makeObject(path, grid, flatness);
        report.paths.push_back(checkObject(object.get(), path.element, static_cast<int>(i) + 1,
                                           path.id, settings, percent, report.cancelled));
        if (settings.watch && !settings.watch(percent)) report.cancelled = true;
    }
    return report;
}

CheckReport checkOutlines(const std::string& input, const OutlinePage& page,
                          const CheckSettings& settings) {
    Pemmit::Path* const compound = Embedded::makeCompound();
    const ObjectPtr object(compound);
    for (std::size_t i = 0; i < page.outlines.count(); ++i) {
        Pemmit::Path* const contour = Pemmit::patbeg();
        ObjectPtr owner(contour);
        for (const OutlinePoint& point : page.outlines.contour(i))
            Pemmit::patlin(contour, point.x, point.y);
        Pemmit::patendclo(contour);
        if (Embedded::addChild(compound, contour)) static_cast<void>(owner.release());
    }
    CheckReport report{input, 1, page.xUnitsPerInch, page.yUnitsPerInch, {}, false};
    report.paths.push_back(checkObject(object.get(), "path", 1, "", settings, 0, report.cancelled));
    return report;
}

std::string reportLines(const CheckReport& report) {
    std::string lines;
    std::size_t contours = 0, points = 0;
    for (const CheckedPath& path : report.paths) {
        for (const Finding& finding : path.result.findings)
            lines += nameOf(path) + ": " + findingText(report, finding) + "\n";
        const std::string verdict = verdictText(path.result);
        if (!verdict.empty()) lines += nameOf(path) + ": " + verdict + "\n";
        contours += path.contours;
        points += path.points;
    }
    lines += plural(report.paths.size(), "path", "paths") + ", " +
             plural(contours, "contour", "contours") + ", " + plural(points, "point", "points") +
             ": " + plural(crossingPaths(report), "path crosses itself", "paths cross themselves") +
             "; " + plural(sum(report, Finding::Crossing), "crossing", "crossings") + ", " +
             plural(sum(report, Finding::Touch), "touch", "touches") + ", " +
             plural(sum(report, Finding::Overlap), "overlap", "overlaps") + "\n";
    return lines;
}

std::string reportJson(const CheckReport& report) {
    nlohmann::json json;
    json["input"] = report.input;
    json["unitsPerInch"] = {{"x", report.xPerInch}, {"y", report.yPerInch}};
    json["crossings"] = sum(report, Finding::Crossing);
    json["touches"] = sum(report, Finding::Touch);
    json["overlaps"] = sum(report, Finding::Overlap);
    json["paths"] = nlohmann::json::array();
    for (const CheckedPath& path : report.paths) {
        nlohmann::json findings = nlohmann::json::array();
        for (const Finding& finding : path.result.findings)
            findings.push_back(findingJson(report, finding));
        json["paths"].push_back({{"element", path.element},
                                 {"number", path.number},
                                 {"id", path.id},
                                 {"contours", path.contours},
                                 {"points", path.points},
                                 {"crossesItself", path.result.crosses()},
                                 {"intersect", path.result.intersects},
                                 {"complete", path.result.complete},
                                 {"findings", findings}});
    }
    // An id may hold anything that XML does.
    return json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

OutlinePage drawingPage(const Drawing& drawing) {
    OutlinePage page;
    const double scale = pageScale(drawing);
    page.width = static_cast<int>(std::ceil(drawing.width * scale));
    page.height = std::max(1, static_cast<int>(std::ceil(drawing.height * scale)));
    page.width = std::max(1, page.width);
    page.xUnitsPerInch = drawing.xPerInch * scale;
    page.yUnitsPerInch = drawing.yPerInch * scale;
    for (const DrawnPath& path : drawing.paths)
        for (PathStep step : path.steps) {
            for (double* x : {&step.x, &step.x1, &step.x2}) *x = (*x - drawing.left) * scale;
            for (double* y : {&step.y, &step.y1, &step.y2}) *y = (*y - drawing.top) * scale;
            page.lines.push_back(step);
        }
    return page;
}

void markFindings(const CheckReport& report, double left, double top, double scale,
                  OutlinePage& page) {
    const int radius = markRadius(page);
    for (const CheckedPath& path : report.paths)
        for (const Finding& finding : path.result.findings)
            for (const Pemmit::PointBase<int> at : {finding.at, finding.to}) {
                appendCircle(page.marks, page, (at.x / report.perUnit - left) * scale,
                             (at.y / report.perUnit - top) * scale, radius);
                if (finding.kind != Finding::Overlap) break;
            }
}

void markFindings(const CheckReport& report, const Drawing& drawing, OutlinePage& page) {
    markFindings(report, drawing.left, drawing.top, pageScale(drawing), page);
}

void markFindings(const CheckReport& report, OutlinePage& page) {
    markFindings(report, 0, 0, 1, page);
}

}  // namespace Proof
