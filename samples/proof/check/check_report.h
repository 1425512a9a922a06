// What a check found, as lines, as JSON and as marks on a page.

#ifndef SAMPLES_PROOF_CHECK_CHECK_REPORT_H
#define SAMPLES_PROOF_CHECK_CHECK_REPORT_H

#include <functional>
#include <string>
#include <vector>

#include "samples/proof/check/drawing.h"
#include "samples/proof/check/outline_check.h"
#include "samples/proof/outlines.h"

namespace Proof {

struct CheckedPath {
    std::string element;
    int number;      // among all paths and shapes of the drawing, from 1
    std::string id;  // may be empty
    std::size_t contours;
    std::size_t points;  // that the walks deliver
    OutlineFindings result;
};

struct CheckReport {
    std::string input;
    double perUnit = 1;                 // distances of the findings a unit
    double xPerInch = 0, yPerInch = 0;  // units
    std::vector<CheckedPath> paths;
    bool cancelled = false;

    bool crosses() const;
};

struct CheckSettings {
    double flatness = 0;  // of curves, in user units; 0: see checkDrawing
    std::size_t limit = 10000;
    std::function<bool(double percent)> watch;  // false ends the check
};

/// Checks every path of a drawing by itself. A flatness of 0 stands for the
/// largest coordinate divided by 32768: 0.01 mm on an A4 page.
CheckReport checkDrawing(const std::string& input, const Drawing& drawing,
                         const CheckSettings& settings);

/// Checks all outlines of a traced page together. Its units are the findings'.
CheckReport checkOutlines(const std::string& input, const OutlinePage& page,
                          const CheckSettings& settings);

/// One line a finding, one a path on which intersect and the findings differ or
/// which has more findings than the limit, and one of sums.
std::string reportLines(const CheckReport& report);

/// The same as a JSON object.
std::string reportJson(const CheckReport& report);

/// The drawing as a page of hair lines.
OutlinePage drawingPage(const Drawing& drawing);

/// Appends a circle a finding, two for the ends of an overlap. Page coordinates
/// are (unit - left) * scale, and so for y.
void markFindings(const CheckReport& report, double left, double top, double scale,
                  OutlinePage& page);
/// For drawingPage's page, and for the traced one.
void markFindings(const CheckReport& report, const Drawing& drawing, OutlinePage& page);
void markFindings(const CheckReport& report, OutlinePage& page);

}  // namespace Proof

#endif
