// Drawing into a glyph with AVX-512.

#if defined(__x86_64__)

#include "fonts/glyph_drawing.h"
#include "fonts/outline_pen_avx512.h"

namespace Fonts {

VASKEL_AVX512 void GlyphDrawing::pointAvx512(Type1Glyph& glyph, int x, int y,
                                             unsigned char command) {
    if (hasRoom(glyph, 3)) [[likely]] {
        if (const unsigned char* const after =
                Avx512::drawPoint(end(glyph), pen(glyph), command, x, y)) [[likely]] {
            if (isEmpty(glyph)) [[unlikely]]
                seedBox(pen(glyph), x, y);
            return setEnd(glyph, after);
        }
    }
    pointPlain(glyph, x, y, command);
}

VASKEL_AVX512 void GlyphDrawing::curveAvx512(Type1Glyph& glyph, int x1, int y1, int x2, int y2,
                                             int x3, int y3) {
    if (!isEmpty(glyph) && hasRoom(glyph, 3)) [[likely]] {
        if (const unsigned char* const after =
                Avx512::drawCurve(end(glyph), pen(glyph), x1, y1, x2, y2, x3, y3)) [[likely]]
            return setEnd(glyph, after);
    }
    curvePlain(glyph, x1, y1, x2, y2, x3, y3);
}

}  // namespace Fonts

#endif
