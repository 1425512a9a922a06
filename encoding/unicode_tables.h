// Byte shuffles that press the wanted parts of a vector together, for the AVX2
// form of the Unicode conversions. 0x80 in a shuffle makes a zero byte.

#ifndef ENCODING_UNICODE_TABLES_H
#define ENCODING_UNICODE_TABLES_H

#include <array>
#include <cstdint>

namespace Vaskel {

using Shuffle = std::array<std::uint8_t, 16>;

/// By four codes of two bits: how many of the last bytes of each of four
/// 32-bit lanes to keep. Codes 0, 1, 3 and 2 stand for 1, 2, 3 and 4 bytes: bit
/// 0 is set for two and three, bit 1 for three and four.
constexpr unsigned keptBytes(unsigned code) { return code < 2 ? code + 1 : 6 - code; }

/// 14 KiB, made when they are first asked for rather than stored in the library.
struct UnicodeTables {
    /// By a mask of eight 16-bit units, those to keep, lowest bit first.
    alignas(64) Shuffle keptUnits[256];

    /// By a mask of eight 16-bit units: the low bytes of those in it, both bytes
    /// of the others.
    Shuffle oneOrTwo[256];

    /// The bytes kept by four codes, see above, and how many they are.
    Shuffle keptBytes[256];
    std::uint8_t keptByteCounts[256];

    /// By a mask of eight 32-bit lanes, the numbers of those to keep, a byte each.
    std::uint64_t keptLanes[256];
};

/// All zero before makeUnicodeTables is called.
extern UnicodeTables gUnicodeTables;

/// Makes the tables, at the first call only. Whoever hands out a form that
/// needs them calls it before.
void makeUnicodeTables();

/// Four bits, each followed by a zero bit.
constexpr std::array<std::uint8_t, 16> makeSpreadBits() {
    std::array<std::uint8_t, 16> table{};
    for (unsigned bits = 0; bits < 16; ++bits)
        for (unsigned i = 0; i < 4; ++i)
            table[bits] = static_cast<std::uint8_t>(table[bits] | (bits >> i & 1) << 2 * i);
    return table;
}

alignas(16) inline constexpr auto kSpreadBits = makeSpreadBits();

}  // namespace Vaskel

#endif
