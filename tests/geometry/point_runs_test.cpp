#include <doctest/doctest.h>

#include <climits>
#include <random>
#include <string>
#include <vector>

#include "geometry/edge_run.h"
#include "geometry/point_runs.h"
#include "tests/support/fake_host.h"
#include "tests/support/paths.h"
#include "vaskel/geometry.h"

namespace {

using namespace Vaskel;

// Without the host's runs for as long as it lives.
struct PlainWalks {
    PlainWalks() { setHostRuns(false); }
    ~PlainWalks() { setHostRuns(true); }
};

struct Random {
    std::mt19937 engine;
    int below(int n) { return static_cast<int>(engine() % static_cast<unsigned>(n)); }
};

// A closed path of joined pieces, some of which are walked back to front.
PathPtr joinedPath(Random& r, int grid, int length) {
    const PathPtr p(Pemmit::patbeg()), s(Pemmit::patbeg()), t(Pemmit::patbeg());
    PathPtr q(Pemmit::patbeg());
    Pemmit::patlinbb(p.get(), q.get());
    Pemmit::patlinbb(s.get(), t.get());
    for (Pemmit::Path* path : {p.get(), q.get(), s.get(), t.get()})
        for (int n = 1 + r.below(length); n > 0; --n)
            Pemmit::patlin(path, r.below(grid), r.below(grid));
    Pemmit::patlinee(p.get(), s.get());
    Pemmit::patlinee(q.get(), t.get());
    Pemmit::patendclo(q.get());
    REQUIRE(Pemmit::patsiz(q.get()) > 4);
    return q;
}

Points byRuns(const Pemmit::Object* object, int direction, int start, bool& backwards) {
    Points points;
    RunWalk walk(object, direction, start);
    for (PointRun run; walk.next(run);) {
        CHECK(run.count > 0);
        backwards |= run.step < 0;
        for (int i = 0; i < run.count; ++i) points.push_back({run[i].x, run[i].y});
    }
    return points;
}

TEST_CASE("runs: the same points as one by one, with and without the host's own") {
    Random r{std::mt19937(12)};
    bool backwards = false, forwards = false;
    for (int round = 0; round < 300; ++round) {
        CAPTURE(round);
        const PathPtr path = joinedPath(r, 100, 1 + r.below(400));
        for (const int direction : {0, 1})
            for (const int start : {-1, r.below(Pemmit::patsiz(path.get()))}) {
                const Points want = walked(path.get(), direction, start);
                CHECK(want.size() > 0);
                bool& turned = direction == 0 ? forwards : backwards;
                CHECK(byRuns(path.get(), direction, start, turned) == want);
                const PlainWalks plain;
                CHECK_FALSE(usesHostRuns());
                bool none = false;
                CHECK(byRuns(path.get(), direction, start, none) == want);
                CHECK_FALSE(none);
            }
    }
    CHECK(backwards);
    CHECK(forwards);  // pieces lie back to front in a forward walk too
    CHECK(usesHostRuns());
}

TEST_CASE("runs: scanex goes on behind a run, and a run behind scanex") {
    const PathPtr path = closedPath({{1, 1}, {2, 2}, {3, 3}});
    Pemmit::scan walk(path.get(), 0, -1);
    int x = 0, y = 0;
    REQUIRE(walk.scanex(&x, &y) == 0);
    const WalkPoint* points = nullptr;
    int step = 0;
    REQUIRE(Pemmit::scan::scarun(&walk, &points, &step) == 2);
    CHECK(step == 1);
    CHECK(points[0].x == 2);
    CHECK(points[1].y == 3);
    REQUIRE(walk.scanex(&x, &y) == 0);
    CHECK(x == 1);
    CHECK(Pemmit::scan::scarun(&walk, &points, &step) < 0);
    CHECK(step == 1);
}

// The edges of points by one form.
struct Outcome {
    bool holds = false, inside = false;
    friend bool operator==(const Outcome&, const Outcome&) = default;
};
Outcome outcomeOf(const EdgeRunForm& form, Point p, const PointRun& run) {
    Outcome outcome;
    outcome.holds = form.run(p.x, p.y, run, outcome.inside);
    if (outcome.holds) outcome.inside = false;
    return outcome;
}

struct Family {
    const char* name;
    int low, high;
    bool ends = false;  // near half the 32-bit range, and near 0
};
constexpr Family kEdgeFamilies[] = {{"tiny grid", 0, 4},
                                    {"grid", -20, 20},
                                    {"page", -5000, 5000},
                                    {"ends", 0, 4, true},
                                    {"all", INT_MIN, INT_MAX}};

// Coordinates of a family; those of a wandering outline stay near the last ones,
// so that many edges in a row lie on one side of a point.
int pickFrom(const Family& family, std::mt19937& random) {
    std::uniform_int_distribution<int> pick(family.low, family.high);
    constexpr int ends[] = {-(1 << 30) - 2, 0, (1 << 30) - 3};
    return pick(random) + (family.ends ? ends[random() % 3] : 0);
}

std::vector<WalkPoint> pointsOf(const Family& family, int round, std::mt19937& random) {
    std::vector<WalkPoint> points(static_cast<std::size_t>(1 + random() % 150));
    for (WalkPoint& p : points) p = {pickFrom(family, random), pickFrom(family, random)};
    if (round % 3 == 0)  // upright and level edges
        for (std::size_t i = 1; i < points.size(); ++i)
            (i % 2 ? points[i].x : points[i].y) = i % 2 ? points[i - 1].x : points[i - 1].y;
    if (round % 3 == 1)  // a wandering outline
        for (std::size_t i = 1; i < points.size(); ++i)
            for (int WalkPoint::*c : {&WalkPoint::x, &WalkPoint::y})
                points[i].*c = random() % 16 == 0 ? points[i].*c : points[i - 1].*c;
    return points;
}

TEST_CASE("insidePath: every form of the edge test answers like the plain one") {
    REQUIRE(edgeRunForms().size() >= 1);
    int held = 0, inside = 0, outside = 0;
    for (const Family& family : kEdgeFamilies) {
        std::mt19937 random(2024);
        for (int round = 0; round < 4000; ++round) {
            const std::vector<WalkPoint> points = pointsOf(family, round, random);
            const int count = static_cast<int>(points.size());
            const PointRun runs[] = {{points.data(), 1, count},
                                     {points.data() + count - 1, -1, count}};
            for (int question = 0; question < 10; ++question) {
                Point p{pickFrom(family, random), pickFrom(family, random)};
                const WalkPoint& some = points[random() % points.size()];
                if (question % 3 == 0) p.x = some.x;
                if (question % 5 == 0) p.y = some.y;
                for (const PointRun& run : runs) {
                    const Outcome want = outcomeOf(kEdgeRunPlain, p, run);
                    ++(want.holds ? held : want.inside ? inside : outside);
                    for (const EdgeRunForm* form : edgeRunForms())
                        if (outcomeOf(*form, p, run) != want) {
                            CAPTURE(std::string(form->name));
                            CAPTURE(std::string(family.name));
                            CAPTURE(round);
                            CAPTURE(p);
                            REQUIRE(outcomeOf(*form, p, run) == want);
                        }
                }
            }
        }
    }
    CHECK(held > 10000);
    CHECK(inside > 50000);
    CHECK(outside > 50000);
}

TEST_CASE("insidePath: the forced form is the one that runs, over any walk") {
    Random r{std::mt19937(3)};
    std::vector<PathPtr> paths;
    for (int i = 0; i < 60; ++i) paths.push_back(joinedPath(r, 30, 100));
    std::vector<bool> want;
    for (const EdgeRunForm* form : edgeRunForms()) {
        forceEdgeRunForm(form);
        CHECK(&chosenEdgeRunForm() == form);
        for (const bool runs : {true, false}) {
            setHostRuns(runs);
            std::vector<bool> got;
            for (const PathPtr& path : paths)
                for (int i = 0; i < 100; ++i)
                    got.push_back(insidePath(i * 7 % 33 - 1, i * 11 % 33 - 1, path.get()));
            if (want.empty()) want = got;
            CAPTURE(std::string(form->name));
            CAPTURE(runs);
            CHECK(got == want);
        }
    }
    setHostRuns(true);
    forceEdgeRunForm(nullptr);
    CHECK(&chosenEdgeRunForm() == edgeRunForms().back());
}

TEST_CASE("insidePath: allocates nothing") {
    Random r{std::mt19937(4)};
    const PathPtr path = joinedPath(r, 1000, 3000);
    for (const bool runs : {true, false}) {
        CAPTURE(runs);
        setHostRuns(runs);
        const long before = allocationCount();
        int inside = 0;
        for (int i = 0; i < 200; ++i) inside += insidePath(5 * i, 5 * i, path.get());
        CHECK(allocationCount() == before);
        CHECK(inside > 0);
        CHECK(inside < 200);
    }
    setHostRuns(true);
}

}  // namespace
