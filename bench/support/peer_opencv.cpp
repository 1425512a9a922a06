#include "bench/support/peers.h"

#if VASKEL_BENCH_OPENCV

#include <opencv2/imgproc.hpp>

namespace Bench {

struct OpencvPolygon::Data {
    std::vector<cv::Point> contour;
};

OpencvPolygon::OpencvPolygon(const Polygon& polygon) : mData(std::make_unique<Data>()) {
    for (const Vertex& v : polygon) mData->contour.emplace_back(v.x, v.y);
}
OpencvPolygon::~OpencvPolygon() = default;
bool OpencvPolygon::covers(int x, int y) const {
    return cv::pointPolygonTest(mData->contour,
                                cv::Point2f(static_cast<float>(x), static_cast<float>(y)),
                                false) >= 0;
}

}  // namespace Bench

#endif
