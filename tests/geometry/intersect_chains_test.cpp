// The turns of an outline in sweep order.

#include <doctest/doctest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "geometry/intersect_chains.h"
#include "geometry/intersect_outline.h"

namespace {

using namespace Vaskel::Intersect;

struct Row {
    const char* why;
    Index points;
    int rangeX, rangeY;  // coordinates reach so far to each side
};

// On both sides of the counts from which on events are counted instead of
// compared, and split before.
const Row kRows[] = {
    {"few", 9, 1 << 25, 1 << 25},
    {"just compared", 32, 1000, 1000},
    {"just counted", 64, 1 << 25, 1 << 25},
    {"hundreds", 700, 1 << 25, 1 << 25},
    {"thousands", 5000, 1 << 25, 1 << 25},
    {"thousands at a few x", 5000, 3, 1 << 25},
    {"all at one x", 5000, 0, 1 << 25},
    {"split", 120000, 1 << 25, 1 << 25},
    {"split by a few bits", 150000, 2047, 1 << 25},
    {"too few bits to split", 150000, 1000, 1 << 25},
    {"one x for all, split by y", 150000, 0, 1 << 25},
};

TEST_CASE("intersect: turns come by x and then by y") {
    int rows = 0;
    for (const Row& row : kRows) {
        CAPTURE(row.why);
        std::mt19937 random(20240607);
        const auto draw = [&](int range) {
            return static_cast<std::int32_t>(random() % (2 * static_cast<unsigned>(range) + 1)) -
                   range;
        };
        WalkedOutline outline;
        for (Index i = 0; i < row.points; ++i) {
            // Left and right, or down and up, in turns: nearly all points are turns.
            const int sign = i % 2 == 0 ? -1 : 1;
            const std::int32_t x = draw(row.rangeX), y = draw(row.rangeY);
            PackedPlace p = row.rangeX > 0 ? packed(sign * (x < 0 ? -x : x), y)
                                           : packed(0, sign * (y < 0 ? -y : y));
            if (i > 0 && p == outline.points.back()) p = packed(xOf(p), yOf(p) + 1);
            outline.points.push_back(p);
        }
        outline.contours = {{0, row.points, false}};
        MonotoneChains chains;
        REQUIRE(chains.build(outline));
        CHECK(chains.events.size() == chains.turns.size());
        CHECK(chains.events.size() > static_cast<std::size_t>(row.points) * 2 / 3);
        std::vector<bool> seen(chains.turns.size());
        std::int64_t wrong = 0;
        PackedPlace last = packed(-(1 << 26), 0);
        for (const Event& event : chains.events) {
            const auto turn = static_cast<std::size_t>(event.turn);
            const PackedPlace p = chains.points[static_cast<std::size_t>(chains.turns[turn].point)];
            wrong += seen[turn] || p < last;
            seen[turn] = true;
            last = p;
        }
        CHECK(wrong == 0);
        ++rows;
    }
    CHECK(rows == 11);
}

}  // namespace
