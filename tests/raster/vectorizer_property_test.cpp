// What holds for every bitmap, whatever it shows.

#include <doctest/doctest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "geometry/point_runs.h"
#include "raster/vectorizer.h"
#include "tests/support/bitmaps.h"
#include "vaskel/geometry.h"

namespace {

constexpr unsigned kSeed = 20240607;

Bitmap noise(std::mt19937& random, int lines, int width, unsigned percent) {
    Bitmap bitmap(static_cast<std::size_t>(lines),
                  std::string(static_cast<std::size_t>(width), '.'));
    for (std::string& line : bitmap)
        for (char& pixel : line)
            if (random() % 100 < percent) pixel = '#';
    return bitmap;
}

// Lines that are mostly the line before, so that runs live for a while.
Bitmap blobs(std::mt19937& random, int lines, int width) {
    Bitmap bitmap = noise(random, lines, width, 50);
    for (std::size_t y = 1; y < bitmap.size(); ++y)
        for (std::size_t x = 0; x < bitmap[y].size(); ++x)
            if (random() % 8 != 0) bitmap[y][x] = bitmap[y - 1][x];
    return bitmap;
}

Bitmap checkerboard(int size, int square) {
    Bitmap bitmap(static_cast<std::size_t>(size), std::string(static_cast<std::size_t>(size), '.'));
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x)
            if ((y / square + x / square) % 2 == 0)
                bitmap[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] = '#';
    return bitmap;
}

Bitmap nestedRings(int size) {
    Bitmap bitmap(static_cast<std::size_t>(size), std::string(static_cast<std::size_t>(size), '.'));
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x) {
            const int depth = std::min(std::min(x, size - 1 - x), std::min(y, size - 1 - y));
            if (depth % 2 == 0)
                bitmap[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] = '#';
        }
    return bitmap;
}

Bitmap upsideDown(Bitmap bitmap) { return Bitmap(bitmap.rbegin(), bitmap.rend()); }

// Teeth of growing length on a spine: all gaps end at the spine at once, or
// begin there.
Bitmap comb(int teeth) {
    Bitmap bitmap;
    for (int y = 0; y < teeth; ++y) {
        std::string line;
        for (int x = 0; x < teeth; ++x) line += x <= y ? "#." : "..";
        bitmap.push_back(line);
    }
    bitmap.push_back(std::string(static_cast<std::size_t>(2 * teeth), '#'));
    return bitmap;
}

std::vector<Bitmap> bitmaps() {
    std::mt19937 random(kSeed);
    std::vector<Bitmap> all = {{}, {""}, {"#"}, {"."}, {"", "#", ""}};
    for (int i = 0; i < 300; ++i)
        all.push_back(
            noise(random, 1 + i % 12, 1 + i % 17, 20 + static_cast<unsigned>(i % 7) * 10));
    for (int i = 0; i < 200; ++i) all.push_back(blobs(random, 2 + i % 30, 3 + i % 40));
    for (int square = 1; square <= 4; ++square) all.push_back(checkerboard(25, square));
    for (int size = 1; size <= 24; ++size) all.push_back(nestedRings(size));
    for (int teeth = 1; teeth <= 20; ++teeth) {
        all.push_back(comb(teeth));
        all.push_back(upsideDown(comb(teeth)));
    }
    return all;
}

}  // namespace

TEST_CASE("vectorizer: the even-odd fill of the outlines is the bitmap") {
    Vaskel::cleanpar(0, 0, 0);
    MESSAGE("seed " << kSeed);
    TestTracer tracer(0);
    int rows = 0;
    for (const Bitmap& bitmap : bitmaps()) {
        CAPTURE(rows);
        int width = 0;
        for (const std::string& line : bitmap)
            width = std::max(width, static_cast<int>(line.size()));
        Bitmap want = bitmap;
        for (std::string& line : want) line.resize(static_cast<std::size_t>(width), '.');
        const Outlines outlines = tracer.trace(bitmap);
        CHECK(filled(outlines, static_cast<int>(bitmap.size()), width) == want);
        CHECK(edgesOf(outlines) == boundaryOf(bitmap));
        ++rows;
    }
    CHECK(rows == 573);
}

