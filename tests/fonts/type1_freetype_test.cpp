// What another reader of the format makes of our fonts.

#include <doctest/doctest.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include <ostream>
#include <string>

#include "tests/fonts/drawn_glyphs.h"

namespace {

class Face {
 public:
    explicit Face(const std::vector<unsigned char>& program) {
        REQUIRE(FT_Init_FreeType(&mLibrary) == 0);
        REQUIRE(FT_New_Memory_Face(mLibrary, program.data(), static_cast<FT_Long>(program.size()),
                                   0, &mFace) == 0);
    }
    ~Face() {
        FT_Done_Face(mFace);
        FT_Done_FreeType(mLibrary);
    }
    Face(const Face&) = delete;
    Face& operator=(const Face&) = delete;

    FT_Face operator->() const { return mFace; }
    FT_Face get() const { return mFace; }

 private:
    FT_Library mLibrary = nullptr;
    FT_Face mFace = nullptr;
};

void note(std::string& text, char command, std::initializer_list<const FT_Vector*> points) {
    text += command;
    for (const FT_Vector* point : points)
        text += ' ' + std::to_string(point->x) + ' ' + std::to_string(point->y);
    text += '\n';
}

// The outline as text, a command a line; closing is implied by the next move.
std::string outlineText(FT_Outline& outline) {
    FT_Outline_Funcs funcs{};
    funcs.move_to = [](const FT_Vector* to, void* text) {
        note(*static_cast<std::string*>(text), 'M', {to});
        return 0;
    };
    funcs.line_to = [](const FT_Vector* to, void* text) {
        note(*static_cast<std::string*>(text), 'L', {to});
        return 0;
    };
    funcs.conic_to = [](const FT_Vector*, const FT_Vector*, void*) { return 1; };
    funcs.cubic_to = [](const FT_Vector* a, const FT_Vector* b, const FT_Vector* to, void* text) {
        note(*static_cast<std::string*>(text), 'C', {a, b, to});
        return 0;
    };
    std::string text;
    REQUIRE(FT_Outline_Decompose(&outline, &funcs, &text) == 0);
    return text;
}

// What FreeType shows of a drawing: contours are closed by a line to their
// first point.
std::string drawnText(const DrawnGlyph& glyph) {
    std::string text;
    FT_Vector first{0, 0};
    FT_Vector last{0, 0};
    for (const auto& [command, at] : glyph.commands) {
        const FT_Vector points[3] = {{at[0], at[1]}, {at[2], at[3]}, {at[4], at[5]}};
        if (command == 'M') note(text, 'M', {&points[0]}), first = points[0];
        if (command == 'L') note(text, 'L', {&points[0]});
        if (command == 'C') note(text, 'C', {&points[0], &points[1], &points[2]});
        if (command == 'Z' && (last.x != first.x || last.y != first.y)) note(text, 'L', {&first});
        if (command != 'Z') last = command == 'C' ? points[2] : points[0];
    }
    return text;
}

TEST_CASE("FreeType reads the font, every outline, advance and name as they were made") {
    int outlines = 0;
    // 15000: differences up to 30000, which charstrings can hold
    for (const int spread : {300, 2000, 15000}) {
        const std::vector<DrawnGlyph> glyphs = drawnGlyphs(static_cast<unsigned>(spread), spread);
        Fonts::Type1Font font("Judged");
        draw(glyphs, font);
        const Face face(font.getData());
        CHECK(std::string(FT_Get_Postscript_Name(face.get())) == "Judged");
        CHECK(face->units_per_EM == 1000);
        CHECK(face->num_glyphs == static_cast<FT_Long>(glyphs.size()) + 1);
        const Fonts::Rectangle box = font.getBoundingBox();
        CHECK(face->bbox.xMin == box.left);
        CHECK(face->bbox.yMin == -box.bottom);
        CHECK(face->bbox.xMax == box.right);
        CHECK(face->bbox.yMax == -box.top);

        REQUIRE(FT_Select_Charmap(face.get(), FT_ENCODING_ADOBE_CUSTOM) == 0);
        for (const DrawnGlyph& glyph : glyphs) {
            CAPTURE(static_cast<int>(glyph.code));
            const FT_UInt index = FT_Get_Char_Index(face.get(), glyph.code);
            char name[32];
            REQUIRE(FT_Get_Glyph_Name(face.get(), index, name, sizeof name) == 0);
            CHECK(std::string(name) == glyph.name);
            REQUIRE(FT_Load_Glyph(face.get(), index, FT_LOAD_NO_SCALE) == 0);
            CHECK(face->glyph->metrics.horiAdvance == glyph.width);
            CHECK(outlineText(face->glyph->outline) == drawnText(glyph));
            ++outlines;
        }
    }
    CHECK(outlines > 3 * 120);
}

}  // namespace
