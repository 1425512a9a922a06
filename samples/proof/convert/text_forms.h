// The forms of text that the library knows: which one a text has, and texts
// from one form to another.

#ifndef SAMPLES_PROOF_CONVERT_TEXT_FORMS_H
#define SAMPLES_PROOF_CONVERT_TEXT_FORMS_H

#include <optional>
#include <string>

#include "samples/proof/convert/unicode_bytes.h"

namespace Proof {

/// Escaped and Hex are plain text for the bytes of UTF-16, mark included:
/// \376\377\000A and FEFF0041.
enum class TextForm { Utf8, Utf16, Utf32, Escaped, Hex };

struct TextTarget {
    TextForm form = TextForm::Utf8;
    bool bigEndian = true;  // of all forms but UTF-8
};

/// The form that the library's tests find, those of marks first, so that no
/// mark hides another. None begins with a byte from F0 on unless that is a
/// mark's.
std::optional<TextForm> detectTextForm(const std::string& text);

/// "UTF-16", "escaped UTF-16" ...
const char* nameOf(TextForm form);

struct ConvertedText {
    std::string bytes;
    std::size_t characters = 0;
};

/// The text in another form; neither has a zero unit at its end, nor the
/// result a line end that text has not. A line end behind the escaped and the
/// hex form is no part of them. Throws TextFault for what is no text of that
/// form, and, unless lossy, where the text converted back is another one.
ConvertedText convertText(const std::string& text, TextForm form, const TextTarget& target,
                          bool lossy);

/// The bytes of UTF-16 in the escaped form. Throws TextFault where a zero byte
/// has to be written behind another one: behind \000 a character of the text
/// stands for itself, and zero is none.
std::string escapedForm(const std::string& utf16);

/// The bytes of UTF-16 in the hex form.
std::string hexForm(const std::string& utf16);

}  // namespace Proof

#endif
