// URLs from slash-separated paths.

#ifndef VASKEL_ENCODING_PATH_TO_URL_H
#define VASKEL_ENCODING_PATH_TO_URL_H

#include <string>

#include "platform/orlune/url.h"
#include "vaskel/export.h"

namespace Vaskel {

/// Makes the URL of a slash-separated path in UTF-8 and stores it in out.
///
/// The scheme is what stands before the first "://" in path, also when that is
/// nothing; without "://" it is defaultScheme. Where it is empty, a "<" in the
/// path with a ":" anywhere behind it makes it "file", and otherwise the URL
/// has no "://". The rest of path is split at "/", where runs count as one. The
/// first of several components, a host or volume, stays as it is; all others
/// are percent-encoded (RFC 3986 section 2.1) with Orlune's functions.
///
///   "/Volumes/disk/a b.txt", "file"  is file:///Volumes/disk/a%20b.txt
///   "a/name", "file"                 is file://a/name
///   "/name" and "name", "file"       are file://name
///   "http://server/my dir/x", ""     is http://server/my%20dir/x
///   "http://server/", ""             is http://server
///
/// A path with nothing but slashes behind the scheme, or nothing at all, leaves
/// out alone. A component between the first and the last that is not
/// well-formed UTF-8 becomes empty; one of more than 1023 UTF-16 units is cut. A
/// zero byte ends the component that is to be encoded; in the scheme or in the
/// first of several components it ends the URL.
///
/// path may be the text of out itself, which is reset before the components are
/// encoded. Memory that ends throws std::bad_alloc and leaves out alone or reset.
/// Cost is linear in the path. Keeps no state: safe on any thread.
VASKEL_API void PathToURL(const std::string& path, const std::string& defaultScheme,
                          Orlune::FileSpecURL& out);

}  // namespace Vaskel

#endif
