// The commands of vaskel-proof. Each adds itself to the command line and
// leaves behind what is to run when it was chosen.

#ifndef SAMPLES_PROOF_COMMANDS_H
#define SAMPLES_PROOF_COMMANDS_H

#include <CLI/CLI.hpp>
#include <functional>

namespace Proof {

class Console;

/// What a chosen command does; returns the exit code, throws Failure.
using Command = std::function<int(Console&)>;

/// trace INPUT -o OUT...: outlines of a scanned page as SVG and PDF.
void addTrace(CLI::App& app, Command& chosen);

/// make -o PROOF.pdf: a proof of a scan, a font, a picture and colours.
void addMake(CLI::App& app, Command& chosen);

/// convert [INPUT] --to FORM: text from one Unicode form to another.
void addConvert(CLI::App& app, Command& chosen);

/// check INPUT.svg: where the outlines of a drawing cross themselves.
void addCheck(CLI::App& app, Command& chosen);

}  // namespace Proof

#endif
