#include <doctest/doctest.h>

#include <cstdint>
#include <new>
#include <string>
#include <tuple>

#include "fonts/type1_program.h"
#include "tests/fonts/drawn_glyphs.h"
#include "tests/fonts/type1_text.h"
#include "tests/support/fake_host.h"

namespace {

using Fonts::Type1Font;
using Fonts::Type1Program;

void checkPrivatePart(const Type1Font& font) {
    const Type1Program program(font);
    Bytes plain{'k', 'e', 'p', 't'};
    const std::size_t length = program.appendPrivatePlain(plain);
    const Fonts::PrivatePart fast = program.makePrivate();
    CHECK(fast.length == length);
    CHECK(Bytes(fast.bytes.get(), fast.bytes.get() + fast.length) ==
          Bytes(plain.begin() + 4, plain.end()));
    CHECK(plain.size() == length + 4);
    CHECK(font.getCharProcsLength() == static_cast<int>(length));
    const Fonts::Rectangle a = fast.box.box(), b = font.getBoundingBox();
    CHECK(std::tie(a.top, a.left, a.bottom, a.right) == std::tie(b.top, b.left, b.bottom, b.right));
}

TEST_CASE("program: both encryptions at once give the plain form's bytes") {
    for (std::uint32_t seed = 1; seed <= 40; ++seed) {
        CAPTURE(seed);
        constexpr int kSpreads[] = {900, 15000, 70000};
        Type1Font font(std::string(seed, 'x'));
        draw(drawnGlyphs(seed, kSpreads[seed % 3]), font);
        checkPrivatePart(font);
    }
    checkPrivatePart(Type1Font(""));
}

TEST_CASE("program: the sizes expected hold for every encoding, so nothing grows twice") {
    constexpr int kForProgram = 3;  // the private part, two entries of it, all
    for (const bool named : {true, false}) {
        Type1Font font(std::string(200, 'n'));
        for (int code = 0; code < 256; ++code)
            REQUIRE(font.addChar(static_cast<unsigned char>(code),
                                 named ? std::string(static_cast<std::size_t>(code), 'g') : ""));
        for (const int width : {0, 700, 40000})
            for (int code = 0; code < 256; ++code)
                font.setCharWidth(static_cast<unsigned char>(code), width);
        const long before = allocationCount();
        font.getData();
        CHECK(allocationCount() - before == kForProgram);
        font.editChar(0);
        const long between = allocationCount();
        font.getPSData(true);
        CHECK(allocationCount() - between == kForProgram);
    }
}

TEST_CASE("program: long numbers let the private part grow, and memory may end there") {
    Type1Font font("F");
    for (int code = 0; code < 4; ++code) {
        const auto c = static_cast<unsigned char>(code);
        REQUIRE(font.addChar(c, ""));
        for (int i = 0; i < 500; ++i)  // five bytes a number, 16 and 32 bits a coordinate
            font.editChar(c)->lineTo(i % 2 * 2000, code == 3 ? i % 2 * 70000 : i % 2 * -3000);
    }
    checkPrivatePart(font);
    font.editChar(0);
    const long before = allocationCount();
    const Bytes want = font.getData();
    CHECK(allocationCount() - before > 4);  // three, those that grow, and the copy here
    int refused = 0;
    const int failures = failEachAllocation([&] {
        font.editChar(0);
        try {
            font.getData();
        } catch (const std::bad_alloc&) {
            ++refused;
        }
    });
    CHECK(failures > 3);
    CHECK(refused == failures);
    CHECK(font.getData() == want);
}

}  // namespace