namespace {

// Tells by which form each outline was made.
class FormTracer : public TestTracer {
 public:
    using TestTracer::TestTracer;
    Outlines traceBy(Vaskel::AddLineForm form, const Bitmap& bitmap, bool flip) {
        Vaskel::gAddLineForm = form;
        Outlines result = trace(bitmap, flip);
        Vaskel::gAddLineForm = Vaskel::AddLineForm::kFast;
        return result;
    }
    void addPath(Pemmit::Path* path) override {
        ++(Vaskel::VectorizerInside::keepsPoints(*this) ? own : host);
        CHECK((path->flags & Pemmit::kFlagOpen) == 0);
        TestTracer::addPath(path);
    }
    int own = 0, host = 0;
};

// Runs side by side that move in every line: all of their edges have many points
// at the same time.
Bitmap wavyRuns(int runs, int lines) {
    Bitmap bitmap;
    for (int line = 0; line < lines; ++line) {
        std::string pixels(static_cast<std::size_t>(6 * runs), '.');
        for (int run = 0; run < runs; ++run)
            pixels.replace(static_cast<std::size_t>(6 * run + line * (run + 1) % 3), 3, "###");
        bitmap.push_back(pixels);
    }
    return bitmap;
}

// Outlines of many points, which join in any order.
std::vector<Bitmap> largeBitmaps() {
    std::mt19937 random(kSeed + 1);
    std::vector<Bitmap> all;
    for (int i = 0; i < 20; ++i) all.push_back(blobs(random, 150 + 20 * i, 60 + i));
    all.push_back(comb(120));
    all.push_back(upsideDown(comb(120)));
    all.push_back(nestedRings(90));
    all.push_back(wavyRuns(30, 200));
    return all;
}

}  // namespace

TEST_CASE("vectorizer: every form gives the plain form's outlines") {
    using Vaskel::AddLineForm;
    std::vector<Bitmap> all = bitmaps();
    for (Bitmap& bitmap : largeBitmaps()) all.push_back(std::move(bitmap));
    struct Row {
        int minSize, n, tolerance, step;
    };
    constexpr Row kRows[] = {{-1, 0, 0, 1}, {0, 0, 0, 1},  {3, 0, 0, 1},
                             {1, 0, 1, 1},  {-1, 1, 1, 1}, {4, 2, 1, 2}};
    int own = 0, host = 0, rows = 0;
    for (const Row& row : kRows) {
        FormTracer exact(row.minSize, row.n, row.tolerance, row.step, 1, false);
        FormTracer smooth(row.minSize, row.n, row.tolerance, row.step, 1, true);
        for (const Bitmap& bitmap : all)
            for (FormTracer* tracer : {&exact, &smooth})
                for (const bool flip : {false, true}) {
                    CAPTURE(rows);
                    const Outlines want = tracer->traceBy(AddLineForm::kPlain, bitmap, flip);
                    CHECK(tracer->traceBy(AddLineForm::kFast, bitmap, flip) == want);
                    ++rows;
                }
        for (const FormTracer* tracer : {&exact, &smooth}) {
            CHECK(tracer->own == tracer->host);
            own += tracer->own;
            host += tracer->host;
        }
    }
    CHECK(rows == 6 * 4 * 597);
    CHECK(own > 50000);
    CHECK(host == own);
    Vaskel::cleanpar(0, 0, 0);
}

TEST_CASE("vectorizer: without the host's call for whole outlines they are the host's") {
    Vaskel::cleanpar(0, 0, 0);
    FormTracer tracer(-1);
    const Bitmap bitmap = nestedRings(11);
    const Outlines want = tracer.trace(bitmap);
    CHECK(want.size() == 6);
    CHECK(tracer.own == 6);
    Vaskel::setHostRuns(false);
    CHECK(tracer.trace(bitmap) == want);
    Vaskel::setHostRuns(true);
    CHECK(tracer.own == 6);
    CHECK(tracer.host == 6);
}
