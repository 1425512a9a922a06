// The pool that small contours come from. Documents make and release them by
// the hundred thousand, and general allocators take most of the time for that.
//
// Blocks of one size stand in slabs. Each thread keeps a few free blocks to
// itself and exchanges them with the slabs by the batch, so that most calls
// take no lock and touch the block alone. A slab whose blocks are all free is
// released, but for one.
//
// Under the address sanitizer there is no pool, so that every use of a released
// contour is found.

#ifndef EMBEDDED_PEMMIT_BLOCKS_H
#define EMBEDDED_PEMMIT_BLOCKS_H

#include <cstddef>
#include <cstdint>
#include <new>

#include "platform/export.h"

namespace Embedded {

constexpr std::size_t kBlockBytes = 256;
constexpr std::size_t kBlockAlignment = 64;  // a cache line

/// A block that nobody uses.
struct FreeBlock {
    FreeBlock* next;
    std::uint8_t place;  // in its slab; its user keeps it for giveBlock
};

/// What a thread keeps to itself.
struct BlockCache {
    FreeBlock* first = nullptr;
    int count = 0;
    int most = 0;  // with more than that some go back
    // Blocks that were never used, side by side; taken when the others are.
    std::byte* fresh = nullptr;
    std::byte* freshEnd = nullptr;
    std::uint8_t freshPlace = 0;
};
// Reached without a call: libraries that are loaded late find room for this
// much in what the loader keeps free.
extern constinit thread_local BlockCache tBlockCache [[gnu::tls_model("initial-exec")]];

/// Has the processor fetch the block so many blocks behind another, which is
/// soon written to, or read. Neither needs to be there.
template <bool toWrite = true>
inline void fetchBlock(const void* block, std::size_t behind = 0) {
    const auto address = reinterpret_cast<std::uintptr_t>(block) + behind * kBlockBytes;
    for (std::size_t at = 0; at < kBlockBytes; at += kBlockAlignment)
        __builtin_prefetch(reinterpret_cast<const void*>(address + at), toWrite);
}

FreeBlock* takeBlockFromSlabs();
void giveBlocksToSlabs(BlockCache& cache) noexcept;

/// A block, which begins at a cache line, or null where this thread does
/// without the pool. Throws std::bad_alloc. The next one is fetched meanwhile.
inline FreeBlock* takeBlock() {
    BlockCache& cache = tBlockCache;
    if (FreeBlock* const block = cache.first) {
        cache.first = block->next;
        --cache.count;
        fetchBlock(cache.first);
        return block;
    }
    if (cache.fresh == cache.freshEnd) return takeBlockFromSlabs();
    auto* const block = new (cache.fresh) FreeBlock{nullptr, cache.freshPlace};
    ++cache.freshPlace;
    cache.fresh += kBlockBytes;
    fetchBlock(cache.fresh, 1);
    return block;
}

/// Gives a block back, on any thread.
inline void giveBlock(void* memory, std::uint8_t place) noexcept {
    BlockCache& cache = tBlockCache;
    cache.first = new (memory) FreeBlock{cache.first, place};
    if (++cache.count > cache.most) [[unlikely]]
        giveBlocksToSlabs(cache);
}

/// For tests: whether this thread takes blocks from the pool from now on.
/// Returns whether it did so before. Without, every contour is an allocation
/// of its own that can fail.
PLATFORM_API bool setBlockPool(bool on);

/// For tests: how many slabs there are.
PLATFORM_API int slabCount();

}  // namespace Embedded

#endif
