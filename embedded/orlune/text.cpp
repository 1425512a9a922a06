#include "platform/orlune/text.h"

#include <uriparser/Uri.h>
#include <utf8cpp/utf8.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <string>

namespace Orlune {
namespace {

int counted(std::size_t n) { return static_cast<int>(std::min<std::size_t>(n, INT_MAX)); }

// Empties out and reports the failure.
template <class Char>
int refused(Char* out) {
    out[0] = 0;
    return 0;
}

// The UTF-8 form of 16-bit text; false for what is no UTF-16.
bool toUTF8(const wchar_t* text, std::string& utf8) {
    std::u16string units;
    for (; *text != 0; ++text) {
        if (static_cast<std::uint32_t>(*text) > 0xFFFF) return false;
        units.push_back(static_cast<char16_t>(*text));
    }
    try {
        utf8 = utf8::utf16to8(units);
    } catch (const utf8::exception&) {
        return false;
    }
    return true;
}

// Copies whole pieces of text while they fit before the terminator. lengthOf
// gives the length of the piece that begins at a position.
template <class LengthOf>
int copyPieces(const std::string& text, char* out, std::size_t capacity, LengthOf lengthOf) {
    std::size_t end = 0;
    while (end < text.size()) {
        const std::size_t length = lengthOf(text, end);
        if (end + length >= capacity) break;
        end += length;
    }
    std::memcpy(out, text.data(), end);
    out[end] = '\0';
    return counted(end);
}

std::size_t characterLength(const std::string& text, std::size_t at) {
    std::size_t end = at + 1;
    while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) ++end;
    return end - at;
}

// The byte that a %XX triple stands for, or 0 where there is none.
unsigned encodedByte(const std::string& text, std::size_t at) {
    if (at + 3 > text.size() || text[at] != '%') return 0;
    const auto digit = [](char c) {
        return static_cast<unsigned>(c <= '9' ? c - '0' : c - 'A' + 10);
    };
    return digit(text[at + 1]) * 16 + digit(text[at + 2]);
}

// The triples of one character stay together; what is malformed goes by bytes.
std::size_t encodedLength(const std::string& text, std::size_t at) {
    const unsigned first = encodedByte(text, at);
    if (first == 0) return 1;
    const std::size_t bytes = first < 0xC0 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    std::size_t end = at + 3;
    while (end < at + 3 * bytes && (encodedByte(text, end) & 0xC0) == 0x80) end += 3;
    return end - at;
}

}  // namespace

int UTF8ToUni16Char(const char* utf8, wchar_t* out, std::size_t capacity) {
    if (capacity == 0) return 0;
    const char* const end = utf8 + std::strlen(utf8);
    if (utf8::find_invalid(utf8, end) != end) return refused(out);
    std::size_t count = 0;
    while (utf8 != end) {
        const std::uint32_t character = utf8::unchecked::next(utf8);
        const std::size_t units = character > 0xFFFF ? 2 : 1;
        if (count + units >= capacity) break;
        if (units == 1) {
            out[count] = static_cast<wchar_t>(character);
        } else {
            out[count] = static_cast<wchar_t>(0xD800 + ((character - 0x10000) >> 10));
            out[count + 1] = static_cast<wchar_t>(0xDC00 + ((character - 0x10000) & 0x3FF));
        }
        count += units;
    }
    out[count] = 0;
    return counted(count);
}

int Uni16CharToUTF8(const wchar_t* text, char* out, std::size_t capacity) {
    if (capacity == 0) return 0;
    std::string utf8;
    if (!toUTF8(text, utf8)) return refused(out);
    return copyPieces(utf8, out, capacity, characterLength);
}

int UTF8ToURLEncoding(const char* utf8, char* out, std::size_t capacity) {
    if (capacity == 0) return 0;
    // Three times the length for %XX; no line-break normalisation, %20 for a
    // blank: bytes are encoded as they are.
    std::string encoded(3 * std::strlen(utf8) + 1, '\0');
    const char* const end = uriEscapeA(utf8, encoded.data(), URI_FALSE, URI_FALSE);
    encoded.resize(static_cast<std::size_t>(end - encoded.data()));
    return copyPieces(encoded, out, capacity, encodedLength);
}

int Uni16CharToURLEncoding(const wchar_t* text, char* out, std::size_t capacity) {
    if (capacity == 0) return 0;
    std::string utf8;
    if (!toUTF8(text, utf8)) return refused(out);
    return UTF8ToURLEncoding(utf8.c_str(), out, capacity);
}

}  // namespace Orlune
