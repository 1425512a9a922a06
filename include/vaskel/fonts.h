// Type 1 fonts built from outlines.
//
// A caller makes a Type1Font, adds a glyph a character code, draws into the
// glyphs and reads the assembled program, either for embedding (three sections
// as PDF wants them, ISO 32000-1 section 9.9) or as a PostScript resource. The
// format is that of "Adobe Type 1 Font Format", version 1.1: charstrings
// (chapter 6), their encryption and eexec (chapter 7).
//
// What the library does not check, and a host has to see to:
// - glyph names are unique within a font, and the font's name holds no blanks
//   and no PostScript delimiters;
// - the array DravixEncoding is defined in userdict before the PostScript form
//   with the host's encoding is sent;
// - a PDF that embeds the font states /Encoding with /Differences itself: some
//   viewers ignore a literal encoding array within the font;
// - fewer than about 30000 points a glyph, or FreeType refuses it.
//
// std::bad_alloc passes through, with glyph or font as it was. An object
// belongs to one thread at a time.

#ifndef VASKEL_FONTS_H
#define VASKEL_FONTS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "vaskel/export.h"

namespace Fonts {

/// A box in glyph units, in a frame whose y axis points down: top is minus the
/// largest y drawn, bottom minus the smallest.
struct Rectangle {
    std::int32_t top;
    std::int32_t left;
    std::int32_t bottom;
    std::int32_t right;
};

/// One glyph while it is drawn. Coordinates are absolute, 1000 units to the em,
/// y upwards; the current point starts at (0, 0). The commands are recorded in
/// the order in which they come, and nothing checks that order.
///
/// A command takes a byte and 4 for each of its points, from the first coordinate
/// beyond 16 bits on 8 for each point of the glyph; some 350 bytes are part of the
/// glyph itself.
class VASKEL_API Type1Glyph {
 public:
    /// A glyph without outline and of width 0; name comes without "/".
    explicit Type1Glyph(std::string&& name);
    Type1Glyph(const Type1Glyph& other);
    Type1Glyph& operator=(const Type1Glyph& other);
    virtual ~Type1Glyph();

    void moveTo(int x, int y);
    void lineTo(int x, int y);
    /// A cubic segment from the current point with control points (x1, y1) and
    /// (x2, y2) to (x3, y3).
    void curveTo(int x1, int y1, int x2, int y2, int x3, int y3);
    void closePath();

    /// The box of all points drawn, control points included, except that the
    /// points of the first command give (-y, x, -x, y) where (-y, x, -y, x)
    /// might be expected: callers store these boxes, so the seed stays. Where
    /// closePath came first, (0, 0) is one of the points.
    ///
    ///   lineTo(10, 20)                 (-20, 10, -10, 20)
    ///   lineTo(10, 20), lineTo(30, 5)  (-20, 10, -5, 30)
    ///
    /// All 0 while nothing is drawn. Looks at all points anew.
    Rectangle getBoundingBox() const;

    /// The glyph's entry in the CharStrings dictionary: "/name LENGTH RD ", the
    /// encrypted charstring of LENGTH bytes, " ND\n".
    ///
    /// Differences of coordinates and the width are limited to -31999 .. 31999;
    /// a side bearing is always 0.
    std::vector<unsigned char> getData() const;

 private:
    friend class Type1Font;
    friend class Type1Program;
    static constexpr std::size_t kFirstRoom = 352;  // most glyphs of text fonts fit in
    static constexpr std::size_t kHeadRoom = 16;    // for writeHead, in bytes
    std::size_t writeHead(unsigned char* out) const;
    void appendData(std::vector<unsigned char>& out) const;
    VASKEL_HIDDEN unsigned char* begin() const;
    VASKEL_HIDDEN unsigned char* end() const;
    VASKEL_HIDDEN struct Outline outline() const;
    VASKEL_HIDDEN void grow(bool wide);
    VASKEL_HIDDEN void drawPoint(unsigned char step, int x, int y);
    VASKEL_HIDDEN void drawAnyhow(unsigned char step, const int* points, std::size_t numbers);
    VASKEL_HIDDEN void pointAnyhow(int x, int y, unsigned char step);
    VASKEL_HIDDEN void curveAnyhow(int x1, int y1, int x2, int y2, int x3, int y3);

