// Path cleaning: resample, filter, decimate, simplify.
//
// Cost: linear in the walked points and, with filtering, in the samples and in
// L / n * samples = 8 products a sample.

#include "geometry/clean.h"

#include <cstdint>
#include <cstring>
#include <utility>

#include "geometry/clean_filter.h"
#include "geometry/clean_simplify.h"
#include "geometry/walked_points.h"
#include "platform/pemmit.h"
#include "util/clean_points.h"
#include "vaskel/geometry.h"

namespace Vaskel {
namespace {

constinit CleanState gState;

constexpr int kClosedChanges = 4;

int enoughChanges(const Pemmit::Path* path) {
    return (path->flags & Pemmit::kFlagOpen) != 0 ? 3 : kClosedChanges;
}

bool differ(const WalkPoint& a, const WalkPoint& b) { return std::memcmp(&a, &b, sizeof a) != 0; }

[[gnu::noinline]] bool countsChanges(const PointRun& run, int enough) {
    int changes = run.count > 0 ? 1 : 0;
    for (int i = 1; i < run.count && changes < enough; ++i) changes += differ(run[i], run[i - 1]);
    return changes >= enough;
}

// Whether a run has enough points that differ from the one before, the first one
// counted. Mostly the first ones do.
[[gnu::always_inline]] inline bool hasChanges(const PointRun& run, int enough) {
    const bool begins = run.count >= kClosedChanges && differ(run[0], run[1]) &&
                        differ(run[1], run[2]) && differ(run[2], run[3]);
    return begins || countsChanges(run, enough);
}

// Feeds the walked points themselves and returns the last one of an open outline.
// There is one.
Sample passOn(WalkedPoints& points, bool open, SimplifyFast& out) {
    Sample last = {};
    for (; points.run().count > 0; points.next()) {
        const PointRun& run = points.run();
        out.add(run);
        if (open) last = run[run.count - 1];
    }
    return last;
}

Pemmit::Path* cleanWalked(WalkedPoints& points, bool open) {
    SimplifyFast out(open, gState);
    Sample last = {};
    if (gState.order < 1)
        last = passOn(points, open, out);
    else if (open)
        last = filterOpen(points, gState, out);
    else
        filterClosed(points, gState, out);
    return out.finish(last);
}

}  // namespace

CleanState& cleanState() { return gState; }

bool refusesBox(const Pemmit::Box& box, int size) {
    const std::int64_t width = std::int64_t{box.maxX} - box.minX;
    const std::int64_t height = std::int64_t{box.maxY} - box.minY;
    return width <= size && height > size;
}

bool isTooShort(const Pemmit::Path* path) {
    const int enough = enoughChanges(path);
    Pemmit::scan walk(path, 0, -1);
    int changes = 0;
    int lastX = 0, lastY = 0;
    for (int x, y; changes < enough && walk.scanex(&x, &y) >= 0;) {
        if (changes == 0 || x != lastX || y != lastY) ++changes;
        lastX = x;
        lastY = y;
    }
    return changes < enough;
}

[[gnu::cold]] void cleanpar(int n, int tolerance, int step) {
    if (n != gState.order) {
        CleanKernel kernel;
        CleanBuffers buffers;
        if (n >= 1) {
            kernel = makeKernel(n);
            buffers = makeBuffers(n, kernel);
        }
        gState.order = n;
        gState.kernel = std::move(kernel);
        gState.buffers = std::move(buffers);
    }
    gState.tolerance = tolerance;
    gState.step = step;
}

namespace {

// Where an object's memory is not at hand, what follows it is fetched while its
// box is waited for: hosts may keep a small outline's points there. Null may be
// given.
void fetch(const Pemmit::Path* path) {
    const auto address = reinterpret_cast<std::uintptr_t>(path);
    for (std::uintptr_t behind = 64; behind < 256; behind += 64)
        __builtin_prefetch(reinterpret_cast<const void*>(address + behind));
}

}  // namespace

Pemmit::Path* clean(const Pemmit::Path* path, int size) {
    fetch(path);
    if (!path || refusesBox(path->box, size)) return nullptr;
    RunWalk walk(path, 0, -1);
    WalkedPoints points(walk);
    // Only outlines that begin with a short piece or with equal points are
    // looked at a second time.
    if (!hasChanges(points.run(), enoughChanges(path)) && isTooShort(path))
        return Pemmit::patdup(path);
    return cleanWalked(points, (path->flags & Pemmit::kFlagOpen) != 0);
}

// With neither filter nor tolerance a closed outline of straight edges keeps
// all its points: each is emitted but the last one of the walk, which is the
// first one again. Too short outlines are copied as they are.
Pemmit::Path* cleanPoints(const Pemmit::PointBase<int>* points, int count) {
    const PointRun all = {points, 1, count + 1};
    const bool keeps = gState.order < 1 && gState.tolerance == 0;
    if (keeps || !hasChanges(all, kClosedChanges)) return makeOutline(points, count);
    WalkedPoints walked(all);
    return cleanWalked(walked, false);
}

}  // namespace Vaskel
