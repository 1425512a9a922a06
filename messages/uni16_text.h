// 16-bit text to and from UTF-8, as error objects and handlers need it.

#ifndef MESSAGES_UNI16_TEXT_H
#define MESSAGES_UNI16_TEXT_H

#include <string>

#include "platform/orlune/error.h"

namespace Vaskel {

/// The 16-bit form of UTF-8 text up to its first NUL; empty when the platform
/// refuses the text.
Orlune::Core::uni16string uni16FromUTF8(const std::string& text);

/// The UTF-8 form of 16-bit text up to its first NUL; empty when the platform
/// refuses the text.
std::string utf8FromUni16(const Orlune::Core::uni16string& text);

}  // namespace Vaskel

#endif
