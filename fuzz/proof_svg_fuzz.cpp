// SVG files of the sample host: whatever the bytes are, a drawing is read or
// refused with a reason; its coordinates are within reach; what is found lies on
// the outlines, and every crossing that intcalc finds for a pair of lines in the
// plain way is found.

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <utility>

#include "platform/orlune.h"
#include "samples/proof/check/check_report.h"
#include "samples/proof/check/segment_pairs.h"
#include "samples/proof/check/svg_reader.h"
#include "samples/proof/failure.h"
#include "vaskel/geometry.h"

namespace {

// More points than that cost time and show nothing new.
constexpr std::size_t kMostSegments = 2000;

void require(bool holds) {
    if (!holds) std::abort();
}

using Pairs = std::set<std::pair<std::size_t, std::size_t>>;

// The pairs that intcalc finds among those visited.
template <class Search>
Pairs crossingPairs(Search search, const std::vector<Proof::LineSegment>& segments) {
    Pairs pairs;
    search(segments, [&](std::size_t i, std::size_t j) {
        const Proof::LineSegment &s = segments[i], &t = segments[j];
        int x = 0, y = 0;
        if (Vaskel::intcalc(s.x1, s.y1, s.x2, s.y2, t.x1, t.y1, t.x2, t.y2, &x, &y) != 0)
            pairs.insert({i, j});
        return true;
    });
    return pairs;
}

void checkObject(Pemmit::Object* object) {
    std::vector<Proof::LineSegment> segments;
    std::size_t points = 0;
    for (const Pemmit::Path* contour : Proof::contoursOf(object)) {
        points += static_cast<std::size_t>(Pemmit::patsiz(contour));
        if (points > kMostSegments) return;
        Pemmit::scan walk(contour, 0, -1);
        Proof::LineSegment s{};
        require(walk.scanex(&s.x1, &s.y1) >= 0);
        for (; walk.scanex(&s.x2, &s.y2) >= 0; s.x1 = s.x2, s.y1 = s.y2)
            if (s.x1 != s.x2 || s.y1 != s.y2) segments.push_back(s);
    }
    require(crossingPairs(Proof::visitMeetingPairs, segments) ==
            crossingPairs(Proof::visitMeetingPairsPlain, segments));
    const Proof::OutlineFindings result = Proof::checkOutline(object, 500, nullptr);
    require(result.findings.size() <= 500);
    for (const Proof::Finding& finding : result.findings)
        require(object->box.minX <= finding.at.x && finding.at.x <= object->box.maxX &&
                object->box.minY <= finding.at.y && finding.at.y <= object->box.maxY);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const Proof::Drawing drawing = Proof::readSvg("fuzz", {data, size});
        const Proof::Grid grid(drawing);
        require(grid.extent() <= Proof::kFarthest);
        require(drawing.paths.empty() || (drawing.width > 0 && drawing.height > 0));
        require(drawing.xPerInch > 0 && drawing.yPerInch > 0);
        for (const Proof::DrawnPath& path : drawing.paths)
            checkObject(Proof::makeObject(path, grid, grid.extent() / 1024).get());
        if (!drawing.paths.empty()) {
            const Proof::OutlinePage page = Proof::drawingPage(drawing);
            require(page.width > 0 && page.height > 0);
            for (const Proof::PathStep& step : page.lines)
                require(std::abs(step.x) < 1e14 && std::abs(step.y) < 1e14);
        }
    } catch (const Proof::Failure& failure) {
        require(failure.what()[0] != 0);
    }
    return 0;
}
