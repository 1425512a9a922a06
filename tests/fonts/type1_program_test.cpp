#include <doctest/doctest.h>

#include <cstdint>

#include "fonts/type1_program.h"
#include "tests/fonts/drawn_glyphs.h"
#include "tests/fonts/type1_text.h"
#include "tests/support/fake_host.h"

namespace {

using Fonts::Type1Font;
using Fonts::Type1Program;

TEST_CASE("program: both encryptions at once give the plain form's bytes") {
    for (std::uint32_t seed = 1; seed <= 40; ++seed) {
        CAPTURE(seed);
        Type1Font font(std::string(seed, 'x'));
        draw(drawnGlyphs(seed, seed % 2 == 0 ? 900 : 15000), font);
        const Type1Program program(font);
        Bytes plain{'k', 'e', 'p', 't'}, fast = plain;
        const std::size_t length = program.appendPrivatePlain(plain);
        CHECK(program.appendPrivate(fast) == length);
        CHECK(fast == plain);
        CHECK(plain.size() == length + 4);
        CHECK(length <= program.privateSize());
        CHECK(font.getCharProcsLength() == static_cast<int>(length));
    }
    const Type1Font empty("");
    Bytes plain, fast;
    Type1Program(empty).appendPrivatePlain(plain);
    Type1Program(empty).appendPrivate(fast);
    CHECK(fast == plain);
}

TEST_CASE("program: the sizes expected hold for every encoding, so nothing grows twice") {
    for (const bool named : {true, false}) {
        Type1Font font(std::string(200, 'n'));
        for (int code = 0; code < 256; ++code)
            REQUIRE(font.addChar(static_cast<unsigned char>(code),
                                 named ? std::string(static_cast<std::size_t>(code), 'g') : ""));
        for (const int width : {0, 700, 40000})
            for (int code = 0; code < 256; ++code)
                font.setCharWidth(static_cast<unsigned char>(code), width);
        font.editChar(0)->moveTo(INT32_MIN, INT32_MAX);
        const long before = allocationCount();
        font.getData();
        CHECK(allocationCount() - before == 1);
        font.editChar(0);
        const long between = allocationCount();
        font.getPSData(true);
        CHECK(allocationCount() - between == 2);  // the private part comes first here
    }
}

}  // namespace
