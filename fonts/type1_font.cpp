// A font's glyphs and numbers; type1_program.cpp makes the program of them.

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include "fonts/standard_names.h"
#include "fonts/type1_program.h"
#include "platform/orlune.h"
#include "vaskel/fonts.h"

namespace Fonts {
namespace {

constexpr int kBase14Fonts = 14;

std::string glyphName(unsigned char code, const std::string& given, bool standard) {
    if (standard && !standardName(code).empty()) return std::string(standardName(code));
    if (given.empty()) return "AC" + std::to_string(code);
    std::string name = given;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
}

}  // namespace

// Room for a few glyphs: a font of 256 takes and gives back 32 blocks, and one of a few
// at most seven glyphs that it does not need.
struct Type1Font::GlyphBlock {
    static constexpr std::size_t kCount = 8;

    std::unique_ptr<GlyphBlock> before;
    std::size_t used = 0;
    alignas(Type1Glyph) unsigned char room[kCount][sizeof(Type1Glyph)];

    explicit GlyphBlock(std::unique_ptr<GlyphBlock>&& blocks) : before(std::move(blocks)) {}
    ~GlyphBlock() {
        while (used != 0)
            std::launder(reinterpret_cast<Type1Glyph*>(room[--used]))->Type1Glyph::~Type1Glyph();
    }
    GlyphBlock(const GlyphBlock&) = delete;
    GlyphBlock& operator=(const GlyphBlock&) = delete;
};

Type1Font::Type1Font(std::string&& name)
    : mName(std::move(name)),
      mHeaderLength(0),
      mCharProcsLength(0),
      mZeroesLength(0),
      mGlyphs{},
      mWidths{},
      mAscent(0),
      mDescent(0),
      mCapHeight(0),
      mMacRomanEncoding(false) {}
Type1Font::~Type1Font() = default;

bool Type1Font::addChar(unsigned char code, const std::string& name) {
    if (mGlyphs[code]) return false;
    std::string own = glyphName(code, name, mMacRomanEncoding);
    if (!mBlocks || mBlocks->used == GlyphBlock::kCount) {
        // In two steps: a block that there is no memory for must not take the others along.
        void* const memory = ::operator new(sizeof(GlyphBlock));
        mBlocks.reset(new (memory) GlyphBlock(std::move(mBlocks)));
    }
    auto* const glyph = new (mBlocks->room[mBlocks->used++]) Type1Glyph(std::move(own));
    glyph->mWidth = mWidths[code];
    mGlyphs[code] = glyph;
    mData.clear();
    return true;
}

Type1Glyph* Type1Font::editChar(unsigned char code) {
    mData.clear();
    return mGlyphs[code];
}

bool Type1Font::hasChar(unsigned char code) const { return mGlyphs[code] != nullptr; }

void Type1Font::setCharWidth(unsigned char code, int width) {
    mWidths[code] = width;
    if (mGlyphs[code]) mGlyphs[code]->mWidth = width;
}

int Type1Font::getCharWidth(unsigned char code) const { return mWidths[code]; }

void Type1Font::setAscent(int ascent) { mAscent = ascent; }
void Type1Font::setDescent(int descent) { mDescent = descent; }
void Type1Font::setCapHeight(int capHeight) { mCapHeight = capHeight; }
int Type1Font::getAscent() const { return mAscent; }
int Type1Font::getDescent() const { return mDescent; }
int Type1Font::getCapHeight() const { return mCapHeight; }

void Type1Font::setMacRomanEncoding(bool on) { mMacRomanEncoding = on; }

std::string Type1Font::getCharEncoding(unsigned char code) const {
    return mGlyphs[code] ? mGlyphs[code]->mName : ".notdef";
}

const char* Type1Font::getName() const { return mName.c_str(); }

Rectangle Type1Font::getBoundingBox() const {
    BoxUnion box;
    for (const Type1Glyph* const glyph : mGlyphs)
        if (glyph) box.add(boxOf(glyph->outline()));
    return box.box();
}

bool Type1Font::isBase14Font(const char* const* names) const {
    return std::any_of(names, names + kBase14Fonts, [this](const char* name) {
        return Orlune::strcom(mName.c_str(), name) == 0;
    });
}

const std::vector<unsigned char>& Type1Font::getData() const {
    if (mData.empty()) buildFont();
    return mData;
}

const std::vector<unsigned char>& Type1Font::getPSData(bool explicitEncoding) const {
    if (mData.empty()) buildPSFont(explicitEncoding);
    return mData;
}

int Type1Font::getLength() const { return static_cast<int>(getData().size()); }

int Type1Font::getHeaderLength() const {
    getData();
    return mHeaderLength;
}

int Type1Font::getCharProcsLength() const {
    getData();
    return mCharProcsLength;
}

int Type1Font::getZeroesLength() const {
    getData();
    return mZeroesLength;
}

}  // namespace Fonts
