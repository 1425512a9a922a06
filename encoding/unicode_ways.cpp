// The six conversions character by character, by the rules alone.
//
// Same results as the plain form: characters go through the same rules, and
// the one effect of the intermediate string, that an overlong zero in UTF-8
// ends the UTF-16 text while bad bytes behind it still count, is made by
// EndedAtZero.

#include "encoding/unicode_onepass.h"

namespace Vaskel {
namespace {

// What a character's value becomes; Yes, or what it means for the text.
using Put = Taken (*)(std::uint32_t value, Byte*& out, bool big);

Taken putValue32(std::uint32_t value, Byte*& out, bool big) {
    put32(out, value, big);
    return Taken::Yes;
}

Taken putValue16(std::uint32_t value, Byte*& out, bool big) {
    if (isSurrogate(value)) return Taken::Bad;
    if (value < 0x10000) {
        put16(out, value, big);
    } else {
        put16(out, highUnit(value), big);
        put16(out, lowUnit(value), big);
    }
    return Taken::Yes;
}

Taken putValue8(std::uint32_t value, Byte*& out, bool) {
    putUtf8(out, value);
    return Taken::Yes;
}

// A unit or a pair of UTF-16; false for a surrogate alone. A high unit at the
// text's end is followed by the zero unit.
bool getUtf16(const Byte*& in, bool big, std::uint32_t& value) {
    value = get16(in, big);
    in += 2;
    if (!isSurrogate(value)) return true;
    if (!isHighSurrogate(value)) return false;
    const std::uint32_t low = get16(in, big);
    in += 2;
    if (!isLowSurrogate(low)) return false;
    value = surrogatePairValue(value, low);
    return true;
}

bool getUtf32(const Byte*& in, bool big, std::uint32_t& value) {
    value = get32(in, big);
    in += 4;
    return value < kUnicodeEnd;
}

template <std::size_t kUnit, Put kPut>
Taken take(const Byte*& inOut, const Byte* until, const Byte* end, Byte*& outOut,
           ByteOrders orders) {
    // Of pointers that are passed in, each byte written could change one.
    const Byte* in = inOut;
    Byte* out = outOut;
    Taken taken = Taken::Yes;
    while (in < until && taken == Taken::Yes) {
        std::uint32_t value;
        if (kUnit == 1 ? !getUtf8(in, end, value)
                       : !(kUnit == 2 ? getUtf16 : getUtf32)(in, orders.inBig, value))
            return Taken::Bad;
        if (kPut == putValue16 && kUnit == 1 && value == 0) {
            while (in < end)
                if (!getUtf8(in, end, value)) return Taken::Bad;
            taken = Taken::EndedAtZero;
        } else {
            taken = kPut(value, out, orders.big);
        }
    }
    inOut = in;
    outOut = out;
    return taken;
}

}  // namespace

constexpr UnicodeWay kUtf8ToUtf16 = {1, 2, 2, 2, false, take<1, putValue16>};
constexpr UnicodeWay kUtf8ToUtf32 = {1, 4, 4, 4, false, take<1, putValue32>};
constexpr UnicodeWay kUtf16ToUtf8 = {2, 1, 0, 2, false, take<2, putValue8>};
constexpr UnicodeWay kUtf16ToUtf32 = {2, 4, 4, 2, true, take<2, putValue32>};
constexpr UnicodeWay kUtf32ToUtf8 = {4, 1, 0, 1, false, take<4, putValue8>};
constexpr UnicodeWay kUtf32ToUtf16 = {4, 2, 2, 1, false, take<4, putValue16>};

}  // namespace Vaskel
