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
/// all characters before it become is in front of out, which is null when no
/// result but the empty one is possible.
struct BlockStop {
    const unsigned char* in = nullptr;
    unsigned char* out = nullptr;
};

/// Which of the two texts are big-endian; either is ignored where it is UTF-8.
struct ByteOrders {
    bool inBig, big;
};

// Bytes of input that a block has, at the most; twice that where blocks end with the
// text and become no more bytes than they have.
constexpr std::size_t kBlock = 64;
constexpr std::size_t kBlockAhead = 4;    // a character may end behind the block it begins in
constexpr std::size_t kBlockBehind = 2;   // the unit in front of a block
constexpr std::size_t kBlockSpill = 256;  // bytes written behind what counts, at the most

/// Converts from in, the start of a character, on as long as blocks begin at
/// or before last.
///
/// All of a block, kBlockAhead bytes behind it and kBlockBehind bytes in front
/// of in are readable; of out as many bytes are writable as the blocks' units
/// can become, and kBlockSpill more. Of the input's units none is zero but
/// those behind the text, where a block may reach; they convert as any other
/// unit does.
///
/// Functions for blocks that end where the text does read nothing from end on
/// and take a shorter last block.
using BlockFunction = BlockStop (*)(const unsigned char* in, const unsigned char* last,
                                    const unsigned char* end, unsigned char* out,
                                    ByteOrders orders);

/// Block functions and their helpers for one kind of CPU.
struct UnicodeBlocks {
    BlockFunction utf8ToUtf16, utf8ToUtf32;
    BlockFunction utf16ToUtf8, utf16ToUtf32;
    BlockFunction utf32ToUtf8, utf32ToUtf16;

    /// The bytes in front of the zero byte or unit.
    std::size_t (*size8)(const unsigned char* text);
    std::size_t (*size16)(const unsigned char* text);
    std::size_t (*size32)(const unsigned char* text);

    /// How many bytes from the beginning of a block on must belong to the text:
    /// all that the functions read or, if blocks end with the text, one.
    std::size_t ahead;
};

extern const UnicodeForm kUnicodeOnePass;  // block functions that any CPU can run
extern const UnicodeForm kUnicodeAvx2;
extern const UnicodeForm kUnicodeAvx512;

}  // namespace Vaskel

#endif
