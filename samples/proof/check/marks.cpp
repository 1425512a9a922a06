#include "samples/proof/check/marks.h"

#include <algorithm>
#include <cmath>

#include "vaskel/geometry.h"

namespace Proof {

void appendCircle(std::vector<PathStep>& marks, const OutlinePage& page, double x, double y,
                  int radius) {
    const double r = radius;
    const double stretch = page.yUnitsPerInch / page.xUnitsPerInch;
    const double ends[][2] = {{r, 0}, {0, r}, {-r, 0}, {0, -r}, {r, 0}};
    marks.push_back({PathStep::Move, 0, 0, 0, 0, x + r, y});
    for (int i = 0; i < 4; ++i) {
        Pemmit::bezier quarter;
        Vaskel::arccub({0, 0, ends[i][0], ends[i][1], ends[i + 1][0], ends[i + 1][1]}, quarter);
        for (auto& point : quarter.p) {
            point.x += x;
            point.y = y + point.y * stretch;
        }
        const auto& p = quarter.p;
        marks.push_back({PathStep::Curve, p[1].x, p[1].y, p[2].x, p[2].y, p[3].x, p[3].y});
    }
    marks.push_back({PathStep::Close, 0, 0, 0, 0, x + r, y});
}

int markRadius(const OutlinePage& page) {
    const double inches =
        std::max(page.width / page.xUnitsPerInch, page.height / page.yUnitsPerInch);
    const double radius = std::min(2 / 25.4, inches / 40) * page.xUnitsPerInch;
    return std::max(1, static_cast<int>(std::lround(radius)));
}

}  // namespace Proof
