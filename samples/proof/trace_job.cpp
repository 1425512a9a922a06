#include "samples/proof/trace_job.h"

#include <algorithm>

#include "samples/proof/console.h"
#include "samples/proof/failure.h"
#include "samples/proof/ink_rows.h"
#include "samples/proof/interrupt.h"
#include "samples/proof/lengths.h"
#include "samples/proof/numbers.h"
#include "samples/proof/scan_reader.h"
#include "samples/proof/threshold.h"
#include "samples/proof/tracer.h"
#include "vaskel/units.h"

namespace Proof {
namespace {

constexpr double kAssumedPpi = 300;

// All lengths and numbers are read once before the scan is opened, so that a
// slip in them does not cost a pass over the page.
TraceSettings readSettings(const TraceOptions& options) {
    TraceSettings settings;
    settings.unitsPerPixel = options.exact ? 1 : options.grid;
    settings.minSize = readLength("--min-size", options.minSize);
    settings.tolerance = readLength("--tolerance", options.tolerance);
    settings.step = std::max(1, readLength("--step", options.step));
    settings.filter = options.filter;
    settings.smooth = options.smooth;
    if (options.exact) {
        settings.minSize = settings.tolerance = settings.filter = 0;
        settings.smooth = false;
    }
    return settings;
}

void checkOptions(const TraceOptions& options) {
    if (options.smooth && options.grid != 1)
        throw Failure("--smooth works on whole pixels: add --grid 1", kExitUsage);
    setLengthUnit(options.unit);
    setScanResolution(kAssumedPpi, options.grid);
    parseThreshold(options.threshold);
    if (!options.resolution.empty()) readNumber("--resolution", options.resolution);
    readSettings(options);
}

struct Resolution {
    double x;
    double y;
    bool assumed = false;
};

Resolution chooseResolution(const TraceOptions& options, const ScanInfo& info) {
    if (!options.resolution.empty()) {
        const double ppi = readNumber("--resolution", options.resolution);
        if (ppi < 1 || ppi > 100000)
            throw Failure("--resolution takes 1 to 100000 pixels per inch", kExitUsage);
        return {ppi, ppi};
    }
    if (info.xPpi > 0 && info.yPpi > 0) return {info.xPpi, info.yPpi};
    return {kAssumedPpi, kAssumedPpi, true};
}

std::string describe(const std::string& name, const ScanInfo& info, const Resolution& resolution,
                     std::optional<int> level) {
    std::string text = (name == "-" ? "standard input" : name) + ": " + info.format + ", " +
                       std::to_string(info.width) + " x " + std::to_string(info.height) +
                       " pixels at " + decimal(resolution.x, 2);
    if (resolution.x != resolution.y) text += " x " + decimal(resolution.y, 2);
    text += " ppi (" + lengthText(info.width / resolution.x) + " x " +
            lengthText(info.height / resolution.y) + " " + Vaskel::GetDistinctUnitString() + ")";
    if (level) text += ", ink below grey " + std::to_string(*level);
    if (info.pages > 1)
        text += ", page " + std::to_string(info.page) + " of " + std::to_string(info.pages);
    return oneLine(text);
}

}  // namespace

TracedScan traceScan(const TraceOptions& options, Console& console) {
    checkOptions(options);
    const auto source = openBytes(options.input);  // may wait for a pipe: Ctrl-C ends that
    const Interrupt interrupt;
    const auto reader =
        openScan(*source, options.page, [](const std::string& text) { warning(text); });
    const ScanInfo& info = reader->info();
    const Resolution resolution = chooseResolution(options, info);

    // Where the two resolutions differ, lengths follow the coarser one: less
    // is dropped and less is simplified.
    setScanResolution(std::min(resolution.x, resolution.y), options.exact ? 1 : options.grid);
    const TraceSettings settings = readSettings(options);
    const Orientation orientation(info.orientation, info.width * settings.unitsPerPixel,
                                  info.height * settings.unitsPerPixel);
    TracedScan traced;
    try {
        InkRows rows(*reader, parseThreshold(options.threshold), options.invert,
                     [&](double percent) {
                         console.progress("reading", percent);
                         return Interrupt::pending() == 0;
                     });
        TraceResult result = traceRows(rows, orientation, settings, [&](double percent) {
            console.progress("tracing", percent);
            return Interrupt::pending() == 0;
        });
        console.endProgress();
        traced.page.outlines = std::move(result.outlines);
        traced.cancelledBy = result.cancelled ? Interrupt::pending() : 0;
        traced.rows = result.rows;
        traced.description = describe(source->name(), info, resolution, rows.level());
    } catch (const InkRows::Cancelled&) {
        throw Failure("cancelled before tracing began; nothing was written",
                      static_cast<ExitCode>(kExitSignal + Interrupt::pending()));
    }
    if (resolution.assumed)
        note(oneLine(source->name() == "-" ? "standard input" : source->name()) +
             " states no resolution; " + decimal(kAssumedPpi, 0) +
             " ppi is assumed (--resolution sets it)");
    traced.allRows = info.height;
    traced.name = source->name();
    traced.modified = source->modified();
    traced.xPpi = orientation.swapsSides() ? resolution.y : resolution.x;
    traced.yPpi = orientation.swapsSides() ? resolution.x : resolution.y;
    traced.page.width = orientation.pageWidth();
    traced.page.height = orientation.pageHeight();
    traced.page.xUnitsPerInch = traced.xPpi * settings.unitsPerPixel;
    traced.page.yUnitsPerInch = traced.yPpi * settings.unitsPerPixel;
    return traced;
}

}  // namespace Proof
