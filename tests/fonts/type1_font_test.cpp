#include <doctest/doctest.h>

#include <ostream>
#include <string>

#include "tests/fonts/type1_text.h"
#include "tests/support/fake_host.h"
#include "vaskel/fonts.h"

namespace {

using Fonts::Type1Font;

constexpr const char* kClearHead =
    "%!FontType1-1.0: Proof 1.0\n"
    "10 dict begin\n"
    "/FontName /Proof def\n"
    "/PaintType 0 def\n"
    "/FontType 1 def\n"
    "/FontMatrix [0.001 0 0 0.001 0 0] readonly def\n";

std::string zeros() {
    std::string text;
    for (int i = 0; i < 8; ++i) text += std::string(64, '0') + "\n";
    return text;
}

std::string notdefs(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += "/.notdef ";
    return text;
}

// The plain private part with its charstrings as (name, plain bytes).
std::string privateText(std::initializer_list<Entry> entries) {
    std::string text =
        "dup /Private 7 dict dup begin\n"
        "/RD {string currentfile exch readstring pop} executeonly def\n"
        "/ND {noaccess def} executeonly def\n"
        "/NP {noaccess put} executeonly def\n"
        "/BlueValues [] def\n"
        "/MinFeature {16 16} def\n"
        "/password 5839 def\n"
        "\n"
        "2 index /CharStrings " +
        std::to_string(entries.size()) + " dict dup begin\n";
    for (const Entry& entry : entries)
        text += "/" + entry.name + " " + std::to_string(entry.plain.size() + 4) + " RD [" +
                entry.plain + "] ND\n";
    return text +
           "end\nend\nreadonly put\nnoaccess put\n"
           "dup /FontName get exch definefont pop\nmark currentfile closefile\n";
}

// Replaces each cipher in a decrypted private part by its plain bytes in
// brackets, without the lead.
std::string withPlainCharstrings(const std::string& text) {
    std::string out;
    std::size_t at = 0;
    for (std::size_t rd; (rd = text.find(" RD ", at)) != text.npos;) {
        const std::size_t blank = text.rfind(' ', rd - 1);
        const std::size_t length = std::stoul(text.substr(blank + 1, rd - blank - 1));
        const std::string plain = decrypted(text.substr(rd + 4, length), 4330);
        REQUIRE(plain.substr(0, 4) == "sirk");
        out += text.substr(at, rd + 4 - at) + "[" + plain.substr(4) + "]";
        at = rd + 4 + length;
    }
    return out + text.substr(at);
}

struct Parts {
    std::string header, privatePlain, trailer;
};

Parts partsOf(const Bytes& data, const Type1Font& font) {
    const std::string text = asText(data);
    const auto header = static_cast<std::size_t>(font.getHeaderLength());
    const auto cipher = static_cast<std::size_t>(font.getCharProcsLength());
    REQUIRE(text.size() == header + cipher + static_cast<std::size_t>(font.getZeroesLength()));
    const std::string plain = decrypted(text.substr(header, cipher), 55665);
    REQUIRE(plain.substr(0, 4) == bytesOf({0x83, 0x69, 0x7A, 0x6F}));
    return {text.substr(0, header), withPlainCharstrings(plain.substr(4)),
            text.substr(header + cipher)};
}

const Entry kNotdef{".notdef", bytesOf({139, 139, 13, 14}), "", true};

TEST_CASE("font: the embedding form of an empty font") {
    const Type1Font font("Proof");
    const Parts parts = partsOf(font.getData(), font);
    std::string encoding = "/Encoding [";
    for (int line = 0; line < 32; ++line) encoding += notdefs(7) + "/.notdef\n";
    CHECK(parts.header == kClearHead + std::string("/FontBBox [0 0 0 0] readonly def\n") +
                              encoding + "] readonly def\ncurrentdict end\ncurrentfile eexec\n");
    CHECK(parts.privatePlain == privateText({kNotdef}));
    CHECK(parts.trailer == zeros() + "cleartomark\n");
    CHECK(font.getZeroesLength() == 532);
    CHECK(font.getLength() == static_cast<int>(font.getData().size()));
}

// Glyphs at the codes 65, 66, 72 and 200, one of them named .notdef.
void fill(Type1Font& font) {
    font.setCharWidth(65, 600);
    REQUIRE(font.addChar(65, "A"));
    font.editChar(65)->moveTo(10, 20);
    font.editChar(65)->lineTo(30, 5);
    REQUIRE(font.addChar(66, "my glyph"));
    font.setCharWidth(66, 500);
    REQUIRE(font.addChar(72, ".notdef"));
    REQUIRE(font.addChar(200, ""));
    font.editChar(200)->moveTo(-7, -40);
}

// 600 is 248 236: 247 + 492 / 256, 492 mod 256. 500 is 248 136.
const std::initializer_list<Entry> kFilled = {
    {"A", bytesOf({139, 248, 236, 13, 149, 159, 21, 159, 124, 5, 14}), "", true},
    {"my_glyph", bytesOf({139, 248, 136, 13, 14}), "", true},
    {".notdef", bytesOf({139, 139, 13, 14}), "", true},
    {"AC200", bytesOf({139, 139, 13, 132, 99, 21, 14}), "", true},
    kNotdef,
};

// Boxes: A (-20, 10, -5, 30), my_glyph and .notdef all 0, AC200 seeded as
// (40, -7, 7, -40); their union is (-20, -7, 7, 30), written -7 -7 30 20.
constexpr const char* kFilledBox = "/FontBBox [-7 -7 30 20] readonly def\n";

TEST_CASE("font: the embedding form with glyphs") {
    Type1Font font("Proof");
    fill(font);
    const Parts parts = partsOf(font.getData(), font);
    std::string encoding = "/Encoding [";
    for (int line = 0; line < 8; ++line) encoding += notdefs(7) + "/.notdef\n";  // 0 to 63
    encoding += "/.notdef /A /my_glyph " + notdefs(4) + "/.notdef\n";            // 64 to 71
    encoding += notdefs(7) + "/.notdef\n";  // 72 is named .notdef itself
    for (int line = 10; line < 25; ++line) encoding += notdefs(7) + "/.notdef\n";
    encoding += "/AC200 " + notdefs(6) + "/.notdef\n";  // 200 to 207
    for (int line = 26; line < 32; ++line) encoding += notdefs(7) + "/.notdef\n";
    CHECK(parts.header == std::string(kClearHead) + kFilledBox + encoding +
                              "] readonly def\ncurrentdict end\ncurrentfile eexec\n");
    CHECK(parts.privatePlain == privateText(kFilled));
    CHECK(parts.trailer == zeros() + "cleartomark\n");
    const Fonts::Rectangle box = font.getBoundingBox();
    CHECK(box.top == -20);
    CHECK(box.left == -7);
    CHECK(box.bottom == 7);
    CHECK(box.right == 30);
}

TEST_CASE("font: the PostScript form with the encoding spelled out") {
    Type1Font font("Proof");
    fill(font);
    const Parts parts = partsOf(font.getPSData(true), font);
    CHECK(parts.header == std::string(kClearHead) + kFilledBox +
                              "/Encoding 256 array\n"
                              "0 1 255{1 index exch/.notdef put}for\n"
                              "dup 65 /A put dup 66 /my_glyph put dup 200 /AC200 put \n"
                              "readonly def\n"
                              "currentdict end\n"
                              "%%BeginBinary: " +
                              std::to_string(font.getCharProcsLength() + 19) +
                              "\ncurrentfile eexec\n");
    CHECK(parts.privatePlain == privateText(kFilled));
    CHECK(parts.trailer == zeros() + "\n%%EndBinary\n\ncleartomark\n");
    CHECK(font.getZeroesLength() == 546);
}

TEST_CASE("font: lines of the spelled-out encoding end after the 7th and every 8th entry then") {
    Type1Font font("Proof");
    for (int i = 0; i < 16; ++i) REQUIRE(font.addChar(static_cast<unsigned char>(i), "g"));
    const std::string text = asText(font.getPSData(true));
    std::string want = "put}for\n";
    for (int i = 0; i < 16; ++i)
        want += "dup " + std::to_string(i) + " /g put" + (i == 6 || i == 14 ? "\n" : " ");
    CHECK(text.find(want + "\nreadonly def\n") != text.npos);
}

TEST_CASE("font: the PostScript form with the host's encoding") {
    const Type1Font font("Proof");
    const Parts parts = partsOf(font.getPSData(false), font);
    CHECK(parts.header == kClearHead +
                              std::string("/FontBBox [0 0 0 0] readonly def\n"
                                          "/Encoding userdict /DravixEncoding get readonly def\n"
                                          "currentdict end\n"
                                          "%%BeginBinary: ") +
                              std::to_string(font.getCharProcsLength() + 19) +
                              "\ncurrentfile eexec\n");
    const Type1Font other("Proof");
    CHECK(asText(other.getPSData(true)).find("dup 0 /") == std::string::npos);
}

TEST_CASE("font: glyphs are named by table, by the caller or by code") {
    struct Row {
        unsigned char code;
        const char* given;
        bool standard;
        const char* name;
    };
    constexpr Row rows[] = {
        {65, "", false, "AC65"},
        {65, "", true, "A"},
        {65, "given", true, "A"},
        {65, "given", false, "given"},
        {200, "my glyph", true, "my_glyph"},
        {31, "", true, "AC31"},
        {32, "", true, "space"},
        {39, "", true, "quoteright"},
        {96, "", true, "quoteleft"},
        {126, "", true, "asciitilde"},
        {127, "", true, "AC127"},
        {0, " a  b ", false, "_a__b_"},
        {95, "", true, "underscore"},
        {92, "", true, "backslash"},
        {122, "", true, "z"},
        {48, "", true, "zero"},
    };
    for (const Row& row : rows) {
        CAPTURE(static_cast<int>(row.code));
        Type1Font font("F");
        font.setMacRomanEncoding(row.standard);
        REQUIRE(font.addChar(row.code, row.given));
        CHECK(font.getCharEncoding(row.code) == row.name);
    }
}

TEST_CASE("font: a code takes one glyph, and widths reach it") {
    Type1Font font("F");
    CHECK_FALSE(font.hasChar(7));
    CHECK(font.editChar(7) == nullptr);
    CHECK(font.getCharEncoding(7) == ".notdef");
    font.setCharWidth(7, 123);
    CHECK(font.addChar(7, "seven"));
    CHECK_FALSE(font.addChar(7, "other"));
    CHECK(font.hasChar(7));
    CHECK(font.getCharEncoding(7) == "seven");
    CHECK(readEntry(asText(font.editChar(7)->getData())).plain == bytesOf({139, 247, 15, 13, 14}));
    font.setCharWidth(7, 1);
    CHECK(font.getCharWidth(7) == 1);
    CHECK(font.getCharWidth(8) == 0);
    CHECK(readEntry(asText(font.editChar(7)->getData())).plain == bytesOf({139, 140, 13, 14}));
    font.setAscent(1);
    font.setDescent(-2);
    font.setCapHeight(3);
    CHECK(font.getAscent() == 1);
    CHECK(font.getDescent() == -2);
    CHECK(font.getCapHeight() == 3);
    CHECK(std::string(font.getName()) == "F");
}

TEST_CASE("font: the first read decides the form until a glyph changes") {
    Type1Font font("F");
    REQUIRE(font.addChar(65, "A"));
    const Bytes postScript = font.getPSData(true);
    CHECK(font.getData() == postScript);
    CHECK(font.getPSData(false) == postScript);
    CHECK(font.getLength() == static_cast<int>(postScript.size()));
    font.setCharWidth(65, 400);
    font.setMacRomanEncoding(true);
    font.setAscent(700);
    CHECK_FALSE(font.addChar(65, "B"));  // changes nothing, so the program stays
    CHECK(font.getData() == postScript);
    font.editChar(1);  // also for a code without a glyph
    const Bytes embedding = font.getData();
    CHECK(embedding != postScript);
    CHECK(font.getPSData(true) == embedding);
    REQUIRE(font.addChar(66, "B"));
    CHECK(font.getData() != embedding);

    Type1Font lengths("F");
    CHECK(lengths.getZeroesLength() == 532);  // a length is a read, of the embedding form
    CHECK(lengths.getPSData(true) == lengths.getData());
}

TEST_CASE("font: the 14 standard fonts are the caller's list") {
    const char* names[15];
    for (const char*& name : names) name = "Other";
    const Type1Font font("Proof");
    CHECK_FALSE(font.isBase14Font(names));
    names[14] = "Proof";  // a 15th is not looked at
    CHECK_FALSE(font.isBase14Font(names));
    names[13] = "Proof";
    CHECK(font.isBase14Font(names));
    names[13] = "proof";
    CHECK_FALSE(font.isBase14Font(names));
    names[2] = "Proof";
    names[3] = nullptr;  // nothing behind the first equal one is looked at
    CHECK(font.isBase14Font(names));
}

TEST_CASE("font: memory that ends leaves the font as it was") {
    Type1Font font("Proof");
    fill(font);
    Type1Font reference("Proof");
    fill(reference);
    const Bytes want = reference.getData();
    int refused = 0;
    const int failures = failEachAllocation([&] {
        font.editChar(0);
        bool done = false;
        try {
            done = font.getData() == want;
        } catch (const std::bad_alloc&) {
            ++refused;
            return;
        }
        CHECK(done);
    });
    CHECK(refused == failures);
    CHECK(refused > 0);
    const std::string longName(100, 'n');
    failEachAllocation([&] {
        try {
            font.addChar(9, longName);
        } catch (const std::bad_alloc&) {
            CHECK_FALSE(font.hasChar(9));
            CHECK(font.getData() == want);
        }
    });
}

}  // namespace
