// The memory of Unicode results: one piece of the right size where that can be known,
// nothing lost where there is none; and several threads that convert at a time.

#include <doctest/doctest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "encoding/unicode.h"
#include "encoding/unicode_onepass.h"
#include "tests/encoding/unicode_conversions.h"
#include "tests/support/fake_host.h"
#include "vaskel/encoding.h"

using namespace Vaskel;

namespace {

struct Texts {
    std::string utf8, utf16, utf32;
};

// count characters, the first fifth of them of one byte, the others of three and,
// every ninth one, of four.
Texts textsOf(std::size_t count) {
    std::vector<std::uint32_t> values, units;
    Texts texts;
    for (std::size_t i = 0; i < count; ++i) {
        const auto letter = static_cast<std::uint32_t>(i % 40);
        values.push_back(i < count / 5 ? 'a' + letter / 2
                                       : (i % 9 == 4 ? 0x1F600 : 0x3042) + letter);
        put8(texts.utf8, values.back());
        if (values.back() >= 0x10000) units.push_back(0xD83D);
        units.push_back(values.back() < 0x10000 ? values.back() : 0xDE00 + letter);
    }
    texts.utf16 = text16(units, true);
    texts.utf32 = text32(values, false);
    return texts;
}

template <class Check>
void eachConversion(const Texts& texts, Check check) {
    const auto each = [&check](const auto& conversions, const std::string& text) {
        for (const Conversion& conversion : conversions) {
            CAPTURE(conversion.name);
            check(conversion, text.c_str());
        }
    };
    each(kFrom8, texts.utf8);
    each(kFrom16, texts.utf16);
    each(kFrom32, texts.utf32);
}

// Sizes on both sides of short texts and of chunks, and one whose beginning promises
// a smaller result than it gets.
constexpr std::size_t kCounts[] = {0, 3, 15, 16, 33, 64, 65, 100, 300, 3000, 40000};

void checkFailures() {
    for (const std::size_t count : kCounts) {
        CAPTURE(count);
        const Texts texts = textsOf(count);
        for (const UnicodeForm* form : unicodeForms()) {
            CAPTURE(form->name);
            eachConversion(texts, [form](const Conversion& conversion, const char* text) {
                const std::string want = conversion.run(kUnicodePlain, text);
                std::string got = "kept";
                int thrown = 0;
                const int failures = failEachAllocation([&] {
                    try {
                        got = conversion.run(*form, text);
                    } catch (const std::bad_alloc&) {
                        ++thrown;
                        CHECK(got == "kept");
                    }
                });
                CHECK(thrown == failures);
                CHECK((failures > 0 || want.size() <= 15));
                CHECK((got == want));
            });
        }
    }
}

}  // namespace

TEST_CASE("unicode: memory that ends while a text is converted is told, and none is lost") {
    checkFailures();
    const std::size_t kept = gUnicodeStreams.from.exchange(1);
    checkFailures();
    gUnicodeStreams.from = kept;
}

TEST_CASE("unicode: results of short texts are one piece of memory of their size") {
    for (std::size_t count = 0; count <= 64; ++count) {
        CAPTURE(count);
        const Texts texts = textsOf(count);
        for (const UnicodeForm* form : unicodeForms().subspan(1)) {
            CAPTURE(form->name);
            eachConversion(texts, [form](const Conversion& conversion, const char* text) {
                const long before = allocationCount();
                const std::string result = conversion.run(*form, text);
                CHECK(allocationCount() - before == (result.size() > 15 ? 1 : 0));
                // A string that outgrows its own 15 bytes has room for twice as many.
                CHECK(result.capacity() <=
                      std::max<std::size_t>(result.size(), result.size() > 15 ? 30 : 15));
            });
        }
    }
}

TEST_CASE("unicode: threads may be the first to convert at the same time") {
    const Texts texts = textsOf(500);
    std::vector<std::string> want;
    eachConversion(texts, [&want](const Conversion& conversion, const char* text) {
        want.push_back(conversion.run(kUnicodePlain, text));
    });
    forceUnicodeForm(nullptr);  // whoever comes first chooses one
    constexpr int kThreads = 4;
    std::atomic<int> waiting = 0, same = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            ++waiting;
            while (waiting < kThreads) std::this_thread::yield();
            same += ConvertUTF8ToUTF16String(texts.utf8.c_str(), true) == want[1];
            for (const UnicodeForm* form : unicodeForms()) {
                std::size_t at = 0;
                eachConversion(texts, [&](const Conversion& conversion, const char* text) {
                    same += conversion.run(*form, text) == want[at++];
                });
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    CHECK(same == kThreads * static_cast<int>(1 + unicodeForms().size() * want.size()));
}
