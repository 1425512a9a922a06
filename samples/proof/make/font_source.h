// A Type 1 font of the characters that a proof needs, built by the library from
// the outlines of any font that FreeType reads.

#ifndef SAMPLES_PROOF_MAKE_FONT_SOURCE_H
#define SAMPLES_PROOF_MAKE_FONT_SOURCE_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "vaskel/fonts.h"

namespace Proof {

/// One character of the font.
struct FontChar {
    char32_t character;
    unsigned char code;
};

class FontSource {
 public:
    /// Opens a font file for the characters of text (UTF-8). Throws Failure
    /// where the file is no font, or text has more than 190 characters beyond
    /// ASCII.
    FontSource(const std::string& path, const std::string& text);
    ~FontSource();
    FontSource(const FontSource&) = delete;
    FontSource& operator=(const FontSource&) = delete;

    /// The font's own PostScript name, fit for PostScript.
    const std::string& name() const { return mName; }

    /// A new font of that name with all characters: outlines at 1000 units to
    /// the em, quadratic curves raised to cubic ones, widths kept, glyphs named
    /// as in the font or, where it has no names, by their characters (uni20AC).
    std::unique_ptr<Fonts::Type1Font> build(const std::string& fontName) const;

    /// The characters with their codes: ASCII characters have their own, others
    /// follow from 161 on.
    const std::vector<FontChar>& chars() const { return mChars; }

    /// The text in the font's codes; a character that the font lacks is left
    /// out.
    std::string encoded(const std::string& text) const;

    /// The advance width of a text at size 1.
    double widthOf(const std::string& text) const;

    int ascent() const;
    int descent() const;
    int capHeight() const;

 private:
    struct Face;
    std::string glyphName(unsigned int glyph, char32_t character) const;

    std::unique_ptr<Face> mFace;
    std::string mName;
    std::vector<FontChar> mChars;
    std::map<char32_t, unsigned char> mCodes;
    std::map<unsigned char, int> mWidths;
};

}  // namespace Proof

#endif
