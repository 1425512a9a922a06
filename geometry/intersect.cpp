// Whether an outline crosses itself.

#include "geometry/intersect_outline.h"
#include "geometry/intersect_plain.h"
#include "vaskel/geometry.h"

namespace Vaskel {

int intersect(Pemmit::Object* object) {
    return Intersect::sweepPlain(Intersect::outlineOf(object));
}

}  // namespace Vaskel
