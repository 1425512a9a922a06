// The formatter that message texts have always had: it counts up to 1024
// characters, fills its buffer and fails beyond. Hosts rely on where texts are
// cut, so it is built here upon vsnprintf, which counts on.

#include "messages/counted_format.h"

#include <cstring>

namespace Vaskel {

int formatFailed(MessageBuffer& text, int count) {
    // Where the formatter fails behind the buffer's end (at a character without
    // a multibyte form, or at the end of the int range), the text was too long
    // before it was wrong.
    if (count < 0 && std::memchr(text, '\0', kMessageLength) != nullptr) text[0] = '\0';
    return -1;
}

}  // namespace Vaskel
