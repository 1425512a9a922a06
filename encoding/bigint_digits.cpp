#include "encoding/bigint_digits.h"

#include <bit>
#include <cstring>

namespace Vaskel {
namespace {

__extension__ typedef unsigned __int128 Wide;
using Limb = std::uint64_t;

// Four digits in a limb, where the byte order makes them one.
constexpr std::size_t kPerLimb = std::endian::native == std::endian::little ? 4 : 0;

Limb load(const Digit* a) {
    Limb limb;
    std::memcpy(&limb, a, sizeof limb);
    return limb;
}
void store(Digit* a, Limb limb) { std::memcpy(a, &limb, sizeof limb); }

bool wholeLimb(std::size_t at, std::size_t count) { return kPerLimb != 0 && at + 4 <= count; }

}  // namespace

unsigned addDigits(Digit* a, const Digit* b, std::size_t count) {
    std::size_t i = 0;
    Limb carry = 0;
    for (; wholeLimb(i, count); i += 4) {
        const Wide sum = Wide(load(a + i)) + load(b + i) + carry;
        store(a + i, static_cast<Limb>(sum));
        carry = static_cast<Limb>(sum >> 64);
    }
    for (; i < count; ++i) {
        const std::uint32_t sum = std::uint32_t{a[i]} + b[i] + static_cast<std::uint32_t>(carry);
        a[i] = static_cast<Digit>(sum);
        carry = sum >> 16;
    }
    return static_cast<unsigned>(carry);
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
    std::size_t i = 0;
    Limb borrow = 0;
    for (; wholeLimb(i, count); i += 4) {
        const Wide difference = Wide(load(a + i)) - load(b + i) - borrow;
        store(a + i, static_cast<Limb>(difference));
        borrow = static_cast<Limb>(difference >> 64) & 1;
    }
    for (; i < count; ++i) {
        const std::uint32_t difference =
            std::uint32_t{a[i]} - b[i] - static_cast<std::uint32_t>(borrow);
        a[i] = static_cast<Digit>(difference);
        borrow = difference >> 31;
    }
    return static_cast<unsigned>(borrow);
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
    std::size_t i = 0;
    Limb carry = 0;
    for (; wholeLimb(i, count); i += 4) {
        const Wide product = Wide(load(a + i)) * factor + carry;
        store(a + i, static_cast<Limb>(product));
        carry = static_cast<Limb>(product >> 64);
    }
    for (; i < count; ++i) {
        const std::uint32_t product = a[i] * factor + static_cast<std::uint32_t>(carry);
        a[i] = static_cast<Digit>(product);
        carry = product >> 16;
    }
    return static_cast<unsigned>(carry);
}

unsigned subtractMultiple(Digit* a, const Digit* b, std::size_t count, unsigned factor) {
    std::size_t i = 0;
    Limb carry = 0;  // at most factor: a limb's product and carry stay below 2^80
    for (; wholeLimb(i, count); i += 4) {
        const Wide product = Wide(load(b + i)) * factor + carry;
        const Limb low = static_cast<Limb>(product);
        const Limb before = load(a + i);
        store(a + i, before - low);
        carry = static_cast<Limb>(product >> 64) + (before < low);
    }
    for (; i < count; ++i) {
        const std::uint32_t product = b[i] * factor + static_cast<std::uint32_t>(carry);
        const std::uint32_t low = product & 0xFFFF;
        carry = (product >> 16) + (a[i] < low);
        a[i] = static_cast<Digit>(a[i] - low);
    }
    return static_cast<unsigned>(carry);
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
