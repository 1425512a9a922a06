// The one-pass form for any CPU: it has no blocks, and the rules do it all.

#include "encoding/unicode_onepass.h"

namespace Vaskel {
namespace {

BlockStop noBlocks(const Byte* in, const Byte*, Byte* out) { return {in, out}; }

std::size_t size16(const Byte* text) {
    std::size_t size = 0;
    while (text[size] != 0 || text[size + 1] != 0) size += 2;
    return size;
}

std::size_t size32(const Byte* text) {
    std::size_t size = 0;
    while (get32(text + size, false) != 0) size += 4;
    return size;
}

std::size_t utf8Units32(const Byte* text, std::size_t size) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < size; ++i) count += (text[i] & 0xC0) != 0x80;
    return count;
}

std::size_t utf8Units16(const Byte* text, std::size_t size) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < size; ++i) count += ((text[i] & 0xC0) != 0x80) + (text[i] >= 0xF0);
    return count;
}

// Each half of a pair becomes two of its four bytes.
template <bool kBig>
std::size_t utf16Bytes8(const Byte* text, std::size_t size) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < size; i += 2) {
        const std::uint32_t unit = get16(text + i, kBig);
        count += 1 + (unit >= 0x80) + (unit >= 0x800 && !isSurrogate(unit));
    }
    return count;
}

template <bool kBig>
std::size_t utf16Units32(const Byte* text, std::size_t size) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < size; i += 2) count += !isLowSurrogate(get16(text + i, kBig));
    return count;
}

template <bool kBig>
std::size_t utf32Bytes8(const Byte* text, std::size_t size) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < size; i += 4) {
        const std::uint32_t value = get32(text + i, kBig);
        count += 1 + (value >= 0x80) + (value >= 0x800) + (value >= 0x10000);
    }
    return count;
}

template <bool kBig>
std::size_t utf32Units16(const Byte* text, std::size_t size) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < size; i += 4) count += 1 + (get32(text + i, kBig) >= 0x10000);
    return count;
}

constexpr UnicodeBlocks kBlocks = {
    .utf8ToUtf16 = {noBlocks, noBlocks},
    .utf8ToUtf32 = {noBlocks, noBlocks},
    .utf16ToUtf8 = {noBlocks, noBlocks},
    .utf16ToUtf32 = {{noBlocks, noBlocks}, {noBlocks, noBlocks}},
    .utf32ToUtf8 = {noBlocks, noBlocks},
    .utf32ToUtf16 = {{noBlocks, noBlocks}, {noBlocks, noBlocks}},
    .size16 = size16,
    .size32 = size32,
    .utf8Units16 = utf8Units16,
    .utf8Units32 = utf8Units32,
    .utf16Bytes8 = {utf16Bytes8<false>, utf16Bytes8<true>},
    .utf16Units32 = {utf16Units32<false>, utf16Units32<true>},
    .utf32Bytes8 = {utf32Bytes8<false>, utf32Bytes8<true>},
    .utf32Units16 = {utf32Units16<false>, utf32Units16<true>},
};

}  // namespace

const UnicodeForm kUnicodeOnePass = OnePassForm<kBlocks>::named("one pass");

}  // namespace Vaskel
