// Appending texts, bytes and decimal numbers to a byte vector.

#ifndef FONTS_TEXT_OUT_H
#define FONTS_TEXT_OUT_H

#include <cstddef>
#include <string_view>
#include <vector>

namespace Fonts {

// Not inline: the texts of a font are appended in thirty places.
void appendText(std::vector<unsigned char>& out, std::string_view text);
void appendBytes(std::vector<unsigned char>& out, const unsigned char* bytes, std::size_t count);
void appendNumber(std::vector<unsigned char>& out, long long value);

/// Writes up to 20 digits and returns the end.
unsigned char* copyNumber(std::size_t value, unsigned char* out);

}  // namespace Fonts

#endif
