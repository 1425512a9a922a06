// Text conversions on utfcpp and uriparser. Each goes over its source once,
// character by character, and allocates nothing.

#include "platform/orlune/text.h"

#include <uriparser/Uri.h>
#include <utf8cpp/utf8.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>

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
        std::memcpy(mOut + mCount, piece, length * sizeof(Char));
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

// The percent-encoded form of one character's bytes.
struct Encoded {
    Encoded(const char* first, const char* last)
        : length(static_cast<std::size_t>(
              // No '+' for a blank, no other line breaks: bytes as they are.
              uriEscapeExA(first, last, text, URI_FALSE, URI_FALSE) - text)) {}
    char text[3 * 4 + 1];
    std::size_t length;
};

// Where the character at text ends; malformed UTF-8 counts as one byte.
const char* endOfCharacter(const char* text, const char* end) {
    const auto lead = static_cast<unsigned char>(*text);
    const std::ptrdiff_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    return length <= end - text && utf8::is_valid(text, text + length) ? text + length : text + 1;
}

}  // namespace

int UTF8ToUni16Char(const char* utf8, wchar_t* out, std::size_t capacity) {
    if (capacity == 0) return 0;
    Output<wchar_t> output(out, capacity);
    const char* const end = utf8 + std::strlen(utf8);
    if (utf8::find_invalid(utf8, end) != end) return output.refuse();
    while (utf8 != end) {
        const std::uint32_t character = utf8::unchecked::next(utf8);
        if (character <= 0xFFFF) {
            const wchar_t unit[] = {static_cast<wchar_t>(character)};
            output.take(unit, 1);
        } else {
            const std::uint32_t rest = character - 0x10000;
            const wchar_t pair[] = {static_cast<wchar_t>(0xD800 + (rest >> 10)),
                                    static_cast<wchar_t>(0xDC00 + (rest & 0x3FF))};
            output.take(pair, 2);
        }
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
    const char* const end = utf8 + std::strlen(utf8);
    while (utf8 != end) {
        const char* const next = endOfCharacter(utf8, end);
        const Encoded encoded(utf8, next);
        output.take(encoded.text, encoded.length);
        utf8 = next;
    }
    return output.finish();
}

int Uni16CharToURLEncoding(const wchar_t* text, char* out, std::size_t capacity) {
    if (capacity == 0) return 0;
    Output<char> output(out, capacity);
    while (*text != 0) {
        const std::uint32_t character = nextOfUni16(text);
        if (character == kNoCharacter) return output.refuse();
        char bytes[4];
        const Encoded encoded(bytes, utf8::unchecked::append(character, bytes));
        output.take(encoded.text, encoded.length);
    }
    return output.finish();
}

}  // namespace Orlune
