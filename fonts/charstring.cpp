#include "fonts/charstring.h"

#include <algorithm>

namespace Fonts {

unsigned char* encodeNumber(unsigned char* out, std::int64_t value) {
    const auto byte = [](std::int64_t v) { return static_cast<unsigned char>(v); };
    if (value >= -107 && value <= 107) {
        *out++ = byte(value + 139);
    } else if (value >= 108 && value <= 1131) {
        *out++ = byte(247 + (value - 108) / 256);
        *out++ = byte((value - 108) % 256);
    } else if (value <= -108 && value >= -1131) {
        *out++ = byte(251 + (-value - 108) / 256);
        *out++ = byte((-value - 108) % 256);
    } else {
        // Not the full 32-bit range: interpreters take larger numbers only as
        // operands of a division, which is never written.
        const auto bits =
            static_cast<std::uint32_t>(std::clamp<std::int64_t>(value, -31999, 31999));
        *out++ = 255;
        for (int shift = 24; shift >= 0; shift -= 8) *out++ = byte(bits >> shift & 0xFF);
    }
    return out;
}

}  // namespace Fonts
