#include <doctest/doctest.h>

#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstring>
#include <new>
#include <string>
#include <type_traits>

#include "messages/counted_format.h"
#include "tests/messages/recorder.h"
#include "tests/support/fake_host.h"

namespace {

using namespace Vaskel;

const char* const kNotice = "Message: string too long. Click quit.";

std::vector<std::string> notices(int count) {
    return std::vector<std::string>(static_cast<std::size_t>(count), kNotice);
}

std::string letters(std::size_t count) {
    std::string text(count, 'x');
    for (std::size_t i = 0; i < count; i += 10) text[i] = static_cast<char>('a' + i / 10 % 26);
    return text;
}

// A wide character that has no multibyte form in the C locale, in which tests
// run: the formatter fails there.
constexpr wchar_t kNoForm[] = {0x416, 0};

static_assert(std::is_same_v<std::underlying_type_t<MessageSeverity>, std::int32_t>);
static_assert(std::is_same_v<std::underlying_type_t<MessageVolatility>, std::int32_t>);

TEST_CASE("a message is formatted and reaches the text handler with its values") {
    Recorder recorder;
    recorder.takeTexts();
    message(kMessageWarning, kMessageLasting, "%s has %d pages, %.2f%%", "book", 12, 99.5);
    message(kMessageFatal, kMessageTransient, "%s", "");
    CHECK(recorder.texts() ==
          std::vector<Delivered>{{"book has 12 pages, 99.50%", 2, 0}, {"", 4, 1}});
}

TEST_CASE("severity and volatility are passed on, whatever their value") {
    Recorder recorder;
    recorder.takeTexts();
    for (const int value : {0, 1, 2, 3, 4, 5, -1, INT_MIN, INT_MAX}) {
        message(severity(value), volatility(~value), "%s", "t");
        CHECK(recorder.texts() == std::vector<Delivered>{{"t", value, ~value}});
    }
}

TEST_CASE("a text of exactly 1024 bytes brings the notice, a longer one none") {
    struct Row {
        std::size_t length;
        std::size_t delivered;
        int notices;
    };
    constexpr Row kRows[] = {{0, 0, 0},       {1, 1, 0},       {1022, 1022, 0}, {1023, 1023, 0},
                             {1024, 1024, 1}, {1025, 1024, 0}, {2000, 1024, 0}, {100000, 1024, 0}};
    for (const bool installed : {true, false})
        for (const Row& row : kRows) {
            CAPTURE(installed);
            CAPTURE(row.length);
            FakeHost host;
            Recorder recorder;
            if (installed) recorder.takeTexts();
            const std::string text = letters(row.length);
            message(kMessageError, kMessageLasting, "%s", text.c_str());
            CHECK(host.takeDebugLines() == notices(row.notices));
            if (installed)
                CHECK(recorder.texts() ==
                      std::vector<Delivered>{{text.substr(0, row.delivered), 3, 0}});
            else
                CHECK(recorder.texts().empty());
        }
}

TEST_CASE("the notice comes before the handler runs") {
    FakeHost host;
    Recorder recorder;
    std::vector<std::string> before;
    setAdvancedMessageHandler(
        [&](const char*, MessageSeverity, MessageVolatility) { before = host.takeDebugLines(); });
    message(kMessageError, kMessageLasting, "%1024d", 7);
    CHECK(before == notices(1));
}

TEST_CASE("a notice that throws passes through and leaves the handler installed") {
    Recorder recorder;
    recorder.takeTexts();
    {
        FakeHost host({.throwAtCall = 1});
        CHECK_THROWS_AS(message(kMessageError, kMessageLasting, "%1024d", 7), HostFailure);
    }
    CHECK(recorder.texts().empty());
    message(kMessageError, kMessageLasting, "%s", "again");
    CHECK(recorder.texts() == std::vector<Delivered>{{"again", 3, 0}});
}

TEST_CASE("what cannot be formatted arrives as the empty text without a notice") {
    FakeHost host;
    Recorder recorder;
    recorder.takeTexts();
    const char* const nothing = nullptr;
    message(kMessageError, kMessageLasting, nothing);
    message(kMessageError, kMessageLasting, "before %ls behind", kNoForm);
    // Fails at its 1024th character, which the buffer still has room for.
    message(kMessageError, kMessageLasting, "%1023d%ls", 7, kNoForm);
    CHECK(recorder.texts() == std::vector<Delivered>{{"", 3, 0}, {"", 3, 0}, {"", 3, 0}});
    CHECK(host.takeDebugLines().empty());
}

TEST_CASE("a text that was too long before it failed arrives cut") {
    FakeHost host;
    Recorder recorder;
    recorder.takeTexts();
    const std::string text = letters(2000);
    message(kMessageError, kMessageLasting, "%s%ls", text.c_str(), kNoForm);
    CHECK(recorder.texts() == std::vector<Delivered>{{text.substr(0, 1024), 3, 0}});
    CHECK(host.takeDebugLines().empty());
}

int formatted(MessageBuffer& text, const char* format, ...) __attribute__((format(printf, 2, 3)));
int formatted(MessageBuffer& text, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int count = formatCounted(text, format, arguments);
    va_end(arguments);
    return count;
}

TEST_CASE("the formatter counts up to 1024 and fails beyond, its text always terminated") {
    MessageBuffer text;
    for (const int length : {0, 1, 1022, 1023, 1024, 1025, 1026, 5000}) {
        CAPTURE(length);
        std::memset(text, '#', sizeof text);
        CHECK(formatted(text, "%*s", length, "") == (length <= 1024 ? length : -1));
        CHECK(std::strlen(text) == static_cast<std::size_t>(length <= 1024 ? length : 1024));
    }
}

TEST_CASE("an error-object handler gets an Error with volatility and text") {
    Recorder recorder;
    recorder.takeErrors();
    message(kMessageWarning, volatility(77), "%s %d", "\xC3\xA9", 5);
    const auto errors = recorder.errors();
    REQUIRE(errors.size() == 1);
    const auto* error = dynamic_cast<const Error*>(errors[0].get());
    REQUIRE(error != nullptr);
    CHECK(error->GetVolatility() == 77);
    CHECK(error->GetSeverity() == 2);
    CHECK((error->GetDescription() == L"\u00e9 5"));
    CHECK(errors[0].use_count() == 1);  // nothing here keeps the object
}

TEST_CASE("an installed empty function throws bad_function_call") {
    Recorder recorder;
    setAdvancedMessageHandler({});
    CHECK_THROWS_AS(message(kMessageNote, kMessageLasting, "%s", "t"), std::bad_function_call);
    setMessageHandler(retained(MessageErrorHandler()));
    CHECK_THROWS_AS(message(kMessageNote, kMessageLasting, "%s", "t"), std::bad_function_call);
    recorder.takeTexts();
    message(kMessageNote, kMessageLasting, "%s", "t");
    CHECK(recorder.texts().size() == 1);
}

TEST_CASE("a message by number is the converted text, a blank and the number") {
    struct Row {
        std::string why;
        const char* format;
        long id;
        const char* want;
    };
    const Row kRows[] = {
        {"one string", "no %s", 17, "no x [17]"},
        {"no argument used", "plain", 3, "plain [3]"},
        {"empty format", "", 3, " [3]"},
        {"negative number", "a", -5, "a [-5]"},
        {"the text is no format again", "100%%d %s", 17, "100%d x [17]"},
        {"beyond 32 bits the low ones show", "a", (1L << 32) + 9, "a [9]"},
        {"the sign is that of the low ones", "a", (1L << 31), "a [-2147483648]"},
        {"number 0", "a", 0, "a [0]"},
    };
    Recorder recorder;
    recorder.takeTexts();
    for (const Row& row : kRows) {
        CAPTURE(row.why);
        FixedConvertor convertor(row.format);
        message(kMessageWarning, kMessageTransient, row.id, "x");
        CHECK(recorder.texts() == std::vector<Delivered>{{row.want, 2, 1}});
        CHECK(convertor.ids() == std::vector<long>{row.id});
    }
}

TEST_CASE("both stages of a message by number stop at 1024 bytes, the second with the notice") {
    struct Row {
        std::size_t length;  // of the argument
        std::string want;
        int notices;
    };
    const std::string text = letters(3000);
    const Row rows[] = {
        {1018, text.substr(0, 1018) + " [17]", 0},  // 1023
        {1019, text.substr(0, 1019) + " [17]", 1},  // 1024
        {1020, text.substr(0, 1020) + " [17", 0},   // 1025 are too many
        {1023, text.substr(0, 1023) + " ", 0},     {1024, text.substr(0, 1024), 0},
        {3000, text.substr(0, 1024), 0},
    };
    for (const Row& row : rows) {
        CAPTURE(row.length);
        FakeHost host;
        Recorder recorder;
        recorder.takeTexts();
        FixedConvertor convertor("%s");
        message(kMessageWarning, kMessageLasting, 17L, text.substr(0, row.length).c_str());
        CHECK(recorder.texts() == std::vector<Delivered>{{row.want, 2, 0}});
        CHECK(host.takeDebugLines() == notices(row.notices));
    }
}

TEST_CASE("a message by number whose text fails arrives as the number alone") {
    Recorder recorder;
    recorder.takeTexts();
    FixedConvertor convertor("%ls");
    message(kMessageWarning, kMessageLasting, 17L, kNoForm);
    CHECK(recorder.texts() == std::vector<Delivered>{{" [17]", 2, 0}});
}

TEST_CASE("without a convertor a message by number is dropped") {
    FakeHost host;
    Recorder recorder;
    recorder.takeTexts();
    message(kMessageWarning, kMessageLasting, 17L, "x");
    CHECK(recorder.texts().empty());
    CHECK(host.calls().empty());
}

TEST_CASE("without a handler the number form asks the convertor, the format form does not") {
    FakeHost host;
    Recorder recorder;
    FixedConvertor convertor("%s");
    message(kMessageWarning, kMessageLasting, "%s", "x");
    CHECK(convertor.ids().empty());
    message(kMessageWarning, kMessageLasting, 17L, letters(1019).c_str());
    CHECK(convertor.ids() == std::vector<long>{17});
    CHECK(host.takeDebugLines() == notices(1));
}

struct ThrowingConvertor : MessageIDConvertor {
    std::string ConvertMessageID(long) override { throw HostFailure{}; }
};

TEST_CASE("a convertor may throw, and may take itself away while it is asked") {
    Recorder recorder;
    recorder.takeTexts();
    ThrowingConvertor throwing;
    SetMessageIDConvertor(&throwing);
    CHECK_THROWS_AS(message(kMessageWarning, kMessageLasting, 17L), HostFailure);

    struct Leaving : MessageIDConvertor {
        std::string ConvertMessageID(long) override {
            SetMessageIDConvertor(nullptr);
            message(kMessageNote, kMessageLasting, "%s", "leaving");
            return "last";
        }
    } leaving;
    SetMessageIDConvertor(&leaving);
    message(kMessageWarning, kMessageLasting, 17L);
    message(kMessageWarning, kMessageLasting, 18L);
    CHECK(recorder.texts() == std::vector<Delivered>{{"leaving", 1, 0}, {"last [17]", 2, 0}});
}

TEST_CASE("a text handler costs no allocation") {
    Recorder recorder;
    int calls = 0;
    setAdvancedMessageHandler([&](const char*, MessageSeverity, MessageVolatility) { ++calls; });
    const long before = allocationCount();
    for (int i = 0; i < 100; ++i) message(kMessageNote, kMessageLasting, "%s %d", "text", i);
    CHECK(allocationCount() == before);
    CHECK(calls == 100);
}

TEST_CASE("memory that ends while an error object is made leaves the handler installed") {
    Recorder recorder;
    int calls = 0;
    setMessageHandler(retained(
        MessageErrorHandler([&](const std::shared_ptr<Orlune::Core::Error>&) { ++calls; })));
    const int failures = failEachAllocation([] {
        try {
            message(kMessageNote, kMessageLasting, "%s", "a text beyond any short string");
        } catch (const std::bad_alloc&) {
        }
    });
    CHECK(failures >= 2);  // the object and its text
    CHECK(calls == 1);     // only the call that had all its memory
}

}  // namespace
