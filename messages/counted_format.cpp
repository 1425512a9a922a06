// The formatter that message texts have always had: it counts up to 1024
// characters, fills its buffer and fails beyond. Hosts rely on where texts are
// cut, so it is built here upon vsnprintf, which counts on.

#include "messages/counted_format.h"

#include <cstdio>
#include <cstring>

namespace Vaskel {

int formatCounted(MessageBuffer& text, const char* format, va_list arguments) {
    text[0] = '\0';
    if (format == nullptr) return -1;
    const int count = std::vsnprintf(text, sizeof text, format, arguments);
    if (count > kMessageLength) return -1;
    if (count >= 0) return count;
    // Where the formatter fails behind the buffer's end (at a character without
    // a multibyte form, or at the end of the int range), the text was too long
    // before it was wrong.
    if (std::memchr(text, '\0', kMessageLength) != nullptr) text[0] = '\0';
    return -1;
}

}  // namespace Vaskel
