// ASCII85: four bytes become five base-85 digits, most significant first.
// PostScript Language Reference, third edition, section 3.13, ASCII85Encode.
//
// Between calls mFill is 0 to 3 and so many bytes of mGroup, the lower ones, wait
// to be written.

#include <cstdint>

#include "encoding/ascii85_digits.h"
#include "vaskel/encoding.h"

namespace Vaskel {
namespace {

constexpr int kGroup = 4;
constexpr int kDigits = 5;
constexpr int kLineLength = 100;

unsigned char character(unsigned char digit) { return static_cast<unsigned char>('!' + digit); }

// One character more, by a load and a store of their own: the addition in memory
// that a compiler would take instead is slower right behind a call.
void count(std::int32_t& column) {
    volatile std::int32_t& place = column;
    place = place + 1;
}

}  // namespace

ascii85out_base::ascii85out_base() : mGroup(0), mColumn(0), mLineLength(kLineLength), mFill(0) {}
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

// The group at whose characters a line may end: each of them by the line rule.
int ascii85out_base::putgroupAtEnd(std::uint32_t value) {
    mFill = 0;  // before anything is written: putuns8 may throw
    if (value == 0) {
        putuns8ascii('z');
        return 0;
    }
    Digits85 digits(value);
    for (int i = 0; i < kDigits; ++i) putuns8ascii(static_cast<char>(character(digits.next())));
    return 0;
}

// Apart from encode, which then has no registers to save for three bytes of
// four, and from the end of a line, which would keep more of them. A processor
// that guesses wrong which groups are zero finds out while it writes the first
// character, which both have.
//
// This and encode begin at lines of the cache: they are a few instructions a call,
// fetched anew with each, and took up to a tenth longer where the linker put them
// across such lines.
[[gnu::aligned(64)]] int ascii85out_base::putgroup(std::uint32_t value) {
    if (mColumn >= mLineLength - kDigits) return putgroupAtEnd(value);
    mFill = 0;
    Digits85 digits(value);
    const unsigned isZero = value == 0;
    // No line ends in this group. Columns are counted one by one, so that they are
    // those that were written where putuns8 throws or copies the stream.
    putuns8(static_cast<unsigned char>(character(digits.next()) + isZero * ('z' - '!')));
    count(mColumn);
    if (isZero) return 0;
#pragma GCC unroll 4
    for (int i = 1; i < kDigits; ++i) {
        putuns8(character(digits.next()));
        count(mColumn);
    }
    return 0;
}

// The group is one word at one place: a processor passes that on from a byte to
// the next before it is stored, and knows early which groups are zero.
[[gnu::aligned(64)]] int ascii85out_base::encode(unsigned char c) {
    const std::uint32_t group = mGroup << 8 | c;
    if (mFill == kGroup - 1) return putgroup(group);
    mGroup = group;
    ++mFill;
    return 0;
}

void ascii85out_base::finish() {
    if (mFill > 0) {
        // A partial group is padded with zeros and never written as z.
        Digits85 digits(mGroup << 8 * (kGroup - mFill));
        for (int i = 0; i <= mFill; ++i) putuns8ascii(static_cast<char>(character(digits.next())));
    }
    putuns8('~');
    ++mColumn;
    putuns8ascii('>');
}

}  // namespace Vaskel
