// Whether an outline crosses itself.

#include "geometry/intersect_outline.h"
#include "geometry/intersect_plain.h"
#include "geometry/intersect_sweep.h"
#include "vaskel/geometry.h"

namespace Vaskel {

int intersect(Pemmit::Object* object) {
    using namespace Intersect;
    constexpr std::size_t kWorthwhile = 64;  // below, testing all pairs is faster
    const Outline outline = outlineOf(object);
    return outline.vertices.size() >= kWorthwhile && withinExactRange(outline)
               ? sweepOrdered(outline)
               : sweepPlain(outline);
}

}  // namespace Vaskel
