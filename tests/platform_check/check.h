// What the contracts' checks share.

#ifndef PLATFORM_CHECK_CHECK_H
#define PLATFORM_CHECK_CHECK_H

#include <doctest/doctest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "platform/pemmit.h"

namespace Check {

/// Reports the running contract as not checked and why; the check returns then.
void notChecked(const char* reason);

using PointList = std::vector<std::pair<int, int>>;

/// What a walk delivers. A walk without an end fails the check and is cut.
PointList walk(const Pemmit::Object* object, int direction = 0, int start = -1);

struct Remove {
    void operator()(Pemmit::Object* object) const { Pemmit::objrem(object); }
};
/// A path that is released at its end.
using PathPtr = std::unique_ptr<Pemmit::Path, Remove>;

/// A path of these points, closed or open.
PathPtr closedPath(const PointList& points);
PathPtr openPath(const PointList& points);
/// Appends these points with patlin.
void append(Pemmit::Path* path, const PointList& points);

/// The points back to front.
PointList reversed(PointList points);

/// Checks that an object with this walk in forward direction has the same
/// points under the same numbers in both directions and from every start, the
/// patsiz of it, and the smallest box of it. Long walks are begun at some
/// starts only.
void checkWalks(const Pemmit::Path* path, const PointList& forward);

/// Whether two boxes are the same.
bool sameBox(const Pemmit::Box& a, const Pemmit::Box& b);
Pemmit::Box boxOf(const PointList& points);

/// Random numbers that are the same everywhere.
class Dice {
 public:
    explicit Dice(std::uint32_t seed) : mEngine(seed) {}
    /// 0 .. n - 1.
    int below(int n) { return static_cast<int>(mEngine() % static_cast<std::uint32_t>(n)); }
    /// Small numbers mostly, now and then the ends of the range.
    int coordinate();

 private:
    std::mt19937 mEngine;
};

}  // namespace Check

#endif
