#include "samples/proof/check/segment_pairs.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>
#include <utility>
#include <vector>

using namespace Proof;

namespace {

using Segments = std::vector<LineSegment>;
using Pairs = std::set<std::pair<std::size_t, std::size_t>>;
using SearchForm = bool (*)(std::span<const LineSegment>, const PairVisitor&);
__extension__ typedef __int128 Wide;

int sideOf(const LineSegment& s, std::int64_t x, std::int64_t y) {
    const Wide product =
        Wide(std::int64_t{s.x2} - s.x1) * (y - s.y1) - Wide(x - s.x1) * (std::int64_t{s.y2} - s.y1);
    return product < 0 ? -1 : product > 0;
}

bool boxesMeet(const LineSegment& s, const LineSegment& t) {
    return std::max(s.x1, s.x2) >= std::min(t.x1, t.x2) &&
           std::max(t.x1, t.x2) >= std::min(s.x1, s.x2) &&
           std::max(s.y1, s.y2) >= std::min(t.y1, t.y2) &&
           std::max(t.y1, t.y2) >= std::min(s.y1, s.y2);
}

// Whether two segments have a point in common. With meeting boxes it is enough
// that neither lies on one side of the other's line.
bool meet(const LineSegment& s, const LineSegment& t) {
    return boxesMeet(s, t) && sideOf(s, t.x1, t.y1) * sideOf(s, t.x2, t.y2) <= 0 &&
           sideOf(t, s.x1, s.y1) * sideOf(t, s.x2, s.y2) <= 0;
}

Pairs meetingPairs(SearchForm search, const Segments& segments) {
    Pairs pairs;
    CHECK(search(segments, [&](std::size_t i, std::size_t j) {
        REQUIRE(i < j);
        REQUIRE(j < segments.size());
        if (meet(segments[i], segments[j])) pairs.insert({i, j});
        return true;
    }));
    return pairs;
}

std::size_t visits(const Segments& segments) {
    std::size_t count = 0;
    visitMeetingPairs(segments, [&](std::size_t, std::size_t) { return ++count > 0; });
    return count;
}

// Ends on a grid of the given number of steps.
Segments randomSegments(std::mt19937& random, int count, int steps, int unit, int longest) {
    Segments segments;
    std::uniform_int_distribution<int> place(-steps, steps), offset(-longest, longest);
    while (segments.size() < static_cast<std::size_t>(count)) {
        LineSegment s{place(random), place(random), 0, 0};
        s.x2 = std::clamp(s.x1 + offset(random), -steps, steps);
        s.y2 = std::clamp(s.y1 + offset(random), -steps, steps);
        if (s.x1 == s.x2 && s.y1 == s.y2) continue;
        segments.push_back({s.x1 * unit, s.y1 * unit, s.x2 * unit, s.y2 * unit});
    }
    return segments;
}

// A zigzag of long lines, dx to the side for every one, slanted.
Segments hatch(int lines, int dx, int slant) {
    Segments segments;
    for (int i = 0; i < lines; ++i)
        segments.push_back(i % 2 == 0
                               ? LineSegment{i * dx, 0, i * dx + slant, 1000000}
                               : LineSegment{(i - 1) * dx + slant, 1000000, (i + 1) * dx, 0});
    return segments;
}

}  // namespace

TEST_CASE("both forms visit every pair of segments that meet") {
    std::mt19937 random(20240917);
    std::size_t met = 0, apart = 0;
    const auto same = [&](const Segments& segments) {
        const Pairs want = meetingPairs(visitMeetingPairsPlain, segments);
        const Pairs got = meetingPairs(visitMeetingPairs, segments);
        REQUIRE(got == want);
        met += want.size();
        apart += segments.size() * (segments.size() - 1) / 2 - want.size();
    };
    constexpr int kHalf = 1073741823;
    for (int turn = 0; turn < 400; ++turn) {
        CAPTURE(turn);
        const int count = 2 + turn % 60;
        same(randomSegments(random, count, 3, 1, 6));  // all kinds of ties
        same(randomSegments(random, count, 8, 1, 2));
        same(randomSegments(random, count, 8, kHalf / 8, 16));  // ties far apart
        same(randomSegments(random, count, 1000, 1, 2000));
        same(randomSegments(random, count, 1000, kHalf / 1000, 30));
        same(randomSegments(random, 4 * count, 100, 1, 15));
    }
    CHECK(met > 100000);
    CHECK(apart > 100000);
}

TEST_CASE("lines that nearly meet are told apart from lines that do") {
    // From (-h, 0) to (h, 1): at x = 0 and every x before h it is below 1 and
    // above 0 by less than doubles of its size show.
    constexpr int h = 1073741823;
    Segments segments;
    for (int i = 0; i < 12; ++i) segments.push_back({-h, 3 * i, h, 3 * i + 1});
    segments.push_back({h - 1, 1, h - 1, 2});  // passes the first one's right end closely
    segments.push_back({-h, 3, h - 1, 4});     // meets the second one at its left end
    const Pairs want = meetingPairs(visitMeetingPairsPlain, segments);
    CHECK(meetingPairs(visitMeetingPairs, segments) == want);
    CHECK(want == Pairs{{1, 13}});
}

TEST_CASE("the visitor ends the search") {
    std::mt19937 random(5);
    const Segments segments = randomSegments(random, 100, 50, 1, 100);
    for (const SearchForm search : {visitMeetingPairs, visitMeetingPairsPlain}) {
        int left = 10;
        CHECK_FALSE(search(segments, [&](std::size_t, std::size_t) { return --left > 0; }));
        CHECK(left == 0);
    }
    CHECK(visitMeetingPairs(Segments{}, [](std::size_t, std::size_t) { return false; }));
}

TEST_CASE("a hatch of any direction costs a few visits a line") {
    for (const int slant : {0, 1, 1000, 300000, 1000000})
        for (const int lines : {1000, 30000}) {
            CAPTURE(slant);
            CAPTURE(lines);
            CHECK(visits(hatch(lines, 30, slant)) < static_cast<std::size_t>(40 * lines));
        }
    // A star: every line runs from the middle outwards and back.
    Segments star;
    const int spikes = 20000;
    const auto at = [&](double radius, int i) {
        const double angle = 3.14159265358979 * i / spikes;
        return std::pair(static_cast<int>(radius * std::cos(angle)),
                         static_cast<int>(radius * std::sin(angle)));
    };
    for (int i = 0; i < 2 * spikes; ++i) {
        const auto from = at(i % 2 ? 1e9 : 1e8, i), to = at(i % 2 ? 1e8 : 1e9, i + 1);
        star.push_back({from.first, from.second, to.first, to.second});
    }
    CHECK(visits(star) < 40 * star.size());
}
