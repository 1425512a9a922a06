// One pass over the text instead of a detour through a UTF-32 string: the frame
// that is common to all block functions, and how characters are read and written
// one by one.

#ifndef ENCODING_UNICODE_ONEPASS_H
#define ENCODING_UNICODE_ONEPASS_H

#include <cstdint>
#include <cstring>

#include "encoding/unicode_blocks.h"
#include "encoding/unicode_rules.h"
#include "util/stream.h"

namespace Vaskel {

using Byte = unsigned char;

inline void put16(Byte*& out, std::uint32_t unit, bool big) {
    out[big ? 0 : 1] = static_cast<Byte>(unit >> 8);
    out[big ? 1 : 0] = static_cast<Byte>(unit);
    out += 2;
}

inline void put32(Byte*& out, std::uint32_t unit, bool big) {
    put16(out, big ? unit >> 16 : unit & 0xFFFF, big);
    put16(out, big ? unit & 0xFFFF : unit >> 16, big);
}

inline void putUtf8(Byte*& out, std::uint32_t value) {
    const auto follower = [](std::uint32_t bits) {
        return static_cast<Byte>(0x80 | (bits & 0x3F));
    };
    if (value < 0x80) {
        *out++ = static_cast<Byte>(value);
    } else if (value < 0x800) {
        *out++ = static_cast<Byte>(0xC0 | value >> 6);
        *out++ = follower(value);
    } else if (value < 0x10000) {
        *out++ = static_cast<Byte>(0xE0 | value >> 12);
        *out++ = follower(value >> 6);
        *out++ = follower(value);
    } else {
        *out++ = static_cast<Byte>(0xF0 | value >> 18);
        *out++ = follower(value >> 12);
        *out++ = follower(value >> 6);
        *out++ = follower(value);
    }
}

inline std::uint32_t get16(const Byte* in, bool big) {
    return big ? std::uint32_t{in[0]} << 8 | in[1] : std::uint32_t{in[1]} << 8 | in[0];
}

inline std::uint32_t get32(const Byte* in, bool big) {
    return big ? get16(in, true) << 16 | get16(in + 2, true)
               : get16(in + 2, false) << 16 | get16(in, false);
}

/// One character of UTF-8; false when it is none or ends behind end.
inline bool getUtf8(const Byte*& in, const Byte* end, std::uint32_t& value) {
    const Byte lead = *in++;
    const int followers = utf8Followers(lead);
    if (followers < 0 || end - in < followers) return false;
    value = followers == 0 ? lead : lead & (0x3F >> followers);
    for (int i = 0; i < followers; ++i) value = value << 6 | (*in++ & 0x3F);
    return true;
}

enum class Taken { Yes, Bad, EndedAtZero };

/// One of the six conversions.
struct UnicodeWay {
    /// The sizes of the input's units and of the output's, and of the unit that
    /// the output has in front and behind, if it has one.
    std::size_t unit, outUnit, markSize;
    /// How many bytes one of input becomes, at the most.
    std::size_t growth;
    /// Whether nearly every text becomes that many.
    bool growsEvenly;
    /// Converts characters by the rules as long as they begin in front of until.
    Taken (*take)(const Byte*& in, const Byte* until, const Byte* end, Byte*& out,
                  ByteOrders orders);
};

extern const UnicodeWay kUtf8ToUtf16, kUtf8ToUtf32, kUtf16ToUtf8, kUtf16ToUtf32, kUtf32ToUtf8,
    kUtf32ToUtf16;

/// text converted by the rules of a way, and by the blocks' function for it where that
/// pays.
std::string convertUnicode(const UnicodeWay& way, const UnicodeBlocks& blocks,
                           BlockFunction function, const char* text, bool big);

/// Results that are written past the caches.
extern Streams gUnicodeStreams;

/// The six conversions with the block functions of one kind of CPU.
template <const UnicodeBlocks& kBlocks>
struct OnePassForm {
    static std::string utf8ToUtf32(const char* text, bool big) {
        return convertUnicode(kUtf8ToUtf32, kBlocks, kBlocks.utf8ToUtf32, text, big);
    }
    static std::string utf8ToUtf16(const char* text, bool big) {
        return convertUnicode(kUtf8ToUtf16, kBlocks, kBlocks.utf8ToUtf16, text, big);
    }
    static std::string utf16ToUtf32(const char* text, bool big) {
        return convertUnicode(kUtf16ToUtf32, kBlocks, kBlocks.utf16ToUtf32, text, big);
    }
    static std::string utf16ToUtf8(const char* text) {
        return convertUnicode(kUtf16ToUtf8, kBlocks, kBlocks.utf16ToUtf8, text, false);
    }
    static std::string utf32ToUtf16(const char* text, bool big) {
        return convertUnicode(kUtf32ToUtf16, kBlocks, kBlocks.utf32ToUtf16, text, big);
    }
    static std::string utf32ToUtf8(const char* text) {
        return convertUnicode(kUtf32ToUtf8, kBlocks, kBlocks.utf32ToUtf8, text, false);
    }

    static constexpr UnicodeForm named(const char* name) {
        return {name,        utf8ToUtf32,  utf8ToUtf16, utf16ToUtf32,
                utf16ToUtf8, utf32ToUtf16, utf32ToUtf8};
    }
};

}  // namespace Vaskel

#endif
