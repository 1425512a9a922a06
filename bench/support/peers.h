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

}  // namespace Bench

#endif
