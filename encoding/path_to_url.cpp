// URLs from slash-separated paths.

#include "vaskel/encoding/path_to_url.h"

#include <cstddef>
#include <cstring>
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

// The components of a text, which they are taken from in place: each is
// terminated where its slash stood.
class Components {
 public:
    explicit Components(std::string* text) : mNext(text->data()), mEnd(mNext + text->size()) {}

    // The next component; empty when there is none.
    std::string_view take() {
        while (mNext != mEnd && *mNext == '/') ++mNext;
        const char* const first = mNext;
        void* const slash = std::memchr(mNext, '/', static_cast<std::size_t>(mEnd - mNext));
        char* const end = slash == nullptr ? mEnd : static_cast<char*>(slash);
        *end = '\0';  // also over the text's own terminator
        mNext = end + (end != mEnd);
        return {first, static_cast<std::size_t>(end - first)};
    }

 private:
    char* mNext;
    char* mEnd;
};

void appendMiddle(const char* component, std::string* url) {
    wchar_t wide[kWideCapacity];
    char encoded[kEncodedCapacity];
    Orlune::UTF8ToUni16Char(component, wide, kWideCapacity);
    const int length = Orlune::Uni16CharToURLEncoding(wide, encoded, kEncodedCapacity);
    encoded[length] = '/';
    url->append(encoded, static_cast<std::size_t>(length) + 1);
}

void appendLeaf(std::string_view leaf, std::string* url) {
    const std::size_t before = url->size();
    const std::size_t capacity = 3 * leaf.size() + 1;
    url->resize(before + capacity);
    const int length = Orlune::UTF8ToURLEncoding(leaf.data(), url->data() + before, capacity);
    url->resize(before + static_cast<std::size_t>(length));
}

}  // namespace

void PathToURL(const std::string& path, const std::string& defaultScheme,
               Orlune::FileSpecURL& out) {
    const SplitScheme split = splitScheme(path, defaultScheme);
    std::string text(split.rest);
    Components components(&text);
    std::string_view component = components.take();
    if (component.empty()) return;

    std::string url;
    url.reserve(path.size() + path.size() / 2);  // a good guess: few characters are encoded
    if (!split.scheme.empty()) url.append(split.scheme).append("://");
    std::string_view next = components.take();
    if (!next.empty()) {
        if (split.rest.starts_with('/')) url += '/';
        url.append(component) += '/';  // the host or volume, as it is
        component = next;
        while (!(next = components.take()).empty()) {
            appendMiddle(component.data(), &url);
            component = next;
        }
    }
    appendLeaf(component, &url);

    // Last, since path may belong to out.
    out.Reset();
    out = url.c_str();
}

}  // namespace Vaskel
