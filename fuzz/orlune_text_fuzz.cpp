// The embedded platform's text conversions on any bytes and any capacity: what
// goes there and back is the same, what is cut is the beginning of the whole.
//
// Input: a capacity, the text.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "platform/orlune/text.h"

namespace {

void require(bool kept) {
    if (!kept) std::abort();
}

// A conversion into memory of exactly capacity elements.
template <class Char, class From>
std::basic_string<Char> convert(int (*conversion)(const From*, Char*, std::size_t),
                                const From* from, std::size_t capacity) {
    const std::unique_ptr<Char[]> out(new Char[capacity]);
    const int count = conversion(from, out.get(), capacity);
    require(count >= 0 && static_cast<std::size_t>(count) < capacity);
    require(out[static_cast<std::size_t>(count)] == 0);
    return {out.get(), static_cast<std::size_t>(count)};
}

std::string decoded(const std::string& url) {
    std::string bytes;
    for (std::size_t i = 0; i < url.size(); ++i) {
        if (url[i] != '%') {
            bytes += url[i];
            continue;
        }
        require(i + 2 < url.size());
        bytes += static_cast<char>(std::strtol(url.substr(i + 1, 2).c_str(), nullptr, 16));
        i += 2;
    }
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::size_t capacity = data[0] % 32 + 1u;
    const std::string text(reinterpret_cast<const char*>(data + 1),
                           strnlen(reinterpret_cast<const char*>(data + 1), size - 1));
    const std::size_t enough = 3 * text.size() + 1;

    const std::string url = convert(Orlune::UTF8ToURLEncoding, text.c_str(), enough);
    require(decoded(url) == text);
    const std::string cutUrl = convert(Orlune::UTF8ToURLEncoding, text.c_str(), capacity);
    require(url.compare(0, cutUrl.size(), cutUrl) == 0);

    const std::wstring units = convert(Orlune::UTF8ToUni16Char, text.c_str(), text.size() + 1);
    const std::wstring cutUnits = convert(Orlune::UTF8ToUni16Char, text.c_str(), capacity);
    require(units.compare(0, cutUnits.size(), cutUnits) == 0);
    if (units.empty()) return 0;  // refused, or no text

    require(convert(Orlune::Uni16CharToUTF8, units.c_str(), 3 * units.size() + 1) == text);
    require(convert(Orlune::Uni16CharToURLEncoding, units.c_str(), enough) == url);
    require(convert(Orlune::Uni16CharToURLEncoding, units.c_str(), capacity) == cutUrl);
    // What was cut is whole characters: each part converts by itself.
    const std::string part = convert(Orlune::Uni16CharToUTF8, units.c_str(), capacity);
    require(text.compare(0, part.size(), part) == 0);
    require(part.empty() ||
            !convert(Orlune::UTF8ToUni16Char, part.c_str(), part.size() + 1).empty());
    require(cutUnits.empty() ||
            !convert(Orlune::Uni16CharToUTF8, cutUnits.c_str(), 3 * cutUnits.size() + 1).empty());
    require(cutUrl.empty() ||
            !convert(Orlune::UTF8ToUni16Char, decoded(cutUrl).c_str(), cutUrl.size() + 1).empty());
    return 0;
}
