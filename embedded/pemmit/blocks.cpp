#include "embedded/pemmit/blocks.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <utility>

namespace Embedded {
namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kPoolFromStart = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kPoolFromStart = false;
#else
constexpr bool kPoolFromStart = true;
#endif
#else
constexpr bool kPoolFromStart = true;
#endif

constexpr int kBlocksInSlab = 255;  // places are a byte
constexpr int kBatch = 64;
constexpr int kMostCached = 2 * kBatch;
constexpr int kSpareSlabs = 1;

// Stands right before its blocks, of which a list and those behind mFresh are
// free. Slabs with free blocks are linked.
struct alignas(kBlockAlignment) Slab {
    void* memory;  // what operator new gave, which ends anywhere
    Slab* next = nullptr;
    Slab* previous = nullptr;
    FreeBlock* free = nullptr;
    int fresh = 0;  // blocks from this place on were never taken, or all are free
    int used = 0;

    std::byte* blocks() { return reinterpret_cast<std::byte*>(this + 1); }
    bool isFull() const { return !free && fresh == kBlocksInSlab; }

    // Blocks of an empty slab go out in the order of memory again.
    void give(FreeBlock* block) {
        block->next = std::exchange(free, block);
        if (--used > 0) return;
        free = nullptr;
        fresh = 0;
    }
};

Slab* slabOf(FreeBlock* block) {
    return reinterpret_cast<Slab*>(reinterpret_cast<std::byte*>(block) -
                                   block->place * kBlockBytes) -
           1;
}

Slab* makeSlab() {
    constexpr std::size_t kBytes = sizeof(Slab) + kBlocksInSlab * kBlockBytes + kBlockAlignment;
    void* const memory = ::operator new(kBytes);
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t skipped = -address % kBlockAlignment;
    return new (static_cast<std::byte*>(memory) + skipped) Slab{memory};
}

// All slabs, shared by the threads.
struct Slabs {
    std::mutex mutex;
    Slab* first = nullptr;  // of those with free blocks
    int empty = 0;          // without a used block
    int count = 0;

    void link(Slab* slab) {
        slab->previous = nullptr;
        slab->next = first;
        if (first) first->previous = slab;
        first = slab;
    }
    void unlink(Slab* slab) {
        if (slab->next) slab->next->previous = slab->previous;
        (slab->previous ? slab->previous->next : first) = slab->next;
    }

    // Hands some blocks of one slab to an empty cache; there is a slab.
    void take(BlockCache& cache) {
        Slab& slab = *first;
        if (slab.used == 0) --empty;
        if (slab.free) {
            FreeBlock* last = slab.free;
            for (cache.count = 1; cache.count < kBatch && last->next; ++cache.count)
                last = last->next;
            cache.first = std::exchange(slab.free, std::exchange(last->next, nullptr));
            slab.used += cache.count;
        } else {
            const int taken = std::min(kBatch, kBlocksInSlab - slab.fresh);
            cache.fresh = slab.blocks() + static_cast<std::size_t>(slab.fresh) * kBlockBytes;
            cache.freshEnd = cache.fresh + static_cast<std::size_t>(taken) * kBlockBytes;
            cache.freshPlace = static_cast<std::uint8_t>(slab.fresh);
            slab.fresh += taken;
            slab.used += taken;
        }
        if (slab.isFull()) unlink(first);
    }

    // Returns a slab that is no longer needed, if any; it is no longer ours.
    Slab* give(FreeBlock* block) {
        Slab* const slab = slabOf(block);
        const bool wasFull = slab->isFull();
        slab->give(block);
        if (wasFull) link(slab);
        if (slab->used > 0) return nullptr;
        if (empty < kSpareSlabs) {
            ++empty;
            return nullptr;
        }
        unlink(slab);
        --count;
        return slab;
    }
};
constinit Slabs gSlabs;

// Takes the thread's blocks back when it ends. What is released even later
// finds a cache that keeps nothing.
enum class State { kUnset, kPooled, kPlain, kEnded };
constinit thread_local State tState = State::kUnset;

void emptyCache() {
    BlockCache& cache = tBlockCache;
    const int most = std::exchange(cache.most, 0);
    for (; cache.fresh != cache.freshEnd; cache.fresh += kBlockBytes)
        cache.first = new (cache.fresh) FreeBlock{cache.first, cache.freshPlace++};
    if (cache.first) giveBlocksToSlabs(cache);
    cache.most = most;
}

struct ThreadEnd {
    ~ThreadEnd() {
        tState = State::kEnded;
        tBlockCache.most = 0;
        emptyCache();
    }
};

void setUp(bool pooled) {
    thread_local ThreadEnd atEnd;
    (void)&atEnd;
    tState = pooled ? State::kPooled : State::kPlain;
    tBlockCache.most = pooled ? kMostCached : 0;
}

}  // namespace

constinit thread_local BlockCache tBlockCache;

FreeBlock* takeBlockFromSlabs() {
    if (tState == State::kUnset) setUp(kPoolFromStart);
    if (tState != State::kPooled) return nullptr;
    BlockCache& cache = tBlockCache;
    std::unique_lock lock(gSlabs.mutex);
    if (!gSlabs.first) {
        lock.unlock();
        Slab* const slab = makeSlab();
        lock.lock();
        gSlabs.link(slab);
        ++gSlabs.empty;
        ++gSlabs.count;
    }
    gSlabs.take(cache);
    lock.unlock();
    return takeBlock();
}

// Keeps the blocks that were given last, whose memory is in the cache.
void giveBlocksToSlabs(BlockCache& cache) noexcept {
    if (tState == State::kUnset) setUp(kPoolFromStart);
    FreeBlock** end = &cache.first;
    int kept = 0;
    for (const int most = cache.most / 2; kept < most && *end; ++kept) end = &(*end)->next;
    FreeBlock* block = std::exchange(*end, nullptr);
    cache.count = kept;

    Slab* gone = nullptr;
    {
        const std::lock_guard lock(gSlabs.mutex);
        while (block) {
            FreeBlock* const next = block->next;
            if (Slab* const slab = gSlabs.give(block)) {
                slab->next = gone;
                gone = slab;
            }
            block = next;
        }
    }
    while (gone) ::operator delete(std::exchange(gone, gone->next)->memory);
}

bool setBlockPool(bool on) {
    const bool before = tState == State::kPooled || (tState == State::kUnset && kPoolFromStart);
    setUp(on);
    emptyCache();
    return before;
}

int slabCount() {
    const std::lock_guard lock(gSlabs.mutex);
    return gSlabs.count;
}

}  // namespace Embedded
