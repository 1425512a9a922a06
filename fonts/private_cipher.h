// The two encryptions of a font's private part, and the encoding of outlines in
// their shadow.
//
// Every byte of the private part waits six cycles for the key that the one before
// leaves, and a processor could do thirty other instructions meanwhile. It looks ahead
// by no more instructions than some ten bytes have, though: so a command of the next
// glyph's outline is encoded every few bytes, and not an outline between two glyphs.

#ifndef FONTS_PRIVATE_CIPHER_H
#define FONTS_PRIVATE_CIPHER_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "fonts/charstring.h"
#include "fonts/outline.h"

namespace Fonts {

// Encryption with the key in the upper half of a word: no masks, and one
// multiplication instead of two between a byte and the next. Same bytes: with
// K = r * 2^16, K >> 24 is r >> 8, and modulo 2^32
//   cipher * (c1 * 2^16) + (K * c1 + c2 * 2^16) = ((cipher + r) * c1 + c2) * 2^16.
class WideEncryption {
 public:
    explicit constexpr WideEncryption(std::uint16_t key) : mKey(std::uint32_t{key} << 16) {}

    constexpr unsigned char encrypt(unsigned char plain) {
        const std::uint32_t cipher = plain ^ (mKey >> 24);
        mKey = cipher * (52845u << 16) + (mKey * 52845u + (22719u << 16));
        return static_cast<unsigned char>(cipher);
    }

 private:
    std::uint32_t mKey;
};

/// Where the private part is being written, and the key of eexec there.
struct PrivateEnd {
    unsigned char* at;
    WideEncryption eexec;
};

/// Bytes before their encryption.
using Plain = std::span<const unsigned char>;

/// Writes text, encrypted for eexec.
inline void encryptText(PrivateEnd& end, Plain text) {
    PrivateEnd copy = end;
    for (const unsigned char byte : text) *copy.at++ = copy.eexec.encrypt(byte);
    end = copy;
}

// Writes a charstring while an encoder works at the next outline. The two encryptions
// wait for each other only at their beginning, so a byte takes the time of one. All
// state is copied, here as above: what is written might otherwise be the state itself,
// for all the compiler knows.
template <class Encoder>
[[gnu::always_inline]] inline void encryptBeside(PrivateEnd& end, Plain charstring,
                                                 Encoder& encoder, std::size_t steps) {
    WideEncryption outer = end.eexec, inner(Encryption::kCharstringKey);
    unsigned char* at = end.at;
    const unsigned char* from = charstring.data();
    const unsigned char* const behind = from + charstring.size();
    // As many bytes a step, rounded down, that all steps have bytes beside them.
    const std::size_t share = steps == 0 ? 0 : charstring.size() / steps;
    Encoder copy = encoder;
    for (; steps != 0; --steps) {
        copy.step();
        for (const unsigned char* const until = from + share; from != until; ++from)
            *at++ = outer.encrypt(inner.encrypt(*from));
    }
    encoder = copy;
    for (; from != behind; ++from) *at++ = outer.encrypt(inner.encrypt(*from));
    end = {at, outer};
}

}  // namespace Fonts

#endif
