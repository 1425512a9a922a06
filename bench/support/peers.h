// The same polygon for each library: ours and the peers'.

#ifndef BENCH_SUPPORT_PEERS_H
#define BENCH_SUPPORT_PEERS_H

#include <memory>

#include "bench/support/polygons.h"
#include "platform/pemmit.h"

namespace Bench {

/// A closed path of the document.
class DocumentPath {
 public:
    explicit DocumentPath(const Polygon& polygon);
    ~DocumentPath();
    DocumentPath(const DocumentPath&) = delete;
    DocumentPath& operator=(const DocumentPath&) = delete;
    Pemmit::Path* get() const { return mPath; }

 private:
    Pemmit::Path* mPath;
};

/// Two segments, and where they meet in a library's own way: false when they do
/// not meet in one point.
struct SegmentPair {
    Vertex a, b, c, d;
};
struct Crossing {
    double x, y;
};
bool boostCrossing(const SegmentPair& pair, Crossing& at);
#if VASKEL_BENCH_GEOS
bool geosCrossing(const SegmentPair& pair, Crossing& at);
#endif
#if VASKEL_BENCH_CGAL
bool cgalCrossing(const SegmentPair& pair, Crossing& at);
#endif

class BoostPolygon {
 public:
    explicit BoostPolygon(const Polygon& polygon);
    ~BoostPolygon();
    bool crosses() const;
    bool covers(int x, int y) const;

 private:
    struct Data;
    std::unique_ptr<Data> mData;
};

#if VASKEL_BENCH_GEOS
class GeosPolygon {
 public:
    explicit GeosPolygon(const Polygon& polygon);
    ~GeosPolygon();
    bool isSimple() const;
    bool preparedCovers(int x, int y) const;

 private:
    struct Data;
    std::unique_ptr<Data> mData;
};
#endif

#if VASKEL_BENCH_CGAL
class CgalPolygon {
 public:
    explicit CgalPolygon(const Polygon& polygon);
    ~CgalPolygon();
    bool isSimple() const;
    bool covers(int x, int y) const;

 private:
    struct Data;
    std::unique_ptr<Data> mData;
};
#endif

#if VASKEL_BENCH_OPENCV
class OpencvPolygon {
 public:
    explicit OpencvPolygon(const Polygon& polygon);
    ~OpencvPolygon();
    bool covers(int x, int y) const;

 private:
    struct Data;
    std::unique_ptr<Data> mData;
};
#endif

}  // namespace Bench

#endif
