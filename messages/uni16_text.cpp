#include "messages/uni16_text.h"

#include <algorithm>
#include <cstddef>

#include "platform/orlune.h"

namespace Vaskel {

// A UTF-8 text of n bytes has at most n UTF-16 units.
Orlune::Core::uni16string uni16FromUTF8(const std::string& text) {
    Orlune::Core::uni16string units(text.size() + 1, L'\0');
    const int count = Orlune::UTF8ToUni16Char(text.c_str(), units.data(), units.size());
    units.resize(count > 0 ? std::min(static_cast<std::size_t>(count), text.size()) : 0);
    return units;
}

// A unit takes at most three bytes of UTF-8, a surrogate pair four.
std::string utf8FromUni16(const Orlune::Core::uni16string& text) {
    std::string bytes(3 * text.size() + 1, '\0');
    Orlune::Uni16CharToUTF8(text.c_str(), bytes.data(), bytes.size());
    const std::size_t end = bytes.find('\0');
    bytes.resize(std::min(end, 3 * text.size()));
    return bytes;
}

}  // namespace Vaskel
