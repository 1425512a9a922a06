// ASCII85: four bytes become five base-85 digits, most significant first.
// PostScript Language Reference, third edition, section 3.13, ASCII85Encode.
//
// Between calls mFill is 0 to 3 and mGroup[0, mFill) waits to be written.

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "vaskel/encoding.h"

namespace Vaskel {
namespace {

constexpr int kGroup = 4;
constexpr int kDigits = 5;
constexpr int kLineLength = 100;

// 82 * 85^4 < 2^32 < 83 * 85^4, so the first digit is at most 82. The digits
// do not wait for each other.
void digitsOf(std::uint32_t value, char (&digits)[kDigits]) {
    digits[0] = static_cast<char>('!' + value / 52200625);
    digits[1] = static_cast<char>('!' + value / 614125 % 85);
    digits[2] = static_cast<char>('!' + value / 7225 % 85);
    digits[3] = static_cast<char>('!' + value / 85 % 85);
    digits[4] = static_cast<char>('!' + value % 85);
}

std::uint32_t valueOf(const unsigned char (&group)[kGroup]) {
    return std::uint32_t{group[0]} << 24 | std::uint32_t{group[1]} << 16 |
           std::uint32_t{group[2]} << 8 | group[3];
}

// Stores group[at] = c and returns valueOf(group). All four bytes are stored,
// since a processor waits when it reads as one word what it has just stored as
// bytes.
std::uint32_t put(unsigned char (&group)[kGroup], int at, unsigned char c) {
    if (std::endian::native != std::endian::little) {
        group[at] = c;
        return valueOf(group);
    }
    std::uint32_t word;
    std::memcpy(&word, group, sizeof word);
    const int shift = 8 * at;
    word = (word & ~(std::uint32_t{0xFF} << shift)) | std::uint32_t{c} << shift;
    std::memcpy(group, &word, sizeof word);
    return __builtin_bswap32(word);
}

}  // namespace

ascii85out_base::ascii85out_base() : mGroup{}, mColumn(0), mLineLength(kLineLength), mFill(0) {}
ascii85out_base::ascii85out_base(const ascii85out_base& other) = default;
ascii85out_base& ascii85out_base::operator=(const ascii85out_base& other) = default;
ascii85out_base::~ascii85out_base() = default;

// A "~" does not break the line, so that the end marker stays on one.
void ascii85out_base::putuns8ascii(char c) {
    putuns8(static_cast<unsigned char>(c));
    ++mColumn;
    if (mColumn >= mLineLength && c != '~') {
        putuns8('\n');
        mColumn = 0;
    }
}

int ascii85out_base::encode(unsigned char c) {
    const std::uint32_t value = put(mGroup, mFill, c);
    if (++mFill != kGroup) return 0;
    mFill = 0;  // before anything is written: putuns8 may throw
    if (value == 0) {
        putuns8ascii('z');
        return 0;
    }
    char digits[kDigits];
    digitsOf(value, digits);
    for (const char digit : digits) putuns8ascii(digit);
    return 0;
}

void ascii85out_base::finish() {
    if (mFill > 0) {
        // A partial group is padded with zeros and never written as z.
        std::fill(mGroup + mFill, mGroup + kGroup, static_cast<unsigned char>(0));
        char digits[kDigits];
        digitsOf(valueOf(mGroup), digits);
        for (int i = 0; i <= mFill; ++i) putuns8ascii(digits[i]);
    }
    putuns8('~');
    ++mColumn;
    putuns8ascii('>');
}

}  // namespace Vaskel
