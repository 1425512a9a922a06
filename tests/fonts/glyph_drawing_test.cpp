#include "fonts/glyph_drawing.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "fonts/charstring.h"
#include "fonts/outline_pen.h"
#include "fonts/outline_pen_avx512.h"
#include "tests/fonts/drawn_glyphs.h"
#include "util/cpu.h"
#include "vaskel/fonts.h"

namespace {

using Fonts::Type1Glyph;

// What a pen leaves behind.
struct Penned {
    std::int32_t at[2];
    std::int32_t box[4];
    unsigned char bytes[Fonts::longestCommand(3) + 1];
    std::size_t length;

    bool operator==(const Penned& other) const {
        return std::equal(at, at + 2, other.at) && std::equal(box, box + 4, other.box) &&
               length == other.length && std::equal(bytes, bytes + length, other.bytes);
    }
};

#if defined(__x86_64__)

struct PenForm {
    const char* name;
    unsigned char* (*point)(unsigned char* out, Fonts::OutlinePen pen, unsigned char command, int x,
                            int y);
    unsigned char* (*curve)(unsigned char* out, Fonts::OutlinePen pen, int x1, int y1, int x2,
                            int y2, int x3, int y3);
};

std::vector<PenForm> penForms() {
    std::vector<PenForm> forms{{"sse2", Fonts::drawPointFast, Fonts::drawCurveFast}};
    if (Vaskel::cpuLevel() >= Vaskel::CpuLevel::Avx512Vbmi2)
        forms.push_back({"avx512", Fonts::Avx512::drawPoint, Fonts::Avx512::drawCurve});
    return forms;
}

// Draws the same by the plain form and another from the same state and counts which
// the faster one took.
struct Taken {
    explicit Taken(const PenForm& penForm) : form(penForm) {}

    const PenForm& form;
    int fast = 0;
    int declined = 0;

