#include "samples/proof/console.h"

#include <doctest/doctest.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/orlune.h"
#include "tests/samples/pictures.h"

using namespace Proof;

namespace {

// What body makes a console print.
template <class Body>
std::string printed(Colour colour, Body body) {
    const TempFolder folder;
    const std::string path = folder / "stream";
    std::FILE* stream = std::fopen(path.c_str(), "wb");
    REQUIRE(stream != nullptr);
    {
        Console console(stream, colour);
        body(console);
    }
    std::fclose(stream);
    return readFile(path);
}

Vaskel::MessageSeverity severity(int value) { return static_cast<Vaskel::MessageSeverity>(value); }

}  // namespace

TEST_CASE("a message is a line with program and severity") {
    const std::string names[] = {"note", "note", "warning", "error", "fatal error", "error"};
    for (int value = 0; value < 6; ++value)
        CHECK(printed(Colour::Auto, [&](Console& console) {
                  console.message(severity(value), "text");
              }) == "vaskel-proof: " + names[value] + ": text\n");
    CHECK(printed(Colour::Always, [](Console& console) { console.message(severity(3), "text"); }) ==
          "vaskel-proof: \033[1;31merror:\033[0m text\n");
}

TEST_CASE("a quiet console keeps notes to itself, not warnings and errors") {
    CHECK(printed(Colour::Never, [](Console& console) {
              console.setQuiet(true);
              console.message(severity(0), "a");
              console.message(severity(1), "b");
              console.message(severity(2), "c");
              console.message(severity(3), "d");
          }) == "vaskel-proof: warning: c\nvaskel-proof: error: d\n");
}

TEST_CASE("a stream that is no terminal gets no progress") {
    CHECK(printed(Colour::Auto, [](Console& console) {
              console.progress("tracing", 50);
              console.endProgress();
          }) == "");
}

TEST_CASE("messages of the library and lines of its developers reach the console") {
    CHECK(printed(Colour::Never,
                  [](Console& console) {
                      const MessagesOnConsole messages(console);
                      note("1");
                      warning("2 %s");
                      error("3");
                      Vaskel::message(severity(2), static_cast<Vaskel::MessageVolatility>(0),
                                      "%d mm", 4);
                      Orlune::debugstring("5");
                  }) ==
          "vaskel-proof: note: 1\nvaskel-proof: warning: 2 %s\nvaskel-proof: error: 3\n"
          "vaskel-proof: warning: 4 mm\nvaskel-proof: note: debug: 5\n");
    CHECK(printed(Colour::Never, [](Console& console) {
              { const MessagesOnConsole messages(console); }
              error("to nobody");
          }) == "");
}

TEST_CASE("the progress line says task, share and time left, as far as they fit") {
    const std::string half = "tracing  [###############               ]   50 %";
    CHECK(progressLine("tracing", 50, 65, 80) == half + "  1:05 left");
    CHECK(progressLine("tracing", 50, 0.2, 80) == half + "  0:01 left");
    CHECK(progressLine("tracing", 50, -1, 80) == half);
    CHECK(progressLine("tracing", 50, 65, 50) == half);
    CHECK(progressLine("tracing", 50, 65, 30) == "tracing   50 %");
    CHECK(progressLine("tracing", 50, 65, 9) == "50 %");
    CHECK(progressLine("t", 0, -1, 80) == "t  [                              ]    0 %");
    CHECK(progressLine("t", 100, 0, 80) == "t  [##############################]  100 %  0:00 left");
    CHECK(progressLine("t", 250, -1, 80) == "t  [##############################]  100 %");
}
