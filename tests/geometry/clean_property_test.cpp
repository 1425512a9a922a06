// The shipping form of cleaning beside the plain one, on outlines that aim at
// thresholds: steps, windows, tolerances, 16 and 32 bits.

#include <doctest/doctest.h>

#include <climits>
#include <cstdint>
#include <random>

#include "geometry/clean.h"
#include "geometry/clean_kernel.h"
#include "geometry/point_runs.h"
#include "tests/support/paths.h"
#include "vaskel/geometry.h"

namespace {

constexpr unsigned kSeed = 20240607;

class Random {
 public:
    explicit Random(unsigned seed) : mEngine(seed) {}
    int between(int low, int high) {  // both included
        const std::uint64_t span = static_cast<std::uint64_t>(std::int64_t{high} - low) + 1;
        const std::uint64_t draw = std::uint64_t{mEngine()} << 32 | mEngine();
        return static_cast<int>(low + static_cast<std::int64_t>(draw % span));
    }

 private:
    std::mt19937 mEngine;
};

// A walk with steps of about the given size; now and then it stands still,
// jumps, goes straight on or comes back to its start.
Points wander(Random& random, int count, int size) {
    Points points = {{random.between(-size, size), random.between(-size, size)}};
    Point step = {size, 0};
    while (static_cast<int>(points.size()) < count) {
        switch (random.between(0, 9)) {
            case 0:
                step = {0, 0};
                break;
            case 1:
                step = {random.between(-40 * size, 40 * size), random.between(-2, 2)};
                break;
            case 2:
                points.push_back(points[0]);
                break;
            case 3:
            case 4:
            case 5:
                break;
            default:
                step = {random.between(-size, size), random.between(-size, size)};
        }
        points.push_back({points.back().x + step.x, points.back().y + step.y});
    }
    return points;
}

// Nearly straight lines with bumps about as high as the tolerance.
Points ripple(Random& random, int count, int height) {
    Points points;
    for (int i = 0; i < count; ++i)
        points.push_back({7 * i, i / 3 + random.between(-height, height)});
    return points;
}

struct Outcome {
    bool null;
    std::uint32_t flags;
    Points points;
    friend bool operator==(const Outcome&, const Outcome&) = default;
};

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
    return out << (outcome.null ? "null" : "path") << " flags " << outcome.flags << ' '
               << outcome.points;
}

Outcome outcome(Pemmit::Path* path) {
    const PathPtr owned(path);
    if (!path) return {true, 0, {}};
    return {false, path->flags, walked(path)};
}

// With the host's optional calls and without.
void compare(const Pemmit::Path* path) {
    const Outcome want = outcome(Vaskel::cleanPlain(path, 5));
    for (const bool runs : {true, false}) {
        CAPTURE(runs);
        Vaskel::setHostRuns(runs);
        CHECK(outcome(Vaskel::clean(path, 5)) == want);
    }
    Vaskel::setHostRuns(true);
}

void compare(const Points& points) {
    for (const bool open : {false, true}) {
        CAPTURE(open);
        compare((open ? openPath(points) : closedPath(points)).get());
    }
}

}  // namespace

TEST_CASE("clean: every form gives the plain form's outline") {
    MESSAGE("seed " << kSeed);
    Random random(kSeed);
    for (const int n : {-1, 0, 1, 2, 3, 5, 9, 40})
        for (const int tolerance : {0, 1, 2, 5, -3, 16, 17, 1023, 1024, 46341, INT_MIN})
            for (int i = 0; i < 3; ++i) {
                const int step = random.between(-1, 9);
                CAPTURE(n);
                CAPTURE(tolerance);
                CAPTURE(step);
                Vaskel::cleanpar(n, tolerance, step);
                compare(wander(random, random.between(1, 60), 3));
                compare(wander(random, random.between(1, 120), 9));
                compare(ripple(random, random.between(3, 300), 1 + random.between(0, 4)));
            }
}

// Squares of long steps times that of a wide tolerance overflowed, which left the
// outcome alone but has no defined one.
TEST_CASE("clean: a long step behind a few short ones is told by its length alone") {
    for (const int tolerance : {1, 46341, INT_MAX}) {
        CAPTURE(tolerance);
        Vaskel::cleanpar(0, tolerance, 1);
        Points points = {{0, 0}};
        for (int pending = 1; pending <= 6; ++pending) {
            CAPTURE(pending);
            points.push_back({pending, pending % 2});
            Points further = points;
            further.push_back({INT_MAX, INT_MIN});
            further.push_back({INT_MAX, 0});
            compare(further);
        }
    }
}

