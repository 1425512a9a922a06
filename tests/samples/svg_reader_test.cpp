#include "samples/proof/check/svg_reader.h"

#include <doctest/doctest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "samples/proof/failure.h"
#include "samples/proof/numbers.h"
#include "samples/proof/svg_writer.h"

using namespace Proof;

namespace {

constexpr const char* kNamespace = "xmlns='http://www.w3.org/2000/svg'";

Drawing read(const std::string& text) {
    return readSvg("test.svg", {reinterpret_cast<const unsigned char*>(text.data()), text.size()});
}

Drawing inSvg(const std::string& content, const std::string& attributes = "") {
    return read("<svg " + std::string(kNamespace) + " " + attributes + ">\n" + content + "</svg>");
}

std::string failure(const std::string& text) {
    try {
        read(text);
    } catch (const Failure& problem) {
        return problem.what();
    }
    return "no failure";
}

// Steps as path data to three decimals, without line feeds.
std::string text(const DrawnPath& path) {
    std::string data;
    for (const char c : svgStepData(path.steps)) data += c == '\n' ? ' ' : c;
    data.pop_back();
    return data;
}

struct Row {
    const char* why;
    std::string content;
    std::string steps;
};

}  // namespace

TEST_CASE("path commands come as absolute lines and cubic curves") {
    const Row rows[] = {
        {"absolute", "<path d='M1 2L3 4H5V6Z'/>", "M1 2 L3 4 L5 4 L5 6 z"},
        {"relative", "<path d='m1 2 2 2h2v2z'/>", "M1 2 L3 4 L5 4 L5 6 z"},
        {"a subpath after a closed one begins where that began", "<path d='M5 5h4v4zl0-9'/>",
         "M5 5 L9 5 L9 9 z L5 -4"},
        {"cubic and smooth", "<path d='M0 0C0 10 10 10 10 0S20-10 20 0'/>",
         "M0 0 C0 10 10 10 10 0 C10 -10 20 -10 20 0"},
        // Control points of a quadratic curve lie at 2/3 of the way.
        {"quadratic and smooth", "<path d='M0 0Q3 6 6 0T12 0'/>",
         "M0 0 C2 4 4 4 6 0 C8 -4 10 -4 12 0"},
        // Handles of a quarter: 0.5523 radii.
        {"a quarter of a circle", "<path d='M100 0A100 100 0 0 1 0 100'/>",
         "M100 0 C100 55.228 55.228 100 0 100"},
        {"the other way round it", "<path d='M100 0A100 100 0 0 0 0 100'/>",
         "M100 0 C44.772 0 0 44.772 0 100"},
        {"three quarters", "<path d='M100 0A100 100 0 1 1 0-100'/>",
         "M100 0 C100 55.228 55.228 100 0 100 C-55.228 100 -100 55.228 -100 0 "
         "C-100 -55.228 -55.228 -100 0 -100"},
        {"a turned ellipse", "<path d='M0 200A200 100 90 0 1 -100 0'/>",
         "M0 200 C-55.228 200 -100 110.457 -100 0"},
        {"radii that are too small are enlarged", "<path d='M0 0A1 1 0 0 1 200 0'/>",
         "M0 0 C0 -55.228 44.772 -100 100 -100 C155.228 -100 200 -55.228 200 0"},
        {"an arc without a radius is a line", "<path d='M0 0A0 5 0 0 1 20 0'/>", "M0 0 L20 0"},
        {"an arc to its beginning is nothing", "<path d='M0 0A5 5 0 0 1 0 0L3 3'/>", "M0 0 L3 3"},
        {"numbers may touch", "<path d='M.5-.5.25 1e1-1e-1.5'/>", "M0.5 -0.5 L0.25 10 L-0.1 0.5"},
        {"rect", "<rect x='1' y='2' width='3' height='4'/>", "M1 2 L4 2 L4 6 L1 6 z"},
        {"line", "<line x1='1' y1='2' x2='3' y2='4'/>", "M1 2 L3 4"},
        {"polyline", "<polyline points='1,2 3 4,5,6'/>", "M1 2 L3 4 L5 6"},
        {"polygon", "<polygon points='1,2 3 4 5 6'/>", "M1 2 L3 4 L5 6 z"},
        {"circle", "<circle cx='100' cy='100' r='100'/>",
         "M200 100 C200 155.228 155.228 200 100 200 C44.772 200 0 155.228 0 100 "
         "C0 44.772 44.772 0 100 0 C155.228 0 200 44.772 200 100 z"},
        {"absolute lengths are pixels of 1/96 inch",
         "<line x1='1in' y1='25.4mm' x2='6pc' y2='72pt'/>", "M96 96 L96 96"},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        const Drawing drawing = inSvg(row.content);
        REQUIRE(drawing.paths.size() == 1);
        CHECK(text(drawing.paths[0]) == row.steps);
    }
}

