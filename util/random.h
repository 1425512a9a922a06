// The ring of a random generator: filling it and going round it, each the plain
// rule beside a faster form.

#ifndef UTIL_RANDOM_H
#define UTIL_RANDOM_H

#include <cstdint>

namespace Vaskel {

constexpr int kRingSize = 32;
constexpr std::uint32_t kWordMask = (std::uint32_t{1} << 28) - 1;

// The rule itself: word k is the seed after 23 + k steps, one after the other.
void fillRingPlain(int seed, std::uint32_t (&ring)[kRingSize]);

// The words drawn after those of ring, which they replace, by the rule itself:
// each is the word 32 before it plus the word before it.
void nextRoundPlain(std::uint32_t (&ring)[kRingSize]);

// The same words, four at a time.
void nextRound(std::uint32_t (&ring)[kRingSize]);

// What nextRoundPlain makes of fillRingPlain's words, the first 32 that are
// drawn, each by one step of its own.
void firstRound(int seed, std::uint32_t (&ring)[kRingSize]);

}  // namespace Vaskel

#endif
