// Text conversions on utfcpp and uriparser, without an allocation. ASCII, which most
// names are of, goes by itself.

#include "platform/orlune/text.h"

#include <uriparser/Uri.h>
#include <utf8cpp/utf8.h>

#include <algorithm>
#include <bit>
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
    void filledTo(const Char* end) { filled(static_cast<std::size_t>(end - space())); }
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

// What an ASCII character becomes in a URL: itself if it may stand in any part
// of one (RFC 3986, section 2.3), else a triple.
struct Escape {
    char text[3];
    unsigned char length;
};

// As one number each, which a loop reads at once.
struct Escapes {
    std::uint32_t of[128];
};

constexpr Escapes makeEscapes() {
    constexpr std::string_view unreserved =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
    constexpr char digits[] = "0123456789ABCDEF";
    Escapes escapes{};
    for (std::size_t c = 0; c < 128; ++c) {
        const bool stays = unreserved.find(static_cast<char>(c)) != std::string_view::npos;
        escapes.of[c] =
            std::bit_cast<std::uint32_t>(stays ? Escape{{static_cast<char>(c)}, 1}
                                               : Escape{{'%', digits[c / 16], digits[c % 16]}, 3});
    }
    return escapes;
}
constexpr Escapes kEscapes = makeEscapes();

constexpr std::size_t lengthOf(std::uint32_t escape) {
    return std::endian::native == std::endian::little ? escape >> 24 : escape & 0xFF;
}

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

bool isAscii(char c) { return static_cast<signed char>(c) > 0; }  // and no terminator
bool isAscii(wchar_t c) { return static_cast<std::uint32_t>(c) - 1 < 0x7F; }

// How many characters the loops below take for each look at the room that is left.
constexpr std::size_t kStep = 4;

// Copies the ASCII characters at text while there is room for some, and returns
// where it stopped.
template <class From, class To>
const From* takeAscii(Output<To>& output, const From* text) {
    To* to = output.space();
    for (std::size_t room = output.room(); room >= kStep; room -= kStep) {
        for (std::size_t i = 0; i < kStep; ++i, ++to, ++text) {
            if (!isAscii(*text)) {
                output.filledTo(to);
                return text;
            }
            *to = static_cast<To>(*text);
        }
    }
    output.filledTo(to);
    return text;
}

// Percent-encodes the ASCII characters at text while there is room for some, and
// returns where it stopped. Four bytes are written for each, and as many taken as
// count: no character waits for the length of the one before, nor has a branch
// to guess.
template <class From>
const From* takeAsciiEncoded(Output<char>& output, const From* text) {
    char* to = output.space();
    const char* const end = to + output.room();
    while (end - to >= static_cast<std::ptrdiff_t>(3 * kStep)) {
        for (std::size_t i = 0; i < kStep; ++i, ++text) {
            if (!isAscii(*text)) {
                output.filledTo(to);
                return text;
            }
            const std::uint32_t escape =
                kEscapes.of[static_cast<std::make_unsigned_t<From>>(*text)];
            std::memcpy(to, &escape, sizeof escape);
            to += lengthOf(escape);
        }
    }
    output.filledTo(to);
    return text;
}

// The rest of a conversion, where not all is ASCII or not all may fit.

[[gnu::noinline]] int finishUni16(Output<wchar_t>& output, const char* utf8) {
    const char* const end = utf8 + std::strlen(utf8);
    if (utf8::find_invalid(utf8, end) != end) return output.refuse();
    while (utf8 != end && output.room() > 0) {
        wchar_t units[2];
        output.take(units, toUni16(utf8::unchecked::next(utf8), units));
        utf8 = takeAscii(output, utf8);
    }
    return output.finish();
}

[[gnu::noinline]] int finishURL(Output<char>& output, const char* utf8) {
    takeEncoded(output, utf8, utf8 + std::strlen(utf8));
    return output.finish();
}

[[gnu::noinline]] int finishURL(Output<char>& output, const wchar_t* text) {
    for (; *text != 0; text = takeAsciiEncoded(output, text)) {
        char bytes[64];  // of the characters before the next one in ASCII
        char* last = bytes;
        do {
            const std::uint32_t character = nextOfUni16(text);
            if (character == kNoCharacter) return output.refuse();
            last = utf8::unchecked::append(character, last);
        } while (last <= bytes + sizeof bytes - 4 && *text != 0 && !isAscii(*text));
        takeEncoded(output, bytes, last);
    }
    return output.finish();
}

template <class From>
int toURL(const From* text, char* out, std::size_t capacity) {
    if (capacity == 0) return 0;
    Output<char> output(out, capacity);
    text = takeAsciiEncoded(output, text);
    return *text == 0 ? output.finish() : finishURL(output, text);
}

}  // namespace

int UTF8ToUni16Char(const char* utf8, wchar_t* out, std::size_t capacity) {
    if (capacity == 0) return 0;
    Output<wchar_t> output(out, capacity);
    utf8 = takeAscii(output, utf8);
    return *utf8 == '\0' ? output.finish() : finishUni16(output, utf8);
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
    return toURL(utf8, out, capacity);
}

int Uni16CharToURLEncoding(const wchar_t* text, char* out, std::size_t capacity) {
    return toURL(text, out, capacity);
}

}  // namespace Orlune
