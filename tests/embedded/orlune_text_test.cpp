// The embedded platform's text conversions over all characters and all byte
// patterns, beside unmapped pages. Cut texts stand in the platform check.

#include <doctest/doctest.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "platform/orlune/text.h"
#include "tests/support/fake_host.h"
#include "tests/support/guarded_bytes.h"

namespace {

// RFC 3629, section 3, worked out by its table.
std::string utf8Of(std::uint32_t c) {
    const auto byte = [](std::uint32_t value) { return static_cast<char>(value); };
    if (c < 0x80) return {byte(c)};
    if (c < 0x800) return {byte(0xC0 | c >> 6), byte(0x80 | (c & 63))};
    if (c < 0x10000)
        return {byte(0xE0 | c >> 12), byte(0x80 | (c >> 6 & 63)), byte(0x80 | (c & 63))};
    return {byte(0xF0 | c >> 18), byte(0x80 | (c >> 12 & 63)), byte(0x80 | (c >> 6 & 63)),
            byte(0x80 | (c & 63))};
}

std::wstring uni16Of(std::uint32_t c) {
    if (c < 0x10000) return {static_cast<wchar_t>(c)};
    return {static_cast<wchar_t>(0xD7C0 + (c >> 10)), static_cast<wchar_t>(0xDC00 + (c & 0x3FF))};
}

std::string urlOf(const std::string& bytes) {
    static const std::string unreserved =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
    std::string url;
    for (const char c : bytes) {
        char triple[4];
        std::snprintf(triple, sizeof triple, "%%%02X", static_cast<unsigned char>(c));
        if (unreserved.find(c) == std::string::npos)
            url += triple;
        else
            url += c;
    }
    return url;
}

TEST_CASE("every character goes through every conversion, and surrogates through none") {
    int good = 0, refused = 0, wrong = 0;
    for (std::uint32_t c = 1; c <= 0x10FFFF; ++c) {
        const std::string utf8 = utf8Of(c);
        wchar_t units[8] = {99, 99, 99, 99};
        char bytes[16], url[16];
        if (c >= 0xD800 && c <= 0xDFFF) {
            const wchar_t alone[] = {static_cast<wchar_t>(c), 0};
            const bool ok = Orlune::UTF8ToUni16Char(utf8.c_str(), units, 8) == 0 && units[0] == 0 &&
                            Orlune::Uni16CharToUTF8(alone, bytes, 16) == 0 && bytes[0] == 0 &&
                            Orlune::Uni16CharToURLEncoding(alone, url, 16) == 0 && url[0] == 0;
            ++(ok ? refused : wrong);
            continue;
        }
        const std::wstring uni16 = uni16Of(c);
        const std::string encoded = urlOf(utf8);
        const bool ok =
            Orlune::UTF8ToUni16Char(utf8.c_str(), units, 8) == static_cast<int>(uni16.size()) &&
            units == uni16 &&
            Orlune::Uni16CharToUTF8(uni16.c_str(), bytes, 16) == static_cast<int>(utf8.size()) &&
            bytes == utf8 &&
            Orlune::UTF8ToURLEncoding(utf8.c_str(), url, 16) == static_cast<int>(encoded.size()) &&
            url == encoded &&
            Orlune::Uni16CharToURLEncoding(uni16.c_str(), bytes, 16) ==
                static_cast<int>(encoded.size()) &&
            bytes == encoded;
        ++(ok ? good : wrong);
        if (!ok && wrong < 10) {
            CAPTURE(c);
            CHECK(ok);
        }
    }
    CHECK(good == 0x10FFFF - 0x800);
    CHECK(refused == 0x800);
    CHECK(wrong == 0);
}

// Well-formed byte sequences by the table of the Unicode Standard, section 3.9.
bool wellFormed(const std::string& bytes) {
    struct Row {
        unsigned char first, last;  // of the lead byte
        int length;
        unsigned char low, high;  // of the second byte
    };
    static constexpr Row kRows[] = {
        {0x01, 0x7F, 1, 0, 0},       {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF},
        {0xE1, 0xEC, 3, 0x80, 0xBF}, {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF},
        {0xF0, 0xF0, 4, 0x90, 0xBF}, {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
    };
    for (std::size_t at = 0; at < bytes.size();) {
        const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[at + i]); };
        const Row* found = nullptr;
        for (const Row& row : kRows)
            if (byte(0) >= row.first && byte(0) <= row.last) found = &row;
        if (!found || bytes.size() - at < static_cast<std::size_t>(found->length)) return false;
        if (found->length > 1 && (byte(1) < found->low || byte(1) > found->high)) return false;
        for (int i = 2; i < found->length; ++i)
            if (byte(static_cast<std::size_t>(i)) < 0x80 ||
                byte(static_cast<std::size_t>(i)) > 0xBF)
                return false;
        at += static_cast<std::size_t>(found->length);
    }
    return true;
}

