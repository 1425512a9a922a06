#include <doctest/doctest.h>

#include <climits>
#include <memory>
#include <new>
#include <string>
#include <type_traits>

#include "tests/messages/recorder.h"
#include "tests/support/fake_host.h"

namespace {

using namespace Vaskel;
using Orlune::Core::uni16string;

using BaseError = Orlune::Core::Error;
using BasePointer = std::shared_ptr<BaseError>;

BaseError::Severity base(int value) { return static_cast<BaseError::Severity>(value); }

// A base error with a text of its own, as other modules derive them.
struct Described : BaseError {
    Described(int value, uni16string text) : BaseError(base(value)), mText(std::move(text)) {}
    uni16string GetDescription() const override { return mText; }
    uni16string mText;
};

TEST_CASE("severities map to the base and back by two tables of their own") {
    struct Row {
        int given, stored, shown;
    };
    constexpr Row kRows[] = {{0, 0, 1},   {1, 0, 1},       {2, 2, 2},      {3, 3, 3},
                             {4, 4, 4},   {5, 3, 3},       {7, 3, 3},      {-1, 3, 3},
                             {256, 3, 3}, {INT_MIN, 3, 3}, {INT_MAX, 3, 3}};
    Recorder recorder;
    recorder.takeTexts();
    for (const Row& row : kRows) {
        CAPTURE(row.given);
        const auto narrow = std::make_shared<Error>(severity(row.given), kMessageLasting, "t");
        const auto wide =
            std::make_shared<Error>(severity(row.given), kMessageLasting, uni16string(L"t"));
        CHECK(narrow->GetSeverity() == row.stored);
        CHECK(wide->GetSeverity() == row.stored);
        ShowInfoMessage(narrow);
        CHECK(recorder.texts() == std::vector<Delivered>{{"t", row.shown, 1}});
    }
}

TEST_CASE("a base error's severity is shown by its own table") {
    struct Row {
        int stored, shown;
    };
    constexpr Row kRows[] = {{0, 1}, {1, 0}, {2, 2}, {3, 3}, {4, 4}, {5, 3}, {7, 3}, {-1, 3}};
    Recorder recorder;
    recorder.takeTexts();
    for (const Row& row : kRows) {
        CAPTURE(row.stored);
        ShowInfoMessage(std::make_shared<Described>(row.stored, L"d"));
        CHECK(recorder.texts() == std::vector<Delivered>{{"d", row.shown, 1}});
    }
}

TEST_CASE("an Error keeps its text as 16-bit units") {
    struct Row {
        std::string why;
        std::string utf8;
        uni16string want;
    };
    const Row rows[] = {
        {"empty", "", L""},
        {"ASCII", "abc", L"abc"},
        {"two bytes", "\xC3\xA9", L"\u00e9"},
        {"three bytes", "\xE2\x82\xAC", L"\u20ac"},
        {"four bytes are a surrogate pair", "\xF0\x9D\x84\x9E", {wchar_t{0xD834}, wchar_t{0xDD1E}}},
        {"a NUL ends the text", std::string("ab\0cd", 5), L"ab"},
        {"a lone trail byte is refused", "ab\x80", L""},
        {"a cut sequence is refused", "ab\xE2\x82", L""},
        {"an overlong form is refused", "\xC0\x80", L""},
        {"a surrogate in UTF-8 is refused", "\xED\xA0\x80", L""},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        const Error error(kMessageWarning, volatility(9), row.utf8);
        CHECK((error.GetDescription() == row.want));
        CHECK(error.GetVolatility() == 9);
    }
    const uni16string any{wchar_t{0xDC00}, 0, L'x'};  // taken as it stands
    CHECK((Error(kMessageWarning, volatility(-9), any).GetDescription() == any));
    CHECK(Error(kMessageWarning, volatility(-9), any).GetVolatility() == -9);
}

TEST_CASE("copies of an Error carry severity, text, volatility and time") {
    const Error source(kMessageFatal, volatility(5), "source");
    const Error copy(source);
    CHECK((copy.GetDescription() == L"source"));
    CHECK(copy.GetVolatility() == 5);
    CHECK(copy.GetSeverity() == 4);
    CHECK(copy.GetTimeStamp() == source.GetTimeStamp());

    Error target(kMessageNote, volatility(6), "target");
    target = source;
    CHECK((target.GetDescription() == L"source"));
    CHECK(target.GetVolatility() == 5);
    CHECK(target.GetSeverity() == 4);

    const Error& same = target;
    target = same;
    CHECK((target.GetDescription() == L"source"));
    CHECK(target.GetVolatility() == 5);
}

TEST_CASE("an Error answers through its base, and its clone is of the base class") {
    const Error error(kMessageWarning, volatility(5), "text");
    const BaseError& asBase = error;
    CHECK((asBase.GetDescription() == L"text"));
    CHECK(asBase.GetTitle().empty());
    CHECK(std::string(asBase.what()) != "");
    const BasePointer clone = error.Clone();
    CHECK(dynamic_cast<Error*>(clone.get()) == nullptr);
    CHECK(clone->GetSeverity() == 2);
    CHECK(clone->GetDescription().empty());
    CHECK(clone->GetTimeStamp() == error.GetTimeStamp());
    static_assert(std::is_base_of_v<std::exception, Error>);
    CHECK_THROWS_AS(throw error, BaseError);
}

TEST_CASE("an error object reaches an error-object handler as it is") {
    Recorder recorder;
    recorder.takeErrors();
    const BasePointer error = std::make_shared<Described>(7, L"d");
    ShowInfoMessage(error);
    const auto errors = recorder.errors();
    REQUIRE(errors.size() == 1);
    CHECK(errors[0] == error);
}

TEST_CASE("an error object reaches a text handler with volatility 1") {
    Recorder recorder;
    recorder.takeTexts();
    ShowInfoMessage(std::make_shared<Error>(kMessageInfo, volatility(42), "100% \xE2\x82\xAC"));
    ShowInfoMessage(std::make_shared<BaseError>(base(2)));
    ShowInfoMessage(std::make_shared<Described>(3, uni16string{wchar_t{0xD834}, wchar_t{0xDD1E}}));
    ShowInfoMessage(std::make_shared<Described>(3, uni16string{L'a', wchar_t{0xD834}}));
    ShowInfoMessage(std::make_shared<Described>(3, uni16string{L'a', 0, L'b'}));
    CHECK(recorder.texts() == std::vector<Delivered>{{"100% \xE2\x82\xAC", 1, 1},
                                                     {"", 2, 1},
                                                     {"\xF0\x9D\x84\x9E", 3, 1},
                                                     {"", 3, 1},
                                                     {"a", 3, 1}});
}

TEST_CASE("a null error object reaches an error-object handler and no text handler") {
    Recorder recorder;
    recorder.takeErrors();
    ShowInfoMessage(BasePointer());
    const auto errors = recorder.errors();
    REQUIRE(errors.size() == 1);
    CHECK(errors[0] == nullptr);
    recorder.takeTexts();
    ShowInfoMessage(BasePointer());
    CHECK(recorder.texts().empty());
}

TEST_CASE("a shown text is no format and has no limit") {
    Recorder recorder;
    recorder.takeTexts();
    const std::string percents = "%s %n 100%";
    const std::string longText(100000, 'l');
    ShowInfoMessage(severity(9), volatility(8), percents);
    ShowInfoMessage(kMessageInfo, kMessageLasting, longText);
    ShowInfoMessage(kMessageInfo, kMessageLasting, std::string("not\x80UTF-8"));
    CHECK(recorder.texts() ==
          std::vector<Delivered>{{percents, 9, 8}, {longText, 0, 0}, {"not\x80UTF-8", 0, 0}});
}

TEST_CASE("a shown text reaches an error-object handler as an Error") {
    Recorder recorder;
    recorder.takeErrors();
    ShowInfoMessage(severity(1), volatility(8), std::string(3000, 'l'));
    ShowInfoMessage(severity(4), volatility(7), uni16string(L"\u20ac"));
    const auto errors = recorder.errors();
    REQUIRE(errors.size() == 2);
    const auto* first = dynamic_cast<const Error*>(errors[0].get());
    const auto* second = dynamic_cast<const Error*>(errors[1].get());
    REQUIRE(first != nullptr);
    REQUIRE(second != nullptr);
    CHECK((first->GetDescription() == uni16string(3000, L'l')));
    CHECK(first->GetVolatility() == 8);
    CHECK(first->GetSeverity() == 0);
    CHECK((second->GetDescription() == L"\u20ac"));
    CHECK(second->GetVolatility() == 7);
    CHECK(second->GetSeverity() == 4);
    CHECK(errors[0].use_count() == 1);
}

TEST_CASE("a shown 16-bit text arrives as UTF-8") {
    struct Row {
        std::string why;
        uni16string text;
        const char* want;
    };
    const Row rows[] = {
        {"empty", L"", ""},
        {"one, two and three bytes a unit", L"a\u00e9\u20ac", "a\xC3\xA9\xE2\x82\xAC"},
        {"a pair is four bytes", {wchar_t{0xD834}, wchar_t{0xDD1E}}, "\xF0\x9D\x84\x9E"},
        {"three bytes for every unit fit", uni16string(500, wchar_t{0xFFFD}), nullptr},
        {"an unpaired surrogate is refused", {L'a', wchar_t{0xDC00}}, ""},
        {"a unit beyond 16 bits is refused", {L'a', wchar_t{0x10000}}, ""},
        {"a NUL ends the text", {L'a', 0, L'b'}, "a"},
    };
    std::string replacements;
    for (int i = 0; i < 500; ++i) replacements += "\xEF\xBF\xBD";
    Recorder recorder;
    recorder.takeTexts();
    for (const Row& row : rows) {
        CAPTURE(row.why);
        ShowInfoMessage(kMessageWarning, volatility(3), row.text);
        CHECK(recorder.texts() ==
              std::vector<Delivered>{{row.want ? row.want : replacements, 2, 3}});
    }
}

TEST_CASE("without a handler showing does nothing, in all forms") {
    FakeHost host;
    Recorder recorder;
    struct Untouchable : BaseError {
        Untouchable() : BaseError(base(2)) {}
        uni16string GetDescription() const override { throw HostFailure{}; }
    };
    const long before = allocationCount();
    const BasePointer error = std::make_shared<Untouchable>();
    const long own = allocationCount() - before;
    ShowInfoMessage(error);
    ShowInfoMessage(kMessageWarning, kMessageLasting, std::string());
    ShowInfoMessage(kMessageWarning, kMessageLasting, uni16string());
    CHECK(allocationCount() - before == own);
    CHECK(host.calls().empty());

    recorder.takeTexts();
    CHECK_THROWS_AS(ShowInfoMessage(error), HostFailure);
    CHECK(recorder.texts().empty());
}

TEST_CASE("showing through an installed empty function throws bad_function_call") {
    Recorder recorder;
    const BasePointer error = std::make_shared<BaseError>(base(2));
    for (const MessageHandler& empty :
         {MessageHandler(MessageTextHandler()), MessageHandler(MessageErrorHandler())}) {
        setMessageHandler(retained(empty));
        CHECK_THROWS_AS(ShowInfoMessage(error), std::bad_function_call);
        CHECK_THROWS_AS(ShowInfoMessage(kMessageNote, kMessageLasting, std::string("t")),
                        std::bad_function_call);
        CHECK_THROWS_AS(ShowInfoMessage(kMessageNote, kMessageLasting, uni16string(L"t")),
                        std::bad_function_call);
    }
}

TEST_CASE("a handler may remove itself or throw while a text is shown") {
    Recorder recorder;
    int calls = 0;
    setMessageHandler(retained(MessageErrorHandler([&](const BasePointer& error) {
        ++calls;
        setMessageHandler(boost::none);
        CHECK((error->GetDescription() == L"t"));
        throw HostFailure{};
    })));
    CHECK_THROWS_AS(ShowInfoMessage(kMessageNote, kMessageLasting, std::string("t")), HostFailure);
    ShowInfoMessage(kMessageNote, kMessageLasting, std::string("t"));
    CHECK(calls == 1);
}

TEST_CASE("memory that ends passes through showing and leaves the handler installed") {
    Recorder recorder;
    int calls = 0;
    const uni16string text(100, L'x');
    const BasePointer error = std::make_shared<Described>(2, text);
    setAdvancedMessageHandler([&](const char*, MessageSeverity, MessageVolatility) { ++calls; });
    const auto failures = [&](auto show) {
        return failEachAllocation([&] {
            try {
                show();
            } catch (const std::bad_alloc&) {
            }
        });
    };
    CHECK(failures([&] { ShowInfoMessage(error); }) == 2);  // the description, its UTF-8
    CHECK(failures([&] { ShowInfoMessage(kMessageNote, kMessageLasting, text); }) == 1);
    CHECK(calls == 2);
    setMessageHandler(retained(MessageErrorHandler([&](const BasePointer&) { ++calls; })));
    const std::string narrow(100, 'x');
    CHECK(failures([&] { ShowInfoMessage(kMessageNote, kMessageLasting, narrow); }) == 2);
    CHECK(calls == 3);
}

TEST_CASE("memory that ends while an Error is assigned leaves text and volatility") {
    const Error source(kMessageFatal, volatility(5), std::string(100, 's'));
    Error target(kMessageNote, volatility(6), "target");
    int failed = 0;
    CHECK(failEachAllocation([&] {
              try {
                  target = source;
              } catch (const std::bad_alloc&) {
                  ++failed;
                  CHECK((target.GetDescription() == L"target"));
                  CHECK(target.GetVolatility() == 6);
                  CHECK(target.GetSeverity() == 0);
              }
          }) == 1);
    CHECK(failed == 1);
    CHECK((target.GetDescription() == uni16string(100, L's')));
}

}  // namespace
