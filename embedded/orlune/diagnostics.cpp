#include "platform/orlune/diagnostics.h"

#include <chrono>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "embedded/orlune/sinks.h"

namespace Orlune {
namespace {

// Within debug, since a line a digit may come of big integers.
inline void writeLine(const char* line) {
    if (const auto handler = Embedded::sinks().debugLine)
        (*handler)(line);
    else
        std::fprintf(stderr, "%s\n", line);
}

}  // namespace

void Beep(int tone) {
    if (const auto handler = Embedded::sinks().beep) (*handler)(tone);
}

void debugstring(const char* line) { writeLine(line); }

void debug(const char* format, ...) {
    char line[1024];  // longer lines are cut
    const char* const end = strchrnul(format, '%');
    if (*end == 0 && end - format < static_cast<std::ptrdiff_t>(sizeof line))
        return writeLine(format);
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    writeLine(length < 0 ? format : line);
}

std::uint32_t Clock::Ticks() {
    using namespace std::chrono;
    return static_cast<std::uint32_t>(
        duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

}  // namespace Orlune