TEST_CASE("transforms of elements, groups and inner view boxes add up") {
    const Row rows[] = {
        {"translate", "<path transform='translate(10 20)' d='M0 0L1 1'/>", "M10 20 L11 21"},
        {"an element's own transform, wherever it stands",
         "<path d='M0 0L1 1' transform='matrix(2 0 0 3 10 20)'/>", "M10 20 L12 23"},
        {"a list works from the right", "<path transform='translate(10) scale(2)' d='M1 1L2 2'/>",
         "M12 2 L14 4"},
        {"rotate", "<path transform='rotate(90)' d='M10 0L20 0'/>", "M0 10 L0 20"},
        {"rotate about a point", "<path transform='rotate(90 10 10)' d='M10 0L20 10'/>",
         "M20 10 L10 20"},
        {"skew", "<path transform='skewX(45)' d='M0 10L0 20'/>", "M10 10 L20 20"},
        {"groups",
         "<g transform='translate(100)'><g transform='scale(2)'><a>"
         "<path transform='translate(5 5)' d='M0 0L1 1'/></a></g></g>",
         "M110 10 L112 12"},
        {"an inner svg with a view box",
         "<svg x='10' y='10' width='20' height='20' viewBox='0 0 100 100'>"
         "<path d='M0 0L50 50'/></svg>",
         "M10 10 L20 20"},
        {"its sides fitted in the middle",
         "<svg width='40' height='20' viewBox='0 0 100 100'><path d='M0 0L50 50'/></svg>",
         "M10 0 L20 10"},
        {"shares of the view box", "<line x1='50%' y1='50%' x2='100%' y2='0'/>", "M100 50 L200 0"},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        const Drawing drawing = inSvg(row.content, "viewBox='0 0 200 100' width='50mm'");
        REQUIRE(drawing.paths.size() == 1);
        CHECK(text(drawing.paths[0]) == row.steps);
    }
}

TEST_CASE("elements come in order with their names; what is only defined does not") {
    const Drawing drawing = inSvg(
        "<defs><path id='a' d='M0 0L1 1'/></defs><symbol><path d='M0 0L1 1'/></symbol>"
        "<clipPath><rect width='1' height='1'/></clipPath><path id='leaf' d='M0 0L1 1'/>"
        "<x:thing xmlns:x='urn:x' x:d='M0'><path d='M0'/></x:thing><unknown/>"
        "<text>M</text><use/><g><use/><rect id='' width='2' height='3'/></g><path/>"
        "<path d=''/><path d=' '/><rect/><!-- end -->");
    REQUIRE(drawing.paths.size() == 2);
    CHECK(drawing.paths[0].element == "path");
    CHECK(drawing.paths[0].id == "leaf");
    CHECK(drawing.paths[1].element == "rect");
    CHECK(drawing.paths[1].id == "");
    CHECK(drawing.lost == 2);
}

