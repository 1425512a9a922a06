// Arithmetic on rows of base-65536 digits, lowest first.
//
// Four digits make a limb of 64 bits; the long loops run over limbs. A row of
// limbs is a row of digits whose count is a multiple of four, at any address.

#ifndef ENCODING_BIGINT_DIGITS_H
#define ENCODING_BIGINT_DIGITS_H

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace Vaskel {

using Digit = unsigned short;
using Limb = std::uint64_t;
__extension__ typedef unsigned __int128 TwoLimbs;

constexpr std::size_t kPerLimb = 4;

/// The limbs that count digits take.
constexpr std::size_t limbsFor(std::size_t count) { return (count + kPerLimb - 1) / kPerLimb; }

inline Limb loadLimb(const Digit* at) {
    if constexpr (std::endian::native == std::endian::little) {
        Limb limb;
        std::memcpy(&limb, at, sizeof limb);
        return limb;
    } else {
        return Limb{at[0]} | Limb{at[1]} << 16 | Limb{at[2]} << 32 | Limb{at[3]} << 48;
    }
}

inline void storeLimb(Digit* at, Limb limb) {
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(at, &limb, sizeof limb);
    } else {
        for (int i = 0; i < 4; ++i) at[i] = static_cast<Digit>(limb >> 16 * i);
    }
}

// ---- Rows of limbs ----------------------------------------------------------

/// One way to run the long loops. All functions work in place on a and take
/// limbs of four digits; addMultiple and subtractMultiple return the limb to add
/// to, or subtract from, what is above.
struct LimbLoops {
    const char* name;
    /// a += b; the carry out, 0 or 1.
    unsigned (*add)(Digit* a, const Digit* b, std::size_t limbs);
    /// a -= b; the borrow out.
    unsigned (*subtract)(Digit* a, const Digit* b, std::size_t limbs);
    /// a += factor * b
    Limb (*addMultiple)(Digit* a, const Digit* b, std::size_t limbs, Limb factor);
    /// a -= factor * b
    Limb (*subtractMultiple)(Digit* a, const Digit* b, std::size_t limbs, Limb factor);
    /// a *= factor; the limb carried out.
    Limb (*multiply)(Digit* a, std::size_t limbs, Limb factor);
};

unsigned addLimbsPlain(Digit* a, const Digit* b, std::size_t limbs);
unsigned subtractLimbsPlain(Digit* a, const Digit* b, std::size_t limbs);
Limb addMultiplePlain(Digit* a, const Digit* b, std::size_t limbs, Limb factor);
Limb subtractMultiplePlain(Digit* a, const Digit* b, std::size_t limbs, Limb factor);
Limb multiplyPlain(Digit* a, std::size_t limbs, Limb factor);

extern const LimbLoops kLimbLoopsCarry;  // x86-64
extern const LimbLoops kLimbLoopsAdx;    // x86-64 with BMI2 and ADX

/// All that this CPU can run, the plain one first, the one in use last.
std::span<const LimbLoops* const> limbLoopForms();

/// What operations use: chosen at the first use, or by a test.
extern std::atomic<const LimbLoops*> gLimbLoops;
const LimbLoops& chooseLimbLoops();
inline const LimbLoops& limbLoops() {
    const LimbLoops* const loops = gLimbLoops.load(std::memory_order_relaxed);
    return loops ? *loops : chooseLimbLoops();
}

/// For tests: the loops to use from now on; null gives the choice back.
void forceLimbLoops(const LimbLoops* loops);

// ---- Rows of digits ---------------------------------------------------------

/// a[0, count) += b[0, count); the carry out, 0 or 1.
unsigned addDigits(Digit* a, const Digit* b, std::size_t count);

/// a[0, count) += carry; the carry out.
unsigned carryInto(Digit* a, std::size_t count, unsigned carry);

/// a[0, count) -= b[0, count), modulo 65536^count; the borrow out, 0 or 1.
unsigned subtractDigits(Digit* a, const Digit* b, std::size_t count);

/// a[0, count) -= borrow; the borrow out.
unsigned borrowFrom(Digit* a, std::size_t count, unsigned borrow);

/// a[0, count) *= factor, a digit; the digit carried out.
unsigned multiplyDigits(Digit* a, std::size_t count, unsigned factor);

/// a[0, count) -= factor * b[0, count), modulo 65536^count, factor below 2^47;
/// what to subtract above, not more than factor.
Limb subtractMultiple(Digit* a, const Digit* b, std::size_t count, Limb factor);

/// Less than 0, 0 or more than 0 as a[0, count) is less than, equal to or
/// greater than b[0, count).
int compareDigits(const Digit* a, const Digit* b, std::size_t count);

/// count less the zeros on top.
std::size_t trimmedCount(const Digit* a, std::size_t count);

}  // namespace Vaskel

#endif
