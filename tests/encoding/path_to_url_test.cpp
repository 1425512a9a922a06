#include <doctest/doctest.h>

#include <new>
#include <string>

#include "tests/support/fake_host.h"
#include "vaskel/encoding.h"

using namespace Vaskel;

namespace {

constexpr const char* kKept = "kept://before";

std::string repeated(std::size_t count, const std::string& what) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += what;
    return text;
}

std::string urlOf(const std::string& path, const std::string& scheme) {
    Orlune::FileSpecURL url;
    url = kKept;
    PathToURL(path, scheme, url);
    return url.GetURL();
}

struct Row {
    const char* why;
    std::string path;
    std::string scheme;
    std::string url;
};

const Row kRows[] = {
    {"absolute", "/Volumes/disk/a b.txt", "file", "file:///Volumes/disk/a%20b.txt"},
    {"relative", "a/name", "file", "file://a/name"},
    {"a leaf behind a slash", "/name", "file", "file://name"},
    {"a leaf alone", "name", "file", "file://name"},
    {"its own scheme", "http://server/my dir/x y", "file", "http://server/my%20dir/x%20y"},
    {"its own scheme, absolute", "file:///v v/d d/x", "http", "file:///v v/d%20d/x"},
    {"the first component stays", "/a b/c d/e f", "file", "file:///a b/c%20d/e%20f"},
    {"a host alone is the leaf", "http://ser ver/", "", "http://ser%20ver"},
    {"runs of slashes", "//a///b////c//", "file", "file:///a/b/c"},
    {"no scheme", "/a/b", "", "/a/b"},
    {"no scheme, relative", "a/b", "", "a/b"},
    {"an own empty scheme", "://a/b", "http", "a/b"},
    {"a scheme mark too short", ":/a/b", "x", "x://:/a/b"},
    {"the first mark counts", "a://b://c", "x", "a://b:/c"},
    {"an opening bracket and a colon", "/a<b/c:d", "", "file:///a<b/c%3Ad"},
    {"no colon behind the bracket", "/a:b/c<d", "", "/a:b/c%3Cd"},
    {"a bracket while there is a scheme", "/a<b/c:d", "x", "x:///a<b/c%3Ad"},
    {"a bracket behind an own empty scheme", "://a<b:c/d", "x", "file://a<b:c/d"},
    {"only the first bracket", "/<a:<b", "", "file://%3Ca%3A%3Cb"},
    {"UTF-8 in the middle and at the end", "/a/\xC3\xA9/\xE2\x82\xAC", "f",
     "f:///a/%C3%A9/%E2%82%AC"},
    {"beyond U+FFFF", "/a/\xF0\x9F\x98\x80/b", "f", "f:///a/%F0%9F%98%80/b"},
    {"a zero byte ends a middle", {"/a/b\0c/d", 9}, "f", "f:///a/b/d"},
    {"a zero byte ends the leaf", {"/a/b\0c", 7}, "f", "f:///a/b"},
    {"a zero byte in the first ends all", {"/a\0b/c", 6}, "f", "f:///a"},
    {"a zero byte in the scheme ends all", {"h\0x://a/b/c", 11}, "f", "h"},
    {"a broken first stays", "/\xC3/x", "f", "f:///\xC3/x"},
    {"a broken middle becomes empty", "/a/\xC3/b", "f", "f:///a//b"},
    {"a long middle is cut", "/a/" + repeated(2000, "m") + "/b", "f",
     "f:///a/" + repeated(1023, "m") + "/b"},
    {"a long leaf is not", "/a/" + repeated(5000, " "), "f", "f:///a/" + repeated(5000, "%20")},
    {"a long first is not", "/" + repeated(5000, "a") + "/b", "f",
     "f:///" + repeated(5000, "a") + "/b"},
    {"the longest encoded middle fits", "/a/" + repeated(1023, "\xE2\x82\xAC") + "/b", "f",
     "f:///a/" + repeated(1023, "%E2%82%AC") + "/b"},

    {"nothing", "", "file", kKept},
    {"one slash", "/", "file", kKept},
    {"slashes only", "//", "file", kKept},
    {"nothing behind the scheme", "http://", "file", kKept},
    {"slashes behind the scheme", "http:////", "file", kKept},
    {"only the mark", "://", "file", kKept},
};

}  // namespace

