// The private part of a font program: text and charstrings, the charstrings
// encrypted by themselves, all of it encrypted for eexec. "Adobe Type 1 Font
// Format", sections 2.3 and 7.1 to 7.3.

#include <algorithm>
#include <array>
#include <charconv>

#include "fonts/charstring.h"
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

// An empty glyph of width 0, for every code without one.
constexpr std::string_view kNotdefEntry = "/.notdef 8 RD ";
constexpr unsigned char kNotdef[] = {'s', 'i', 'r', 'k', 139, 139, kHsbw, kEndchar};

// "/", " ", the length, " RD ", lead, side bearing, width, hsbw, endchar, " ND\n".
constexpr std::size_t kEntryFrame = 1 + 1 + 20 + 4 + kLeadBytes + 1 + kLongestNumber + 1 + 1 + 4;

// Encryption with the key in the upper half of a word: no masks, and one
// multiplication instead of two between a byte and the next. Same bytes: with
// K = r * 2^16, K >> 24 is r >> 8, and modulo 2^32
//   cipher * (c1 * 2^16) + (K * c1 + c2 * 2^16) = ((cipher + r) * c1 + c2) * 2^16.
class WideEncryption {
 public:
    explicit constexpr WideEncryption(std::uint16_t key) : mKey(std::uint32_t{key} << 16) {}

    constexpr unsigned char encrypt(unsigned char plain) {
        const std::uint32_t cipher = plain ^ (mKey >> 24);
        mKey = cipher * (52845u << 16) + (mKey * 52845u + (22719u << 16));
        return static_cast<unsigned char>(cipher);
    }

 private:
    std::uint32_t mKey;
};

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
constexpr ReadyHead kReadyHead;

constexpr auto kNotdefCipher = [] {
    std::array<unsigned char, sizeof kNotdef> cipher{};
    WideEncryption charstring(Encryption::kCharstringKey);
    std::transform(std::begin(kNotdef), std::end(kNotdef), cipher.begin(),
                   [&](unsigned char c) { return charstring.encrypt(c); });
    return cipher;
}();

// Writes the private part, encrypted for eexec, into memory of sufficient size.
class PrivateWriter {
 public:
    explicit PrivateWriter(unsigned char* at)
        : mAt(std::copy(kReadyHead.cipher.begin(), kReadyHead.cipher.end(), at)),
          mEexec(kReadyHead.after) {}

    // Not inline: a byte waits for the one before for so long that a call costs
    // nothing. The state is copied, as in charstring.
    [[gnu::noinline]] void text(std::string_view text) {
        WideEncryption key = mEexec;
        unsigned char* at = mAt;
        for (const char c : text) *at++ = key.encrypt(static_cast<unsigned char>(c));
        mEexec = key;
        mAt = at;
    }
    void number(std::size_t value) {
        char digits[20];
        text({digits, std::to_chars(digits, digits + sizeof digits, value).ptr});
    }
    void bytes(const unsigned char* from, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) *mAt++ = mEexec.encrypt(from[i]);
    }
    // The two encryptions wait for each other only at their beginning, so a
    // byte takes the time of one. The writer's state is copied: what is written
    // might otherwise be the state itself, for all the compiler knows.
    [[gnu::noinline]] void charstring(WideEncryption& key, const unsigned char* from,
                                      std::size_t count) {
        WideEncryption inner = key, outer = mEexec;
        unsigned char* at = mAt;
        for (std::size_t i = 0; i < count; ++i) at[i] = outer.encrypt(inner.encrypt(from[i]));
        key = inner;
        mEexec = outer;
        mAt = at + count;
    }

    unsigned char* end() const { return mAt; }

 private:
    unsigned char* mAt;
    WideEncryption mEexec;
};

}  // namespace

std::size_t Type1Program::privateSize() const {
    std::size_t size = kReadyHead.cipher.size() + kTail.size() + 40 + kEntryFrame;
    for (const auto& glyph : mFont.mGlyphs)
        if (glyph) size += kEntryFrame + glyph->mName.size() + glyph->mLength;
    return size;
}

int Type1Program::entryCount() const {
    return 1 + static_cast<int>(std::count_if(std::begin(mFont.mGlyphs), std::end(mFont.mGlyphs),
                                              [](const auto& glyph) { return glyph != nullptr; }));
}

std::size_t Type1Program::appendPrivatePlain(Bytes& out) const {
    const std::size_t begin = out.size();
    appendBytes(out, kEexecLead, kLeadBytes);
    appendText(out, kHead);
    appendNumber(out, entryCount());
    appendText(out, " dict dup begin\n");
    for (const auto& glyph : mFont.mGlyphs)
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

std::size_t Type1Program::appendPrivate(Bytes& out) const {
    const std::size_t begin = out.size();
    out.resize(begin + privateSize());
    PrivateWriter writer(out.data() + begin);
    writer.number(static_cast<std::size_t>(entryCount()));
    writer.text(" dict dup begin\n");
    for (const auto& glyph : mFont.mGlyphs) {
        if (!glyph) continue;
        unsigned char head[Type1Glyph::kHeadRoom];
        const std::size_t headLength = glyph->writeHead(head);
        const unsigned char endchar = kEndchar;
        writer.text("/");
        writer.text(glyph->mName);
        writer.text(" ");
        writer.number(headLength + glyph->mLength + 1);
        writer.text(" RD ");
        WideEncryption key(Encryption::kCharstringKey);
        writer.charstring(key, head, headLength);
        writer.charstring(key, glyph->mOutline, glyph->mLength);
        writer.charstring(key, &endchar, 1);
        writer.text(" ND\n");
    }
    writer.text(kNotdefEntry);
    writer.bytes(kNotdefCipher.data(), kNotdefCipher.size());
    writer.text(" ND\n");
    writer.text(kTail);
    const auto length = static_cast<std::size_t>(writer.end() - (out.data() + begin));
    out.resize(begin + length);
    return length;
}

}  // namespace Fonts
