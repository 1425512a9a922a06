// A glyph keeps what is drawn as it comes; the charstring is made when it is read.
//
// A command takes 4 bytes for each of its points and one more, which is what most
// take in a charstring; 8 for each point of a glyph with a coordinate that needs more
// than 16 bits. Encoding costs a third of its time where a whole font is read
// (private_cipher.h), and would cost all of it here.

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "fonts/charstring.h"
#include "fonts/outline.h"
#include "fonts/text_out.h"
#include "vaskel/fonts.h"

namespace Fonts {
namespace {

// Whether there is room between the last point and the next command for the points of
// that, and for what forms may read behind them.
bool hasRoom(const unsigned char* end, const unsigned char* top, std::ptrdiff_t number) {
    return top - end >= 6 * number + static_cast<std::ptrdiff_t>(kReadAhead);
}

// Whether numbers fit into 16 bits.
template <class... Number>
bool areNear(Number... number) {
    return ((static_cast<std::uint32_t>(number) + 0x8000u) | ...) < 0x10000u;
}

// Both numbers in one store, and each point in its own: made to eight bytes, they
// would wait for each other.
void setPoint(unsigned char* at, int x, int y) {
    std::uint32_t first = static_cast<std::uint16_t>(x), second = static_cast<std::uint16_t>(y);
    if constexpr (std::endian::native == std::endian::big) std::swap(first, second);
    const std::uint32_t both = first | second << 16;
    std::memcpy(at, &both, sizeof both);
}

// In 2 bytes or in 4.
void setNumber(unsigned char* at, int number, std::ptrdiff_t size) {
    const auto near = static_cast<std::int16_t>(number);
    if (size == 2)
        std::memcpy(at, &near, sizeof near);
    else
        std::memcpy(at, &number, sizeof number);
}

}  // namespace

Type1Glyph::Type1Glyph(std::string&& name)
    : mEnd(mFirst + 4),
      mFarEnd(nullptr),
      mTop(mFirst + kFirstRoom),
      mRoom(kFirstRoom),
      mWidth(0),
      mName(std::move(name)) {
    setPoint(mFirst, 0, 0);
}

Type1Glyph::Type1Glyph(const Type1Glyph& other) : Type1Glyph(std::string()) { *this = other; }

[[gnu::cold]] Type1Glyph& Type1Glyph::operator=(const Type1Glyph& other) {
    if (this == &other) return *this;
    std::unique_ptr<unsigned char[]> more;
    if (other.mRoom > mRoom) more.reset(new unsigned char[other.mRoom]);
    mName = other.mName;  // nothing fails from here on
    if (more) {
        mMore = std::move(more);
        mRoom = other.mRoom;
    }
    unsigned char* const end = std::copy(other.begin(), other.end(), begin());
    mTop = std::copy_backward(other.mTop, other.begin() + other.mRoom, begin() + mRoom);
    mEnd = other.mFarEnd == nullptr ? end : mTop;
    mFarEnd = other.mFarEnd == nullptr ? nullptr : end;
    mWidth = other.mWidth;
    return *this;
}

Type1Glyph::~Type1Glyph() = default;

unsigned char* Type1Glyph::begin() const {
    return mMore ? mMore.get() : const_cast<unsigned char*>(mFirst);
}

unsigned char* Type1Glyph::end() const { return mFarEnd != nullptr ? mFarEnd : mEnd; }

Outline Type1Glyph::outline() const {
    Outline outline;
    unsigned char* const room = begin();
    outline.behindSteps = room + mRoom;
    outline.stepCount = static_cast<std::size_t>(room + mRoom - mTop);
    if (mFarEnd == nullptr) {
        outline.points = reinterpret_cast<const std::int16_t*>(room) + 2;
        outline.pointCount = static_cast<std::size_t>(mEnd - room) / 4 - 1;
    } else {
        outline.farPoints = reinterpret_cast<const std::int32_t*>(room) + 2;
        outline.pointCount = static_cast<std::size_t>(mFarEnd - room) / 8 - 1;
    }
    return outline;
}

// Twice the room, and all points with numbers of 32 bits where wide.
void Type1Glyph::grow(bool wide) {
    const std::size_t room = 2 * mRoom;
    std::unique_ptr<unsigned char[]> more(new unsigned char[room]);
    unsigned char* to = more.get();
    if (wide && mFarEnd == nullptr) {
        for (const unsigned char* from = begin(); from != mEnd; from += 2, to += 4) {
            std::int16_t number;
            std::memcpy(&number, from, sizeof number);
            setNumber(to, number, 4);
        }
    } else {
        to = std::copy(begin(), end(), to);
    }
    mTop = std::copy_backward(mTop, begin() + mRoom, more.get() + room);
    mEnd = wide ? mTop : to;
    mFarEnd = wide ? to : nullptr;
    mMore = std::move(more);
    mRoom = room;
}

// A command happens whole or, where there is no memory for it, not at all: this one
// makes room, or lets points be far from now on.
[[gnu::noinline, gnu::cold]] void Type1Glyph::drawAnyhow(unsigned char step, const int* points,
                                                         std::size_t numbers) {
    const int* const behindPoints = points + numbers;
    const bool wide = mFarEnd != nullptr || !std::all_of(points, behindPoints, areNear<int>);
    const std::ptrdiff_t size = wide ? 4 : 2;
    if (wide != (mFarEnd != nullptr) || !hasRoom(end(), mTop - 1, size)) grow(wide);
    unsigned char* to = end();
    for (; points != behindPoints; ++points, to += size) setNumber(to, *points, size);
    (wide ? mFarEnd : mEnd) = to;
    *--mTop = step;
    if (wide) mEnd = mTop;
}

[[gnu::noinline, gnu::cold]] void Type1Glyph::pointAnyhow(int x, int y, unsigned char step) {
    const int points[] = {x, y};
    drawAnyhow(step, points, 2);
}

[[gnu::noinline, gnu::cold]] void Type1Glyph::curveAnyhow(int x1, int y1, int x2, int y2, int x3,
                                                          int y3) {
    const int points[] = {x1, y1, x2, y2, x3, y3};
    drawAnyhow(kCurveStep, points, 6);
}

// Both pointers are copied: what is written might otherwise be they themselves, for
// all the compiler knows.
inline void Type1Glyph::drawPoint(unsigned char step, int x, int y) {
    unsigned char* const at = mEnd;
    unsigned char* const top = mTop - 1;
    if (!areNear(x, y) || !hasRoom(at, top, 2)) [[unlikely]]
        return pointAnyhow(x, y, step);
    mEnd = at + 4;
    mTop = top;
    setPoint(at, x, y);
    *top = step;
}

void Type1Glyph::moveTo(int x, int y) { drawPoint(kMoveStep, x, y); }
void Type1Glyph::lineTo(int x, int y) { drawPoint(kLineStep, x, y); }

void Type1Glyph::curveTo(int x1, int y1, int x2, int y2, int x3, int y3) {
    unsigned char* const at = mEnd;
    unsigned char* const top = mTop - 1;
    if (!areNear(x1, y1, x2, y2, x3, y3) || !hasRoom(at, top, 2)) [[unlikely]]
        return curveAnyhow(x1, y1, x2, y2, x3, y3);
    mEnd = at + 12;
    mTop = top;
    setPoint(at, x1, y1);
    setPoint(at + 4, x2, y2);
    setPoint(at + 8, x3, y3);
    *top = kCurveStep;
}

void Type1Glyph::closePath() {
    unsigned char* const top = mTop - 1;
    if (!hasRoom(mEnd, top, 2)) [[unlikely]]
        return drawAnyhow(kCloseStep, nullptr, 0);
    mTop = top;
    *top = kCloseStep;
}

Rectangle Type1Glyph::getBoundingBox() const { return yDown(boxOf(outline())); }

// Lead, side bearing 0, width, hsbw: what goes before the outline.
std::size_t Type1Glyph::writeHead(unsigned char* out) const {
    unsigned char* end = std::copy(kCharstringLead, kCharstringLead + kLeadBytes, out);
    end = encodeNumber(end, 0);
    end = encodeNumber(end, mWidth);
    *end++ = kHsbw;
    return static_cast<std::size_t>(end - out);
}

[[gnu::cold]] void Type1Glyph::appendData(std::vector<unsigned char>& out) const {
    const Outline drawn = outline();
    std::vector<unsigned char> charstring(kHeadRoom + longestCharstring(drawn) + 1);
    unsigned char* const begin = charstring.data();
    unsigned char* end = encodePlain(begin + writeHead(begin), drawn);
    *end++ = kEndchar;
    const auto length = static_cast<std::size_t>(end - begin);
    Encryption(Encryption::kCharstringKey).encrypt(begin, length);

    appendText(out, "/");
    appendText(out, mName);
    appendText(out, " ");
    appendNumber(out, static_cast<long long>(length));
    appendText(out, " RD ");
    appendBytes(out, begin, length);
    appendText(out, " ND\n");
}

std::vector<unsigned char> Type1Glyph::getData() const {
    std::vector<unsigned char> data;
    appendData(data);
    return data;
}

}  // namespace Fonts
