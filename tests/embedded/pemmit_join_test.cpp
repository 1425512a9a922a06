// Joins of the embedded document model: what they cost, and what they do where
// the platform's contract is silent. What they do where it speaks is checked
// by tests/platform_check.

#include <doctest/doctest.h>

#include <utility>
#include <vector>

#include "embedded/document.h"
#include "platform/pemmit.h"
#include "tests/embedded/drawn.h"
#include "tests/support/fake_host.h"

namespace {

struct Pair {
    Pemmit::Path* p = Pemmit::patbeg();
    Pemmit::Path* q = Pemmit::patbeg();
    Pair() { Pemmit::patlinbb(p, q); }
};

void append(Pemmit::Path* path, int x, int count) {
    for (int i = 0; i < count; ++i) Pemmit::patlin(path, x, i);
}

// A comb whose teeth are pairs of mates, all joined but for the last closing.
// ends[0] and ends[1] are the mates that remain.
struct Comb {
    Pemmit::Path* ends[2];
    long allocationsOfJoins = 0;

    Comb(int teeth, int pointsASide) {
        std::vector<Pair> pairs(static_cast<std::size_t>(teeth));
        for (int i = 0; i < teeth; ++i) {
            append(pairs[static_cast<std::size_t>(i)].p, 2 * i, pointsASide);
            append(pairs[static_cast<std::size_t>(i)].q, 2 * i + 1, pointsASide);
        }
        const long before = allocationCount();
        for (std::size_t i = 1; i < pairs.size(); ++i) {
            Pemmit::patlinee(pairs[i - 1].q, pairs[i].p);
            Pemmit::objrem(pairs[i - 1].q);
            Pemmit::objrem(pairs[i].p);
        }
        allocationsOfJoins = allocationCount() - before;
        ends[0] = pairs.front().p;
        ends[1] = pairs.back().q;
    }
    Comb(const Comb&) = delete;
    Comb& operator=(const Comb&) = delete;
    ~Comb() {
        Pemmit::objrem(ends[0]);
        Pemmit::objrem(ends[1]);
    }
};

TEST_CASE("a hundred thousand joins allocate nothing and touch no other point") {
    constexpr int kTeeth = 100000;
    Comb comb(kTeeth, 3);
    CHECK(comb.allocationsOfJoins == 0);
    CHECK(Pemmit::patsiz(comb.ends[0]) == 2 * 3 * (kTeeth - 1) + 3 + 1);
    // No points were copied together: every side still has a block of its own.
    Pemmit::Path* const empty = Pemmit::patbeg();
    CHECK(Embedded::bytesOf(comb.ends[0]) ==
          static_cast<std::size_t>(2 * kTeeth - 1) * Embedded::bytesOf(empty));
    Pemmit::objrem(empty);

    const long before = allocationCount();
    Pemmit::patlinee(comb.ends[0], comb.ends[1]);
    // One piece for all points; the list of curves, of which there are none.
    CHECK(allocationCount() - before <= 2);
    CHECK(Pemmit::patsiz(comb.ends[0]) == 2 * 3 * kTeeth + 1);
    const std::size_t points = 8u * 2 * 3 * kTeeth;
    CHECK(Embedded::bytesOf(comb.ends[0]) <= points + 300);
}

// Most outlines of a scan are specks of four points.
TEST_CASE("a closed outline of few points is one block") {
    Pemmit::Path* const empty = Pemmit::patbeg();
    const std::size_t block = Embedded::bytesOf(empty);
    Pemmit::objrem(empty);
    struct Row {
        int first, second;  // points of the two sides
        std::size_t blocks;
    };
    constexpr Row rows[] = {{1, 1, 1},  {2, 2, 1}, {7, 8, 1},  {14, 1, 1},
                            {1, 14, 1}, {8, 8, 2}, {15, 1, 2}, {1, 15, 2}};
    for (const Row& row : rows) {
        CAPTURE(row.first);
        CAPTURE(row.second);
        Pair pair;
        append(pair.p, 1, row.first);
        append(pair.q, 2, row.second);
        const long before = allocationCount();
        Pemmit::patlinee(pair.p, pair.q);
        CHECK(allocationCount() == before);
        Points want;
        for (int i = 0; i < row.first; ++i) want.push_back({1, i});
        for (int i = row.second; i-- > 0;) want.push_back({2, i});
        want.push_back(want.front());
        CHECK(walk(pair.p) == want);
        CHECK(pair.p->box.maxX == 2);
        CHECK(Pemmit::patsiz(pair.q) == 0);
        Pemmit::patlin(pair.q, 3, 3);  // the other one can begin again
        CHECK(walk(pair.q) == Points{{3, 3}, {3, 3}});
        Pemmit::objrem(pair.q);
        CHECK(Embedded::bytesOf(pair.p) == row.blocks * block);
        CHECK(walk(pair.p) == want);
        Pemmit::objrem(pair.p);
    }
}

TEST_CASE("a closing without memory leaves pieces, which walk the same from every start") {
    Comb want(40, 3), got(40, 3);
    Pemmit::patlinee(want.ends[0], want.ends[1]);
    {
        FailingAllocation failing(1);
        Pemmit::patlinee(got.ends[0], got.ends[1]);
        CHECK(failing.happened());
    }
    const int size = Pemmit::patsiz(want.ends[0]);
    CHECK(Embedded::bytesOf(got.ends[0]) > Embedded::bytesOf(want.ends[0]));
    CHECK(Pemmit::patsiz(got.ends[0]) == size);
    for (int start = -1; start <= size; ++start) {
        CAPTURE(start);
        CHECK(walk(got.ends[0], 0, start) == walk(want.ends[0], 0, start));
        CHECK(walk(got.ends[0], 1, start) == walk(want.ends[0], 1, start));
    }
    // It goes on growing, and the next call that ends a path makes it whole.
    Pemmit::patlin(got.ends[0], 1, 1);
    Pemmit::patlin(want.ends[0], 1, 1);
    CHECK(walk(got.ends[0]) == walk(want.ends[0]));
    Pemmit::patendclo(got.ends[0]);
    CHECK(Embedded::bytesOf(got.ends[0]) < 8u * 2 * static_cast<std::size_t>(size) + 256);
    CHECK(walk(got.ends[0]) == walk(want.ends[0]));
}

TEST_CASE("memory is in proportion to the points, for small paths too") {
    Pemmit::Path* const path = Pemmit::patbeg();
    CHECK(Embedded::bytesOf(path) <= 256);
    for (int count = 1; count <= 200000; ++count) {
        Pemmit::patlin(path, count, -count);
        if (count <= 10 || count % 1000 == 0) {
            CAPTURE(count);
            CHECK(Embedded::bytesOf(path) <= 400 + 8u * 2 * static_cast<std::size_t>(count));
        }
    }
    Pemmit::objrem(path);
}

TEST_CASE("appending takes memory a number of times that grows with the logarithm") {
    Pemmit::Path* const path = Pemmit::patbeg();
    const long before = allocationCount();
    append(path, 1, 1000000);
    CHECK(allocationCount() - before <= 20);
    Pemmit::objrem(path);
}

TEST_CASE("joins of paths without mates take what is there") {
    struct Row {
        const char* why;
        bool mateOfFirst, mateOfSecond;
        Points heir;  // the path that the outline goes to
    };
    const Row rows[] = {
        {"neither: p followed by q reversed", false, false, {{2, 0}, {2, 1}, {3, 1}, {3, 0}}},
        {"only p: q, p reversed, P", true, false, {{3, 0}, {3, 1}, {2, 1}, {2, 0}, {1, 0}, {1, 1}}},
        {"only q: p, q reversed, Q", false, true, {{2, 0}, {2, 1}, {3, 1}, {3, 0}, {4, 0}, {4, 1}}},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        Pair first, second;  // P and p, Q and q
        append(first.p, 1, 2);
        append(first.q, 2, 2);
        append(second.q, 3, 2);
        append(second.p, 4, 2);
        if (!row.mateOfFirst) Pemmit::objrem(std::exchange(first.p, nullptr));
        if (!row.mateOfSecond) Pemmit::objrem(std::exchange(second.p, nullptr));
        Pemmit::patlinee(first.q, second.q);
        Pemmit::Path* const heir = first.p ? first.p : second.p ? second.p : first.q;
        Points want = row.heir;
        want.push_back(want.front());
        CHECK(walk(heir) == want);
        for (Pemmit::Path* path : {first.p, first.q, second.p, second.q}) {
            if (path && path != heir) CHECK(Pemmit::patsiz(path) == 0);
            Pemmit::objrem(path);
        }
    }
}

TEST_CASE("calls that mean nothing do nothing") {
    Pair pair;
    append(pair.p, 1, 2);
    append(pair.q, 2, 2);
    Pemmit::Path* const third = Pemmit::patbeg();
    Pemmit::Path* const compound = Embedded::makeCompound();
    Pemmit::patlinee(pair.p, pair.p);
    Pemmit::patlinbb(pair.p, third);  // has a mate
    Pemmit::patlinbb(third, third);
    Pemmit::patlinbb(third, compound);
    Pemmit::patlinee(pair.p, compound);
    Pemmit::patlin(compound, 5, 5);
    CHECK(Pemmit::patsiz(compound) == 0);
    CHECK(compound->box.minX > compound->box.maxX);
    CHECK(walk(pair.p) == Points{{1, 0}, {1, 1}, {1, 0}});
    Pemmit::patlinee(pair.p, pair.q);
    CHECK(walk(pair.p) == Points{{1, 0}, {1, 1}, {2, 1}, {2, 0}, {1, 0}});
    for (Pemmit::Path* path : {pair.p, pair.q, third, compound}) Pemmit::objrem(path);
}

TEST_CASE("memory that ends leaves paths as they were") {
    // patlin at each of its first growths.
    for (int stored : {15, 50, 90}) {
        CAPTURE(stored);
        Pemmit::Path* const path = Pemmit::patbeg();
        append(path, 1, stored);
        const Points before = walk(path);
        const Pemmit::Box box = path->box;
        int failures = 0;
        const int tries = failEachAllocation([&] {
            try {
                Pemmit::patlin(path, 100, 100);
            } catch (const std::bad_alloc&) {
                ++failures;
                CHECK(walk(path) == before);
                CHECK(path->box.maxX == box.maxX);
                CHECK(Pemmit::patsiz(path) == stored + 1);
            }
        });
        CHECK(tries == 1);
        CHECK(failures == 1);
        CHECK(Pemmit::patsiz(path) == stored + 2);
        Pemmit::objrem(path);
    }
    CHECK(failEachAllocation([] {
              try {
                  Pemmit::objrem(Pemmit::patbeg());
              } catch (const std::bad_alloc&) {
              }
          }) == 1);
}

TEST_CASE("a copy without memory leaves nothing behind") {
    Pemmit::Path* const compound = Embedded::makeCompound();
    for (int i = 0; i < 3; ++i) {
        Pemmit::Path* const child = Pemmit::patbeg();
        append(child, i, 10);
        Embedded::addCurve(child, 1, 2, 3, 4, 50, 60);
        REQUIRE(Embedded::addChild(compound, child));
    }
    Pemmit::Path* copy = nullptr;
    const int failures = failEachAllocation([&] {
        try {
            copy = Pemmit::patdup(compound);
        } catch (const std::bad_alloc&) {
        }
    });
    CHECK(failures >= 10);
    REQUIRE(copy != nullptr);
    CHECK(Embedded::bytesOf(copy) <= Embedded::bytesOf(compound));
    Pemmit::objrem(compound);
    Pemmit::objrem(copy);
}

}  // namespace
