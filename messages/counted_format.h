// printf into the fixed buffer of a message.

#ifndef MESSAGES_COUNTED_FORMAT_H
#define MESSAGES_COUNTED_FORMAT_H

#include <cstdarg>
#include <cstddef>

namespace Vaskel {

/// How many bytes of text a message holds.
constexpr int kMessageLength = 1024;

/// A message's text and its terminator.
using MessageBuffer = char[kMessageLength + 1];

/// Formats into text and returns the count of characters, 0 to 1024. A longer
/// text leaves its first 1024 bytes and gives -1; a failure of the formatter
/// within them leaves the empty text and gives -1. text is terminated in every case.
__attribute__((format(printf, 2, 0))) int formatCounted(MessageBuffer& text, const char* format,
                                                        va_list arguments);

// The two forms that it is made of, for formats that are not null.

/// The rule itself, by vsnprintf: takes every format.
__attribute__((format(printf, 2, 0))) int formatByLibrary(MessageBuffer& text, const char* format,
                                                          va_list arguments);

/// The same for a format of text and the conversions %s, %d, %i and %%, without
/// flags, width, precision or size. Gives -1, with anything in text, for others, for
/// a null text and for a text that does not fit in.
__attribute__((format(printf, 2, 0))) int formatSimple(MessageBuffer& text, const char* format,
                                                       va_list arguments);

}  // namespace Vaskel

#endif
