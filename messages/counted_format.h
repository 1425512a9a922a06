// printf into the fixed buffer of a message.

#ifndef MESSAGES_COUNTED_FORMAT_H
#define MESSAGES_COUNTED_FORMAT_H

#include <cstdarg>
#include <cstddef>
#include <cstdio>

namespace Vaskel {

/// How many bytes of text a message holds.
constexpr int kMessageLength = 1024;

/// A message's text and its terminator.
using MessageBuffer = char[kMessageLength + 1];

/// What formatCounted makes of a count that vsnprintf returned and that is not 0
/// to 1024; -1.
int formatFailed(MessageBuffer& text, int count);

/// Formats into text and returns the count of characters, 0 to 1024. A longer
/// text leaves its first 1024 bytes and gives -1; a failure of the formatter
/// within them leaves the empty text and gives -1. text is terminated in every case.
__attribute__((format(printf, 2, 0))) inline int formatCounted(MessageBuffer& text,
                                                               const char* format,
                                                               va_list arguments) {
    text[0] = '\0';
    if (format == nullptr) return -1;
    const int count = std::vsnprintf(text, sizeof text, format, arguments);
    if (count < 0 || count > kMessageLength) [[unlikely]]
        return formatFailed(text, count);
    return count;
}

}  // namespace Vaskel

#endif