TEST_CASE("byte patterns of every class are taken or refused as the standard says") {
    // All two-byte texts; three and four bytes of all values at which a class
    // of bytes begins or ends.
    static constexpr int kTurns[] = {0x01, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0,
                                     0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xEC, 0xED, 0xEE, 0xEF, 0xF0,
                                     0xF1, 0xF3, 0xF4, 0xF5, 0xF7, 0xF8, 0xFE, 0xFF};
    std::vector<std::string> texts;
    const auto text = [](std::initializer_list<int> bytes) {
        std::string all;
        for (const int byte : bytes) all += static_cast<char>(byte);
        return all;
    };
    for (int a = 1; a < 256; ++a) {
        texts.push_back(text({a}));
        for (int b = 1; b < 256; ++b) texts.push_back(text({a, b}));
    }
    for (const int a : kTurns)
        for (const int b : kTurns)
            for (const int c : kTurns) {
                texts.push_back(text({a, b, c}));
                for (const int d : kTurns) texts.push_back(text({a, b, c, d}));
            }
    int taken = 0, wrong = 0;
    wchar_t units[8];
    for (const std::string& bytes : texts) {
        const bool want = wellFormed(bytes);
        const int count = Orlune::UTF8ToUni16Char(bytes.c_str(), units, 8);
        taken += want;
        wrong += (count > 0) != want || (count == 0 && units[0] != 0);
    }
    CHECK(wrong == 0);
    // 127 single bytes, 127 pairs of them and 30 * 64 two-byte characters; the
    // three- and four-byte texts add theirs.
    CHECK(taken > 127 + 127 * 127 + 30 * 64);
}

TEST_CASE("percent-encoding keeps the 66 unreserved bytes and writes all others as triples") {
    int kept = 0;
    for (int byte = 1; byte < 256; ++byte) {
        const char text[] = {static_cast<char>(byte), 0};
        char url[8];
        CAPTURE(byte);
        const int count = Orlune::UTF8ToURLEncoding(text, url, sizeof url);
        CHECK(url == urlOf(text));
        CHECK(count == static_cast<int>(std::strlen(url)));
        kept += count == 1;
    }
    CHECK(kept == 66);
    char url[40];
    CHECK(Orlune::UTF8ToURLEncoding("a b\r\n+\t/%20", url, sizeof url) == 25);
    CHECK(std::string(url) == "a%20b%0D%0A%2B%09%2F%2520");
}

TEST_CASE("malformed bytes are percent-encoded one by one, and cut between any two") {
    const std::string text = "\x80\xC3\xE2\x82\xF0\x9F\x96x\xF5\x80";
    const std::string want = urlOf(text);
    for (std::size_t capacity = 1; capacity <= want.size() + 1; ++capacity) {
        CAPTURE(capacity);
        std::size_t fits = 0;
        for (const char c : text) {
            const std::size_t length = c == 'x' ? 1 : 3;
            if (fits + length >= capacity) break;
            fits += length;
        }
        GuardedBytes url(capacity);
        CHECK(Orlune::UTF8ToURLEncoding(text.c_str(), url.chars(), capacity) ==
              static_cast<int>(fits));
        CHECK(url.chars() == want.substr(0, fits));
    }
}

// A wide text whose terminator is the last readable element.
struct GuardedUnits {
    explicit GuardedUnits(const std::wstring& text) : bytes((text.size() + 1) * sizeof(wchar_t)) {
        std::memcpy(bytes.data(), text.c_str(), bytes.size());
    }
    const wchar_t* text() const { return reinterpret_cast<const wchar_t*>(bytes.data()); }
    GuardedBytes bytes;
};

