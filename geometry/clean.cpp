// Path cleaning: resample, filter, decimate, simplify.
//
// Cost: linear in the walked points and, with filtering, in the samples and in
// L / n * samples = 8 products a sample.

#include "geometry/clean.h"

#include <algorithm>
#include <utility>

#include "geometry/clean_filter.h"
#include "geometry/clean_kernel.h"
#include "geometry/clean_simplify.h"
#include "platform/pemmit.h"
#include "util/clean_owned.h"
#include "vaskel/geometry.h"

namespace Vaskel {
namespace {

constinit CleanParameters gParameters;

// Feeds the walked points themselves and returns the last one. The path has a
// point.
Sample passOn(const Pemmit::Path* path, SimplifyFast& out) {
    Pemmit::scan walk(path, 0, -1);
    Sample last = {};
    for (int x, y; walk.scanex(&x, &y) >= 0;) {
        out.add(x, y);
        last = {x, y};
    }
    return last;
}

}  // namespace

const CleanParameters& cleanParameters() { return gParameters; }

bool cleaningIsOff() { return gParameters.order < 1 && gParameters.tolerance == 0; }

bool refusesBox(const Pemmit::Box& box, int size) {
    const std::int64_t width = std::int64_t{box.maxX} - box.minX;
    const std::int64_t height = std::int64_t{box.maxY} - box.minY;
    return width <= size && height > size;
}

bool isTooShort(const Pemmit::Path* path) {
    const int enough = (path->flags & Pemmit::kFlagOpen) != 0 ? 3 : 4;
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

// Zero weights at the outer end of the filter add nothing to its sums, so that
// samples under them need not be kept; one weight stays.
void cleanpar(int n, int tolerance, int step) {
    if (n != gParameters.order) {
        std::unique_ptr<std::int32_t[]> inner;
        std::int64_t reach = 0;
        if (n >= 1) {
            const std::vector<std::int32_t> weights = cleanWeights(n);
            auto first = std::find_if(weights.begin(), weights.end(),
                                      [](std::int32_t weight) { return weight != 0; });
            reach = std::max<std::int64_t>(weights.end() - first, 1);
            inner = std::make_unique<std::int32_t[]>(static_cast<std::size_t>(reach));
            std::copy(first, weights.end(), inner.get());
        }
        gParameters.order = n;
        gParameters.reach = reach;
        gParameters.weights = std::move(inner);
    }
    gParameters.tolerance = tolerance;
    gParameters.step = step;
}

Pemmit::Path* clean(const Pemmit::Path* path, int size) {
    if (!path || refusesBox(path->box, size)) return nullptr;
    if (isTooShort(path)) return Pemmit::patdup(path);

    const bool open = (path->flags & Pemmit::kFlagOpen) != 0;
    OwnedPath result(Pemmit::patbeg());
    Pemmit::flaset(result.get(), Pemmit::kFlagOpen, open);
    SimplifyFast out(result.get(), gParameters.tolerance);
    Sample last = {};
    if (gParameters.order < 1)
        last = passOn(path, out);
    else if (open)
        last = filterOpen(path, gParameters, out);
    else
        filterClosed(path, gParameters, out);
    if (open)
        Pemmit::patend(result.get(), last.x, last.y);
    else
        Pemmit::patendclo(result.get());
    return result.release();
}

// With neither filter nor tolerance a closed outline's points are emitted one
// by one, all but the repeated first point, which is what the outline holds
// already. Too short ones are copied. Nobody else has seen the outline, so that
// it can stand for its copy.
Pemmit::Path* cleanOwned(Pemmit::Path* path, int size) {
    const OwnedPath owned(path);
    return clean(path, size);
}

}  // namespace Vaskel
