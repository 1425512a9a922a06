#include "samples/proof/runs.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace Proof {
namespace {

// count bytes (1 to 8) as the upper bytes of a word, the first one uppermost.
std::uint64_t leadingBytes(const unsigned char* bytes, int count) {
    std::uint64_t word = 0;
    if (count >= 8) {
        std::memcpy(&word, bytes, 8);
        if constexpr (std::endian::native == std::endian::little) word = __builtin_bswap64(word);
        return word;
    }
    for (int i = 0; i < count; ++i) word |= std::uint64_t{bytes[i]} << (56 - 8 * i);
    return word;
}

}  // namespace

int findRuns(const unsigned char* ink, int width, int scale, int* runs, int capacity) {
    const int bytes = (width + 7) / 8;
    int found = 0;
    std::uint64_t before = 0;  // the pixel left of the word
    for (int at = 0; at < bytes; at += 8) {
        const std::uint64_t word = leadingBytes(ink + at, std::min(bytes - at, 8));
        // A set bit marks a pixel that differs from its left neighbour.
        std::uint64_t changes = word ^ (word >> 1 | before << 63);
        before = word & 1;
        while (changes != 0) {
            const int bit = std::countl_zero(changes);
            changes &= ~(std::uint64_t{1} << (63 - bit));
            if (found < capacity) runs[found] = (at * 8 + bit) * scale;
            ++found;
        }
    }
    if (before != 0) {  // ink in the last pixel of a row of whole words
        if (found < capacity) runs[found] = width * scale;
        ++found;
    }
    return found;
}

}  // namespace Proof
