#include "samples/proof/pdf_text.h"

#include <doctest/doctest.h>

#include <qpdf/QPDFObjectHandle.hh>

using namespace Proof;
using namespace std::string_literals;

TEST_CASE("a text string is big-endian UTF-16 with a mark and no zero unit") {
    CHECK(pdfText("") == "\xFE\xFF");
    CHECK(pdfText("A(b)\\") == "\xFE\xFF\0A\0(\0b\0)\0\\"s);
    CHECK(pdfText("\xC3\xA9\xE4\xB8\xAD") == "\xFE\xFF\x00\xE9\x4E\x2D"s);
    CHECK(pdfText("\xEF\xBF\xBF") == "\xFE\xFF\xFF\xFF");
}

TEST_CASE("qpdf reads back what a text string was made of") {
    // The last two are beyond what the library's UTF-16 keeps.
    for (const std::string text : {"plain", "\xD0\xA9\xC5\x81\xE2\x82\xAC", "line\nline",
                                   "a\xF0\x9F\x98\x80z", "\xF0\x9F\x98\x80"}) {
        CAPTURE(text);
        CHECK(QPDFObjectHandle::newString(pdfText(text)).getUTF8Value() == text);
    }
}

TEST_CASE("malformed UTF-8 does not become other characters") {
    // The library reads C3 41 as U+00C1.
    for (const std::string text : {"a\xC3\x41", "\xFF", "\xE4\xB8"}) {
        CAPTURE(text);
        const std::string read = QPDFObjectHandle::newString(pdfText(text)).getUTF8Value();
        CHECK(read.find("\xEF\xBF\xBD") != std::string::npos);
        CHECK(read.find("\xC3\x81") == std::string::npos);
    }
}
