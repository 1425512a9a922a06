// What a user of the proof can choose among, as the models of pop-ups.

#ifndef SAMPLES_PROOF_MAKE_CHOICES_H
#define SAMPLES_PROOF_MAKE_CHOICES_H

#include <string>
#include <vector>

#include "vaskel/util.h"

namespace Proof {

struct Choice {
    const char* option;  // of the command line: "--intent"
    const char* title;   // "rendering intent"
    Vaskel::PopupDataModel model;

    /// Chooses the entry of this text. Throws Failure (usage) that lists the
    /// entries where there is none.
    void choose(const std::string& text);

    /// The text of the chosen entry.
    std::string chosen() const;

    /// "perceptual  [relative]  saturation  absolute"
    std::string line() const;

    /// The title and the entries, one a line, the chosen one marked:
    ///   "rendering intent (--intent)\n    perceptual\n  * relative\n ..."
    std::string list() const;
};

/// The rendering intents, by the numbers that ICC.1 gives them; relative.
Choice intentChoice();

/// The units of lengths, by the library's numbers and names; mm.
Choice unitChoice();

}  // namespace Proof

#endif
