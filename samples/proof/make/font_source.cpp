#include "samples/proof/make/font_source.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include <algorithm>
#include <cstdio>
#include <set>

#include "platform/orlune.h"
#include "samples/proof/failure.h"
#include "samples/proof/make/utf8_text.h"

namespace Proof {

struct FontSource::Face {
    FT_Library library = nullptr;
    FT_Face face = nullptr;

    ~Face() {
        if (face) FT_Done_Face(face);
        if (library) FT_Done_FreeType(library);
    }
    // In thousandths of the em.
    double scaled(long units) const {
        return static_cast<double>(units) * 1000 / (face->units_per_EM ? face->units_per_EM : 1000);
    }
};

namespace {

constexpr unsigned char kFirstOther = 161;
constexpr FT_Int32 kLoad = FT_LOAD_NO_SCALE | FT_LOAD_NO_HINTING;

// Draws an outline of font units into a glyph.
struct Drawing {
    Fonts::Type1Glyph& glyph;
    double scale;
    double x = 0, y = 0;  // where the pen is, not rounded
    bool open = false;

    double scaled(FT_Pos units) const { return static_cast<double>(units) * scale; }
    int at(double v) const { return Orlune::iround(v); }
    void close() {
        if (open) glyph.closePath();
        open = false;
    }
    void pen(double toX, double toY) {
        x = toX;
        y = toY;
    }
    void cubic(double x1, double y1, double x2, double y2, double x3, double y3) {
        glyph.curveTo(at(x1), at(y1), at(x2), at(y2), at(x3), at(y3));
        pen(x3, y3);
    }
};

int moveTo(const FT_Vector* to, void* user) {
    auto& d = *static_cast<Drawing*>(user);
    d.close();
    d.pen(d.scaled(to->x), d.scaled(to->y));
    d.glyph.moveTo(d.at(d.x), d.at(d.y));
    d.open = true;
    return 0;
}

int lineTo(const FT_Vector* to, void* user) {
    auto& d = *static_cast<Drawing*>(user);
    d.pen(d.scaled(to->x), d.scaled(to->y));
    d.glyph.lineTo(d.at(d.x), d.at(d.y));
    return 0;
}

// A quadratic segment is the cubic one whose handles are two thirds of the way
// from its ends to its control point.
int conicTo(const FT_Vector* control, const FT_Vector* to, void* user) {
    auto& d = *static_cast<Drawing*>(user);
    const double cx = d.scaled(control->x), cy = d.scaled(control->y);
    const double ex = d.scaled(to->x), ey = d.scaled(to->y);
    d.cubic(d.x + (cx - d.x) * 2 / 3, d.y + (cy - d.y) * 2 / 3, ex + (cx - ex) * 2 / 3,
            ey + (cy - ey) * 2 / 3, ex, ey);
    return 0;
}

int cubicTo(const FT_Vector* c1, const FT_Vector* c2, const FT_Vector* to, void* user) {
    auto& d = *static_cast<Drawing*>(user);
    d.cubic(d.scaled(c1->x), d.scaled(c1->y), d.scaled(c2->x), d.scaled(c2->y), d.scaled(to->x),
            d.scaled(to->y));
    return 0;
}

bool fitForPostScript(char c) {
    return c > ' ' && c < 127 && std::string_view("()<>[]{}/%#").find(c) == std::string_view::npos;
}

}  // namespace

FontSource::FontSource(const std::string& path, const std::string& text)
    : mFace(std::make_unique<Face>()) {
    if (FT_Init_FreeType(&mFace->library) != 0) throw Failure("FreeType cannot be started");
    const FT_Error error = FT_New_Face(mFace->library, path.c_str(), 0, &mFace->face);
    if (error != 0) {
        std::FILE* const file = std::fopen(path.c_str(), "rb");
        if (file) std::fclose(file);
        throw fileFailure(path, file ? "not a font that can be read" : "No such file or directory");
    }
    if (!FT_IS_SCALABLE(mFace->face)) throw fileFailure(path, "a font without outlines");

    const char* const own = FT_Get_Postscript_Name(mFace->face);
    for (const char* c = own ? own : "Proof"; *c; ++c)
        if (fitForPostScript(*c)) mName.push_back(*c);
    if (mName.empty()) mName = "Proof";

    int next = kFirstOther;
    std::set<char32_t> wanted;
    for (const char32_t c : utf32(text)) wanted.insert(c);
    for (const char32_t c : wanted) {
        const FT_UInt glyph = FT_Get_Char_Index(mFace->face, c);
        if (glyph == 0 || c < 32) continue;
        if (FT_Load_Glyph(mFace->face, glyph, kLoad) != 0) continue;
        if (c > 126 && next > 255) throw fileFailure(path, "too many characters for one font");
        const auto code = static_cast<unsigned char>(c <= 126 ? static_cast<int>(c) : next++);
        mChars.push_back({c, code});
        mCodes[c] = code;
        mWidths[code] = Orlune::iround(mFace->scaled(mFace->face->glyph->metrics.horiAdvance));
    }
}

FontSource::~FontSource() = default;

std::string FontSource::glyphName(unsigned int glyph, char32_t character) const {
    char name[64] = {};
    if (FT_HAS_GLYPH_NAMES(mFace->face) &&
        FT_Get_Glyph_Name(mFace->face, glyph, name, sizeof name) == 0 && name[0] != '\0' &&
        std::all_of(name, name + std::char_traits<char>::length(name), fitForPostScript) &&
        std::string_view(name) != ".notdef")
        return name;
    std::snprintf(name, sizeof name, character > 0xFFFF ? "u%06X" : "uni%04X",
                  static_cast<unsigned>(character));
    return name;
}

std::unique_ptr<Fonts::Type1Font> FontSource::build(const std::string& fontName) const {
    auto font = std::make_unique<Fonts::Type1Font>(std::string(fontName));
    std::set<std::string> names;
    for (const FontChar& c : mChars) {
        const FT_UInt glyph = FT_Get_Char_Index(mFace->face, c.character);
        if (FT_Load_Glyph(mFace->face, glyph, kLoad) != 0) continue;
        std::string name = glyphName(glyph, c.character);
        if (!names.insert(name).second) {  // two characters share a glyph
            name += ".c" + std::to_string(c.code);
            names.insert(name);
        }
        font->setCharWidth(c.code, mWidths.at(c.code));
        font->addChar(c.code, name);
        FT_Outline_Funcs functions = {moveTo, lineTo, conicTo, cubicTo, 0, 0};
        Drawing drawing{*font->editChar(c.code), mFace->scaled(1)};
        FT_Outline_Decompose(&mFace->face->glyph->outline, &functions, &drawing);
        drawing.close();
    }
    font->setAscent(ascent());
    font->setDescent(descent());
    font->setCapHeight(capHeight());
    return font;
}

std::string FontSource::encoded(const std::string& text) const {
    std::string codes;
    for (const char32_t c : utf32(text)) {
        const auto found = mCodes.find(c);
        if (found != mCodes.end()) codes.push_back(static_cast<char>(found->second));
    }
    return codes;
}

double FontSource::widthOf(const std::string& text) const {
    int width = 0;
    for (const char code : encoded(text)) width += mWidths.at(static_cast<unsigned char>(code));
    return width / 1000.0;
}

int FontSource::ascent() const { return Orlune::iround(mFace->scaled(mFace->face->ascender)); }
int FontSource::descent() const { return Orlune::iround(mFace->scaled(mFace->face->descender)); }

int FontSource::capHeight() const {
    const FT_UInt glyph = FT_Get_Char_Index(mFace->face, U'H');
    if (glyph == 0 || FT_Load_Glyph(mFace->face, glyph, kLoad) != 0) return ascent();
    return Orlune::iround(mFace->scaled(mFace->face->glyph->metrics.horiBearingY));
}

}  // namespace Proof
