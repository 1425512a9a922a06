// clean as it is defined, for tests and benchmarks.

#include <vector>

#include "geometry/clean.h"
#include "geometry/clean_kernel.h"
#include "geometry/clean_simplify.h"
#include "platform/orlune.h"
#include "platform/pemmit.h"

namespace Vaskel {
namespace {

using SampleList = std::vector<Sample>;

SampleList allPoints(const Pemmit::Path* path) {
    SampleList points;
    Pemmit::scan walk(path, 0, -1);
    for (Sample p; walk.scanex(&p.x, &p.y) >= 0;) points.push_back(p);
    return points;
}

SampleList allSamples(const SampleList& points, std::int64_t step) {
    SampleList samples = {points[0]};
    for (std::size_t i = 1; i < points.size(); ++i) {
        const Sample from = samples.back();
        const std::int64_t dx = std::int64_t{points[i].x} - from.x;
        const std::int64_t dy = std::int64_t{points[i].y} - from.y;
        const std::int64_t m = Orlune::mulsqrt(dx, dx, dy, dy) / step;
        for (std::int64_t k = 1; k <= m; ++k)
            samples.push_back({static_cast<std::int32_t>(from.x + Orlune::muldiv(k, dx, m)),
                               static_cast<std::int32_t>(from.y + Orlune::muldiv(k, dy, m))});
    }
    return samples;
}

// Sample i of an open outline and its reflections about both ends, in turns
// until i is among the samples.
Sample openSample(const SampleList& samples, std::int64_t i) {
    const std::int64_t last = static_cast<std::int64_t>(samples.size()) - 1;
    if (last == 0) return samples[0];
    // value = offset + sign * sample i, from the outermost reflection inwards.
    std::int64_t x = 0, y = 0, sign = 1;
    while (i < 0 || i > last) {
        const Sample& about = i < 0 ? samples.front() : samples.back();
        x += sign * 2 * about.x;
        y += sign * 2 * about.y;
        sign = -sign;
        i = i < 0 ? -i : 2 * last - i;
    }
    const Sample& inside = samples[static_cast<std::size_t>(i)];
    return {wrap32(x + sign * inside.x), wrap32(y + sign * inside.y)};
}

// The filter around sample centre, where at(i) is sample i.
template <class At>
Sample filtered(const std::vector<std::int32_t>& weights, std::int64_t centre, At at) {
    const auto half = static_cast<std::int64_t>(weights.size());
    const Sample c = at(centre);
    std::int32_t sumX = 0, sumY = 0;
    for (std::int64_t i = 0; i < half; ++i) {
        const Sample a = at(centre - half + i);
        const Sample b = at(centre + half - i);
        const std::int64_t weight = weights[static_cast<std::size_t>(i)];
        const std::int32_t pairX = wrap32(std::int64_t{a.x} + b.x - std::int64_t{2} * c.x);
        const std::int32_t pairY = wrap32(std::int64_t{a.y} + b.y - std::int64_t{2} * c.y);
        sumX = wrap32(sumX + pairX * weight);
        sumY = wrap32(sumY + pairY * weight);
    }
    return {wrap32(std::int64_t{wrap32(std::int64_t{sumX} + 8192) >> 14} + c.x),
            wrap32(std::int64_t{wrap32(std::int64_t{sumY} + 8192) >> 14} + c.y)};
}

// Where no weight is left all of them are 0.
std::vector<std::int32_t> allWeights(int n) {
    std::vector<std::int32_t> weights = cleanWeights(n);
    if (weights.empty()) weights.assign(static_cast<std::size_t>(cleanHalfLength(n)), 0);
    return weights;
}

SampleList openPoints(const SampleList& samples, int n) {
    const std::vector<std::int32_t> weights = allWeights(n);
    const std::int64_t last = static_cast<std::int64_t>(samples.size()) - 1;
    const auto at = [&](std::int64_t i) { return openSample(samples, i); };
    SampleList points;
    for (std::int64_t centre = 0; centre < last; centre += n)
        points.push_back(filtered(weights, centre, at));
    points.push_back(filtered(weights, last, at));
    return points;
}

SampleList closedPoints(SampleList samples, int n) {
    const std::vector<std::int32_t> weights = allWeights(n);
    const Sample& first = samples.front();
    if (samples.size() > 1 && samples.back().x == first.x && samples.back().y == first.y)
        samples.pop_back();
    const auto period = static_cast<std::int64_t>(samples.size());
    const auto at = [&](std::int64_t i) {
        return samples[static_cast<std::size_t>((i % period + period) % period)];
    };
    SampleList points;
    for (std::int64_t j = 0; j <= period / n; ++j)
        points.push_back(filtered(weights, cleanHalfLength(n) + j * n, at));
    return points;
}

}  // namespace

Pemmit::Path* cleanPlain(const Pemmit::Path* path, int size) {
    if (!path || refusesBox(path->box, size)) return nullptr;
    if (isTooShort(path)) return Pemmit::patdup(path);

    const CleanState& parameters = cleanState();
    const bool open = (path->flags & Pemmit::kFlagOpen) != 0;
    SampleList points = allPoints(path);
    if (parameters.order >= 1) {
        const SampleList samples = allSamples(points, parameters.step < 1 ? 1 : parameters.step);
        points =
            open ? openPoints(samples, parameters.order) : closedPoints(samples, parameters.order);
    }
    OwnedPath result(Pemmit::patbeg());
    Pemmit::flaset(result.get(), Pemmit::kFlagOpen, open);
    SimplifyPlain out(result.get(), parameters.tolerance);
    for (const Sample& point : points) out.add(point.x, point.y);
    if (open)
        Pemmit::patend(result.get(), points.back().x, points.back().y);
    else
        Pemmit::patendclo(result.get());
    return result.release();
}

}  // namespace Vaskel
