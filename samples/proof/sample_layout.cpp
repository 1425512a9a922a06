#include "samples/proof/sample_layout.h"

#include <cstring>

namespace Proof {
namespace {

// What stands behind the last pixel of a row of ink is paper.
void clearTail(unsigned char* ink, int width) {
    if (width % 8) ink[width / 8] &= static_cast<unsigned char>(0xFF00 >> (width % 8));
}

// A sample of one channel below 16 bits.
unsigned smallSample(const unsigned char* row, std::size_t index, int bits) {
    const std::size_t bit = index * static_cast<std::size_t>(bits);
    const int shift = 8 - bits - static_cast<int>(bit % 8);
    return (row[bit / 8] >> shift) & ((1u << bits) - 1);
}

// Any sample, brought to 0..255. Of 16 bits the upper byte stands for the
// sample, which is exact for the threshold to half a level.
struct SampleReader {
    const SampleLayout& layout;
    const unsigned char* row;

    unsigned operator()(std::size_t index) const {
        if (layout.bits == 8) return row[index];
        if (layout.bits < 8)
            return smallSample(row, index, layout.bits) * 255u / ((1u << layout.bits) - 1);
        if (!layout.nativeOrder) return row[2 * index];
        std::uint16_t value;
        std::memcpy(&value, row + 2 * index, 2);
        return value >> 8;
    }
};

std::uint8_t onWhite(unsigned grey, unsigned alpha) {
    return static_cast<std::uint8_t>((grey * alpha + 255u * (255u - alpha) + 127u) / 255u);
}

void oneChannelToGrey(const SampleLayout& layout, const unsigned char* row, int width,
                      std::uint8_t* grey) {
    const std::size_t count = static_cast<std::size_t>(width);
    const SampleReader sample{layout, row};
    if (layout.palette) {
        for (std::size_t i = 0; i < count; ++i)
            grey[i] =
                (*layout.palette)[layout.bits == 8 ? row[i] : smallSample(row, i, layout.bits)];
    } else if (layout.whiteIsZero) {
        for (std::size_t i = 0; i < count; ++i)
            grey[i] = static_cast<std::uint8_t>(255 - sample(i));
    } else {
        for (std::size_t i = 0; i < count; ++i) grey[i] = static_cast<std::uint8_t>(sample(i));
    }
}

}  // namespace

std::uint8_t greyOf(unsigned red, unsigned green, unsigned blue) {
    return static_cast<std::uint8_t>((299 * red + 587 * green + 114 * blue + 500) / 1000);
}

void toGrey(const SampleLayout& layout, const unsigned char* row, int width, std::uint8_t* grey) {
    const std::size_t count = static_cast<std::size_t>(width);
    const SampleReader sample{layout, row};
    switch (layout.channels) {
        case 1:
            oneChannelToGrey(layout, row, width, grey);
            break;
        case 2:
            for (std::size_t i = 0; i < count; ++i) {
                const unsigned level = sample(2 * i);
                grey[i] = onWhite(layout.whiteIsZero ? 255 - level : level, sample(2 * i + 1));
            }
            break;
        case 3:
            for (std::size_t i = 0; i < count; ++i)
                grey[i] = greyOf(sample(3 * i), sample(3 * i + 1), sample(3 * i + 2));
            break;
        default:
            for (std::size_t i = 0; i < count; ++i)
                grey[i] = onWhite(greyOf(sample(4 * i), sample(4 * i + 1), sample(4 * i + 2)),
                                  sample(4 * i + 3));
    }
}

void toInk(const SampleLayout& layout, const unsigned char* row, int width, unsigned char* ink) {
    const unsigned zero = layout.palette ? (*layout.palette)[0] : layout.whiteIsZero ? 255 : 0;
    const unsigned one = layout.palette ? (*layout.palette)[1] : 255 - zero;
    const std::size_t count = inkBytes(width);
    if (zero == one)
        std::memset(ink, zero < 128 ? 0xFF : 0, count);
    else if (one < zero)
        std::memcpy(ink, row, count);
    else
        for (std::size_t i = 0; i < count; ++i) ink[i] = static_cast<unsigned char>(~row[i]);
    clearTail(ink, width);
}

void thresholdRow(const std::uint8_t* grey, int width, int level, unsigned char* ink) {
    int x = 0;
    for (; x + 8 <= width; x += 8) {
        unsigned bits = 0;
        for (int k = 0; k < 8; ++k) bits = bits << 1 | (grey[x + k] < level);
        *ink++ = static_cast<unsigned char>(bits);
    }
    if (x == width) return;
    unsigned bits = 0;
    for (int k = 0; k < 8; ++k) bits = bits << 1 | (x + k < width && grey[x + k] < level);
    *ink = static_cast<unsigned char>(bits);
}

void invertInk(unsigned char* ink, int width) {
    for (std::size_t i = 0; i < inkBytes(width); ++i) ink[i] = static_cast<unsigned char>(~ink[i]);
    clearTail(ink, width);
}

}  // namespace Proof
