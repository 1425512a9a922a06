// The long loops of big integers in plain C++, and the choice among all forms.

#if defined(__x86_64__)
#include <cpuid.h>
#endif

#include "encoding/bigint_digits.h"

namespace Vaskel {
unsigned addLimbsPlain(Digit* a, const Digit* b, std::size_t limbs) {
    Limb carry = 0;
    for (std::size_t i = 0; i < limbs * kPerLimb; i += kPerLimb) {
        const TwoLimbs sum = TwoLimbs(loadLimb(a + i)) + loadLimb(b + i) + carry;
        storeLimb(a + i, static_cast<Limb>(sum));
        carry = static_cast<Limb>(sum >> 64);
    }
    return static_cast<unsigned>(carry);
}

unsigned subtractLimbsPlain(Digit* a, const Digit* b, std::size_t limbs) {
    Limb borrow = 0;
    for (std::size_t i = 0; i < limbs * kPerLimb; i += kPerLimb) {
        const TwoLimbs difference = TwoLimbs(loadLimb(a + i)) - loadLimb(b + i) - borrow;
        storeLimb(a + i, static_cast<Limb>(difference));
        borrow = static_cast<Limb>(difference >> 64) & 1;
    }
    return static_cast<unsigned>(borrow);
}

Limb addMultiplePlain(Digit* a, const Digit* b, std::size_t limbs, Limb factor) {
    Limb carry = 0;
    for (std::size_t i = 0; i < limbs * kPerLimb; i += kPerLimb) {
        // (2^64 - 1)^2 + 2 * (2^64 - 1) is 2^128 - 1.
        const TwoLimbs sum = TwoLimbs(loadLimb(b + i)) * factor + loadLimb(a + i) + carry;
        storeLimb(a + i, static_cast<Limb>(sum));
        carry = static_cast<Limb>(sum >> 64);
    }
    return carry;
}

Limb subtractMultiplePlain(Digit* a, const Digit* b, std::size_t limbs, Limb factor) {
    Limb carry = 0;
    for (std::size_t i = 0; i < limbs * kPerLimb; i += kPerLimb) {
        const TwoLimbs product = TwoLimbs(loadLimb(b + i)) * factor + carry;
        const Limb low = static_cast<Limb>(product), before = loadLimb(a + i);
        storeLimb(a + i, before - low);
        carry = static_cast<Limb>(product >> 64) + (before < low);
    }
    return carry;
}

Limb multiplyPlain(Digit* a, std::size_t limbs, Limb factor) {
    Limb carry = 0;
    for (std::size_t i = 0; i < limbs * kPerLimb; i += kPerLimb) {
        const TwoLimbs product = TwoLimbs(loadLimb(a + i)) * factor + carry;
        storeLimb(a + i, static_cast<Limb>(product));
        carry = static_cast<Limb>(product >> 64);
    }
    return carry;
}

namespace {

constexpr LimbLoops kPlain = {"plain",          addLimbsPlain,         subtractLimbsPlain,
                              addMultiplePlain, subtractMultiplePlain, multiplyPlain};

#if defined(__x86_64__)
constexpr const LimbLoops* kForms[] = {&kPlain, &kLimbLoopsCarry, &kLimbLoopsAdx};

// The compilers know no common name for ADX, so that the CPU is asked.
bool hasAdx() {
    unsigned a, b, c, d;
    constexpr unsigned kBmi2 = 1u << 8, kAdx = 1u << 19;
    return __get_cpuid_count(7, 0, &a, &b, &c, &d) && (b & kBmi2) != 0 && (b & kAdx) != 0;
}

std::size_t usableForms() { return hasAdx() ? 3 : 2; }
#else
constexpr const LimbLoops* kForms[] = {&kPlain};
std::size_t usableForms() { return 1; }
#endif

}  // namespace

constinit std::atomic<const LimbLoops*> gLimbLoops{nullptr};

std::span<const LimbLoops* const> limbLoopForms() { return std::span(kForms).first(usableForms()); }

// Two threads may make the choice at once; both make the same.
const LimbLoops& chooseLimbLoops() {
    const LimbLoops* const best = limbLoopForms().back();
    gLimbLoops.store(best, std::memory_order_relaxed);
    return *best;
}

void forceLimbLoops(const LimbLoops* loops) { gLimbLoops.store(loops, std::memory_order_relaxed); }

}  // namespace Vaskel
