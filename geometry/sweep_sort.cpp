#include "geometry/sweep_sort.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>

namespace Vaskel::Intersect {
namespace {

struct Item {
    std::uint64_t key;
    Index vertex;
};

constexpr int kDigitBits = 11;
constexpr std::size_t kDigits = std::size_t{1} << kDigitBits;
constexpr std::size_t kWorthwhile = 1000;  // below, comparing is faster than counting

// One stable counting pass over the digit at shift.
void countingPass(std::vector<Item>& from, std::vector<Item>& to, int shift) {
    std::array<std::uint32_t, kDigits> starts{};
    for (const Item& item : from) ++starts[(item.key >> shift) & (kDigits - 1)];
    std::uint32_t sum = 0;
    for (std::uint32_t& start : starts) {
        const std::uint32_t count = start;
        start = sum;
        sum += count;
    }
    for (const Item& item : from) to[starts[(item.key >> shift) & (kDigits - 1)]++] = item;
}

}  // namespace

std::vector<Index> sortedForSweep(const std::vector<Vertex>& vertices) {
    int minX = std::numeric_limits<int>::max(), minY = minX, maxY = -minX;
    for (const Vertex& v : vertices) {
        minX = std::min(minX, v.x);
        minY = std::min(minY, v.y);
        maxY = std::max(maxY, v.y);
    }
    // x above y in one key; both are counted from the box's corner, so that
    // only the bits that differ are sorted by.
    const int yBits = vertices.empty() ? 0 : std::bit_width(static_cast<unsigned>(maxY - minY));
    std::vector<Item> items(vertices.size());
    std::uint64_t all = 0;
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        const auto x = static_cast<std::uint64_t>(vertices[i].x - minX);
        const auto y = static_cast<std::uint64_t>(vertices[i].y - minY);
        items[i] = {x << yBits | y, static_cast<Index>(i)};
        all |= items[i].key;
    }
    if (items.size() < kWorthwhile) {
        std::sort(items.begin(), items.end(), [](const Item& a, const Item& b) {
            return a.key < b.key || (a.key == b.key && a.vertex < b.vertex);
        });
    } else {
        std::vector<Item> other(items.size());
        for (int shift = 0; shift < static_cast<int>(std::bit_width(all)); shift += kDigitBits) {
            countingPass(items, other, shift);
            items.swap(other);
        }
    }
    std::vector<Index> order(items.size());
    for (std::size_t i = 0; i < items.size(); ++i) order[i] = items[i].vertex;
    return order;
}

}  // namespace Vaskel::Intersect
