// The drawing commands of a glyph, in a plain form and in faster ones.

#ifndef FONTS_GLYPH_DRAWING_H
#define FONTS_GLYPH_DRAWING_H

#include <cstddef>
#include <span>

#include "fonts/outline_pen.h"
#include "vaskel/fonts.h"

namespace Fonts {

using DrawPoint = void (*)(Type1Glyph& glyph, int x, int y, unsigned char command);
using DrawCurve = void (*)(Type1Glyph& glyph, int x1, int y1, int x2, int y2, int x3, int y3);

/// What a form has in common with the others.
struct GlyphDrawing {
    /// The commands by the rule itself; the faster forms leave to it a curve that comes
    /// first, a command that needs more room, and long numbers.
    static void pointPlain(Type1Glyph& glyph, int x, int y, unsigned char command);
    static void curvePlain(Type1Glyph& glyph, int x1, int y1, int x2, int y2, int x3, int y3);
#if defined(__x86_64__)
    static void pointSse2(Type1Glyph& glyph, int x, int y, unsigned char command);
    static void curveSse2(Type1Glyph& glyph, int x1, int y1, int x2, int y2, int x3, int y3);
    static void pointAvx512(Type1Glyph& glyph, int x, int y, unsigned char command);
    static void curveAvx512(Type1Glyph& glyph, int x1, int y1, int x2, int y2, int x3, int y3);
#endif

    static void plain(Type1Glyph& glyph, unsigned char command, const int* points, int count);

    static OutlinePen pen(Type1Glyph& glyph) { return {glyph.mAt, glyph.mBox}; }
    static bool hasRoom(const Type1Glyph& glyph, int points) {
        return glyph.mCapacity - glyph.mLength >= static_cast<std::size_t>(longestCommand(points));
    }
    static bool isEmpty(const Type1Glyph& glyph) { return glyph.mLength == 0; }
    static unsigned char* end(Type1Glyph& glyph) { return glyph.mOutline + glyph.mLength; }
    static void setEnd(Type1Glyph& glyph, const unsigned char* end) {
        glyph.mLength = static_cast<std::size_t>(end - glyph.mOutline);
    }
};

struct GlyphForm {
    const char* name;
    DrawPoint point;
    DrawCurve curve;
};

/// The forms that this CPU can run, the best one last.
std::span<const GlyphForm> glyphForms();

/// Makes glyphs use form; null for the best one again. For tests and benchmarks.
void forceGlyphForm(const GlyphForm* form);

}  // namespace Fonts

#endif
