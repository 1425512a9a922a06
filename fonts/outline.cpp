#include "fonts/outline.h"

#include <algorithm>

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
    widen(box, outline, seeds);
    return box;
}

}  // namespace Fonts
