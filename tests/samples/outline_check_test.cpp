#include "samples/proof/check/outline_check.h"

#include <doctest/doctest.h>

#include <cmath>
#include <string>
#include <vector>

#include "embedded/document.h"
#include "tests/support/paths.h"
#include "vaskel/geometry.h"

using namespace Proof;

namespace {

constexpr std::size_t kAll = 100000;

PathPtr compound(std::vector<PathPtr> contours) {
    PathPtr path(Embedded::makeCompound());
    for (PathPtr& contour : contours) REQUIRE(Embedded::addChild(path.get(), contour.release()));
    return path;
}

PathPtr two(PathPtr a, PathPtr b) {
    std::vector<PathPtr> contours;
    contours.push_back(std::move(a));
    contours.push_back(std::move(b));
    return compound(std::move(contours));
}

// "crossing 0.1 0.3 at 5,5", "overlap 0.0 0.1 at 5,0 to 10,0", one a line.
std::string text(const OutlineFindings& result) {
    std::string lines;
    for (const Finding& f : result.findings) {
        static constexpr const char* kKinds[] = {"crossing", "touch", "overlap"};
        const auto name = [](const Finding::Line& line) {
            return " " + std::to_string(line.contour) + "." + std::to_string(line.segment);
        };
        lines += kKinds[f.kind] + name(f.first) + name(f.second) + " at " + std::to_string(f.at.x) +
                 "," + std::to_string(f.at.y);
        if (f.kind == Finding::Overlap)
            lines += " to " + std::to_string(f.to.x) + "," + std::to_string(f.to.y);
        CHECK(f.confirmed == (f.kind != Finding::Overlap));
        lines += "\n";
    }
    return lines;
}

struct Row {
    const char* why;
    PathPtr outline;
    bool intersects;
    std::string findings;
};

std::vector<Row> rows() {
    std::vector<Row> rows;
    const auto add = [&](const char* why, PathPtr outline, bool intersects, const char* findings) {
        rows.push_back({why, std::move(outline), intersects, findings});
    };
    add("a square", closedPath({{0, 0}, {10, 0}, {10, 10}, {0, 10}}), false, "");
    add("a triangle, all of whose lines are neighbours", closedPath({{0, 0}, {9, 0}, {0, 9}}),
        false, "");
    add("a bow tie", closedPath({{0, 0}, {10, 10}, {10, 0}, {0, 10}}), true,
        "crossing 0.0 0.2 at 5,5\n");
    // Lines 1 and 4 run from (10, 0) to (10, 20) and from (0, 10) to (20, 10).
    add("a figure eight of straight lines",
        closedPath({{0, 0}, {10, 0}, {10, 20}, {20, 20}, {20, 10}, {0, 10}}), true,
        "crossing 0.1 0.4 at 10,10\n");
    // Each line of the star crosses the two that are no neighbours. Line 0 has
    // fallen by 40 of 110 at line 2, y = 60, so x = 50 + 30 * 40 / 110 = 60.9.
    // Lines 1 and 3 are each other's mirror images in x = 50, where line 1 has
    // risen by 30 / 80 of 70 from -10: 16.25. On line 3, (100 - 80 u, 60 - 70 u),
    // line 0 comes at u = 43 / 109: (68.4, 32.4). The others are mirror images.
    add("a star of five lines", closedPath({{50, 100}, {80, -10}, {0, 60}, {100, 60}, {20, -10}}),
        true,
        "crossing 0.0 0.2 at 61,60\ncrossing 0.0 0.3 at 68,32\ncrossing 0.1 0.3 at 50,16\n"
        "crossing 0.1 0.4 at 32,32\ncrossing 0.2 0.4 at 39,60\n");
    add("a square whose side a spike touches",
        closedPath({{0, 0}, {20, 0}, {20, 20}, {10, 0}, {0, 20}}), false,
        "touch 0.0 0.2 at 10,0\n");
    add("a square whose side a spike passes",
        closedPath({{0, 0}, {20, 0}, {20, 20}, {10, -1}, {0, 20}}), true,
        "crossing 0.0 0.2 at 10,0\ncrossing 0.0 0.3 at 10,0\n");
    // The outline comes down to (10, 0), which lies on line 0, and goes on below.
    add("a vertex on a line with the outline going on to the other side",
        closedPath({{0, 0}, {20, 0}, {20, 20}, {10, 0}, {10, -20}, {0, -20}}), true,
        "crossing 0.0 0.2 at 10,0\n");
    // Two triangles tip to tip: the walk turns back at the shared vertex.
    add("two triangles that share a vertex and stay apart",
        closedPath({{10, 10}, {0, 20}, {0, 0}, {10, 10}, {20, 0}, {20, 20}}), false,
        "touch 0.0 0.2 at 10,10\n");
    add("two contours that share a vertex",
        two(closedPath({{0, 0}, {10, 0}, {10, 10}, {0, 10}}),
            closedPath({{10, 10}, {20, 10}, {20, 20}, {10, 20}})),
        false, "touch 0.1 1.0 at 10,10\n");
    add("two squares that overlap at a corner",
        two(closedPath({{0, 0}, {10, 0}, {10, 10}, {0, 10}}),
            closedPath({{5, 5}, {15, 5}, {15, 15}, {5, 15}})),
        true, "crossing 0.1 1.0 at 10,5\ncrossing 0.2 1.3 at 5,10\n");
    add("two squares far apart",
        two(closedPath({{0, 0}, {10, 0}, {10, 10}, {0, 10}}),
            closedPath({{50, 50}, {60, 50}, {60, 60}, {50, 60}})),
        false, "");
    add("a square within a square",
        two(closedPath({{0, 0}, {30, 0}, {30, 30}, {0, 30}}),
            closedPath({{10, 10}, {20, 10}, {20, 20}, {10, 20}})),
        false, "");
    add("an open line that folds back", openPath({{0, 0}, {10, 0}, {5, 0}}), true,
        "overlap 0.0 0.1 at 5,0 to 10,0\n");
    add("an open line that goes straight on", openPath({{0, 0}, {5, 0}, {10, 0}}), false, "");
    add("two squares that share part of a side",
        two(closedPath({{0, 0}, {10, 0}, {10, 10}, {0, 10}}),
            closedPath({{10, 4}, {20, 4}, {20, 20}, {10, 20}})),
        true,
        "touch 0.1 1.0 at 10,4\noverlap 0.1 1.3 at 10,4 to 10,10\n"
        "touch 0.2 1.3 at 10,10\n");
    add("repeated points make no findings",
        closedPath({{0, 0}, {10, 0}, {10, 0}, {10, 10}, {10, 10}, {10, 10}, {0, 10}}), false, "");
    add("repeated points keep the walk's numbers",
        closedPath({{0, 0}, {10, 10}, {10, 10}, {10, 0}, {0, 10}}), true,
        "crossing 0.0 0.3 at 5,5\n");
    add("an open line that ends on itself", openPath({{0, 0}, {20, 0}, {20, 20}, {10, 0}}), false,
        "touch 0.0 0.2 at 10,0\n");
    add("an open line that comes back to its start", openPath({{0, 0}, {9, 0}, {0, 9}, {0, 0}}),
        false, "");
    add("a single point", openPath({{5, 5}}), false, "");
    add("nothing", PathPtr(Pemmit::patbeg()), false, "");
    add("a compound of nothing", compound({}), false, "");
    return rows;
}

}  // namespace

