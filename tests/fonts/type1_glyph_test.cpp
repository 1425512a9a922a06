#include <doctest/doctest.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "fonts/charstring.h"
#include "tests/fonts/type1_text.h"
#include "tests/support/fake_host.h"
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
        for (int i = 0; i < std::abs(lines); ++i)
            glyph.lineTo(i * 300 % 1000, i == -lines / 2 ? 40000 : -i);
        return glyph;
    };
    // Negative: with a far point in the middle.
    for (const int from : {0, 1, 40, 60, 300, -1, -60, -300}) {
        for (const int to : {0, 1, 40, 60, 300, -1, -60, -300}) {
            CAPTURE(from);
            CAPTURE(to);
            const Type1Glyph source = drawn("a name of more than fifteen bytes", from);
            const auto data = source.getData();
            Type1Glyph target = drawn("t", to);
            const auto before = target.getData();
            failEachAllocation([&] {
                try {
                    target = source;
                } catch (const std::bad_alloc&) {
                    CHECK(target.getData() == before);
                }
            });
            REQUIRE(target.getData() == data);
            Type1Glyph copy(source);
            for (Type1Glyph* glyph : {&copy, &target}) glyph->lineTo(5, 6);
            CHECK(copy.getData() == target.getData());
            CHECK(source.getData() == data);
        }
    }
}

std::string numberBytes(std::int64_t v) {
    const auto size = static_cast<int>(std::min<std::int64_t>(std::abs(v), 31999));
    if (size <= 107) return bytesOf({static_cast<int>(v) + 139});
    const int rest = size - 108;
    if (size <= 1131) return bytesOf({(v < 0 ? 251 : 247) + rest / 256, rest % 256});
    const int limited = v < 0 ? -size : size;
    return bytesOf({255, limited >> 24, limited >> 16, limited >> 8, limited});
}

// Draws and notes what has to come of it.
struct Noted {
    Type1Glyph glyph{"x"};
    std::string outline;
    Rectangle box{0, 0, 0, 0};
    std::int64_t at[2] = {0, 0};

    void line(int x, int y) {
        glyph.lineTo(x, y);
        outline += numberBytes(x - at[0]) + numberBytes(y - at[1]) + bytesOf({5});
        note(x, y);
    }
    void curve(int x, int y) {
        glyph.curveTo(0, 0, 5, y, x, y);
        outline += numberBytes(-at[0]) + numberBytes(-at[1]) + numberBytes(5) + numberBytes(y) +
                   numberBytes(std::int64_t{x} - 5) + numberBytes(0) + bytesOf({8});
        note(0, 0), note(5, y), note(x, y);
    }
    void close() {
        glyph.closePath();
        outline += bytesOf({9});
    }
    void note(int x, int y) {  // of outlines that begin with closePath
        box = {std::min(box.top, -y), std::min(box.left, x), std::max(box.bottom, -y),
               std::max(box.right, x)};
        at[0] = x;
        at[1] = y;
    }
};

TEST_CASE("glyph: coordinates of more than 16 bits may come at any time") {
    for (int before = 0; before < 150; ++before) {
        for (int kind = 0; kind < 6; ++kind) {
            CAPTURE(before);
            CAPTURE(kind);
            Noted noted;
            noted.close();
            for (int i = 0; i < before; ++i)
                i % 5 == 4 ? noted.close() : noted.line(i % 2 == 0 ? 32767 : -32768, i * 150);
            if (kind == 0) noted.line(32768, 0);
            if (kind == 1) noted.line(0, -32769);
            if (kind == 2) noted.curve(32768, 32767);
            if (kind == 3) noted.curve(-32768, INT_MAX);
            if (kind == 4) noted.line(-32768, 32767);  // not one of them
            if (kind == 5) noted.line(1 << 16, 1 << 24);
            for (int i = 0; i < before; ++i) {
                noted.line(i, 100000 - i);
                noted.close();
                noted.curve(7 + i, i % 3);
            }
            REQUIRE(outlineOf(noted.glyph) == noted.outline);
            REQUIRE(noted.glyph.getBoundingBox() == noted.box);
        }
    }
}

TEST_CASE("glyph: memory that ends leaves the glyph as it was") {
    for (int command = 0; command < 8; ++command) {
        CAPTURE(command);
        Type1Glyph glyph("x");
        glyph.moveTo(1, 2);
        int i = 0;
        const auto draw = [&](Type1Glyph& g) {
            const int x = command >= 4 && i >= 50 ? 100000 : 1000;  // far from then on
            if (command % 4 == 0) g.moveTo(x, 2000);
            if (command % 4 == 1) g.lineTo(x, 2000);
            if (command % 4 == 2) g.curveTo(x, 2000, 3, 4, 5, 6);
            if (command % 4 == 3 && i != 50) g.closePath();
            if (command % 4 == 3 && i == 50) g.lineTo(x, 2000);
        };
        int refused = 0;
        for (; i < 600; ++i) {
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
