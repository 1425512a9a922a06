// Pemmit: scan and patsiz.

#include <array>
#include <climits>
#include <thread>

#include "check.h"

using namespace Check;

TEST_CASE("Pemmit::scan: a closed contour delivers its first point again, an open one does not") {
    struct Row {
        const char* why;
        PointList stored;
    };
    const Row rows[] = {
        {"a triangle", {{0, 0}, {10, 0}, {0, 10}}},
        {"two points", {{-3, 4}, {5, -6}}},
        {"one point", {{7, 8}}},
        {"the last point equals the first", {{0, 0}, {10, 0}, {0, 10}, {0, 0}}},
        {"equal neighbours", {{1, 1}, {1, 1}, {2, 2}, {2, 2}, {2, 2}}},
        {"one point, many times", {{4, 4}, {4, 4}, {4, 4}}},
        {"the ends of the range", {{INT_MAX, INT_MIN}, {INT_MIN, INT_MAX}, {INT_MAX, INT_MAX}}},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        checkWalks(openPath(row.stored).get(), row.stored);
        PointList closed = row.stored;
        closed.push_back(closed.front());
        checkWalks(closedPath(row.stored).get(), closed);
    }
}

TEST_CASE("Pemmit::scan: both directions deliver the same points under the same numbers") {
    // More points than any block, page or chunk is likely to hold, and each of
    // the first sizes.
    for (int size : {1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17, 31, 33, 100, 511, 513, 5000, 70000}) {
        CAPTURE(size);
        PointList points;
        for (int i = 0; i < size; ++i) points.push_back({i, i % 997 * (i % 991)});
        checkWalks(openPath(points).get(), points);
        const PathPtr closed = closedPath(points);
        points.push_back(points.front());
        checkWalks(closed.get(), points);
    }
}

TEST_CASE("Pemmit::scan: a start that is no number of a point gives an empty walk") {
    const PathPtr open = openPath({{1, 1}, {2, 2}, {3, 3}});
    const PathPtr closed = closedPath({{1, 1}, {2, 2}, {3, 3}});
    for (int direction : {0, 1}) {
        CAPTURE(direction);
        for (int start : {-2, -100, INT_MIN, 3, 4, 100, INT_MAX}) {
            CAPTURE(start);
            CHECK(walk(open.get(), direction, start).empty());
            if (start != 3) CHECK(walk(closed.get(), direction, start).empty());
        }
    }
}

TEST_CASE("Pemmit::scan: paths without points and null have an empty walk") {
    const PathPtr empty(Pemmit::patbeg());
    for (int direction : {0, 1})
        for (int start : {-1, 0, 1}) {
            CAPTURE(direction);
            CAPTURE(start);
            CHECK(walk(empty.get(), direction, start).empty());
            CHECK(walk(nullptr, direction, start).empty());
        }
    CHECK(Pemmit::patsiz(empty.get()) == 0);
}

TEST_CASE("Pemmit::scan::scanex: behind the last point *x and *y stay as they were") {
    const PathPtr path = openPath({{1, 2}, {3, 4}});
    for (int direction : {0, 1}) {
        Pemmit::scan scan(path.get(), direction, -1);
        int x = 77, y = 78;
        CHECK(scan.scanex(&x, &y) == 0);
        CHECK(scan.scanex(&x, &y) == 0);
        x = 77, y = 78;
        for (int again = 0; again < 3; ++again) {
            CHECK(scan.scanex(&x, &y) < 0);
            CHECK(x == 77);
            CHECK(y == 78);
        }
    }
}

TEST_CASE("Pemmit::scan: without a walk and after scaend there are no points") {
    const PathPtr path = closedPath({{1, 2}, {3, 4}, {5, 7}});
    int x = 77, y = 78;
    Pemmit::scan scan;
    CHECK(scan.scanex(&x, &y) < 0);
    scan.scaend();
    CHECK(scan.scanex(&x, &y) < 0);
    scan.scabeg(path.get(), 0, -1);
    CHECK(scan.scanex(&x, &y) == 0);
    scan.scaend();
    scan.scaend();
    x = 77, y = 78;
    CHECK(scan.scanex(&x, &y) < 0);
    CHECK(x == 77);
    CHECK(y == 78);
}

