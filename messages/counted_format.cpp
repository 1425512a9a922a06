// The formatter that message texts have always had: it counts up to 1024
// characters, fills its buffer and fails beyond. Hosts rely on where texts are
// cut, so it is built here upon vsnprintf, which counts on.

#include "messages/counted_format.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace Vaskel {

[[gnu::noinline]] int formatByLibrary(MessageBuffer& text, const char* format, va_list arguments) {
    text[0] = '\0';
    const int count = std::vsnprintf(text, sizeof text, format, arguments);
    if (count >= 0 && count <= kMessageLength) return count;
    // Where the formatter fails behind the buffer's end (at a character without
    // a multibyte form, or at the end of the int range), the text was too long
    // before it was wrong.
    if (count < 0 && std::memchr(text, '\0', kMessageLength) != nullptr) text[0] = '\0';
    return -1;
}

// What nearly all messages ask for, in half the time. Equal, since vsnprintf
// passes bytes of formats and texts on as they stand, and gives a number without
// flags the same digits in every locale.
int formatSimple(MessageBuffer& text, const char* format, va_list arguments) {
    char* out = text;
    char* const end = text + kMessageLength;
    for (;;) {
        char c;
        while ((c = *format++) != '%') {
            *out = c;
            if (c == '\0') return static_cast<int>(out - text);
            if (out++ == end) return -1;
        }
        char digits[11];  // "-2147483648"
        const char* from = format;
        std::size_t count = 1;
        c = *format++;
        if (c == 'd' || c == 'i') {
            const int value = va_arg(arguments, int);
            std::uint32_t size = static_cast<std::uint32_t>(value);
            if (value < 0) size = 0 - size;
            char* first = std::end(digits);
            do *--first = static_cast<char>('0' + size % 10);
            while ((size /= 10) != 0);
            if (value < 0) *--first = '-';
            from = first;
            count = static_cast<std::size_t>(std::end(digits) - first);
        } else if (c == 's') {
            from = va_arg(arguments, const char*);
            if (from == nullptr) return -1;
            // Looks no further than the terminator, nor on where the text is too long.
            const void* const stop = std::memchr(from, '\0', kMessageLength + 1);
            if (stop == nullptr) return -1;
            count = static_cast<std::size_t>(static_cast<const char*>(stop) - from);
        } else if (c != '%') {
            return -1;
        }
        if (count > static_cast<std::size_t>(end - out)) return -1;
        std::memcpy(out, from, count);
        out += count;
    }
}

int formatCounted(MessageBuffer& text, const char* format, va_list arguments) {
    text[0] = '\0';
    if (format == nullptr) return -1;
    va_list again;
    va_copy(again, arguments);
    const int count = formatSimple(text, format, again);
    va_end(again);
    return count >= 0 ? count : formatByLibrary(text, format, arguments);
}

}  // namespace Vaskel
