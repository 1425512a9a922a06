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

constexpr UnicodeBlocks kBlocks = {
    .utf8ToUtf16 = {noBlocks, noBlocks},
    .utf8ToUtf32 = {noBlocks, noBlocks},
    .utf16ToUtf8 = {noBlocks, noBlocks},
    .utf16ToUtf32 = {{noBlocks, noBlocks}, {noBlocks, noBlocks}},
    .utf32ToUtf8 = {noBlocks, noBlocks},
    .utf32ToUtf16 = {{noBlocks, noBlocks}, {noBlocks, noBlocks}},
    .size16 = size16,
    .size32 = size32,
};

}  // namespace

const UnicodeForm kUnicodeOnePass = OnePassForm<kBlocks>::named("one pass");

}  // namespace Vaskel
