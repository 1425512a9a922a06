#include "samples/proof/check/svg_arc.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <svgpp/utility/arc_endpoint_to_center.hpp>

#include "samples/proof/check/matrix.h"
#include "vaskel/geometry.h"

namespace Proof {
namespace {

constexpr double kTurn = 2 * std::numbers::pi;
// Of the circle whose image an arc is: arccub works in whole units, and a
// quarter's chord is within the int range.
constexpr double kRadius = 1 << 30;

// A part of at most a quarter.
PathStep arcPart(const Matrix& image, double from, double to) {
    Pemmit::bezier bezier;
    Vaskel::arccub({0, 0, kRadius * std::cos(from), kRadius * std::sin(from),
                    kRadius * std::cos(to), kRadius * std::sin(to)},
                   bezier);
    for (auto& point : bezier.p) image.apply(point.x, point.y);
    const auto& p = bezier.p;
    if (std::isfinite(p[1].x + p[1].y + p[2].x + p[2].y))
        return {PathStep::Curve, p[1].x, p[1].y, p[2].x, p[2].y, p[3].x, p[3].y};
    return {PathStep::Line, 0, 0, 0, 0, p[3].x, p[3].y};  // shorter than arccub's whole units
}

}  // namespace

// SVG 1.1, appendix F.6: from the ends to the centre and its angles. The arc is
// an image of one of a circle.
std::vector<PathStep> arcSteps(double fromX, double fromY, const SvgArc& arc) {
    if (fromX == arc.x && fromY == arc.y) return {};
    double rx = arc.rx, ry = arc.ry;
    const double phi = arc.degrees / 360 * kTurn;
    double cx = 0, cy = 0, theta1 = 0, theta2 = 0;
    if (rx != 0 && ry != 0)
        svgpp::arc_endpoint_to_center(fromX, fromY, arc.x, arc.y, rx, ry, phi, arc.large, arc.sweep,
                                      cx, cy, theta1, theta2);
    if (rx == 0 || ry == 0 || !std::isfinite(theta1 + theta2 + cx + cy + rx + ry))
        return {{PathStep::Line, 0, 0, 0, 0, arc.x, arc.y}};
    if (arc.sweep && theta2 < theta1) theta2 += kTurn;
    if (!arc.sweep && theta2 > theta1) theta2 -= kTurn;
    const Matrix image =
        Matrix{std::cos(phi), std::sin(phi), -std::sin(phi), std::cos(phi), cx, cy} *
        Matrix{rx / kRadius, 0, 0, ry / kRadius, 0, 0};
    const int parts =
        std::max(1, static_cast<int>(std::ceil(std::abs(theta2 - theta1) / kTurn * 4 - 1e-9)));
    std::vector<PathStep> steps;
    for (int i = 0; i < parts; ++i)
        steps.push_back(arcPart(image, theta1 + (theta2 - theta1) * i / parts,
                                theta1 + (theta2 - theta1) * (i + 1) / parts));
    steps.back().x = arc.x;
    steps.back().y = arc.y;
    return steps;
}

}  // namespace Proof
