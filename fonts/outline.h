// An outline as it was drawn, and the charstring that it makes.

#ifndef FONTS_OUTLINE_H
#define FONTS_OUTLINE_H

#include <cstddef>
#include <cstdint>

#include "fonts/charstring.h"
#include "util/narrow.h"
#include "vaskel/fonts.h"

namespace Fonts {

/// What a glyph keeps of a command beside its points.
enum Step : unsigned char { kMoveStep, kLineStep, kCurveStep, kCloseStep };

struct StepKind {
    unsigned char command;
    unsigned char points;
};
constexpr StepKind kStepKinds[] = {{kRmoveto, 1}, {kRlineto, 1}, {kRrcurveto, 3}, {kClosepath, 0}};

/// A glyph's commands. Points are pairs x, y; the one before the first is (0, 0),
/// where drawing begins. Steps stand in memory in reverse.
struct Outline {
    const std::int16_t* points = nullptr;        // null where numbers take more than 16 bits:
    const std::int32_t* farPoints = nullptr;     // then these are not
    const unsigned char* behindSteps = nullptr;  // the first step is the byte before
    std::size_t stepCount = 0;
    std::size_t pointCount = 0;
};

/// Forms may read vectors that begin at the last point or behind it, ...
constexpr std::size_t kReadAhead = 16;
/// ... and write them where a charstring ends.
constexpr std::size_t kWriteAhead = 16;

/// Upper bound of an outline's charstring.
constexpr std::size_t longestCharstring(const Outline& outline) {
    return outline.pointCount * 2 * kLongestNumber + outline.stepCount;
}

/// Writes a command, the points of which begin at point: differences from the point
/// before each, and its byte. Returns the end.
unsigned char* encodeStep(unsigned char* out, const Outline& outline, std::size_t point,
                          unsigned char step);

/// Writes all commands and returns the end: the rule itself, to which every faster
/// form is held.
unsigned char* encodePlain(unsigned char* out, const Outline& outline);

/// A box in a frame whose y axis points up.
struct Box {
    std::int32_t smallestX, smallestY, largestX, largestY;
};

/// The same box in the frame of a Rectangle.
inline Rectangle yDown(const Box& box) {
    return {Vaskel::clamp32(-std::int64_t{box.largestY}), box.smallestX,
            Vaskel::clamp32(-std::int64_t{box.smallestY}), box.largestX};
}

/// The box of an outline, in time linear in its points.
Box boxOf(const Outline& outline);

}  // namespace Fonts

#endif
