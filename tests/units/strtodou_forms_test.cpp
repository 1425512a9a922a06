// The forms of strtodou beside each other: every kind of number and what may stand around
// it, at either side of the end of a page.

#include <doctest/doctest.h>

#include <cfenv>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tests/support/guarded_bytes.h"
#include "units/strtodou.h"
#include "vaskel/units.h"

using namespace Vaskel;

namespace {

constexpr double kKept = 77;  // what the caller's variable held before
constexpr std::size_t kPage = 4096;

struct Read {
    int rc;
    double value;

    friend bool operator==(const Read& a, const Read& b) {
        return a.rc == b.rc && std::memcmp(&a.value, &b.value, sizeof a.value) == 0;
    }
};

Read read(ReadField* run, const char* s) {
    Read read{0, kKept};
    read.rc = run(s, &read.value);
    return read;
}

// Whether all forms read s as the bytes say.
bool alike(const char* s) {
    const Read want = read(readFieldByBytes, s);
    for (const FieldForm& form : fieldForms())
        if (!(read(form.run, s) == want)) return false;
    return read(strtodou, s) == want;
}

// Numbers of 0 to 18 digits, with and without a sign, and a separator at each place.
std::vector<std::string> numbers() {
    std::mt19937 random(30);
    std::vector<std::string> all;
    for (const char* sign : {"", "-", "+", "--", "-+"}) {
        for (std::size_t count = 0; count <= 18; ++count) {
            for (std::size_t at = 0; at <= count + 1; ++at) {
                std::string digits;
                for (std::size_t i = 0; i < count; ++i)
                    digits +=
                        static_cast<char>('0' + (random() % 4 ? random() % 10 : random() % 2 * 9));
                if (at <= count) digits.insert(at, random() % 2 ? "." : ",");
                all.push_back(sign + digits);
            }
        }
    }
    return all;
}

// What may stand in front of a number and behind it.
constexpr const char* kFronts[] = {"", " ", "      ", "\t", "1", ".", "0"};
constexpr const char* kBacks[] = {"",   " ",  ".",  ",",    "-",    "+",    "/",    "*",   ":",
                                  "/2", "+3", "a",  "\xB0", ".5",   "-1",   "mm",   "- 1", "0",
                                  "\n", "9,", "99", " +1",  "\xFF", "\x16", "5.25", "  "};

}  // namespace

TEST_CASE("strtodou: every form reads every number alike, whatever stands around it") {
    int wrong = 0, count = 0;
    for (const std::string& number : numbers()) {
        for (const char* front : kFronts) {
            for (const char* back : kBacks) {
                const std::string text = front + number + back;
                CAPTURE(text);
                if (!alike(text.c_str())) {
                    ++wrong;
                    CHECK(wrong == 0);
                }
                ++count;
            }
        }
    }
    CHECK(count > 150000);
}

TEST_CASE("strtodou: every form reads a number alike in every rounding mode") {
    for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        CAPTURE(mode);
        int wrong = 0;
        for (const std::string& number : numbers()) {
            std::fesetround(mode);
            wrong += !alike(number.c_str());
            std::fesetround(FE_TONEAREST);
        }
        CHECK(wrong == 0);
    }
}

// Every place of a text near the end of a page, with a page behind it that is there, full
// of digits and separators, and with one that is not.
TEST_CASE("strtodou: no form minds what is behind the text, nor whether anything is") {
    std::mt19937 random(31);
    GuardedBytes pages(2 * kPage, GuardedBytes::AtStart);
    int wrong = 0;
    for (const std::string& number : numbers()) {
        for (std::size_t i = 0; i < pages.size(); ++i) pages[i] = "0123456789.,-+ "[random() % 15];
        for (std::size_t offset = kPage - 40; offset < kPage + 20; ++offset) {
            char* const s = pages.chars() + offset;
            std::memcpy(s, number.c_str(), number.size() + 1);
            wrong += !alike(s);
        }
        wrong += !alike(GuardedText(number));
    }
    CHECK(wrong == 0);
}

TEST_CASE("strtodou: every form refuses a null text and takes an empty one") {
    for (const FieldForm& form : fieldForms()) {
        CAPTURE(form.name);
        CHECK(read(form.run, nullptr) == Read{-1, kKept});
        CHECK(alike(""));
        CHECK(alike("  "));
    }
}

#if defined(__x86_64__)
// Of a page, from byte 1 on to 16 before its end.
TEST_CASE("strtodou: numbers of up to 15 digits are read at once, and no other text") {
    if (fieldForms().back().run != readFieldAvx512) return;
    const auto atOnce = [](const std::string& text) {
        GuardedBytes page(kPage);
        std::memcpy(page.chars() + 100, text.c_str(), text.size() + 1);
        double value = kKept;
        const bool is = readsNumberAvx512(page.chars() + 100, &value);
        CHECK((value == kKept) != is);
        return is;
    };
    int taken = 0;
    for (const std::string& number : numbers()) {
        CAPTURE(number);
        const std::size_t signs = number.find_first_not_of("+-");
        const std::size_t first = signs == std::string::npos ? number.size() : signs;
        std::size_t digits = 0;
        for (char c : number) digits += c >= '0' && c <= '9';
        const bool fits = first <= 1 && digits >= 1 && digits <= 15 && number.size() <= 16;
        CHECK(atOnce(number) == fits);
        if (!fits) continue;
        ++taken;
        for (const char* back : {" ", "/2", ".5.", "-1", "a", "\xB5"})
            CHECK_FALSE(atOnce(number + back));
    }
    CHECK(taken > 300);
    for (const char* text : {"", " 1", "1 ", "a", "1.2.3", "1-2", "1:2", "- 1"})
        CHECK_FALSE(atOnce(text));
    double value = kKept;
    CHECK_FALSE(readsNumberAvx512(nullptr, &value));
    CHECK_FALSE(readsNumberAvx512(GuardedText("12"), &value));
    CHECK(value == kKept);
}
#endif

TEST_CASE("strtodou: the forced form runs") {
    static int calls = 0;
    const FieldForm counting = {"counting", [](const char*, double*) { return ++calls; }};
    double value = kKept;
    forceFieldForm(&counting);
    CHECK(strtodou("1", &value) == 1);
    forceFieldForm(nullptr);
    CHECK(value == kKept);
    CHECK(strtodou("1", &value) == 0);
    CHECK(value == 1);
    CHECK(calls == 1);
}
