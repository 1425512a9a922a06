#include "samples/proof/convert/text_forms.h"

#include <algorithm>

#include "vaskel/encoding.h"

namespace Proof {
namespace {

bool isOctal(char c) { return c >= '0' && c <= '7'; }

// Reads the two plain-text forms strictly, where the library takes any
// characters for digits: the bytes, and where the text ends.
struct PlainText {
    std::string bytes;
    std::string fault;  // the first one
};

std::string lineEndFrom(const std::string& text, std::size_t at) {
    const std::string rest = text.substr(std::min(at, text.size()));
    return rest == "\n" || rest == "\r\n" ? rest : "";
}

std::string withoutLineEnd(std::string text, TextForm form) {
    std::size_t end = text.size();
    if (form == TextForm::Hex) {
        if (end > 0 && text[end - 1] == '\n') --end;
        if (end > 0 && end < text.size() && text[end - 1] == '\r') --end;
    } else {
        // A line feed behind \000 is a character of the text.
        std::size_t at = 0;
        while (at + 4 <= text.size()) {
            const int byte =
                (text[at + 1] - '0') * 64 + (text[at + 2] - '0') * 8 + text[at + 3] - '0';
            at += byte % 256 == 0 ? 5 : 4;
        }
        end -= lineEndFrom(text, at).size();
    }
    text.resize(end);
    return text;
}

PlainText readEscaped(const std::string& text) {
    PlainText read;
    for (std::size_t at = 0; at < text.size();) {
        const bool whole = at + 4 <= text.size();
        if (!whole || text[at] != '\\' || text[at + 1] > '3' || !isOctal(text[at + 1]) ||
            !isOctal(text[at + 2]) || !isOctal(text[at + 3])) {
            read.fault = "what stands " + atOffset(at) +
                         (whole ? " is no escape of a backslash and three octal digits"
                                : " is a part of an escape");
            return read;
        }
        read.bytes += static_cast<char>((text[at + 1] - '0') * 64 + (text[at + 2] - '0') * 8 +
                                        (text[at + 3] - '0'));
        at += 4;
        if (read.bytes.back() == '\0' && at < text.size()) read.bytes += text[at++];
    }
    // A zero byte may end the text: the other half of its unit is understood.
    if (read.bytes.size() % 2 == 1 && read.bytes.back() == '\0') read.bytes += '\0';
    return read;
}

PlainText readHex(const std::string& text) {
    PlainText read;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        const int digit = c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
        if (digit < 0) {
            read.fault = "what stands " + atOffset(at) + " is no hex digit in capitals";
            return read;
        }
        if (at % 2 == 0)
            read.bytes += static_cast<char>(digit * 16);
        else
            read.bytes.back() = static_cast<char>(read.bytes.back() | digit);
    }
    if (text.size() % 2 == 1) read.fault = "the last hex digit stands alone";
    return read;
}

// What the library makes of a plain-text form, and the same strictly read.
struct Decoded {
    UnicodeBytes text;
    UnicodeBytes strict;
};

Decoded decoded(const std::string& text, TextForm form, bool lossy) {
    const bool hex = form == TextForm::Hex;
    if (!(hex ? Vaskel::IsUTFHexString : Vaskel::IsUTFEscapedString)(text.c_str()))
        throw TextFault(hex ? "it does not begin with FEFF or FFFE"
                            : "it does not begin with \\376\\377 or \\377\\376");
    const PlainText plain = hex ? readHex(text) : readEscaped(text);
    Decoded result;
    if (!lossy) {
        if (!plain.fault.empty()) throw TextFault(plain.fault);
        result.strict = unicodeBytes(UnicodeKind::Utf16, plain.bytes);
        converted(result.strict, UnicodeKind::Utf8, true);  // names what is no UTF-16
    }
    result.text.bytes = hex ? Vaskel::ConvertUTFHexToUTF8String(text.c_str())
                            : Vaskel::ConvertUTFEscapedToUTF8String(text.c_str());
    if (result.text.bytes.empty() && plain.bytes.size() > 2)
        throw TextFault(plain.fault.empty() ? "it cannot be converted" : plain.fault);
    return result;
}

UnicodeKind kindOf(TextForm form) {
    return form == TextForm::Utf8    ? UnicodeKind::Utf8
           : form == TextForm::Utf32 ? UnicodeKind::Utf32
                                     : UnicodeKind::Utf16;
}

}  // namespace

std::optional<TextForm> detectTextForm(const std::string& text) {
    const char* start = text.c_str();
    // Little-endian UTF-32 begins with a mark of UTF-16, big-endian with an
    // empty text of UTF-8. Two bytes alone are no UTF-32.
    if (text.size() >= 4 && Vaskel::IsUTF32String(start)) return TextForm::Utf32;
    if (Vaskel::IsUTF16String(start)) return TextForm::Utf16;
    if (Vaskel::IsUTFEscapedString(start)) return TextForm::Escaped;
    if (Vaskel::IsUTFHexString(start)) return TextForm::Hex;
    if (Vaskel::IsUTF8String(start)) return TextForm::Utf8;
    return std::nullopt;
}

const char* nameOf(TextForm form) {
    switch (form) {
        case TextForm::Utf8:
            return "UTF-8";
        case TextForm::Utf16:
            return "UTF-16";
        case TextForm::Utf32:
            return "UTF-32";
        case TextForm::Escaped:
            return "escaped UTF-16";
        case TextForm::Hex:
            return "UTF-16 in hex digits";
    }
    return "";
}

std::string escapedForm(const std::string& utf16) {
    std::string text;
    for (std::size_t at = 0; at < utf16.size(); ++at) {
        const auto byte = static_cast<unsigned char>(utf16[at]);
        for (const int digit : {byte >> 6, byte >> 3 & 7, byte & 7})
            text += static_cast<char>('0' + digit);
        text.insert(text.size() - 3, 1, '\\');
        if (byte != 0 || at + 1 == utf16.size()) continue;
        if (utf16[++at] == '\0')
            throw TextFault(
                "the escaped form cannot hold two zero bytes in a row; the other byte order may");
        text += utf16[at];
    }
    return text;
}

std::string hexForm(const std::string& utf16) {
    std::string text;
    for (const char c : utf16)
        for (const int digit : {static_cast<unsigned char>(c) >> 4, c & 15})
            text += "0123456789ABCDEF"[digit];
    return text;
}

ConvertedText convertText(const std::string& text, TextForm form, const TextTarget& target,
                          bool lossy) {
    Decoded source;
    const bool plain = form == TextForm::Escaped || form == TextForm::Hex;
    if (plain) {
        const UnicodeBytes whole = unicodeBytes(UnicodeKind::Utf8, text);
        source = decoded(withoutLineEnd(whole.bytes, form), form, lossy);
    } else {
        source.text = unicodeBytes(kindOf(form), text);
    }
    const UnicodeBytes result = converted(source.text, kindOf(target.form), target.bigEndian);
    if (!lossy) {
        requireSame(source.text, result);
        if (plain) requireSame(source.strict, source.text);
    }
    const std::size_t characters = characterCount(source.text);
    if (target.form == TextForm::Escaped) return {escapedForm(result.bytes), characters};
    if (target.form == TextForm::Hex) return {hexForm(result.bytes), characters};
    return {result.bytes, characters};
}

}  // namespace Proof
