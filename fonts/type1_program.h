// The font program's pieces, in a plain form and in the form that fonts use.

#ifndef FONTS_TYPE1_PROGRAM_H
#define FONTS_TYPE1_PROGRAM_H

#include <cstddef>
#include <string_view>
#include <vector>

#include "vaskel/fonts.h"

namespace Fonts {

class Type1Program {
 public:
    using Bytes = std::vector<unsigned char>;

    /// Looks at a font, which has to stay as it is meanwhile.
    explicit Type1Program(const Type1Font& font) : mFont(font) {}

    /// The clear text up to the encoding.
    void appendHeader(Bytes& out) const;
    /// All names in code order, eight a line.
    void appendEncodingArray(Bytes& out) const;
    /// One "dup CODE /NAME put" a glyph that is not named .notdef.
    void appendExplicitEncoding(Bytes& out) const;

    /// The private part: its text with encrypted charstrings, then all of it
    /// encrypted. Returns its length.
    std::size_t appendPrivatePlain(Bytes& out) const;
    /// The same bytes, each byte of a charstring through both encryptions at
    /// once.
    std::size_t appendPrivate(Bytes& out) const;

    /// Upper bounds of what the functions above append.
    std::size_t clearSize() const;
    std::size_t privateSize() const;

 private:
    int entryCount() const;
    std::string_view nameOf(int code) const;

    const Type1Font& mFont;
};

}  // namespace Fonts

#endif
