// Named narrowings: what happens to a value that does not fit is written down
// at every place where it matters.

#ifndef UTIL_NARROW_H
#define UTIL_NARROW_H

#include <cstdint>
#include <limits>

namespace Vaskel {

/// The low 32 bits, as a signed integer.
constexpr std::int32_t wrap32(std::int64_t value) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

/// The nearest 32-bit integer.
constexpr std::int32_t clamp32(std::int64_t value) {
    constexpr std::int64_t lowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t highest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(value < lowest ? lowest : value > highest ? highest : value);
}

/// The nearest byte value.
constexpr unsigned char clamp8(int value) {
    return static_cast<unsigned char>(value < 0 ? 0 : value > 255 ? 255 : value);
}

}  // namespace Vaskel

#endif
