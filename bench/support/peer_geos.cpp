#include "bench/support/peers.h"

#if VASKEL_BENCH_GEOS

#include <geos/algorithm/LineIntersector.h>
#include <geos/geom/CoordinateArraySequence.h>
#include <geos/geom/GeometryFactory.h>
#include <geos/geom/LinearRing.h>
#include <geos/geom/Point.h>
#include <geos/geom/Polygon.h>
#include <geos/geom/prep/PreparedGeometry.h>
#include <geos/geom/prep/PreparedGeometryFactory.h>

namespace Bench {

struct GeosPolygon::Data {
    geos::geom::GeometryFactory::Ptr factory = geos::geom::GeometryFactory::create();
    std::unique_ptr<geos::geom::Polygon> polygon;
    std::unique_ptr<geos::geom::prep::PreparedGeometry> prepared;
};

GeosPolygon::GeosPolygon(const Polygon& polygon) : mData(std::make_unique<Data>()) {
    std::vector<geos::geom::Coordinate> coordinates;
    for (const Vertex& v : polygon) coordinates.emplace_back(v.x, v.y);
    coordinates.push_back(coordinates.front());
    mData->polygon = mData->factory->createPolygon(mData->factory->createLinearRing(
        std::make_unique<geos::geom::CoordinateArraySequence>(std::move(coordinates))));
    mData->prepared = geos::geom::prep::PreparedGeometryFactory::prepare(mData->polygon.get());
}
GeosPolygon::~GeosPolygon() = default;

bool GeosPolygon::isSimple() const { return mData->polygon->getExteriorRing()->isSimple(); }

bool GeosPolygon::preparedCovers(int x, int y) const {
    const std::unique_ptr<geos::geom::Point> point(
        mData->factory->createPoint(geos::geom::Coordinate(x, y)));
    return mData->prepared->covers(point.get());
}

bool geosCrossing(const SegmentPair& pair, Crossing& at) {
    const auto point = [](const Vertex& v) { return geos::geom::Coordinate(v.x, v.y); };
    geos::algorithm::LineIntersector lines;
    lines.computeIntersection(point(pair.a), point(pair.b), point(pair.c), point(pair.d));
    if (lines.getIntersectionNum() != 1) return false;
    at = {lines.getIntersection(0).x, lines.getIntersection(0).y};
    return true;
}

}  // namespace Bench

#endif