// Both sides of the lengths and tolerances up to which narrow products do.
TEST_CASE("clean: tolerances from narrow to wide agree with the plain form") {
    Random random(kSeed);
    for (const int tolerance : {1, 3, -15, 15, -16, 16, 17, -17, 40})
        for (const int reach : {1022, 1023, 1024, 1025, 3000}) {
            CAPTURE(tolerance);
            CAPTURE(reach);
            Vaskel::cleanpar(0, tolerance, 1);
            for (int i = 0; i < 5; ++i) {
                Points fan = {{7, -7}};  // far and near again, as seen from the last point
                for (int k = 0; k < 200; ++k) {
                    const int far = random.between(0, 3) == 0 ? reach : random.between(0, reach);
                    const int turn = random.between(-tolerance, tolerance) + tolerance / 2;
                    const bool upright = random.between(0, 1) == 0;
                    const int sign = random.between(0, 9) == 0 ? -1 : 1;
                    fan.push_back(
                        {7 + (upright ? turn : sign * far), -7 + (upright ? sign * far : turn)});
                }
                compare(fan);
                compare(ripple(random, 400, tolerance < 0 ? -tolerance : tolerance));
            }
        }
    Vaskel::cleanpar(0, 0, 0);
}

TEST_CASE("clean: outlines of joined pieces, some back to front, agree with the plain form") {
    Random random(kSeed);
    for (const int n : {0, 1, 2})
        for (const int tolerance : {0, 1, 4}) {
            CAPTURE(n);
            CAPTURE(tolerance);
            Vaskel::cleanpar(n, tolerance, 1);
            for (const int count : {1, 2, 3, 20, 130, 300}) {
                CAPTURE(count);
                const PathPtr p(Pemmit::patbeg()), q(Pemmit::patbeg());
                Pemmit::patlinbb(p.get(), q.get());
                for (Pemmit::Path* const side : {p.get(), q.get()})
                    for (const Point& point : wander(random, count, 4))
                        Pemmit::patlin(side, point.x, point.y);
                Pemmit::patlinee(p.get(), q.get());
                compare(p.get());
            }
        }
    Vaskel::cleanpar(0, 0, 0);
}

TEST_CASE("clean: outlines of every length near those of the filter agree with the plain form") {
    for (const int n : {1, 2, 3}) {
        Vaskel::cleanpar(n, 0, 1);
        Random random(kSeed);
        Points points;
        for (int count = 1; count <= 70; ++count) {
            points.push_back({count, random.between(-50, 50)});
            CAPTURE(n);
            CAPTURE(count);
            // Far from each other with a step as long: one sample a point.
            Points spread = points;
            for (Point& p : spread) p = {p.x * 1000, p.y};
            Vaskel::cleanpar(n, 0, 1000);
            compare(spread);
        }
    }
}

TEST_CASE("clean: long outlines pass through the buffers in pieces") {
    Random random(kSeed);
    for (const int n : {1, 2, 7, 60, 700}) {
        CAPTURE(n);
        for (const int count : {255, 256, 257, 1500, 5000}) {
            CAPTURE(count);
            Vaskel::cleanpar(n, 1, 1);
            compare(wander(random, count, 1));
        }
    }
}

TEST_CASE("clean: coordinates of the whole range agree with the plain form") {
    Random random(kSeed);
    for (const int n : {0, 1, 2, 4})
        for (const int tolerance : {0, 3, 40000, INT_MAX})
            for (int i = 0; i < 40; ++i) {
                Points points;
                const int count = random.between(3, 20);
                for (int k = 0; k < count; ++k) {
                    const int kind = random.between(0, 3);
                    const int far = kind == 0 ? INT_MIN : kind == 1 ? INT_MAX : 0;
                    const auto coordinate = [&] {
                        if (kind < 2) return far;
                        if (kind == 2) return random.between(INT_MIN, INT_MAX);
                        return random.between(0, 3) * 32767 + random.between(-2, 2);
                    };
                    const int x = coordinate();
                    points.push_back({x, coordinate()});
                }
                // Few samples, some of them nearer than a step to each other.
                Vaskel::cleanpar(n, tolerance, random.between(1 << 24, 1 << 26));
                CAPTURE(n);
                CAPTURE(tolerance);
                CAPTURE(points);
                compare(points);
            }
}

