// What the user sees on standard error: messages with severity and colour,
// and a progress line on a terminal.

#ifndef SAMPLES_PROOF_CONSOLE_H
#define SAMPLES_PROOF_CONSOLE_H

#include <chrono>
#include <cstdio>
#include <string>

#include "vaskel/messages.h"

namespace Proof {

enum class Colour { Auto, Always, Never };

class Console {
 public:
    using Clock = std::chrono::steady_clock;

    /// Colour::Auto colours on a terminal that can, unless NO_COLOR is set.
    /// A progress line is shown only if stream is a terminal.
    Console(std::FILE* stream, Colour colour);
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    /// "vaskel-proof: warning: TEXT", on a line of its own.
    void message(Vaskel::MessageSeverity severity, const std::string& text);

    /// The beginning of a line, whose end the user types.
    void prompt(const std::string& text);

    /// Shows how far a task is, at most ten times a second. A new task begins
    /// a new estimate of the time left.
    void progress(const std::string& task, double percent);

    /// Clears the progress line.
    void endProgress();

    /// With true, messages below warnings are left out.
    void setQuiet(bool quiet) { mQuiet = quiet; }

    bool terminal() const { return mTerminal; }

 private:
    std::FILE* mStream;
    bool mTerminal;
    bool mColour;
    bool mQuiet = false;
    std::string mTask;
    Clock::time_point mTaskStart;
    Clock::time_point mLastShown;
    bool mShowing = false;
};

/// The progress line's text for a task, without cursor movement:
///   "tracing  [###########         ]  55 %  0:12 left"
/// secondsLeft below 0 is not known yet. width is the terminal's, in columns;
/// what does not fit is left out, the time first, then the bar.
std::string progressLine(const std::string& task, double percent, double secondsLeft, int width);

/// While it lives, the library's messages and the platform's debugger lines
/// go to the console; the former handlers come back at its end.
class MessagesOnConsole {
 public:
    explicit MessagesOnConsole(Console& console);
    ~MessagesOnConsole();
    MessagesOnConsole(const MessagesOnConsole&) = delete;
    MessagesOnConsole& operator=(const MessagesOnConsole&) = delete;

 private:
    boost::optional<Vaskel::MessageHandlerRetainer> mBefore;
};

/// Messages of the sample host go the library's way, as those of any module.
void note(const std::string& text);
void warning(const std::string& text);
void error(const std::string& text);

}  // namespace Proof

#endif
