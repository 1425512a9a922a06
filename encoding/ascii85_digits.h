// The base-85 digits of a group, in two forms.

#ifndef ENCODING_ASCII85_DIGITS_H
#define ENCODING_ASCII85_DIGITS_H

#include <cstdint>

namespace Vaskel {

// The rule itself: all digits of value, most significant first.
// 82 * 85^4 < 2^32 < 83 * 85^4, so the first one is at most 82.
inline void digitsPlain(std::uint32_t value, unsigned char (&digits)[5]) {
    digits[0] = static_cast<unsigned char>(value / 52200625);
    digits[1] = static_cast<unsigned char>(value / 614125 % 85);
    digits[2] = static_cast<unsigned char>(value / 7225 % 85);
    digits[3] = static_cast<unsigned char>(value / 85 % 85);
    digits[4] = static_cast<unsigned char>(value % 85);
}

// The same digits, one multiplication each, made when it is asked for: the next
// one is ready by the time that the call which writes this one returns.
//
// The value is held as a fraction of 85^5 in units of 2^-64, and each product
// with 85 has the next digit before the point. The k-th product is
// value / 85^(5-k), less the digits that came before, and it is too large by
// value * kExcess / 85^(5-k) units, that is by less than one 85^(5-k)th, as
// value < 2^32 and kExcess < 2^32. So far lies the next whole number above it.
class Digits85 {
 public:
    explicit Digits85(std::uint32_t value) : mRest(value * kScale) {}

    unsigned char next() {
        const Wide product = Wide{mRest} * 85;
        mRest = static_cast<std::uint64_t>(product);
        return static_cast<unsigned char>(product >> 64);
    }

 private:
    __extension__ typedef unsigned __int128 Wide;

    static constexpr std::uint64_t kAll = 4437053125;  // 85^5
    static constexpr std::uint64_t kScale = ~std::uint64_t{0} / kAll + 1;
    static constexpr std::uint64_t kExcess = kScale * kAll;  // less 2^64
    static_assert(kScale >> 32 == 0 && kExcess >> 32 == 0);

    std::uint64_t mRest;
};

}  // namespace Vaskel

#endif
