// Memory of an exact size beside an unmapped page: one byte too far and the
// test dies.

#ifndef TESTS_SUPPORT_GUARDED_BYTES_H
#define TESTS_SUPPORT_GUARDED_BYTES_H

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string_view>

/// size bytes, zero at first, that end at an unmapped page (AtEnd) or begin
/// right behind one (AtStart). Comparison is by content.
class GuardedBytes {
 public:
    enum Layout { AtEnd, AtStart };

    explicit GuardedBytes(std::size_t size, Layout layout = AtEnd);
    /// Holds a copy of text, without a terminator.
    explicit GuardedBytes(std::string_view text, Layout layout = AtEnd);
    ~GuardedBytes();
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;

    unsigned char* data() { return mData; }
    const unsigned char* data() const { return mData; }
    char* chars() { return reinterpret_cast<char*>(mData); }
    const char* chars() const { return reinterpret_cast<const char*>(mData); }
    std::size_t size() const { return mSize; }
    unsigned char& operator[](std::size_t i) { return mData[i]; }
    const unsigned char& operator[](std::size_t i) const { return mData[i]; }

    friend bool operator==(const GuardedBytes& a, const GuardedBytes& b);
    friend std::ostream& operator<<(std::ostream& out, const GuardedBytes& bytes);

 private:
    void* mMap;
    std::size_t mMapSize;
    unsigned char* mData;
    std::size_t mSize;
};

/// A NUL-terminated copy of text whose terminator is the last readable byte.
class GuardedText {
 public:
    explicit GuardedText(std::string_view text);
    operator const char*() const { return mBytes.chars(); }

 private:
    GuardedBytes mBytes;
};

#endif
