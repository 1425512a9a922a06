// Orlune: beep, debugger output, clock, progress and cancellation.

#include <chrono>
#include <string>
#include <thread>

#include "adapter.h"
#include "check.h"
#include "platform/orlune/diagnostics.h"
#include "platform/orlune/progress.h"

using namespace Check;

TEST_CASE("Orlune::Beep: sounds once a call") {
    if (!Adapter::takeBeeps()) {
        notChecked("beeps cannot be heard");
        return;
    }
    CHECK(Adapter::takeBeeps()->empty());
    Orlune::Beep(500);
    Orlune::Beep(500);
    CHECK(*Adapter::takeBeeps() == std::vector<int>{500, 500});
    CHECK(Adapter::takeBeeps()->empty());
}

TEST_CASE("Orlune::debug: writes one formatted line") {
    if (!Adapter::takeDebugLines()) {
        notChecked("debugger output cannot be read");
        return;
    }
    Orlune::debug("index %d of %s, %5.2f, 100%%", -3, "table", 2.5);
    CHECK(*Adapter::takeDebugLines() == std::vector<std::string>{"index -3 of table,  2.50, 100%"});
    const std::string text(500, 'x');
    Orlune::debug("%s", text.c_str());
    CHECK(*Adapter::takeDebugLines() == std::vector<std::string>{text});
}

TEST_CASE("Orlune::debugstring: writes the line as it stands") {
    if (!Adapter::takeDebugLines()) {
        notChecked("debugger output cannot be read");
        return;
    }
    Orlune::debugstring("50% of %s %n");
    Orlune::debugstring("");
    CHECK(*Adapter::takeDebugLines() == std::vector<std::string>{"50% of %s %n", ""});
}

TEST_CASE("Orlune::Clock::Ticks: milliseconds of a steady clock") {
    const std::uint32_t before = Orlune::Clock::Ticks();
    const auto from = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    const std::uint32_t passed = Orlune::Clock::Ticks() - before;  // modulo 2^32
    const auto most = std::chrono::duration_cast<std::chrono::milliseconds>(
                          std::chrono::steady_clock::now() - from)
                          .count();
    CHECK(passed >= 59);
    CHECK(passed <= most + 1);
    std::uint32_t last = Orlune::Clock::Ticks();
    for (int i = 0; i < 1000; ++i) {
        const std::uint32_t now = Orlune::Clock::Ticks();
        CHECK(now - last < 0x80000000u);
        last = now;
    }
}

TEST_CASE("Orlune::Progress: shows what is set") {
    if (!Adapter::takeProgress()) {
        notChecked("progress cannot be seen");
        return;
    }
    Orlune::Progress progress;
    for (float percent : {0.0f, 12.5f, 100.0f}) progress.set(percent);
    CHECK(*Adapter::takeProgress() == std::vector<float>{0.0f, 12.5f, 100.0f});
}

TEST_CASE("Orlune::Progress::isCanceled: tells what the user wants, and stays true") {
    if (!Adapter::setCancelled(false)) {
        notChecked("the user cannot be made to cancel");
        return;
    }
    {
        const Orlune::Progress progress;
        CHECK_FALSE(progress.isCanceled());
        Adapter::setCancelled(true);
        CHECK(progress.isCanceled());
        Adapter::setCancelled(false);
        CHECK(progress.isCanceled());
    }
    const Orlune::Progress next;
    CHECK_FALSE(next.isCanceled());
}

TEST_CASE("Orlune::cancel: not 0 when the user has cancelled") {
    if (!Adapter::setCancelled(true)) {
        notChecked("the user cannot be made to cancel");
        return;
    }
    CHECK(Orlune::cancel(0, 0) != 0);
    Adapter::setCancelled(false);
    CHECK(Orlune::cancel(0, 0) == 0);
}
