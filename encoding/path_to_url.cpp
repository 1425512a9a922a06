// URLs from slash-separated paths.

#include "vaskel/encoding/path_to_url.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

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

// The first slash from text on, where there is one: eight bytes at a time, since
// most components are short. Up to seven bytes behind the slash are read.
char* findSlash(char* text) {
    if (std::endian::native != std::endian::little) return std::strchr(text, '/');
    constexpr std::uint64_t ones = 0x0101010101010101;
    for (;; text += 8) {
        std::uint64_t word;
        std::memcpy(&word, text, 8);
        word ^= ones * '/';
        // The highest bit of the lowest byte that was a slash; of bytes above it
        // some may be set by a borrow.
        const std::uint64_t slashes = (word - ones) & ~word & (ones << 7);
        if (slashes != 0) return text + std::countr_zero(slashes) / 8;
    }
}

// The components of a text, which they are taken from in a copy: each is
// terminated where its slash stood, or that behind the text.
class Components {
 public:
    explicit Components(std::string_view text)
        : mLong(text.size() + kBehind > sizeof mShort ? new char[text.size() + kBehind] : nullptr),
          mNext(mLong ? mLong.get() : mShort),
          mEnd(mNext + text.size()) {
        std::memcpy(mNext, text.data(), text.size());
        std::memset(mEnd, 0, kBehind);
        *mEnd = '/';
    }

    // The next component; empty when there is none.
    std::string_view take() {
        while (*mNext == '/') ++mNext;
        if (mNext > mEnd) return {};
        char* const first = mNext;
        char* const end = findSlash(first);
        *end = '\0';
        mNext = end + 1;
        return {first, static_cast<std::size_t>(end - first)};
    }

 private:
    static constexpr std::size_t kBehind = 9;  // a slash and what findSlash may read, zeros
    char mShort[512];
    std::unique_ptr<char[]> mLong;
    char* mNext;
    char* mEnd;
};

// The URL as it grows. The host writes parts of it in place.
class Url {
 public:
    explicit Url(std::size_t expected) {
        if (expected > sizeof mShort) grow(expected);
    }

    // Where size bytes may be written; written says how many of them count.
    char* space(std::size_t size) {
        if (static_cast<std::size_t>(mEnd - mNext) < size) grow(size);
        return mNext;
    }
    void written(std::size_t size) { mNext += size; }

    void append(std::string_view text) {
        std::memcpy(space(text.size()), text.data(), text.size());
        written(text.size());
    }

    const char* terminated() {
        *space(1) = '\0';
        return mBegin;
    }

 private:
    [[gnu::noinline]] void grow(std::size_t more) {
        const auto used = static_cast<std::size_t>(mNext - mBegin);
        const std::size_t room = 2 * used + more;
        std::unique_ptr<char[]> longer(new char[room]);
        std::memcpy(longer.get(), mBegin, used);
        mLong = std::move(longer);
        mBegin = mLong.get();
        mNext = mBegin + used;
        mEnd = mBegin + room;
    }

    char mShort[kEncodedCapacity + 1024];
    std::unique_ptr<char[]> mLong;
    char* mBegin = mShort;
    char* mNext = mShort;
    char* mEnd = mShort + sizeof mShort;
};

void appendMiddle(const char* component, Url* url) {
    wchar_t wide[kWideCapacity];
    Orlune::UTF8ToUni16Char(component, wide, kWideCapacity);
    char* const encoded = url->space(kEncodedCapacity);
    const int length = Orlune::Uni16CharToURLEncoding(wide, encoded, kEncodedCapacity);
    encoded[length] = '/';  // over the terminator
    url->written(static_cast<std::size_t>(length) + 1);
}

void appendLeaf(std::string_view leaf, Url* url) {
    const std::size_t capacity = 3 * leaf.size() + 1;
    url->written(static_cast<std::size_t>(
        Orlune::UTF8ToURLEncoding(leaf.data(), url->space(capacity), capacity)));
}

}  // namespace

void PathToURL(const std::string& path, const std::string& defaultScheme,
               Orlune::FileSpecURL& out) {
    const SplitScheme split = splitScheme(path, defaultScheme);
    Components components(split.rest);
    std::string_view component = components.take();
    if (component.empty()) return;

    // A good guess: few characters are encoded.
    Url url(path.size() + path.size() / 2 + kEncodedCapacity);
    if (!split.scheme.empty()) {
        url.append(split.scheme);
        url.append("://");
    }
    const bool absolute = split.rest.starts_with('/');
    // The old URL goes before the host is asked for the new one. All that is
    // needed of path, which may belong to out, has been copied.
    out.Reset();

    std::string_view next = components.take();
    if (!next.empty()) {
        if (absolute) url.append("/");
        url.append(component);  // the host or volume, as it is
        url.append("/");
        component = next;
        while (!(next = components.take()).empty()) {
            appendMiddle(component.data(), &url);
            component = next;
        }
    }
    appendLeaf(component, &url);
    out = url.terminated();
}

}  // namespace Vaskel
