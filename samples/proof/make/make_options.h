// What the user of vaskel-proof make chose.

#ifndef SAMPLES_PROOF_MAKE_MAKE_OPTIONS_H
#define SAMPLES_PROOF_MAKE_MAKE_OPTIONS_H

#include <string>

#include "samples/proof/make/choices.h"
#include "samples/proof/trace_job.h"
#include "vaskel/util.h"

namespace Proof {

struct MakeOptions {
    TraceOptions trace;
    std::string font = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
    std::string image;
    std::string cmykProfile;
    std::string rgbProfile;  // empty: sRGB
    std::string title = "VaskelLib proof";
    std::string author;
    std::string link;  // path or URL; empty: the scan's place; "none" for none
    std::string width = "148mm";
    std::string pictureResolution = "150";
    std::string intentName = "relative";
    int seed = Vaskel::noiseed;
    std::string pdf, ps, json;
    bool listChoices = false;
    bool force = false;  // older files are replaced unasked

    // The two choices among names, as they were made.
    Choice intent = intentChoice();
    Choice unit = unitChoice();
};

}  // namespace Proof

#endif
