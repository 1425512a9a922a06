#include "tests/support/guarded_bytes.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <new>
#include <ostream>

GuardedBytes::GuardedBytes(std::size_t size, Layout layout) : mSize(size) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t body = (size + page - 1) / page * page;
    mMapSize = body + 2 * page;  // an unmapped page on either side
    mMap = mmap(nullptr, mMapSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mMap == MAP_FAILED) throw std::bad_alloc();
    auto* const first = static_cast<unsigned char*>(mMap) + page;
    if (body != 0 && mprotect(first, body, PROT_READ | PROT_WRITE) != 0) {
        munmap(mMap, mMapSize);
        throw std::bad_alloc();
    }
    mData = layout == AtEnd ? first + body - size : first;
}

GuardedBytes::GuardedBytes(std::string_view text, Layout layout)
    : GuardedBytes(text.size(), layout) {
    if (!text.empty()) std::memcpy(mData, text.data(), text.size());
}

GuardedBytes::~GuardedBytes() { munmap(mMap, mMapSize); }

bool operator==(const GuardedBytes& a, const GuardedBytes& b) {
    return a.mSize == b.mSize && (a.mSize == 0 || std::memcmp(a.mData, b.mData, a.mSize) == 0);
}

std::ostream& operator<<(std::ostream& out, const GuardedBytes& bytes) {
    char hex[4];
    for (std::size_t i = 0; i < bytes.mSize; ++i) {
        std::snprintf(hex, sizeof hex, "%02X ", bytes.mData[i]);
        out << hex;
    }
    return out;
}

GuardedText::GuardedText(std::string_view text) : mBytes(text.size() + 1) {
    if (!text.empty()) std::memcpy(mBytes.chars(), text.data(), text.size());
}
