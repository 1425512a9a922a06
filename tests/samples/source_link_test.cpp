#include "samples/proof/make/source_link.h"

#include <doctest/doctest.h>

#include <filesystem>

using namespace Proof;

TEST_CASE("a link leads to the URL of a file or of a place with a scheme") {
    struct Row {
        const char* path;
        const char* url;
    };
    const Row rows[] = {
        {"/jobs/me/scan.tif", "file:///jobs/me/scan.tif"},
        {"/jobs/me/a b/100%.tif", "file:///jobs/me/a%20b/100%25.tif"},
        {"/jobs/../jobs//me/./scan.tif", "file:///jobs/me/scan.tif"},
        // A first folder that has to be encoded, and a file in the root.
        {"/My Scans/a.tif", "file://localhost/My%20Scans/a.tif"},
        {"/Gr\xC3\xB6\xC3\x9F"
         "e/a.tif",
         "file://localhost/Gr%C3%B6%C3%9F"
         "e/a.tif"},
        {"/a:b/c.tif", "file://localhost/a%3Ab/c.tif"},
        {"/scan.tif", "file://localhost/scan.tif"},
        // Two slashes behind a colon are one in a path of the root.
        {"http://server/my jobs/a", "http://server/my%20jobs/a"},
        {"file:///jobs/me/a b", "file:///jobs/me/a%20b"},
        {"https://server", "https://server"},
    };
    for (const Row& row : rows) {
        CAPTURE(row.path);
        CHECK(sourceUrl(row.path) == row.url);
    }
}

TEST_CASE("a relative path begins at the working folder") {
    const std::string here = std::filesystem::current_path().string();
    CHECK(sourceUrl("scan.tif") == sourceUrl(here + "/scan.tif"));
    CHECK(sourceUrl("../scan.tif") ==
          sourceUrl(std::filesystem::current_path().parent_path().string() + "/scan.tif"));
}
