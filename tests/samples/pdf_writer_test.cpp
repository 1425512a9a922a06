#include "samples/proof/pdf_writer.h"

#include <doctest/doctest.h>

#include <cstdlib>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <vector>

#include "samples/proof/pdf_document.h"
#include "tests/samples/pictures.h"

using namespace Proof;

namespace {

using Points = std::vector<OutlinePoint>;

OutlinePage smallPage() {
    OutlinePage page;
    page.outlines.add(Points{{0, 0}, {100, 0}, {100, 50}});
    page.outlines.add(Points{{10, 10}, {20, 10}, {20, 20}});
    page.width = 1200;
    page.height = 600;
    page.xUnitsPerInch = 600;
    page.yUnitsPerInch = 300;
    return page;
}

std::string written(const OutlinePage& page, const std::string& path,
                    std::optional<std::time_t> date) {
    OutputFile file(path);
    writePdf(page, "sc\xC3\xA4n", date, file);
    file.commit();
    return readFile(path);
}

// Sets or removes SOURCE_DATE_EPOCH and puts it back.
class DateOfSource {
 public:
    explicit DateOfSource(const char* value) {
        if (const char* before = std::getenv("SOURCE_DATE_EPOCH")) mBefore = before;
        value ? setenv("SOURCE_DATE_EPOCH", value, 1) : unsetenv("SOURCE_DATE_EPOCH");
    }
    ~DateOfSource() {
        mBefore ? setenv("SOURCE_DATE_EPOCH", mBefore->c_str(), 1) : unsetenv("SOURCE_DATE_EPOCH");
    }

 private:
    std::optional<std::string> mBefore;
};

}  // namespace

TEST_CASE("page content is one even-odd path of whole numbers under one matrix") {
    CHECK(pdfPageContent(smallPage()) ==
          "q\n0.12 0 0 -0.24 0 144 cm\n"
          "0 0 m\n100 0 l\n100 50 l\nh\n"
          "10 10 m\n20 10 l\n20 20 l\nh\n"
          "f*\nQ\n");
    CHECK(pdfPageContent(OutlinePage{{}, 10, 10, 72, 72}) == "");
}

TEST_CASE("lines and marks are stroked after the outlines") {
    OutlinePage page = smallPage();
    page.lines = {{PathStep::Move, 0, 0, 0, 0, 1, 2},
                  {PathStep::Line, 0, 0, 0, 0, 3.25, 4},
                  {PathStep::Close, 0, 0, 0, 0, 1, 2}};
    page.marks = {{PathStep::Move, 0, 0, 0, 0, 5, 6}, {PathStep::Curve, 1, 2, 3, 4, 5, 6.5}};
    CHECK(pdfPageContent(page) ==
          "q\n0.12 0 0 -0.24 0 144 cm\n"
          "0 0 m\n100 0 l\n100 50 l\nh\n"
          "10 10 m\n20 10 l\n20 20 l\nh\n"
          "f*\n"
          "0 G 2.362 w\n1 2 m\n3.25 4 l\nh\nS\n"
          "1 0 0 RG 4.724 w\n5 6 m\n1 2 3 4 5 6.5 c\nS\n"
          "Q\n");
}

TEST_CASE("a PDF has one page of the true size, a title and a date") {
    const TempFolder folder;
    const DateOfSource none(nullptr);
    written(smallPage(), folder / "out.pdf", 951868800);
    QPDF pdf;
    pdf.processFile((folder / "out.pdf").c_str());
    const auto pages = QPDFPageDocumentHelper(pdf).getAllPages();
    REQUIRE(pages.size() == 1);
    QPDFObjectHandle page = pages[0].getObjectHandle();
    CHECK(page.getKey("/MediaBox").unparse() == "[ 0 0 144 144 ]");
    CHECK_FALSE(page.hasKey("/UserUnit"));
    CHECK(page.getKey("/Contents").isStream());
    QPDFObjectHandle info = pdf.getTrailer().getKey("/Info");
    CHECK(info.getKey("/Title").getUTF8Value() == "sc\xC3\xA4n");
    CHECK(info.getKey("/CreationDate").getStringValue() == "D:20000301000000Z");
}

TEST_CASE("the same page gives the same bytes, and another page another identifier") {
    const TempFolder folder;
    const DateOfSource none(nullptr);
    const std::string first = written(smallPage(), folder / "a.pdf", 951868800);
    CHECK(written(smallPage(), folder / "b.pdf", 951868800) == first);
    OutlinePage other = smallPage();
    other.outlines.add(Points{{1, 1}, {3, 3}, {5, 1}});
    CHECK(written(other, folder / "c.pdf", 951868800) != first);
}

TEST_CASE("a page beyond 14400 points has a user unit") {
    const TempFolder folder;
    OutlinePage page = smallPage();
    page.xUnitsPerInch = page.yUnitsPerInch = 3;  // 400 x 200 inches, 28800 points
    written(page, folder / "out.pdf", std::nullopt);
    QPDF pdf;
    pdf.processFile((folder / "out.pdf").c_str());
    QPDFObjectHandle object = QPDFPageDocumentHelper(pdf).getAllPages()[0].getObjectHandle();
    CHECK(object.getKey("/UserUnit").getIntValue() == 2);
    CHECK(object.getKey("/MediaBox").unparse() == "[ 0 0 14400 7200 ]");
    CHECK(pdfPageMatrix(page) == "12 0 0 -12 0 7200");
    CHECK_FALSE(pdf.getTrailer().getKey("/Info").hasKey("/CreationDate"));
}

TEST_CASE("SOURCE_DATE_EPOCH comes before the input's date") {
    {
        const DateOfSource set("951868800");
        CHECK(documentDate(7) == 951868800);
        CHECK(documentDate(std::nullopt) == 951868800);
    }
    for (const char* bad : {"", "yesterday", "-5", "12 ", "99999999999999999999"}) {
        const DateOfSource set(bad);
        CHECK(documentDate(7) == 7);
    }
    const DateOfSource none(nullptr);
    CHECK(documentDate(7) == 7);
    CHECK_FALSE(documentDate(std::nullopt).has_value());
}
