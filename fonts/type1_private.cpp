// The private part of a font program: text and charstrings, the charstrings
// encrypted by themselves, all of it encrypted for eexec. "Adobe Type 1 Font
// Format", sections 2.3 and 7.1 to 7.3.

#include <algorithm>
#include <array>

#include "fonts/charstring.h"
#include "fonts/outline_forms.h"
#include "fonts/private_cipher.h"
#include "fonts/text_out.h"
#include "fonts/type1_program.h"

namespace Fonts {
namespace {

constexpr std::string_view kHead =
    "dup /Private 7 dict dup begin\n"
    "/RD {string currentfile exch readstring pop} executeonly def\n"
    "/ND {noaccess def} executeonly def\n"
    "/NP {noaccess put} executeonly def\n"
    "/BlueValues [] def\n"
    "/MinFeature {16 16} def\n"
    "/password 5839 def\n"
    "\n"  // programs compared byte by byte have this line
    "2 index /CharStrings ";
constexpr std::string_view kTail =
    "end\n"
    "end\n"
    "readonly put\n"
    "noaccess put\n"
    "dup /FontName get exch definefont pop\n"
    "mark currentfile closefile\n";

constexpr std::string_view kEntryEnd = " ND\n";

// An empty glyph of width 0, for every code without one.
constexpr std::string_view kNotdefEntry = "/.notdef 8 RD ";
constexpr unsigned char kNotdef[] = {'s', 'i', 'r', 'k', 139, 139, kHsbw, kEndchar};

// "/", " ", the length, " RD ", lead, side bearing, width, hsbw, endchar, " ND\n".
constexpr std::size_t kEntryFrame = 1 + 1 + 20 + 4 + kLeadBytes + 1 + kLongestNumber + 1 + 1 + 4;

// The count of entries and " dict dup begin\n".
constexpr std::size_t kCountFrame = 20 + 16;

// What every private part begins with, ready for use, and the key behind it.
struct ReadyHead {
    std::array<unsigned char, kLeadBytes + kHead.size()> cipher{};
    WideEncryption after{Encryption::kEexecKey};

    constexpr ReadyHead() {
        std::size_t at = 0;
        for (const unsigned char c : kEexecLead) cipher[at++] = after.encrypt(c);
        for (const char c : kHead) cipher[at++] = after.encrypt(static_cast<unsigned char>(c));
    }
};
constinit const ReadyHead kReadyHead;

constexpr auto kNotdefCipher = [] {
    std::array<unsigned char, sizeof kNotdef> cipher{};
    WideEncryption charstring(Encryption::kCharstringKey);
    std::transform(std::begin(kNotdef), std::end(kNotdef), cipher.begin(),
                   [&](unsigned char c) { return charstring.encrypt(c); });
    return cipher;
}();

// What every private part ends with, from the end of the last glyph's entry on.
constexpr auto kReadyTail = [] {
    std::array<unsigned char, kEntryEnd.size() + kNotdefEntry.size() + kNotdefCipher.size() +
                                  kEntryEnd.size() + kTail.size()>
        tail{};
    auto* at = std::copy(kEntryEnd.begin(), kEntryEnd.end(), tail.begin());
    at = std::copy(kNotdefEntry.begin(), kNotdefEntry.end(), at);
    at = std::copy(kNotdefCipher.begin(), kNotdefCipher.end(), at);
    at = std::copy(kEntryEnd.begin(), kEntryEnd.end(), at);
    std::copy(kTail.begin(), kTail.end(), at);
    return tail;
}();

// Byte by byte: the texts are short.
unsigned char* copyText(std::string_view text, unsigned char* out) {
    for (const char c : text) *out++ = static_cast<unsigned char>(c);
    return out;
}

// Writes the private part, encrypted for eexec.
class PrivateWriter {
 public:
    // size: of all between what is ready, as long as numbers of two bytes make it.
    explicit PrivateWriter(std::size_t size)
        : mSize(size + kReadyHead.cipher.size() + kReadyTail.size()),
          mBytes(new unsigned char[mSize]),
          mEnd{std::copy(kReadyHead.cipher.begin(), kReadyHead.cipher.end(), mBytes.get()),
               kReadyHead.after},
          mFast(outlineForm()) {}

