#include "messages/counted_format.h"

#include <doctest/doctest.h>

#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstring>
#include <random>
#include <string>

namespace {

using namespace Vaskel;

using Form = int (*)(MessageBuffer&, const char*, va_list);

// What a form leaves in a buffer that held something else.
struct Result {
    int count;
    std::string text;
    bool operator==(const Result&) const = default;
};

Result resultOf(Form form, const char* format, ...) {
    MessageBuffer text;
    std::memset(text, '#', sizeof text);
    va_list arguments;
    va_start(arguments, format);
    const int count = form(text, format, arguments);
    va_end(arguments);
    REQUIRE(std::memchr(text, '\0', sizeof text) != nullptr);
    return {count, text};
}

int simpleCount(const char* format, ...) {
    MessageBuffer text;
    va_list arguments;
    va_start(arguments, format);
    const int count = formatSimple(text, format, arguments);
    va_end(arguments);
    return count;
}

TEST_CASE("formats of texts and numbers are written as they read") {
    struct Row {
        const char* format;
        int number;
        const char* text;
        const char* want;
    };
    constexpr Row kRows[] = {
        {"", 1, "x", ""},
        {"plain", 1, "x", "plain"},
        {"%d", 0, "x", "0"},
        {"%d", -1, "x", "-1"},
        {"%i", INT_MAX, "x", "2147483647"},
        {"%d", INT_MIN, "x", "-2147483648"},
        {"%d of %s", 12, "book", "12 of book"},
        {"%d%s%%", 100, "", "100%"},
        {"%%d %d", 9, "x", "%d 9"},
        {"\xC3\xA9%d\x80\xFF%s", 10, "\xF0\x9F",
         "\xC3\xA9"
         "10\x80\xFF\xF0\x9F"},
    };
    for (const Row& row : kRows) {
        CAPTURE(row.format);
        const Result want{static_cast<int>(std::strlen(row.want)), row.want};
        for (const Form form : {formatSimple, formatByLibrary, formatCounted})
            CHECK(resultOf(form, row.format, row.number, row.text) == want);
    }
}

TEST_CASE("all digits of a number are right: both sides of each power of ten") {
    for (std::int64_t power = 1; power <= INT_MAX; power *= 10)
        for (const std::int64_t value : {power - 1, power, 3 * power - 1, 9 * power}) {
            if (value > INT_MAX) continue;
            const int number = static_cast<int>(value);
            const std::string want = std::to_string(value) + " -" + std::to_string(value);
            if (value == 0) continue;  // has no sign
            CHECK(resultOf(formatSimple, "%d %d", number, -number) ==
                  Result{static_cast<int>(want.size()), want});
        }
}

TEST_CASE("other conversions, null texts and texts that are too long are left to the library") {
    for (const char* format : {"%5d", "%-d", "%+d", "%05d", "%.3d", "%u", "%x", "%c", "%hd", "%'d",
                               "%", "a%", "%5%", "%1$d", "%*d"}) {
        CAPTURE(format);
        CHECK(simpleCount(format, 7, 7) == -1);
    }
    for (const char* format : {"%ld", "%lld", "%zu", "%p", "%.2s", "%8s", "%ls", "%S", "%.f"}) {
        CAPTURE(format);
        CHECK(simpleCount(format, "x", "x") == -1);
    }
    const char* const nothing = nullptr;
    CHECK(simpleCount("%s", nothing) == -1);
    CHECK(resultOf(formatCounted, "%5d|%s", 7, "x") == Result{7, "    7|x"});
    CHECK(resultOf(formatCounted, "%s then %+d", "x", 7) == Result{9, "x then +7"});
    CHECK(resultOf(formatCounted, "%d %ld", 7, LONG_MAX) == Result{21, "7 9223372036854775807"});
}

TEST_CASE("a text is cut at 1024 bytes wherever its end falls") {
    // The end falls into the first text, into the number, into what follows.
    for (std::size_t length = 1000; length < 1050; ++length) {
        CAPTURE(length);
        const std::string first(length, 'f');
        const std::string whole = first + ", -12345 of last%.";
        const bool fits = whole.size() <= kMessageLength;
        const Result want{fits ? static_cast<int>(whole.size()) : -1,
                          whole.substr(0, kMessageLength)};
        CHECK(resultOf(formatCounted, "%s, %d of %s%%.", first.c_str(), -12345, "last") == want);
        CHECK((simpleCount("%s, %d of %s%%.", first.c_str(), -12345, "last") >= 0) == fits);
        const std::string format = first + ", %d of %s%%.";
        CHECK(resultOf(formatCounted, format.c_str(), -12345, "last") == want);
    }
}

TEST_CASE("arguments beyond those that come in registers are found") {
    const std::string want = "1 a 2 b 3 c 4 d 5 e 6 f";
    CHECK(resultOf(formatCounted, "%d %s %d %s %d %s %d %s %d %s %d %s", 1, "a", 2, "b", 3, "c", 4,
                   "d", 5, "e", 6, "f") == Result{static_cast<int>(want.size()), want});
}

// Formats of random pieces; the conversions take texts and numbers by turns.
class RandomFormats {
 public:
    explicit RandomFormats(unsigned seed) : mRandom(seed) {}

