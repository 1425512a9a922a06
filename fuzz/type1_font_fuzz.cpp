// Fonts drawn by the input: all forms of encoding outlines and of the private part are
// equal, undoing both encryptions and reading the numbers back gives what was drawn.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fonts/outline_forms.h"
#include "fonts/type1_program.h"
#include "vaskel/fonts.h"

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

// Takes the input apart; zeros behind its end.
class Input {
 public:
    Input(const std::uint8_t* data, std::size_t size) : mAt(data), mLeft(size) {}
    bool empty() const { return mLeft == 0; }
    int byte() {
        if (mLeft == 0) return 0;
        --mLeft;
        return *mAt++;
    }
    int coordinate() {  // mostly small, now and then anything
        const int kind = byte();
        if (kind < 160) return kind - 80;
        if (kind < 240) return (kind - 200) * 256 + byte();
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i) value = value << 8 | static_cast<std::uint32_t>(byte());
        return static_cast<int>(value);
    }

 private:
    const std::uint8_t* mAt;
    std::size_t mLeft;
};

int limited(std::int64_t difference) {
    if (difference >= -1131 && difference <= 1131) return static_cast<int>(difference);
    return static_cast<int>(std::clamp<std::int64_t>(difference, -31999, 31999));
}

std::string decrypted(std::string cipher, unsigned key) {
    for (char& c : cipher) {
        const unsigned byte = static_cast<unsigned char>(c);
        c = static_cast<char>(byte ^ (key >> 8));
        key = ((byte + key) * 52845u + 22719u) & 0xFFFFu;
    }
    return cipher.substr(4);
}

// A charstring's numbers and commands, commands from 10000000 on.
std::vector<int> tokens(const std::string& charstring) {
    std::vector<int> found;
    const auto at = [&](std::size_t i) { return static_cast<unsigned char>(charstring.at(i)); };
    for (std::size_t i = 0; i < charstring.size(); ++i) {
        const int v = at(i);
        if (v < 32)
            found.push_back(10000000 + v);
        else if (v <= 246)
            found.push_back(v - 139);
        else if (v <= 250)
            found.push_back((v - 247) * 256 + at(++i) + 108);
        else if (v <= 254)
            found.push_back(-(v - 251) * 256 - at(++i) - 108);
        else {
            std::uint32_t bits = 0;
            for (int k = 0; k < 4; ++k) bits = bits << 8 | at(++i);
            found.push_back(static_cast<int>(bits));
        }
    }
    return found;
}

struct Expected {
    unsigned char code;
    std::vector<int> tokens;
};

// Draws one glyph and notes what its charstring has to say.
Expected drawGlyph(Input& input, Fonts::Type1Font& font) {
    Expected want{static_cast<unsigned char>(input.byte()), {}};
    if (!font.addChar(want.code, "")) return want;
    const int width = input.coordinate();
    font.setCharWidth(want.code, width);
    want.tokens = {0, limited(width), 10000013};
    Fonts::Type1Glyph& glyph = *font.editChar(want.code);
    std::int64_t x = 0, y = 0;
    const auto go = [&](int toX, int toY) {
        want.tokens.push_back(limited(toX - x));
        want.tokens.push_back(limited(toY - y));
        x = toX;
        y = toY;
    };
    for (int commands = input.byte() % 32; commands > 0 && !input.empty(); --commands) {
        const int kind = input.byte() % 4;
        int at[6] = {};
        if (kind != 3)
            for (int i = 0; i < (kind == 2 ? 6 : 2); ++i) at[i] = input.coordinate();
        if (kind == 0) glyph.moveTo(at[0], at[1]);
        if (kind == 1) glyph.lineTo(at[0], at[1]);
        if (kind == 2) glyph.curveTo(at[0], at[1], at[2], at[3], at[4], at[5]);
        if (kind == 3) glyph.closePath();
        if (kind != 3) go(at[0], at[1]);
        if (kind == 2) go(at[2], at[3]), go(at[4], at[5]);
        constexpr int kCommands[] = {21, 5, 8, 9};
        want.tokens.push_back(10000000 + kCommands[kind]);
    }
    want.tokens.push_back(10000014);
    return want;
}

// Builds, checks and returns the font.
std::vector<unsigned char> fontOf(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    Fonts::Type1Font font("Fuzz");
    std::vector<Expected> drawn;
    while (!input.empty()) {
        Expected want = drawGlyph(input, font);
        if (!want.tokens.empty()) drawn.push_back(std::move(want));
    }
    const Fonts::Type1Program program(font);
    Fonts::Type1Program::Bytes plain;
    program.appendPrivatePlain(plain);
    const Fonts::PrivatePart fast = program.makePrivate();
    require(
        std::equal(plain.begin(), plain.end(), fast.bytes.get(), fast.bytes.get() + fast.length));
    const Fonts::Rectangle p = fast.box.box(), q = font.getBoundingBox();
    require(p.top == q.top && p.left == q.left && p.bottom == q.bottom && p.right == q.right);

    const std::vector<unsigned char>& whole = font.getData();
    require(font.getLength() ==
            font.getHeaderLength() + font.getCharProcsLength() + font.getZeroesLength());
    const std::string text(whole.begin() + font.getHeaderLength(),
                           whole.begin() + font.getHeaderLength() + font.getCharProcsLength());
    const std::string privatePart = decrypted(text, 55665);
    require(privatePart.find("/CharStrings " + std::to_string(drawn.size() + 1) + " dict") !=
            std::string::npos);
    std::sort(drawn.begin(), drawn.end(),
              [](const Expected& a, const Expected& b) { return a.code < b.code; });
    std::size_t at = privatePart.find("dict dup begin\n/", 40) + 15;
    for (const Expected& want : drawn) {
        const std::string name = "/AC" + std::to_string(want.code) + " ";
        require(privatePart.compare(at, name.size(), name) == 0);
        std::size_t digits = 0;
        const std::size_t length = std::stoul(privatePart.substr(at + name.size(), 20), &digits);
        const std::size_t begin = at + name.size() + digits + 4;  // behind " RD "
        require(tokens(decrypted(privatePart.substr(begin, length), 4330)) == want.tokens);
        require(privatePart.compare(begin + length, 4, " ND\n") == 0);
        at = begin + length + 4;
    }
    require(privatePart.compare(at, 14, "/.notdef 8 RD ") == 0);
    return whole;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<unsigned char> best = fontOf(data, size);
    for (const Fonts::OutlineForm& form : Fonts::outlineForms()) {
        Fonts::forceOutlineForm(&form);
        require(fontOf(data, size) == best);
    }
    Fonts::forceOutlineForm(nullptr);
    return 0;
}
