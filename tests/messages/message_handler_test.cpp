#include <doctest/doctest.h>

#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "tests/messages/recorder.h"
#include "tests/support/fake_host.h"

namespace {

using namespace Vaskel;
using Installed = boost::optional<MessageHandlerRetainer>;

// A text handler that adds its letter and then the text to a log.
MessageTextHandler logger(std::string& log, char letter) {
    return [&log, letter](const char* text, MessageSeverity, MessageVolatility) {
        log += letter;
        log += text;
    };
}

void call(const MessageHandlerRetainer& retainer, const char* text) {
    boost::get<MessageTextHandler>(retainer.GetMessageHandler())(text, kMessageNote,
                                                                 kMessageLasting);
}

TEST_CASE("at first nothing is installed, and removing nothing leaves nothing") {
    CHECK_FALSE(setMessageHandler(boost::none).has_value());
    CHECK_FALSE(setMessageHandler(boost::none).has_value());
    report("dropped");
}

TEST_CASE("installing returns the handler that was installed before") {
    Recorder recorder;
    std::string log;
    CHECK_FALSE(setAdvancedMessageHandler(logger(log, 'A')).has_value());
    report("1");
    const Installed first = setAdvancedMessageHandler(logger(log, 'B'));
    report("2");
    REQUIRE(first.has_value());
    CHECK(first->GetMessageHandler().which() == 0);
    call(*first, "3");
    const Installed second = setMessageHandler(first);
    report("4");
    REQUIRE(second.has_value());
    call(*second, "5");
    CHECK(log == "A1B2A3A4B5");
}

TEST_CASE("a handler of one kind replaces one of the other") {
    Recorder recorder;
    recorder.takeTexts();
    const Installed texts = setMessageHandler(retained(recorder.errorHandler()));
    REQUIRE(texts.has_value());
    CHECK(texts->GetMessageHandler().which() == 0);
    report("to the error handler");
    CHECK(recorder.errors().size() == 1);
    const Installed errors = setMessageHandler(texts);
    REQUIRE(errors.has_value());
    CHECK(errors->GetMessageHandler().which() == 1);
    report("to the text handler");
    CHECK(recorder.texts().size() == 1);
    CHECK(recorder.errors().empty());
}

TEST_CASE("a retainer is a plain value that installs nothing") {
    Recorder recorder;
    std::string log;
    MessageHandlerRetainer a(MessageHandler(logger(log, 'A')));
    MessageHandlerRetainer b(MessageHandler(logger(log, 'B')));
    {
        const MessageHandlerRetainer copy(a);
        call(copy, "1");
    }
    b = a;
    call(b, "2");
    MessageHandlerRetainer moved(std::move(b));
    call(moved, "3");
    MessageHandlerRetainer target(recorder.errorHandler());
    target = std::move(moved);
    call(target, "4");
    call(a, "5");
    report("dropped");
    CHECK(log == "A1A2A3A4A5");
}

TEST_CASE("installed and returned handlers are copies with state of their own") {
    Recorder recorder;
    std::string log;
    const MessageHandlerRetainer counting(MessageHandler(MessageTextHandler(
        [&log, count = 0](const char*, MessageSeverity, MessageVolatility) mutable {
            log += std::to_string(++count);
        })));
    setMessageHandler(counting);
    report("t");
    report("t");
    const Installed removed = setMessageHandler(boost::none);
    call(counting, "t");
    REQUIRE(removed.has_value());
    call(*removed, "t");
    CHECK(log == "1213");
}

TEST_CASE("a handler may replace or remove itself and goes on running") {
    for (const bool replace : {false, true}) {
        CAPTURE(replace);
        Recorder recorder;
        std::string log;
        // The state would be gone if the running function were destroyed.
        setAdvancedMessageHandler([&, state = std::string("a text of more than fifteen bytes")](
                                      const char*, MessageSeverity, MessageVolatility) {
            if (replace)
                setAdvancedMessageHandler(logger(log, 'B'));
            else
                setMessageHandler(boost::none);
            report("inside ");
            log += state;
        });
        report("1");
        report(" 2");
        CHECK(log == (replace ? "Binside a text of more than fifteen bytesB 2"
                              : "a text of more than fifteen bytes"));
    }
}

TEST_CASE("a replaced handler is destroyed at once, a running one when it returns") {
    Recorder recorder;
    auto state = std::make_shared<int>(0);
    const std::weak_ptr<int> watch = state;
    setAdvancedMessageHandler([state](const char*, MessageSeverity, MessageVolatility) {
        setMessageHandler(boost::none);
        CHECK(state.use_count() > 0);
    });
    state.reset();
    CHECK_FALSE(watch.expired());
    report("t");
    CHECK(watch.expired());
}

TEST_CASE("a handler that is given up within its calls lives until the outermost returns") {
    Recorder recorder;
    enum { kRemoved, kReplaced, kThrown };
    for (const int how : {kRemoved, kReplaced, kThrown}) {
        CAPTURE(how);
        auto state = std::make_shared<int>(0);
        const std::weak_ptr<int> watch = state;
        int depth = 0, calls = 0;
        setAdvancedMessageHandler([state, how, &depth, &calls](const char*, MessageSeverity,
                                                               MessageVolatility) {
            ++calls;
            if (++depth < 3) {
                try {
                    report("deeper");
                } catch (const HostFailure&) {
                }
            } else if (how == kReplaced) {
                setAdvancedMessageHandler([](const char*, MessageSeverity, MessageVolatility) {});
            } else {
                setMessageHandler(boost::none);
                if (how == kThrown) throw HostFailure{};
            }
            --depth;
            CHECK(state.use_count() > 0);
        });
        state.reset();
        report("outermost");
        CHECK(calls == 3);
        CHECK(watch.expired());
        setMessageHandler(boost::none);
    }
}

TEST_CASE("a handler's destructor finds the new state") {
    Recorder recorder;
    std::string log;
    struct Reporter {
        ~Reporter() { report("gone"); }
    };
    auto held = std::make_shared<Reporter>();
    setAdvancedMessageHandler([held](const char*, MessageSeverity, MessageVolatility) {});
    held.reset();
    setAdvancedMessageHandler(logger(log, 'B'));  // the result goes, the last owner
    CHECK(log == "Bgone");
}

TEST_CASE("what a handler throws reaches the reporting caller") {
    Recorder recorder;
    int calls = 0;
    setAdvancedMessageHandler([&](const char*, MessageSeverity, MessageVolatility) {
        ++calls;
        throw HostFailure{};
    });
    CHECK_THROWS_AS(report("1"), HostFailure);
    CHECK_THROWS_AS(report("2"), HostFailure);
    CHECK(calls == 2);
}

TEST_CASE("messages within a handler reach the handler again") {
    Recorder recorder;
    std::string log;
    setAdvancedMessageHandler([&](const char* text, MessageSeverity, MessageVolatility) {
        log += text;
        std::string wrapped("(");
        wrapped += text;
        wrapped += ')';
        if (log.size() < 5) report(wrapped.c_str());
        log += '.';
    });
    report("a");
    CHECK(log == "a(a)((a))...");
}

TEST_CASE("memory that ends while a handler is installed leaves the old one") {
    Recorder recorder;
    std::string log;
    log.reserve(1000);
    setAdvancedMessageHandler(logger(log, 'A'));
    const Installed next(MessageHandler(MessageTextHandler(
        [&log, pad = std::string(100, 'p')](const char*, MessageSeverity, MessageVolatility) {
            log += pad.size() == 100 ? 'B' : '?';
        })));
    const int failures = failEachAllocation([&] {
        try {
            setMessageHandler(next);
            report("");
        } catch (const std::bad_alloc&) {
            report("");
        }
    });
    CHECK(failures >= 2);
    CHECK(log == std::string(static_cast<std::size_t>(failures), 'A') + "B");
}

// Lives from before the library's own static objects until after them, as other
// libraries' objects may.
struct Outliving {
    Outliving() {
        report("dropped");
        setAdvancedMessageHandler(logger(log, 'L'));
        report("at load");
        setMessageHandler(boost::none);
    }
    ~Outliving() {
        if (!watchesExit) return;
        const std::string before = log;
        report("dropped");
        if (!state.expired() || log != before) std::abort();
    }
    std::string log;
    std::weak_ptr<int> state;
    bool watchesExit = false;
};
__attribute__((init_priority(101))) Outliving gOutliving;

TEST_CASE("messages work while libraries are loaded, and are dropped while they go") {
    CHECK(gOutliving.log == "Lat load");
    // The end of the program goes on from here.
    std::atexit([] {
        auto state = std::make_shared<int>(0);
        gOutliving.state = state;
        gOutliving.watchesExit = true;
        setAdvancedMessageHandler([state](const char* text, MessageSeverity, MessageVolatility) {
            gOutliving.log += text;
        });
        report("at exit");
        if (gOutliving.log != "Lat loadat exit") std::abort();
    });
}

// Its copies call back, once armed: what is copied must outlive that.
struct Meddler {
    std::shared_ptr<bool> armed = std::make_shared<bool>(false);
    std::string text = std::string(100, 'x');

    Meddler() = default;
    Meddler(const Meddler& other) : armed(other.armed) {
        if (std::exchange(*armed, false)) Vaskel::setMessageHandler(boost::none);
        text = other.text;
    }
    void operator()(const char*, Vaskel::MessageSeverity, Vaskel::MessageVolatility) const {}
};

TEST_CASE("setMessageHandler: a handler may remove itself while it is copied") {
    const Meddler meddler;
    Vaskel::setAdvancedMessageHandler(meddler);
    *meddler.armed = true;
    const auto before = Vaskel::setMessageHandler(boost::none);
    CHECK(before.has_value());
    CHECK_FALSE(setMessageHandler(boost::none).has_value());
}

}  // namespace
