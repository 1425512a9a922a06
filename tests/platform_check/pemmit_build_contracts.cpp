// Pemmit: building, copying and releasing paths.

#include <climits>

#include "adapter.h"
#include "check.h"

using namespace Check;
using Pemmit::kFlagChildren;
using Pemmit::kFlagOpen;
using Pemmit::kFlagPath;

TEST_CASE("Pemmit::getppi: the resolution that is set now, above 0") {
    CHECK(Pemmit::getppi() > 0);
    for (int ppi : {300, 2400, 1, 720000}) {
        if (!Adapter::setResolution(ppi)) {
            notChecked("the resolution cannot be set");
            return;
        }
        CHECK(Pemmit::getppi() == ppi);
    }
    Adapter::setResolution(2400);
}

TEST_CASE("Pemmit::patbeg: a closed-flagged path without points") {
    const PathPtr path(Pemmit::patbeg());
    CHECK((path->flags & (kFlagPath | kFlagOpen | kFlagChildren)) == kFlagPath);
    CHECK(path->next == nullptr);
    CHECK(sameBox(path->box, Pemmit::Box{INT_MAX, INT_MAX, INT_MIN, INT_MIN}));
    CHECK(Pemmit::patsiz(path.get()) == 0);
}

TEST_CASE("Pemmit::patlin: appends, and the box is true after every point") {
    const PathPtr path(Pemmit::patbeg());
    PointList points;
    Dice dice(1);
    for (int i = 0; i < 200; ++i) {
        CAPTURE(i);
        points.push_back({dice.coordinate(), dice.coordinate()});
        Pemmit::patlin(path.get(), points.back().first, points.back().second);
        CHECK(sameBox(path->box, boxOf(points)));
        PointList closed = points;
        closed.push_back(closed.front());
        CHECK(walk(path.get()) == closed);
        CHECK(Pemmit::patsiz(path.get()) == i + 2);
    }
}

TEST_CASE("Pemmit::patrun: where it is offered, the points that patlin appends") {
    if (&Pemmit::patrun == nullptr) {
        MESSAGE("not offered, which is allowed");
        return;
    }
    Dice dice(2);
    const PathPtr path(Pemmit::patbeg()), other(Pemmit::patbeg());
    PointList points;
    const auto checkPath = [&] {
        CHECK(sameBox(path->box, boxOf(points)));
        CHECK(sameBox(path->box, other->box));
        CHECK(walk(path.get()) == walk(other.get()));
        CHECK(Pemmit::patsiz(path.get()) == static_cast<int>(points.size()) + 1);
    };
    for (const int count : {1, 2, 3, 9, 1, 16, 64, 5, 700, 20000, 1, 64}) {
        CAPTURE(count);
        std::vector<Pemmit::PointBase<int>> run;
        for (int i = 0; i < count; ++i) {
            points.push_back({dice.coordinate(), dice.coordinate()});
            run.push_back({points.back().first, points.back().second});
            Pemmit::patlin(other.get(), run.back().x, run.back().y);
        }
        Pemmit::patrun(path.get(), run.data(), count);
        checkPath();
        points.push_back({dice.coordinate(), dice.coordinate()});
        for (Pemmit::Path* const each : {path.get(), other.get()})  // patlin goes on behind it
            Pemmit::patlin(each, points.back().first, points.back().second);
        checkPath();
    }
}

TEST_CASE("Pemmit::patnew: where it is offered, a closed path of its points") {
    if (&Pemmit::patnew == nullptr) {
        MESSAGE("not offered, which is allowed");
        return;
    }
    Dice dice(3);
    for (const int count : {1, 2, 3, 4, 5, 8, 15, 16, 17, 100, 3000, 20001}) {
        CAPTURE(count);
        PointList points;
        std::vector<Pemmit::PointBase<int>> run;
        for (int i = 0; i < count; ++i) {
            points.push_back({dice.coordinate(), dice.coordinate()});
            run.push_back({points.back().first, points.back().second});
        }
        const PathPtr path(Pemmit::patnew(run.data(), count));
        CHECK((path->flags & (kFlagPath | kFlagOpen | kFlagChildren)) == kFlagPath);
        CHECK(path->next == nullptr);
        for (int round = 0; round < 2; ++round) {
            CHECK(sameBox(path->box, boxOf(points)));
            CHECK(Pemmit::patsiz(path.get()) == static_cast<int>(points.size()) + 1);
            PointList closed = points;
            closed.push_back(closed.front());
            checkWalks(path.get(), closed);
            points.push_back({dice.coordinate(), dice.coordinate()});  // and patlin goes on
            Pemmit::patlin(path.get(), points.back().first, points.back().second);
        }
    }
}

TEST_CASE("Pemmit::patend: appends the last point and opens the path") {
    const PathPtr path(Pemmit::patbeg());
    append(path.get(), {{1, 2}, {3, 4}});
    Pemmit::patend(path.get(), -50, 60);
    CHECK((path->flags & (kFlagPath | kFlagOpen)) == (kFlagPath | kFlagOpen));
    checkWalks(path.get(), {{1, 2}, {3, 4}, {-50, 60}});
    const PathPtr single(Pemmit::patbeg());
    Pemmit::patend(single.get(), 5, 6);
    checkWalks(single.get(), {{5, 6}});
}

