// The font program: clear text, encrypted private part, trailer. "Adobe Type 1
// Font Format", chapters 2 and 7.

#include <algorithm>

#include "fonts/charstring.h"
#include "fonts/text_out.h"
#include "util/narrow.h"
#include "vaskel/fonts.h"

namespace Fonts {
namespace {

using Bytes = std::vector<unsigned char>;
using GlyphSlots = const std::unique_ptr<Type1Glyph>[256];

constexpr std::string_view kPrivateHead =
    "dup /Private 7 dict dup begin\n"
    "/RD {string currentfile exch readstring pop} executeonly def\n"
    "/ND {noaccess def} executeonly def\n"
    "/NP {noaccess put} executeonly def\n"
    "/BlueValues [] def\n"
    "/MinFeature {16 16} def\n"
    "/password 5839 def\n"
    "\n"  // programs compared byte by byte have this line
    "2 index /CharStrings ";
constexpr std::string_view kPrivateTail =
    "end\n"
    "end\n"
    "readonly put\n"
    "noaccess put\n"
    "dup /FontName get exch definefont pop\n"
    "mark currentfile closefile\n";
constexpr std::string_view kStartEexec = "currentfile eexec\n";

void appendHeader(Bytes& out, const std::string& name, const Rectangle& box) {
    appendText(out, "%!FontType1-1.0: ");
    appendText(out, name);
    appendText(out, " 1.0\n10 dict begin\n/FontName /");
    appendText(out, name);
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

// Eight lines of 64 zeros, which eexec may read ahead into.
void appendZeros(Bytes& out) {
    for (int line = 0; line < 8; ++line) {
        out.insert(out.end(), 64, '0');
        out.push_back('\n');
    }
}

// An empty glyph of width 0, for every code without one.
void appendNotdef(Bytes& out) {
    unsigned char charstring[] = {'s', 'i', 'r', 'k', 139, 139, kHsbw, kEndchar};
    Encryption(Encryption::kCharstringKey).encrypt(charstring, sizeof charstring);
    appendText(out, "/.notdef 8 RD ");
    out.insert(out.end(), charstring, charstring + sizeof charstring);
    appendText(out, " ND\n");
}

}  // namespace

// What the two forms share, and access to the glyphs.
class Type1Program {
 public:
    explicit Type1Program(GlyphSlots& glyphs) : mGlyphs(glyphs) {}

    std::string_view nameOf(int code) const {
        return mGlyphs[code] ? std::string_view(mGlyphs[code]->mName) : ".notdef";
    }

    // All names in code order, eight a line.
    void appendEncodingArray(Bytes& out) const {
        appendText(out, "/Encoding [");
        for (int code = 0; code < 256; ++code) {
            appendText(out, "/");
            appendText(out, nameOf(code));
            appendText(out, code % 8 == 7 ? "\n" : " ");
        }
        appendText(out, "] readonly def\n");
    }

    // One entry a glyph that has a name of its own. The line breaks come after
    // the 7th, 15th ... entry, one earlier than in the array of the embedding
    // form: sent fonts are compared byte by byte, so they stay there.
    void appendExplicitEncoding(Bytes& out) const {
        appendText(out,
                   "/Encoding 256 array\n"
                   "0 1 255{1 index exch/.notdef put}for\n");
        int written = 0;
        for (int code = 0; code < 256; ++code) {
            if (!mGlyphs[code] || mGlyphs[code]->mName == ".notdef") continue;
            appendText(out, "dup ");
            appendNumber(out, code);
            appendText(out, " /");
            appendText(out, mGlyphs[code]->mName);
            appendText(out, " put");
            appendText(out, ++written % 8 == 7 ? "\n" : " ");
        }
        appendText(out, "\nreadonly def\n");
    }

    // The private part, encrypted; returns its length.
    std::size_t appendPrivate(Bytes& out) const {
        const std::size_t begin = out.size();
        out.insert(out.end(), kEexecLead, kEexecLead + kLeadBytes);
        appendText(out, kPrivateHead);
        appendNumber(out, 1 + std::count_if(mGlyphs, mGlyphs + 256,
                                            [](const auto& glyph) { return glyph != nullptr; }));
        appendText(out, " dict dup begin\n");
        for (const auto& glyph : mGlyphs)
            if (glyph) glyph->appendData(out);
        appendNotdef(out);
        appendText(out, kPrivateTail);
        const std::size_t length = out.size() - begin;
        Encryption(Encryption::kEexecKey).encrypt(out.data() + begin, length);
        return length;
    }

    // An upper bound of the program's size for outlines as they are.
    std::size_t expectedSize(const std::string& name) const {
        std::size_t size = 2 * name.size() + 2000;
        for (const auto& glyph : mGlyphs)
            size += glyph ? 2 * glyph->mName.size() + glyph->mOutline.size() + 64 : 10;
        return size;
    }

 private:
    GlyphSlots& mGlyphs;
};

void Type1Font::buildFont() const {
    const Type1Program program(mGlyphs);
    Bytes data;
    data.reserve(program.expectedSize(mName));
    appendHeader(data, mName, getBoundingBox());
    program.appendEncodingArray(data);
    appendText(data, "currentdict end\n");
    appendText(data, kStartEexec);
    const std::size_t header = data.size();
    const std::size_t charProcs = program.appendPrivate(data);
    appendZeros(data);
    appendText(data, "cleartomark\n");

    mHeaderLength = static_cast<std::int32_t>(header);
    mCharProcsLength = static_cast<std::int32_t>(charProcs);
    mZeroesLength = static_cast<std::int32_t>(data.size() - header - charProcs);
    mData = std::move(data);
}

void Type1Font::buildPSFont(bool explicitEncoding) const {
    const Type1Program program(mGlyphs);
    Bytes cipher;
    cipher.reserve(program.expectedSize(mName));
    program.appendPrivate(cipher);

    Bytes data;
    data.reserve(cipher.size() + program.expectedSize(mName));
    appendHeader(data, mName, getBoundingBox());
    if (explicitEncoding)
        program.appendExplicitEncoding(data);
    else
        appendText(data, "/Encoding userdict /DravixEncoding get readonly def\n");
    appendText(data, "currentdict end\n%%BeginBinary: ");
    // The count covers the eexec line, the cipher and one line end, not the
    // zeros behind it: spoolers that know these files expect it so.
    appendNumber(data, static_cast<long long>(cipher.size() + kStartEexec.size() + 1));
    appendText(data, "\n");
    appendText(data, kStartEexec);
    const std::size_t header = data.size();
    data.insert(data.end(), cipher.begin(), cipher.end());
    appendZeros(data);
    appendText(data, "\n%%EndBinary\n\ncleartomark\n");

    mHeaderLength = static_cast<std::int32_t>(header);
    mCharProcsLength = static_cast<std::int32_t>(cipher.size());
    mZeroesLength = static_cast<std::int32_t>(data.size() - header - cipher.size());
    mData = std::move(data);
}

}  // namespace Fonts
