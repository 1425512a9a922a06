// Orlune: text conversions.
//
// Every conversion is asked with every capacity from 0 to more than enough;
// what it must give then is the longest row of whole characters that fits.

#include <cstring>
#include <string>
#include <vector>

#include "check.h"
#include "platform/orlune/text.h"

namespace {

// One character in the three forms.
struct Character {
    const char* utf8;
    std::vector<wchar_t> uni16;
    const char* url;
};

const Character kCharacters[] = {
    {"a", {0x61}, "a"},
    {"Z", {0x5A}, "Z"},
    {"7", {0x37}, "7"},
    {"-", {0x2D}, "-"},
    {".", {0x2E}, "."},
    {"_", {0x5F}, "_"},
    {"~", {0x7E}, "~"},
    {" ", {0x20}, "%20"},
    {"/", {0x2F}, "%2F"},
    {":", {0x3A}, "%3A"},
    {"%", {0x25}, "%25"},
    {"+", {0x2B}, "%2B"},
    {"\x01", {0x01}, "%01"},
    {"\x7F", {0x7F}, "%7F"},
    {"\xC2\x80", {0x80}, "%C2%80"},
    {"\xC3\xA4", {0xE4}, "%C3%A4"},
    {"\xDF\xBF", {0x7FF}, "%DF%BF"},
    {"\xE0\xA0\x80", {0x800}, "%E0%A0%80"},
    {"\xE2\x82\xAC", {0x20AC}, "%E2%82%AC"},
    {"\xED\x9F\xBF", {0xD7FF}, "%ED%9F%BF"},
    {"\xEE\x80\x80", {0xE000}, "%EE%80%80"},
    {"\xEF\xBB\xBF", {0xFEFF}, "%EF%BB%BF"},
    {"\xEF\xBF\xBF", {0xFFFF}, "%EF%BF%BF"},
    {"\xF0\x90\x80\x80", {0xD800, 0xDC00}, "%F0%90%80%80"},
    {"\xF0\x9F\x96\xA8", {0xD83D, 0xDDA8}, "%F0%9F%96%A8"},
    {"\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}, "%F4%8F%BF%BF"},
};
constexpr int kCount = sizeof kCharacters / sizeof kCharacters[0];

// A text of some characters as three lists of pieces, one a character.
struct Text {
    std::string utf8;
    std::wstring uni16;
    std::vector<std::string> utf8Pieces;
    std::vector<std::wstring> uni16Pieces;
    std::vector<std::string> urlPieces;

    void add(const Character& c) {
        utf8 += c.utf8;
        uni16.append(c.uni16.begin(), c.uni16.end());
        utf8Pieces.push_back(c.utf8);
        uni16Pieces.emplace_back(c.uni16.begin(), c.uni16.end());
        urlPieces.push_back(c.url);
    }
};

// Checks a conversion of from into the given pieces at every capacity.
template <class From, class Char>
void checkCapacities(int (*convert)(const From*, Char*, std::size_t), const From* from,
                     const std::vector<std::basic_string<Char>>& pieces) {
    std::size_t whole = 0;
    for (const auto& piece : pieces) whole += piece.size();
    for (std::size_t capacity = 0; capacity <= whole + 3; ++capacity) {
        CAPTURE(capacity);
        std::basic_string<Char> want;
        for (const auto& piece : pieces) {
            if (want.size() + piece.size() + 1 > capacity) break;
            want += piece;
        }
        std::vector<Char> out(whole + 8, Char(0x55));
        CHECK(convert(from, out.data(), capacity) == static_cast<int>(want.size()));
        if (capacity > 0) {
            CHECK(std::basic_string<Char>(out.data(), want.size()) == want);
            CHECK(out[want.size()] == 0);
        }
        for (std::size_t i = capacity; i < out.size(); ++i) CHECK(out[i] == Char(0x55));
    }
}

Text someText(std::uint32_t seed, int length) {
    Check::Dice dice(seed);
    Text text;
    for (int i = 0; i < length; ++i) text.add(kCharacters[dice.below(kCount)]);
    return text;
}

const char* const kMalformed[] = {
    "\x80",  // a byte that continues nothing
    "\xBF",
    "\xC3",  // sequences that end early
    "\xE2\x82",
    "\xF0\x9F\x96",
    "\xC3(",
    "\xE2\x82(",
    "\xC0\xAF",  // longer than need be
    "\xC1\xBF",
    "\xE0\x9F\xBF",
    "\xF0\x8F\xBF\xBF",
    "\xED\xA0\x80",  // surrogates
    "\xED\xBF\xBF",
    "\xF4\x90\x80\x80",  // beyond U+10FFFF
    "\xF5\x80\x80\x80",
    "\xFE",
    "\xFF",
};

const std::vector<std::vector<wchar_t>> kUnpaired = {
    {0xD800},  {0xDBFF, 0x61}, {0xDC00},     {0xDFFF, 0x61}, {0xDC00, 0xD800}, {0xD800, 0xD800},
    {0x10000}, {0x1F5A8},      {0x7FFFFFFF}, {0x61, 0xD83D}, {0xD83D, 0x20AC},
};

}  // namespace

TEST_CASE("Orlune::UTF8ToUni16Char: one code unit an element, cut between characters only") {
    for (const Character& c : kCharacters) {
        CAPTURE(c.url);
        Text text;
        text.add(c);
        checkCapacities(&Orlune::UTF8ToUni16Char, text.utf8.c_str(), text.uni16Pieces);
    }
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        const Text text = someText(seed, 12);
        CAPTURE(text.utf8);
        checkCapacities(&Orlune::UTF8ToUni16Char, text.utf8.c_str(), text.uni16Pieces);
    }
}

