// What a form of the Unicode conversions that works on whole blocks is made of.
//
// A block function converts block after block and stops in front of what it
// leaves to the rules, character by character. It never decides that a text is
// bad unless it says so.

#ifndef ENCODING_UNICODE_BLOCKS_H
#define ENCODING_UNICODE_BLOCKS_H

#include <cstddef>

#include "encoding/unicode.h"

namespace Vaskel {

/// Where a block function stopped: in is at the start of a character, and what
/// all characters before it become is in front of out. bad when no result but
/// the empty one is possible.
struct BlockStop {
    const unsigned char* in;
    unsigned char* out;
    bool bad = false;
};

constexpr std::size_t kBlock = 64;        // bytes of input that a block has, at the most
constexpr std::size_t kBlockAhead = 4;    // a character may end behind the block it begins in
constexpr std::size_t kBlockBehind = 2;   // the unit in front of a block
constexpr std::size_t kBlockSpill = 128;  // bytes written behind what counts, at the most

/// Converts from in, the start of a character, on as long as blocks begin at
/// or before last.
///
/// All of a block, kBlockAhead bytes behind it and kBlockBehind bytes in front
/// of in are readable; of out as many bytes are writable as the blocks' units
/// can become, and kBlockSpill more. Of the input's units none is zero but
/// those behind the text, where a block may reach; they convert as any other
/// unit does.
using BlockFunction = BlockStop (*)(const unsigned char* in, const unsigned char* last,
                                    unsigned char* out);

/// Block functions and their helpers for one kind of CPU. An index of 0 stands
/// for little-endian and 1 for big-endian text; of two, the first is the
/// input's.
struct UnicodeBlocks {
    BlockFunction utf8ToUtf16[2];
    BlockFunction utf8ToUtf32[2];
    BlockFunction utf16ToUtf8[2];
    BlockFunction utf16ToUtf32[2][2];
    BlockFunction utf32ToUtf8[2];
    BlockFunction utf32ToUtf16[2][2];

    /// The bytes in front of the zero unit.
    std::size_t (*size16)(const unsigned char* text);
    std::size_t (*size32)(const unsigned char* text);
};

extern const UnicodeForm kUnicodeOnePass;  // block functions that any CPU can run
extern const UnicodeForm kUnicodeAvx2;

}  // namespace Vaskel

#endif
