// Whether older files may be replaced: one question for all outputs.

#ifndef SAMPLES_PROOF_OVERWRITE_H
#define SAMPLES_PROOF_OVERWRITE_H

#include <string>
#include <vector>

namespace Proof {

/// Returns if none of the outputs replaces a file, or force says that it may,
/// or the user says so when asked, once for all of them. Throws Failure that
/// names the files otherwise. Standard output ("-"), devices and pipes replace
/// nothing.
void requirePermission(const std::vector<std::string>& outputs, bool force);

}  // namespace Proof

#endif