TEST_CASE("crossings, touches and overlaps are found where they are") {
    for (const Row& row : rows()) {
        CAPTURE(row.why);
        const OutlineFindings got = checkOutline(row.outline.get(), kAll, nullptr);
        CHECK(got.complete);
        CHECK(got.intersects == row.intersects);
        CHECK(text(got) == row.findings);
    }
    CHECK(checkOutline(nullptr, kAll, nullptr).findings.empty());
}

TEST_CASE("a curve that loops crosses itself once") {
    // Control points (0,0) (300,200) (-200,200) (100,0) times 100: x - 50 =
    // (b - a) 50 (1 - 16 ab), so x is 50 at ab = 1/16 before and after the
    // middle, where y = 3 ab (a + b) 200 = 37.5.
    PathPtr path(Pemmit::patbeg());
    Pemmit::patlin(path.get(), 0, 0);
    REQUIRE(Embedded::addCurve(path.get(), 30000, 20000, -20000, 20000, 10000, 0));
    Pemmit::flaset(path.get(), Pemmit::kFlagOpen, true);
    const OutlineFindings got = checkOutline(path.get(), kAll, nullptr);
    CHECK(got.intersects);
    REQUIRE(got.findings.size() == 1);
    const Finding& f = got.findings[0];
    CHECK(f.confirmed);
    CHECK(std::abs(f.at.x - 5000) <= 2);
    CHECK(std::abs(f.at.y - 3750) <= 2);
    CHECK(f.first.segment + f.second.segment == Pemmit::patsiz(path.get()) - 2);  // symmetric
}

