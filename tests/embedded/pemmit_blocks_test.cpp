// The pool of small contours: its blocks, its slabs and its threads.

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <thread>
#include <vector>

#include "embedded/document.h"
#include "embedded/pemmit/blocks.h"
#include "platform/pemmit.h"
#include "tests/support/fake_host.h"

namespace {

// The pool is on for a test, also where programs are built without it.
struct Pooled {
    bool before = Embedded::setBlockPool(true);
    ~Pooled() { Embedded::setBlockPool(before); }
};

constexpr int kInSlab = 255;
constexpr int kSpare = 1;

void fill(Pemmit::Path* path, int value) {
    for (int i = 0; i < 15; ++i) Pemmit::patlin(path, value, i);
}

bool isFilled(const Pemmit::Path* path, int value) {
    Pemmit::scan scan(path, 0, -1);
    int x = 0, y = 0, i = 0;
    for (; scan.scanex(&x, &y) >= 0; ++i)
        if (x != value || y != i % 15) return false;
    return i == 16;  // and the first one again
}

void release(std::vector<Pemmit::Path*>& paths) {
    for (Pemmit::Path* const path : paths) Pemmit::objrem(path);
    paths.clear();
}

TEST_CASE("blocks: small paths take a slab for 255, which goes with the last of them") {
    const Pooled pooled;
    const int slabs = Embedded::slabCount();
    std::vector<Pemmit::Path*> paths;
    const long allocations = allocationCount();
    for (int i = 0; i < 20 * kInSlab; ++i) {
        paths.push_back(Pemmit::patbeg());
        fill(paths.back(), i);
    }
    const int made = Embedded::slabCount() - slabs;
    CHECK(made >= 19);  // with slabs that were there before
    CHECK(made <= 20);
    CHECK(allocationCount() - allocations <= made + 20);  // and the vector's own
    for (int i = 0; i < 20 * kInSlab; ++i) {
        const Pemmit::Path* const path = paths[static_cast<std::size_t>(i)];
        CHECK(isFilled(path, i));
        CHECK(reinterpret_cast<std::uintptr_t>(path) % Embedded::kBlockAlignment == 0);
        CHECK(Embedded::bytesOf(path) == Embedded::kBlockBytes);
    }
    release(paths);
    // What this thread keeps may lie in a few slabs.
    CHECK(Embedded::slabCount() <= slabs + kSpare + 2);
}

TEST_CASE("blocks: any order of making and releasing keeps each path's points") {
    const Pooled pooled;
    constexpr unsigned kSeed = 20240607;
    MESSAGE("seed " << kSeed);
    std::mt19937 random(kSeed);
    struct Entry {
        Pemmit::Path* path;
        int value;
    };
    std::vector<Entry> entries;
    for (int round = 0; round < 40; ++round) {
        const std::size_t wanted = random() % 3000;
        while (entries.size() < wanted) {
            entries.push_back({Pemmit::patbeg(), static_cast<int>(random())});
            fill(entries.back().path, entries.back().value);
        }
        std::shuffle(entries.begin(), entries.end(), random);
        while (entries.size() > wanted) {
            CHECK(isFilled(entries.back().path, entries.back().value));
            Pemmit::objrem(entries.back().path);
            entries.pop_back();
        }
    }
    for (const Entry& entry : entries) {
        CHECK(isFilled(entry.path, entry.value));
        Pemmit::objrem(entry.path);
    }
}

TEST_CASE("blocks: without the pool every path is an allocation") {
    const bool before = Embedded::setBlockPool(false);
    const long allocations = allocationCount();
    Pemmit::Path* const path = Pemmit::patbeg();
    CHECK(allocationCount() == allocations + 1);
    Pemmit::Path* const copy = Pemmit::patdup(path);
    CHECK(allocationCount() >= allocations + 2);
    Embedded::setBlockPool(true);  // they are released by what they are
    Pemmit::objrem(path);
    Pemmit::objrem(copy);
    Embedded::setBlockPool(before);
}

TEST_CASE("blocks: memory that ends with a slab leaves all paths as they are") {
    const Pooled pooled;
    std::vector<Pemmit::Path*> paths;
    paths.reserve(3000);
    int failures = 0;
    {
        const FailingAllocation failing(1);
        Embedded::setBlockPool(true);  // the slab is what fails
        while (failures == 0 && paths.size() < 3000) {
            try {
                paths.push_back(Pemmit::patbeg());
                fill(paths.back(), 7);
            } catch (const std::bad_alloc&) {
                ++failures;
            }
        }
        CHECK(failures == 1);
        paths.push_back(Pemmit::patbeg());
        fill(paths.back(), 7);
    }
    for (const Pemmit::Path* const path : paths) CHECK(isFilled(path, 7));
    release(paths);
}

TEST_CASE("blocks: paths of one thread are released on another, and threads leave nothing") {
    const Pooled pooled;
    const int slabs = Embedded::slabCount();
    for (int round = 0; round < 3; ++round) {
        std::vector<std::vector<Pemmit::Path*>> made(4);
        std::vector<std::thread> threads;
        for (std::vector<Pemmit::Path*>& paths : made)
            threads.emplace_back([&paths] {
                Embedded::setBlockPool(true);
                for (int i = 0; i < 2000; ++i) {
                    Pemmit::Path* const gone = Pemmit::patbeg();
                    paths.push_back(Pemmit::patbeg());
                    fill(paths.back(), i);
                    Pemmit::objrem(gone);
                }
            });
        for (std::thread& thread : threads) thread.join();
        threads.clear();
        for (std::size_t t = 0; t < made.size(); ++t)
            threads.emplace_back([&paths = made[(t + 1) % made.size()]] {
                for (int i = 0; i < 2000; ++i)
                    if (!isFilled(paths[static_cast<std::size_t>(i)], i)) return;
                release(paths);
            });
        for (std::thread& thread : threads) thread.join();
        for (const std::vector<Pemmit::Path*>& paths : made) CHECK(paths.empty());
    }
    CHECK(Embedded::slabCount() <= slabs + kSpare);
}

// Made before the pool is used on a thread, it goes after the pool's own end
// there.
struct LateOwner {
    Pemmit::Path* path = nullptr;
    ~LateOwner() {
        if (!path) return;
        Pemmit::objrem(path);
        Pemmit::objrem(Pemmit::patbeg());
    }
};

TEST_CASE("blocks: a thread may release and make paths while it ends") {
    const Pooled pooled;
    const int slabs = Embedded::slabCount();
    for (int i = 0; i < 300; ++i)
        std::thread([] {
            thread_local LateOwner owner;
            owner.path = nullptr;
            Embedded::setBlockPool(true);
            owner.path = Pemmit::patbeg();
        }).join();
    CHECK(Embedded::slabCount() <= slabs + kSpare);
}

}  // namespace
