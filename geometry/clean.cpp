// Path cleaning: resample, filter, decimate, simplify.
//
// Cost: linear in the walked points and, with filtering, in the samples and in
// L / n * samples = 8 products a sample.

#include "geometry/clean.h"

#include <cstdint>
#include <utility>

#include "geometry/clean_filter.h"
#include "geometry/clean_points.h"
#include "geometry/clean_simplify.h"
#include "platform/pemmit.h"
#include "util/clean_owned.h"
#include "vaskel/geometry.h"

namespace Vaskel {
namespace {

constinit CleanState gState;

int enoughChanges(const Pemmit::Path* path) {
    return (path->flags & Pemmit::kFlagOpen) != 0 ? 3 : 4;
}

// The same as isTooShort(path), which only outlines that begin with a short
// piece or with equal points come to.
bool startsTooShort(const Pemmit::Path* path, const PointRun& first) {
    const int enough = enoughChanges(path);
    int changes = first.count > 0 ? 1 : 0;
    for (int i = 1; i < first.count && changes < enough; ++i)
        changes += first[i].x != first[i - 1].x || first[i].y != first[i - 1].y;
    return changes < enough && isTooShort(path);
}

// Feeds the walked points themselves and returns the last one. There is one.
Sample passOn(WalkedPoints& points, SimplifyFast& out) {
    Sample last = {};
    for (; points.run().count > 0; points.next()) {
        const PointRun& run = points.run();
        out.add(run);
        last = {run[run.count - 1].x, run[run.count - 1].y};
    }
    return last;
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

void cleanpar(int n, int tolerance, int step) {
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
    WalkedPoints points(path);
    if (startsTooShort(path, points.run())) return Pemmit::patdup(path);

    const bool open = (path->flags & Pemmit::kFlagOpen) != 0;
    OwnedPath result(Pemmit::patbeg());
    Pemmit::flaset(result.get(), Pemmit::kFlagOpen, open);
    SimplifyFast out(result.get(), gState.tolerance);
    Sample last = {};
    if (gState.order < 1)
        last = passOn(points, out);
    else if (open)
        last = filterOpen(points, gState, out);
    else
        filterClosed(points, gState, out);
    out.finish();
    if (open)
        Pemmit::patend(result.get(), last.x, last.y);
    else
        Pemmit::patendclo(result.get());
    return result.release();
}

// With neither filter nor tolerance a closed outline of straight edges keeps
// all its points: each is emitted but the last one of the walk, which is the
// first one again, and too short outlines are copied as they are. Nobody else
// has seen the outline, so that it can stand for its copy.
Pemmit::Path* cleanOwned(Pemmit::Path* path, int size) {
    OwnedPath owned(path);
    if (gState.order >= 1 || gState.tolerance != 0) return clean(path, size);
    if (refusesBox(path->box, size)) return nullptr;
    Pemmit::patendclo(path);
    return owned.release();
}

}  // namespace Vaskel
