#include <doctest/doctest.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "fonts/charstring.h"
#include "fonts/glyph_drawing.h"
#include "fonts/outline_pen.h"
#include "fonts/outline_pen_avx512.h"
#include "tests/fonts/drawn_glyphs.h"
#include "tests/fonts/type1_text.h"
#include "tests/support/fake_host.h"
#include "util/cpu.h"
#include "vaskel/fonts.h"

namespace Fonts {

bool operator==(const Rectangle& a, const Rectangle& b) {
    return a.top == b.top && a.left == b.left && a.bottom == b.bottom && a.right == b.right;
}
std::ostream& operator<<(std::ostream& out, const Rectangle& r) {
    return out << '(' << r.top << ", " << r.left << ", " << r.bottom << ", " << r.right << ')';
}

}  // namespace Fonts

namespace {

using Fonts::Rectangle;
using Fonts::Type1Glyph;

// The charstring between hsbw of width 0 (139 139 13) and endchar (14).
std::string outlineOf(const Type1Glyph& glyph) {
    const Entry entry = readEntry(asText(glyph.getData()));
    REQUIRE(entry.complete);
    REQUIRE(entry.lead == "sirk");
    REQUIRE(entry.plain.size() >= 4);
    REQUIRE(entry.plain.substr(0, 3) == bytesOf({139, 139, 13}));
    REQUIRE(entry.plain.back() == 14);
    return entry.plain.substr(3, entry.plain.size() - 4);
}

TEST_CASE("glyph: numbers take the shortest charstring form") {
    struct Row {
        int value;
        std::initializer_list<int> bytes;
    };
    const Row rows[] = {
        {0, {139}},
        {107, {246}},
        {-107, {32}},
        {108, {247, 0}},
        {363, {247, 255}},
        {364, {248, 0}},
        {1131, {250, 255}},
        {-108, {251, 0}},
        {-363, {251, 255}},
        {-364, {252, 0}},
        {-1131, {254, 255}},
        {1132, {255, 0, 0, 4, 108}},
        {-1132, {255, 255, 255, 251, 148}},
        {31999, {255, 0, 0, 124, 255}},
        {32000, {255, 0, 0, 124, 255}},
        {40000, {255, 0, 0, 124, 255}},
        {-31999, {255, 255, 255, 131, 1}},
        {-40000, {255, 255, 255, 131, 1}},
        {INT_MAX, {255, 0, 0, 124, 255}},
        {INT_MIN, {255, 255, 255, 131, 1}},
    };
    for (const Row& row : rows) {
        CAPTURE(row.value);
        Type1Glyph glyph("x");
        glyph.moveTo(row.value, 0);
        CHECK(outlineOf(glyph) == bytesOf(row.bytes) + bytesOf({139, 21}));
    }
}

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
                REQUIRE(a->getBoundingBox() == b->getBoundingBox());
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
    CHECK(outlineOf(glyph) ==
          bytesOf({140, 141, 21, 141, 141, 5, 141, 141, 141, 141, 141, 141, 8, 141, 141, 5}));
}

TEST_CASE("glyph: commands are written relative to the point before") {
    Type1Glyph glyph("x");
    glyph.moveTo(10, 20);                   // 10 20 rmoveto
    glyph.lineTo(15, 18);                   // 5 -2 rlineto
    glyph.curveTo(16, 20, 14, 25, 20, 30);  // 1 2 -2 5 6 5 rrcurveto
    glyph.closePath();
    glyph.moveTo(20, 30);  // 0 0 rmoveto: no short forms, zeros are written
    CHECK(outlineOf(glyph) ==
          bytesOf({149, 159, 21, 144, 137, 5, 140, 141, 137, 144, 145, 144, 8, 9, 139, 139, 21}));
}

TEST_CASE("glyph: differences of far coordinates are limited, not wrapped") {
    Type1Glyph glyph("x");
    glyph.moveTo(INT_MAX, INT_MIN);
    glyph.lineTo(INT_MIN, INT_MAX);
    const std::string low = bytesOf({255, 255, 255, 131, 1}), high = bytesOf({255, 0, 0, 124, 255});
    CHECK(outlineOf(glyph) == high + low + bytesOf({21}) + low + high + bytesOf({5}));
}

TEST_CASE("glyph: an entry is name, length, cipher and end") {
    const Type1Glyph glyph("A.alt");
    // Cipher of "sirk" 139 139 13 14 with key 4330, by hand: 4330 >> 8 = 16;
    // 's' xor 16 = 99; r = (99 + 4330) * 52845 + 22719 mod 65536 = 44168, >> 8 = 172; ...
    const std::string text = asText(glyph.getData());
    REQUIRE(text.substr(0, 12) == "/A.alt 8 RD ");
    CHECK(text.size() == 12 + 8 + 4);
    CHECK(static_cast<unsigned char>(text[12]) == 99);
    CHECK(static_cast<unsigned char>(text[13]) == ('i' ^ 172));
    const Entry entry = readEntry(text);
    CHECK(entry.complete);
    CHECK(entry.plain == bytesOf({139, 139, 13, 14}));
    CHECK(glyph.getData() == glyph.getData());
}

