// Memory with several owners behind a plain pointer: the count stands in front
// of the block.

#ifndef RASTER_SHARED_BLOCK_H
#define RASTER_SHARED_BLOCK_H

#include <atomic>
#include <cstddef>
#include <new>
#include <type_traits>

namespace Vaskel::SharedBlock {

struct alignas(std::max_align_t) Header {
    std::atomic<int> owners;
};

inline Header* headerOf(const void* block) {
    return static_cast<Header*>(const_cast<void*>(block)) - 1;
}

/// Room for count values of T, owned once and not initialised; null when memory
/// ends.
template <class T>
T* make(std::size_t count) {
    static_assert(std::is_trivially_copyable_v<T> && alignof(T) <= alignof(std::max_align_t));
    void* const memory = ::operator new(sizeof(Header) + count * sizeof(T), std::nothrow);
    if (!memory) return nullptr;
    return reinterpret_cast<T*>(new (memory) Header{1} + 1);
}

inline void addOwner(const void* block) {
    if (block) headerOf(block)->owners.fetch_add(1, std::memory_order_relaxed);
}

/// Takes one owner away, and the memory with the last one. Null is allowed.
inline void release(const void* block) {
    if (block && headerOf(block)->owners.fetch_sub(1, std::memory_order_acq_rel) == 1)
        ::operator delete(headerOf(block));
}

inline bool isShared(const void* block) {
    return headerOf(block)->owners.load(std::memory_order_acquire) > 1;
}

}  // namespace Vaskel::SharedBlock

#endif
