// Counts the heap that each fixed work uses: calls of malloc and its kin, the
// most bytes held at a time, and those still held at the end. The C library's
// functions are replaced by ones that count and hand on, so that operator new
// and everyone's malloc are counted alike.
//
// Prints one line a work: calls, peak, kept, name. "Kept" is what a first run
// leaves, such as tables and signals' lists that live as long as the process.

#include <malloc.h>

#include <cstddef>
#include <cstdio>

#include "bench/support/fixed_works.h"

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

struct Count {
    long calls = 0, held = 0, peak = 0;
    void* take(void* block) {
        ++calls;
        held += static_cast<long>(malloc_usable_size(block));
        if (held > peak) peak = held;
        return block;
    }
    void give(void* block) { held -= static_cast<long>(malloc_usable_size(block)); }
};
Count gCount;

}  // namespace

extern "C" {
void* malloc(std::size_t size) { return gCount.take(__libc_malloc(size)); }
void* calloc(std::size_t count, std::size_t size) {
    return gCount.take(__libc_calloc(count, size));
}
void* realloc(void* block, std::size_t size) {
    gCount.give(block);
    return gCount.take(__libc_realloc(block, size));
}
void* memalign(std::size_t alignment, std::size_t size) {
    return gCount.take(__libc_memalign(alignment, size));
}
void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }
void free(void* block) {
    gCount.give(block);
    __libc_free(block);
}
}

int main() {
    std::puts("");  // its buffer is nobody's work
    for (const Bench::FixedWork& work : Bench::fixedWorks()) {
        const auto run = work.prepare();
        gCount = {};
        run();
        const Count first = gCount;
        std::printf("%ld %ld %ld %s\n", first.calls, first.peak, first.held, work.name);
    }
}