TEST_CASE("a use element stands for what it refers to") {
    const std::string link = "xmlns:l='http://www.w3.org/1999/xlink'";
    const Row rows[] = {
        {"a path that is only defined", "<defs><path id='a' d='M1 2L3 4'/></defs><use href='#a'/>",
         "M1 2 L3 4"},
        {"the link as SVG 1.1 has it",
         "<defs><path id='a' d='M1 2L3 4'/></defs><use " + link + " l:href='#a'/>", "M1 2 L3 4"},
        {"the plain link counts of both",
         "<defs><path id='a' d='M1 2L3 4'/><path id='b' d='M5 6L7 8'/></defs><use " + link +
             " l:href='#a' href='#b'/>",
         "M5 6 L7 8"},
        {"what is defined later", "<use href='#a'/><defs><g><path id='a' d='M1 2L3 4'/></g></defs>",
         "M1 2 L3 4"},
        {"the first one of an id",
         "<defs><path id='a' d='M1 2L3 4'/><path id='a' d='M5 6L7 8'/></defs><use href='#a'/>",
         "M1 2 L3 4"},
        {"moved by x and y within its own transform",
         "<defs><path id='a' d='M1 2L3 4' transform='scale(10)'/></defs>"
         "<use x='5' transform='scale(2)' href='#a' y='1in'/>",
         "M30 232 L70 272"},
        {"transforms around it, not those around what it refers to",
         "<defs><g transform='scale(9)'><path id='a' d='M1 2L3 4'/></g></defs>"
         "<g transform='translate(100)'><use href='#a'/></g>",
         "M101 2 L103 4"},
        {"one that refers to another",
         "<defs><path id='a' d='M1 2L3 4'/><g id='b'><use x='10' href='#a'/></g></defs>"
         "<use y='10' href='#b'/>",
         "M11 12 L13 14"},
        {"a symbol, whose view box fits the stated size",
         "<symbol id='a' viewBox='0 0 10 10'><path d='M0 0L10 5'/></symbol>"
         "<use x='7' width='20' height='20' href='#a'/>",
         "M7 0 L27 10"},
        {"a symbol without a size takes that of the view box around",
         "<symbol id='a' viewBox='0 0 10 10'><path d='M0 0L10 10'/></symbol><use href='#a'/>",
         "M50 0 L150 100"},
        {"an svg element, whose size the use element replaces",
         "<defs><svg id='a' width='5' height='20' viewBox='0 0 10 10'>"
         "<path d='M0 0L10 5'/></svg></defs><use width='20' href='#a'/>",
         "M0 0 L20 10"},
        {"shares of the view box around",
         "<defs><line id='a' x2='50%' y2='10%'/></defs><use x='10%' href='#a'/>", "M20 0 L120 10"},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        const Drawing drawing = inSvg(row.content, "viewBox='0 0 200 100' width='50mm'");
        REQUIRE(drawing.paths.size() == 1);
        CHECK(text(drawing.paths[0]) == row.steps);
        CHECK(drawing.lost == 0);
    }
    const Drawing drawing = inSvg(
        "<path id='a' d='M0 0L1 1'/><use href='#a' x='1'/><use href='#a' x='2'/><use href='#b'/>"
        "<use href='other.svg#a'/><use href='a'/><use href='#'/><use/>"
        "<text id='t'>M</text><use href='#t'/>");
    REQUIRE(drawing.paths.size() == 3);
    CHECK(text(drawing.paths[2]) == "M2 0 L3 1");
    CHECK(drawing.paths[2].element == "path");
    CHECK(drawing.paths[2].id == "a");
    CHECK(drawing.lost == 5);
}

TEST_CASE("use elements come to an end") {
    const std::string begin = "<svg " + std::string(kNamespace) + ">\n";
    const auto doubled = [&](int times) {
        std::string text = begin + "<defs><path id='a0' d='M0 0L1 1'/>";
        for (int i = 1; i <= times; ++i) {
            const std::string use = "<use href='#a" + std::to_string(i - 1) + "'/>";
            text += "<g id='a" + std::to_string(i) + "'>" + use + use + "</g>";
        }
        return text + "</defs>\n<use href='#a" + std::to_string(times) + "'/></svg>";
    };
    const auto chained = [&](int times) {
        std::string text = begin + "<defs><path id='a0' d='M0 0L1 1'/>";
        for (int i = 1; i <= times; ++i)
            text += "<use id='a" + std::to_string(i) + "' href='#a" + std::to_string(i - 1) + "'/>";
        return text + "</defs><use href='#a" + std::to_string(times) + "'/></svg>";
    };
    CHECK(read(doubled(10)).paths.size() == 1024);
    CHECK(failure(doubled(40)).find(": use elements make more than 1,000,000 elements and steps") !=
          std::string::npos);
    CHECK(read(chained(200)).paths.size() == 1);
    CHECK(failure(chained(300)).find(": use elements nest elements more than 256 deep") !=
          std::string::npos);
    for (const char* circle : {"<g id='a'><use href='#a'/></g>", "<use id='a' href='#a'/>",
                               "<g id='a'><use href='#b'/></g><g id='b'><use href='#a'/></g>"}) {
        CAPTURE(circle);
        CHECK(failure(begin + circle + "</svg>") ==
              "test.svg: line 2: a use element refers to itself");
    }
}

