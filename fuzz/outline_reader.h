// Turns the bytes of a fuzzer into coordinates and outlines.

#ifndef FUZZ_OUTLINE_READER_H
#define FUZZ_OUTLINE_READER_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <utility>
#include <vector>

#include "tests/support/paths.h"

inline void require(bool condition) {
    if (!condition) std::abort();
}

/// The input's first byte chooses how wide coordinates are: a grid of 8, 8 bits,
/// 16 bits, a little more than +-2^25, all 32 bits.
class OutlineReader {
 public:
    OutlineReader(const std::uint8_t* data, std::size_t size) : mData(data), mLeft(size) {
        const std::uint8_t mode = byte();
        mWidth = mode % 5;
        mFlags = mode / 5;
    }

    bool empty() const { return mLeft == 0; }
    /// What the first byte holds besides the width: 0 to 51.
    int flags() const { return mFlags; }

    std::uint8_t byte() {  // zeros behind the input's end
        if (mLeft == 0) return 0;
        --mLeft;
        return *mData++;
    }

    int coordinate() {
        switch (mWidth) {
            case 0:
                return byte() % 8;
            case 1:
                return static_cast<std::int8_t>(byte());
            case 2:
                return static_cast<std::int16_t>(bytes(2));
            case 3:
                return static_cast<std::int32_t>(bytes(4)) >> 5;
            default:
                return static_cast<std::int32_t>(bytes(4));
        }
    }
    Point point() {
        const int x = coordinate();
        return {x, coordinate()};
    }

    /// Contours of 1 to 256 points, as long as the input lasts, at most count in
    /// all; every other one is closed.
    std::vector<PathPtr> contours(std::size_t count) {
        std::vector<PathPtr> all;
        for (std::size_t sum = 0; !empty() && sum < count;) {
            Points points(std::size_t{byte()} + 1);
            for (Point& p : points) p = point();
            sum += points.size();
            all.push_back(all.size() % 2 ? openPath(points) : closedPath(points));
        }
        return all;
    }

 private:
    std::uint32_t bytes(int n) {
        std::uint32_t value = 0;
        for (; n > 0; --n) value = value << 8 | byte();
        return value;
    }

    const std::uint8_t* mData;
    std::size_t mLeft;
    int mWidth, mFlags;
};

#endif
