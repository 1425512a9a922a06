// Orlune: the beep, the debugger output and the clock.

#ifndef PLATFORM_ORLUNE_DIAGNOSTICS_H
#define PLATFORM_ORLUNE_DIAGNOSTICS_H

#include <cstdint>

#include "platform/export.h"

namespace Orlune {

/// Sounds the short alert that tells a user that an input was refused. The
/// engines pass 500 (the host's own scale) and go on whatever happens.
/// Exceptions of a host pass through the engines, which are consistent then.
PLATFORM_API void Beep(int tone);

/// Writes one line, formatted as by printf, to the developer's output. Lines
/// of up to 500 bytes come out whole; a host may cut longer ones. Never reaches
/// the user, never stops the operation that reports.
PLATFORM_API void debug(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Writes one line to the developer's output as it stands (no format). line
/// carries no line feed.
PLATFORM_API void debugstring(const char* line);

class PLATFORM_API Clock {
 public:
    /// Milliseconds of a steady clock, modulo 2^32, from any starting point.
    ///
    /// Callable before any static object of the platform is constructed, and on
    /// any thread: the library seeds its process-wide random generator while it
    /// is loaded.
    static std::uint32_t Ticks();
};

}  // namespace Orlune

#endif
