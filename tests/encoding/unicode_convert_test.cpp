// The six conversions by tables: every row alone and within texts of many
// lengths, in both byte orders, by every form, at either end of a page.

#include <doctest/doctest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/encoding/hex_bytes.h"
#include "tests/encoding/unicode_support.h"
#include "vaskel/encoding.h"

using namespace Vaskel;

namespace {

constexpr const char* kBad = "bad";  // the result is the empty string

struct Row8 {
    const char* why;
    const char* bytes;
    const char* units;   // UTF-16
    const char* values;  // UTF-32
};

constexpr Row8 kFrom8[] = {
    {"the least character", "01", "1", "1"},
    {"the last of one byte", "7F", "7F", "7F"},
    {"the first of two bytes", "C2 80", "80", "80"},
    {"e acute", "C3 A9", "E9", "E9"},
    {"the last of two bytes", "DF BF", "7FF", "7FF"},
    {"the first of three bytes", "E0 A0 80", "800", "800"},
    {"CJK", "E4 B8 AD", "4E2D", "4E2D"},
    {"the last below surrogates", "ED 9F BF", "D7FF", "D7FF"},
    {"the first above surrogates", "EE 80 80", "E000", "E000"},
    {"the mark is a character inside", "EF BB BF", "FEFF", "FEFF"},
    {"its mirror image, too", "EF BF BE", "FFFE", "FFFE"},
    {"the last of three bytes", "EF BF BF", "FFFF", "FFFF"},
    {"the first of four bytes", "F0 90 80 80", "D800 DC00", "10000"},
    {"the low unit keeps six bits", "F0 9F 98 80", "D83D DC00", "1F600"},
    {"all six of them", "F0 9F 98 BF", "D83D DC3F", "1F63F"},
    {"the last of plane 16", "F4 8F BF BF", "DBFF DC3F", "10FFFF"},
    {"plane 17 wraps to plane 1's unit", "F4 90 80 80", "D800 DC00", "110000"},
    {"plane 20", "F5 80 80 80", "D8C0 DC00", "140000"},
    {"plane 25", "F6 9F 98 80", "DA3D DC00", "19F600"},
    {"the last value", "F7 BF BF BF", "DBBF DC3F", "1FFFFF"},
    {"overlong in two bytes", "C1 81", "41", "41"},
    {"overlong in three bytes", "E0 81 81", "41", "41"},
    {"the last overlong of three bytes", "E0 9F BF", "7FF", "7FF"},
    {"overlong in four bytes", "F0 80 81 81", "41", "41"},
    {"the last overlong of four bytes", "F0 8F BF BF", "FFFF", "FFFF"},
    {"an ASCII follower gives its six bits", "C3 41", "C1", "C1"},
    {"a lead byte as a follower", "C3 C3", "C3", "C3"},
    {"two ASCII followers", "E4 41 42", "4042", "4042"},
    {"followers that begin nothing", "E4 F8 FF", "4E3F", "4E3F"},
    {"three ASCII followers", "F1 41 42 43", "D8C4 DC03", "41083"},
    {"a surrogate is a value", "ED A0 80", kBad, "D800"},
    {"the last surrogate", "ED BF BF", kBad, "DFFF"},
    {"a surrogate by ASCII followers", "ED 60 40", kBad, "D800"},
    {"an overlong surrogate", "F0 8D A0 80", kBad, "D800"},
    {"a pair of surrogates is none", "ED A0 BD ED B8 80", kBad, "D83D DE00"},
    {"no character begins with 80", "80", kBad, kBad},
    {"nor with BF", "BF", kBad, kBad},
    {"nor with F8", "F8 80 80 80 80", kBad, kBad},
    {"nor with FF", "FF", kBad, kBad},
    {"a follower too many", "C3 A9 A9", kBad, kBad},
    {"a follower too many behind three bytes", "E4 B8 AD AD", kBad, kBad},
    {"a follower too many behind four", "F0 9F 98 80 80", kBad, kBad},
    {"a bad byte behind a surrogate", "ED A0 80 FF", kBad, kBad},
};

struct Row16 {
    const char* why;
    const char* units;
    const char* values;
    const char* bytes;  // UTF-8
};

constexpr Row16 kFrom16[] = {
    {"ASCII", "41", "41", "41"},
    {"the last of one byte", "7F", "7F", "7F"},
    {"the first of two bytes", "80", "80", "C2 80"},
    {"the last of two bytes", "7FF", "7FF", "DF BF"},
    {"the first of three bytes", "800", "800", "E0 A0 80"},
    {"zero bytes that are no zero unit", "4E00 41", "4E00 41", "E4 B8 80 41"},
    {"the same in the other order", "41 4E00", "41 4E00", "41 E4 B8 80"},
    {"zero bytes at all odd places", "100 100", "100 100", "C4 80 C4 80"},
    {"the last below surrogates", "D7FF", "D7FF", "ED 9F BF"},
    {"the first above surrogates", "E000", "E000", "EE 80 80"},
    {"the mark inside", "FEFF", "FEFF", "EF BB BF"},
    {"its mirror image", "FFFE", "FFFE", "EF BF BE"},
    {"the last unit", "FFFF", "FFFF", "EF BF BF"},
    {"the first pair", "D800 DC00", "190000", "F6 90 80 80"},
    {"a pair by the kept formula", "D83D DE00", "19F600", "F6 9F 98 80"},
    {"the high unit's bits 6 to 9 do not count", "D840 DC00", "190000", "F6 90 80 80"},
    {"its six lower bits do", "D83F DC00", "19FC00", "F6 9F B0 80"},
    {"the last pair", "DBFF DFFF", "19FFFF", "F6 9F BF BF"},
    {"pairs side by side", "D83D DE00 D83D DE01", "19F600 19F601", "F6 9F 98 80 F6 9F 98 81"},
    {"a low unit alone", "DC00", kBad, kBad},
    {"the last low unit alone", "DFFF", kBad, kBad},
    {"a high unit alone", "D800", kBad, kBad},
    {"a high unit and a letter", "D800 41", kBad, kBad},
    {"a high unit and the unit above low ones", "DBFF E000", kBad, kBad},
    {"two high units", "D800 DBFF DC00", kBad, kBad},
    {"the wrong way round", "DC00 D800", kBad, kBad},
    {"a low unit behind a pair", "D800 DC00 DC00", kBad, kBad},
};

struct Row32 {
    const char* why;
    const char* values;
    const char* units;
    const char* bytes;
};

constexpr Row32 kFrom32[] = {
    {"ASCII", "41", "41", "41"},
    {"the last of one byte", "7F", "7F", "7F"},
    {"the first of two bytes", "80", "80", "C2 80"},
    {"the last of two bytes", "7FF", "7FF", "DF BF"},
    {"the first of three bytes", "800", "800", "E0 A0 80"},
    {"four zero bytes across units", "100 10000", "100 D800 DC00", "C4 80 F0 90 80 80"},
    {"six zero bytes across units", "10000 1", "D800 DC00 1", "F0 90 80 80 01"},
    {"the mark inside", "FEFF", "FEFF", "EF BB BF"},
    {"the last of one unit", "FFFF", "FFFF", "EF BF BF"},
    {"the first of two units", "10000", "D800 DC00", "F0 90 80 80"},
    {"the low unit keeps six bits", "1F600", "D83D DC00", "F0 9F 98 80"},
    {"bits 6 to 9 are lost", "1F7C0", "D83D DC00", "F0 9F 9F 80"},
    {"the last of plane 16", "10FFFF", "DBFF DC3F", "F4 8F BF BF"},
    {"plane 17 wraps", "110000", "D800 DC00", "F4 90 80 80"},
    {"plane 18", "120400", "D841 DC00", "F4 A0 90 80"},
    {"a pair's value read back", "19F600", "DA3D DC00", "F6 9F 98 80"},
    {"the last value", "1FFFFF", "DBBF DC3F", "F7 BF BF BF"},
    {"beyond the last value", "200000", kBad, kBad},
    {"the bytes of a letter in the other order", "41000000", kBad, kBad},
    {"the top bit", "80000041", kBad, kBad},
    {"the greatest number", "FFFFFFFF", kBad, kBad},
    {"a surrogate", "D800", kBad, "ED A0 80"},
    {"the last high one", "DBFF", kBad, "ED AF BF"},
    {"the first low one", "DC00", kBad, "ED B0 80"},
    {"the last surrogate", "DFFF", kBad, "ED BF BF"},
    {"surrogates of a pair", "D83D DE00", kBad, "ED A0 BD ED B8 80"},
    {"beside the surrogates", "D7FF E000", "D7FF E000", "ED 9F BF EE 80 80"},
};

// Letters in front of a row and behind it: around the sizes of blocks, and of
// the chunks that a long text is converted in.
struct Context {
    std::size_t before, behind;
};
constexpr Context kContexts[] = {{1, 0},    {1, 1},    {3, 80},   {6, 9},    {7, 70},   {13, 60},
                                 {14, 0},   {15, 50},  {16, 16},  {29, 70},  {30, 0},   {31, 0},
                                 {31, 70},  {32, 70},  {62, 70},  {63, 0},   {64, 9},   {1021, 70},
                                 {2015, 3}, {2046, 0}, {2047, 9}, {4030, 9}, {4095, 70}};

std::string within(const std::string& row, Context context, const std::string& letter) {
    std::string text;
    text.reserve(row.size() + (context.before + context.behind) * letter.size());
    for (std::size_t i = 0; i < context.before; ++i) text += letter;
    text += row;
    for (std::size_t i = 0; i < context.behind; ++i) text += letter;
    return text;
}

std::string units16(const char* hex, bool big) {
    std::string text;
    for (const std::uint32_t unit : numbers(hex)) text += unit16(unit, big);
    return text;
}
std::string units32(const char* hex, bool big) {
    std::string text;
    for (const std::uint32_t value : numbers(hex)) text += unit32(value, big);
    return text;
}

// What a row must become in a context: in UTF-16, UTF-32 or UTF-8.
std::string want16(const char* units, Context context, bool big) {
    if (units == kBad) return {};
    return unit16(0xFEFF, big) + within(units16(units, big), context, unit16('a', big)) +
           unit16(0, big);
}
std::string want32(const char* values, Context context, bool big) {
    if (values == kBad) return {};
    return unit32(0xFEFF, big) + within(units32(values, big), context, unit32('a', big)) +
           unit32(0, big);
}
std::string want8(const char* bytes, Context context) {
    return bytes == kBad ? std::string() : within(fromHex(bytes), context, "a");
}

// Runs check for every form, place in memory, row and context.
template <class Row, std::size_t kCount, class Check>
void forAll(const Row (&rows)[kCount], Check check) {
    for (const UnicodeForm* form : unicodeForms()) {
        const ForcedForm forced(form);
        CAPTURE(form->name);
        int turn = 0;
        for (const Row& row : rows) {
            CAPTURE(row.why);
            for (const Context& context : kContexts) {
                CAPTURE(context.before);
                CAPTURE(context.behind);
                // Short texts lie everywhere, long ones take turns.
                for (int i = 0; i < (context.before < 100 ? PlacedText::kPlaces : 1); ++i) {
                    const int place = turn++ % PlacedText::kPlaces;
                    CAPTURE(place);
                    check(row, context, place);
                }
            }
        }
    }
}

// Compared first, since hex digits of long texts take their time.
void checkSame(const std::string& got, const std::string& want) {
    if (got != want) CHECK(toHex(got) == toHex(want));
    CHECK(got == want);
}

}  // namespace

