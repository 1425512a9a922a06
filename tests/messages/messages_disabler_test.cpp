#include <doctest/doctest.h>

#include <memory>
#include <new>
#include <string>

#include "tests/messages/recorder.h"
#include "tests/support/fake_host.h"

namespace {

using namespace Vaskel;

TEST_CASE("nested disablers drop messages and restore what each found") {
    Recorder recorder;
    recorder.takeTexts();
    CHECK_FALSE(ScopedMessagesDisabler::mActive);
    {
        ScopedMessagesDisabler outer;
        CHECK(ScopedMessagesDisabler::mActive);
        report("outer");
        {
            ScopedMessagesDisabler inner;
            CHECK(ScopedMessagesDisabler::mActive);
            report("inner");
        }
        CHECK_FALSE(ScopedMessagesDisabler::mActive);  // a flag, not a count
        report("still off");
        CHECK(recorder.texts().empty());
    }
    CHECK_FALSE(ScopedMessagesDisabler::mActive);
    report("on");
    CHECK(recorder.texts() == std::vector<Delivered>{{"on", 1, 0}});
}

TEST_CASE("a disabler over no handler ends with no handler, even if one came meanwhile") {
    Recorder recorder;
    {
        ScopedMessagesDisabler disabler;
        recorder.takeTexts();
        report("heard");
    }
    report("dropped");
    CHECK(recorder.texts() == std::vector<Delivered>{{"heard", 1, 0}});
    CHECK_FALSE(setMessageHandler(boost::none).has_value());
}

TEST_CASE("a copied disabler restores the same handler once more") {
    Recorder recorder;
    recorder.takeTexts();
    auto disabler = std::make_unique<ScopedMessagesDisabler>();
    auto copy = std::make_unique<ScopedMessagesDisabler>(*disabler);
    disabler.reset();
    setMessageHandler(boost::none);
    report("dropped");
    copy.reset();
    report("heard");
    CHECK(recorder.texts() == std::vector<Delivered>{{"heard", 1, 0}});
}

TEST_CASE("assigning a disabler takes over what the other kept") {
    Recorder recorder;
    recorder.takeTexts();
    {
        ScopedMessagesDisabler first;
        {
            ScopedMessagesDisabler second;  // has found nothing installed
            second = first;
            ScopedMessagesDisabler& same = second;
            second = same;
        }
        report("heard");
        first = ScopedMessagesDisabler();  // the temporary keeps the handler and restores it
        report("heard again");
    }
    report("and again");
    CHECK(recorder.texts() ==
          std::vector<Delivered>{{"heard", 1, 0}, {"heard again", 1, 0}, {"and again", 1, 0}});
}

TEST_CASE("a handler that only a disabler keeps goes on running when that lets it go") {
    Recorder recorder;
    for (const bool assign : {false, true}) {
        CAPTURE(assign);
        auto state = std::make_shared<std::string>("a text of more than fifteen bytes");
        const std::weak_ptr<std::string> watch = state;
        std::string log;
        bool kept = false;
        setAdvancedMessageHandler(
            [state, assign, &log, &watch, &kept](const char*, MessageSeverity, MessageVolatility) {
                {
                    const ScopedMessagesDisabler overNothing = [] {
                        const ScopedMessagesDisabler keeps;  // this handler, until it is made
                        return ScopedMessagesDisabler();
                    }();
                    ScopedMessagesDisabler keeper;
                    if (assign) keeper = overNothing;
                    log += *state;
                }
                // The end of overNothing has taken away what keeper installed.
                kept = !watch.expired();
            });
        state.reset();
        report("t");
        CHECK(kept);
        CHECK(log == "a text of more than fifteen bytes");
        setMessageHandler(boost::none);
        CHECK(watch.expired());
    }
}

TEST_CASE("a disabler allocates nothing, at its start and at its end") {
    Recorder recorder;
    recorder.takeTexts();
    const long before = allocationCount();
    { ScopedMessagesDisabler disabler; }
    CHECK(allocationCount() == before);
}

TEST_CASE("memory that ends while a disabler is copied leaves both as they were") {
    Recorder recorder;
    recorder.takeTexts();
    {
        ScopedMessagesDisabler first;
        ScopedMessagesDisabler second;
        CHECK(failEachAllocation([&] {
                  try {
                      second = first;
                  } catch (const std::bad_alloc&) {
                  }
              }) >= 1);
    }
    report("heard");
    CHECK(recorder.texts() == std::vector<Delivered>{{"heard", 1, 0}});
}

TEST_CASE("a disabler copied over no handler restores none") {
    Recorder recorder;
    {
        const ScopedMessagesDisabler empty;
        recorder.takeTexts();
        ScopedMessagesDisabler copy(empty);
        ScopedMessagesDisabler assigned;
        assigned = empty;
    }
    CHECK_FALSE(setMessageHandler(boost::none).has_value());
}

}  // namespace
