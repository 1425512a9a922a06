// What ends a command: one line for the user and the exit code.

#ifndef SAMPLES_PROOF_FAILURE_H
#define SAMPLES_PROOF_FAILURE_H

#include <stdexcept>
#include <string>

namespace Proof {

enum ExitCode : int {
    kExitDone = 0,
    kExitFailed = 1,   // an input cannot be read, an output cannot be written
    kExitUsage = 2,    // the command line makes no sense
    kExitFound = 3,    // a check found outlines that cross themselves
    kExitSignal = 128  // plus the number of the signal that cancelled
};

/// A command that cannot go on. The text is one line without a full stop,
/// the file first where there is one: "scan.tif: No such file or directory".
class Failure : public std::runtime_error {
 public:
    explicit Failure(const std::string& text, ExitCode code = kExitFailed)
        : std::runtime_error(text), mCode(code) {}
    ExitCode code() const { return mCode; }

 private:
    ExitCode mCode;
};

/// "FILE: REASON" with control characters of either shown as '?', so that a
/// file name or a damaged file cannot break the line or colour the terminal.
Failure fileFailure(const std::string& file, const std::string& reason);

/// The text with control characters replaced by '?'.
std::string oneLine(std::string text);

}  // namespace Proof

#endif