    std::string format() {
        static constexpr const char* kTexts[] = {"%s", "%s", "%s", "%s", "%s", "%.2s", "%9s"};
        static constexpr const char* kNumbers[] = {"%d", "%d", "%d", "%i", "%d", "%u", "%5d", "%x"};
        std::string all;
        for (int i = below(7); i > 0; --i) {
            all += literal();
            all += kTexts[below(std::size(kTexts))];
            all += literal();
            all += kNumbers[below(std::size(kNumbers))];
        }
        return all + literal();
    }
    int number() {
        const int wide = static_cast<int>(mRandom());
        switch (below(4)) {
            case 0:
                return wide;
            case 1:
                return wide >> 20;
            case 2:
                return below(2) ? INT_MIN + below(3) : INT_MAX - below(3);
            default:
                return below(3) - 1;
        }
    }
    std::string text() {
        std::string all(static_cast<std::size_t>(below(8) ? below(20) : below(1030)), ' ');
        for (char& c : all) c = static_cast<char>(1 + below(255));
        return all;
    }
    int below(std::size_t bound) { return static_cast<int>(mRandom() % bound); }

 private:
    std::string literal() {
        std::string all = text();
        for (std::size_t at = 0; (at = all.find('%', at)) != std::string::npos; at += 2)
            all.insert(at, 1, '%');
        return all;
    }

    std::mt19937 mRandom;
};

TEST_CASE("the simple form gives what vsnprintf gives, or declines") {
    constexpr unsigned kSeed = 20261;
    CAPTURE(kSeed);
    RandomFormats random(kSeed);
    int simple = 0, declined = 0, cut = 0;
    for (int i = 0; i < 30000; ++i) {
        const std::string format = random.format();
        std::string texts[6];
        int numbers[6];
        const char* given[6];
        for (int k = 0; k < 6; ++k) {
            texts[k] = random.text();
            given[k] = random.below(200) == 0 ? nullptr : texts[k].c_str();
            numbers[k] = random.number();
        }
        const auto of = [&](auto&& taker, auto... first) {
            return taker(first..., format.c_str(), given[0], numbers[0], given[1], numbers[1],
                         given[2], numbers[2], given[3], numbers[3], given[4], numbers[4], given[5],
                         numbers[5]);
        };
        const Result want = of(resultOf, formatByLibrary);
        CAPTURE(i);
        CAPTURE(format);
        if (of(resultOf, formatCounted) != want) FAIL_CHECK("differs from ", want.text);
        const int count = of(simpleCount);
        if (count >= 0 && of(resultOf, formatSimple) != want) FAIL_CHECK("simple form differs");
        ++(count >= 0 ? simple : declined);
        cut += want.count < 0;
    }
    CHECK(simple > 5000);
    CHECK(declined > 5000);
    CHECK(cut > 1000);
}

}  // namespace
