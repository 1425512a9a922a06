// What an embedding program sets through embedded/host.h, and the services
// behind it.

#include <doctest/doctest.h>

#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "embedded/host.h"
#include "platform/orlune.h"
#include "platform/pemmit.h"
#include "tests/support/fake_host.h"

namespace {

// Restores the defaults at its end, whatever a test sets.
struct Defaults {
    ~Defaults() {
        Embedded::onBeep({});
        Embedded::onDebugLine({});
        Embedded::onProgress({});
        Embedded::onPollCancel({});
        Embedded::setResolution(2400);
        Embedded::setFlatness(0.5);
    }
};

// What stderr gets while body runs.
template <class Body>
std::string standardError(Body body) {
    std::fflush(stderr);
    std::FILE* const file = std::tmpfile();
    REQUIRE(file != nullptr);
    const int before = dup(2);
    dup2(fileno(file), 2);
    body();
    std::fflush(stderr);
    dup2(before, 2);
    close(before);
    std::rewind(file);
    std::string text(4096, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), file));
    std::fclose(file);
    return text;
}

TEST_CASE("without handlers a beep is silent and lines go to standard error") {
    CHECK(standardError([] {
              Orlune::Beep(500);
              Orlune::debugstring("as it stands: %d");
              Orlune::debug("%s and %d", "formatted", 7);
          }) == "as it stands: %d\nformatted and 7\n");
    Orlune::Progress progress;
    progress.set(50.0f);
    CHECK_FALSE(progress.isCanceled());
    CHECK(Orlune::cancel(0, 0) == 0);
}

TEST_CASE("handlers get what the calls pass, until an empty one restores the default") {
    Defaults defaults;
    std::vector<int> tones;
    std::vector<float> percents;
    std::vector<std::string> lines;
    Embedded::onBeep([&](int tone) { tones.push_back(tone); });
    Embedded::onDebugLine([&](const char* line) { lines.push_back(line); });
    Embedded::onProgress([&](float percent) { percents.push_back(percent); });
    Orlune::Beep(500);
    Orlune::Beep(-1);
    Orlune::debug("%d%%", 5);
    Orlune::debugstring("");
    Orlune::Progress progress;
    progress.set(0.0f);
    progress.set(12.5f);
    CHECK(tones == std::vector<int>{500, -1});
    CHECK(lines == std::vector<std::string>{"5%", ""});
    CHECK((percents == std::vector<float>{0.0f, 12.5f}));
    Embedded::onBeep({});
    Embedded::onDebugLine({});
    Embedded::onProgress({});
    Orlune::Beep(1);
    progress.set(1.0f);
    CHECK(standardError([] { Orlune::debugstring("d"); }) == "d\n");
    CHECK(tones.size() == 2);
    CHECK(lines.size() == 2);
    CHECK(percents.size() == 2);
}

TEST_CASE("a debugger line of 1023 bytes comes out whole, a longer one is cut") {
    FakeHost host;
    Orlune::debug("%1023d", 1);
    Orlune::debug("%2000d", 1);
    const auto lines = host.takeDebugLines();
    REQUIRE(lines.size() == 2);
    CHECK(lines[0] == std::string(1022, ' ') + "1");
    CHECK(lines[1] == std::string(1023, ' '));
    const wchar_t noForm[] = {0x416, 0};  // nothing in the C locale: the format comes out
    Orlune::debug("a %ls", noForm);
    CHECK(host.takeDebugLines() == std::vector<std::string>{"a %ls"});
}

TEST_CASE("a handler may replace or remove itself while it runs") {
    Defaults defaults;
    std::string log;
    Embedded::onBeep([&log, mine = std::string("a text of more than fifteen bytes")](int) {
        Embedded::onBeep([&log](int) { log += "|second"; });
        log += mine;
    });
    Orlune::Beep(500);
    Orlune::Beep(500);
    CHECK(log == "a text of more than fifteen bytes|second");
    log.clear();
    Embedded::onPollCancel([&log, mine = std::string("another text of many bytes")] {
        Embedded::onPollCancel({});
        log += mine;
        return true;
    });
    CHECK(Orlune::cancel(0, 0) != 0);
    CHECK(Orlune::cancel(0, 0) == 0);
    CHECK(log == "another text of many bytes");
}

TEST_CASE("a replaced handler is destroyed when the new one is in place") {
    Defaults defaults;
    struct Beeper {
        ~Beeper() { Orlune::Beep(7); }
    };
    std::vector<int> tones;
    auto beeper = std::make_shared<Beeper>();
    Embedded::onBeep([beeper](int) {});
    beeper.reset();
    Embedded::onBeep([&](int tone) { tones.push_back(tone); });
    CHECK(tones == std::vector<int>{7});
}

