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

constexpr int kMostDigitBits = 11;
using Counts = std::array<std::uint32_t, std::size_t{1} << kMostDigitBits>;

// Orders events by a digit of their keys and keeps the order of those where it is
// equal. counts then holds where the events of each digit end.
void sortByDigit(const Event* from, Event* to, std::size_t count, int low, int bits,
                 Counts& counts) {
    const std::uint32_t most = (std::uint32_t{1} << bits) - 1;
    const auto digitOf = [=](const Event& event) { return event.key >> low & most; };
    std::fill_n(counts.begin(), most + 1, 0);
    for (std::size_t i = 0; i < count; ++i) ++counts[digitOf(from[i])];
    std::uint32_t sum = 0;
    for (std::uint32_t i = 0; i <= most; ++i) sum += std::exchange(counts[i], sum);
    for (std::size_t i = 0; i < count; ++i) to[counts[digitOf(from[i])]++] = from[i];
}

// Sorts by keys of so many bits; returns where the sorted events are. More than the
// cache holds are first split by their highest digit into parts that it does.
Event* sortByKey(Event* events, Event* other, std::size_t count, int bits) {
    constexpr std::size_t kFew = 32, kPart = 1024, kMany = 1 << 16;
    if (count <= kFew) {
        for (std::size_t i = 1; i < count; ++i) {
            const Event event = events[i];
            std::size_t at = i;
            for (; at > 0 && events[at - 1].key > event.key; --at) events[at] = events[at - 1];
            events[at] = event;
        }
        return events;
    }
    Counts counts;
    if (count > kMany && bits > kMostDigitBits) {
        const int split = std::min(static_cast<int>(std::bit_width(count / kPart)), kMostDigitBits);
        const int rest = bits - split;
        sortByDigit(events, other, count, rest, split, counts);
        std::size_t begin = 0;
        for (std::size_t part = 0; part < std::size_t{1} << split; ++part) {
            const std::size_t end = counts[part];
            const Event* const sorted = sortByKey(other + begin, events + begin, end - begin, rest);
            if (sorted != other + begin) std::copy_n(sorted, end - begin, other + begin);
            begin = end;
        }
        return other;
    }
    const int most = count > 2 * kPart ? kMostDigitBits : count > kPart / 4 ? 8 : 6;
    const int passes = (bits + most - 1) / most;
    for (int pass = 0; pass < passes; ++pass) {
        const int low = bits * pass / passes, high = bits * (pass + 1) / passes;
        sortByDigit(events, other, count, low, high - low, counts);
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
