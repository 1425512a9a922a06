// A glyph's outline as an encoded charstring that grows with every command.

#include <algorithm>
#include <utility>

#include "fonts/charstring.h"
#include "fonts/text_out.h"
#include "util/narrow.h"
#include "vaskel/fonts.h"

namespace Fonts {

Type1Glyph::Type1Glyph(std::string&& name)
    : mName(std::move(name)),
      mOutline(mFirst),
      mCapacity(sizeof mFirst),
      mLength(0),
      mWidth(0),
      mAt{0, 0},
      mBox{0, 0, 0, 0} {}

Type1Glyph::Type1Glyph(const Type1Glyph& other) : Type1Glyph(std::string()) { *this = other; }

[[gnu::cold]] Type1Glyph& Type1Glyph::operator=(const Type1Glyph& other) {
    if (this == &other) return *this;
    makeRoom(other.mLength);  // what may fail comes first
    mName = other.mName;
    std::copy_n(other.mOutline, other.mLength, mOutline);
    mLength = other.mLength;
    mWidth = other.mWidth;
    std::copy(std::begin(other.mAt), std::end(other.mAt), mAt);
    std::copy(std::begin(other.mBox), std::end(other.mBox), mBox);
    return *this;
}

Type1Glyph::~Type1Glyph() = default;

[[gnu::noinline]] void Type1Glyph::makeRoom(std::size_t bytes) {
    if (mCapacity - mLength >= bytes) [[likely]]
        return;
    const std::size_t capacity = std::max(2 * mCapacity, mLength + bytes);
    std::unique_ptr<unsigned char[]> more(new unsigned char[capacity]);
    std::copy_n(mOutline, mLength, more.get());
    mMore = std::move(more);
    mOutline = mMore.get();
    mCapacity = capacity;
}

void Type1Glyph::closePath() {
    makeRoom(1);
    mOutline[mLength++] = kClosepath;
}

// In a frame whose y axis points down.
Rectangle Type1Glyph::getBoundingBox() const {
    return {Vaskel::clamp32(-std::int64_t{mBox[3]}), mBox[0],
            Vaskel::clamp32(-std::int64_t{mBox[1]}), mBox[2]};
}

// Lead, side bearing 0, width, hsbw: what goes before the outline.
std::size_t Type1Glyph::writeHead(unsigned char* out) const {
    unsigned char* end = std::copy(kCharstringLead, kCharstringLead + kLeadBytes, out);
    end = encodeNumber(end, 0);
    end = encodeNumber(end, mWidth);
    *end++ = kHsbw;
    return static_cast<std::size_t>(end - out);
}

[[gnu::cold]] void Type1Glyph::appendData(std::vector<unsigned char>& out) const {
    unsigned char head[kHeadRoom];
    const std::size_t headLength = writeHead(head);
    const std::size_t length = headLength + mLength + 1;

    appendText(out, "/");
    appendText(out, mName);
    appendText(out, " ");
    appendNumber(out, static_cast<long long>(length));
    appendText(out, " RD ");
    const std::size_t begin = out.size();
    appendBytes(out, head, headLength);
    appendBytes(out, mOutline, mLength);
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
