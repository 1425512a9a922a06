#include "geometry/intersect_chains.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <utility>

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

constexpr int kKeyBits = 27;                 // of a difference of coordinates
constexpr std::size_t kWorthCounting = 256;  // below, comparing is faster

// Sorts by keys of so many bits, in passes of up to 11 of them; returns where
// the sorted events are.
Event* sortByKey(Event* events, Event* other, std::size_t count, int bits) {
    if (count < kWorthCounting) {
        std::sort(events, events + count,
                  [](const Event& a, const Event& b) { return a.key < b.key; });
        return events;
    }
    constexpr int kMostBits = 11, kMostPasses = 3;
    static_assert(kKeyBits <= kMostBits * kMostPasses);
    const int passes = (bits + kMostBits - 1) / kMostBits;
    struct Digit {
        int low = 0;             // its lowest bit
        std::uint32_t mask = 0;  // of the digit shifted there
        std::uint32_t of(const Event& event) const { return event.key >> low & mask; }
    };
    std::array<Digit, kMostPasses> digits;
    for (int pass = 0; pass < passes; ++pass) {
        const int low = bits * pass / passes, high = bits * (pass + 1) / passes;
        digits[static_cast<std::size_t>(pass)] = {low, (std::uint32_t{1} << (high - low)) - 1};
    }
    std::array<std::array<std::uint32_t, std::size_t{1} << kMostBits>, kMostPasses> starts{};
    const auto [first, second, third] = digits;
    for (std::size_t i = 0; i < count; ++i) {
        ++starts[0][first.of(events[i])];
        ++starts[1][second.of(events[i])];
        ++starts[2][third.of(events[i])];
    }
    for (std::size_t pass = 0; pass < static_cast<std::size_t>(passes); ++pass) {
        const Digit digit = digits[pass];
        auto& at = starts[pass];
        std::uint32_t sum = 0;
        for (std::uint32_t i = 0; i <= digit.mask; ++i) sum += std::exchange(at[i], sum);
        for (std::size_t i = 0; i < count; ++i) other[at[digit.of(events[i])]++] = events[i];
        std::swap(events, other);
    }
    return events;
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
    mTurns[static_cast<std::size_t>(mTurnCount++)] = {
        offset, closed ? Turn::kFirstClosed : Turn::kFirstOpen};
    bool sound = isWithinLimit(p[0]) && isWithinLimit(p[total - 1]) && p[1] != p[0];
    bool rises = p[1] > p[0];
    for (Index i = 1; i + 1 < total; ++i) {
        const bool risesNext = p[i + 1] > p[i];
        if (!isWithinLimit(p[i]) || p[i + 1] == p[i]) sound = false;
        mTurns[static_cast<std::size_t>(mTurnCount)] = {offset + i, Turn::kInner};
        mTurnCount += rises != risesNext ? 1 : 0;
        rises = risesNext;
    }
    if (closed) mRings.push_back({firstTurn, mTurnCount});
    mTurns[static_cast<std::size_t>(mTurnCount++)] = {offset + total - 1,
                                                      closed ? Turn::kLastClosed : Turn::kLastOpen};
    return sound;
}

bool MonotoneChains::build(const WalkedOutline& outline) {
    const std::size_t most = outline.points.size() + outline.contours.size() + 1;
    points.clear();
    points.reserve(most);
    // Each point may be written as a turn before it is known whether it is one.
    mTurns = std::make_unique_for_overwrite<Turn[]>(most + 1);
    mRings.clear();
    mTurnCount = 0;
    for (const WalkedContour& contour : outline.contours)
        if (!addContour(outline.points.data() + contour.begin, contour.end - contour.begin,
                        contour.closed))
            return false;
    turns = {mTurns.get(), static_cast<std::size_t>(mTurnCount)};
    sortEvents();
    return true;
}

// By x, and then those of equal x by y.
void MonotoneChains::sortEvents() {
    std::int32_t minX = kLimit, minY = kLimit;
    for (const Turn& turn : turns) {
        const PackedPlace p = points[static_cast<std::size_t>(turn.point)];
        minX = std::min(minX, xOf(p));
        minY = std::min(minY, yOf(p));
    }
    const auto place = [&](Index turn) {
        return points[static_cast<std::size_t>(turns[static_cast<std::size_t>(turn)].point)];
    };
    mEvents = std::make_unique_for_overwrite<Event[]>(turns.size());
    std::size_t count = 0;
    std::uint32_t all = 0;
    for (Index i = 0; i < mTurnCount; ++i) {
        const auto key = static_cast<std::uint32_t>(xOf(place(i)) - minX);
        mEvents[count] = {key, i};
        all |= key;
        count += turns[static_cast<std::size_t>(i)].kind != Turn::kLastClosed ? 1u : 0u;
    }
    auto other = std::make_unique_for_overwrite<Event[]>(count);
    const auto bits = [&] { return static_cast<int>(std::bit_width(all)); };
    if (sortByKey(mEvents.get(), other.get(), count, bits()) == other.get()) mEvents.swap(other);
    for (std::size_t begin = 0, end; begin < count; begin = end) {
        for (end = begin + 1; end < count && mEvents[end].key == mEvents[begin].key;) ++end;
        if (end == begin + 1) continue;
        all = 0;
        for (std::size_t i = begin; i < end; ++i) {
            mEvents[i].key = static_cast<std::uint32_t>(yOf(place(mEvents[i].turn)) - minY);
            all |= mEvents[i].key;
        }
        Event* const run = mEvents.get() + begin;
        Event* const sorted = sortByKey(run, other.get(), end - begin, bits());
        if (sorted != run) std::copy(sorted, sorted + (end - begin), run);
    }
    events = {mEvents.get(), count};
}

Index MonotoneChains::lastTurnOf(Index first) const {
    return std::lower_bound(mRings.begin(), mRings.end(), first,
                            [](const Ring& ring, Index turn) { return ring.firstTurn < turn; })
        ->lastTurn;
}

}  // namespace Vaskel::Intersect
