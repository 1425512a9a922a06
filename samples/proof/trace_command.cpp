// vaskel-proof trace: a scanned page in, its outlines as SVG and PDF out.

#include <memory>
#include <optional>

#include "samples/proof/check/check_command.h"
#include "samples/proof/check/check_report.h"
#include "samples/proof/commands.h"
#include "samples/proof/console.h"
#include "samples/proof/failure.h"
#include "samples/proof/interrupt.h"
#include "samples/proof/numbers.h"
#include "samples/proof/page_files.h"
#include "samples/proof/trace_job.h"

namespace Proof {
namespace {

struct TraceCommand {
    TraceOptions options;
    std::vector<std::string> outputs;
    std::string format;  // "svg", "pdf" or empty: by the output's name
    bool force = false;  // older files are replaced unasked
    bool check = false;
    std::string json;
};

void printSummary(const TracedScan& traced, const TraceCommand& command) {
    const OutlinePage& page = traced.page;
    std::string text = traced.description + "\n" + grouped(page.outlines.count()) + " outlines, " +
                       grouped(page.outlines.pointCount()) + " points\n";
    for (const std::string& output : command.outputs) text += "wrote " + output + "\n";
    std::fputs(text.c_str(), stdout);
}

CheckReport checkTraced(TracedScan& traced, Console& console) {
    const Interrupt interrupt;
    const CheckReport report = checkOutlines(traced.name, traced.page, checkSettings(console));
    console.endProgress();
    if (report.cancelled) throw cancelledCheck();
    markFindings(report, traced.page);
    return report;
}

int runTrace(const TraceCommand& command, Console& console) {
    console.setQuiet(command.options.quiet);
    if (!command.check && !command.json.empty())
        throw Failure("--json takes what --check finds: add --check", kExitUsage);
    PageFiles files(command.outputs, command.format, command.json, command.force);
    TracedScan traced = traceScan(command.options, console);
    std::optional<CheckReport> report;
    if (command.check && traced.cancelledBy == 0) report = checkTraced(traced, console);

    const Interrupt interrupt;  // files are short work and are finished
    files.write(traced.page, traced.name, traced.modified,
                report ? reportJson(*report) : std::string());

    if (traced.cancelledBy != 0) {
        warning("cancelled after row " + grouped(static_cast<unsigned>(traced.rows)) + " of " +
                grouped(static_cast<unsigned>(traced.allRows)) +
                "; the outlines up to there were closed and written");
        return kExitSignal + traced.cancelledBy;
    }
    if (!files.toStdout()) {
        if (!command.options.quiet) printSummary(traced, command);
        if (report) std::fputs(reportLines(*report).c_str(), stdout);
    }
    return report && report->crosses() ? kExitFound : kExitDone;
}

void addScanOptions(CLI::App& app, TraceOptions& options) {
    const char* group = "The scan";
    app.add_option("INPUT", options.input, "PNG, TIFF, PBM or PGM file; - reads standard input")
        ->required()
        ->type_name("");
    app.add_option("--page", options.page, "page of a TIFF with several")
        ->type_name("N")
        ->capture_default_str()
        ->group(group);
    app.add_option("--resolution", options.resolution,
                   "pixels per inch, where the file states none or a wrong one")
        ->type_name("PPI")
        ->group(group);
    app.add_option("--threshold", options.threshold,
                   "greys below it are ink: otsu (found from the page), 0 to 255, or 0% to 100%")
        ->type_name("GREY")
        ->capture_default_str()
        ->group(group);
    app.add_flag("--invert", options.invert, "trace the paper instead of the ink")->group(group);
}

void addOutlineOptions(CLI::App& app, TraceOptions& options) {
    const char* group = "The outlines (LENGTH: 0.2mm, 4mil, 0.5pt, 3scanpix ...)";
    const auto length = [&](const char* name, std::string& text, const char* help) {
        app.add_option(name, text, help)->type_name("LENGTH")->capture_default_str()->group(group);
    };
    length("--min-size", options.minSize,
           "outlines at most so wide and so high are dropped, and lines less high than that");
    length("--tolerance", options.tolerance,
           "how far straight lines may be from the filtered outline");
    app.add_option("--filter", options.filter,
                   "order of the low-pass filter, 1 to 50, or 0 for none")
        ->type_name("N")
        ->check(CLI::Range(0, 50).description(""))
        ->capture_default_str()
        ->group(group);
    app.add_option("--grid", options.grid,
                   "coordinates a pixel, 1 to 64; 1 keeps outlines on pixel corners")
        ->type_name("N")
        ->check(CLI::Range(1, 64).description(""))
        ->capture_default_str()
        ->group(group);
    length("--step", options.step, "distance of the filter's samples along the outline");
    app.add_flag("--smooth", options.smooth,
                 "steps of one pixel are filled up to diagonals (with --grid 1)")
        ->group(group);
    app.add_flag("--exact", options.exact,
                 "every pixel edge as it stands: nothing dropped, filtered or simplified")
        ->group(group);
    app.add_option("--unit", options.unit, "unit of lengths without one, and of what is printed")
        ->type_name("UNIT")
        ->capture_default_str()
        ->group(group);
}

}  // namespace

void addTrace(CLI::App& app, Command& chosen) {
    const auto command = std::make_shared<TraceCommand>();
    CLI::App* trace = app.add_subcommand("trace", "trace a scanned page into outlines");
    trace->footer(
        "Ctrl-C stops tracing and writes the outlines closed so far.\n"
        "Example: vaskel-proof trace scan.tif -o scan.svg -o scan.pdf --min-size 0.2mm");
    addScanOptions(*trace, command->options);
    addOutlineOptions(*trace, command->options);
    const char* group = "The result";
    trace
        ->add_option("-o,--output", command->outputs,
                     "SVG or PDF file to write, by its name's end; may be given several times")
        ->required()
        ->type_name("FILE")
        ->allow_extra_args(false)
        ->group(group);
    trace->add_option("--format", command->format, "svg or pdf, whatever the names say")
        ->check(CLI::IsMember({"svg", "pdf"}).description(""))
        ->type_name("FORMAT")
        ->group(group);
    trace->add_flag("-f,--force", command->force, "replace older files without asking")
        ->group(group);
    trace
        ->add_flag("--check", command->check,
                   "list where outlines cross or touch themselves or each other, and mark the "
                   "places; see vaskel-proof check --help")
        ->group(group);
    trace->add_option("--json", command->json, "what --check finds, as JSON")
        ->type_name("FILE")
        ->group(group);
    trace->add_flag("-q,--quiet", command->options.quiet, "say nothing unless something is wrong")
        ->group(group);
    trace->final_callback([command, &chosen] {
        chosen = [command](Console& console) { return runTrace(*command, console); };
    });
}

}  // namespace Proof