TEST_CASE("intersect counts some touches of two vertices, depending on the direction") {
    // A notch of the outer outline reaches the tip (0, 0) of the inner one. Walked
    // as listed, its line to (0, 0) comes from (10, 5) and has (-100, 0) as
    // neighbour at this first vertex, which lies between the two directions of the
    // tip: intersect takes it for the outline's way on. Walked backwards, the line
    // comes from (10, -5), with (-50, -60) before. The list of findings has a touch
    // in any case.
    Points outer = {{-100, 0}, {10, 5}, {0, 0}, {10, -5}, {-50, -60}};
    const Points inner = {{0, 0}, {-10, 3}, {-10, -3}};
    for (const bool backwards : {false, true}) {
        CAPTURE(backwards);
        const PathPtr path = two(closedPath(outer), closedPath(inner));
        const OutlineFindings got = checkOutline(path.get(), kAll, nullptr);
        CHECK(text(got) == "touch 0.1 1.0 at 0,0\n");
        CHECK(got.intersects == !backwards);
        CHECK(got.crosses() == !backwards);
        std::reverse(outer.begin(), outer.end());
    }
}

TEST_CASE("the number of findings is limited, and the check can be ended") {
    // A comb across a comb: 20 times 20 crossings.
    Points points;
    for (int i = 0; i < 20; ++i)
        for (const int y : {i % 2 ? 1000 : -10, i % 2 ? -10 : 1000}) points.push_back({10 * i, y});
    for (int i = 0; i < 20; ++i)
        for (const int x : {i % 2 ? 1000 : -10, i % 2 ? -10 : 1000})
            points.push_back({x, 500 - 10 * i});
    const PathPtr path = openPath(points);
    const OutlineFindings all = checkOutline(path.get(), kAll, nullptr);
    CHECK(all.complete);
    CHECK(all.count(Finding::Crossing) >= 400);
    const OutlineFindings some = checkOutline(path.get(), 100, nullptr);
    CHECK_FALSE(some.complete);
    CHECK(some.findings.size() == 100);
    CHECK(some.crosses());
    CHECK(checkOutline(path.get(), all.findings.size(), nullptr).complete);

    Points hatch;
    for (int i = 0; i < 20000; ++i) hatch.push_back({i * 10, i % 2 * 1000});
    int asked = 0;
    const OutlineFindings ended =
        checkOutline(openPath(hatch).get(), kAll, [&] { return ++asked < 2; });
    CHECK(asked == 2);
    CHECK_FALSE(ended.complete);
}

TEST_CASE("an outline that comes to one place very often does not take its square in time") {
    // Narrow petals around (0, 0): every pair of them meets there.
    const auto petals = [](int count) {
        Points points;
        for (int i = 0; i < count; ++i) {
            points.push_back({0, 0});
            points.push_back({100000, 10 * i});
            points.push_back({100000, 10 * i + 5});
        }
        return closedPath(points);
    };
    const OutlineFindings few = checkOutline(petals(100).get(), 10, nullptr);
    CHECK(few.complete);
    CHECK(text(few) == "touch 0.0 0.2 at 0,0\n");
    const OutlineFindings many = checkOutline(petals(2000).get(), 10, nullptr);
    CHECK_FALSE(many.complete);
    CHECK(text(many).starts_with("touch 0."));
    CHECK(many.findings.size() == 1);
}
