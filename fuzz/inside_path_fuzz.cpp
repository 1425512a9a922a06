// Points in paths of any shape: the prepared form, every form of the edge test
// and every way of reading the walk give the same answer.

#include "embedded/document.h"
#include "fuzz/outline_reader.h"
#include "geometry/edge_run.h"
#include "vaskel/geometry.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OutlineReader in(data, size);
    Points questions(1 + static_cast<std::size_t>(in.flags()));
    for (Point& p : questions) p = in.point();
    const PathPtr path(Embedded::makeCompound());
    for (PathPtr& contour : in.contours(400)) {
        const Points points = walked(contour.get());
        for (std::size_t i = 0; i < points.size() && questions.size() < 100; i += 1 + i / 4) {
            questions.push_back(points[i]);
            if (points[i].x < 0) questions.push_back({points[i].x + 1, points[i].y});
        }
        require(Embedded::addChild(path.get(), contour.release()));
    }

    const Vaskel::preparedPath prepared(path.get());
    for (const Point& p : questions) {
        Vaskel::forceEdgeRunForm(&Vaskel::kEdgeRunPlain);
        Vaskel::setHostRuns(false);
        const bool want = Vaskel::insidePath(p.x, p.y, path.get());
        Vaskel::setHostRuns(true);
        for (const Vaskel::EdgeRunForm* form : Vaskel::edgeRunForms()) {
            Vaskel::forceEdgeRunForm(form);
            require(Vaskel::insidePath(p.x, p.y, path.get()) == want);
        }
        require(prepared.inside(p.x, p.y) == want);
    }
    Vaskel::forceEdgeRunForm(nullptr);
    return 0;
}