TEST_CASE("unicode: UTF-8 becomes UTF-16 and UTF-32, row by row") {
    forAll(kFrom8, [](const Row8& row, Context context, int place) {
        const PlacedText text(within(fromHex(row.bytes), context, "a") + '\0', place);
        for (const bool big : {false, true}) {
            CAPTURE(big);
            checkSame(ConvertUTF8ToUTF16String(text, big), want16(row.units, context, big));
            checkSame(ConvertUTF8ToUTF32String(text, big), want32(row.values, context, big));
        }
    });
}

TEST_CASE("unicode: UTF-16 becomes UTF-32 and UTF-8, row by row") {
    forAll(kFrom16, [](const Row16& row, Context context, int place) {
        for (const bool inBig : {false, true}) {
            CAPTURE(inBig);
            const PlacedText text(want16(row.units, context, inBig), place);
            checkSame(ConvertUTF16ToUTF8String(text), want8(row.bytes, context));
            for (const bool big : {false, true}) {
                CAPTURE(big);
                checkSame(ConvertUTF16ToUTF32String(text, big), want32(row.values, context, big));
            }
        }
    });
}

TEST_CASE("unicode: UTF-32 becomes UTF-16 and UTF-8, row by row") {
    forAll(kFrom32, [](const Row32& row, Context context, int place) {
        for (const bool inBig : {false, true}) {
            CAPTURE(inBig);
            const PlacedText text(want32(row.values, context, inBig), place);
            checkSame(ConvertUTF32ToUTF8String(text), want8(row.bytes, context));
            for (const bool big : {false, true}) {
                CAPTURE(big);
                checkSame(ConvertUTF32ToUTF16String(text, big), want16(row.units, context, big));
            }
        }
    });
}

