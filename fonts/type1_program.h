// The font program's pieces, in a plain form and in the form that fonts use.

#ifndef FONTS_TYPE1_PROGRAM_H
#define FONTS_TYPE1_PROGRAM_H

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "fonts/outline.h"
#include "vaskel/fonts.h"

namespace Fonts {

/// The union of glyphs' boxes, all 0 without one.
class BoxUnion {
 public:
    void add(const Box& own) {
        mBox =
            mAny ? Box{std::min(mBox.smallestX, own.smallestX),
                       std::min(mBox.smallestY, own.smallestY),
                       std::max(mBox.largestX, own.largestX), std::max(mBox.largestY, own.largestY)}
                 : own;
        mAny = true;
    }
    Rectangle box() const { return yDown(mBox); }

 private:
    Box mBox{0, 0, 0, 0};
    bool mAny = false;
};

/// The encrypted private part, and the box that the clear text needs.
struct PrivatePart {
    std::unique_ptr<unsigned char[]> bytes;
    std::size_t length = 0;
    BoxUnion box;
};

class Type1Program {
 public:
    using Bytes = std::vector<unsigned char>;

    /// Looks at a font, which has to stay as it is meanwhile.
    explicit Type1Program(const Type1Font& font) : mFont(font) {}

    /// The clear text up to the encoding.
    void appendHeader(Bytes& out, const Rectangle& box) const;
    /// All names in code order, eight a line.
    void appendEncodingArray(Bytes& out) const;
    /// One "dup CODE /NAME put" a glyph that is not named .notdef.
    void appendExplicitEncoding(Bytes& out) const;

    /// The private part: its text with encrypted charstrings, then all of it
    /// encrypted. Returns its length.
    std::size_t appendPrivatePlain(Bytes& out) const;
    /// The same bytes, each byte of a charstring through both encryptions at
    /// once, and outlines encoded meanwhile.
    PrivatePart makePrivate() const;

    /// Upper bound of what header and encoding append.
    std::size_t clearSize() const;

 private:
    int entryCount() const;
    std::string_view nameOf(int code) const;

    const Type1Font& mFont;
};

}  // namespace Fonts

#endif
