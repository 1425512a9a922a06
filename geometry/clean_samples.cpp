#include "geometry/clean_samples.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "platform/orlune.h"

namespace Vaskel {
namespace {

// a / b for values that are not negative. 32-bit division is several times as
// fast on many processors.
std::int64_t quotient(std::int64_t a, std::int64_t b) {
    if (static_cast<std::uint64_t>(a | b) <= UINT32_MAX)
        return static_cast<std::uint32_t>(a) / static_cast<std::uint32_t>(b);
    return a / b;
}

// -1, 0 or 1, without a branch: which way a segment goes nobody could guess.
std::int64_t signOf(std::int64_t value) {
    return value >> 63 | static_cast<std::int64_t>(-static_cast<std::uint64_t>(value) >> 63);
}

}  // namespace

// Below 2^25 the sum v of squares is below 2^52, exact as a double, and so is
// the truncated root: were the rounded root of v to reach the next integer k,
// then v <= k^2 - 1, whose root lies 1 / 2k > 2^-27 below k, more than the half
// unit in the last place (2^-28 at most) by which rounding moves it.
std::int64_t distanceRoot(std::int64_t dx, std::int64_t dy) {
    constexpr std::int64_t kSmall = std::int64_t{1} << 25;
    if (dx == 0) return dy < 0 ? -dy : dy;
    if (dy == 0) return dx < 0 ? -dx : dx;
    if (dx > -kSmall && dx < kSmall && dy > -kSmall && dy < kSmall)
        return static_cast<std::int64_t>(std::sqrt(static_cast<double>(dx * dx + dy * dy)));
    return Orlune::mulsqrt(dx, dx, dy, dy);
}

void Samples::Axis::begin(std::int64_t d, std::int64_t m) {
    unit = d < 0 ? -1 : 1;
    sum = 0;
    const std::int64_t size = d * unit;  // at most 2^32 - 1
    if (size < m) {
        whole = 0;
        rest = size;
    } else if (m == 1 || size == m) {
        whole = m == 1 ? d : unit;
        rest = 0;
    } else {
        const std::int64_t part = quotient(size, m);
        whole = unit * part;
        rest = size - part * m;
    }
}

// All values lie between two points of the outline.
void Samples::Axis::write(std::int32_t* out, std::size_t count, std::int64_t m) {
    for (std::size_t i = 0; i < count; ++i) {
        at += whole;
        sum += rest;
        if (sum >= m) {
            sum -= m;
            at += unit;
        }
        out[i] = static_cast<std::int32_t>(at);
    }
}

bool Samples::nextSegment() {
    for (;; ++mAt) {
        if (mAt == mPoints.run().count) {
            mPoints.next();
            mAt = 0;
            if (mPoints.run().count == 0) return false;
        }
        const std::int32_t x = mPoints.run()[mAt].x;
        const std::int32_t y = mPoints.run()[mAt].y;
        const std::int64_t dx = x - mX.at;
        const std::int64_t dy = y - mY.at;
        const std::int64_t root = distanceRoot(dx, dy);
        if (root < mStep) continue;  // the next point is seen from the last sample too
        const std::int64_t m = mStep == 1 ? root : quotient(root, mStep);
        mX.begin(dx, m);
        mY.begin(dy, m);
        ++mAt;
        mCount = mLeft = m;
        return true;
    }
}

// With a step of 1: the samples of the next segments, as far as these are
// upright or level and there is room for all of a segment. Their length is a
// whole number of steps, so that each sample is a unit from the one before it.
// Traced outlines consist of nothing else, mostly of a sample or two: four are
// written where there is room, and the next segment goes over those that are
// too many.
std::size_t Samples::takeUpright(std::int32_t* x, std::int32_t* y, std::size_t room) {
    // Unsigned: what is too many may go beyond the 32-bit range.
    using Four = std::uint32_t __attribute__((vector_size(16)));
    constexpr Four kUp = {1, 2, 3, 4};
    constexpr Four kRamps[] = {-kUp, {}, kUp};
    PointRun run = mPoints.run();
    auto atX = static_cast<std::int32_t>(mX.at), atY = static_cast<std::int32_t>(mY.at);
    const WalkPoint* next = run.first + std::ptrdiff_t{mAt} * run.step;
    int left = run.count - mAt;
    std::size_t taken = 0;
    for (;; --left, next += run.step) {
        if (left == 0) [[unlikely]] {
            mPoints.next();
            run = mPoints.run();
            next = run.first;
            left = run.count;
            if (left == 0) break;
        }
        const WalkPoint to = *next;
        const std::int64_t dx = std::int64_t{to.x} - atX;
        const std::int64_t dy = std::int64_t{to.y} - atY;
        const std::int64_t d = dx + dy;
        const auto m = static_cast<std::size_t>(d < 0 ? -d : d);
        if (((dx != 0) & (dy != 0)) | (m > room)) break;
        const std::int64_t unitX = signOf(dx);
        const std::int64_t unitY = signOf(dy);
        if (m + 4 <= room) [[likely]] {
            Four fourX = static_cast<std::uint32_t>(atX) + kRamps[1 + unitX];
            Four fourY = static_cast<std::uint32_t>(atY) + kRamps[1 + unitY];
            std::memcpy(x, &fourX, sizeof fourX);
            std::memcpy(y, &fourY, sizeof fourY);
            for (std::size_t k = 4; k < m; k += 4) {
                fourX += 4 * static_cast<std::uint32_t>(unitX);
                fourY += 4 * static_cast<std::uint32_t>(unitY);
                std::memcpy(x + k, &fourX, sizeof fourX);
                std::memcpy(y + k, &fourY, sizeof fourY);
            }
        } else {
            for (std::size_t k = 0; k < m; ++k) {
                x[k] = atX += static_cast<std::int32_t>(unitX);
                y[k] = atY += static_cast<std::int32_t>(unitY);
            }
        }
        x += m;
        y += m;
        room -= m;
        taken += m;
        atX = to.x;
        atY = to.y;
    }
    mAt = run.count - left;
    mX.at = atX;
    mY.at = atY;
    return taken;
}

std::size_t Samples::take(std::int32_t* x, std::int32_t* y, std::size_t room) {
    std::size_t taken = 0;
    if (!mBegun && room > 0 && mPoints.run().count > 0) {
        mBegun = true;
        const WalkPoint& first = mPoints.run()[0];
        mX.at = x[0] = first.x;
        mY.at = y[0] = first.y;
        mAt = 1;
        taken = 1;
    }
    while (taken < room) {
        if (mLeft == 0) {
            if (mStep == 1) taken += takeUpright(x + taken, y + taken, room - taken);
            if (!nextSegment()) break;
        }
        const auto count = static_cast<std::size_t>(
            std::min<std::int64_t>(mLeft, static_cast<std::int64_t>(room - taken)));
        mX.write(x + taken, count, mCount);
        mY.write(y + taken, count, mCount);
        mLeft -= static_cast<std::int64_t>(count);
        taken += count;
    }
    return taken;
}

}  // namespace Vaskel
