#include <doctest/doctest.h>

#include <climits>
#include <string>

#include "tests/messages/asker.h"
#include "tests/support/fake_host.h"

namespace {

using namespace Vaskel;
using Strings = std::vector<std::string>;

TEST_CASE("without an ask handler a question is answered with -1") {
    CHECK(MessageAsk("key", "text 1", "text 2", "text 3") == -1);
}

TEST_CASE("a question reaches the handler in order and returns its answer") {
    Asker asker;
    for (const int answer : {0, 1, -1, 77, INT_MIN, INT_MAX}) {
        asker.answer = answer;
        CHECK(MessageAsk("key", "text 1", "text 2", "text 3") == answer);
        CHECK(asker.questions() == Strings{"text 1|text 2|text 3|key"});
    }
    CHECK(MessageAsk("", "", "", nullptr) == INT_MAX);
    CHECK(asker.questions() == Strings{"||(null)|"});
}

TEST_CASE("the further arguments of a question reach the handler") {
    Asker asker;
    asker.formatsText1 = true;
    MessageAsk("key", "%s %d %.1f %s %s %s %ld", "2", "3", "a", 7, 2.5, "b", "c", "d", 9L);
    CHECK(asker.formatted() == Strings{"a 7 2.5 b c d 9"});
}

TEST_CASE("a direct question keeps nothing and knows no blocks") {
    Asker asker;
    MessageBlockDelimiter block(3001);
    MessageAsk("direct", "1", "2", "3");
    MessageAsk("direct", "1", "2", "3");
    CHECK(asker.questions().size() == 2);
    CHECK(MessageBlocks::Instance()->GetMessageAnswer(3002, "direct") == -1);
}

TEST_CASE("an ask handler may throw, ask again, and take itself away") {
    Asker asker;
    asker.body = []() -> int { throw HostFailure{}; };
    CHECK_THROWS_AS(MessageAsk("key", "1", "2", "3"), HostFailure);
    int depth = 0;
    asker.body = [&] { return ++depth < 3 ? MessageAsk("inner", "1", "2", "3") + 10 : 5; };
    CHECK(MessageAsk("key", "1", "2", "3") == 25);
    asker.body = [] {
        SetMessageAskHandler(nullptr);
        return 6;
    };
    CHECK(MessageAsk("key", "1", "2", "3") == 6);
    CHECK(MessageAsk("key", "1", "2", "3") == -1);
}

}  // namespace