TEST_CASE("PathToURL makes a URL of a path") {
    for (const Row& row : kRows) {
        CAPTURE(row.why);
        CAPTURE(row.path);
        CHECK(urlOf(row.path, row.scheme) == row.url);
    }
}

TEST_CASE("PathToURL resets the old URL once, and only for a new one") {
    struct Counting : Orlune::FileSpecURL {
        using FileSpecURL::operator=;
        void Reset() override {
            ++resets;
            FileSpecURL::Reset();
        }
        int resets = 0;
    };
    Counting url;
    PathToURL("//", "file", url);
    CHECK(url.resets == 0);
    PathToURL("/a/b", "file", url);
    CHECK(url.resets == 1);
    CHECK(url.GetURL() == "file:///a/b");
}

TEST_CASE("PathToURL reads a path that is the text of its own output") {
    Orlune::FileSpecURL url;
    url = "http://server/some long directory name/x";
    PathToURL(url.GetURL(), "", url);
    CHECK(url.GetURL() == "http://server/some%20long%20directory%20name/x");
}

TEST_CASE("PathToURL finds slashes at any distance and in texts of any length") {
    for (std::size_t length = 1; length <= 40; ++length) {
        // '.' and '0' are next to the slash; so is 0xAF but for its highest bit.
        for (const char* letter : {"m", ".", "0"}) {
            const std::string name = repeated(length, letter);
            CAPTURE(name);
            CHECK(urlOf("/v/" + name + "/" + name + "//b", "f") ==
                  "f:///v/" + name + "/" + name + "/b");
        }
        CHECK(urlOf("/v/" + repeated(length, "\xC3\xAF") + "/b", "f") ==
              "f:///v/" + repeated(length, "%C3%AF") + "/b");
    }
    for (std::size_t length = 480; length <= 520; ++length) {
        CAPTURE(length);
        const std::string name(length, 'n');
        CHECK(urlOf(name + "/b", "f") == "f://" + name + "/b");
        CHECK(urlOf("/v/" + name, "f") == "f:///v/" + name);
    }
}

TEST_CASE("PathToURL makes room for what grows more than expected") {
    const std::string path = "/v" + repeated(2000, "/ \xE2\x82\xAC ");
    CHECK(urlOf(path, "f") == "f:///v" + repeated(2000, "/%20%E2%82%AC%20"));
    CHECK(urlOf("/v/w" + repeated(30000, " "), "f") == "f:///v/w" + repeated(30000, "%20"));
}

TEST_CASE("PathToURL takes a million components") {
    const std::string path = "/v" + repeated(1000000, "/c");
    CHECK(urlOf(path, "file") == "file://" + path);
    CHECK(urlOf(repeated(1000000, "/"), "file") == kKept);
}

TEST_CASE("PathToURL leaves the output alone or reset when memory ends") {
    // Most of it grows to three times its length, for which room is made late.
    const std::string path = "/volume/" + repeated(30000, " ");
    Orlune::FileSpecURL url;
    int kept = 0, reset = 0;
    const int failures = failEachAllocation([&] {
        Orlune::FileSpecURL fresh;
        fresh = kKept;  // short: takes no allocation
        try {
            PathToURL(path, "file", fresh);
            url = fresh;
        } catch (const std::bad_alloc&) {
            kept += fresh.GetURL() == kKept;
            reset += fresh.GetURL().empty();
        }
    });
    CHECK(kept == 2);              // the components, and what the URL is expected to take
    CHECK(reset == 2);             // more room, and the output's own text
    CHECK(failures == 2 + 2 + 1);  // one more where url itself is stored
    CHECK(url.GetURL().size() > 90000);
}
