#include "bench/support/images.h"

#include <cstdint>
#include <cstdlib>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace Bench {

void* newImage(std::size_t bytes) {
    constexpr std::size_t kPage = std::size_t{1} << 21;
    const std::size_t whole = (bytes + kPage - 1) / kPage * kPage;
    void* const memory = std::aligned_alloc(kPage, whole);
    if (!memory) throw std::bad_alloc();
#if defined(__linux__)
    madvise(memory, whole, MADV_HUGEPAGE);
#endif
    return std::memset(memory, 0, whole);
}

void* resultImage(std::size_t mostBytes) {
    static void* const image = newImage(mostBytes);
    return image;
}

}  // namespace Bench
