#include "encoding/bigint_digits.h"

namespace Vaskel {

// So few limbs are through before the choice among the loops is made.
constexpr std::size_t kFewLimbs = 6;

unsigned addDigits(Digit* a, const Digit* b, std::size_t count) {
    const std::size_t limbs = count / kPerLimb;
    unsigned carry = limbs < kFewLimbs ? addLimbsPlain(a, b, limbs) : limbLoops().add(a, b, limbs);
    for (std::size_t i = limbs * kPerLimb; i < count; ++i) {
        const std::uint32_t sum = std::uint32_t{a[i]} + b[i] + carry;
        a[i] = static_cast<Digit>(sum);
        carry = sum >> 16;
    }
    return carry;
}

unsigned carryInto(Digit* a, std::size_t count, unsigned carry) {
    for (std::size_t i = 0; carry != 0 && i < count; ++i) {
        const std::uint32_t sum = a[i] + carry;
        a[i] = static_cast<Digit>(sum);
        carry = sum >> 16;
    }
    return carry;
}

unsigned subtractDigits(Digit* a, const Digit* b, std::size_t count) {
    const std::size_t limbs = count / kPerLimb;
    unsigned borrow =
        limbs < kFewLimbs ? subtractLimbsPlain(a, b, limbs) : limbLoops().subtract(a, b, limbs);
    for (std::size_t i = limbs * kPerLimb; i < count; ++i) {
        const std::uint32_t difference = std::uint32_t{a[i]} - b[i] - borrow;
        a[i] = static_cast<Digit>(difference);
        borrow = difference >> 31;
    }
    return borrow;
}

unsigned borrowFrom(Digit* a, std::size_t count, unsigned borrow) {
    for (std::size_t i = 0; borrow != 0 && i < count; ++i) {
        const std::uint32_t difference = a[i] - borrow;
        a[i] = static_cast<Digit>(difference);
        borrow = difference >> 31;
    }
    return borrow;
}

unsigned multiplyDigits(Digit* a, std::size_t count, unsigned factor) {
    const std::size_t limbs = count / kPerLimb;
    // Below factor, as the product of a limb with it is below factor * 2^64.
    auto carry =
        static_cast<std::uint32_t>(limbs < kFewLimbs ? multiplyPlain(a, limbs, factor)
                                                     : limbLoops().multiply(a, limbs, factor));
    for (std::size_t i = limbs * kPerLimb; i < count; ++i) {
        const std::uint32_t product = a[i] * factor + carry;
        a[i] = static_cast<Digit>(product);
        carry = product >> 16;
    }
    return carry;
}

Limb subtractMultiple(Digit* a, const Digit* b, std::size_t count, Limb factor) {
    const std::size_t limbs = count / kPerLimb;
    // Not above factor: the product of a limb with it stays below factor * 2^64.
    Limb taken = limbs < kFewLimbs ? subtractMultiplePlain(a, b, limbs, factor)
                                   : limbLoops().subtractMultiple(a, b, limbs, factor);
    for (std::size_t i = limbs * kPerLimb; i < count; ++i) {
        const Limb product = b[i] * factor + taken;
        const Limb low = product & 0xFFFF;
        taken = (product >> 16) + (a[i] < low);
        a[i] = static_cast<Digit>(a[i] - low);
    }
    return taken;
}

int compareDigits(const Digit* a, const Digit* b, std::size_t count) {
    while (count > 0) {
        --count;
        if (a[count] != b[count]) return a[count] < b[count] ? -1 : 1;
    }
    return 0;
}

std::size_t trimmedCount(const Digit* a, std::size_t count) {
    while (count > 0 && a[count - 1] == 0) --count;
    return count;
}

}  // namespace Vaskel
