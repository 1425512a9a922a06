#include "geometry/intersect_chains.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>

namespace Vaskel::Intersect {
namespace {

constexpr std::int32_t kLimit = 1 << 25;

bool isWithinLimit(PackedPlace p) {
    const auto within = [](std::int32_t v) {
        return static_cast<std::uint32_t>(v) + kLimit <= std::uint32_t{2 * kLimit};
    };
    const bool xFits = within(xOf(p)), yFits = within(yOf(p));
    return xFits && yFits;
}

struct Item {
    std::uint32_t key;
    Index turn;
};

constexpr std::size_t kWorthCounting = 256;  // below, comparing is faster

// Sorts by the lowest bits of the keys, in passes of up to 11 of them.
void sortByKey(Item* items, Item* other, std::size_t count, int bits) {
    const auto less = [](const Item& a, const Item& b) { return a.key < b.key; };
    if (count < kWorthCounting) {
        std::sort(items, items + count, less);
        return;
    }
    constexpr int kMostBits = 11;
    const int passes = (bits + kMostBits - 1) / kMostBits;
    Item* from = items;
    Item* to = other;
    for (int pass = 0; pass < passes; ++pass) {
        const int low = bits * pass / passes, high = bits * (pass + 1) / passes;
        const std::uint32_t mask = (std::uint32_t{1} << (high - low)) - 1;
        std::array<std::uint32_t, std::size_t{1} << kMostBits> starts{};
        for (std::size_t i = 0; i < count; ++i) ++starts[from[i].key >> low & mask];
        std::uint32_t sum = 0;
        for (std::uint32_t digit = 0; digit <= mask; ++digit) {
            const std::uint32_t size = starts[digit];
            starts[digit] = sum;
            sum += size;
        }
        for (std::size_t i = 0; i < count; ++i) to[starts[from[i].key >> low & mask]++] = from[i];
        std::swap(from, to);
    }
    if (from != items) std::copy(from, from + count, items);
}

}  // namespace

bool MonotoneChains::addContour(const PackedPlace* walked, Index count, bool closed) {
    if (count < 2) return false;
    // A closed contour begins at its first turn after its first point.
    Index begin = 0;
    if (closed) {
        const bool rises = walked[1] > walked[0];
        for (begin = 1; begin + 1 < count; ++begin)
            if ((walked[begin + 1] > walked[begin]) != rises) break;
    }
    const std::size_t base = points.size();
    points.insert(points.end(), walked + begin, walked + count);
    if (closed) points.insert(points.end(), walked, walked + begin + 1);

    const auto total = static_cast<Index>(points.size() - base);
    const PackedPlace* const p = points.data() + base;
    const auto offset = static_cast<Index>(base);
    const Index firstTurn = mTurnCount;
    turns[static_cast<std::size_t>(mTurnCount++)] = {
        offset, closed ? Turn::kFirstClosed : Turn::kFirstOpen};
    bool sound = isWithinLimit(p[0]) && isWithinLimit(p[total - 1]) && p[1] != p[0];
    bool rises = p[1] > p[0];
    for (Index i = 1; i + 1 < total; ++i) {
        const bool risesNext = p[i + 1] > p[i];
        if (!isWithinLimit(p[i]) || p[i + 1] == p[i]) sound = false;
        turns[static_cast<std::size_t>(mTurnCount)] = {offset + i, Turn::kInner};
        mTurnCount += rises != risesNext ? 1 : 0;
        rises = risesNext;
    }
    if (closed) mRings.push_back({firstTurn, mTurnCount});
    turns[static_cast<std::size_t>(mTurnCount++)] = {offset + total - 1,
                                                     closed ? Turn::kLastClosed : Turn::kLastOpen};
    return sound;
}

bool MonotoneChains::build(const WalkedOutline& outline) {
    const std::size_t most = outline.points.size() + outline.contours.size() + 1;
    points.clear();
    points.reserve(most);
    turns.resize(most + 1);  // each point may be written as one before that is known
    mRings.clear();
    mTurnCount = 0;
    for (const WalkedContour& contour : outline.contours)
        if (!addContour(outline.points.data() + contour.begin, contour.end - contour.begin,
                        contour.closed))
            return false;
    turns.resize(static_cast<std::size_t>(mTurnCount));
    sortEvents();
    return true;
}

// By x, and then those of equal x by y.
void MonotoneChains::sortEvents() {
    std::vector<Item> items(turns.size());
    std::int32_t minX = kLimit, minY = kLimit;
    for (const Turn& turn : turns) {
        const PackedPlace p = points[static_cast<std::size_t>(turn.point)];
        minX = std::min(minX, xOf(p));
        minY = std::min(minY, yOf(p));
    }
    const auto place = [&](Index turn) {
        return points[static_cast<std::size_t>(turns[static_cast<std::size_t>(turn)].point)];
    };
    std::size_t count = 0;
    std::uint32_t all = 0;
    for (Index i = 0; i < mTurnCount; ++i) {
        const auto key = static_cast<std::uint32_t>(xOf(place(i)) - minX);
        items[count] = {key, i};
        all |= key;
        count += turns[static_cast<std::size_t>(i)].kind != Turn::kLastClosed ? 1u : 0u;
    }
    std::vector<Item> other(count >= kWorthCounting ? count : 0);
    sortByKey(items.data(), other.data(), count, static_cast<int>(std::bit_width(all)));
    for (std::size_t begin = 0, end; begin < count; begin = end) {
        for (end = begin + 1; end < count && items[end].key == items[begin].key;) ++end;
        if (end == begin + 1) continue;
        all = 0;
        for (std::size_t i = begin; i < end; ++i) {
            items[i].key = static_cast<std::uint32_t>(yOf(place(items[i].turn)) - minY);
            all |= items[i].key;
        }
        sortByKey(items.data() + begin, other.data(), end - begin,
                  static_cast<int>(std::bit_width(all)));
    }
    events.resize(count);
    for (std::size_t i = 0; i < count; ++i) events[i] = items[i].turn;
}

Index MonotoneChains::lastTurnOf(Index first) const {
    return std::lower_bound(mRings.begin(), mRings.end(), first,
                            [](const Ring& ring, Index turn) { return ring.firstTurn < turn; })
        ->lastTurn;
}

}  // namespace Vaskel::Intersect