TEST_CASE("the visible part is the view box at its true size, or all paths") {
    const std::string line = "<path d='M10 10L110 60'/>";
    Drawing d = inSvg(line, "viewBox='-5 5 400 200' width='100mm' height='50mm'");
    CHECK(d.left == doctest::Approx(-5));
    CHECK(d.top == doctest::Approx(5));
    CHECK(d.width == doctest::Approx(400));
    CHECK(d.height == doctest::Approx(200));
    CHECK(d.xPerInch == doctest::Approx(4 * 25.4));
    CHECK(d.yPerInch == doctest::Approx(4 * 25.4));
    d = inSvg(line, "viewBox='0 0 400 200' width='1in' height='1in' preserveAspectRatio='none'");
    CHECK(d.xPerInch == doctest::Approx(400));
    CHECK(d.yPerInch == doctest::Approx(200));
    d = inSvg(line, "width='300' height='150'");
    CHECK(d.width == doctest::Approx(300));
    CHECK(d.height == doctest::Approx(150));
    CHECK(d.xPerInch == doctest::Approx(96));
    // Without a size: the paths' box, 100 x 50, with a margin of 5.
    for (const char* attributes : {"", "viewBox='0 0 400 200'", "width='100%' height='50'",
                                   "viewBox='0 0 1e-30 1e-30' width='1e-9' height='1e9'"}) {
        CAPTURE(attributes);
        d = inSvg(line, attributes);
        CHECK(d.left == doctest::Approx(5));
        CHECK(d.top == doctest::Approx(5));
        CHECK(d.width == doctest::Approx(110));
        CHECK(d.height == doctest::Approx(60));
    }
}

TEST_CASE("files that cannot be read say why, and where") {
    const std::string begin = "<svg " + std::string(kNamespace) + ">\n";
    const std::string entities =
        "<!DOCTYPE svg [<!ENTITY a 'M0 0L1 1'><!ENTITY f SYSTEM 'f.xml'>"
        "<!ENTITY b '&b;'>]>";
    std::string deep = begin;
    for (int i = 0; i < 300; ++i) deep += "<g>";
    deep += "<path d='M0 0L1 1'/>";
    for (int i = 0; i < 300; ++i) deep += "</g>";
    const struct {
        std::string text, reason;
    } rows[] = {
        {"no XML", "is no well-formed XML: line 1: Start tag expected, '<' not found"},
        {begin + "<g></svg>",
         "is no well-formed XML: line 2: Opening and ending tag mismatch: g line 2 and svg"},
        {"<html/>", "is XML, but no SVG: its outermost element is none"},
        {"<svg><path d='M0 0'/></svg>", "is XML, but no SVG: its outermost element is none"},
        {begin + "<path d='M0 0L1'/></svg>", "line 2: attribute d cannot be read"},
        {begin + "<path d='M0 0L1 nan'/></svg>", "line 2: attribute d cannot be read"},
        {begin + "<path d='M0 0L1 inf'/></svg>", "line 2: attribute d cannot be read"},
        {begin + "<path d='M0 0L1 1e999'/></svg>", "line 2: attribute d cannot be read"},
        {begin + "\n<polygon points='1 2 3'/></svg>", "line 3: attribute points cannot be read"},
        {begin + "<g transform='turn(4)'/></svg>", "line 2: attribute transform cannot be read"},
        {begin + "<rect width='-1' height='2'/></svg>", "line 2: attribute width is negative"},
        {begin + "<path d='M0 0L1 33554433'/></svg>",
         "line 2: a coordinate is farther from 0 than 33,554,432 units"},
        {begin +
             "<g transform='scale(1e300)'><path transform='scale(1e300)' d='M0 0L1 1'/></g></svg>",
         "line 2: a coordinate is farther from 0 than 33,554,432 units"},
        {deep + "</svg>", "nests elements more than 256 deep, at line 2"},
        {entities + begin + "<path d='&f;'/></svg>",
         "is no well-formed XML: line 2: Entity 'f' not defined"},
        {entities + begin + "<path d='&b;'/></svg>",
         "is no well-formed XML: line 2: Detected an entity reference loop"},
        {std::string("\x1F\x8B\x08", 3), "is compressed; gunzip unpacks it"},
    };
    for (const auto& row : rows) {
        CAPTURE(row.text.substr(0, 300));
        CHECK(failure(row.text) == "test.svg: " + row.reason);
    }
    const Drawing fine = read(entities + begin + "<path d='&a;'/></svg>");
    REQUIRE(fine.paths.size() == 1);
    CHECK(text(fine.paths[0]) == "M0 0 L1 1");
}

TEST_CASE("attributes of any length are read") {
    std::string data = "M0 0";
    while (data.size() < 11000000) data += "l1 1h-1";
    const Drawing drawing = inSvg("<path d='" + data + "'/>");
    REQUIRE(drawing.paths.size() == 1);
    CHECK(drawing.paths[0].steps.size() == 1 + (data.size() - 4) / 7 * 2);
}
