// Seeded fonts with a record of what was drawn, for judges that read the font
// program with other software.

#ifndef TESTS_FONTS_DRAWN_GLYPHS_H
#define TESTS_FONTS_DRAWN_GLYPHS_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "vaskel/fonts.h"

/// A drawing command: 'M' and 'L' with one point, 'C' with three, 'Z' with none.
struct Drawn {
    char command;
    std::array<int, 6> at;  // x, y pairs
};

struct DrawnGlyph {
    unsigned char code;
    std::string name;
    int width;
    std::vector<Drawn> commands;
};

/// Glyphs of closed contours at every third code and all of ASCII's printable
/// ones. spread is how far points lie from the origin; differences go through
/// every number form of charstrings once it exceeds 1131.
std::vector<DrawnGlyph> drawnGlyphs(std::uint32_t seed, int spread);

/// Adds the glyphs to a font.
void draw(const std::vector<DrawnGlyph>& glyphs, Fonts::Type1Font& font);

#endif