TEST_CASE("clean: from the flat order on the filter leaves samples as they are") {
    Random random(kSeed);
    for (const int n : {Vaskel::kFlatOrder, Vaskel::kFlatOrder + 1}) {
        Vaskel::cleanpar(n, 0, 1);
        compare(wander(random, 40, 3));
        compare(wander(random, 30, 200));  // more samples than the order
    }
    // Here the plain form would need gigabytes; one output is left of each.
    Vaskel::cleanpar(INT_MAX, 0, 1);
    const PathPtr closed = closedPath({{0, 0}, {4, 0}, {4, 4}, {0, 4}});
    // 16 samples; sample 8 * INT_MAX - 2 is 8 (2^31 - 1) - 2 = -10 = 6 of them.
    CHECK(outcome(Vaskel::clean(closed.get(), 5)).points == Points{{4, 2}, {4, 2}});
    const PathPtr open = openPath({{0, 0}, {4, 0}, {4, 4}, {0, 4}});
    CHECK(outcome(Vaskel::clean(open.get(), 5)).points == Points{{0, 0}, {0, 4}});
    Vaskel::cleanpar(0, 0, 0);
}

TEST_CASE("clean: the fast filter takes near samples and leaves far ones to the plain one") {
    int blocks = 0;
    const auto compareBlock = [&blocks](int order, std::size_t stride, std::size_t count,
                                        int spread) {
        const Vaskel::CleanKernel kernel = Vaskel::makeKernel(order);
        const std::size_t length = 2 * kernel.reach + 1 + (count - 1) * stride;
        Random random(kSeed + static_cast<unsigned>(count));
        std::vector<std::int32_t> x(length), y(length);
        for (std::size_t i = 0; i < length; ++i) {
            x[i] = INT_MAX - random.between(0, 60000) % (spread + 1);
            y[i] = INT_MIN + random.between(0, spread);
        }
        x[0] = INT_MAX;  // differences reach -spread
        x[length - 1] = INT_MAX - spread;
        y[0] = INT_MIN;
        y[length / 2] = INT_MIN + spread;
        const Vaskel::FilterBlock block = {x.data(), y.data(), stride, count};
        REQUIRE(block.length(kernel.reach) == length);
        std::vector<std::int16_t> narrow(2 * (length + Vaskel::kTapBlock), std::int16_t{-1});
        std::vector<Vaskel::WalkPoint> want(count), got(count);
        Vaskel::filterBlockPlain(kernel, block, want.data());
        const bool taken = Vaskel::filterBlockFast(kernel, block, narrow.data(), got.data());
#ifdef __SSE2__
        CHECK(taken == (spread <= 32767));
#else
        CHECK(!taken);
#endif
        for (std::size_t i = 0; taken && i < count; ++i) {
            CAPTURE(i);
            CHECK(got[i].x == want[i].x);
            CHECK(got[i].y == want[i].y);
        }
        ++blocks;
    };
    // Outputs come in groups where the stride is the order 1 or 2.
    for (const int spread : {0, 1, 300, 32767, 32768})
        for (const int order : {1, 2, 3, 5})
            for (const std::size_t stride : {1, 2, 3, 5})
                for (const std::size_t count : {1, 2, 3, 4, 5, 7, 8, 9, 12, 15, 16, 17, 40}) {
                    CAPTURE(spread);
                    CAPTURE(order);
                    CAPTURE(stride);
                    CAPTURE(count);
                    compareBlock(order, stride, count, spread);
                }
    CHECK(blocks == 5 * 4 * 4 * 13);
}

TEST_CASE("clean: the taps of a kernel add up to nothing") {
    for (const int n : {1, 2, 3, 10, 100, 1000}) {
        CAPTURE(n);
        const Vaskel::CleanKernel kernel = Vaskel::makeKernel(n);
        REQUIRE(kernel.taps.size() % Vaskel::kTapBlock == 0);
        REQUIRE(kernel.taps.size() > 2 * kernel.reach);
        std::int64_t sum = 0;
        for (const int tap : kernel.taps) sum += tap;
        CHECK(sum == 0);
    }
}
