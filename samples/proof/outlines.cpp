#include "samples/proof/outlines.h"

namespace Proof {

void Outlines::add(std::span<const OutlinePoint> contour) {
    if (contour.size() < 3) return;
    if (mEnds.size() == mEnds.capacity()) mEnds.reserve(mEnds.size() * 2 + 16);
    mPoints.insert(mPoints.end(), contour.begin(), contour.end());
    mEnds.push_back(mPoints.size());
}

OutlinePoint Orientation::onPage(int column, int row) const {
    switch (mCode) {
        case 2:
            return {mWidth - column, row};
        case 3:
            return {mWidth - column, mHeight - row};
        case 4:
            return {column, mHeight - row};
        case 5:
            return {row, column};
        case 6:
            return {mHeight - row, column};
        case 7:
            return {mHeight - row, mWidth - column};
        case 8:
            return {row, mWidth - column};
        default:
            return {column, row};
    }
}

void addTraced(const Pemmit::Path* path, const Orientation& orientation, Outlines& outlines) {
    const int size = Pemmit::patsiz(path);
    std::vector<OutlinePoint> points;
    points.reserve(size > 0 ? static_cast<std::size_t>(size) : 0);
    Pemmit::scan walk(path, 0, -1);
    int row = 0;
    int column = 0;
    while (walk.scanex(&row, &column) >= 0) points.push_back(orientation.onPage(column, row));
    // A closed walk ends where it began.
    if (points.size() > 1 && points.front() == points.back()) points.pop_back();
    outlines.add(points);
}

}  // namespace Proof