TEST_CASE("Pemmit::scan::scabeg: a walk in progress ends and the new one begins") {
    const PathPtr first = closedPath({{1, 2}, {3, 4}, {5, 7}});
    const PathPtr second = openPath({{11, 12}, {13, 14}});
    Pemmit::scan scan(first.get(), 0, -1);
    int x = 0, y = 0;
    CHECK(scan.scanex(&x, &y) == 0);
    scan.scabeg(second.get(), 1, -1);
    CHECK(scan.scanex(&x, &y) == 0);
    CHECK(x == 13);
    CHECK(scan.scanex(&x, &y) == 0);
    CHECK(x == 11);
    CHECK(scan.scanex(&x, &y) < 0);
    scan.scabeg(first.get(), 1, 1);
    CHECK(scan.scanex(&x, &y) == 0);
    CHECK(x == 3);
}

TEST_CASE("Pemmit::scan: several walks over one object do not disturb each other") {
    PointList points;
    for (int i = 0; i < 300; ++i) points.push_back({i, -i});
    const PathPtr path = openPath(points);
    Pemmit::scan forward(path.get(), 0, -1), backward(path.get(), 1, -1), late(path.get(), 0, 299);
    for (std::size_t i = 0; i < points.size(); ++i) {
        int x = 0, y = 0;
        CHECK(forward.scanex(&x, &y) == 0);
        CHECK(std::pair(x, y) == points[i]);
        CHECK(backward.scanex(&x, &y) == 0);
        CHECK(std::pair(x, y) == points[points.size() - 1 - i]);
        CHECK((late.scanex(&x, &y) == 0) == (i == 0));
    }
}

TEST_CASE("Pemmit::scan: walks over one object may run on several threads") {
    PointList points;
    for (int i = 0; i < 2000; ++i) points.push_back({i, i % 7});
    const PathPtr path = closedPath(points);
    points.push_back(points.front());
    std::array<int, 4> wrong{};
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < wrong.size(); ++t)
        threads.emplace_back([&, t] {  // no checks of doctest on other threads
            for (int start = 0; start < 2000; start += 100) {
                Pemmit::scan scan(path.get(), 0, start);
                int x = 0, y = 0;
                auto at = static_cast<std::size_t>(start);
                while (scan.scanex(&x, &y) >= 0)
                    if (at >= points.size() || points[at++] != std::pair(x, y)) ++wrong[t];
                if (at != points.size()) ++wrong[t];
                if (Pemmit::patsiz(path.get()) != 2001) ++wrong[t];
            }
        });
    for (std::thread& thread : threads) thread.join();
    for (int count : wrong) CHECK(count == 0);
}

TEST_CASE("Pemmit::scan::scarun: where it is offered, the points that scanex delivers") {
    if (&Pemmit::scan::scarun == nullptr) {
        MESSAGE("not offered, which is allowed");
        return;
    }
    PointList points;
    for (int i = 0; i < 3000; ++i) points.push_back({i, i % 11});
    for (const PathPtr& path : {closedPath(points), openPath(points), openPath({{5, 6}})})
        for (int direction : {0, 1})
            for (int start : {-1, 0, Pemmit::patsiz(path.get()) / 2}) {
                CAPTURE(direction);
                CAPTURE(start);
                const PointList want = walk(path.get(), direction, start);
                PointList got;
                Pemmit::scan scan(path.get(), direction, start);
                int x = 0, y = 0;
                if (scan.scanex(&x, &y) == 0) got.push_back({x, y});  // runs go on behind it
                const Pemmit::PointBase<int>* run = nullptr;
                int step = 0;
                for (int count; (count = Pemmit::scan::scarun(&scan, &run, &step)) >= 0;) {
                    REQUIRE(count > 0);
                    REQUIRE((step == 1 || step == -1));
                    REQUIRE(got.size() + static_cast<std::size_t>(count) <= want.size());
                    for (int i = 0; i < count; ++i, run += step) got.push_back({run->x, run->y});
                }
                CHECK(got == want);
                CHECK(scan.scanex(&x, &y) < 0);
                run = nullptr;
                step = 77;
                CHECK(Pemmit::scan::scarun(&scan, &run, &step) < 0);
                CHECK(run == nullptr);
                CHECK(step == 77);
            }
}