    void compare(const Penned& start, const int* p, int count) {
        Penned want = start, got = start;
        const unsigned char command = count == 1 ? Fonts::kRlineto : Fonts::kRrcurveto;
        const unsigned char* end =
            Fonts::drawPlain(want.bytes, {want.at, want.box}, false, command, p, count);
        want.length = static_cast<std::size_t>(end - want.bytes);
        const Fonts::OutlinePen pen{got.at, got.box};
        end = count == 1 ? form.point(got.bytes, pen, command, p[0], p[1])
                         : form.curve(got.bytes, pen, p[0], p[1], p[2], p[3], p[4], p[5]);
        std::string points;
        for (int i = 0; i < 2 * count; ++i) points += std::to_string(p[i]) + ' ';
        CAPTURE(std::string(form.name));
        CAPTURE(points);
        if (end == nullptr) {
            ++declined;
            got.length = start.length;
            REQUIRE(got == start);
            return;
        }
        ++fast;
        got.length = static_cast<std::size_t>(end - got.bytes);
        REQUIRE(got == want);
    }
};

TEST_CASE("glyph: all numbers of a command at once are those one by one") {
    for (const PenForm& form : penForms()) {
        constexpr Penned kStart = {{7, -9}, {-20, -30, 40, 50}, {}, 0};
        Taken line(form), curve(form);
        for (int d = -1300; d <= 1300; ++d) {  // every difference, in each place
            const int point[] = {kStart.at[0] + d, kStart.at[1] - d};
            line.compare(kStart, point, 1);
            for (int place = 0; place < 6; ++place) {
                int points[] = {1, 2, 3, 4, 5, 6};
                points[place] = (place < 2 ? kStart.at[place] : points[place - 2]) + d;
                curve.compare(kStart, points, 3);
            }
        }
        CHECK(line.fast == 2 * 1131 + 1);
        CHECK(curve.fast > 6 * 2 * 1100);
        CHECK(line.declined > 0);
        CHECK(curve.declined > 0);

        // Coordinates about every power of two, near each other and far apart.
        std::minstd_rand random(3);
        const auto below = [&](int n) {
            return static_cast<int>(random() % static_cast<unsigned>(n));
        };
        const auto far = [&] {
            const std::int64_t power = std::int64_t{1} << below(32);
            const std::int64_t value = (below(2) ? power : -power) + below(5) - 2;
            return static_cast<int>(std::clamp<std::int64_t>(value, INT_MIN, INT_MAX));
        };
        Taken any(form);
        for (int round = 0; round < 200000; ++round) {
            Penned start = {{far(), far()}, {far(), far(), far(), far()}, {}, 0};
            int points[6];
            for (int i = 0; i < 6; ++i) {
                const int before = i < 2 ? start.at[i] : points[i - 2];
                points[i] = below(20)
                                ? static_cast<int>(std::clamp<std::int64_t>(
                                      std::int64_t{before} + below(2400) - 1200, INT_MIN, INT_MAX))
                                : far();
            }
            any.compare(start, points, 1 + 2 * below(2));
        }
        CHECK(any.fast > 10000);
        CHECK(any.declined > 10000);
    }
}

#endif

// The best form again at the end of a test.
struct Forced {
    explicit Forced(const Fonts::GlyphForm& form) { Fonts::forceGlyphForm(&form); }
    ~Forced() { Fonts::forceGlyphForm(nullptr); }
    Forced(const Forced&) = delete;
    Forced& operator=(const Forced&) = delete;
};

TEST_CASE("glyph: every form draws what the plain form draws") {
    const auto forms = Fonts::glyphForms();
    REQUIRE(std::string(forms.front().name) == "plain");
    int glyphs = 0;
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        const int spread = seed % 2 == 0 ? 900 : 20000;
        const std::vector<DrawnGlyph> drawn = drawnGlyphs(seed, spread);
        const auto fontOf = [&](const Fonts::GlyphForm& form) {
            const Forced forced(form);
            auto font = std::make_unique<Fonts::Type1Font>("F");
            draw(drawn, *font);
            return font;
        };
        const auto want = fontOf(forms.front());
        for (const Fonts::GlyphForm& form : forms) {
            CAPTURE(std::string(form.name));
            CAPTURE(seed);
            const auto got = fontOf(form);
            for (const DrawnGlyph& glyph : drawn) {
                ++glyphs;
                Type1Glyph* const a = want->editChar(glyph.code);
                Type1Glyph* const b = got->editChar(glyph.code);
                REQUIRE(a->getData() == b->getData());
                const Fonts::Rectangle p = a->getBoundingBox(), q = b->getBoundingBox();
                REQUIRE(std::tie(p.top, p.left, p.bottom, p.right) ==
                        std::tie(q.top, q.left, q.bottom, q.right));
            }
        }
    }
    CHECK(glyphs > 1000);
}

int gPoints = 0, gCurves = 0;

TEST_CASE("glyph: a form that is forced draws") {
    constexpr Fonts::GlyphForm kCounting = {
        "counting",
        [](Type1Glyph& glyph, int x, int y, unsigned char command) {
            ++gPoints;
            Fonts::GlyphDrawing::pointPlain(glyph, x, y, command);
        },
        [](Type1Glyph& glyph, int x1, int y1, int x2, int y2, int x3, int y3) {
            ++gCurves;
            Fonts::GlyphDrawing::curvePlain(glyph, x1, y1, x2, y2, x3, y3);
        }};
    Type1Glyph glyph("x");
    {
        const Forced forced(kCounting);
        glyph.moveTo(1, 2);
        glyph.lineTo(3, 4);
        glyph.curveTo(5, 6, 7, 8, 9, 10);
    }
    glyph.lineTo(11, 12);
    CHECK(gPoints == 2);
    CHECK(gCurves == 1);
    Type1Glyph same("x");
    same.moveTo(1, 2);
    same.lineTo(3, 4);
    same.curveTo(5, 6, 7, 8, 9, 10);
    same.lineTo(11, 12);
    CHECK(glyph.getData() == same.getData());
}

}  // namespace
