// What the tests of the Unicode conversions share: texts made of numbers, one
// form after the other behind the exported functions, and texts whose end is
// the last readable byte.

#ifndef TESTS_ENCODING_UNICODE_SUPPORT_H
#define TESTS_ENCODING_UNICODE_SUPPORT_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "encoding/unicode.h"
#include "tests/support/guarded_bytes.h"

// ---- Texts made of numbers, by division instead of shifts -------------------

inline char byteOf(std::uint32_t value) { return static_cast<char>(value % 256); }

inline void put16(std::string& text, std::uint32_t unit, bool big) {
    text.push_back(byteOf(big ? unit / 256 : unit));
    text.push_back(byteOf(big ? unit : unit / 256));
}

inline void put32(std::string& text, std::uint32_t value, bool big) {
    put16(text, big ? value / 65536 : value % 65536, big);
    put16(text, big ? value % 65536 : value / 65536, big);
}

/// Four bytes carry 21 bits.
inline void put8(std::string& text, std::uint32_t value) {
    if (value < 0x80) return text.push_back(byteOf(value));
    if (value < 0x800) {
        text.push_back(byteOf(192 + value / 64));
    } else if (value < 0x10000) {
        text.push_back(byteOf(224 + value / 4096));
        text.push_back(byteOf(128 + value / 64 % 64));
    } else {
        text.push_back(byteOf(240 + value / 262144));
        text.push_back(byteOf(128 + value / 4096 % 64));
        text.push_back(byteOf(128 + value / 64 % 64));
    }
    text.push_back(byteOf(128 + value % 64));
}

inline std::string unit16(std::uint32_t unit, bool big) {
    std::string text;
    put16(text, unit, big);
    return text;
}
inline std::string unit32(std::uint32_t value, bool big) {
    std::string text;
    put32(text, value, big);
    return text;
}
inline std::string utf8Bytes(std::uint32_t value) {
    std::string text;
    put8(text, value);
    return text;
}

/// Units of 16 or 32 bits as text with mark and zero unit.
inline std::string text16(const std::vector<std::uint32_t>& units, bool big) {
    std::string text;
    text.reserve(2 * units.size() + 4);
    put16(text, 0xFEFF, big);
    for (const std::uint32_t unit : units) put16(text, unit, big);
    put16(text, 0, big);
    return text;
}
inline std::string text32(const std::vector<std::uint32_t>& values, bool big) {
    std::string text;
    text.reserve(4 * values.size() + 8);
    put32(text, 0xFEFF, big);
    for (const std::uint32_t value : values) put32(text, value, big);
    put32(text, 0, big);
    return text;
}

/// "004E D83D" as two numbers.
inline std::vector<std::uint32_t> numbers(std::string_view hex) {
    std::vector<std::uint32_t> all;
    bool inNumber = false;
    for (const char c : hex) {
        if (c != ' ') {
            if (!inNumber) all.push_back(0);
            all.back() = all.back() * 16 + static_cast<std::uint32_t>(c <= '9' ? c - '0' : c - 55);
        }
        inNumber = c != ' ';
    }
    return all;
}

// ---- Forms ------------------------------------------------------------------

/// The exported functions use form as long as this lives.
class ForcedForm {
 public:
    explicit ForcedForm(const Vaskel::UnicodeForm* form) { Vaskel::forceUnicodeForm(form); }
    ~ForcedForm() { Vaskel::forceUnicodeForm(nullptr); }
    ForcedForm(const ForcedForm&) = delete;
    ForcedForm& operator=(const ForcedForm&) = delete;
};

// ---- Places -----------------------------------------------------------------

/// A text as it is in memory: at the end of a page, up to three bytes in front
/// of it so that units have any address, or at the beginning of one.
class PlacedText {
 public:
    static constexpr int kPlaces = 5;

    PlacedText(std::string_view text, int place)
        : mBytes(text.size() + (place < 4 ? static_cast<std::size_t>(place) : 0),
                 place < 4 ? GuardedBytes::AtEnd : GuardedBytes::AtStart) {
        text.copy(mBytes.chars(), text.size());
        // What is behind the text is none of it.
        for (std::size_t i = text.size(); i < mBytes.size(); ++i) mBytes[i] = 0x80;
    }
    operator const char*() const { return mBytes.chars(); }

 private:
    GuardedBytes mBytes;
};

#endif
