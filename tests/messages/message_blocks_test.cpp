#include <doctest/doctest.h>

#include <climits>
#include <cstdint>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <type_traits>

#include "tests/messages/asker.h"
#include "tests/messages/blocks_model.h"
#include "tests/support/fake_host.h"

namespace {

using namespace Vaskel;
using Strings = std::vector<std::string>;

static_assert(std::is_same_v<std::underlying_type_t<MessageBlocks::MessageAnswer>, std::int32_t>);
static_assert(std::has_virtual_destructor_v<MessageBlocks>);
static_assert(std::has_virtual_destructor_v<MessageBlockDelimiter>);

// The registry lives on, so that each test takes block numbers of its own.
int newBlock() {
    static int next = 1000;
    return next++;
}

MessageBlocks& registry() { return *MessageBlocks::Instance(); }

void ask(int id, const char* key) { registry().MessageAsk(id, key, "1", "2", "3"); }

TEST_CASE("there is one registry") {
    CHECK(MessageBlocks::Instance() != nullptr);
    CHECK(MessageBlocks::Instance() == MessageBlocks::Instance());
}

TEST_CASE("an open block puts its first question only, whatever the keys") {
    Asker asker;
    const int id = newBlock();
    MessageBlockDelimiter block(id);
    CHECK(registry().GetMessageAnswer(id, "first A") == -1);
    asker.answer = 7;
    ask(id, "first A");
    ask(id, "second A");
    ask(id, "first A");
    CHECK(asker.questions() == Strings{"1|2|3|first A"});
    CHECK(registry().GetMessageAnswer(id, "first A") == 7);
    CHECK(registry().GetMessageAnswer(id, "second A") == -1);
}

TEST_CASE("a closed block neither asks nor answers, and still exists") {
    Asker asker;
    const int id = newBlock();
    CHECK_FALSE(registry().Exists(id));
    {
        MessageBlockDelimiter block(id);
        CHECK(registry().Exists(id));
        ask(id, "closed");
        CHECK(registry().GetMessageAnswer(id, "closed") == 1);
    }
    ask(id, "closed");
    CHECK(asker.questions().size() == 1);
    CHECK(registry().GetMessageAnswer(id, "closed") == -1);
    CHECK(registry().Exists(id));
}

TEST_CASE("a block opened again asks again and replaces the answer") {
    Asker asker;
    const int id = newBlock();
    registry().ActivateBlock(id);
    asker.answer = 5;
    ask(id, "again");
    registry().DeActivateBlock(id);
    registry().ActivateBlock(id);
    CHECK(registry().GetMessageAnswer(id, "again") == -1);
    asker.answer = 6;
    ask(id, "other");
    // Any question makes the kept answers visible.
    CHECK(registry().GetMessageAnswer(id, "again") == 5);
    registry().ActivateBlock(id);  // also without closing it first
    ask(id, "again");
    CHECK(registry().GetMessageAnswer(id, "again") == 6);
    CHECK(asker.questions().size() == 3);
}

TEST_CASE("a block that was never opened asks every time and shows every answer") {
    Asker asker;
    const int id = newBlock();
    for (const int answer : {3, -1, INT_MIN, 4}) {
        asker.answer = answer;
        ask(id, "never opened");
        CHECK(registry().GetMessageAnswer(id, "never opened") == answer);
        CHECK(registry().GetMessageAnswer(newBlock(), "never opened") == answer);
    }
    CHECK(asker.questions().size() == 4);
    CHECK_FALSE(registry().Exists(id));
    // Its questions have been recorded all the same, but opening clears that.
    registry().ActivateBlock(id);
    CHECK(registry().GetMessageAnswer(id, "never opened") == -1);
}

TEST_CASE("a block closed before it was opened exists and stays silent") {
    Asker asker;
    const int id = newBlock();
    registry().DeActivateBlock(id);
    CHECK(registry().Exists(id));
    ask(id, "closed at first");
    CHECK(asker.questions().empty());
    CHECK(registry().GetMessageAnswer(id, "closed at first") == -1);
}

TEST_CASE("without an ask handler nothing is asked and nothing is kept") {
    const int id = newBlock();
    MessageBlockDelimiter block(id);
    ask(id, "nobody");
    CHECK(registry().GetMessageAnswer(id, "nobody") == -1);
    CHECK(registry().GetMessageAnswer(newBlock(), "nobody") == -1);
    Asker asker;  // the question is still to be asked
    ask(id, "nobody");
    CHECK(asker.questions().size() == 1);
}

TEST_CASE("texts, key and arguments reach the handler as they are given") {
    Asker asker;
    const int id = newBlock();
    registry().MessageAsk(id, nullptr, nullptr, nullptr, nullptr);
    CHECK(asker.questions() == Strings{"(null)|(null)|(null)|(null)"});
    asker.answer = 12;
    registry().MessageAsk(id, nullptr, "", "", "");
    CHECK(registry().GetMessageAnswer(id, "") == 12);  // a null key is the empty key
    CHECK(registry().GetMessageAnswer(id, nullptr) == 12);
    asker.formatsText1 = true;
    registry().MessageAsk(id, "key", "%d %s %.1f", "2", "3", 7, "a", 2.5);
    CHECK(asker.formatted() == Strings{"7 a 2.5"});
}

TEST_CASE("a handler that throws leaves the block asked and no answer") {
    Asker asker;
    const int id = newBlock();
    MessageBlockDelimiter block(id);
    asker.body = []() -> int { throw HostFailure{}; };
    CHECK_THROWS_AS(ask(id, "thrown"), HostFailure);
    CHECK(registry().GetMessageAnswer(id, "thrown") == -1);
    CHECK(registry().GetMessageAnswer(newBlock(), "thrown") == -1);
    asker.body = nullptr;
    ask(id, "thrown");
    CHECK(asker.questions().size() == 1);  // the one that threw
}

TEST_CASE("a handler that throws leaves the earlier answer") {
    Asker asker;
    const int id = newBlock();
    asker.answer = 8;
    ask(id, "earlier");
    asker.body = []() -> int { throw HostFailure{}; };
    CHECK_THROWS_AS(ask(id, "earlier"), HostFailure);
    CHECK(registry().GetMessageAnswer(id, "earlier") == 8);
}

TEST_CASE("a handler may ask, open and close blocks itself") {
    Asker asker;
    const int outer = newBlock();
    MessageBlockDelimiter block(outer);
    asker.body = [&] {
        asker.body = nullptr;
        ask(outer, "inner");  // has asked already
        for (int i = 0; i < 100; ++i) {
            MessageBlockDelimiter other(newBlock());
            asker.answer = i;
            ask(newBlock(), "inner");
            ask(newBlock(), "outer");
        }
        return 200;
    };
    ask(outer, "outer");
    CHECK(registry().GetMessageAnswer(outer, "outer") == 200);  // the last to be stored
    CHECK(registry().GetMessageAnswer(outer, "inner") == 99);
    asker.body = [&] {
        registry().ActivateBlock(outer);
        registry().DeActivateBlock(outer);
        SetMessageAskHandler(nullptr);
        return 201;
    };
    registry().ActivateBlock(outer);
    ask(outer, "outer");
    CHECK(registry().GetMessageAnswer(outer, "outer") == -1);
    CHECK(registry().GetMessageAnswer(newBlock(), "outer") == 201);
}

TEST_CASE("a handler may assign to the registry while it is asked") {
    Asker asker;
    const MessageBlocks before(registry());
    const int id = newBlock();
    MessageBlockDelimiter block(id);
    asker.body = [&] {
        registry() = before;
        return 31;
    };
    ask(id, "assigned");
    CHECK_FALSE(registry().Exists(id));
    CHECK(registry().GetMessageAnswer(id, "assigned") == 31);
}

TEST_CASE("a key that changes while its question is asked stays the key") {
    Asker asker;
    const int id = newBlock();
    char key[] = "changing";
    asker.body = [&] {
        key[0] = 'X';
        return 32;
    };
    ask(id, key);
    CHECK(registry().GetMessageAnswer(id, "changing") == 32);
    CHECK(registry().GetMessageAnswer(id, "Xhanging") == -1);
}

TEST_CASE("a copied registry is one of its own") {
    Asker asker;
    const int id = newBlock();
    MessageBlockDelimiter block(id);
    asker.answer = 41;
    ask(id, "copied");
    MessageBlocks copy(registry());
    CHECK(copy.Exists(id));
    CHECK(copy.GetMessageAnswer(id, "copied") == 41);
    copy.DeActivateBlock(id);
    CHECK(copy.GetMessageAnswer(id, "copied") == -1);
    CHECK(registry().GetMessageAnswer(id, "copied") == 41);
    MessageBlocks assigned(copy);
    assigned = registry();
    CHECK(assigned.GetMessageAnswer(id, "copied") == 41);
    const MessageBlocks& same = assigned;
    assigned = same;
    CHECK(assigned.GetMessageAnswer(id, "copied") == 41);
    asker.answer = 42;
    assigned.MessageAsk(newBlock(), "copied", "1", "2", "3");
    CHECK(assigned.GetMessageAnswer(id, "copied") == 42);
    CHECK(registry().GetMessageAnswer(id, "copied") == 41);
}

TEST_CASE("a copied delimiter activates nothing and closes the block once more") {
    Asker asker;
    const int id = newBlock();
    auto block = std::make_unique<MessageBlockDelimiter>(id);
    ask(id, "delimited");
    auto copy = std::make_unique<MessageBlockDelimiter>(*block);
    CHECK(registry().GetMessageAnswer(id, "delimited") == 1);  // not activated anew
    block.reset();
    CHECK(registry().GetMessageAnswer(id, "delimited") == -1);
    registry().ActivateBlock(id);
    ask(id, "delimited");
    CHECK(registry().GetMessageAnswer(id, "delimited") == 1);
    copy.reset();
    CHECK(registry().GetMessageAnswer(id, "delimited") == -1);
}

TEST_CASE("an assigned delimiter closes the other's block and leaves its own open") {
    Asker asker;
    const int own = newBlock(), other = newBlock();
    MessageBlockDelimiter outer(other);
    ask(other, "taken over");
    {
        MessageBlockDelimiter inner(own);
        ask(own, "taken over");
        inner = outer;
        CHECK(registry().GetMessageAnswer(own, "taken over") == 1);
        CHECK(registry().GetMessageAnswer(other, "taken over") == 1);
    }
    CHECK(registry().GetMessageAnswer(own, "taken over") == 1);
    CHECK(registry().GetMessageAnswer(other, "taken over") == -1);
}

TEST_CASE("memory that ends before a question changes nothing and loses no answer") {
    Asker asker;
    const int id = newBlock();
    MessageBlockDelimiter block(id);
    int asked = 0;
    asker.body = [&] { return ++asked; };
    const int failures = failEachAllocation([&] {
        try {
            registry().MessageAsk(id, "a key beyond any short string", nullptr, nullptr, nullptr);
        } catch (const std::bad_alloc&) {
            CHECK(asked == 0);
            CHECK(registry().GetMessageAnswer(id, "a key beyond any short string") == -1);
        }
        asker.questions();
    });
    CHECK(failures >= 2);  // the entry and its key, and then what the test's host needs
    CHECK(asked <= 1);
}

TEST_CASE("memory that ends while a block is opened or copied changes nothing") {
    int id = newBlock();
    CHECK(failEachAllocation([&] {
              try {
                  registry().ActivateBlock(id);
              } catch (const std::bad_alloc&) {
                  CHECK_FALSE(registry().Exists(id));
              }
          }) == 2);
    CHECK(registry().Exists(id));

    MessageBlocks copy(registry());
    registry().ActivateBlock(newBlock());
    const int last = newBlock();
    registry().ActivateBlock(last);
    int failures = 0;
    CHECK(failEachAllocation([&] {
              try {
                  copy = registry();
              } catch (const std::bad_alloc&) {
                  ++failures;
                  CHECK_FALSE(copy.Exists(last));
              }
          }) == failures);
    CHECK(failures >= 4);  // two blocks in each of two maps, and what other tests left
    CHECK(copy.Exists(last));
}

TEST_CASE("a delimiter ends quietly without memory where its entry was taken away") {
    const MessageBlocks before(registry());
    const int id = newBlock();
    auto block = std::make_unique<MessageBlockDelimiter>(id);
    registry() = before;
    {
        FailingAllocation failing(1);
        block.reset();
        CHECK(failing.happened());
    }
    CHECK_FALSE(registry().Exists(id));
}

TEST_CASE("random uses agree with the plain model") {
    CAPTURE("seed 8117");
    std::mt19937 random(8117);
    const MessageBlocks before(registry());
    BlocksModel model;
    Asker asker;
    int asked = 0;
    for (int round = 0; round < 20000; ++round) {
        const int id = 100000 + static_cast<int>(random() % 4);
        const std::string key{'m', static_cast<char>('0' + random() % 3)};
        asker.answer = static_cast<int>(random() % 5) - 1;
        switch (random() % 6) {
            case 0:
                registry().ActivateBlock(id);
                model.activate(id);
                break;
            case 1:
                registry().DeActivateBlock(id);
                model.deactivate(id);
                break;
            case 2:
                if (random() % 500 == 0) {  // start anew, so that unknown blocks occur
                    registry() = before;
                    model = BlocksModel();
                }
                break;
            default:
                ask(id, key.c_str());
                const bool want = model.asks(id);
                if (want) model.answered(key, asker.answer);
                CHECK(asker.questions().size() == (want ? 1u : 0u));
                asked += want;
        }
        for (int i = 100000; i < 100005; ++i) {
            CHECK(registry().Exists(i) == model.exists(i));
            for (const char* k : {"m0", "m1", "m2", "m3"})
                CHECK(registry().GetMessageAnswer(i, k) == model.answer(i, k));
        }
    }
    CHECK(asked > 1000);
    CHECK(asked < 9000);
}

}  // namespace