struct BoxRow {
    const char* why;
    std::function<void(Type1Glyph&)> draw;
    Rectangle box;
};

TEST_CASE("glyph box: a first point off the diagonal keeps its seed") {
    const BoxRow rows[] = {
        {"nothing drawn", [](Type1Glyph&) {}, {0, 0, 0, 0}},
        {"seed", [](Type1Glyph& g) { g.lineTo(10, 20); }, {-20, 10, -10, 20}},
        {"seed and a point",
         [](Type1Glyph& g) { g.lineTo(10, 20), g.lineTo(30, 5); },
         {-20, 10, -5, 30}},
        {"the seed's largest x is the first y and may stay",
         [](Type1Glyph& g) { g.moveTo(10, 500), g.lineTo(30, 400); },
         {-500, 10, -10, 500}},
        {"the seed's largest -y is minus the first x and may stay",
         [](Type1Glyph& g) { g.moveTo(-300, 50), g.lineTo(0, 40); },
         {-50, -300, 300, 50}},
        {"a curve that comes first seeds three times; its last point counts",
         [](Type1Glyph& g) { g.curveTo(1, 2, 300, 400, 10, 20); },
         {-20, 10, -10, 20}},
        {"a curve that comes later folds its control points in",
         [](Type1Glyph& g) { g.moveTo(0, 0), g.curveTo(5, 7, -30, 60, 10, 20); },
         {-60, -30, 0, 10}},
        {"closePath makes the outline begin",
         [](Type1Glyph& g) { g.closePath(), g.moveTo(10, 20); },
         {-20, 0, 0, 10}},
        {"closePath alone folds nothing", [](Type1Glyph& g) { g.closePath(); }, {0, 0, 0, 0}},
        {"minus the smallest integer is the largest",
         [](Type1Glyph& g) { g.moveTo(INT_MIN, INT_MIN); },
         {INT_MAX, INT_MIN, INT_MAX, INT_MIN}},
    };
    for (const BoxRow& row : rows) {
        CAPTURE(std::string(row.why));
        Type1Glyph glyph("x");
        row.draw(glyph);
        CHECK(glyph.getBoundingBox() == row.box);
    }
}

TEST_CASE("glyph: copies are independent") {
    Type1Glyph a("a");
    a.moveTo(1, 2);
    Type1Glyph b(a);
    b.lineTo(3, 4);
    CHECK(outlineOf(a) == bytesOf({140, 141, 21}));
    CHECK(outlineOf(b) == bytesOf({140, 141, 21, 141, 141, 5}));
    Type1Glyph c("c");
    c = b;
    c = *&c;
    CHECK(c.getData() == b.getData());
    CHECK(c.getBoundingBox() == b.getBoundingBox());
}

TEST_CASE("glyph: outlines of any length are copied, whether they fit into the glyph or not") {
    const auto drawn = [](const char* name, int lines) {
        Type1Glyph glyph(name);
        for (int i = 0; i < lines; ++i) glyph.lineTo(i * 300 % 1000, -i);
        return glyph;
    };
    for (const int from : {0, 1, 40, 60, 300}) {
        for (const int to : {0, 1, 40, 60, 300}) {
            CAPTURE(from);
            CAPTURE(to);
            const Type1Glyph source = drawn("a name of more than fifteen bytes", from);
            const auto data = source.getData();
            Type1Glyph target = drawn("t", to);
            const auto before = target.getData();
            for (int allocation = 1; allocation <= 2; ++allocation) {
                try {
                    const FailingAllocation failing(allocation);
                    target = source;
                    CHECK(allocation == 2);
                } catch (const std::bad_alloc&) {
                    CHECK(target.getData() == before);
                }
            }
            target = source;
            REQUIRE(target.getData() == data);
            Type1Glyph copy(source);
            for (Type1Glyph* glyph : {&copy, &target}) glyph->lineTo(5, 6);
            CHECK(copy.getData() == target.getData());
            CHECK(source.getData() == data);
        }
    }
}

TEST_CASE("glyph: memory that ends leaves the glyph as it was") {
    for (int command = 0; command < 4; ++command) {
        CAPTURE(command);
        Type1Glyph glyph("x");
        glyph.moveTo(1, 2);
        const auto draw = [&](Type1Glyph& g) {
            if (command == 0) g.moveTo(1000, 2000);
            if (command == 1) g.lineTo(1000, 2000);
            if (command == 2) g.curveTo(1000, 2000, 3, 4, 5, 6);
            if (command == 3) g.closePath();
        };
        int refused = 0;
        for (int i = 0; i < 600; ++i) {
            const Type1Glyph before = glyph;
            try {
                const FailingAllocation failing(1);
                draw(glyph);
            } catch (const std::bad_alloc&) {
                ++refused;
                REQUIRE(glyph.getData() == before.getData());
                REQUIRE(glyph.getBoundingBox() == before.getBoundingBox());
                draw(glyph);
            }
        }
        CHECK(refused > 0);
        CHECK(refused < 20);  // growth is geometric
    }
}

}  // namespace
