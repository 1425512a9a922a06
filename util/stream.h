// Memory written past the caches: what is larger than these pushes out of them
// what others need, and each of its lines is read before it is written.

#ifndef UTIL_STREAM_H
#define UTIL_STREAM_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Vaskel {

constexpr std::size_t kStreamLine = 64;

/// From how many bytes on what is written goes past the caches, and how often that was
/// done. Tests set the one and look at the other.
struct Streams {
    std::atomic<std::size_t> from = 24 << 20;
    std::atomic<unsigned> count = 0;
};

/// Writes from[0, kStreamLine) to an address that is a multiple of its size.
inline void streamLine(unsigned char* to, const unsigned char* from) {
#if defined(__SSE2__)
    for (std::size_t i = 0; i < kStreamLine; i += 16)
        _mm_stream_si128(reinterpret_cast<__m128i*>(to + i),
                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + i)));
#else
    std::memcpy(to, from, kStreamLine);
#endif
}

/// Brings what was streamed in order with what other threads see later.
inline void finishStreams() {
#if defined(__SSE2__)
    _mm_sfence();
#endif
}

/// Streams as many whole lines of from[0, size) as it can, once to is where a line
/// begins, and returns how many bytes went to to.
inline std::size_t streamLines(unsigned char* to, const unsigned char* from, std::size_t size) {
    const std::size_t head = -reinterpret_cast<std::uintptr_t>(to) % kStreamLine;
    if (size < head + kStreamLine) return 0;
    std::memcpy(to, from, head);
    std::size_t done = head;
    for (; size - done >= kStreamLine; done += kStreamLine) streamLine(to + done, from + done);
    return done;
}

}  // namespace Vaskel

#endif
