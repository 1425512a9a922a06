// A glyph's outline as an encoded charstring that grows with every command.

#include <algorithm>
#include <utility>

#include "fonts/charstring.h"
#include "fonts/text_out.h"
#include "util/narrow.h"
#include "vaskel/fonts.h"

namespace Fonts {
namespace {

// Most glyphs of text fonts fit in, few are much shorter.
constexpr std::size_t kFirstBytes = 256;

// The difference of two coordinates does not wrap: it is limited when written.
std::int64_t delta(int to, int from) { return std::int64_t{to} - from; }

}  // namespace

Type1Glyph::Type1Glyph(std::string&& name)
    : mName(std::move(name)),
      mLength(0),
      mWidth(0),
      mCurrentX(0),
      mCurrentY(0),
      mBounds{0, 0, 0, 0} {}
Type1Glyph::Type1Glyph(const Type1Glyph& other) = default;
Type1Glyph& Type1Glyph::operator=(const Type1Glyph& other) {
    Type1Glyph copy(other);  // what may fail comes first
    std::swap(mName, copy.mName);
    std::swap(mOutline, copy.mOutline);
    mLength = other.mLength;
    mWidth = other.mWidth;
    mCurrentX = other.mCurrentX;
    mCurrentY = other.mCurrentY;
    mBounds = other.mBounds;
    return *this;
}
Type1Glyph::~Type1Glyph() = default;

// Where a command of up to so many bytes can be written, so that it either
// happens whole or not at all.
unsigned char* Type1Glyph::room(std::size_t bytes) {
    if (mOutline.size() - mLength < bytes) [[unlikely]]
        mOutline.resize(std::max(kFirstBytes, 2 * mOutline.size()));
    return mOutline.data() + mLength;
}

void Type1Glyph::updateBounds(int x, int y) {
    const std::int32_t down = Vaskel::clamp32(-std::int64_t{y});
    if (mLength == 0) {
        // Not (down, x, down, x): callers store these boxes, so the seed stays
        // as it is. Test: "glyph box: a first point off the diagonal keeps its
        // seed".
        mBounds = {down, x, Vaskel::clamp32(-std::int64_t{x}), y};
        return;
    }
    if (down < mBounds.top) mBounds.top = down;
    if (down > mBounds.bottom) mBounds.bottom = down;
    if (x < mBounds.left) mBounds.left = x;
    if (x > mBounds.right) mBounds.right = x;
}

void Type1Glyph::drawTo(int x, int y, unsigned char command) {
    unsigned char* const begin = room(2 * kLongestNumber + 1);
    unsigned char* end = encodeNumberFast(begin, delta(x, mCurrentX));
    end = encodeNumberFast(end, delta(y, mCurrentY));
    *end++ = command;
    updateBounds(x, y);
    mLength += static_cast<std::size_t>(end - begin);
    mCurrentX = x;
    mCurrentY = y;
}

void Type1Glyph::moveTo(int x, int y) { drawTo(x, y, kRmoveto); }

void Type1Glyph::lineTo(int x, int y) { drawTo(x, y, kRlineto); }

void Type1Glyph::curveTo(int x1, int y1, int x2, int y2, int x3, int y3) {
    unsigned char* const begin = room(6 * kLongestNumber + 1);
    unsigned char* end = encodeNumberFast(begin, delta(x1, mCurrentX));
    end = encodeNumberFast(end, delta(y1, mCurrentY));
    end = encodeNumberFast(end, delta(x2, x1));
    end = encodeNumberFast(end, delta(y2, y1));
    end = encodeNumberFast(end, delta(x3, x2));
    end = encodeNumberFast(end, delta(y3, y2));
    *end++ = kRrcurveto;
    // While the outline is empty each of the three seeds the box anew.
    updateBounds(x1, y1);
    updateBounds(x2, y2);
    updateBounds(x3, y3);
    mLength += static_cast<std::size_t>(end - begin);
    mCurrentX = x3;
    mCurrentY = y3;
}

void Type1Glyph::closePath() {
    *room(1) = kClosepath;
    ++mLength;
}

Rectangle Type1Glyph::getBoundingBox() const { return mBounds; }

// Lead, side bearing 0, width, hsbw: what goes before the outline.
std::size_t Type1Glyph::writeHead(unsigned char* out) const {
    unsigned char* end = std::copy(kCharstringLead, kCharstringLead + kLeadBytes, out);
    end = encodeNumber(end, 0);
    end = encodeNumber(end, mWidth);
    *end++ = kHsbw;
    return static_cast<std::size_t>(end - out);
}

void Type1Glyph::appendData(std::vector<unsigned char>& out) const {
    unsigned char head[kHeadRoom];
    const std::size_t headLength = writeHead(head);
    const std::size_t length = headLength + mLength + 1;

    appendText(out, "/");
    appendText(out, mName);
    appendText(out, " ");
    appendNumber(out, static_cast<long long>(length));
    appendText(out, " RD ");
    const std::size_t begin = out.size();
    out.insert(out.end(), head, head + headLength);
    out.insert(out.end(), mOutline.data(), mOutline.data() + mLength);
    out.push_back(kEndchar);
    Encryption(Encryption::kCharstringKey).encrypt(out.data() + begin, length);
    appendText(out, " ND\n");
}

std::vector<unsigned char> Type1Glyph::getData() const {
    std::vector<unsigned char> data;
    data.reserve(mName.size() + mLength + 48);
    appendData(data);
    return data;
}

}  // namespace Fonts
