// The exported Unicode conversions: which form a text has, and the way from
// the two textual forms to UTF-16 bytes.

#include <algorithm>
#include <atomic>
#include <cstring>

#include "encoding/unicode_blocks.h"
#include "encoding/unicode_rules.h"
#include "encoding/unicode_tables.h"
#include "platform/orlune.h"
#include "util/cpu.h"
#include "vaskel/encoding.h"

namespace Vaskel {
namespace {

// The plain form is none of them, so that only a program that asks for all forms
// holds it.
const UnicodeForm& bestForm() {
#if defined(__x86_64__)
    const CpuLevel level = cpuLevel();
    if (level >= CpuLevel::Avx512Vbmi2) return kUnicodeAvx512;
    if (level >= CpuLevel::Avx2) {
        makeUnicodeTables();
        return kUnicodeAvx2;
    }
#endif
    return kUnicodeOnePass;
}

const UnicodeForm& chooseForm();

// One of the conversions, by the form that is chosen now.
template <auto kConversion, class... BigEndian>
std::string chooseAndConvert(const char* text, BigEndian... bigEndian) {
    return (chooseForm().*kConversion)(text, bigEndian...);
}

constexpr UnicodeForm kChoosing = {"none yet",
                                   chooseAndConvert<&UnicodeForm::utf8ToUtf32, bool>,
                                   chooseAndConvert<&UnicodeForm::utf8ToUtf16, bool>,
                                   chooseAndConvert<&UnicodeForm::utf16ToUtf32, bool>,
                                   chooseAndConvert<&UnicodeForm::utf16ToUtf8>,
                                   chooseAndConvert<&UnicodeForm::utf32ToUtf16, bool>,
                                   chooseAndConvert<&UnicodeForm::utf32ToUtf8>};

// What the exported functions use: one that chooses another until one of them is called,
// so that none has to ask each time whether that was done.
constinit std::atomic<const UnicodeForm*> gForm{&kChoosing};

const UnicodeForm& chooseForm() {
    const UnicodeForm& best = bestForm();
    gForm.store(&best, std::memory_order_release);  // its tables are made
    return best;
}

[[gnu::always_inline]] inline const UnicodeForm& chosenForm() {
    return *gForm.load(std::memory_order_acquire);
}

// The literal that follows a zero byte may be missing at the end of the text.
std::string bytesOfEscapes(const char* text) {
    std::string bytes;
    bytes.reserve(std::strlen(text) / 4 + 2);
    while (*text) {
        unsigned byte = 0;
        ++text;  // the backslash
        for (int i = 0; i < 3; ++i) {
            if (!*text) return {};
            byte = byte * 8 + byteAt(text++, 0) - '0';
        }
        bytes += static_cast<char>(byte);
        if (static_cast<unsigned char>(byte) == 0 && *text) bytes += *text++;
    }
    return bytes;
}

unsigned hexDigit(unsigned char c) { return c >= 'A' && c <= 'F' ? c - 55u : c - 48u; }

std::string bytesOfHexDigits(const char* text) {
    std::string bytes;
    bytes.reserve(std::strlen(text) / 2 + 2);
    for (; *text; text += 2) {
        if (!text[1]) return {};
        bytes += static_cast<char>(hexDigit(byteAt(text, 0)) * 16 + hexDigit(byteAt(text, 1)));
    }
    return bytes;
}

// bytes, completed by a zero unit. An odd last byte is completed by a zero
// byte, and the unit that ends the text by the one behind every std::string.
std::string utf8OfUtf16Bytes(std::string bytes) {
    if (bytes.empty()) return {};
    bytes.append(2, '\0');
    return ConvertUTF16ToUTF8String(bytes.c_str());
}

}  // namespace

std::span<const UnicodeForm* const> unicodeForms() {
    static constexpr const UnicodeForm* kForms[] = {
        &kUnicodePlain,
        &kUnicodeOnePass,
#if defined(__x86_64__)
        &kUnicodeAvx2,
        &kUnicodeAvx512
#endif
    };
    const auto best = std::ranges::find(kForms, &bestForm());
#if defined(__x86_64__)
    if (cpuLevel() >= CpuLevel::Avx2) makeUnicodeTables();
#endif
    return {kForms, best + 1};
}

void forceUnicodeForm(const UnicodeForm* form) {
    gForm.store(form ? form : &kChoosing, std::memory_order_relaxed);
}

bool IsUTF8String(const char* text) { return text && startsAsUtf8(text); }

bool IsUTF16String(const char* text) { return text && utf16Mark(text) != ByteOrder::Unmarked; }

bool IsUTF32String(const char* text) { return text && utf32Mark(text) != ByteOrder::Unmarked; }

bool IsUTFEscapedString(const char* text) {
    return text && (Orlune::strcompre(text, "\\376\\377") == 0 ||
                    Orlune::strcompre(text, "\\377\\376") == 0);
}

bool IsUTFHexString(const char* text) {
    return text && (Orlune::strcompre(text, "FEFF") == 0 || Orlune::strcompre(text, "FFFE") == 0);
}

// None of the three goes on to UTF-32: one mark begins with a zero byte, which
// counts as UTF-8, the other one with the UTF-16 mark FF FE.
// Test: "unicode: UTF-32 is taken for an empty text of another form".

std::string ConvertToUTF8String(const char* text) {
    if (IsUTF8String(text)) return text;
    if (IsUTF16String(text)) return ConvertUTF16ToUTF8String(text);
    return {};
}

std::string ConvertToUTF16String(const char* text, bool bigEndian) {
    if (IsUTF8String(text)) return ConvertUTF8ToUTF16String(text, bigEndian);
    if (IsUTF16String(text)) return text;  // up to its first zero byte
    return {};
}

std::string ConvertToUTF32String(const char* text, bool bigEndian) {
    if (IsUTF8String(text)) return ConvertUTF8ToUTF32String(text, bigEndian);
    if (IsUTF16String(text)) return ConvertUTF16ToUTF32String(text, bigEndian);
    return {};
}

std::string ConvertUTF8ToUTF32String(const char* text, bool bigEndian) {
    return text ? chosenForm().utf8ToUtf32(text, bigEndian) : std::string();
}

std::string ConvertUTF8ToUTF16String(const char* text, bool bigEndian) {
    return text ? chosenForm().utf8ToUtf16(text, bigEndian) : std::string();
}

std::string ConvertUTF16ToUTF32String(const char* text, bool bigEndian) {
    return text ? chosenForm().utf16ToUtf32(text, bigEndian) : std::string();
}

std::string ConvertUTF16ToUTF8String(const char* text) {
    return text ? chosenForm().utf16ToUtf8(text) : std::string();
}

std::string ConvertUTF32ToUTF16String(const char* text, bool bigEndian) {
    return text ? chosenForm().utf32ToUtf16(text, bigEndian) : std::string();
}

std::string ConvertUTF32ToUTF8String(const char* text) {
    return text ? chosenForm().utf32ToUtf8(text) : std::string();
}

std::string ConvertUTFEscapedToUTF8String(const char* text) {
    return IsUTFEscapedString(text) ? utf8OfUtf16Bytes(bytesOfEscapes(text)) : std::string();
}

std::string ConvertUTFHexToUTF8String(const char* text) {
    return IsUTFHexString(text) ? utf8OfUtf16Bytes(bytesOfHexDigits(text)) : std::string();
}

}  // namespace Vaskel
