#include "samples/proof/convert/unicode_bytes.h"

#include <algorithm>
#include <cstdio>

#include "vaskel/encoding.h"

namespace Proof {
namespace {

std::size_t unitSize(UnicodeKind kind) { return static_cast<std::size_t>(kind); }

unsigned byteAt(const std::string& bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

std::uint32_t unitAt(const UnicodeBytes& text, std::size_t offset) {
    std::uint32_t unit = 0;
    const std::size_t size = unitSize(text.kind);
    for (std::size_t k = 0; k < size; ++k)
        unit = unit << 8 | byteAt(text.bytes, offset + (text.bigEndian ? k : size - 1 - k));
    return unit;
}

std::string hexNumber(const char* format, std::uint32_t number) {
    char text[20];
    std::snprintf(text, sizeof text, format, static_cast<unsigned>(number));
    return text;
}

// The library reads up to a zero unit, which has to lie within the memory.
std::string withZeroUnit(const std::string& bytes) { return bytes + std::string(4, '\0'); }

std::string withoutZeroUnit(std::string bytes, UnicodeKind kind) {
    if (kind != UnicodeKind::Utf8 && bytes.size() >= unitSize(kind))
        bytes.resize(bytes.size() - unitSize(kind));
    return bytes;
}

// A text that begins with a character of four bytes is no UTF-8 for the
// library, which looks at the first byte for marks. Here it is known to be
// UTF-8: a character goes in front, and its unit is taken out again.
template <class Convert>
std::string fromUtf8(const std::string& text, UnicodeKind kind, Convert convert) {
    const bool guarded = !text.empty() && byteAt(text, 0) >= 0xF0;
    std::string result = convert(((guarded ? "." : "") + text).c_str());
    if (guarded && !result.empty()) result.erase(unitSize(kind), unitSize(kind));
    return result;
}

std::string toUtf32(const UnicodeBytes& text, bool bigEndian) {
    const std::string whole = withZeroUnit(text.bytes);
    if (text.kind == UnicodeKind::Utf16)
        return Vaskel::ConvertUTF16ToUTF32String(whole.c_str(), bigEndian);
    const bool units = text.kind == UnicodeKind::Utf32;
    const std::string utf8 = units ? Vaskel::ConvertUTF32ToUTF8String(whole.c_str()) : text.bytes;
    if (utf8.empty() && units && text.bytes.size() > 4) return {};
    return fromUtf8(utf8, UnicodeKind::Utf32, [bigEndian](const char* from) {
        return Vaskel::ConvertUTF8ToUTF32String(from, bigEndian);
    });
}

std::string toUtf16(const UnicodeBytes& text, bool bigEndian) {
    if (text.kind == UnicodeKind::Utf8)
        return fromUtf8(text.bytes, UnicodeKind::Utf16, [bigEndian](const char* utf8) {
            return Vaskel::ConvertUTF8ToUTF16String(utf8, bigEndian);
        });
    const std::string units =
        text.kind == UnicodeKind::Utf32 ? withZeroUnit(text.bytes) : toUtf32(text, bigEndian);
    return units.empty() ? units : Vaskel::ConvertUTF32ToUTF16String(units.c_str(), bigEndian);
}

std::string toUtf8(const UnicodeBytes& text) {
    const std::string whole = withZeroUnit(text.bytes);
    return text.kind == UnicodeKind::Utf16 ? Vaskel::ConvertUTF16ToUTF8String(whole.c_str())
                                           : Vaskel::ConvertUTF32ToUTF8String(whole.c_str());
}

// How many bytes follow a lead byte in UTF-8, or -1 for no lead byte.
int followers(unsigned lead) {
    if (lead < 0x80) return 0;
    if (lead >= 0xC0 && lead < 0xE0) return 1;
    if (lead >= 0xE0 && lead < 0xF0) return 2;
    return lead >= 0xF0 && lead < 0xF8 ? 3 : -1;
}

std::string surrogateFault(std::uint32_t value, std::size_t at) {
    return hexNumber("U+%04X ", value) + atOffset(at) +
           " is half a surrogate pair, which UTF-16 cannot hold alone";
}

bool isSurrogate(std::uint32_t value) { return value >= 0xD800 && value <= 0xDFFF; }

std::string utf8Fault(const std::string& bytes, UnicodeKind target) {
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t start = at;
        const int more = followers(byteAt(bytes, at++));
        if (more < 0)
            return hexNumber("byte %02X ", byteAt(bytes, start)) + atOffset(start) +
                   " begins no character";
        std::uint32_t value = byteAt(bytes, start) & (more == 0 ? 0x7F : 0x3F >> more);
        for (int k = 0; k < more; ++k) {
            if (at == bytes.size()) return "the character " + atOffset(start) + " is cut off";
            value = value << 6 | (byteAt(bytes, at++) & 0x3F);
        }
        if (target == UnicodeKind::Utf16 && isSurrogate(value)) return surrogateFault(value, start);
    }
    return "";
}

std::string utf16Fault(const UnicodeBytes& text) {
    for (std::size_t at = 2; at < text.bytes.size(); at += 2) {
        const std::uint32_t unit = unitAt(text, at);
        if (!isSurrogate(unit)) continue;
        const bool paired = unit < 0xDC00 && at + 2 < text.bytes.size() &&
                            unitAt(text, at + 2) >= 0xDC00 && unitAt(text, at + 2) <= 0xDFFF;
        if (!paired) return hexNumber("unit %04X ", unit) + atOffset(at) + " is half a pair";
        at += 2;
    }
    return "";
}

std::string utf32Fault(const UnicodeBytes& text, UnicodeKind target) {
    for (std::size_t at = 4; at < text.bytes.size(); at += 4) {
        const std::uint32_t value = unitAt(text, at);
        if (value >= 0x200000)
            return hexNumber("value %X ", value) + atOffset(at) + " is no character";
        if (target == UnicodeKind::Utf16 && isSurrogate(value)) return surrogateFault(value, at);
    }
    return "";
}

std::string faultOf(const UnicodeBytes& text, UnicodeKind target) {
    const std::string fault = text.kind == UnicodeKind::Utf8    ? utf8Fault(text.bytes, target)
                              : text.kind == UnicodeKind::Utf16 ? utf16Fault(text)
                                                                : utf32Fault(text, target);
    return fault.empty() ? "it cannot be converted" : fault;
}

// The first byte of the character that stands at an offset.
std::size_t characterStart(const UnicodeBytes& text, std::size_t offset) {
    if (text.kind != UnicodeKind::Utf8) return offset - offset % unitSize(text.kind);
    while (offset > 0 && offset < text.bytes.size() && (byteAt(text.bytes, offset) & 0xC0) == 0x80)
        --offset;
    return offset;
}

}  // namespace

std::string atOffset(std::size_t offset) { return "at offset " + std::to_string(offset); }

UnicodeBytes unicodeBytes(UnicodeKind kind, std::string bytes) {
    UnicodeBytes text{kind, true, std::move(bytes)};
    const std::size_t size = unitSize(kind);
    const std::string whole = withZeroUnit(text.bytes);
    if (kind == UnicodeKind::Utf16 && !Vaskel::IsUTF16String(whole.c_str()))
        throw TextFault("there is no mark of UTF-16 at the beginning");
    if (kind == UnicodeKind::Utf32 &&
        (text.bytes.size() < size || !Vaskel::IsUTF32String(whole.c_str())))
        throw TextFault("there is no mark of UTF-32 at the beginning");
    if (text.bytes.size() % size != 0) throw TextFault("the last unit is cut off");
    if (kind != UnicodeKind::Utf8) text.bigEndian = unitAt(text, 0) == 0xFEFF;
    for (std::size_t at = 0; at < text.bytes.size(); at += size) {
        if (unitAt(text, at) != 0) continue;
        if (at + size < text.bytes.size())
            throw TextFault("the zero " + std::string(size == 1 ? "byte " : "unit ") +
                            atOffset(at) + " ends the text, but more follows");
        text.bytes.resize(at);
    }
    return text;
}

UnicodeBytes converted(const UnicodeBytes& text, UnicodeKind kind, bool bigEndian) {
    UnicodeBytes result{kind, bigEndian, {}};
    // A copy too is made of what the library takes for a text.
    if (toUtf32(text, true).empty()) throw TextFault(faultOf(text, text.kind));
    if (text.kind == kind && (kind == UnicodeKind::Utf8 || text.bigEndian == bigEndian)) {
        result.bytes = text.bytes;
        return result;
    }
    if (kind == UnicodeKind::Utf8) {
        result.bytes = toUtf8(text);
        return result;
    }
    result.bytes = kind == UnicodeKind::Utf16 ? toUtf16(text, bigEndian) : toUtf32(text, bigEndian);
    if (result.bytes.empty()) throw TextFault(faultOf(text, kind));
    result.bytes = withoutZeroUnit(std::move(result.bytes), kind);
    return result;
}

void requireSame(const UnicodeBytes& text, const UnicodeBytes& result) {
    // UTF-8 has no mark to agree with itself by: UTF-32 holds all of it.
    const UnicodeBytes& through = text.kind == UnicodeKind::Utf8 && result.kind == text.kind
                                      ? converted(text, UnicodeKind::Utf32, true)
                                      : result;
    const UnicodeBytes back = converted(through, text.kind, text.bigEndian);
    if (back.bytes == text.bytes) return;
    const auto apart =
        std::mismatch(text.bytes.begin(), text.bytes.end(), back.bytes.begin(), back.bytes.end());
    const std::size_t at =
        characterStart(text, static_cast<std::size_t>(apart.first - text.bytes.begin()));
    const bool lead = text.kind != UnicodeKind::Utf8 ||
                      (at < text.bytes.size() && byteAt(text.bytes, at) >= 0xF0);
    if (lead && (text.kind == UnicodeKind::Utf16 || result.kind == UnicodeKind::Utf16))
        throw TextFault("the character " + atOffset(at) +
                        " lies beyond U+FFFF and would become another one (--lossy permits it)");
    throw TextFault("what stands " + atOffset(at) +
                    " is not well-formed and would be read as something else"
                    " (--lossy permits it)");
}

std::size_t characterCount(const UnicodeBytes& text) { return toUtf32(text, true).size() / 4 - 2; }

}  // namespace Proof
