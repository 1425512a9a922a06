#include "bench/support/peers.h"

#if VASKEL_BENCH_CGAL

#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Polygon_2.h>
#include <CGAL/intersections.h>

namespace Bench {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;

struct CgalPolygon::Data {
    CGAL::Polygon_2<Kernel> polygon;
};

CgalPolygon::CgalPolygon(const Polygon& polygon) : mData(std::make_unique<Data>()) {
    for (const Vertex& v : polygon) mData->polygon.push_back(Kernel::Point_2(v.x, v.y));
}
CgalPolygon::~CgalPolygon() = default;
bool CgalPolygon::isSimple() const {
    return CGAL::is_simple_2(mData->polygon.vertices_begin(), mData->polygon.vertices_end());
}
bool CgalPolygon::covers(int x, int y) const {
    return CGAL::bounded_side_2(mData->polygon.vertices_begin(), mData->polygon.vertices_end(),
                                Kernel::Point_2(x, y)) != CGAL::ON_UNBOUNDED_SIDE;
}

bool cgalCrossing(const SegmentPair& pair, Crossing& at) {
    const auto point = [](const Vertex& v) { return Kernel::Point_2(v.x, v.y); };
    const auto found = CGAL::intersection(Kernel::Segment_2(point(pair.a), point(pair.b)),
                                          Kernel::Segment_2(point(pair.c), point(pair.d)));
    if (!found) return false;
    const Kernel::Point_2* const meeting = boost::get<Kernel::Point_2>(&*found);
    if (!meeting) return false;
    at = {meeting->x(), meeting->y()};
    return true;
}

}  // namespace Bench

#endif
