#include "samples/proof/console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "embedded/host.h"

namespace Proof {
namespace {

using namespace std::chrono_literals;

constexpr int kBarWidth = 30;

struct Look {
    const char* name;
    const char* colour;  // ECMA-48 select graphic rendition
};

// By MessageSeverity 0 to 4; what lies outside counts as an error, as it does
// in the library.
Look lookOf(Vaskel::MessageSeverity severity) {
    static constexpr Look kLooks[] = {{"note", "\033[36m"},
                                      {"note", "\033[36m"},
                                      {"warning", "\033[1;33m"},
                                      {"error", "\033[1;31m"},
                                      {"fatal error", "\033[1;31m"}};
    const int index = static_cast<int>(severity);
    return kLooks[index >= 0 && index <= 4 ? index : 3];
}

bool coloursWanted(bool terminal) {
    const char* off = std::getenv("NO_COLOR");
    const char* kind = std::getenv("TERM");
    return terminal && !(off && *off) && kind && std::strcmp(kind, "dumb") != 0;
}

int columns(std::FILE* stream) {
    struct winsize size = {};
    return ioctl(fileno(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::string minutes(double seconds) {
    const long whole = std::lround(std::ceil(seconds));
    const std::string rest = std::to_string(whole % 60);
    return std::to_string(whole / 60) + (rest.size() < 2 ? ":0" : ":") + rest;
}

void report(int severity, const std::string& text) {
    Vaskel::ShowInfoMessage(static_cast<Vaskel::MessageSeverity>(severity),
                            static_cast<Vaskel::MessageVolatility>(0), text);
}

}  // namespace

std::string progressLine(const std::string& task, double percent, double secondsLeft, int width) {
    const double shown = std::clamp(percent, 0.0, 100.0);
    const std::string number = std::to_string(std::lround(shown));
    const std::string share =
        "  " + std::string(3 - std::min<std::size_t>(3, number.size()), ' ') + number + " %";
    const int filled = static_cast<int>(shown / 100 * kBarWidth);
    const std::string bar = "  [" + std::string(static_cast<std::size_t>(filled), '#') +
                            std::string(static_cast<std::size_t>(kBarWidth - filled), ' ') + "]";
    const std::string left = secondsLeft < 0 ? "" : "  " + minutes(secondsLeft) + " left";
    const std::size_t room = static_cast<std::size_t>(std::max(width - 1, 8));
    for (const std::string& line : {task + bar + share + left, task + bar + share, task + share})
        if (line.size() <= room) return line;
    return number + " %";
}

Console::Console(std::FILE* stream, Colour colour)
    : mStream(stream), mTerminal(isatty(fileno(stream)) == 1) {
    mColour = colour == Colour::Auto ? coloursWanted(mTerminal) : colour == Colour::Always;
}

Console::~Console() { endProgress(); }

void Console::message(Vaskel::MessageSeverity severity, const std::string& text) {
    if (mQuiet && static_cast<int>(severity) < 2 && static_cast<int>(severity) >= 0) return;
    endProgress();
    const Look look = lookOf(severity);
    std::fprintf(mStream, "vaskel-proof: %s%s:%s %s\n", mColour ? look.colour : "", look.name,
                 mColour ? "\033[0m" : "", text.c_str());
    std::fflush(mStream);
}

void Console::prompt(const std::string& text) {
    endProgress();
    std::fputs(text.c_str(), mStream);
    std::fflush(mStream);
}

void Console::progress(const std::string& task, double percent) {
    if (!mTerminal) return;
    const Clock::time_point now = Clock::now();
    if (task != mTask) {
        mTask = task;
        mTaskStart = now;
    } else if (now - mLastShown < 100ms) {
        return;
    }
    mLastShown = now;
    const double seconds = std::chrono::duration<double>(now - mTaskStart).count();
    const double left = percent > 0 && seconds > 0.5 ? seconds * (100 - percent) / percent : -1;
    const std::string line = progressLine(task, percent, left, columns(mStream));
    std::fprintf(mStream, "\r%s\033[K", line.c_str());
    std::fflush(mStream);
    mShowing = true;
}

void Console::endProgress() {
    if (mShowing) std::fputs("\r\033[K", mStream);
    std::fflush(mStream);
    mShowing = false;
    mTask.clear();
}

MessagesOnConsole::MessagesOnConsole(Console& console) {
    mBefore = Vaskel::setAdvancedMessageHandler(
        [&console](const char* text, Vaskel::MessageSeverity severity, Vaskel::MessageVolatility) {
            console.message(severity, text);
        });
    Embedded::onDebugLine([&console](const char* line) {
        console.message(static_cast<Vaskel::MessageSeverity>(1), std::string("debug: ") + line);
    });
}

MessagesOnConsole::~MessagesOnConsole() {
    Embedded::onDebugLine(nullptr);
    Vaskel::setMessageHandler(mBefore);
}

void note(const std::string& text) { report(1, text); }
void warning(const std::string& text) { report(2, text); }
void error(const std::string& text) { report(3, text); }

}  // namespace Proof
