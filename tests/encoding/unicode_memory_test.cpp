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
#include "encoding/unicode_blocks.h"
#include "encoding/unicode_onepass.h"
#include "tests/encoding/unicode_support.h"
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

struct Conversion {
    const char* name;
    std::string (*run)(const UnicodeForm& form, const Texts& texts);
};

constexpr Conversion kConversions[] = {
    {"8 to 16",
     [](const UnicodeForm& f, const Texts& t) { return f.utf8ToUtf16(t.utf8.c_str(), true); }},
    {"8 to 32",
     [](const UnicodeForm& f, const Texts& t) { return f.utf8ToUtf32(t.utf8.c_str(), false); }},
    {"16 to 8",
     [](const UnicodeForm& f, const Texts& t) { return f.utf16ToUtf8(t.utf16.c_str()); }},
    {"16 to 32",
     [](const UnicodeForm& f, const Texts& t) { return f.utf16ToUtf32(t.utf16.c_str(), true); }},
    {"32 to 8",
     [](const UnicodeForm& f, const Texts& t) { return f.utf32ToUtf8(t.utf32.c_str()); }},
    {"32 to 16",
     [](const UnicodeForm& f, const Texts& t) { return f.utf32ToUtf16(t.utf32.c_str(), false); }},
};

// Sizes on both sides of short texts and of chunks, and one whose beginning promises
// a smaller result than it gets.
constexpr std::size_t kCounts[] = {0, 3, 15, 16, 33, 64, 65, 100, 300, 3000, 40000};

void checkFailures() {
    for (const std::size_t count : kCounts) {
        CAPTURE(count);
        const Texts texts = textsOf(count);
        for (const UnicodeForm* form : unicodeForms()) {
            CAPTURE(form->name);
            for (const Conversion& conversion : kConversions) {
                CAPTURE(conversion.name);
                const std::string want = conversion.run(kUnicodePlain, texts);
                std::string got = "kept";
                int thrown = 0;
                const int failures = failEachAllocation([&] {
                    try {
                        got = conversion.run(*form, texts);
                    } catch (const std::bad_alloc&) {
                        ++thrown;
                        CHECK(got == "kept");
                    }
                });
                CHECK(thrown == failures);
                CHECK((failures > 0 || want.size() <= 15));
                CHECK((got == want));
            }
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
            for (const Conversion& conversion : kConversions) {
                CAPTURE(conversion.name);
                const long before = allocationCount();
                const std::string result = conversion.run(*form, texts);
                CHECK(allocationCount() - before == (result.size() > 15 ? 1 : 0));
                // A string that outgrows its own 15 bytes has room for twice as many.
                CHECK(result.capacity() <=
                      std::max<std::size_t>(result.size(), result.size() > 15 ? 30 : 15));
            }
        }
    }
}

TEST_CASE("unicode: threads may be the first to convert at the same time") {
    const Texts texts = textsOf(500);
    std::vector<std::string> want;
    for (const Conversion& conversion : kConversions)
        want.push_back(conversion.run(kUnicodePlain, texts));
    forceUnicodeForm(nullptr);  // whoever comes first chooses one
    constexpr int kThreads = 4;
    std::atomic<int> waiting = 0, same = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            ++waiting;
            while (waiting < kThreads) std::this_thread::yield();
            same += ConvertUTF8ToUTF16String(texts.utf8.c_str(), true) == want[0];
            for (const UnicodeForm* form : unicodeForms())
                for (std::size_t c = 0; c < want.size(); ++c)
                    same += kConversions[c].run(*form, texts) == want[c];
        });
    }
    for (std::thread& thread : threads) thread.join();
    CHECK(same == kThreads * static_cast<int>(1 + unicodeForms().size() * want.size()));
}