TEST_CASE("what a handler throws passes through") {
    Defaults defaults;
    Embedded::onBeep([](int) { throw HostFailure{}; });
    Embedded::onDebugLine([](const char*) { throw HostFailure{}; });
    Embedded::onProgress([](float) { throw HostFailure{}; });
    Embedded::onPollCancel([]() -> bool { throw HostFailure{}; });
    CHECK_THROWS_AS(Orlune::Beep(500), HostFailure);
    CHECK_THROWS_AS(Orlune::debug("%d", 1), HostFailure);
    CHECK_THROWS_AS(Orlune::debugstring(""), HostFailure);
    CHECK_THROWS_AS(Orlune::cancel(0, 0), HostFailure);
    Orlune::Progress progress;
    CHECK_THROWS_AS(progress.set(1.0f), HostFailure);
    CHECK_THROWS_AS(progress.isCanceled(), HostFailure);
    Embedded::onPollCancel({});
    CHECK_FALSE(progress.isCanceled());
}

TEST_CASE("calls allocate nothing, whatever their handlers hold") {
    Defaults defaults;
    int calls = 0;
    const std::string large(100, 'l');
    Embedded::onBeep([&calls, large](int) { ++calls; });
    Embedded::onDebugLine([&calls, large](const char*) { ++calls; });
    Embedded::onProgress([&calls, large](float) { ++calls; });
    Embedded::onPollCancel([&calls, large] { return ++calls == 0; });
    const long before = allocationCount();
    Orlune::Beep(500);
    Orlune::debug("%d", 1);
    Orlune::Progress progress;
    progress.set(1.0f);
    progress.isCanceled();
    Orlune::cancel(0, 0);
    CHECK(allocationCount() == before);
    CHECK(calls == 5);
}

TEST_CASE("a progress that was cancelled stays cancelled and asks no more") {
    FakeHost host({.cancelAtPoll = 2});
    Orlune::Progress first;
    CHECK_FALSE(first.isCanceled());
    CHECK(first.isCanceled());
    Embedded::onPollCancel([] { return false; });
    CHECK(first.isCanceled());
    CHECK(host.polls() == 2);
    Orlune::Progress second;
    CHECK_FALSE(second.isCanceled());
    CHECK(Orlune::cancel(1, 2) == 0);
}

TEST_CASE("the resolution is 2400 until it is set, and never below 1") {
    Defaults defaults;
    CHECK(Pemmit::getppi() == 2400);
    for (const int ppi : {1, 72, 2540, INT_MAX}) {
        Embedded::setResolution(ppi);
        CHECK(Pemmit::getppi() == ppi);
    }
    for (const int ppi : {0, -1, INT_MIN}) {
        Embedded::setResolution(ppi);
        CHECK(Pemmit::getppi() == 1);
    }
}

TEST_CASE("assigning an error without memory for its title changes nothing") {
    using Orlune::Core::Error;
    const Error source(Error::kFatal);
    Error target(Error::kWarning);
    const std::int64_t stamp = target.GetTimeStamp();
    failEachAllocation([&] {
        try {
            target = source;
        } catch (const std::bad_alloc&) {
            CHECK(target.GetSeverity() == Error::kWarning);
            CHECK(target.GetTimeStamp() == stamp);
        }
    });
    CHECK(target.GetSeverity() == Error::kFatal);
}

// Runs before the static objects of any shared library exist. The sanitizers
// have no memory of their own ready then.
#if !defined(__SANITIZE_ADDRESS__)
struct Early {
    std::uint32_t ticks;
    int root;
    bool canceled;
    char copy[8];
};
Early gEarly;

void callEarly(int, char**, char**) {
    gEarly.ticks = Orlune::Clock::Ticks();
    Orlune::Beep(500);
    gEarly.root = static_cast<int>(Orlune::mulsqrt(3, 12));
    gEarly.canceled = Orlune::cancel(0, 0) != 0;
    Orlune::strmov(gEarly.copy, "early");
}
__attribute__((section(".preinit_array"), used)) void (*gCallEarly)(int, char**,
                                                                    char**) = callEarly;

TEST_CASE("services work before any static object of any library is constructed") {
    const std::uint32_t since = Orlune::Clock::Ticks() - gEarly.ticks;
    CHECK(since < 600000);  // ten minutes of a steady clock, and modulo 2^32
    CHECK(gEarly.root == 6);
    CHECK_FALSE(gEarly.canceled);
    CHECK(std::string(gEarly.copy) == "early");
}
#endif

}  // namespace
