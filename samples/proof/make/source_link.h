// Where the proof's link leads.

#ifndef SAMPLES_PROOF_MAKE_SOURCE_LINK_H
#define SAMPLES_PROOF_MAKE_SOURCE_LINK_H

#include <string>

namespace Proof {

/// The percent-encoded URL of a file, or of a place with its scheme given, made
/// by the library:
///
///   "/jobs/me/a b.tif"          file:///jobs/me/a%20b.tif
///   "/My Scans/a.tif"           file://localhost/My%20Scans/a.tif
///   "http://server/jobs/a b"    http://server/jobs/a%20b
///
/// The library keeps the first of several components as it is, for it may be a
/// server: a folder that needs encoding gets localhost in front, which is the
/// same place (RFC 8089, section 2). Relative paths begin at the working folder.
std::string sourceUrl(const std::string& path);

}  // namespace Proof

#endif
