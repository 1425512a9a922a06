#include "samples/proof/make/source_link.h"

#include <algorithm>
#include <filesystem>

#include "vaskel/encoding.h"

namespace Proof {
namespace {

// Whether the folder below the root is one, and may stand in a URL as it is
// (RFC 3986, section 2.3).
bool startsPlainly(const std::string& absolute) {
    const std::size_t end = absolute.find('/', 1);
    return end != std::string::npos &&
           std::all_of(absolute.begin() + 1, absolute.begin() + static_cast<std::ptrdiff_t>(end),
                       [](char c) {
                           return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                                  (c >= '0' && c <= '9') || c == '-' || c == '.' || c == '_' ||
                                  c == '~';
                       });
}

}  // namespace

std::string sourceUrl(const std::string& path) {
    Orlune::FileSpecURL url;
    if (path.find("://") != std::string::npos) {
        Vaskel::PathToURL(path, "", url);
    } else {
        const std::string absolute = std::filesystem::absolute(path).lexically_normal().string();
        Vaskel::PathToURL(startsPlainly(absolute) ? absolute : "localhost" + absolute, "file", url);
    }
    return url.GetURL();
}

}  // namespace Proof
