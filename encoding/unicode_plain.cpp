// The plain form: every conversion between UTF-8 and UTF-16 goes through a
// UTF-32 string, one character at a time.
//
// The intermediate string decides more than the characters: it is made whole
// before it is read, so that bad bytes spoil the result wherever they are, but
// it ends at its first zero unit, which an overlong zero makes.

#include "encoding/unicode.h"
#include "encoding/unicode_rules.h"

namespace Vaskel {
namespace {

constexpr std::uint32_t kMark = 0xFEFF;

void append16(std::string& out, std::uint32_t unit, bool bigEndian) {
    const char high = static_cast<char>(unit >> 8);
    const char low = static_cast<char>(unit);
    out += bigEndian ? high : low;
    out += bigEndian ? low : high;
}

void append32(std::string& out, std::uint32_t unit, bool bigEndian) {
    append16(out, bigEndian ? unit >> 16 : unit & 0xFFFF, bigEndian);
    append16(out, bigEndian ? unit & 0xFFFF : unit >> 16, bigEndian);
}

std::uint32_t read16(const char* at, ByteOrder order) {
    const std::uint32_t first = byteAt(at, 0), second = byteAt(at, 1);
    return order == ByteOrder::Big ? first << 8 | second : second << 8 | first;
}

std::uint32_t read32(const char* at, ByteOrder order) {
    const std::uint32_t first = read16(at, order), second = read16(at + 2, order);
    return order == ByteOrder::Big ? first << 16 | second : second << 16 | first;
}

std::string utf8ToUtf32(const char* text, bool bigEndian) {
    if (!startsAsUtf8(text)) return {};
    std::string out;
    append32(out, kMark, bigEndian);
    while (*text) {
        const unsigned char lead = byteAt(text++, 0);
        const int followers = utf8Followers(lead);
        if (followers < 0) return {};
        std::uint32_t value = followers == 0 ? lead : lead & (0x3F >> followers);
        for (int i = 0; i < followers; ++i) {
            if (!*text) return {};  // cut off at the terminator
            value = value << 6 | (byteAt(text++, 0) & 0x3F);
        }
        append32(out, value, bigEndian);
    }
    append32(out, 0, bigEndian);
    return out;
}

std::string utf16ToUtf32(const char* text, bool bigEndian) {
    const ByteOrder order = utf16Mark(text);
    if (order == ByteOrder::Unmarked) return {};
    std::string out;
    append32(out, kMark, bigEndian);
    for (text += 2;; text += 2) {
        const std::uint32_t unit = read16(text, order);
        if (unit == 0) break;
        if (!isSurrogate(unit)) {
            append32(out, unit, bigEndian);
            continue;
        }
        if (isLowSurrogate(unit)) return {};
        text += 2;
        const std::uint32_t low = read16(text, order);
        if (!isLowSurrogate(low)) return {};
        append32(out, surrogatePairValue(unit, low), bigEndian);
    }
    append32(out, 0, bigEndian);
    return out;
}

std::string utf32ToUtf16(const char* text, bool bigEndian) {
    const ByteOrder order = utf32Mark(text);
    if (order == ByteOrder::Unmarked) return {};
    std::string out;
    append16(out, kMark, bigEndian);
    for (text += 4;; text += 4) {
        const std::uint32_t value = read32(text, order);
        if (value == 0) break;
        if (isSurrogate(value) || value >= kUnicodeEnd) return {};
        if (value < 0x10000) {
            append16(out, value, bigEndian);
        } else {
            append16(out, highUnit(value), bigEndian);
            append16(out, lowUnit(value), bigEndian);
        }
    }
    append16(out, 0, bigEndian);
    return out;
}

std::string utf32ToUtf8(const char* text) {
    const ByteOrder order = utf32Mark(text);
    if (order == ByteOrder::Unmarked) return {};
    std::string out;
    const auto follower = [&](std::uint32_t bits) {
        out += static_cast<char>(0x80 | (bits & 0x3F));
    };
    for (text += 4;; text += 4) {
        const std::uint32_t value = read32(text, order);
        if (value == 0) break;
        if (value >= kUnicodeEnd) return {};
        if (value < 0x80) {
            out += static_cast<char>(value);
        } else if (value < 0x800) {
            out += static_cast<char>(0xC0 | value >> 6);
            follower(value);
        } else if (value < 0x10000) {
            out += static_cast<char>(0xE0 | value >> 12);
            follower(value >> 6);
            follower(value);
        } else {
            out += static_cast<char>(0xF0 | value >> 18);
            follower(value >> 12);
            follower(value >> 6);
            follower(value);
        }
    }
    return out;
}

std::string utf8ToUtf16(const char* text, bool bigEndian) {
    const std::string pivot = utf8ToUtf32(text, bigEndian);
    return pivot.empty() ? pivot : utf32ToUtf16(pivot.c_str(), bigEndian);
}

std::string utf16ToUtf8(const char* text) {
    const std::string pivot = utf16ToUtf32(text, true);
    return pivot.empty() ? pivot : utf32ToUtf8(pivot.c_str());
}

}  // namespace

const UnicodeForm kUnicodePlain = {"plain",     utf8ToUtf32,  utf8ToUtf16, utf16ToUtf32,
                                   utf16ToUtf8, utf32ToUtf16, utf32ToUtf8};

}  // namespace Vaskel
