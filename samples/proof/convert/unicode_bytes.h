// Text as bytes of UTF-8, UTF-16 or UTF-32, and its way from one to the other
// by the library's conversions.
//
// The library's texts end at their first zero unit and carry one. Files hold
// none: here texts are std::string, without a zero unit at their end.

#ifndef SAMPLES_PROOF_CONVERT_UNICODE_BYTES_H
#define SAMPLES_PROOF_CONVERT_UNICODE_BYTES_H

#include <cstdint>
#include <stdexcept>
#include <string>

namespace Proof {

/// The value is the size of a unit in bytes.
enum class UnicodeKind : std::size_t { Utf8 = 1, Utf16 = 2, Utf32 = 4 };

/// UTF-8 carries no mark, the others begin with theirs in the byte order that
/// bigEndian tells.
struct UnicodeBytes {
    UnicodeKind kind = UnicodeKind::Utf8;
    bool bigEndian = true;
    std::string bytes;
};

/// Why a text cannot be converted: "byte 80 at offset 12 begins no character".
class TextFault : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// The bytes as a text of this kind, in the order of their mark, without the
/// zero unit that may end them. Throws TextFault where the mark is missing, a
/// unit is cut off, or more follows a zero unit.
UnicodeBytes unicodeBytes(UnicodeKind kind, std::string bytes);

/// The text in another kind or byte order; the same text is copied. Throws
/// TextFault, naming the place, where the library takes the text for no text or
/// the kind cannot hold it.
UnicodeBytes converted(const UnicodeBytes& text, UnicodeKind kind, bool bigEndian);

/// Throws TextFault unless result, converted back, is text again. The library
/// reads some malformed UTF-8 leniently, and its surrogate pairs stand for
/// other characters than elsewhere.
void requireSame(const UnicodeBytes& text, const UnicodeBytes& result);

/// How many characters a text has, its mark not counted.
std::size_t characterCount(const UnicodeBytes& text);

/// "at offset 12"
std::string atOffset(std::size_t offset);

}  // namespace Proof

#endif
