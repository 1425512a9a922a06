// Orlune: helpers on NUL-terminated strings.

#include <cstring>

#include "check.h"
#include "platform/orlune/strings.h"

namespace {

int sign(int value) { return (value > 0) - (value < 0); }

struct Order {
    const char* a;
    const char* b;
    int order;
};

}  // namespace

TEST_CASE("Orlune::strmov: copies with the terminator and returns the address of that") {
    for (const char* text : {"", "a", "distance", "with \xC3\xA4 and more than one word of text"}) {
        CAPTURE(text);
        char buffer[64];
        std::memset(buffer, 0x55, sizeof buffer);
        char* const end = Orlune::strmov(buffer + 1, text);
        const std::size_t length = std::strlen(text);
        CHECK(end == buffer + 1 + length);
        CHECK(std::memcmp(buffer + 1, text, length + 1) == 0);
        CHECK(buffer[0] == 0x55);
        CHECK(buffer[length + 2] == 0x55);
    }
    char chain[16];
    Orlune::strmov(Orlune::strmov(chain, "12"), "mm");
    CHECK(std::strcmp(chain, "12mm") == 0);
}

TEST_CASE("Orlune::strcom: the order of the bytes as unsigned values") {
    const Order rows[] = {
        {"", "", 0},          {"", "a", -1},       {"abc", "abc", 0}, {"abc", "abd", -1},
        {"ab", "abc", -1},    {"B", "a", -1},      {"a", "A", 1},     {"z", "\xC3\xA4", -1},
        {"\x7F", "\x80", -1}, {"\xFF", "\x01", 1},
    };
    for (const Order& row : rows) {
        CAPTURE(row.a);
        CAPTURE(row.b);
        CHECK(sign(Orlune::strcom(row.a, row.b)) == row.order);
        CHECK(sign(Orlune::strcom(row.b, row.a)) == -row.order);
    }
}

TEST_CASE("Orlune::strcomign: the 26 capitals count as small letters, nothing else does") {
    const Order rows[] = {
        {"", "", 0},
        {"MM", "mm", 0},
        {"Pica Point", "pICA pOINT", 0},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZ", "abcdefghijklmnopqrstuvwxyz", 0},
        {"mm", "mn", -1},
        {"MM", "mn", -1},
        {"a", "B", -1},
        {"mm", "mmm", -1},
        {"[", "{", -1},  // 0x5B and 0x7B: 32 apart, but no letters
        {"@", "`", -1},
        {"Z", "[", 1},                 // as z, 0x7A
        {"_", "A", -1},                // 0x5F before a
        {"\xC3\x84", "\xC3\xA4", -1},  // capital and small a with diaeresis
        {"\xC4", "\xE4", -1},          // the same in ISO 8859-1
        {"z", "\xFF", -1},
    };
    for (const Order& row : rows) {
        CAPTURE(row.a);
        CAPTURE(row.b);
        CHECK(sign(Orlune::strcomign(row.a, row.b)) == row.order);
        CHECK(sign(Orlune::strcomign(row.b, row.a)) == -row.order);
    }
}

TEST_CASE("Orlune::strcompre: 0 when the text begins with the prefix") {
    const Order rows[] = {
        {"file://x", "file:", 0}, {"file", "file", 0}, {"fil", "file", -1},  {"", "", 0},
        {"abc", "", 0},           {"", "a", -1},       {"File", "file", -1}, {"g", "file", 1},
        {"\xFFxx", "a", 1},       {"a", "\xFF", -1},
    };
    for (const Order& row : rows) {
        CAPTURE(row.a);
        CAPTURE(row.b);
        CHECK(sign(Orlune::strcompre(row.a, row.b)) == row.order);
    }
}
