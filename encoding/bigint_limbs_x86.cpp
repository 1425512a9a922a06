// The long loops of big integers for x86-64, in its own instructions: the
// compilers move a carry out of the flags and back at every step, which costs
// twice the addition itself.
//
// Same results as the plain loops: each limb goes through the same sum, whose
// carry is the next one's carry in.

#include "encoding/bigint_digits.h"

#if defined(__x86_64__)

namespace Vaskel {
namespace {

// Limbs that a turn of a loop takes; the others go first, in plain C++.
constexpr std::size_t kTurn = 4;

// a += b (adcq) or a -= b (sbbq) over turns of four limbs; turns is not 0.
// leaq and decq leave the carry flag alone.
#define VASKEL_CARRY_LOOP(INSTRUCTION)                                                        \
    __asm__ volatile(                                                                         \
        "negq %[carry]\n" /* the carry flag: carry != 0 */                                    \
        "1:\n\t"                                                                              \
        "movq (%[a]), %[r0]\n\t"                                                              \
        "movq 8(%[a]), %[r1]\n\t"                                                             \
        "movq 16(%[a]), %[r2]\n\t"                                                            \
        "movq 24(%[a]), %[r3]\n\t" INSTRUCTION " (%[b]), %[r0]\n\t" INSTRUCTION               \
        " 8(%[b]), %[r1]\n\t" INSTRUCTION " 16(%[b]), %[r2]\n\t" INSTRUCTION                  \
        " 24(%[b]), %[r3]\n\t"                                                                \
        "movq %[r0], (%[a])\n\t"                                                              \
        "movq %[r1], 8(%[a])\n\t"                                                             \
        "movq %[r2], 16(%[a])\n\t"                                                            \
        "movq %[r3], 24(%[a])\n\t"                                                            \
        "leaq 32(%[a]), %[a]\n\t"                                                             \
        "leaq 32(%[b]), %[b]\n\t"                                                             \
        "decq %[turns]\n\t"                                                                   \
        "jnz 1b\n\t"                                                                          \
        "sbbq %[carry], %[carry]\n\t" /* 0 or -1 */                                           \
        "negq %[carry]"                                                                       \
        : [a] "+r"(a), [b] "+r"(b), [turns] "+r"(turns), [carry] "+r"(carry), [r0] "=&r"(r0), \
          [r1] "=&r"(r1), [r2] "=&r"(r2), [r3] "=&r"(r3)                                      \
        :                                                                                     \
        : "cc", "memory")

// The limbs in front of the turns: a call would cost more than the few of them.
template <class Sum>
inline Limb firstLimbs(Digit*& a, const Digit*& b, std::size_t count, Sum sum) {
    Limb carry = 0;
    for (; count > 0; --count, a += kPerLimb, b += kPerLimb) {
        const TwoLimbs both = sum(loadLimb(a), loadLimb(b), carry);
        storeLimb(a, static_cast<Limb>(both));
        carry = static_cast<Limb>(both >> 64) & 1;
    }
    return carry;
}

unsigned add(Digit* a, const Digit* b, std::size_t limbs) {
    Limb r0, r1, r2, r3;
    Limb carry =
        firstLimbs(a, b, limbs % kTurn, [](TwoLimbs x, Limb y, Limb more) { return x + y + more; });
    std::size_t turns = limbs / kTurn;
    if (turns == 0) return static_cast<unsigned>(carry);
    VASKEL_CARRY_LOOP("adcq");
    return static_cast<unsigned>(carry);
}

unsigned subtract(Digit* a, const Digit* b, std::size_t limbs) {
    Limb r0, r1, r2, r3;
    Limb carry =
        firstLimbs(a, b, limbs % kTurn, [](TwoLimbs x, Limb y, Limb more) { return x - y - more; });
    std::size_t turns = limbs / kTurn;
    if (turns == 0) return static_cast<unsigned>(carry);
    VASKEL_CARRY_LOOP("sbbq");
    return static_cast<unsigned>(carry);
}

// Two carries run side by side: adcx adds the product's lower limb to the upper
// one of the product before, adox that sum to a. Neither touches the other's
// flag, and mulx and leaq none.
Limb addMultiple(Digit* a, const Digit* b, std::size_t limbs, Limb factor) {
    const std::size_t first = limbs % kTurn;
    Limb carry = addMultiplePlain(a, b, first, factor);
    std::size_t turns = limbs / kTurn;
    if (turns == 0) return carry;
    a += first * kPerLimb;
    b += first * kPerLimb;
    Limb low, high, zero;
    __asm__ volatile(
        "xorl %k[zero], %k[zero]\n"  // clears both flags
        "1:\n\t"
        "mulxq (%[b]), %[low], %[high]\n\t"
        "adcxq %[carry], %[low]\n\t"
        "adoxq (%[a]), %[low]\n\t"
        "movq %[low], (%[a])\n\t"
        "mulxq 8(%[b]), %[low], %[carry]\n\t"
        "adcxq %[high], %[low]\n\t"
        "adoxq 8(%[a]), %[low]\n\t"
        "movq %[low], 8(%[a])\n\t"
        "mulxq 16(%[b]), %[low], %[high]\n\t"
        "adcxq %[carry], %[low]\n\t"
        "adoxq 16(%[a]), %[low]\n\t"
        "movq %[low], 16(%[a])\n\t"
        "mulxq 24(%[b]), %[low], %[carry]\n\t"
        "adcxq %[high], %[low]\n\t"
        "adoxq 24(%[a]), %[low]\n\t"
        "movq %[low], 24(%[a])\n\t"
        "leaq 32(%[a]), %[a]\n\t"
        "leaq 32(%[b]), %[b]\n\t"
        "leaq -1(%[turns]), %[turns]\n\t"
        "jrcxz 2f\n\t"
        "jmp 1b\n"
        "2:\n\t"
        "adcxq %[zero], %[carry]\n\t"
        "adoxq %[zero], %[carry]"
        : [a] "+r"(a), [b] "+r"(b), [turns] "+c"(turns), [carry] "+r"(carry), [low] "=&r"(low),
          [high] "=&r"(high), [zero] "=&r"(zero)
        : "d"(factor)
        : "cc", "memory");
    return carry;
}

// a - factor * b is the complement of (complement of a) + factor * b, and the
// borrow of the one is the carry of the other.
Limb subtractMultipleLimbs(Digit* a, const Digit* b, std::size_t limbs, Limb factor) {
    const std::size_t first = limbs % kTurn;
    Limb carry = subtractMultiplePlain(a, b, first, factor);
    std::size_t turns = limbs / kTurn;
    if (turns == 0) return carry;
    a += first * kPerLimb;
    b += first * kPerLimb;
    Limb low, high, zero, other;
    __asm__ volatile(
        "xorl %k[zero], %k[zero]\n"
        "1:\n\t"
        "mulxq (%[b]), %[low], %[high]\n\t"
        "movq (%[a]), %[other]\n\t"
        "notq %[other]\n\t"
        "adcxq %[carry], %[low]\n\t"
        "adoxq %[other], %[low]\n\t"
        "notq %[low]\n\t"
        "movq %[low], (%[a])\n\t"
        "mulxq 8(%[b]), %[low], %[carry]\n\t"
        "movq 8(%[a]), %[other]\n\t"
        "notq %[other]\n\t"
        "adcxq %[high], %[low]\n\t"
        "adoxq %[other], %[low]\n\t"
        "notq %[low]\n\t"
        "movq %[low], 8(%[a])\n\t"
        "mulxq 16(%[b]), %[low], %[high]\n\t"
        "movq 16(%[a]), %[other]\n\t"
        "notq %[other]\n\t"
        "adcxq %[carry], %[low]\n\t"
        "adoxq %[other], %[low]\n\t"
        "notq %[low]\n\t"
        "movq %[low], 16(%[a])\n\t"
        "mulxq 24(%[b]), %[low], %[carry]\n\t"
        "movq 24(%[a]), %[other]\n\t"
        "notq %[other]\n\t"
        "adcxq %[high], %[low]\n\t"
        "adoxq %[other], %[low]\n\t"
        "notq %[low]\n\t"
        "movq %[low], 24(%[a])\n\t"
        "leaq 32(%[a]), %[a]\n\t"
        "leaq 32(%[b]), %[b]\n\t"
        "leaq -1(%[turns]), %[turns]\n\t"
        "jrcxz 2f\n\t"
        "jmp 1b\n"
        "2:\n\t"
        "adcxq %[zero], %[carry]\n\t"
        "adoxq %[zero], %[carry]"
        : [a] "+r"(a), [b] "+r"(b), [turns] "+c"(turns), [carry] "+r"(carry), [low] "=&r"(low),
          [high] "=&r"(high), [zero] "=&r"(zero), [other] "=&r"(other)
        : "d"(factor)
        : "cc", "memory");
    return carry;
}

// The carry of four additions stays in its flag: each product's lower limb and
// the upper one of the product before.
Limb multiply(Digit* a, std::size_t limbs, Limb factor) {
    const std::size_t first = limbs % kTurn;
    Limb high = multiplyPlain(a, first, factor);
    a += first * kPerLimb;
    for (std::size_t turns = limbs / kTurn; turns > 0; --turns, a += kTurn * kPerLimb) {
        Limb low[kTurn], up[kTurn];
        for (std::size_t i = 0; i < kTurn; ++i) {
            const TwoLimbs product = TwoLimbs(loadLimb(a + i * kPerLimb)) * factor;
            low[i] = static_cast<Limb>(product);
            up[i] = static_cast<Limb>(product >> 64);
        }
        __asm__(
            "addq %[high], %[l0]\n\t"
            "adcq %[u0], %[l1]\n\t"
            "adcq %[u1], %[l2]\n\t"
            "adcq %[u2], %[l3]\n\t"
            "adcq $0, %[u3]"
            : [l0] "+&r"(low[0]), [l1] "+&r"(low[1]), [l2] "+&r"(low[2]), [l3] "+&r"(low[3]),
              [u3] "+&r"(up[3])
            : [high] "r"(high), [u0] "rm"(up[0]), [u1] "rm"(up[1]), [u2] "rm"(up[2])
            : "cc");
        for (std::size_t i = 0; i < kTurn; ++i) storeLimb(a + i * kPerLimb, low[i]);
        high = up[3];
    }
    return high;
}

// The same by mulx, which leaves the carry flag alone: one carry runs through the
// whole row.
Limb multiplyMulx(Digit* a, std::size_t limbs, Limb factor) {
    const std::size_t first = limbs % kTurn;
    Limb carry = multiplyPlain(a, first, factor);
    a += first * kPerLimb;
    std::size_t turns = limbs / kTurn;
    if (turns == 0) return carry;
    Limb l0, l1, l2, l3, high;
    __asm__ volatile(
        "clc\n"
        "1:\n\t"
        "mulxq (%[a]), %[l0], %[high]\n\t"
        "adcq %[carry], %[l0]\n\t"
        "mulxq 8(%[a]), %[l1], %[carry]\n\t"
        "adcq %[high], %[l1]\n\t"
        "mulxq 16(%[a]), %[l2], %[high]\n\t"
        "adcq %[carry], %[l2]\n\t"
        "mulxq 24(%[a]), %[l3], %[carry]\n\t"
        "adcq %[high], %[l3]\n\t"
        "movq %[l0], (%[a])\n\t"
        "movq %[l1], 8(%[a])\n\t"
        "movq %[l2], 16(%[a])\n\t"
        "movq %[l3], 24(%[a])\n\t"
        "leaq 32(%[a]), %[a]\n\t"
        "decq %[turns]\n\t"
        "jnz 1b\n\t"
        "adcq $0, %[carry]"
        : [a] "+r"(a), [turns] "+r"(turns), [carry] "+r"(carry), [l0] "=&r"(l0), [l1] "=&r"(l1),
          [l2] "=&r"(l2), [l3] "=&r"(l3), [high] "=&r"(high)
        : "d"(factor)
        : "cc", "memory");
    return carry;
}

#undef VASKEL_CARRY_LOOP

}  // namespace

const LimbLoops kLimbLoopsCarry = {"carry flag",          add,     subtract, addMultiplePlain,
                                   subtractMultiplePlain, multiply};
const LimbLoops kLimbLoopsAdx = {"two carry flags",     add,         subtract, addMultiple,
                                 subtractMultipleLimbs, multiplyMulx};

}  // namespace Vaskel

#endif
