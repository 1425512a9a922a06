// Telling the CPU what a form of packed sums needs next. That never faults,
// wherever it may be.

#ifndef RASTER_DOWNSAMPLE_FETCH_H
#define RASTER_DOWNSAMPLE_FETCH_H

#include <cstddef>
#include <cstdint>

#include "raster/downsample_packed.h"

namespace Vaskel {

inline std::uintptr_t bytesAhead(const PackedLine& line) {
    return line.step != 0 ? line.step : 1024;
}

/// count bytes of what comes next.
inline void fetch(const unsigned char* from, std::uintptr_t ahead, std::size_t count) {
    constexpr std::size_t kCacheLine = 64;
    for (std::size_t i = 0; i < count; i += kCacheLine)
        __builtin_prefetch(
            reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(from) + ahead + i), 0,
            2);
}

}  // namespace Vaskel

#endif