    // What was drawn, in mFirst or mMore: points from the beginning, behind a (0, 0),
    // a byte a command from the end downwards. Numbers have 16 bits until one needs
    // more; then all have 32, and mEnd leaves no room for short ones.
    unsigned char* mEnd;     // behind the last point
    unsigned char* mFarEnd;  // the same where numbers have 32 bits, else null
    unsigned char* mTop;     // the last command
    std::size_t mRoom;       // bytes
    std::int32_t mWidth;
    std::string mName;
    std::unique_ptr<unsigned char[]> mMore;
    alignas(4) unsigned char mFirst[kFirstRoom];
};

/// A font of up to 256 glyphs, one a character code.
///
/// The assembled program is kept: whichever read comes first makes it, in its
/// own form, and only addChar and editChar throw it away. A font therefore
/// gives one form at a time; a width, a metric or the naming flag that is set
/// after a read shows after the next addChar or editChar.
class VASKEL_API Type1Font {
 public:
    explicit Type1Font(std::string&& name);
    virtual ~Type1Font();
    Type1Font(const Type1Font&) = delete;
    Type1Font& operator=(const Type1Font&) = delete;

    /// Makes the glyph of a code, with the width set for the code. Its name is
    /// the standard one when setMacRomanEncoding is on and the code is 32 to
    /// 126; else name with underscores for blanks; else, for an empty name,
    /// "AC" and the code in decimal (AC65). False, and nothing changes, when
    /// the code has a glyph.
    bool addChar(unsigned char code, const std::string& name);
    /// The glyph of a code, to draw into, or null. The font owns it.
    Type1Glyph* editChar(unsigned char code);
    bool hasChar(unsigned char code) const;

    /// Sets the advance width of a code, and of its glyph if there is one.
    void setCharWidth(unsigned char code, int width);
    int getCharWidth(unsigned char code) const;

    /// Kept for the caller; they do not reach the program.
    void setAscent(int ascent);
    void setDescent(int descent);
    void setCapHeight(int capHeight);
    int getAscent() const;
    int getDescent() const;
    int getCapHeight() const;

    /// Whether addChar names printable ASCII codes by the standard table.
    void setMacRomanEncoding(bool on);

    /// The name of a code's glyph, ".notdef" without one.
    std::string getCharEncoding(unsigned char code) const;
    /// Valid while the font lives.
    const char* getName() const;
    /// The union of the glyphs' boxes; all 0 for a font without glyphs.
    Rectangle getBoundingBox() const;

    /// Whether the font's name equals one of the first 14 of names, compared
    /// with Orlune::strcom, which sees case.
    bool isBase14Font(const char* const* names) const;

    /// The program for embedding, if none is assembled. Valid until the next
    /// addChar or editChar.
    const std::vector<unsigned char>& getData() const;
    /// The program as a PostScript resource, if none is assembled; with the
    /// encoding spelled out or looked up in userdict as DravixEncoding.
    const std::vector<unsigned char>& getPSData(bool explicitEncoding) const;

    /// The lengths of the program and of its three parts, which add up to it:
    /// clear text, encrypted part, trailer (Length1 to Length3 of a PDF font
    /// stream). They assemble the program for embedding if none is assembled.
    int getLength() const;
    int getHeaderLength() const;
    int getCharProcsLength() const;
    int getZeroesLength() const;

 private:
    friend class Type1Program;
    void buildFont() const;
    void buildPSFont(bool explicitEncoding) const;

    std::string mName;
    mutable std::vector<unsigned char> mData;
    mutable std::int32_t mHeaderLength;
    mutable std::int32_t mCharProcsLength;
    mutable std::int32_t mZeroesLength;
    struct GlyphBlock;
    std::unique_ptr<GlyphBlock> mBlocks;  // the glyphs' memory
    Type1Glyph* mGlyphs[256];
    std::int32_t mWidths[256];
    std::int32_t mAscent;
    std::int32_t mDescent;
    std::int32_t mCapHeight;
    bool mMacRomanEncoding;
};

}  // namespace Fonts

#endif
