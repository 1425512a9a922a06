// Byte shuffles that press the wanted parts of a vector together, for the wide
// forms of the Unicode conversions. 0x80 in a shuffle makes a zero byte.

#ifndef ENCODING_UNICODE_TABLES_H
#define ENCODING_UNICODE_TABLES_H

#include <array>
#include <cstdint>

namespace Vaskel {

using Shuffle = std::array<std::uint8_t, 16>;

/// By a mask of eight 16-bit units, those to keep, lowest bit first.
constexpr std::array<Shuffle, 256> makeKeptUnits() {
    std::array<Shuffle, 256> table{};
    for (unsigned mask = 0; mask < 256; ++mask) {
        unsigned at = 0;
        for (unsigned unit = 0; unit < 8; ++unit) {
            if ((mask >> unit & 1) == 0) continue;
            table[mask][at++] = static_cast<std::uint8_t>(2 * unit);
            table[mask][at++] = static_cast<std::uint8_t>(2 * unit + 1);
        }
        while (at < 16) table[mask][at++] = 0x80;
    }
    return table;
}

/// By a mask of eight 16-bit units: the low bytes of those in it, both bytes of
/// the others.
constexpr std::array<Shuffle, 256> makeOneOrTwo() {
    std::array<Shuffle, 256> table{};
    for (unsigned mask = 0; mask < 256; ++mask) {
        unsigned at = 0;
        for (unsigned unit = 0; unit < 8; ++unit) {
            table[mask][at++] = static_cast<std::uint8_t>(2 * unit);
            if ((mask >> unit & 1) == 0)
                table[mask][at++] = static_cast<std::uint8_t>(2 * unit + 1);
        }
        while (at < 16) table[mask][at++] = 0x80;
    }
    return table;
}

/// By four codes of two bits: how many of the last bytes of each of four
/// 32-bit lanes to keep. Codes 0, 1, 3 and 2 stand for 1, 2, 3 and 4 bytes: bit
/// 0 is set for two and three, bit 1 for three and four.
constexpr unsigned keptBytes(unsigned code) { return code < 2 ? code + 1 : 6 - code; }

constexpr std::array<Shuffle, 256> makeKeptBytes() {
    std::array<Shuffle, 256> table{};
    for (unsigned codes = 0; codes < 256; ++codes) {
        unsigned at = 0;
        for (unsigned lane = 0; lane < 4; ++lane) {
            const unsigned count = keptBytes(codes >> 2 * lane & 3);
            for (unsigned i = 4 - count; i < 4; ++i)
                table[codes][at++] = static_cast<std::uint8_t>(4 * lane + i);
        }
        while (at < 16) table[codes][at++] = 0x80;
    }
    return table;
}

/// The bytes kept by four codes.
constexpr std::array<std::uint8_t, 256> makeKeptByteCounts() {
    std::array<std::uint8_t, 256> table{};
    for (unsigned codes = 0; codes < 256; ++codes)
        for (unsigned lane = 0; lane < 4; ++lane)
            table[codes] =
                static_cast<std::uint8_t>(table[codes] + keptBytes(codes >> 2 * lane & 3));
    return table;
}

/// By a mask of eight 32-bit lanes, the numbers of those to keep, a byte each.
constexpr std::array<std::uint64_t, 256> makeKeptLanes() {
    std::array<std::uint64_t, 256> table{};
    for (unsigned mask = 0; mask < 256; ++mask) {
        unsigned at = 0;
        for (unsigned lane = 0; lane < 8; ++lane)
            if (mask >> lane & 1) table[mask] |= std::uint64_t{lane} << 8 * at++;
    }
    return table;
}

/// Four bits, each followed by a zero bit.
constexpr std::array<std::uint8_t, 16> makeSpreadBits() {
    std::array<std::uint8_t, 16> table{};
    for (unsigned bits = 0; bits < 16; ++bits)
        for (unsigned i = 0; i < 4; ++i)
            table[bits] = static_cast<std::uint8_t>(table[bits] | (bits >> i & 1) << 2 * i);
    return table;
}

alignas(64) inline constexpr auto kKeptUnits = makeKeptUnits();
alignas(64) inline constexpr auto kOneOrTwo = makeOneOrTwo();
alignas(64) inline constexpr auto kKeptBytes = makeKeptBytes();
alignas(64) inline constexpr auto kKeptByteCounts = makeKeptByteCounts();
alignas(64) inline constexpr auto kKeptLanes = makeKeptLanes();
alignas(64) inline constexpr auto kSpreadBits = makeSpreadBits();

}  // namespace Vaskel

#endif