TEST_CASE("Pemmit::patendclo: closes the path and adds no point") {
    const PathPtr path(Pemmit::patbeg());
    append(path.get(), {{1, 2}, {3, 4}, {0, 9}});
    Pemmit::flaset(path.get(), kFlagOpen, true);
    Pemmit::patendclo(path.get());
    CHECK((path->flags & (kFlagPath | kFlagOpen)) == kFlagPath);
    checkWalks(path.get(), {{1, 2}, {3, 4}, {0, 9}, {1, 2}});
    const PathPtr empty(Pemmit::patbeg());
    Pemmit::patendclo(empty.get());
    checkWalks(empty.get(), {});
}

TEST_CASE("Pemmit::flaset: sets and clears the bits of the mask and no others") {
    const PathPtr path = closedPath({{1, 2}, {3, 4}, {0, 9}});
    const std::uint32_t before = path->flags;
    Pemmit::flaset(path.get(), kFlagOpen | 1u << 27, true);
    CHECK(path->flags == (before | kFlagOpen | 1u << 27));
    checkWalks(path.get(), {{1, 2}, {3, 4}, {0, 9}});
    Pemmit::flaset(path.get(), kFlagOpen, false);
    CHECK(path->flags == (before | 1u << 27));
    checkWalks(path.get(), {{1, 2}, {3, 4}, {0, 9}, {1, 2}});
    Pemmit::flaset(path.get(), 0, true);
    Pemmit::flaset(path.get(), 1u << 27, false);
    CHECK(path->flags == before);
}

TEST_CASE("Pemmit::flaset: a path that is flagged open while it grows is open") {
    const PathPtr path(Pemmit::patbeg());
    Pemmit::flaset(path.get(), kFlagOpen, true);
    append(path.get(), {{1, 2}, {3, 4}});
    checkWalks(path.get(), {{1, 2}, {3, 4}});
    Pemmit::patend(path.get(), 5, 6);
    checkWalks(path.get(), {{1, 2}, {3, 4}, {5, 6}});
}

TEST_CASE("Pemmit::patdup: the copy has points, flags and box, and a life of its own") {
    for (int size : {0, 1, 2, 7, 8, 100, 3000}) {
        CAPTURE(size);
        PointList points;
        for (int i = 0; i < size; ++i) points.push_back({3 * i, 5 - i});
        PathPtr path(Pemmit::patbeg());
        append(path.get(), points);
        Pemmit::flaset(path.get(), kFlagOpen, true);
        const PathPtr copy(Pemmit::patdup(path.get()));
        CHECK(copy.get() != path.get());
        CHECK(copy->flags == path->flags);
        CHECK(copy->next == nullptr);
        checkWalks(copy.get(), points);

        PointList more = points;
        more.push_back({-1000, 1000});
        Pemmit::patlin(copy.get(), -1000, 1000);
        checkWalks(copy.get(), more);
        checkWalks(path.get(), points);
        Pemmit::patlin(path.get(), 9, 9);
        path.reset();
        checkWalks(copy.get(), more);
    }
}

TEST_CASE("Pemmit::objrem: null is allowed, and a mate that stays goes on alone") {
    Pemmit::objrem(nullptr);
    for (bool removeFirst : {false, true}) {
        CAPTURE(removeFirst);
        PathPtr p(Pemmit::patbeg()), q(Pemmit::patbeg());
        Pemmit::patlinbb(p.get(), q.get());
        append(p.get(), {{1, 1}, {2, 2}});
        append(q.get(), {{3, 3}, {4, 4}});
        PathPtr& gone = removeFirst ? p : q;
        PathPtr& kept = removeFirst ? q : p;
        gone.reset();
        append(kept.get(), {{5, 5}});
        const PointList first = removeFirst ? PointList{{3, 3}, {4, 4}, {5, 5}, {3, 3}}
                                            : PointList{{1, 1}, {2, 2}, {5, 5}, {1, 1}};
        checkWalks(kept.get(), first);
    }
}

TEST_CASE("Pemmit::patbeg: a million small paths") {
    std::vector<Pemmit::Path*> paths;
    paths.reserve(1'000'000);
    for (int i = 0; i < 1'000'000; ++i) {
        paths.push_back(Pemmit::patbeg());
        Pemmit::patlin(paths.back(), i, 0);
        Pemmit::patlin(paths.back(), i, 1);
        Pemmit::patlin(paths.back(), i + 1, 1);
        Pemmit::patendclo(paths.back());
    }
    for (int i = 0; i < 1'000'000; i += 49999)
        checkWalks(paths[static_cast<std::size_t>(i)], {{i, 0}, {i, 1}, {i + 1, 1}, {i, 0}});
    for (Pemmit::Path* path : paths) Pemmit::objrem(path);
}