    void text(Plain text) {
        makeRoom(text.size());
        encryptText(mEnd, text);
    }

    // Writes a charstring, and encodes next at out meanwhile.
    Encoded charstring(Plain charstring, const Outline& next, unsigned char* out) {
        makeRoom(charstring.size());
        return (next.points != nullptr ? mFast : encodeBesidePlain)(out, next, mEnd, charstring);
    }

    PrivatePart part(const BoxUnion& box) && {
        const std::size_t length = written();
        return {std::move(mBytes), length, box};
    }

 private:
    std::size_t written() const { return static_cast<std::size_t>(mEnd.at - mBytes.get()); }

    // Longer numbers need more room than was thought.
    void makeRoom(std::size_t count) {
        if (mSize - written() >= count) [[likely]]
            return;
        const std::size_t size = 2 * mSize + count;
        std::unique_ptr<unsigned char[]> more(new unsigned char[size]);
        mEnd.at = std::copy_n(mBytes.get(), written(), more.get());
        mBytes = std::move(more);
        mSize = size;
    }

    std::size_t mSize;
    std::unique_ptr<unsigned char[]> mBytes;
    PrivateEnd mEnd;
    EncodeBeside mFast;
};

}  // namespace

int Type1Program::entryCount() const {
    return 1 + static_cast<int>(
                   std::count_if(std::begin(mFont.mGlyphs), std::end(mFont.mGlyphs),
                                 [](const Type1Glyph* glyph) { return glyph != nullptr; }));
}

std::size_t Type1Program::appendPrivatePlain(Bytes& out) const {
    const std::size_t begin = out.size();
    appendBytes(out, kEexecLead, kLeadBytes);
    appendText(out, kHead);
    appendNumber(out, entryCount());
    appendText(out, " dict dup begin\n");
    for (const Type1Glyph* const glyph : mFont.mGlyphs)
        if (glyph) glyph->appendData(out);
    appendText(out, kNotdefEntry);
    const std::size_t notdef = out.size();
    appendBytes(out, kNotdef, sizeof kNotdef);
    Encryption(Encryption::kCharstringKey).encrypt(out.data() + notdef, sizeof kNotdef);
    appendText(out, " ND\n");
    appendText(out, kTail);
    const std::size_t length = out.size() - begin;
    Encryption(Encryption::kEexecKey).encrypt(out.data() + begin, length);
    return length;
}

PrivatePart Type1Program::makePrivate() const {
    std::size_t size = kCountFrame;
    std::size_t longest = kCountFrame;
    for (const Type1Glyph* const glyph : mFont.mGlyphs) {
        if (!glyph) continue;
        const Outline outline = glyph->outline();
        const std::size_t frame = kEntryFrame + glyph->mName.size();
        size += frame + 4 * outline.pointCount + outline.stepCount;
        longest = std::max(longest, frame + longestCharstring(outline) + kWriteAhead);
    }
    // Two places for charstrings, of which one is encrypted while the next is made. The
    // text before the latter stands behind it.
    const std::unique_ptr<unsigned char[]> places(new unsigned char[2 * longest]);
    unsigned char* place = places.get();
    unsigned char* other = place + longest;
    PrivateWriter writer(size);

    unsigned char* text = copyNumber(static_cast<std::size_t>(entryCount()), place);
    writer.text({place, copyText(" dict dup begin\n", text)});
    Plain charstring;
    BoxUnion box;
    for (const Type1Glyph* const glyph : mFont.mGlyphs) {
        if (!glyph) continue;
        std::swap(place, other);
        auto [behind, glyphBox] =
            writer.charstring(charstring, glyph->outline(), place + glyph->writeHead(place));
        *behind++ = kEndchar;
        text = behind;
        if (!charstring.empty()) behind = copyText(kEntryEnd, behind);
        charstring = {place, text};
        *behind++ = '/';
        behind = copyText(glyph->mName, behind);
        *behind++ = ' ';
        behind = copyText(" RD ", copyNumber(charstring.size(), behind));
        writer.text({text, behind});
        box.add(glyphBox);
    }
    writer.charstring(charstring, {}, nullptr);
    writer.text(Plain(kReadyTail).subspan(charstring.empty() ? kEntryEnd.size() : 0));
    return std::move(writer).part(box);
}

}  // namespace Fonts
