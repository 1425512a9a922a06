// Text conversions on utfcpp and uriparser, without an allocation.

#include "platform/orlune/text.h"

#include <uriparser/Uri.h>
#include <utf8cpp/utf8.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace Orlune {
namespace {

// A caller's buffer that takes pieces while they fit whole before the
// terminator; from the first one on that does not, nothing more.
template <class Char>
class Output {
 public:
    Output(Char* out, std::size_t capacity) : mOut(out), mRoom(capacity - 1) {}

    void take(const Char* piece, std::size_t length) {
        if (length > mRoom) mRoom = 0;
        if (mRoom == 0) return;
        std::copy_n(piece, length, space());
        filled(length);
    }

    /// The room for pieces, and where they go; filled says how much of it is used.
    std::size_t room() const { return mRoom; }
    Char* space() { return mOut + mCount; }
    void filled(std::size_t length) {
        mCount += length;
        mRoom -= length;
    }

    int finish() {
        mOut[mCount] = 0;
        return mCount > INT_MAX ? INT_MAX : static_cast<int>(mCount);
    }

    int refuse() {
        mOut[0] = 0;
        return 0;
    }

 private:
    Char* mOut;
    std::size_t mRoom;
    std::size_t mCount = 0;
};

bool isHigh(std::uint32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLow(std::uint32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

constexpr std::uint32_t kNoCharacter = 0xFFFFFFFF;

// The character at text, which moves behind it; kNoCharacter for what is no
// UTF-16.
std::uint32_t nextOfUni16(const wchar_t*& text) {
    const auto unit = static_cast<std::uint32_t>(*text++);
    if (unit > 0xFFFF || isLow(unit)) return kNoCharacter;
    if (!isHigh(unit)) return unit;
    const auto low = static_cast<std::uint32_t>(*text);  // at most the terminator
    if (!isLow(low)) return kNoCharacter;
    ++text;
    return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
}

// Writes the one or two units of a character and returns their count.
std::size_t toUni16(std::uint32_t character, wchar_t* units) {
    if (character <= 0xFFFF) {
        units[0] = static_cast<wchar_t>(character);
        return 1;
    }
    units[0] = static_cast<wchar_t>(0xD800 + ((character - 0x10000) >> 10));
    units[1] = static_cast<wchar_t>(0xDC00 + (character & 0x3FF));
    return 2;
}

// The characters that stand for themselves in any part of a URL: RFC 3986,
// section 2.3.
struct Unreserved {
    bool is[128];
};

constexpr Unreserved makeUnreserved() {
    Unreserved unreserved{};
    for (unsigned char c : std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                            "0123456789-._~"))
        unreserved.is[c] = true;
    return unreserved;
}
constexpr Unreserved kUnreserved = makeUnreserved();

// Percent-encodes bytes; returns how long the form is. out has room for three
// times the bytes and a terminator.
std::size_t encode(const char* first, const char* last, char* out) {
    // No '+' for a blank, no other line breaks: bytes as they are.
    return static_cast<std::size_t>(uriEscapeExA(first, last, out, URI_FALSE, URI_FALSE) - out);
}

// Where the character at text ends; malformed UTF-8 counts as one byte.
const char* endOfCharacter(const char* text, const char* end) {
    const auto lead = static_cast<unsigned char>(*text);
    const std::ptrdiff_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    return length <= end - text && utf8::is_valid(text, text + length) ? text + length : text + 1;
}

// Percent-encodes whole characters: at once where they fit in any case, else one
// by one.
void takeEncoded(Output<char>& output, const char* text, const char* end) {
    if (static_cast<std::size_t>(end - text) <= output.room() / 3) {
        output.filled(encode(text, end, output.space()));
        return;
    }
    while (text != end && output.room() > 0) {
        const char* const next = endOfCharacter(text, end);
        char encoded[3 * 4 + 1];
        output.take(encoded, encode(text, next, encoded));
        text = next;
    }
}

// Copies the characters at text for which is holds, ASCII all of them, while
// there is room, and returns where they end. Each is a piece of its own.
template <class From, class To, class Is>
const From* takeWhile(Output<To>& output, const From* text, Is is) {
    const std::size_t room = output.room();
    To* const to = output.space();
    std::size_t count = 0;
    for (; count != room && is(text[count]); ++count) to[count] = static_cast<To>(text[count]);
    output.filled(count);
    return text + count;
}

template <class From, class To>
const From* takeAscii(Output<To>& output, const From* text) {
    return takeWhile(output, text, [](From c) { return c > 0 && c <= 0x7F; });
}

template <class From>
bool isUnreserved(From c) {
    const auto index = static_cast<std::make_unsigned_t<From>>(c);
    return index < 0x80 && kUnreserved.is[index];
}

// Most names begin with what needs no encoding, and many hold nothing else.
template <class From>
const From* takeUnreserved(Output<char>& output, const From* text) {
    return takeWhile(output, text, isUnreserved<From>);
}

}  // namespace

int UTF8ToUni16Char(const char* utf8, wchar_t* out, std::size_t capacity) {
    if (capacity == 0) return 0;
    Output<wchar_t> output(out, capacity);
    utf8 = takeAscii(output, utf8);
    if (*utf8 == '\0') return output.finish();
    const char* const end = utf8 + std::strlen(utf8);
    if (utf8::find_invalid(utf8, end) != end) return output.refuse();
    while (utf8 != end && output.room() > 0) {
        wchar_t units[2];
        output.take(units, toUni16(utf8::unchecked::next(utf8), units));
        utf8 = takeAscii(output, utf8);
    }
    return output.finish();
}

int Uni16CharToUTF8(const wchar_t* text, char* out, std::size_t capacity) {
    if (capacity == 0) return 0;
    Output<char> output(out, capacity);
    while (*text != 0) {
        const std::uint32_t character = nextOfUni16(text);
        if (character == kNoCharacter) return output.refuse();
        char bytes[4];
        const char* const end = utf8::unchecked::append(character, bytes);
        output.take(bytes, static_cast<std::size_t>(end - bytes));
    }
    return output.finish();
}

int UTF8ToURLEncoding(const char* utf8, char* out, std::size_t capacity) {
    if (capacity == 0) return 0;
    Output<char> output(out, capacity);
    utf8 = takeUnreserved(output, utf8);
    if (*utf8 != '\0') takeEncoded(output, utf8, utf8 + std::strlen(utf8));
    return output.finish();
}

int Uni16CharToURLEncoding(const wchar_t* text, char* out, std::size_t capacity) {
    if (capacity == 0) return 0;
    Output<char> output(out, capacity);
    while (*(text = takeUnreserved(output, text)) != 0) {
        char bytes[64];  // of the characters before the next one that stays
        char* last = bytes;
        do {
            const std::uint32_t character = nextOfUni16(text);
            if (character == kNoCharacter) return output.refuse();
            last = utf8::unchecked::append(character, last);
        } while (last <= bytes + sizeof bytes - 4 && *text != 0 && !isUnreserved(*text));
        takeEncoded(output, bytes, last);
    }
    return output.finish();
}

}  // namespace Orlune
