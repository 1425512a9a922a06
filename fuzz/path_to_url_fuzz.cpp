// PathToURL: the text up to the first zero byte is the path. The URL has the
// scheme that it should, as many components as the path, and a leaf that holds
// no byte but unreserved ones and triples; otherwise the old one is untouched.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "vaskel/encoding.h"

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string path(reinterpret_cast<const char*>(data), size);
    path.resize(std::strlen(path.c_str()));
    Orlune::FileSpecURL url;
    url = "kept";
    Vaskel::PathToURL(path, "default", url);
    const std::string got = url.GetURL();

    const std::size_t mark = path.find("://");
    const std::string rest = mark == std::string::npos ? path : path.substr(mark + 3);
    if (rest.find_first_not_of('/') == std::string::npos) {
        require(got == "kept");
        return 0;
    }
    const std::string scheme = mark == std::string::npos ? "default" : path.substr(0, mark);
    if (!scheme.empty()) require(got.compare(0, scheme.size() + 3, scheme + "://") == 0);

    const std::string leaf = got.substr(got.find_last_of('/') + 1);
    const auto plain = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               std::strchr("-._~%", c) != nullptr;
    };
    require(!leaf.empty() && std::all_of(leaf.begin(), leaf.end(), plain));
    return 0;
}
