// The table that simplification tells near points by, beside the rule itself.

#include <doctest/doctest.h>

#ifdef __SSE2__

#include <climits>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "geometry/clean.h"
#include "geometry/clean_cones.h"
#include "tests/geometry/cleaned.h"
#include "tests/support/paths.h"
#include "vaskel/geometry.h"

namespace {

using Vaskel::Cone;
using Vaskel::ConeTable;
using Vaskel::NearRun;
using Vaskel::WalkPoint;

constexpr unsigned kSeed = 20240607;
constexpr int kReach = ConeTable::kReach;

// The table for a tolerance, which the test keeps while it runs.
struct Table {
    explicit Table(int tolerance) : square(std::int64_t{tolerance} * tolerance) {
        table->make(square);
        cones = table->get(square, 0);
    }
    // |s x d| <= t |d|.
    bool isWithin(const WalkPoint& s, const WalkPoint& d) const {
        const std::int64_t product = std::int64_t{s.x} * d.y - std::int64_t{s.y} * d.x;
        return product * product <= square * (std::int64_t{d.x} * d.x + std::int64_t{d.y} * d.y);
    }
    std::int64_t square;
    std::unique_ptr<ConeTable> table = std::make_unique<ConeTable>();
    const Cone* cones;
};

std::vector<WalkPoint> nearSteps() {
    std::vector<WalkPoint> steps;
    for (int y = -kReach; y <= kReach; ++y)
        for (int x = -kReach; x <= kReach; ++x) steps.push_back({x, y});
    return steps;
}

TEST_CASE("clean: the arc of a near step holds what is within tolerance of it") {
    const std::vector<WalkPoint> steps = nearSteps();
    for (const int tolerance : {1, 2, 3, 5, 21, 43, 44, 46341}) {
        CAPTURE(tolerance);
        const Table table(tolerance);
        NearRun run(table.cones, {0, 0});
        std::int64_t wrong = 0, free = 0;
        for (const WalkPoint& s : steps) {
            const Cone* const cone = run.coneOf(s);
            REQUIRE(cone != nullptr);
            CHECK(cone->isNear());
            const bool isFree = std::int64_t{s.x} * s.x + std::int64_t{s.y} * s.y <= table.square;
            CHECK(cone->isFree() == isFree);
            free += isFree;
            if (isFree) continue;
            for (const WalkPoint& d : steps) {
                run.begin(cone);
                const Cone* const next = run.coneOf(d);
                const bool absorbed = run.absorb(next) || run.isZero(next);
                wrong += absorbed != table.isWithin(s, d);
                wrong += !absorbed && !run.refuses(next);
            }
        }
        CHECK(wrong == 0);
        CHECK((free == static_cast<std::int64_t>(steps.size())) == (tolerance >= 44));
    }
}

TEST_CASE("clean: steps that are not near have no arc") {
    const Table table(1);
    for (const WalkPoint p : {WalkPoint{0, 0}, WalkPoint{1 << 29, -(1 << 30)}}) {
        NearRun run(table.cones, p);
        CHECK(NearRun::mayBegin(p));
        for (const int far : {-kReach - 2, -kReach - 1, kReach + 1, kReach + 2, 1 << 30})
            for (const int other : {-kReach, 0, kReach}) {
                CAPTURE(far);
                for (const WalkPoint& to :
                     {WalkPoint{p.x + far, p.y + other}, WalkPoint{p.x + other, p.y + far}}) {
                    const Cone* const cone = run.coneOf(to);
                    if (!cone) continue;
                    CHECK(far == kReach + 1);
                    CHECK_FALSE(cone->isNear());
                    CHECK_FALSE(cone->isFree());
                    run.begin(run.coneOf({p.x + 5, p.y + 3}));
                    CHECK_FALSE(run.absorb(cone));
                    CHECK_FALSE(run.refuses(cone));
                }
            }
    }
    for (const int edge : {INT_MIN, INT_MIN + 40, -(1 << 30) - 1, 1 << 30, INT_MAX - 40, INT_MAX}) {
        CAPTURE(edge);
        CHECK_FALSE(NearRun::mayBegin({edge, 0}));
        CHECK_FALSE(NearRun::mayBegin({0, edge}));
    }
}

// Steps as they come in outlines, and pairs of wide arcs that meet at both ends,
// such as those of (2, 1) and (2, -1) with a tolerance of 2, in the direction (0, 1).
TEST_CASE("clean: a run of near steps absorbs and refuses as the rule does") {
    MESSAGE("seed " << kSeed);
    std::mt19937 random(kSeed);
    const auto draw = [&](int reach) {
        return static_cast<int>(random() % static_cast<unsigned>(2 * reach + 1)) - reach;
    };
    std::int64_t absorbed = 0, refused = 0, unsureIn = 0, unsureOut = 0, wrong = 0;
    for (const int tolerance : {1, 2, 3, 4, 7, 20}) {
        const Table table(tolerance);
        for (int turn = 0; turn < 60000; ++turn) {
            const int reach = 1 + turn % kReach;
            NearRun run(table.cones, {0, 0});
            std::vector<WalkPoint> pending;
            bool begun = false;
            for (int i = 0; i < 12; ++i) {
                const WalkPoint d = {draw(reach), draw(reach)};
                bool within = true;
                for (const WalkPoint& s : pending) within = within && table.isWithin(s, d);
                const Cone* const cone = run.coneOf(d);
                if (!begun && cone->isFree()) {
                    wrong += !within;
                } else if (!begun) {
                    wrong += !within;
                    run.begin(cone);
                    begun = true;
                } else if (run.absorb(cone) || run.isZero(cone)) {
                    wrong += !within;
                    ++absorbed;
                } else if (run.refuses(cone)) {
                    wrong += within;
                    ++refused;
                    break;
                } else {
                    ++(within ? unsureIn : unsureOut);
                    break;
                }
                pending.push_back(d);
            }
        }
    }
    CHECK(wrong == 0);
    CHECK(absorbed > 100000);
    CHECK(refused > 100000);
    CHECK(unsureIn > 100);
    CHECK(unsureOut > 1000);
}

// With the table and without.
void compare(const Pemmit::Path* path, int tolerance) {
    Vaskel::cleanpar(0, tolerance, 1);
    ConeTable& cones = Vaskel::cleanState().cones;
    const Points want = walked(PathPtr(Vaskel::cleanPlain(path, kAnySize)).get());
    cones.forget();
    CHECK(cleaned(path) == want);
    cones.make(std::int64_t{tolerance} * tolerance);
    CHECK(cleaned(path) == want);
    CHECK(cones.get(std::int64_t{tolerance} * tolerance, 0) != nullptr);
    cones.forget();
}

TEST_CASE("clean: outlines of near points are simplified as the plain form does it") {
    std::mt19937 random(kSeed);
    const auto draw = [&](int reach) {
        return static_cast<int>(random() % static_cast<unsigned>(2 * reach + 1)) - reach;
    };
    for (const int tolerance : {1, 2, 3, 5, 16, 31, 45})
        for (const int reach : {1, 2, 3, 8, 40})
            for (const int middle : {0, 1 << 30, INT_MAX - 60, INT_MIN + 60})
                for (int turn = 0; turn < 6; ++turn) {
                    CAPTURE(tolerance);
                    CAPTURE(reach);
                    CAPTURE(middle);
                    // Away and back, so that it goes neither far nor over the ends.
                    Points points = {{middle, -middle}};
                    Point at = points[0];
                    const bool straight = turn % 2 == 0;
                    for (int i = 0; i < 150; ++i) {
                        const int x = at.x - middle, y = at.y + middle;
                        const int ahead = straight && x < 50 ? 1 : 0;
                        const int stepX = ahead + draw(straight ? 1 : reach);
                        const int stepY = draw(straight ? 1 : reach);
                        at = {middle + (x + stepX > 55 || x + stepX < -55 ? 0 : x + stepX),
                              -middle + (y + stepY > 55 || y + stepY < -55 ? 0 : y + stepY)};
                        points.push_back(at);
                    }
                    compare(openPath(points).get(), tolerance);
                    compare(closedPath(points).get(), tolerance);
                }
}

TEST_CASE("clean: differences that wrap are not near") {
    const Points points = {{INT_MIN, 0},
                           {INT_MAX, 1},
                           {INT_MIN + 1, 2},
                           {INT_MAX, 3},
                           {INT_MAX - 1, 4},
                           {INT_MIN, INT_MIN},
                           {0, INT_MAX},
                           {3, INT_MIN},
                           {-2, INT_MAX},
                           {-2, INT_MIN},
                           {5, 5}};
    for (const int tolerance : {1, 2, 9}) {
        CAPTURE(tolerance);
        compare(openPath(points).get(), tolerance);
        compare(closedPath(points).get(), tolerance);
    }
}

TEST_CASE("clean: the table is made once enough points have come") {
    Vaskel::cleanpar(0, 3, 1);
    ConeTable& cones = Vaskel::cleanState().cones;
    cones.forget();
    Points points;
    for (int i = 0; i < 10000; ++i) points.push_back({i, i % 7});
    const PathPtr path = openPath(points);
    const Points want = cleaned(path.get());
    CHECK(cones.get(9, 0) == nullptr);
    CHECK(cleaned(path.get()) == want);
    CHECK(cones.get(9, 0) != nullptr);
    CHECK(cones.get(16, 100) == nullptr);  // another one: the first stays for now
    CHECK(cones.get(9, 0) != nullptr);
    cones.forget();
    CHECK(cones.get(9, 0) == nullptr);
    Vaskel::cleanpar(0, 0, 0);
}

}  // namespace

#endif
