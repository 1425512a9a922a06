// Joins of paths with curves in the embedded document model.

#include <doctest/doctest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "embedded/document.h"
#include "platform/pemmit.h"
#include "tests/embedded/drawn.h"

namespace {

using Embedded::addCurve;
using Embedded::Segment;

TEST_CASE("joins turn curves round") {
    Pemmit::Path *p = Pemmit::patbeg(), *q = Pemmit::patbeg();
    Pemmit::patlinbb(p, q);
    Pemmit::patlin(p, 0, 0);
    addCurve(p, 10, 0, 20, 10, 20, 20);
    Pemmit::patlin(q, 0, 100);
    Pemmit::patlin(q, 1, 100);
    addCurve(q, 15, 100, 20, 90, 20, 80);
    addCurve(q, 20, 70, 30, 60, 40, 60);
    Pemmit::patlin(q, 41, 60);
    Points want = walk(p);
    want.pop_back();
    Points turned = walk(q);
    turned.pop_back();
    want.insert(want.end(), turned.rbegin(), turned.rend());
    want.push_back(want.front());
    Pemmit::patlinee(p, q);
    CHECK(walk(p) == want);
    CHECK(drawn(p) ==
          "M 0,0  C 10,0 20,10 20,20  L 41,60  L 40,60  C 30,60 20,70 20,80  C 20,90 15,100 1,100  "
          "L 0,100");
    Pemmit::objrem(p);
    Pemmit::objrem(q);
}

// Paths with curves in any order of building and joining, beside the segments
// as a list that is copied and turned by hand.
TEST_CASE("curves and lines survive any order of joins") {
    struct Part {
        bool curve = false;
        int x1 = 0, y1 = 0, x2 = 0, y2 = 0, x = 0, y = 0;
    };
    using Outline = std::vector<Part>;  // the first part is the move
    const auto turned = [](const Outline& outline) {
        Outline result;
        for (std::size_t i = outline.size(); i-- > 0;) {
            Part part;  // to where part i ends, by the way that part i + 1 came
            if (i + 1 < outline.size() && outline[i + 1].curve) {
                const Part& way = outline[i + 1];
                part = {true, way.x2, way.y2, way.x1, way.y1, 0, 0};
            }
            part.x = outline[i].x;
            part.y = outline[i].y;
            result.push_back(part);
        }
        return result;
    };
    const auto text = [](const Outline& outline) {
        std::string result;
        const auto point = [](int x, int y) { return std::to_string(x) + ',' + std::to_string(y); };
        for (const Part& part : outline) {
            result += result.empty() ? "M" : part.curve ? "  C" : "  L";
            if (part.curve) result += ' ' + point(part.x1, part.y1) + ' ' + point(part.x2, part.y2);
            result += ' ' + point(part.x, part.y);
        }
        return result;
    };
    std::mt19937 engine(20250807);
    const auto below = [&](int n) {
        return static_cast<int>(engine() % static_cast<std::uint32_t>(n));
    };
    const auto coordinate = [&] { return below(400) - 200; };
    for (int round = 0; round < 300; ++round) {
        CAPTURE(round);
        constexpr std::size_t kPairs = 4;
        Pemmit::Path* paths[2 * kPairs];
        Outline outlines[2 * kPairs];
        std::size_t mates[2 * kPairs];
        for (std::size_t i = 0; i < 2 * kPairs; ++i) {
            paths[i] = Pemmit::patbeg();
            mates[i] = i ^ 1;
            if (i % 2) Pemmit::patlinbb(paths[i - 1], paths[i]);
        }
        const auto grow = [&](std::size_t i) {
            for (int n = below(6); n > 0; --n) {
                Part part;
                part.curve = !outlines[i].empty() && below(2);
                part.x = coordinate();
                part.y = coordinate();
                if (part.curve) {
                    part.x1 = coordinate();
                    part.y1 = coordinate();
                    part.x2 = coordinate();
                    part.y2 = coordinate();
                    REQUIRE(addCurve(paths[i], part.x1, part.y1, part.x2, part.y2, part.x, part.y));
                } else {
                    Pemmit::patlin(paths[i], part.x, part.y);
                }
                outlines[i].push_back(part);
            }
        };
        const auto join = [](Outline a, const Outline& b) {
            a.insert(a.end(), b.begin(), b.end());
            return a;
        };
        for (std::size_t i = 0; i < 2 * kPairs; ++i) grow(i);
        std::vector<std::size_t> live;
        for (std::size_t i = 0; i < 2 * kPairs; ++i) live.push_back(i);
        while (!live.empty()) {
            const std::size_t p =
                live[static_cast<std::size_t>(below(static_cast<int>(live.size())))];
            const std::size_t q =
                live[static_cast<std::size_t>(below(static_cast<int>(live.size())))];
            if (p == q) continue;
            Pemmit::patlinee(paths[p], paths[q]);
            if (mates[p] == q) {
                outlines[p] = join(outlines[p], turned(outlines[q]));
                outlines[q].clear();
            } else {
                const std::size_t P = mates[p], Q = mates[q];
                outlines[P] = join(join(outlines[q], turned(outlines[p])), outlines[P]);
                outlines[p].clear();
                outlines[q].clear();
                mates[P] = Q;
                mates[Q] = P;
                CHECK(drawn(paths[P]) == text(outlines[P]));
                grow(P);
            }
            CHECK(drawn(paths[p]) == text(outlines[p]));
            CHECK(drawn(paths[q]).empty());
            std::erase(live, p);
            std::erase(live, q);
        }
        for (std::size_t i = 0; i < 2 * kPairs; ++i) {
            CHECK(drawn(paths[i]) == text(outlines[i]));
            Pemmit::Path* const copy = Pemmit::patdup(paths[i]);
            Pemmit::objrem(paths[i]);
            CHECK(drawn(copy) == text(outlines[i]));
            Pemmit::objrem(copy);
        }
    }
}

}  // namespace
