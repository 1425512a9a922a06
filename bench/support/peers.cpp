#include "bench/support/peers.h"

#include <boost/geometry.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>
#include <boost/geometry/geometries/segment.hpp>

namespace Bench {

DocumentPath::DocumentPath(const Polygon& polygon) : mPath(Pemmit::patbeg()) {
    for (const Vertex& v : polygon) Pemmit::patlin(mPath, v.x, v.y);
    Pemmit::patendclo(mPath);
}
DocumentPath::~DocumentPath() { Pemmit::objrem(mPath); }

namespace bg = boost::geometry;
using BoostPoint = bg::model::d2::point_xy<double>;

struct BoostPolygon::Data {
    bg::model::polygon<BoostPoint> polygon;
};

BoostPolygon::BoostPolygon(const Polygon& polygon) : mData(std::make_unique<Data>()) {
    for (const Vertex& v : polygon) bg::append(mData->polygon.outer(), BoostPoint(v.x, v.y));
    bg::correct(mData->polygon);
}
BoostPolygon::~BoostPolygon() = default;
bool BoostPolygon::crosses() const { return bg::intersects(mData->polygon); }
bool BoostPolygon::covers(int x, int y) const {
    return bg::covered_by(BoostPoint(x, y), mData->polygon);
}

bool boostCrossing(const SegmentPair& pair, Crossing& at) {
    using Segment = bg::model::segment<BoostPoint>;
    const auto point = [](const Vertex& v) { return BoostPoint(v.x, v.y); };
    std::vector<BoostPoint> found;
    bg::intersection(Segment(point(pair.a), point(pair.b)), Segment(point(pair.c), point(pair.d)),
                     found);
    if (found.size() != 1) return false;
    at = {found[0].x(), found[0].y()};
    return true;
}

}  // namespace Bench
