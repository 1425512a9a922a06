// vaskel-proof: the sample host. It installs itself as the library's host
// (messages, questions, progress, cancellation) and runs one of its commands.

#include <csignal>
#include <cstdio>
#include <exception>
#include <new>

#include "samples/proof/commands.h"
#include "samples/proof/console.h"
#include "samples/proof/failure.h"
#include "samples/proof/questions.h"
#include "samples/proof/versions.h"

namespace {

using namespace Proof;

struct Arguments {
    Command command;
    Colour colour = Colour::Auto;
};

void describe(CLI::App& app, Arguments& arguments) {
    app.name("vaskel-proof");
    app.description("Makes outlines and proofs, and converts text, with VaskelLib.");
    app.footer(
        "vaskel-proof COMMAND --help tells more about a command.\n\n"
        "Exit codes: 0 done; 1 an input cannot be read or converted, or an output not written;\n"
        "2 the command line makes no sense; 3 a check found outlines that cross themselves;\n"
        "128 + n cancelled by signal n (Ctrl-C: 130).");
    app.require_subcommand(1);
    app.set_version_flag("--version", versionText());
    app.add_option("--color,--colour", arguments.colour,
                   "colours on standard error: auto (on a terminal), always or never")
        ->transform(
            CLI::CheckedTransformer(std::map<std::string, Colour>{{"auto", Colour::Auto},
                                                                  {"always", Colour::Always},
                                                                  {"never", Colour::Never}})
                .description(""))
        ->type_name("WHEN");
    app.fallthrough();
    addTrace(app, arguments.command);
    addMake(app, arguments.command);
    addConvert(app, arguments.command);
    addCheck(app, arguments.command);
}

int run(const Arguments& arguments, Console& console) {
    try {
        return arguments.command(console);
    } catch (const Failure& failure) {
        console.endProgress();
        error(failure.what());
        return failure.code();
    } catch (const std::bad_alloc&) {
        console.endProgress();
        error("there is not enough memory");
    } catch (const std::exception& problem) {
        console.endProgress();
        error(oneLine(problem.what()));
    }
    return kExitFailed;
}

int refuse(const CLI::App& app, const CLI::ParseError& problem) {
    std::string reason = problem.what();
    const std::vector<std::string> unknown = app.remaining();
    if (app.get_subcommands().empty() && !unknown.empty())
        reason = "there is no command \"" + unknown[0] + "\"";
    std::fprintf(stderr, "vaskel-proof: %s\nvaskel-proof --help tells how it is used\n",
                 oneLine(reason).c_str());
    return kExitUsage;
}

}  // namespace

int main(int argc, char** argv) {
    // A closed pipe and a full quota are write errors like any other.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    CLI::App app;
    Arguments arguments;
    describe(app, arguments);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& problem) {
        if (problem.get_exit_code() == 0) return app.exit(problem);
        return refuse(app, problem);
    }
    Console console(stderr, arguments.colour);
    const MessagesOnConsole messages(console);
    const QuestionsOnConsole questions(console);
    return run(arguments, console);
}
