// Texts in every Unicode form: all forms of the engine give the plain form's
// bytes, the functions for any form and for textual forms those of the one
// they choose, and what has been converted once comes back the same.
//
// Input: bits 0 and 1 of the first byte say what the rest is (UTF-8, UTF-16,
// UTF-32, textual), bit 2 the byte order that results have, bit 3 that of the
// text. The text ends at an unmapped page, bits 4 and 5 bytes in front of it.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "encoding/unicode.h"
#include "tests/support/guarded_bytes.h"
#include "vaskel/encoding.h"

namespace {

using namespace Vaskel;

void require(bool holds) {
    if (!holds) std::abort();
}

bool gBig;           // of results
std::size_t gShift;  // of the text in front of the page's end

class Placed {
 public:
    explicit Placed(const std::string& text) : mBytes(text.size() + gShift) {
        text.copy(mBytes.chars(), text.size());
        for (std::size_t i = text.size(); i < mBytes.size(); ++i) mBytes[i] = 0x80;
    }
    operator const char*() const { return mBytes.chars(); }

 private:
    GuardedBytes mBytes;
};

using Convert = std::string (*)(const UnicodeForm& form, const char* text);

// The plain form's result, which is everyone's.
std::string converted(const std::string& text, Convert convert) {
    const Placed placed(text);
    const std::string want = convert(kUnicodePlain, placed);
    for (const UnicodeForm* form : unicodeForms()) require(convert(*form, placed) == want);
    return want;
}

std::string from8To16(const std::string& text) {
    return converted(text,
                     [](const UnicodeForm& f, const char* t) { return f.utf8ToUtf16(t, gBig); });
}
std::string from8To32(const std::string& text) {
    return converted(text,
                     [](const UnicodeForm& f, const char* t) { return f.utf8ToUtf32(t, gBig); });
}
std::string from16To8(const std::string& text) {
    return converted(text, [](const UnicodeForm& f, const char* t) { return f.utf16ToUtf8(t); });
}
std::string from16To32(const std::string& text) {
    return converted(text,
                     [](const UnicodeForm& f, const char* t) { return f.utf16ToUtf32(t, gBig); });
}
std::string from32To8(const std::string& text) {
    return converted(text, [](const UnicodeForm& f, const char* t) { return f.utf32ToUtf8(t); });
}
std::string from32To16(const std::string& text) {
    return converted(text,
                     [](const UnicodeForm& f, const char* t) { return f.utf32ToUtf16(t, gBig); });
}

// The text of a result that counts on std::string's zero byte.
std::string ended(const std::string& text) { return text + '\0'; }

// Good texts of our own making, UTF-32 first: no zero inside, ours the order.
void roundTrips(const std::string& utf32) {
    const std::string utf8 = from32To8(utf32);
    const bool begins = utf8.empty() || static_cast<unsigned char>(utf8[0]) < 0xF0;
    require(from8To32(ended(utf8)) == (begins ? utf32 : ""));
    const std::string utf16 = from32To16(utf32);
    if (utf16.empty()) return;  // surrogates
    if (begins) require(from8To16(ended(utf8)) == utf16);
    // A pair comes back as another value, which is then written as a pair that
    // comes back as the same.
    const std::string back = from16To32(utf16), again = from32To16(back);
    require(from16To32(again) == back);
    require(from16To8(utf16) == from32To8(back));
    if (back == utf32) require(again == utf16);
}

// UTF-32 text from whatever came out as one: up to its first zero unit.
std::string cutAtZero(const std::string& utf32) {
    std::size_t at = 0;
    while (utf32.compare(at, 4, std::string(4, '\0')) != 0) at += 4;
    return utf32.substr(0, at + 4);
}

void tryUtf8(const std::string& text) {
    const std::string utf32 = from8To32(ended(text)), utf16 = from8To16(ended(text));
    require(utf16.empty() || !utf32.empty());
    const Placed placed(ended(text));
    const std::string copy = static_cast<const char*>(placed);
    require(IsUTF8String(placed) == (copy.empty() || static_cast<unsigned char>(copy[0]) < 0xF0));
    if (IsUTF8String(placed)) {
        require(ConvertToUTF8String(placed) == copy);
        require(ConvertToUTF16String(placed, gBig) == utf16);
        require(ConvertToUTF32String(placed, gBig) == utf32);
    }
    if (utf32.empty()) return;
    // In big-endian UTF-32 the first zero unit is behind the mark.
    const std::string whole = cutAtZero(utf32);
    require(from32To16(whole) == utf16);
    roundTrips(whole);
}

void tryUtf16(const std::string& text, bool big) {
    std::string marked = (big ? "\xFE\xFF" : "\xFF\xFE") + text;
    marked.append(2 + marked.size() % 2, '\0');
    const std::string utf32 = from16To32(marked), utf8 = from16To8(marked);
    require(utf8.empty() || !utf32.empty());
    const Placed placed(marked);
    require(IsUTF16String(placed) && !IsUTF8String(placed));
    require(ConvertToUTF8String(placed) == utf8);
    require(ConvertToUTF16String(placed, gBig) == marked.c_str());
    require(ConvertToUTF32String(placed, gBig) == utf32);
    if (utf32.empty()) return;
    require(from32To8(utf32) == utf8);
    roundTrips(utf32);
}

void tryUtf32(const std::string& text, bool big) {
    std::string marked(big ? "\0\0\xFE\xFF" : "\xFF\xFE\0\0", 4);
    marked += text;
    marked.append(4 + (4 - marked.size() % 4) % 4, '\0');
    const std::string utf16 = from32To16(marked), utf8 = from32To8(marked);
    require(IsUTF32String(Placed(marked)));
    if (utf8.empty() && utf16.empty()) return;
    // In our order.
    std::string ours = marked;
    if (big != gBig)
        for (std::size_t i = 0; i < ours.size(); i += 4) {
            std::swap(ours[i], ours[i + 3]);
            std::swap(ours[i + 1], ours[i + 2]);
        }
    const std::string whole = cutAtZero(ours);
    require(from32To16(whole) == utf16 && from32To8(whole) == utf8);
    roundTrips(whole);
}

// Whatever the text is, and the same bytes as escapes and hex digits.
void tryTextual(const std::string& text, bool big) {
    for (const UnicodeForm* form : unicodeForms()) {
        forceUnicodeForm(form);
        const GuardedText asIs(text), escaped("\\376\\377" + text), hex("FEFF" + text);
        const std::string byEscapes = ConvertUTFEscapedToUTF8String(escaped);
        const std::string byDigits = ConvertUTFHexToUTF8String(hex);
        require(IsUTFEscapedString(asIs) || ConvertUTFEscapedToUTF8String(asIs).empty());
        require(IsUTFHexString(asIs) || ConvertUTFHexToUTF8String(asIs).empty());
        forceUnicodeForm(&kUnicodePlain);
        require(ConvertUTFEscapedToUTF8String(escaped) == byEscapes);
        require(ConvertUTFHexToUTF8String(hex) == byDigits);
        forceUnicodeForm(nullptr);
    }
    // A character that follows a byte 0 stands for itself, so that no other byte
    // 0 can follow one.
    std::string bytes = (big ? "\xFE\xFF" : "\xFF\xFE") + text, escapes, digits;
    bytes.resize(std::min(bytes.find(std::string(2, '\0')), bytes.size() - 1) + 1);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        char part[8];
        const unsigned byte = static_cast<unsigned char>(bytes[i]);
        std::snprintf(part, sizeof part, "%02X", byte);
        digits += part;
        std::snprintf(part, sizeof part, "\\%03o", byte);
        const bool literal = i > 2 && bytes[i - 1] == 0;
        escapes += literal ? std::string(1, bytes[i]) : part;
    }
    bytes.append(3, '\0');
    const std::string want = ConvertUTF16ToUTF8String(bytes.c_str());
    require(ConvertUTFHexToUTF8String(GuardedText(digits)) == want);
    require(ConvertUTFEscapedToUTF8String(GuardedText(escapes)) == want);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const unsigned flags = *data;
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    gBig = (flags & 4) != 0;
    gShift = flags >> 4 & 3;
    const bool big = (flags & 8) != 0;
    switch (flags & 3) {
        case 0:
            tryUtf8(text);
            break;
        case 1:
            tryUtf16(text, big);
            break;
        case 2:
            tryUtf32(text, big);
            break;
        default:
            tryTextual(text, big);
    }
    return 0;
}
