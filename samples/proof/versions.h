// What --version prints.

#ifndef SAMPLES_PROOF_VERSIONS_H
#define SAMPLES_PROOF_VERSIONS_H

#include <string>

namespace Proof {

/// The program's version and those of the libraries it runs with.
std::string versionText();

}  // namespace Proof

#endif
