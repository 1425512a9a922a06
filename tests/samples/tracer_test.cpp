#include "samples/proof/tracer.h"

#include <doctest/doctest.h>

#include <vector>

#include "platform/orlune.h"
#include "samples/proof/failure.h"
#include "tests/samples/pictures.h"

using namespace Proof;

namespace {

using Points = std::vector<OutlinePoint>;

struct Traced {
    TraceResult result;
    std::vector<Points> contours;
};

Traced traceText(const std::string& pixels, int width, int height, const TraceSettings& settings,
                 const std::function<bool(double)>& watch = nullptr) {
    const Bytes file =
        bytesOf("P1 " + std::to_string(width) + " " + std::to_string(height) + "\n" + pixels);
    const auto source = memoryBytes("made", file);
    const auto scan = openScan(*source, 1, nullptr);
    InkRows rows(*scan, std::nullopt, false, nullptr);
    const int scale = settings.unitsPerPixel;
    Traced traced{traceRows(rows, Orientation(1, width * scale, height * scale), settings, watch),
                  {}};
    for (std::size_t i = 0; i < traced.result.outlines.count(); ++i) {
        const auto contour = traced.result.outlines.contour(i);
        traced.contours.emplace_back(contour.begin(), contour.end());
    }
    return traced;
}

// The box of a contour: least x, least y, largest x, largest y.
std::vector<int> boxOf(const Points& contour) {
    std::vector<int> box = {contour[0].x, contour[0].y, contour[0].x, contour[0].y};
    for (const OutlinePoint& point : contour) {
        box[0] = std::min(box[0], point.x);
        box[1] = std::min(box[1], point.y);
        box[2] = std::max(box[2], point.x);
        box[3] = std::max(box[3], point.y);
    }
    return box;
}

}  // namespace

TEST_CASE("a block of ink gives its four corners in outline units") {
    for (const int scale : {1, 16}) {
        CAPTURE(scale);
        const Traced traced = traceText("0000 0110 0110 0000", 4, 4, {.unitsPerPixel = scale});
        REQUIRE(traced.contours.size() == 1);
        CHECK(traced.contours[0].size() == 4);
        CHECK(boxOf(traced.contours[0]) == std::vector{scale, scale, 3 * scale, 3 * scale});
        CHECK(traced.result.rows == 4);
        CHECK_FALSE(traced.result.cancelled);
    }
}

TEST_CASE("ink in the last row is closed at the page's edge") {
    const Traced traced = traceText("00 11", 2, 2, {.unitsPerPixel = 16});
    REQUIRE(traced.contours.size() == 1);
    CHECK(boxOf(traced.contours[0]) == std::vector{0, 16, 32, 32});
}

TEST_CASE("what is too small is dropped") {
    CHECK(traceText("110 110 000", 3, 3, {.minSize = 2}).contours.empty());
    CHECK(traceText("110 110 000", 3, 3, {.minSize = 1}).contours.size() == 1);
}

TEST_CASE("progress runs from 0 up and reaches every row") {
    std::vector<double> percents;
    traceText("1 1 1 1", 1, 4, {}, [&](double percent) {
        percents.push_back(percent);
        return true;
    });
    // Four rows and the empty one that closes what is open.
    CHECK(percents == std::vector<double>{0, 20, 40, 60, 80});
}

TEST_CASE("a trace that is stopped closes what is open at the row reached") {
    for (const int scale : {1, 16}) {
        for (int stopAt = 0; stopAt < 6; ++stopAt) {
            CAPTURE(scale);
            CAPTURE(stopAt);
            int asked = 0;
            const Traced traced = traceText("1 1 1 1 1", 1, 5, {.unitsPerPixel = scale},
                                            [&](double) { return asked++ < stopAt; });
            CHECK(traced.result.rows == std::min(stopAt, 5));
            CHECK(traced.result.cancelled == (stopAt < 5));
            REQUIRE(traced.contours.size() == (stopAt == 0 ? 0u : 1u));
            if (stopAt > 0)
                CHECK(boxOf(traced.contours[0]) ==
                      std::vector{0, 0, scale, std::min(stopAt, 5) * scale});
        }
    }
}

TEST_CASE("the platform is as it was after a trace") {
    traceText("1", 1, 1, {}, [](double) { return false; });
    CHECK(Orlune::cancel(0, 0) == 0);
    Orlune::Progress progress;
    CHECK_FALSE(progress.isCanceled());
}

TEST_CASE("a row that cannot be read ends the trace with its reason") {
    CHECK_THROWS_WITH(traceText("11 1x ", 2, 2, {}),
                      "made: is damaged: row 2 has something other than digits");
}

TEST_CASE("a watcher's exception passes through") {
    struct Stop {};
    CHECK_THROWS_AS(traceText("1 1", 1, 2, {}, [](double) -> bool { throw Stop(); }), Stop);
}
