// Replaces operator new of the test program, so that any allocation can fail.

#include <cstdlib>
#include <new>

#include "embedded/pemmit/blocks.h"
#include "tests/support/fake_host.h"

namespace {

thread_local long tLeft = 0;  // allocations until the failing one; 0 means none will fail
thread_local bool tHappened = false;
thread_local long tCount = 0;

void* allocate(std::size_t size, std::size_t alignment) {
    if (tLeft > 0 && --tLeft == 0) {
        tHappened = true;
        return nullptr;
    }
    // More than any machine has; the sanitizers' malloc would end the program.
    if (size >= std::size_t{1} << 40) return nullptr;
    ++tCount;
    if (size == 0) size = 1;
    if (alignment <= __STDCPP_DEFAULT_NEW_ALIGNMENT__) return std::malloc(size);
    return std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
}

void* allocateOrThrow(std::size_t size, std::size_t alignment) {
    void* const memory = allocate(size, alignment);
    if (!memory) throw std::bad_alloc();
    return memory;
}

constexpr std::size_t kPlain = 1;

}  // namespace

FailingAllocation::FailingAllocation(long n) : mPool(Embedded::setBlockPool(false)) {
    tHappened = false;
    tLeft = n;
}
FailingAllocation::~FailingAllocation() {
    tLeft = 0;
    Embedded::setBlockPool(mPool);
}
bool FailingAllocation::happened() const { return tHappened; }

long allocationCount() { return tCount; }

void* operator new(std::size_t n) { return allocateOrThrow(n, kPlain); }
void* operator new[](std::size_t n) { return allocateOrThrow(n, kPlain); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept { return allocate(n, kPlain); }
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept { return allocate(n, kPlain); }
void* operator new(std::size_t n, std::align_val_t a) {
    return allocateOrThrow(n, static_cast<std::size_t>(a));
}
void* operator new[](std::size_t n, std::align_val_t a) {
    return allocateOrThrow(n, static_cast<std::size_t>(a));
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