TEST_CASE("Orlune::Uni16CharToUTF8: cut between characters only") {
    for (const Character& c : kCharacters) {
        CAPTURE(c.url);
        Text text;
        text.add(c);
        checkCapacities(&Orlune::Uni16CharToUTF8, text.uni16.c_str(), text.utf8Pieces);
    }
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        const Text text = someText(seed, 12);
        CAPTURE(text.utf8);
        checkCapacities(&Orlune::Uni16CharToUTF8, text.uni16.c_str(), text.utf8Pieces);
    }
}

TEST_CASE("Orlune::UTF8ToURLEncoding: unreserved characters stay, all others become %XX") {
    for (const Character& c : kCharacters) {
        char out[16];
        CAPTURE(c.url);
        CHECK(Orlune::UTF8ToURLEncoding(c.utf8, out, sizeof out) ==
              static_cast<int>(std::strlen(c.url)));
        CHECK(std::strcmp(out, c.url) == 0);
    }
    const std::string unreserved =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
    for (int byte = 1; byte < 0x80; ++byte) {
        CAPTURE(byte);
        const char text[2] = {static_cast<char>(byte), 0};
        char out[8];
        const bool stays = unreserved.find(text[0]) != std::string::npos;
        CHECK(Orlune::UTF8ToURLEncoding(text, out, sizeof out) == (stays ? 1 : 3));
        if (stays) CHECK(out[0] == text[0]);
    }
}

TEST_CASE("Orlune::UTF8ToURLEncoding: cut between characters only, never within a %XX") {
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        const Text text = someText(seed, 12);
        CAPTURE(text.utf8);
        checkCapacities(&Orlune::UTF8ToURLEncoding, text.utf8.c_str(), text.urlPieces);
    }
}

TEST_CASE("Orlune::Uni16CharToURLEncoding: cut between characters only, never within a %XX") {
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        const Text text = someText(seed, 12);
        CAPTURE(text.utf8);
        checkCapacities(&Orlune::Uni16CharToURLEncoding, text.uni16.c_str(), text.urlPieces);
    }
}

TEST_CASE("Orlune::UTF8ToUni16Char: malformed UTF-8 gives 0 and the empty text") {
    for (const char* bad : kMalformed)
        for (const char* before : {"", "ab", "\xC3\xA4"})
            for (const char* after : {"", "c"}) {
                const std::string text = std::string(before) + bad + after;
                CAPTURE(text);
                wchar_t out[32];
                std::fill(std::begin(out), std::end(out), wchar_t(0x55));
                CHECK(Orlune::UTF8ToUni16Char(text.c_str(), out, 32) == 0);
                CHECK(out[0] == 0);
            }
}

TEST_CASE("Orlune::Uni16CharToUTF8: unpaired surrogates and large elements give the empty text") {
    for (const auto& bad : kUnpaired)
        for (bool prefixed : {false, true}) {
            std::wstring text(prefixed ? 1 : 0, wchar_t(0x61));
            text.append(bad.begin(), bad.end());
            CAPTURE(static_cast<long>(bad[0]));
            char out[64] = "kept";
            CHECK(Orlune::Uni16CharToUTF8(text.c_str(), out, sizeof out) == 0);
            CHECK(out[0] == 0);
            std::strcpy(out, "kept");
            CHECK(Orlune::Uni16CharToURLEncoding(text.c_str(), out, sizeof out) == 0);
            CHECK(out[0] == 0);
        }
}
