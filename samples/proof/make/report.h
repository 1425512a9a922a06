// What stands in a proof, in numbers, for programs that check it.

#ifndef SAMPLES_PROOF_MAKE_REPORT_H
#define SAMPLES_PROOF_MAKE_REPORT_H

#include <string>

#include "samples/proof/make/make_options.h"
#include "samples/proof/make/proof_page.h"

namespace Proof {

/// The report as JSON.
std::string report(const MakeOptions& options, const ProofContent& content,
                   const ProofLayout& layout, const FontSource& source,
                   const Fonts::Type1Font& font, bool embedded);

}  // namespace Proof

#endif
