#include "tests/fonts/drawn_glyphs.h"

#include <algorithm>
#include <random>

namespace {

class Artist {
 public:
    Artist(std::uint32_t seed, int spread) : mRandom(seed), mSpread(spread) {}

    int below(int count) { return static_cast<int>(mRandom() % static_cast<std::uint32_t>(count)); }

    // Half of the points lie close to the one before, so that short numbers
    // are as frequent as long ones.
    int coordinate(int before) {
        if (below(2) == 0) return std::clamp(before + below(221) - 110, -mSpread, mSpread);
        return below(2 * mSpread + 1) - mSpread;
    }

    void contour(std::vector<Drawn>& commands) {
        point(commands, 'M', 1);
        for (int segments = 2 + below(8); segments > 0; --segments)
            below(2) == 0 ? point(commands, 'L', 1) : point(commands, 'C', 3);
        commands.push_back({'Z', {}});
    }

 private:
    void point(std::vector<Drawn>& commands, char command, int points) {
        Drawn drawn{command, {}};
        for (int i = 0; i < points; ++i) {
            drawn.at[2 * i] = mX = coordinate(mX);
            drawn.at[2 * i + 1] = mY = coordinate(mY);
        }
        commands.push_back(drawn);
    }

    std::mt19937 mRandom;
    int mSpread;
    int mX = 0;
    int mY = 0;
};

}  // namespace

std::vector<DrawnGlyph> drawnGlyphs(std::uint32_t seed, int spread) {
    Artist artist(seed, spread);
    std::vector<DrawnGlyph> glyphs;
    for (int code = 0; code < 256; ++code) {
        if (code % 3 != 0 && (code < 32 || code > 126)) continue;
        DrawnGlyph glyph{static_cast<unsigned char>(code),
                         std::string("g").append(std::to_string(code)),
                         artist.below(1500),
                         {}};
        for (int contours = artist.below(4); contours > 0; --contours)
            artist.contour(glyph.commands);
        glyphs.push_back(glyph);
    }
    return glyphs;
}

void draw(const std::vector<DrawnGlyph>& glyphs, Fonts::Type1Font& font) {
    for (const DrawnGlyph& glyph : glyphs) {
        font.setCharWidth(glyph.code, glyph.width);
        font.addChar(glyph.code, glyph.name);
        Fonts::Type1Glyph& to = *font.editChar(glyph.code);
        for (const auto& [command, at] : glyph.commands) {
            if (command == 'M') to.moveTo(at[0], at[1]);
            if (command == 'L') to.lineTo(at[0], at[1]);
            if (command == 'C') to.curveTo(at[0], at[1], at[2], at[3], at[4], at[5]);
            if (command == 'Z') to.closePath();
        }
    }
}