TEST_CASE("unicode: a text ends at its first zero unit, whatever is behind") {
    for (const UnicodeForm* form : unicodeForms()) {
        const ForcedForm forced(form);
        CAPTURE(form->name);
        for (std::size_t length = 0; length < 200; ++length) {
            CAPTURE(length);
            const Context context{length, 0};
            for (const bool big : {false, true}) {
                const std::string bad16 = unit16(0xDC00, big), bad32 = unit32(0xFFFFFFFF, big);
                const std::string in16 = want16("", context, big), in32 = want32("", context, big);
                CHECK(ConvertUTF16ToUTF8String((in16 + bad16 + in16).c_str()) ==
                      std::string(length, 'a'));
                CHECK(ConvertUTF32ToUTF8String((in32 + bad32 + in32).c_str()) ==
                      std::string(length, 'a'));
                CHECK(ConvertUTF16ToUTF32String((in16 + bad16 + in16).c_str(), big) == in32);
                CHECK(ConvertUTF32ToUTF16String((in32 + bad32 + in32).c_str(), big) == in16);
                const std::string in8 = std::string(length, 'a') + '\0' + "\xFF" + '\0';
                CHECK(ConvertUTF8ToUTF16String(in8.c_str(), big) == in16);
                CHECK(ConvertUTF8ToUTF32String(in8.c_str(), big) == in32);
            }
        }
    }
}
