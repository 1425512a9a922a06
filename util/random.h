// Filling the ring of a random generator, in two forms.

#ifndef UTIL_RANDOM_H
#define UTIL_RANDOM_H

#include <cstdint>

namespace Vaskel {

constexpr int kRingSize = 32;
constexpr std::uint32_t kWordMask = (std::uint32_t{1} << 28) - 1;

// The rule itself: word k is the seed after 23 + k steps, one after the other.
void fillRingPlain(int seed, std::uint32_t (&ring)[kRingSize]);

// The same words, each by one step of its own.
void fillRing(int seed, std::uint32_t (&ring)[kRingSize]);

}  // namespace Vaskel

#endif
