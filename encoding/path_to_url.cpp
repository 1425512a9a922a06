// URLs from slash-separated paths.

#include "vaskel/encoding/path_to_url.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "platform/orlune.h"

namespace Vaskel {
namespace {

// What a middle component may hold; the platform cuts longer ones.
constexpr std::size_t kWideCapacity = 1024;
constexpr std::size_t kEncodedCapacity = 9216;

struct SplitScheme {
    std::string_view scheme;
    std::string_view rest;
};

SplitScheme splitScheme(std::string_view path, std::string_view defaultScheme) {
    const std::size_t mark = path.find("://");
    SplitScheme split = mark == std::string_view::npos
                            ? SplitScheme{defaultScheme, path}
                            : SplitScheme{path.substr(0, mark), path.substr(mark + 3)};
    if (split.scheme.empty()) {
        const std::size_t open = path.find('<');
        if (open != std::string_view::npos && path.find(':', open) != std::string_view::npos)
            split.scheme = "file";
    }
    return split;
}

// Takes the next component from the front of *rest; empty when there is none.
std::string_view takeComponent(std::string_view* rest) {
    rest->remove_prefix(std::min(rest->find_first_not_of('/'), rest->size()));
    const std::string_view component = rest->substr(0, rest->find('/'));
    rest->remove_prefix(component.size());
    return component;
}

void appendMiddle(const std::string& component, std::string* url) {
    wchar_t wide[kWideCapacity];
    char encoded[kEncodedCapacity];
    Orlune::UTF8ToUni16Char(component.c_str(), wide, kWideCapacity);
    Orlune::Uni16CharToURLEncoding(wide, encoded, kEncodedCapacity);
    url->append(encoded);
}

void appendLeaf(const std::string& leaf, std::string* url) {
    const std::size_t before = url->size();
    const std::size_t capacity = 3 * leaf.size() + 1;
    url->resize(before + capacity);
    const int length = Orlune::UTF8ToURLEncoding(leaf.c_str(), url->data() + before, capacity);
    url->resize(before + static_cast<std::size_t>(length));
}

}  // namespace

void PathToURL(const std::string& path, const std::string& defaultScheme,
               Orlune::FileSpecURL& out) {
    const SplitScheme split = splitScheme(path, defaultScheme);
    std::string_view rest = split.rest;
    const bool absolute = rest.starts_with('/');
    std::string_view next = takeComponent(&rest);
    if (next.empty()) return;

    std::string url;
    url.reserve(path.size() + path.size() / 2);  // a good guess: few characters are encoded
    if (!split.scheme.empty()) url.append(split.scheme).append("://");
    std::string component;  // terminated, for the platform's functions
    for (bool first = true;; first = false) {
        component.assign(next);
        next = takeComponent(&rest);
        if (next.empty()) break;
        if (first) {
            if (absolute) url += '/';
            url += component;  // the host or volume, as it is
        } else {
            appendMiddle(component, &url);
        }
        url += '/';
    }
    appendLeaf(component, &url);

    // Last, since path may belong to out.
    out.Reset();
    out = url.c_str();
}

}  // namespace Vaskel
