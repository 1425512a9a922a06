// The font program: clear text, encrypted private part, trailer. "Adobe Type 1
// Font Format", chapter 2.

#include "fonts/type1_program.h"

#include "fonts/text_out.h"
#include "util/narrow.h"

namespace Fonts {
namespace {

constexpr std::string_view kStartEexec = "currentfile eexec\n";
constexpr std::size_t kTrailerSize = 8 * 65 + 40;

// Eight lines of 64 zeros, which eexec may read ahead into.
[[gnu::cold]] void appendZeros(Type1Program::Bytes& out) {
    for (int line = 0; line < 8; ++line)
        appendText(out, "0000000000000000000000000000000000000000000000000000000000000000\n");
}

}  // namespace

std::string_view Type1Program::nameOf(int code) const {
    const Type1Glyph* const glyph = mFont.mGlyphs[code];
    return glyph ? std::string_view(glyph->mName) : ".notdef";
}

[[gnu::cold]] void Type1Program::appendHeader(Bytes& out, const Rectangle& box) const {
    appendText(out, "%!FontType1-1.0: ");
    appendText(out, mFont.mName);
    appendText(out, " 1.0\n10 dict begin\n/FontName /");
    appendText(out, mFont.mName);
    appendText(out,
               " def\n"
               "/PaintType 0 def\n"
               "/FontType 1 def\n"
               "/FontMatrix [0.001 0 0 0.001 0 0] readonly def\n"
               "/FontBBox [");
    // From the y-down frame to smallest x, smallest y, largest x, largest y.
    appendNumber(out, box.left);
    appendText(out, " ");
    appendNumber(out, Vaskel::clamp32(-std::int64_t{box.bottom}));
    appendText(out, " ");
    appendNumber(out, box.right);
    appendText(out, " ");
    appendNumber(out, Vaskel::clamp32(-std::int64_t{box.top}));
    appendText(out, "] readonly def\n");
}

void Type1Program::appendEncodingArray(Bytes& out) const {
    appendText(out, "/Encoding [");
    const std::size_t begin = out.size();
    std::size_t size = 256 * 2;
    for (int code = 0; code < 256; ++code) size += nameOf(code).size();
    out.resize(begin + size);
    unsigned char* at = out.data() + begin;
    for (int code = 0; code < 256; ++code) {
        *at++ = '/';
        for (const char c : nameOf(code)) *at++ = static_cast<unsigned char>(c);
        *at++ = code % 8 == 7 ? '\n' : ' ';
    }
    appendText(out, "] readonly def\n");
}

// The line breaks come after the 7th, 15th ... entry, one earlier than in the
// array of the embedding form: sent fonts are compared byte by byte, so they
// stay there. Test: "font: lines of the spelled-out encoding end after the 7th
// and every 8th entry then".
[[gnu::cold]] void Type1Program::appendExplicitEncoding(Bytes& out) const {
    appendText(out,
               "/Encoding 256 array\n"
               "0 1 255{1 index exch/.notdef put}for\n");
    int written = 0;
    for (int code = 0; code < 256; ++code) {
        const std::string_view name = nameOf(code);
        if (name == ".notdef") continue;
        appendText(out, "dup ");
        appendNumber(out, code);
        appendText(out, " /");
        appendText(out, name);
        appendText(out, " put");
        appendText(out, ++written % 8 == 7 ? "\n" : " ");
    }
    appendText(out, "\nreadonly def\n");
}

std::size_t Type1Program::clearSize() const {
    // An entry of either encoding is its name and at most 14 bytes; the texts
    // around are below 600, the numbers below 100.
    std::size_t size = 2 * mFont.mName.size() + 700;
    for (int code = 0; code < 256; ++code) size += nameOf(code).size() + 14;
    return size;
}

void Type1Font::buildFont() const {
    const Type1Program program(*this);
    const PrivatePart cipher = program.makePrivate();
    Type1Program::Bytes data;
    data.reserve(program.clearSize() + cipher.length + kTrailerSize);
    program.appendHeader(data, cipher.box.box());
    program.appendEncodingArray(data);
    appendText(data, "currentdict end\n");
    appendText(data, kStartEexec);
    const std::size_t header = data.size();
    appendBytes(data, cipher.bytes.get(), cipher.length);
    appendZeros(data);
    appendText(data, "cleartomark\n");

    mHeaderLength = static_cast<std::int32_t>(header);
    mCharProcsLength = static_cast<std::int32_t>(cipher.length);
    mZeroesLength = static_cast<std::int32_t>(data.size() - header - cipher.length);
    mData = std::move(data);
}

[[gnu::cold]] void Type1Font::buildPSFont(bool explicitEncoding) const {
    const Type1Program program(*this);
    const PrivatePart cipher = program.makePrivate();
    Type1Program::Bytes data;
    data.reserve(program.clearSize() + cipher.length + kTrailerSize);
    program.appendHeader(data, cipher.box.box());
    if (explicitEncoding)
        program.appendExplicitEncoding(data);
    else
        appendText(data, "/Encoding userdict /DravixEncoding get readonly def\n");
    appendText(data, "currentdict end\n%%BeginBinary: ");
    // The count covers the eexec line, the cipher and one line end, not the
    // zeros behind it: spoolers that know these files expect it so.
    appendNumber(data, static_cast<long long>(cipher.length + kStartEexec.size() + 1));
    appendText(data, "\n");
    appendText(data, kStartEexec);
    const std::size_t header = data.size();
    appendBytes(data, cipher.bytes.get(), cipher.length);
    appendZeros(data);
    appendText(data, "\n%%EndBinary\n\ncleartomark\n");

    mHeaderLength = static_cast<std::int32_t>(header);
    mCharProcsLength = static_cast<std::int32_t>(cipher.length);
    mZeroesLength = static_cast<std::int32_t>(data.size() - header - cipher.length);
    mData = std::move(data);
}

}  // namespace Fonts
