// Whether an outline crosses itself.

#include "geometry/intersect_outline.h"
#include "geometry/intersect_plain.h"
#include "geometry/intersect_simple.h"
#include "geometry/intersect_sweep.h"
#include "vaskel/geometry.h"

namespace Vaskel {

int intersect(Pemmit::Object* object) {
    using namespace Intersect;
    constexpr std::size_t kWorthwhile = 64;  // below, testing all pairs is faster
    const WalkedOutline walked = walkedOutlineOf(object);
    const bool isLong = walked.points.size() >= kWorthwhile;
    // The system is asked after the proof, since how often depends on its outcome:
    // a tenth of a second late for some million vertices.
    if (isLong && isSurelySimple(walked)) {
        askWholeSweep(walked.points.size());
        return 0;
    }
    Outline outline;
    outline.add(walked);
    return isLong && withinExactRange(outline) ? sweepOrdered(outline) : sweepPlain(outline);
}

}  // namespace Vaskel
