// vaskel-proof check: where the outlines of a drawing cross themselves.

#include "samples/proof/check/check_command.h"

#include <memory>

#include "samples/proof/byte_source.h"
#include "samples/proof/check/svg_reader.h"
#include "samples/proof/commands.h"
#include "samples/proof/interrupt.h"
#include "samples/proof/lengths.h"
#include "samples/proof/numbers.h"
#include "samples/proof/page_files.h"

namespace Proof {
namespace {

struct CheckCommand {
    std::string input;
    std::vector<std::string> outputs;
    std::string format;
    std::string json;
    std::string flatness;
    std::size_t limit = 10000;
    bool force = false;
    bool quiet = false;
};

int runCheck(const CheckCommand& command, Console& console) {
    console.setQuiet(command.quiet);
    CheckSettings settings = checkSettings(console);
    settings.limit = command.limit;
    if (!command.flatness.empty()) settings.flatness = readNumber("--flatness", command.flatness);
    const PageFiles files(command.outputs, command.format, command.json, command.force);
    const auto source = openBytes(command.input);
    const Interrupt interrupt;
    const Drawing drawing = readSvg(*source);
    if (drawing.lost > 0)
        note(oneLine(source->name()) + ": " + grouped(static_cast<unsigned>(drawing.lost)) +
             (drawing.lost == 1 ? " use element refers" : " use elements refer") +
             " to nothing in this file");
    if (drawing.paths.empty()) throw fileFailure(source->name(), "holds no path");
    const CheckReport report = checkDrawing(source->name(), drawing, settings);
    console.endProgress();
    if (report.cancelled) throw cancelledCheck();

    OutlinePage page;
    if (!command.outputs.empty()) {
        page = drawingPage(drawing);
        markFindings(report, drawing, page);
    }
    files.write(page, source->name(), source->modified(), reportJson(report));
    if (!files.toStdout()) {
        std::fputs(reportLines(report).c_str(), stdout);
        if (!command.quiet)
            for (const std::string& output : command.outputs)
                std::printf("wrote %s\n", output.c_str());
    }
    return report.crosses() ? kExitFound : kExitDone;
}

constexpr const char* kFooter =
    "A line a finding, with the place in the drawing's user units and the two lines that\n"
    "meet there: contours of a path and lines of a contour are counted from 0, as the\n"
    "library counts them; curves count as the lines that stand for them.\n"
    "\n"
    "  crossing  an outline passes to its other side (Vaskel::intcalc finds the place,\n"
    "            Vaskel::selint names the same lines)\n"
    "  touch     it comes up to itself and stays on its side; intcalc and selint count\n"
    "            that like a crossing\n"
    "  overlap   two lines share more than a point, which intcalc never reports\n"
    "\n"
    "Whether a path crosses itself at all is also asked of Vaskel::intersect, for which\n"
    "touches are none and overlaps are. Where two vertices meet, though, it looks at the\n"
    "neighbour at the first vertex of a line, also if the second one is there: it counts\n"
    "some touches and misses some passes, depending on the directions and the order of\n"
    "the contours. A line says so where it differs from the list.\n"
    "\n"
    "Exit code 3 when a path crosses itself by either, 0 when none does.\n"
    "Example: vaskel-proof check drawing.svg -o marked.pdf --json findings.json";

}  // namespace

CheckSettings checkSettings(Console& console) {
    CheckSettings settings;
    settings.watch = [&console](double percent) {
        console.progress("checking", percent);
        return Interrupt::pending() == 0;
    };
    return settings;
}

Failure cancelledCheck() {
    return Failure("cancelled during the check; nothing was written",
                   static_cast<ExitCode>(kExitSignal + Interrupt::pending()));
}

void addCheck(CLI::App& app, Command& chosen) {
    const auto command = std::make_shared<CheckCommand>();
    CLI::App* check = app.add_subcommand("check", "list where outlines of an SVG cross themselves");
    check->footer(kFooter);
    check
        ->add_option("INPUT", command->input,
                     "SVG file: paths, basic shapes and what use elements repeat, with all "
                     "transforms; - reads standard "
                     "input")
        ->required()
        ->type_name("");
    check
        ->add_option("--flatness", command->flatness,
                     "how far, in user units, lines may be from the curves that they stand for; "
                     "not given: the largest coordinate divided by 32768")
        ->type_name("UNITS");
    check->add_option("--limit", command->limit, "the most findings to list of a path")
        ->type_name("N")
        ->check(CLI::Range(1, 10000000).description(""))
        ->capture_default_str();
    const char* group = "The result";
    check
        ->add_option("-o,--output", command->outputs,
                     "SVG or PDF file to draw the findings into, by its name's end; may be given "
                     "several times")
        ->type_name("FILE")
        ->allow_extra_args(false)
        ->group(group);
    check->add_option("--format", command->format, "svg or pdf, whatever the names say")
        ->check(CLI::IsMember({"svg", "pdf"}).description(""))
        ->type_name("FORMAT")
        ->group(group);
    check->add_option("--json", command->json, "the findings as JSON; - writes standard output")
        ->type_name("FILE")
        ->group(group);
    check->add_flag("-f,--force", command->force, "replace older files without asking")
        ->group(group);
    check
        ->add_flag("-q,--quiet", command->quiet,
                   "say nothing but findings unless something is wrong")
        ->group(group);
    check->final_callback([command, &chosen] {
        chosen = [command](Console& console) { return runCheck(*command, console); };
    });
}

}  // namespace Proof
