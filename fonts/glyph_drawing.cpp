// Drawing into a glyph. A command happens whole or, where there is no memory for it,
// not at all.

#include "fonts/glyph_drawing.h"

#include <atomic>

#include "util/cpu.h"

namespace Fonts {

void GlyphDrawing::plain(Type1Glyph& glyph, unsigned char command, const int* points, int count) {
    glyph.makeRoom(longestCommand(count));
    setEnd(glyph, drawPlain(end(glyph), pen(glyph), isEmpty(glyph), command, points, count));
}

void GlyphDrawing::pointPlain(Type1Glyph& glyph, int x, int y, unsigned char command) {
    const int points[] = {x, y};
    plain(glyph, command, points, 1);
}

void GlyphDrawing::curvePlain(Type1Glyph& glyph, int x1, int y1, int x2, int y2, int x3, int y3) {
    const int points[] = {x1, y1, x2, y2, x3, y3};
    plain(glyph, kRrcurveto, points, 3);
}

#if defined(__x86_64__)

void GlyphDrawing::pointSse2(Type1Glyph& glyph, int x, int y, unsigned char command) {
    if (hasRoom(glyph, 1)) [[likely]] {
        if (const unsigned char* const after = drawPointFast(end(glyph), pen(glyph), command, x, y))
            [[likely]] {
            if (isEmpty(glyph)) [[unlikely]]
                seedBox(pen(glyph), x, y);
            setEnd(glyph, after);
            return;
        }
    }
    pointPlain(glyph, x, y, command);
}

void GlyphDrawing::curveSse2(Type1Glyph& glyph, int x1, int y1, int x2, int y2, int x3, int y3) {
    if (!isEmpty(glyph) && hasRoom(glyph, 3)) [[likely]] {
        if (const unsigned char* const after =
                drawCurveFast(end(glyph), pen(glyph), x1, y1, x2, y2, x3, y3)) [[likely]] {
            setEnd(glyph, after);
            return;
        }
    }
    curvePlain(glyph, x1, y1, x2, y2, x3, y3);
}

#endif

namespace {

constexpr GlyphForm kForms[] = {
    {"plain", GlyphDrawing::pointPlain, GlyphDrawing::curvePlain},
#if defined(__x86_64__)
    {"sse2", GlyphDrawing::pointSse2, GlyphDrawing::curveSse2},
    {"avx512", GlyphDrawing::pointAvx512, GlyphDrawing::curveAvx512},
#endif
};

std::size_t usableForms() {
    if (std::size(kForms) == 1) return 1;
    return Vaskel::cpuLevel() >= Vaskel::CpuLevel::Avx512Vbmi2 ? 3 : 2;
}

// These choose the form for all that follow.
void firstPoint(Type1Glyph& glyph, int x, int y, unsigned char command);
void firstCurve(Type1Glyph& glyph, int x1, int y1, int x2, int y2, int x3, int y3);

constinit std::atomic<DrawPoint> gPoint{firstPoint};
constinit std::atomic<DrawCurve> gCurve{firstCurve};

void firstPoint(Type1Glyph& glyph, int x, int y, unsigned char command) {
    forceGlyphForm(nullptr);
    gPoint.load(std::memory_order_relaxed)(glyph, x, y, command);
}

void firstCurve(Type1Glyph& glyph, int x1, int y1, int x2, int y2, int x3, int y3) {
    forceGlyphForm(nullptr);
    gCurve.load(std::memory_order_relaxed)(glyph, x1, y1, x2, y2, x3, y3);
}

}  // namespace

std::span<const GlyphForm> glyphForms() { return std::span(kForms).first(usableForms()); }

void forceGlyphForm(const GlyphForm* form) {
    if (form == nullptr) form = &kForms[usableForms() - 1];
    gPoint.store(form->point, std::memory_order_relaxed);
    gCurve.store(form->curve, std::memory_order_relaxed);
}

void Type1Glyph::moveTo(int x, int y) {
    gPoint.load(std::memory_order_relaxed)(*this, x, y, kRmoveto);
}

void Type1Glyph::lineTo(int x, int y) {
    gPoint.load(std::memory_order_relaxed)(*this, x, y, kRlineto);
}

void Type1Glyph::curveTo(int x1, int y1, int x2, int y2, int x3, int y3) {
    gCurve.load(std::memory_order_relaxed)(*this, x1, y1, x2, y2, x3, y3);
}

}  // namespace Fonts
