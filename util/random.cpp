// The additive lagged generator: word t is word t - 32 plus word t - 1, modulo
// 2^28.

#include "util/random.h"

#include <cstring>

#include "platform/orlune.h"
#include "util/narrow.h"
#include "vaskel/util.h"

namespace Vaskel {
namespace {

constexpr std::uint32_t kFactor = 31415821;
constexpr int kFirstStep = 23;

// One step of the congruential generator, modulo 2^28. Computed modulo 2^32, of
// which 2^28 is a divisor: the product may lose its upper bits, and a negative
// seed is the same as its remainder.
constexpr std::uint32_t step(std::uint32_t x) { return (x * kFactor + 1) & kWordMask; }

// Each word of the first round is one step of the seed with a factor and a
// summand of its own. For n steps are one step, x -> a*x + c and once more
// -> f*(a*x + c) + 1 = (f*a)*x + (f*c + 1), and sums of such words are again of
// that form: word k of the round is word 31 of the ring plus words 0 to k.
struct Leaps {
    std::uint32_t factor[kRingSize];
    std::uint32_t summand[kRingSize];
};

constexpr Leaps makeLeaps() {
    Leaps leaps{};
    std::uint32_t factor = 1;
    std::uint32_t summand = 0;
    for (int n = 1; n < kFirstStep + kRingSize; ++n) {
        factor *= kFactor;
        summand = summand * kFactor + 1;
        if (n < kFirstStep) continue;
        leaps.factor[n - kFirstStep] = factor;
        leaps.summand[n - kFirstStep] = summand;
    }
    for (int k = 0; k < kRingSize; ++k) {
        const int previous = (k + kRingSize - 1) % kRingSize;
        leaps.factor[k] += leaps.factor[previous];
        leaps.summand[k] += leaps.summand[previous];
    }
    return leaps;
}
constexpr Leaps kLeaps = makeLeaps();

using Words = std::uint32_t __attribute__((vector_size(16)));

// Running sums over the ring, four at a time by sums of neighbours. Masked at
// the end only, since sums modulo 2^32 are right modulo 2^28.
inline void advance(std::uint32_t (&ring)[kRingSize]) {
    const Words zero = {};
    Words carry = zero + ring[kRingSize - 1];
    for (int i = 0; i < kRingSize; i += 4) {
        Words sums;
        std::memcpy(&sums, ring + i, sizeof sums);
        sums += __builtin_shufflevector(zero, sums, 0, 4, 5, 6);
        sums += __builtin_shufflevector(zero, sums, 0, 1, 4, 5);
        sums += carry;
        carry = __builtin_shufflevector(sums, sums, 3, 3, 3, 3);
        sums &= kWordMask;
        std::memcpy(ring + i, &sums, sizeof sums);
    }
}

// Stores scale(word) for count words in out. words is a copy, which out cannot
// overlap.
template <class Number, class Scale>
void generate(std::uint32_t (&ring)[kRingSize], std::int32_t* index, Number* out, std::size_t count,
              Scale scale) {
    std::uint32_t words[kRingSize];
    while (count > 0) {
        if (*index == kRingSize - 1) {
            advance(ring);
            *index = -1;
        }
        if (*index == -1 && count >= kRingSize) {
            *index = kRingSize - 1;
            std::memcpy(words, ring, sizeof words);
            for (int i = 0; i < kRingSize; ++i) out[i] = scale(words[i]);
            out += kRingSize;
            count -= kRingSize;
        } else {
            *out++ = scale(ring[++*index]);
            --count;
        }
    }
}

}  // namespace

void fillRingPlain(int seed, std::uint32_t (&ring)[kRingSize]) {
    auto x = static_cast<std::uint32_t>(seed);
    for (int i = 0; i < kFirstStep; ++i) x = step(x);
    ring[0] = x;
    for (int k = 1; k < kRingSize; ++k) ring[k] = x = step(x);
}

void nextRoundPlain(std::uint32_t (&ring)[kRingSize]) {
    std::uint32_t previous = ring[kRingSize - 1];
    for (std::uint32_t& word : ring) word = previous = (word + previous) & kWordMask;
}

[[gnu::noinline]] void nextRound(std::uint32_t (&ring)[kRingSize]) { advance(ring); }

[[gnu::noinline]] void firstRound(int seed, std::uint32_t (&ring)[kRingSize]) {
    const auto x = static_cast<std::uint32_t>(seed);
    for (int k = 0; k < kRingSize; ++k)
        ring[k] = (x * kLeaps.factor[k] + kLeaps.summand[k]) & kWordMask;
}

// Initialised as a constant, before any generator is made.
constinit int Random::seedOffset = 0;

Random::Random() {
    setSeed(wrap32(std::int64_t{Orlune::Clock::Ticks()} + seedOffset));
    seedOffset = wrap32(std::int64_t{seedOffset} + 1);
}

Random::Random(int seed) { setSeed(seed); }
Random::Random(const Random& other) = default;
Random& Random::operator=(const Random& other) = default;
Random& Random::operator=(Random&& other) noexcept = default;

void Random::setSeed(int seed) {
    firstRound(seed, mRing);
    mIndex = -1;
}

void Random::generateRound() {
    nextRound(mRing);
    mIndex = -1;

    // The draws of the header, for programs that call them here: naming them
    // makes the compiler keep a copy of each.
    [[gnu::used]] static constexpr std::uint32_t (Random::*kWord)() = &Random::nextWord;
    [[gnu::used]] static constexpr int (Random::*kInt)(int) = &Random::nextInt;
    [[gnu::used]] static constexpr double (Random::*kDouble)() = &Random::nextDouble;
    [[gnu::used]] static constexpr float (Random::*kFloat)() = &Random::nextFloat;
    [[gnu::used]] static constexpr bool (Random::*kBool)() = &Random::nextBool;
    [[gnu::used]] static constexpr char (Random::*kByte)() = &Random::nextByte;
    [[gnu::used]] static constexpr unsigned short (Random::*kShort)() = &Random::nextShort;
}

void Random::nextInts(int n, int* out, std::size_t count) {
    generate(mRing, &mIndex, out, count, [=](std::uint32_t word) { return toInt(word, n); });
}

void Random::nextDoubles(double* out, std::size_t count) {
    generate(mRing, &mIndex, out, count, [](std::uint32_t word) { return toDouble(word); });
}

void Random::nextBytes(char* out, std::size_t count) {
    generate(mRing, &mIndex, out, count, [](std::uint32_t word) { return toByte(word); });
}

namespace {
Random gRandom;
}  // namespace

void ranini(int seed) { gRandom.setSeed(seed); }
int ranint(int n) { return gRandom.nextInt(n); }
double randou() { return gRandom.nextDouble(); }

int noiseed = 1234567;

}  // namespace Vaskel
