// A glyph's outline as an encoded charstring that grows with every command.

#include <algorithm>
#include <utility>

#include "fonts/charstring.h"
#include "fonts/text_out.h"
#include "util/narrow.h"
#include "vaskel/fonts.h"

namespace Fonts {
namespace {

// The difference of two coordinates does not wrap: it is limited when written.
std::int64_t delta(int to, int from) { return std::int64_t{to} - from; }

}  // namespace

Type1Glyph::Type1Glyph(std::string&& name)
    : mName(std::move(name)), mWidth(0), mCurrentX(0), mCurrentY(0), mBounds{0, 0, 0, 0} {}
Type1Glyph::Type1Glyph(const Type1Glyph& other) = default;
Type1Glyph& Type1Glyph::operator=(const Type1Glyph& other) {
    Type1Glyph copy(other);  // what may fail comes first
    std::swap(mName, copy.mName);
    std::swap(mOutline, copy.mOutline);
    mWidth = other.mWidth;
    mCurrentX = other.mCurrentX;
    mCurrentY = other.mCurrentY;
    mBounds = other.mBounds;
    return *this;
}
Type1Glyph::~Type1Glyph() = default;

// Makes sure that so many bytes can be appended without asking for memory, so
// that a command either happens whole or not at all.
void Type1Glyph::makeRoom(std::size_t bytes) {
    const std::size_t needed = mOutline.size() + bytes;
    if (needed > mOutline.capacity()) mOutline.reserve(std::max(needed, 2 * mOutline.capacity()));
}

void Type1Glyph::drawTo(int x, int y, unsigned char command) {
    unsigned char bytes[2 * kLongestNumber + 1];
    unsigned char* end = encodeNumber(bytes, delta(x, mCurrentX));
    end = encodeNumber(end, delta(y, mCurrentY));
    *end++ = command;
    makeRoom(static_cast<std::size_t>(end - bytes));
    updateBounds(x, y);
    mOutline.insert(mOutline.end(), bytes, end);
    mCurrentX = x;
    mCurrentY = y;
}

void Type1Glyph::moveTo(int x, int y) { drawTo(x, y, kRmoveto); }

void Type1Glyph::lineTo(int x, int y) { drawTo(x, y, kRlineto); }

void Type1Glyph::curveTo(int x1, int y1, int x2, int y2, int x3, int y3) {
    unsigned char bytes[6 * kLongestNumber + 1];
    unsigned char* end = encodeNumber(bytes, delta(x1, mCurrentX));
    end = encodeNumber(end, delta(y1, mCurrentY));
    end = encodeNumber(end, delta(x2, x1));
    end = encodeNumber(end, delta(y2, y1));
    end = encodeNumber(end, delta(x3, x2));
    end = encodeNumber(end, delta(y3, y2));
    *end++ = kRrcurveto;
    makeRoom(static_cast<std::size_t>(end - bytes));
    // While the outline is empty each of the three seeds the box anew.
    updateBounds(x1, y1);
    updateBounds(x2, y2);
    updateBounds(x3, y3);
    mOutline.insert(mOutline.end(), bytes, end);
    mCurrentX = x3;
    mCurrentY = y3;
}

void Type1Glyph::closePath() { mOutline.push_back(kClosepath); }

void Type1Glyph::updateBounds(int x, int y) {
    const std::int32_t down = Vaskel::clamp32(-std::int64_t{y});
    if (mOutline.empty()) {
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
    const std::size_t length = headLength + mOutline.size() + 1;

    appendText(out, "/");
    appendText(out, mName);
    appendText(out, " ");
    appendNumber(out, static_cast<long long>(length));
    appendText(out, " RD ");
    const std::size_t begin = out.size();
    out.insert(out.end(), head, head + headLength);
    out.insert(out.end(), mOutline.begin(), mOutline.end());
    out.push_back(kEndchar);
    Encryption(Encryption::kCharstringKey).encrypt(out.data() + begin, length);
    appendText(out, " ND\n");
}

std::vector<unsigned char> Type1Glyph::getData() const {
    std::vector<unsigned char> data;
    data.reserve(mName.size() + mOutline.size() + 48);
    appendData(data);
    return data;
}

}  // namespace Fonts