TEST_CASE("nothing is read behind a terminator or written behind a capacity") {
    const std::wstring wide = std::wstring(L"a\u00e9\u20ac") + uni16Of(0x1D11E);
    const std::string utf8 = "a\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E";
    for (std::size_t length = 0; length <= utf8.size(); ++length) {  // also cut sequences
        const GuardedText source(utf8.substr(0, length));
        for (std::size_t capacity = 0; capacity <= 3 * utf8.size() + 1; ++capacity) {
            GuardedBytes units(capacity * sizeof(wchar_t)), url(capacity);
            Orlune::UTF8ToUni16Char(source, reinterpret_cast<wchar_t*>(units.data()), capacity);
            Orlune::UTF8ToURLEncoding(source, url.chars(), capacity);
            if (capacity > 0) CHECK(std::memchr(url.data(), 0, capacity) != nullptr);
        }
    }
    for (std::size_t length = 0; length <= wide.size(); ++length) {  // also half a pair
        const GuardedUnits source(wide.substr(0, length));
        for (std::size_t capacity = 0; capacity <= 9 * wide.size() + 1; ++capacity) {
            GuardedBytes bytes(capacity), url(capacity);
            Orlune::Uni16CharToUTF8(source.text(), bytes.chars(), capacity);
            Orlune::Uni16CharToURLEncoding(source.text(), url.chars(), capacity);
            if (capacity > 0) {
                CHECK(std::memchr(bytes.data(), 0, capacity) != nullptr);
                CHECK(std::memchr(url.data(), 0, capacity) != nullptr);
            }
        }
    }
}

TEST_CASE("ASCII of any length is converted and cut at any capacity") {
    const std::string letters = "a b~/c%de-f g";
    const std::string encoded = "a%20b~%2Fc%25de-f%20g";
    for (std::size_t length = 0; length <= letters.size(); ++length) {
        const std::string text = letters.substr(0, length);
        const GuardedText source(text);
        const std::wstring wide(text.begin(), text.end());
        const GuardedUnits wideSource(wide);
        for (std::size_t capacity = 1; capacity <= 3 * letters.size() + 1; ++capacity) {
            CAPTURE(length);
            CAPTURE(capacity);
            GuardedBytes units(capacity * sizeof(wchar_t)), url(capacity), wideUrl(capacity);
            auto* const out = reinterpret_cast<wchar_t*>(units.data());
            const std::size_t count = std::min(length, capacity - 1);
            CHECK(Orlune::UTF8ToUni16Char(source, out, capacity) == static_cast<int>(count));
            CHECK(std::wstring(out) == wide.substr(0, count));

            std::string want;  // as many letters as fit whole
            std::size_t at = 0;
            for (std::size_t i = 0; i < length; ++i) {
                const std::size_t size = encoded[at] == '%' ? 3 : 1;
                if (at + size > capacity - 1) break;
                want += encoded.substr(at, size);
                at += size;
            }
            CHECK(Orlune::UTF8ToURLEncoding(source, url.chars(), capacity) ==
                  static_cast<int>(want.size()));
            CHECK(std::string(url.chars()) == want);
            CHECK(Orlune::Uni16CharToURLEncoding(wideSource.text(), wideUrl.chars(), capacity) ==
                  static_cast<int>(want.size()));
            CHECK(std::string(wideUrl.chars()) == want);
        }
    }
}

TEST_CASE("a refusal behind the cut empties the text as well") {
    wchar_t units[4];
    CHECK(Orlune::UTF8ToUni16Char("abcdef\x80", units, 4) == 0);
    CHECK(units[0] == 0);
    const wchar_t text[] = {L'a', L'b', L'c', L'd', wchar_t{0xDC00}, 0};
    char bytes[4];
    CHECK(Orlune::Uni16CharToUTF8(text, bytes, 4) == 0);
    CHECK(bytes[0] == 0);
    bytes[0] = 'x';
    CHECK(Orlune::Uni16CharToURLEncoding(text, bytes, 4) == 0);
    CHECK(bytes[0] == 0);
}

TEST_CASE("elements that are no 16-bit unit are refused") {
    for (const std::uint32_t unit : {0x10000u, 0x10FFFFu, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        CAPTURE(unit);
        const wchar_t text[] = {L'a', static_cast<wchar_t>(unit), 0};
        char bytes[16];
        CHECK(Orlune::Uni16CharToUTF8(text, bytes, sizeof bytes) == 0);
        CHECK(bytes[0] == 0);
        CHECK(Orlune::Uni16CharToURLEncoding(text, bytes, sizeof bytes) == 0);
    }
}

TEST_CASE("conversions allocate nothing") {
    const std::string text(5000, 'q');
    std::vector<wchar_t> units(6000);
    std::vector<char> bytes(20000);
    const long before = allocationCount();
    CHECK(Orlune::UTF8ToUni16Char(text.c_str(), units.data(), units.size()) == 5000);
    CHECK(Orlune::Uni16CharToUTF8(units.data(), bytes.data(), bytes.size()) == 5000);
    CHECK(Orlune::UTF8ToURLEncoding(text.c_str(), bytes.data(), bytes.size()) == 5000);
    CHECK(Orlune::Uni16CharToURLEncoding(units.data(), bytes.data(), bytes.size()) == 5000);
    CHECK(allocationCount() == before);
}

}  // namespace
