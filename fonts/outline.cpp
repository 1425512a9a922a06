#include "fonts/outline.h"

#include <algorithm>

#ifdef __x86_64__
#include <emmintrin.h>
#endif

namespace Fonts {
namespace {

std::int32_t number(const Outline& outline, std::ptrdiff_t i) {
    return outline.points != nullptr ? outline.points[i] : outline.farPoints[i];
}

// Folds points from one on into a box.
void widen(Box& box, const Outline& outline, std::size_t point) {
    for (; point != outline.pointCount; ++point) {
        const auto at = static_cast<std::ptrdiff_t>(2 * point);
        const std::int32_t x = number(outline, at), y = number(outline, at + 1);
        box.smallestX = std::min(box.smallestX, x);
        box.smallestY = std::min(box.smallestY, y);
        box.largestX = std::max(box.largestX, x);
        box.largestY = std::max(box.largestY, y);
    }
}

#ifdef __x86_64__

// Four points at once as far as they go; returns which is next.
std::size_t widenNear(Box& box, const Outline& outline, std::size_t point) {
    const auto load = [&](std::size_t at) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(outline.points + 2 * at));
    };
    if (outline.pointCount - point < 4) return point;
    __m128i smallest = load(point), largest = smallest;
    for (; outline.pointCount - point >= 4; point += 4) {
        smallest = _mm_min_epi16(smallest, load(point));
        largest = _mm_max_epi16(largest, load(point));
    }
    std::int16_t ends[16];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(ends), smallest);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(ends + 8), largest);
    Outline both;
    both.points = ends;
    both.pointCount = 8;
    widen(box, both, 0);
    return point;
}

#endif

}  // namespace

unsigned char* encodeStep(unsigned char* out, const Outline& outline, std::size_t point,
                          unsigned char step) {
    const StepKind kind = kStepKinds[step];
    auto at = static_cast<std::ptrdiff_t>(2 * point);
    for (const std::ptrdiff_t end = at + 2 * kind.points; at != end; ++at)
        // A difference of two coordinates does not wrap: it is limited when written.
        out = encodeNumber(out, std::int64_t{number(outline, at)} - number(outline, at - 2));
    *out++ = kind.command;
    return out;
}

unsigned char* encodePlain(unsigned char* out, const Outline& outline) {
    std::size_t point = 0;
    for (std::size_t i = 1; i <= outline.stepCount; ++i) {
        const unsigned char step = outline.behindSteps[-static_cast<std::ptrdiff_t>(i)];
        out = encodeStep(out, outline, point, step);
        point += kStepKinds[step].points;
    }
    return out;
}

// The points of the first command seed the box, each anew, and not with (x, y, x, y):
// callers store these boxes, so the seed stays as it is.
// Test: "glyph box: a first point off the diagonal keeps its seed".
Box boxOf(const Outline& outline) {
    if (outline.stepCount == 0) return {0, 0, 0, 0};
    const std::size_t seeds = kStepKinds[outline.behindSteps[-1]].points;
    const auto last = static_cast<std::ptrdiff_t>(2 * seeds) - 2;
    const std::int32_t x = number(outline, last), y = number(outline, last + 1);
    Box box{x, x, y, y};
    std::size_t point = seeds;
#ifdef __x86_64__
    if (outline.points != nullptr) point = widenNear(box, outline, point);
#endif
    widen(box, outline, point);
    return box;
}

}  // namespace Fonts
