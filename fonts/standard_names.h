// The standard glyph names of printable ASCII.

#ifndef FONTS_STANDARD_NAMES_H
#define FONTS_STANDARD_NAMES_H

#include <string_view>

namespace Fonts {

/// "Adobe Standard Encoding", codes 32 to 126; empty for every other code.
std::string_view standardName(unsigned char code);

}  // namespace Fonts

#endif
